// The channels of a group that say something of a frame, found by their names.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/mf4/block_groups.hpp"
#include "formats/mf4/mdf_tree.hpp"
#include "frames/frame.hpp"
#include "messages/enumerations.hpp"

namespace xlatr {

// The frames and events of the bus logging model (ASAM MDF 4.1, bus logging) that are read.
struct MdfFrameName {
  std::string_view name;  // of the channel, or what its members' names begin with
  FrameKind kind;
  std::uint32_t linErrors = 0;      // ErrorCode, of a LIN frame that went wrong
  std::string_view eventText = {};  // of a LIN event
};

// What a member of a frame says.
enum class MdfMember : std::uint8_t {
  BusChannel,
  Id,
  Ide,
  Dlc,
  DataLength,
  DataBytes,
  Dir,
  Rtr,
  Edl,
  Brs,
  Esi,
  ErrorType,
  BitPosition,
  ReceivedDataByteCount,
  Checksum,
  ChecksumModel,
};
inline constexpr std::size_t kMdfMemberCount = 16;

struct MdfChannel {
  ChannelBlockData data;
  std::uint64_t position = 0;
  std::uint64_t conversion = 0;
  std::uint64_t dataLink = 0;
  std::uint64_t unit = 0;
  std::size_t column = 0;  // of the table that the frames stand in
};

struct MdfMemberChannel {
  MdfMember member;
  MdfChannel channel;
};

[[nodiscard]] MdfChannel mdfChannelOf(const ChannelBlock& block);

// One channel group, with what of its data group belongs to it.
struct MdfGroupInfo {
  std::uint64_t position = 0;
  std::uint64_t dataGroup = 0;  // position
  std::uint64_t dataLink = 0;
  std::uint8_t recordIdSize = 0;
  std::uint64_t remoteMaster = 0;  // position of the group with the times; 0 if they are in this one
  ChannelGroupBlockData data;
  std::uint16_t busNumber = 0;   // by the name of the source; 0 if that has none
  bool isOtherBusEvent = false;  // frames of a kind that is not read

  // What findMdfChannels() found.
  std::optional<MdfChannel> master;
  const MdfFrameName* frame = nullptr;
  std::optional<MdfChannel> whole;  // the channel that the members are the composition of
  std::vector<MdfMemberChannel> members;
};

// The frame that a message is made of, by its name in letters of any case; null for other frames and names.
[[nodiscard]] const MdfFrameName* messageFrameOfMdf(std::string_view name);
// Nothing for what is not read.
[[nodiscard]] std::optional<MdfMember> mdfMemberOf(BusEventField field);

// All groups of a file with their channels.
[[nodiscard]] std::vector<MdfGroupInfo> findMdfGroups(MdfTree& tree, std::uint64_t firstDataGroup);

}  // namespace xlatr
