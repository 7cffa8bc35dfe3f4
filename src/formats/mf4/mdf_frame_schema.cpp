#include "formats/mf4/mdf_frame_schema.hpp"

#include <array>
#include <span>
#include <string>
#include <utility>

namespace xlatr {
namespace {

constexpr std::uint8_t kBusIsLin = 3;
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

std::unique_ptr<SourceInformationBlock> makeSource(const GroupRow& group) {
  auto source = SourceInformationBlock::createForGroup();
  if (group.kind != MdfFrameGroup::Overload) {
    source->data.siBusType = kBusIsLin;
  }
  return source;
}

std::unique_ptr<ChannelGroupBlock> makeGroup(const GroupRow& row) {
  auto group = std::make_unique<ChannelGroupBlock>();
  group->data.cgRecordId = static_cast<std::uint64_t>(row.kind);
  group->data.cgFlags = kGroupBusEvent | kGroupPlainBusEvent;
  group->data.cgDataBytes = kBytesBeforeFrame + row.frameBytes;
  group->channels().add(makeTime());
  auto frame = std::make_unique<ChannelBlock>();
  frame->data.cnDataType = static_cast<std::uint8_t>(MdfDataType::ByteArray);
  frame->data.cnByteOffset = kBytesBeforeFrame;
  frame->data.cnBitCount = 8 * row.frameBytes;
  frame->data.cnFlags = kChannelBusEvent;
  frame->setName(row.name);
  frame->setSource(makeSource(row));
  for (const MemberRow& member : row.members) {
    frame->composition().add(makeMember(row, member));
  }
  group->channels().add(std::move(frame));
  group->setName(row.name);
  group->setSource(makeSource(row));
  return group;
}

}  // namespace

void completeMdfGroup(ChannelGroupBlock& group) {
  for (ChannelBlock& channel : group.channels()) {
    if (channel.data.cnType == static_cast<std::uint8_t>(MdfChannelType::Master)) {
      channel.data.cnDataType = static_cast<std::uint8_t>(MdfDataType::SignedLittle);
    }
    std::uint64_t length = 0;
    for (ChannelBlock& member : channel.composition()) {
      length = member.name().ends_with(".DataLength") ? member.position() : length;
    }
    for (ChannelBlock& member : channel.composition()) {
      if (member.name().ends_with(".DataBytes")) {
        member.setLink(ChannelBlock::kData, length);
      }
    }
  }
}

std::unique_ptr<ChannelGroupBlock> makeMdfFrameGroup(MdfFrameGroup kind) {
  for (const GroupRow& row : kGroups) {
    if (row.kind == kind) {
      return makeGroup(row);
    }
  }
  auto group = ChannelGroupBlock::createTree(MdfLayoutOptions(), BusEventFrameType::DataFrame);
  group->data.cgRecordId = static_cast<std::uint64_t>(MdfFrameGroup::LongData);
  return group;
}

}  // namespace xlatr
