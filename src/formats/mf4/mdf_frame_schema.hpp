// The groups of a file that is written on the complete way: those of every written file, and those that only it has.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "formats/mf4/block_groups.hpp"
#include "formats/mf4/block_layout_options.hpp"

namespace xlatr {

// The groups by their record ids. Files begin with the first three; the others are added when they are needed.
//
// After the record id and the time, 8 bytes, which is a whole number of nanoseconds:
//
//   Data, Remote, Error as mdf_record.hpp says, LongData as Data with room for 64 bytes
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
  LongData
};
inline constexpr std::size_t kMdfFrameGroupCount = 8;

// Changes a group that was made for every written file: its times count nanoseconds, and the length of a payload is
// linked to it. The group must be placed.
void completeMdfGroup(ChannelGroupBlock& group);

// One of those that are added, with all its channels. Not placed.
[[nodiscard]] std::unique_ptr<ChannelGroupBlock> makeMdfFrameGroup(MdfFrameGroup kind);

}  // namespace xlatr
