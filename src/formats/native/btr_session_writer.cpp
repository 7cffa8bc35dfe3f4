#include "formats/native/btr_session_writer.hpp"

#include <cmath>
#include <exception>
#include <utility>

#include "formats/native/btr_mapping.hpp"
#include "messages/message_dispatch.hpp"
#include "util/date_time.hpp"
#include "util/failures.hpp"

namespace xlatr {
namespace {

using Accepted = MessageClasses<BrixMessage>;

}  // namespace

BtrSessionWriter::BtrSessionWriter(std::string targetPath, std::int32_t ownerBus, double targetVersion)
    : TraceWriter(std::move(targetPath), false, targetVersion) {
  setOwnerBus(ownerBus);
}

BtrSessionWriter::~BtrSessionWriter() {
  try {
    setActive(false);
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): whoever wants to know closes the writer
  }
}

std::unique_ptr<ITraceWriter> BtrSessionWriter::CreateNew() const {
  auto fresh = std::make_unique<BtrSessionWriter>(getTargetPath(), getOwnerBus(), getTargetVersion());
  fresh->setOverrideExistingFile(getOverrideExistingFile());
  return fresh;
}

void BtrSessionWriter::WriteHeader(const ITraceInfo& source) {
  requireActive();
  const DateTime start = DateTime::fromOleDate(startDaysFrom(source));
  SessionDescriptor session;
  session.version = static_cast<std::uint8_t>(std::lround(getTargetVersion()));
  session.dateAndTime = SessionDateTime::fromDateTime(start);
  session.startTimestampUs = static_cast<std::uint64_t>(start.microsecond);
  session.startLocation.sector = BtrSectorOutput::kFirstDataSector;
  sectors_.begin(session);
}

void BtrSessionWriter::WriteComment(std::string_view /*text*/) {}

void BtrSessionWriter::WriteMessage(const IMessage& message) {
  requireActive();
  const bool taken = dispatchMessage(Accepted{}, message, [this](const auto& known) { write(known); });
  if (!taken) {
    throwProcessingFailure("Object cannot be casted to any supported message trace");
  }
}

void BtrSessionWriter::write(const BrixMessage& message) {
  if (fitsBtrEntry(message)) {
    sectors_.write(mapToBtrEntry(message));
  }
}

void BtrSessionWriter::close() {
  try {
    sectors_.flushSector();
  } catch (...) {
    TraceWriter::close();
    throw;
  }
  TraceWriter::close();
}

}  // namespace xlatr
