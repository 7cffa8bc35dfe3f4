// The groups of a file that is written on the complete way: those of every written file, and those that only it has.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "formats/mf4/block_groups.hpp"
#include "formats/mf4/block_layout_options.hpp"

namespace xlatr {

// What the records of a group are. After the record id and the time, 8 bytes, which is a whole number of nanoseconds:
//
//   Data, Remote, Error as mdf_record.hpp says; LongData as Data
//   Overload                0 bus  1 flags (bit 0 sent)
//   Lin...                  0 bus  1 identifier  2 flags (bit 0 sent)  3 length  4 bytes received  5 checksum
//                           6 model of the checksum (mdf_frame_codes.hpp)  7 reserved  8 the bytes, 8 of them
enum class MdfFrameGroup : std::uint8_t {
  Data,
  Remote,
  Error,
  Overload,
  Lin,
  LinChecksumError,
  LinTransmissionError,
  LongData  // CAN FD frames of a file whose classic ones have short records
};
inline constexpr std::size_t kMdfFrameGroupCount = 8;

// What of the payload of a data frame stands in its record: 8 bytes, 64 bytes, or where in the signal data it is.
enum class MdfPayload : std::uint8_t { Short, Long, Stored };

struct MdfFrameGroupForm {
  MdfFrameGroup kind = MdfFrameGroup::Data;
  MdfPayload payload = MdfPayload::Long;  // of Data and LongData
  std::uint8_t recordId = 0;
  std::uint32_t bus = 0;  // 0: of no bus, or of several
};

// A group with all its channels. Not placed. Its source is the bus: "CAN1", "LIN2", or "CAN" where it is none alone.
[[nodiscard]] std::unique_ptr<ChannelGroupBlock> makeMdfFrameGroup(const MdfFrameGroupForm& form);

// Of a group that is placed: links a payload that stands in the records to its length, so that readers do not take what
// it is filled up with for data.
void linkMdfPayload(ChannelGroupBlock& group);

}  // namespace xlatr
