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

constexpr std::uint8_t kWrapCounter = 1;  // of a session that never wraps
constexpr std::uint32_t kFirstDataSector = 1;

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
  session_ = {};
  session_.version = static_cast<std::uint8_t>(std::lround(getTargetVersion()));
  session_.dateAndTime = SessionDateTime::fromDateTime(start);
  session_.startTimestampUs = static_cast<std::uint64_t>(start.microsecond);
  session_.startLocation.sector = kFirstDataSector;
  SectorImage directory{};
  storeFields(directory.data(), session_);
  output().seek(0);
  writeSector(directory);
  sector_.seal(session_.dateAndTime, kWrapCounter);
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
  if (!fitsBtrEntry(message)) {
    return;
  }
  sector_.entryAt(entryCount_) = mapToBtrEntry(message);
  if (++entryCount_ == DataSector::kEntries) {
    flushSector();
  }
}

void BtrSessionWriter::flushSector() {
  entryCount_ = 0;
  const SectorImage image = sector_.toBytes();
  sector_ = {};
  sector_.seal(session_.dateAndTime, kWrapCounter);
  writeSector(image);
}

void BtrSessionWriter::writeSector(const SectorImage& image) {
  output().write({reinterpret_cast<const char*>(image.data()), image.size()});
}

void BtrSessionWriter::close() {
  try {
    flushSector();
  } catch (...) {
    TraceWriter::close();
    throw;
  }
  TraceWriter::close();
}

}  // namespace xlatr
