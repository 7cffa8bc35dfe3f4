#include "formats/mf4/mdf_channel_search.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "formats/mf4/block_texts.hpp"
#include "formats/mf4/mdf_conversion.hpp"
#include "formats/mf4/mdf_number_field.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

constexpr auto errorBit(ErrorCode code) {
  return static_cast<std::uint32_t>(code);
}

constexpr std::array<MdfFrameName, 13> kNames = {{
    {"CAN_DataFrame", FrameKind::Data},
    {"CAN_RemoteFrame", FrameKind::Remote},
    {"CAN_ErrorFrame", FrameKind::Error},
    {"CAN_OverloadFrame", FrameKind::Overload},
    {"LIN_Frame", FrameKind::Lin},
    {"LIN_ChecksumError", FrameKind::Lin, errorBit(ErrorCode::Checksum)},
    {"LIN_TransmissionError", FrameKind::Lin, errorBit(ErrorCode::SlaveNotResponding)},
    {"LIN_ReceiveError", FrameKind::LinEvent, 0, "Receive error"},
    {"LIN_SyncError", FrameKind::LinEvent, 0, "Sync error"},
    {"LIN_WakeUp", FrameKind::LinEvent, 0, "Wake-up"},
    {"LIN_Spike", FrameKind::LinEvent, 0, "Spike"},
    {"LIN_LongDominantSignal", FrameKind::LinEvent, 0, "Long dominant signal"},
    {"LIN_LongDom", FrameKind::LinEvent, 0, "Long dominant signal"},
}};

struct MemberName {
  std::string_view name;
  MdfMember member;
  BusEventField field = BusEventField::None;  // of CAN frames
};
constexpr std::array<MemberName, kMdfMemberCount> kMemberNames = {{
    {"BusChannel", MdfMember::BusChannel, BusEventField::BusChannel},
    {"ID", MdfMember::Id, BusEventField::ID},
    {"IDE", MdfMember::Ide, BusEventField::IDE},
    {"DLC", MdfMember::Dlc, BusEventField::DLC},
    {"DataLength", MdfMember::DataLength, BusEventField::DataLength},
    {"DataBytes", MdfMember::DataBytes, BusEventField::DataBytes},
    {"Dir", MdfMember::Dir, BusEventField::Dir},
    {"RTR", MdfMember::Rtr, BusEventField::RTR},
    {"EDL", MdfMember::Edl, BusEventField::EDL},
    {"BRS", MdfMember::Brs, BusEventField::BRS},
    {"ESI", MdfMember::Esi, BusEventField::ESI},
    {"ErrorType", MdfMember::ErrorType, BusEventField::ErrorType},
    {"BitPosition", MdfMember::BitPosition, BusEventField::BitPosition},
    {"ReceivedDataByteCount", MdfMember::ReceivedDataByteCount},
    {"Checksum", MdfMember::Checksum},
    {"ChecksumModel", MdfMember::ChecksumModel},
}};

// The kind of channel that computes its times.
constexpr std::uint8_t kVirtualMaster = 3;

bool isWordCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

struct FoundName {
  const MdfFrameName* frame = nullptr;
  std::string_view rest;  // after the frame's name and the character after it
};

// "CAN_DataFrame", "CAN_DataFrame.ID", "CAN_DataFrame_2.ID", "Bus\CAN_DataFrame.ID". Producers don't agree on the case
// of letters.
FoundName frameIn(std::string_view name) {
  const std::string upper = toUpperAscii(name);
  for (const MdfFrameName& frame : kNames) {
    const std::size_t begin = upper.rfind(toUpperAscii(frame.name));
    if (begin == std::string_view::npos || (begin > 0 && isWordCharacter(name[begin - 1]))) {
      continue;
    }
    std::string_view rest = name.substr(begin + frame.name.size());
    if (rest.starts_with('_')) {
      const std::size_t number = rest.find_first_not_of("0123456789", 1);
      if (number == 1) {
        continue;
      }
      rest = number == std::string_view::npos ? std::string_view() : rest.substr(number);
    }
    if (rest.empty() || !isWordCharacter(rest.front())) {
      return {&frame, rest.empty() ? rest : rest.substr(1)};
    }
  }
  return {};
}

const MemberName* memberNamed(std::string_view name) {
  const auto* const found = std::ranges::find_if(
      kMemberNames, [name](const MemberName& member) { return equalsIgnoreCase(member.name, name); });
  return found == kMemberNames.end() ? nullptr : found;
}

class ChannelSearch {
 public:
  ChannelSearch(MdfTree& tree, MdfGroupInfo& group) : tree_(tree), group_(group) {}

  void searchGroup(std::uint64_t first) {
    constexpr std::uint8_t kSyncByTime = 1;
    for (std::uint64_t position = first; position != 0;) {
      const auto block = tree_.node<ChannelBlock>(position);
      if (!block) {
        return;
      }
      position = block->link(ChannelBlock::kNext);
      const bool isMaster = is(block->data.cnType, MdfChannelType::Master) || block->data.cnType == kVirtualMaster;
      if (isMaster && block->data.cnSyncType <= kSyncByTime && !group_.master) {
        group_.master = mdfChannelOf(*block);
      }
      const std::string name = tree_.text(block->link(ChannelBlock::kName));
      const FoundName found = frameIn(name);
      if (found.frame == nullptr || (group_.frame != nullptr && group_.frame != found.frame)) {
        group_.isOtherBusEvent = group_.isOtherBusEvent || (!isMaster && (block->data.cnFlags & kChannelBusEvent) != 0);
        continue;
      }
      group_.frame = found.frame;
      if (found.rest.empty()) {
        group_.whole = mdfChannelOf(*block);
        searchMembers(block->link(ChannelBlock::kComposition), 0);
      } else {
        takeMember(found.rest, *block);
      }
    }
  }

