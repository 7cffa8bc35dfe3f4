// From a record to a message, by the channels of its group.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "formats/mf4/block_groups.hpp"
#include "formats/mf4/mdf_can_message.hpp"
#include "formats/mf4/mdf_frame_plan.hpp"
#include "formats/mf4/mdf_number_field.hpp"
#include "util/time_units.hpp"

namespace xlatr {

// Finds the channels of a group by their names once; a record is then a handful of moves. The group must outlive it.
//
// A group holds frames if it has exactly two channels that are the master or are named after a frame (those of overload
// frames are passed over), mostly one of each.
class MdfRecordParser {
 public:
  // Raises the failures of the blocks, and one for payloads that stand in a stream.
  explicit MdfRecordParser(ChannelGroupBlock& group);

  // Bytes of a record, without record id.
  [[nodiscard]] std::uint32_t recordSize() const { return recordSize_; }

  // `record` has the bytes of a record and RecordBytes::kPadding readable ones after it. The message is one that was
  // reset; it is valid afterwards if the record is that of a frame. A message of another bus than CAN raises a failure.
  void parse(const std::uint8_t* record, MdfCanMessage& message) const;

 private:
  enum class TimeKind : std::uint8_t { Unsigned, Signed, Real32, Real64 };
  struct TimeStep {
    MdfNumberField number;
    TimeKind kind = TimeKind::Unsigned;
    std::uint8_t bitCount = 64;
    TimeUnit unit = TimeUnit::Nanosecond;
  };

  struct Step {
    std::unique_ptr<TimeStep> time;  // one of the two
    std::unique_ptr<MdfFramePlan> frame;
  };

  [[nodiscard]] std::unique_ptr<TimeStep> makeTimeStep(ChannelBlock& channel) const;

  static bool readTime(const TimeStep& step, const std::uint8_t* record, MdfCanMessage& message);

  std::uint32_t recordSize_;
  std::vector<Step> steps_;  // up to the first that is never read
  bool complete_ = false;    // two steps
};

}  // namespace xlatr
