#include "formats/lin/lin_writer.hpp"

#include <utility>

#include "formats/lin/lin_header.hpp"
#include "formats/lin/lin_mapping.hpp"
#include "messages/message_dispatch.hpp"
#include "util/date_time.hpp"
#include "util/failures.hpp"

namespace xlatr {
namespace {

using Accepted = MessageClasses<BlfLinMessage, BlfCanMessage>;

}  // namespace

KorlWriter::KorlWriter(std::string targetPath, bool overrideExistingFile, double targetVersion)
    : TraceWriterText(std::move(targetPath), overrideExistingFile, targetVersion) {}

KorlWriter::~KorlWriter() = default;

std::unique_ptr<ITraceWriter> KorlWriter::CreateNew() const {
  auto fresh = std::make_unique<KorlWriter>(getTargetPath(), getOverrideExistingFile(), getTargetVersion());
  fresh->setOwnerBus(getOwnerBus());
  return fresh;
}

void KorlWriter::open() {
  TraceWriterText::open();
  frameNumber_ = 0;
}

void KorlWriter::WriteHeader(const ITraceInfo& source) {
  requireActive();
  const double startDays = startDaysFrom(source);
  const DateTime startDate = DateTime::fromOleDate(startDays);
  for (const std::string& line : linHeaderLines(getTargetVersion(), startDays, startDate, source.getPath())) {
    writeLine(line);
  }
}

void KorlWriter::WriteComment(std::string_view text) {
  writeLine(";", text);
}

void KorlWriter::WriteMessage(const IMessage& message) {
  requireActive();
  const bool taken = dispatchMessage(Accepted{}, message, [this](const auto& known) { write(known); });
  if (!taken) {
    throwProcessingFailure("Object cannot be casted to any supported message trace");
  }
}

void KorlWriter::write(const BlfLinMessage& message) {
  mapToLin(message, mapped_);
  line_.clear();
  mapped_.appendText(line_, getTargetVersion(), ++frameNumber_);
  writeLine(line_.view());
}

void KorlWriter::write(const BlfCanMessage& message) {
  WriteComment(message.getAsCommentary() + " (CAN)");
}

}  // namespace xlatr
