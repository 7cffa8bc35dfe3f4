#include "formats/native/btrc_writer.hpp"

#include <exception>
#include <utility>

#include "formats/native/btrc_file_header.hpp"
#include "formats/native/btrc_mapping.hpp"
#include "messages/message_dispatch.hpp"
#include "util/date_time.hpp"
#include "util/failures.hpp"
#include "util/render.hpp"

namespace xlatr {
namespace {

constexpr std::int8_t kMicroseconds = -6;
constexpr std::uint64_t kBlockSize = std::uint64_t{Native_RecordInfo::kDefaultBlockSize} * BtrcFileHeader::kBlockUnit;

constexpr std::int32_t kMicrosecondsPerMillisecond = 1000;

// Microseconds from 0001-01-01 00:00:00.
std::uint64_t systemTimeOf(const DateTime& date) {
  constexpr std::int64_t kSecondsTo1970 = 62135596800;
  constexpr std::int64_t kMicrosecondsPerSecond = 1000000;
  return static_cast<std::uint64_t>((kSecondsTo1970 + date.seconds) * kMicrosecondsPerSecond +
                                    std::int64_t{date.millisecond} * kMicrosecondsPerMillisecond + date.microsecond);
}

Native_RecordTimeCalibration calibrationOf(const DateTime& date, std::uint64_t systemTime) {
  Native_RecordTimeCalibration record;
  record.systemTime = systemTime;
  record.year = static_cast<std::uint16_t>(date.year);
  record.month = static_cast<std::uint8_t>(date.month);
  record.day = static_cast<std::uint8_t>(date.day);
  record.hour = static_cast<std::uint8_t>(date.hour);
  record.minute = static_cast<std::uint8_t>(date.minute);
  record.second = static_cast<std::uint8_t>(date.second);
  record.microseconds = static_cast<std::uint32_t>(date.millisecond * kMicrosecondsPerMillisecond + date.microsecond);
  return record;
}

}  // namespace

BtrcWriter::BtrcWriter(std::string targetPath, bool overrideExistingFile, double targetVersion)
    : TraceWriter(std::move(targetPath), overrideExistingFile, targetVersion) {}

BtrcWriter::~BtrcWriter() {
  try {
    setActive(false);
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): who cares closes the writer
  }
}

std::unique_ptr<ITraceWriter> BtrcWriter::CreateNew() const {
  auto fresh = std::make_unique<BtrcWriter>(getTargetPath(), getOverrideExistingFile(), getTargetVersion());
  fresh->setOwnerBus(getOwnerBus());
  fresh->setSourcePath(getSourcePath());
  return fresh;
}

void BtrcWriter::open() {
  TraceWriter::open();
  position_ = 0;
  blockIndex_ = 1;
  totalRecords_ = 0;
  totalMessages_ = 0;
}

void BtrcWriter::close() {
  if (getActive() && position_ < blockLimit()) {
    fillBlock();
  }
  TraceWriter::close();
}

void BtrcWriter::requireWriting() const {
  if (!getActive()) {
    raiseFailure(FailureKind::Parsing, "Writer is not initialized");
  }
}

std::uint64_t BtrcWriter::blockLimit() const {
  return kBlockSize * blockIndex_;
}

void BtrcWriter::WriteHeader(const ITraceInfo& source) {
  requireWriting();
  const double startTime = startTimeFrom(source);
  const std::string version = formatFixed(getTargetVersion(), 0);
  const bool calibrated = version == "1";
  if (!calibrated && version != "0") {
    return;
  }
  Native_RecordInfo info;
  info.version = calibrated ? 1 : 0;
  info.timeScalingExponent = kMicroseconds;
  scratch_.clear();
  info.appendTo(scratch_);
  systemTime_ = 0;
  if (calibrated) {
    const DateTime start = DateTime::fromOleDate(startTime);
    systemTime_ = systemTimeOf(start);
    calibrationOf(start, systemTime_).appendTo(scratch_);
  }
  output().seek(0);
  position_ = 0;
  writeBytes(scratch_);
}

void BtrcWriter::WriteComment(std::string_view text) {
  constexpr std::uint64_t kNoTime = 0;
  requireWriting();
  writeRecord(kNoTime, Native_RecordTextMsg(text).Serialize());
}

void BtrcWriter::WriteMessage(const IMessage& message) {
  requireWriting();
  const bool taken = dispatchMessage(MessageClasses<BrixMessage>{}, message, [this](const BrixMessage& known) {
    if (known.kind == MessageKind::XL) {
      return;
    }
    mapToBtrc(known, mapped_);
    mapped_.AdjustTimestamp(systemTime_);
    writeRecord(mapped_.timestamp, mapped_.rawBytes);
  });
  if (!taken) {
    raiseFailure(FailureKind::Parsing, "Object cannot be casted to any supported message trace");
  }
}

// The totals that open a block don't count the record in hand.
void BtrcWriter::writeRecord(std::uint64_t timestamp, std::span<const std::uint8_t> record) {
  if (position_ >= blockLimit()) {
    raiseFailure(FailureKind::Parsing,
                 "BlockLimitWasReached: Binary-Stream position is greater than the BTRC file size");
  }
  const std::uint64_t end = position_ + record.size();
  if (end < blockLimit()) {
    writeBytes(record);
  } else if (end == blockLimit()) {
    writeBytes(record);
    ++blockIndex_;
    writeCounter(timestamp);
  } else {
    fillBlock();
    ++blockIndex_;
    writeCounter(timestamp);
    writeBytes(record);
  }
  ++totalRecords_;
  ++totalMessages_;
}

// Fills the current block to its end.
void BtrcWriter::fillBlock() {
  scratch_.clear();
  Native_RecordInvalid(blockLimit() - position_).appendTo(scratch_);
  writeBytes(scratch_);
}

void BtrcWriter::writeCounter(std::uint64_t timestamp) {
  scratch_.clear();
  Native_RecordCounter(timestamp, totalRecords_, totalMessages_).appendTo(scratch_);
  writeBytes(scratch_);
}

void BtrcWriter::writeBytes(std::span<const std::uint8_t> bytes) {
  output().write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  position_ += bytes.size();
}

}  // namespace xlatr
