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

constexpr std::uint64_t kBlockSize = std::uint64_t{Native_RecordInfo::kDefaultBlockSize} * BtrcFileHeader::kBlockUnit;

// The time since 0001-01-01 00:00:00.
UnsignedMicroseconds systemTimeOf(const DateTime& date) {
  constexpr std::chrono::seconds kFromYearOneTo1970(62135596800);
  return kFromYearOneTo1970 + std::chrono::seconds(date.seconds) + date.fraction();
}

Native_RecordTimeCalibration calibrationOf(const DateTime& date, UnsignedMicroseconds systemTime) {
  Native_RecordTimeCalibration record;
  record.systemTimeTicks = systemTime.count();
  record.year = static_cast<std::uint16_t>(date.year);
  record.month = static_cast<std::uint8_t>(date.month);
  record.day = static_cast<std::uint8_t>(date.day);
  record.hour = static_cast<std::uint8_t>(date.hour);
  record.minute = static_cast<std::uint8_t>(date.minute);
  record.second = static_cast<std::uint8_t>(date.second);
  record.microseconds = static_cast<std::uint32_t>(date.fraction().count());
  return record;
}

}  // namespace

BtrcWriter::BtrcWriter(std::string targetPath, bool overrideExistingFile, double targetVersion)
    : TraceWriter(std::move(targetPath), overrideExistingFile, targetVersion) {}

BtrcWriter::~BtrcWriter() {
  try {
    setActive(false);
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): whoever wants to know closes the writer
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
  const double startDays = startDaysFrom(source);
  const std::string version = formatFixed(getTargetVersion(), 0);
  const bool calibrated = version == "1";
  if (!calibrated && version != "0") {
    return;
  }
  Native_RecordInfo info;
  info.version = calibrated ? 1 : 0;
  info.timeScalingExponent = TimeScale::kMicroseconds;
  scratch_.clear();
  appendFields(scratch_, info);
  systemTime_ = UnsignedMicroseconds::zero();
  if (calibrated) {
    const DateTime start = DateTime::fromOleDate(startDays);
    systemTime_ = systemTimeOf(start);
    appendFields(scratch_, calibrationOf(start, systemTime_));
  }
  output().seek(0);
  position_ = 0;
  writeBytes(scratch_);
}

void BtrcWriter::WriteComment(std::string_view text) {
  constexpr UnsignedMicroseconds kNoTime(0);
  requireWriting();
  Bytes record;
  appendComment(record, text);
  writeRecord(kNoTime, record);
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
void BtrcWriter::writeRecord(UnsignedMicroseconds timestamp, std::span<const std::uint8_t> record) {
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
  appendFiller(scratch_, static_cast<std::size_t>(blockLimit() - position_));
  writeBytes(scratch_);
}

void BtrcWriter::writeCounter(UnsignedMicroseconds timestamp) {
  scratch_.clear();
  Native_RecordCounter record;
  record.timestampTicks = timestamp.count();
  record.totalRecords = totalRecords_;
  record.totalMessages = totalMessages_;
  appendFields(scratch_, record);
  writeBytes(scratch_);
}

void BtrcWriter::writeBytes(std::span<const std::uint8_t> bytes) {
  output().write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  position_ += bytes.size();
}

}  // namespace xlatr
