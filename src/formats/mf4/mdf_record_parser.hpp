// From a record to a message, by the channels of its group.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "formats/mf4/block_groups.hpp"
#include "formats/mf4/mdf_can_message.hpp"
#include "formats/mf4/mdf_frame_layout.hpp"
#include "formats/mf4/mdf_record_value.hpp"

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
  struct Step {
    std::optional<MdfTimeReader> time;  // one of the two
    std::unique_ptr<MdfFrameLayout> frame;

    [[nodiscard]] bool read(const std::uint8_t* record, MdfCanMessage& message) const;
  };

  std::uint32_t recordSize_;
  std::vector<Step> steps_;  // up to the first that is never read
  bool complete_ = false;    // two steps
};

}  // namespace xlatr
