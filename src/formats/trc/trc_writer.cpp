#include "formats/trc/trc_writer.hpp"

#include <utility>

#include "formats/trc/trc_header.hpp"
#include "formats/trc/trc_mapping.hpp"
#include "formats/trc/trc_version.hpp"
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
  version_ = findTrcVersion(getTargetVersion());
  messageCount_ = 0;
}

void TrcWriter::WriteHeader(const ITraceInfo& source) {
  requireActive();
  if (!source.getValid()) {
    return;
  }
  const double startDays = startDaysFrom(source);
  const TrcVersion* const version = findTrcHeaderVersion(getTargetVersion());
  if (version == nullptr) {
    return;
  }
  if (version->isColumnBased()) {
    columnSet_ = version->columns;
  }
  constexpr int kStartNumberDigits = 15;
  const DateTime start = DateTime::fromOleDate(startDays);
  TrcHeaderValues values;
  values.targetPath = getTargetPath();
  values.sourcePath = source.getPath();
  values.startText = version->microseconds ? start.toDottedTextMicro() : start.toDottedText();
  values.startNumber = formatGeneral(startDays, kStartNumberDigits);
  values.hostVersion = getHostVersionText();
  values.fromLogger = getFileExtension(values.sourcePath) == ".btr";  // the logger writes no names in capitals
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
  message.appendText(line_, version_, messageCount_ + 1, columnSet_);
  if (!line_.empty()) {
    writeLine(line_.view());
    ++messageCount_;
  }
}

void TrcWriter::write(const BlfLinMessage& message) {
  WriteComment(message.getAsCommentary() + " (LIN)");
}

// A message of another format takes a number even without a text.
template <class Other>
void TrcWriter::write(const Other& message) {
  mapToTrc(message, mapped_);
  ++messageCount_;
  line_.clear();
  mapped_.appendText(line_, version_, messageCount_, columnSet_);
  writeLine(line_.view());
}

}  // namespace xlatr
