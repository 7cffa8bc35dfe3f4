// The blocks of a BTRC file that is written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "formats/native/btrc_file_header.hpp"
#include "formats/native/native_record.hpp"
#include "io/buffered_output.hpp"
#include "util/date_time.hpp"
#include "util/time_units.hpp"

namespace xlatr {

// The bytes of a block that is written.
inline constexpr std::uint64_t kBtrcBlockSize =
    std::uint64_t{Native_RecordInfo::kDefaultBlockSize} * BtrcFileHeader::kBlockUnit;

// The longest record that leaves its block as others leave it: after the totals, with a filler after it.
inline constexpr std::size_t kLongestBtrcRecord =
    kBtrcBlockSize - kLayoutSize<Native_RecordCounter> - kRecordHeaderSize;

// The time stamp of a start: the microseconds since 0001-01-01 00:00:00.
[[nodiscard]] UnsignedMicroseconds btrcSystemTime(const DateTime& start);

// The records that open a file of version 1, which states its start, with times in microseconds.
void appendBtrcHead(Bytes& out, const DateTime& start);

// Puts records into blocks of equal length: a record never runs over the end of a block unless it is longer than one,
// so that a reader can go on at any block after a damaged one. Each block but the first begins with a record of the
// totals. One thread at a time; failures are std::ios_base::failure.
class BtrcBlocks {
 public:
  // Writes into the output, which must stay.
  explicit BtrcBlocks(BufferedOutput& output) : output_(output) {}

  // A new file.
  void begin();
  // Writes the head at the start of the file, where the records then go on.
  void writeHead(std::span<const std::uint8_t> head);
  // The totals that open a block have the time of the record in hand and don't count it. Nothing can be written after a
  // record that takes a block of its own, or more: that raises a ConverterParsingException.
  void write(UnsignedMicroseconds time, std::span<const std::uint8_t> record);
  // Fills the last block to its end.
  void finish();

 private:
  [[nodiscard]] std::uint64_t limit() const { return kBtrcBlockSize * blockIndex_; }
  void fillBlock();
  void writeCounter(UnsignedMicroseconds time);
  void writeBytes(std::span<const std::uint8_t> bytes);

  BufferedOutput& output_;
  std::uint64_t position_ = 0;    // bytes from the start of the file
  std::uint32_t blockIndex_ = 1;  // number of the current block
  std::uint64_t totalRecords_ = 0;
  std::uint64_t totalMessages_ = 0;
  std::vector<std::uint8_t> scratch_;
};

}  // namespace xlatr
