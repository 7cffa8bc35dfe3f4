#include "formats/mf4/mdf_frame_schema.hpp"

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <utility>

#include "formats/mf4/block_channels.hpp"
#include "formats/mf4/block_texts.hpp"

namespace xlatr {
namespace {

constexpr std::uint8_t kTimeSync = 1;
constexpr std::uint32_t kBytesBeforeFrame = 8;

struct MemberRow {
  std::string_view name;
  std::uint32_t offset;  // after the time
  std::uint32_t bitCount;
  MdfDataType type = MdfDataType::UnsignedLittle;
};

constexpr std::array kOverloadMembers = {MemberRow{"BusChannel", 0, 8}, MemberRow{"Dir", 1, 1}};
constexpr std::array kLinMembers = {
    MemberRow{"BusChannel", 0, 8},
    MemberRow{"ID", 1, 6},
    MemberRow{"Dir", 2, 1},
    MemberRow{"DataLength", 3, 8},
    MemberRow{"ReceivedDataByteCount", 4, 8},
    MemberRow{"Checksum", 5, 8},
    MemberRow{"ChecksumModel", 6, 8, MdfDataType::SignedLittle},
    MemberRow{"DataBytes", 8, 64, MdfDataType::ByteArray},
};

struct GroupRow {
  MdfFrameGroup kind;
  std::string_view name;
  std::uint32_t frameBytes;
  std::span<const MemberRow> members;
};
constexpr std::array kGroups = {
    GroupRow{MdfFrameGroup::Overload, "CAN_OverloadFrame", 2, kOverloadMembers},
    GroupRow{MdfFrameGroup::Lin, "LIN_Frame", 16, kLinMembers},
    GroupRow{MdfFrameGroup::LinChecksumError, "LIN_ChecksumError", 16, kLinMembers},
    GroupRow{MdfFrameGroup::LinTransmissionError, "LIN_TransmissionError", 16, kLinMembers},
};

std::unique_ptr<ChannelBlock> makeTime() {
  auto channel = std::make_unique<ChannelBlock>();
  channel->data.cnType = static_cast<std::uint8_t>(MdfChannelType::Master);
  channel->data.cnSyncType = kTimeSync;
  channel->data.cnBitCount = 64;
  channel->setName("t");
  channel->setConversion(ChannelConversionBlock::createForTime());
  return channel;
}

std::unique_ptr<ChannelBlock> makeMember(const GroupRow& group, const MemberRow& row) {
  auto channel = std::make_unique<ChannelBlock>();
  channel->data.cnDataType = static_cast<std::uint8_t>(row.type);
  channel->data.cnByteOffset = kBytesBeforeFrame + row.offset;
  channel->data.cnBitCount = row.bitCount;
  channel->data.cnFlags = kChannelBusEvent;
  if (row.type == MdfDataType::ByteArray) {
    channel->data.cnType = static_cast<std::uint8_t>(MdfChannelType::MaximumLength);
  }
  channel->setName(std::string(group.name).append(".").append(row.name));
  return channel;
}

std::unique_ptr<SourceInformationBlock> makeSource(const MdfFrameGroupForm& form) {
  const bool isLin = form.kind >= MdfFrameGroup::Lin && form.kind <= MdfFrameGroup::LinTransmissionError;
  std::string name(isLin ? "LIN" : "CAN");
  if (form.bus != 0) {
    name.append(std::to_string(form.bus));
  }
  return SourceInformationBlock::createForBus(isLin ? kBusIsLin : kBusIsCan, name);
}

std::unique_ptr<ChannelGroupBlock> makeGroup(const GroupRow& row) {
  auto group = std::make_unique<ChannelGroupBlock>();
  group->data.cgFlags = kGroupBusEvent | kGroupPlainBusEvent;
  group->data.cgDataBytes = kBytesBeforeFrame + row.frameBytes;
  group->channels().add(makeTime());
  auto frame = std::make_unique<ChannelBlock>();
  frame->data.cnDataType = static_cast<std::uint8_t>(MdfDataType::ByteArray);
  frame->data.cnByteOffset = kBytesBeforeFrame;
  frame->data.cnBitCount = 8 * row.frameBytes;
  frame->data.cnFlags = kChannelBusEvent;
  frame->setName(row.name);
  for (const MemberRow& member : row.members) {
    frame->composition().add(makeMember(row, member));
  }
  group->channels().add(std::move(frame));
  group->setName(row.name);
  return group;
}

// One that every written file has.
std::unique_ptr<ChannelGroupBlock> makeCommonGroup(const MdfFrameGroupForm& form) {
  MdfLayoutOptions options;
  options.largePayload = form.payload == MdfPayload::Long;
  options.layout = form.payload == MdfPayload::Stored ? MdfLayout::SignalData : MdfLayout::Unsorted;
  const auto kind =
      form.kind == MdfFrameGroup::LongData ? BusEventFrameType::DataFrame : static_cast<BusEventFrameType>(form.kind);
  return ChannelGroupBlock::createTree(options, kind);
}

}  // namespace

std::unique_ptr<ChannelGroupBlock> makeMdfFrameGroup(const MdfFrameGroupForm& form) {
  const auto* const row = std::ranges::find(kGroups, form.kind, &GroupRow::kind);
  std::unique_ptr<ChannelGroupBlock> group = row != kGroups.end() ? makeGroup(*row) : makeCommonGroup(form);
  group->data.cgRecordId = form.recordId;
  group->setSource(makeSource(form));
  for (ChannelBlock& channel : group->channels()) {
    if (channel.data.cnType == static_cast<std::uint8_t>(MdfChannelType::Master)) {
      channel.data.cnDataType = static_cast<std::uint8_t>(MdfDataType::SignedLittle);
    } else {
      channel.setSource(makeSource(form));
    }
  }
  return group;
}

void linkMdfPayload(ChannelGroupBlock& group) {
  for (ChannelBlock& channel : group.channels()) {
    std::uint64_t length = 0;
    for (ChannelBlock& member : channel.composition()) {
      length = member.name().ends_with(".DataLength") ? member.position() : length;
    }
    for (ChannelBlock& member : channel.composition()) {
      if (member.data.cnType == static_cast<std::uint8_t>(MdfChannelType::MaximumLength)) {
        member.setLink(ChannelBlock::kData, length);
      }
    }
  }
}

}  // namespace xlatr