 private:
  static constexpr unsigned kDeepest = 3;

  void searchMembers(std::uint64_t first, unsigned depth) {
    if (depth > kDeepest || !tree_.isBlock(first, BlockTypeId::CN)) {
      return;  // none, or an array
    }
    for (std::uint64_t position = first; position != 0;) {
      const auto block = tree_.node<ChannelBlock>(position);
      if (!block) {
        return;
      }
      position = block->link(ChannelBlock::kNext);
      const std::string name = tree_.text(block->link(ChannelBlock::kName));
      const FoundName found = frameIn(name);
      takeMember(found.frame != nullptr ? found.rest : std::string_view(name), *block);
      if (block->link(ChannelBlock::kComposition) != 0) {
        searchMembers(block->link(ChannelBlock::kComposition), depth + 1);
      }
    }
  }

  // The first of a name counts. Fields may be grouped: "Flags.BRS".
  void takeMember(std::string_view name, const ChannelBlock& block) {
    const MemberName* found = memberNamed(name);
    if (found == nullptr) {
      std::size_t begin = name.size();
      while (begin > 0 && isWordCharacter(name[begin - 1])) {
        --begin;
      }
      found = memberNamed(name.substr(begin));
    }
    if (found != nullptr &&
        std::ranges::find(group_.members, found->member, &MdfMemberChannel::member) == group_.members.end()) {
      group_.members.push_back({found->member, mdfChannelOf(block)});
    }
  }

  MdfTree& tree_;
  MdfGroupInfo& group_;
};

// "CAN 2" stands for bus 2.
std::uint16_t busNumberOf(MdfTree& tree, std::uint64_t source, std::uint64_t acquisitionName) {
  std::vector<std::uint64_t> texts;
  if (const auto block = tree.leaf<SourceInformationBlock>(source)) {
    texts = {block->link(0), block->link(1)};
  }
  texts.push_back(acquisitionName);
  for (const std::uint64_t text : texts) {
    constexpr double kHighest = 255.0;
    const std::string name = tree.text(text);
    const bool endsInDigit = !name.empty() && name.back() >= '0' && name.back() <= '9';
    const auto number = endsInDigit ? numberOfWord(name) : std::nullopt;
    if (number && *number >= 1.0 && *number <= kHighest) {
      return static_cast<std::uint16_t>(*number);
    }
  }
  return 0;
}

}  // namespace

MdfChannel mdfChannelOf(const ChannelBlock& block) {
  return {block.data,
          block.position(),
          block.link(ChannelBlock::kConversion),
          block.link(ChannelBlock::kData),
          block.link(ChannelBlock::kUnit),
          0};
}

const MdfFrameName* messageFrameOfMdf(std::string_view name) {
  BusEventFrameType type = BusEventFrameType::OverloadFrame;
  if (!busEventFrameTypeFromText(name, type) || type == BusEventFrameType::OverloadFrame) {
    return nullptr;
  }
  const auto* const found = std::ranges::find(kNames, mdfFrameName(type), &MdfFrameName::name);
  return found == kNames.end() ? nullptr : found;
}

std::optional<MdfMember> mdfMemberOf(BusEventField field) {
  const auto* const found =
      field == BusEventField::None ? kMemberNames.end() : std::ranges::find(kMemberNames, field, &MemberName::field);
  return found == kMemberNames.end() ? std::nullopt : std::optional(found->member);
}

std::vector<MdfGroupInfo> findMdfGroups(MdfTree& tree, std::uint64_t firstDataGroup) {
  std::vector<MdfGroupInfo> groups;
  for (std::uint64_t position = firstDataGroup; position != 0;) {
    const auto dataGroup = tree.node<DataGroupBlock>(position);
    if (!dataGroup) {
      break;
    }
    tree.file().addBlock(dataGroup->link(DataGroupBlock::kData));
    for (std::uint64_t at = dataGroup->link(DataGroupBlock::kFirstGroup); at != 0;) {
      const auto block = tree.node<ChannelGroupBlock>(at);
      if (!block) {
        break;
      }
      MdfGroupInfo group;
      group.position = at;
      group.dataGroup = position;
      group.dataLink = dataGroup->link(DataGroupBlock::kData);
      group.recordIdSize = dataGroup->data.dgRecIdSize;
      group.data = block->data;
      if ((block->data.cgFlags & kGroupRemoteMaster) != 0) {
        group.remoteMaster = block->link(ChannelGroupBlock::kMaster);
      }
      ChannelSearch(tree, group).searchGroup(block->link(ChannelGroupBlock::kFirstChannel));
      if (group.frame != nullptr) {
        group.busNumber =
            busNumberOf(tree, block->link(ChannelGroupBlock::kSource), block->link(ChannelGroupBlock::kName));
      }
      groups.push_back(std::move(group));
      at = block->link(ChannelGroupBlock::kNext);
    }
    position = dataGroup->link(DataGroupBlock::kNext);
  }
  return groups;
}

}  // namespace xlatr
