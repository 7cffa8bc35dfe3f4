// The records of several data groups as one stream in the order of their times.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "formats/mf4/block_header.hpp"
#include "formats/mf4/mdf_can_message.hpp"
#include "formats/mf4/mdf_record_ids.hpp"
#include "formats/mf4/mdf_record_parser.hpp"
#include "formats/mf4/mdf_turn_queue.hpp"
#include "formats/mf4/record_bytes.hpp"
#include "util/time_units.hpp"

namespace xlatr {

// The records of one data group, in the order of the file.
class DataGroupCursor {
 public:
  // Loads the data of the group. Raises the failures of the blocks, and one for channel groups of variable length.
  explicit DataGroupCursor(DataGroupBlock& group);

  // The records that the channel groups state; the largest 64-bit value for more.
  [[nodiscard]] std::uint64_t cycleCount() const { return cycleCount_; }
  [[nodiscard]] bool exhausted() const { return cyclesRead_ == cycleCount_; }

  // Reads the next record; only when not exhausted. A record that the channel groups do not describe, or that the data
  // does not hold, raises a failure, again and again.
  void next(MdfCanMessage& message);

 private:
  struct Group {
    ChannelGroupBlock* block;
    std::unique_ptr<MdfRecordParser> parser;  // made for the first record, since not all groups have any
  };

  void countCycles();
  [[nodiscard]] Group& groupOfRecord();

  std::uint8_t recordIdSize_;
  std::vector<Group> groups_;
  MdfRecordIds ids_;
  std::size_t lowestId_ = 0;  // which of the groups has it: whose records are all that have no record id
  RecordBytes data_;
  std::uint64_t cycleCount_ = 0;
  std::uint64_t cyclesRead_ = 0;
  std::uint64_t bytePosition_ = 0;
};

// The lowest time first; at equal times the message of the data group that comes first in the file. Within a data
// group the order of the file is kept, whatever the times are.
class MdfMerge {
 public:
  // Makes a cursor for each data group of a CAN bus.
  void start(HeaderBlock& header);
  void clear();
  // Makes next return false from now on; the counts stay.
  void stop();

  [[nodiscard]] std::uint64_t deliveredCount() const { return deliveredCount_; }
  [[nodiscard]] std::uint64_t totalCount() const { return totalCount_; }

  // The next message; false at the end. Raises the failures of the cursors.
  [[nodiscard]] bool next(MdfCanMessage& message);

 private:
  struct Slot {
    explicit Slot(DataGroupBlock& group) : cursor(group) {}
    DataGroupCursor cursor;
    MdfCanMessage ahead;  // the next message of the group, if the slot is in the queue
  };
  void fill(std::size_t slot);

  std::vector<std::unique_ptr<Slot>> slots_;
  MdfTurnQueue<RealMicroseconds> queue_;  // the slots that hold a message
  std::vector<std::size_t> emptySlots_;
  std::uint64_t deliveredCount_ = 0;
  std::uint64_t totalCount_ = 0;
};

}  // namespace xlatr
