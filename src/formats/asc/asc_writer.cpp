#include "formats/asc/asc_writer.hpp"

#include <utility>

#include "formats/asc/asc_mapping.hpp"
#include "formats/trc/trc_version.hpp"
#include "messages/message_dispatch.hpp"
#include "util/date_time.hpp"
#include "util/failures.hpp"

namespace xlatr {
namespace {

using Accepted = MessageClasses<BrixMessage, SessionMessage, KorlMessage, ZelkBinaryMessage>;

}  // namespace

AscWriter::AscWriter(std::string targetPath, bool overrideExistingFile, double targetVersion)
    : TraceWriterText(std::move(targetPath), overrideExistingFile, targetVersion) {}

AscWriter::~AscWriter() = default;

std::unique_ptr<ITraceWriter> AscWriter::CreateNew() const {
  auto fresh = std::make_unique<AscWriter>(getTargetPath(), getOverrideExistingFile(), getTargetVersion());
  fresh->setOwnerBus(getOwnerBus());
  return fresh;
}

void AscWriter::WriteHeader(const ITraceInfo& source) {
  constexpr double kFirstVersionOfForm8 = 8.0;
  if (!source.getValid()) {
    return;
  }
  requireActive();
  const double startDays = startDaysFrom(source);
  version8_ = getTargetVersion() >= kFirstVersionOfForm8;
  writeLine("date " + DateTime::fromOleDate(startDays).toAscText());
  writeLine("base hex  timestamps absolute");
  writeLine("no internal events logged");
  writeLine(version8_ ? "// version 8.1.0" : "// version 7.0.0");
}

void AscWriter::WriteComment(std::string_view text) {
  writeLine("// ", text);
}

void AscWriter::WriteMessage(const IMessage& message) {
  requireActive();
  const bool taken = dispatchMessage(Accepted{}, message, [this](const auto& known) { write(known); });
  if (!taken) {
    throwProcessingFailure("Object cannot be casted to any supported message trace");
  }
}

// A CAN XL frame survives as its line of a TRC 3.0 file, the only text form that there is, without the number.
void AscWriter::write(const BrixMessage& message) {
  if (message.kind == MessageKind::XL) {
    constexpr const TrcVersion* kVersionWithXl = findTrcVersion(3.0);
    line_.clear();
    message.appendText(line_, kVersionWithXl, 0, kTrcColumns30 & ~trc_column::kNumber);
    WriteComment(line_.view());
    return;
  }
  writeMapped(message);
}

void AscWriter::write(const ZelkBinaryMessage& message) {
  writeMapped(message);
}

template <class Other>
void AscWriter::writeMapped(const Other& message) {
  mapToAsc(message, mapped_);
  mapped_.textVersion8 = version8_;
  writeMapped();
}

// Frames of the logger and of a LIN bus are never CAN FD frames, and every version reads classic frames in the old
// form, which their mappings leave set.
void AscWriter::write(const SessionMessage& message) {
  mapToAsc(message, mapped_);
  writeMapped();
}

void AscWriter::write(const KorlMessage& message) {
  mapToAsc(message, mapped_);
  writeMapped();
}

void AscWriter::writeMapped() {
  line_.clear();
  if (mapped_.textVersion8) {
    mapped_.toText8(line_);
  } else {
    mapped_.toText7(line_);
  }
  writeLine(line_.view());
}

}  // namespace xlatr
