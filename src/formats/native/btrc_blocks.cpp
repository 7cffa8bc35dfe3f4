#include "formats/native/btrc_blocks.hpp"

#include <chrono>

#include "util/failures.hpp"

namespace xlatr {
namespace {

Native_RecordTimeCalibration calibrationOf(const DateTime& date) {
  Native_RecordTimeCalibration record;
  record.systemTimeTicks = btrcSystemTime(date).count();
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

UnsignedMicroseconds btrcSystemTime(const DateTime& start) {
  constexpr std::chrono::seconds kFromYearOneTo1970(62135596800);
  return kFromYearOneTo1970 + std::chrono::seconds(start.seconds) + start.fraction();
}

void appendBtrcHead(Bytes& out, const DateTime& start) {
  Native_RecordInfo info;
  info.version = 1;
  info.timeScalingExponent = TimeScale::kMicroseconds;
  appendFields(out, info);
  appendFields(out, calibrationOf(start));
}

void BtrcBlocks::begin() {
  position_ = 0;
  blockIndex_ = 1;
  totalRecords_ = 0;
  totalMessages_ = 0;
}

void BtrcBlocks::writeHead(std::span<const std::uint8_t> head) {
  output_.seek(0);
  position_ = 0;
  writeBytes(head);
}

void BtrcBlocks::write(UnsignedMicroseconds time, std::span<const std::uint8_t> record) {
  if (position_ >= limit()) {
    raiseFailure(FailureKind::Parsing,
                 "BlockLimitWasReached: Binary-Stream position is greater than the BTRC file size");
  }
  const std::uint64_t end = position_ + record.size();
  if (end < limit()) {
    writeBytes(record);
  } else if (end == limit()) {
    writeBytes(record);
    ++blockIndex_;
    writeCounter(time);
  } else {
    fillBlock();
    ++blockIndex_;
    writeCounter(time);
    writeBytes(record);
  }
  ++totalRecords_;
  ++totalMessages_;
}

void BtrcBlocks::finish() {
  if (position_ < limit()) {
    fillBlock();
  }
}

// Fills the current block to its end.
void BtrcBlocks::fillBlock() {
  scratch_.clear();
  appendFiller(scratch_, static_cast<std::size_t>(limit() - position_));
  writeBytes(scratch_);
}

void BtrcBlocks::writeCounter(UnsignedMicroseconds time) {
  scratch_.clear();
  Native_RecordCounter record;
  record.timestampTicks = time.count();
  record.totalRecords = totalRecords_;
  record.totalMessages = totalMessages_;
  appendFields(scratch_, record);
  writeBytes(scratch_);
}

void BtrcBlocks::writeBytes(std::span<const std::uint8_t> bytes) {
  output_.write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  position_ += bytes.size();
}

}  // namespace xlatr
