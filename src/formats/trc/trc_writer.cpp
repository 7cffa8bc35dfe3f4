#include "formats/trc/trc_writer.hpp"

#include <exception>
#include <optional>
#include <utility>

#include "formats/trc/trc_header.hpp"
#include "formats/trc/trc_mapping.hpp"
#include "messages/message_dispatch.hpp"
#include "util/date_time.hpp"
#include "util/failures.hpp"
#include "util/host.hpp"
#include "util/paths.hpp"
#include "util/render.hpp"

namespace xlatr {
namespace {

using Accepted = MessageClasses<ZelkBinaryMessage, BrixMessage, SessionMessage, AscMessage, MdfCanMessage,
                                BlfCanMessage, BlfLinMessage>;

// The columns that a version's header announces; below 2.0 there is nothing to announce.
std::optional<TrcColumnSet> announcedColumns(TrcVersion version) {
  switch (version) {
    case TrcVersion::V2_0:
      return kTrcColumns20;
    case TrcVersion::V2_1:
      return kTrcColumns21;
    case TrcVersion::V3_0:
      return kTrcColumns30;
    default:
      return std::nullopt;
  }
}

}  // namespace

TrcWriter::TrcWriter(std::string targetPath, bool overrideExistingFile, double targetVersion)
    : TraceWriterText(std::move(targetPath), overrideExistingFile, targetVersion) {}

TrcWriter::~TrcWriter() = default;

std::unique_ptr<ITraceWriter> TrcWriter::CreateNew() const {
  auto fresh = std::make_unique<TrcWriter>(getTargetPath(), getOverrideExistingFile(), getTargetVersion());
  fresh->setOwnerBus(getOwnerBus());
  return fresh;
}

void TrcWriter::open() {
  TraceWriterText::open();
  messageCount_ = 0;
}

void TrcWriter::WriteHeader(const ITraceInfo& source) {
  requireActive();
  if (!source.getValid()) {
    return;
  }
  const double startTime = startTimeFrom(source);
  const auto version = trcHeaderVersion(getTargetVersion());
  if (!version) {
    return;
  }
  if (const auto columns = announcedColumns(*version)) {
    columnSet_ = *columns;
  }
  constexpr int kStartNumberDigits = 15;
  const DateTime start = DateTime::fromOleDate(startTime);
  TrcHeaderValues values;
  values.targetPath = getTargetPath();
  values.sourcePath = source.getPath();
  values.startText = showsMicroseconds(*version) ? start.toDottedTextMicro() : start.toDottedText();
  values.startNumber = formatGeneral(startTime, kStartNumberDigits);
  values.hostVersion = getHostVersionText();
  values.fromLogger = getFileExtension(values.sourcePath) == ".btr";  // a name in capitals is none of the logger's
  for (const std::string& line : trcHeaderLines(*version, values)) {
    writeLine(line);
  }
}

void TrcWriter::WriteComment(std::string_view text) {
  writeLine(";", text);
}

void TrcWriter::WriteMessage(const IMessage& message) {
  requireActive();
  const bool taken = dispatchMessage(Accepted{}, message, [this](const auto& known) { write(known); });
  if (!taken) {
    throwProcessingFailure("Object cannot be casted to any supported message trace");
  }
}

void TrcWriter::write(const BrixMessage& message) {
  line_.clear();
  message.appendText(line_, getTargetVersion(), messageCount_ + 1, columnSet_);
  if (!line_.empty()) {
    writeLine(line_.view());
    ++messageCount_;
  }
}

void TrcWriter::write(const BlfLinMessage& message) {
  WriteComment(message.getAsCommentary() + " (LIN)");
}

// A message of another format has its number whether or not it has a text.
template <class Other>
void TrcWriter::write(const Other& message) {
  mapToTrc(message, mapped_);
  ++messageCount_;
  line_.clear();
  mapped_.appendText(line_, getTargetVersion(), messageCount_, columnSet_);
  writeLine(line_.view());
}

}  // namespace xlatr
