#include "formats/mf4/block_groups.hpp"

namespace xlatr {
namespace {

constexpr std::string_view kDataBytesName = "CAN_DataFrame.DataBytes";

// A character of the basic plane as UTF-8.
std::string toUtf8(std::uint16_t character) {
  const auto continued = [character](unsigned shift) {
    return static_cast<char>(0x80U | (static_cast<unsigned>(character) >> shift & 0x3FU));
  };
  if (character < 0x80) {
    return {static_cast<char>(character)};
  }
  if (character < 0x800) {
    return {static_cast<char>(0xC0U | (static_cast<unsigned>(character) >> 6)), continued(0)};
  }
  return {static_cast<char>(0xE0U | (static_cast<unsigned>(character) >> 12)), continued(6), continued(0)};
}

}  // namespace

ChannelGroupBlock::ChannelGroupBlock(BlockStream& stream, std::uint64_t position)
    : DescribedBlock(stream, position), channels_(&stream, link(kFirstChannel)) {}

const std::string& ChannelGroupBlock::acquisitionName() {
  if (!name_) {
    name_ = readText(stream(), link(kName));
  }
  return *name_;
}

SourceInformationBlock* ChannelGroupBlock::source() {
  return followOnce(source_, stream(), link(kSource));
}

std::string ChannelGroupBlock::pathSeparatorText() const {
  return data.cgPathSeparator == 0 ? std::string() : toUtf8(data.cgPathSeparator);
}

ChannelBlock* ChannelGroupBlock::findDataBytesChannel() {
  for (ChannelBlock& frame : channels_) {
    if (frame.name() != mdfFrameName(BusEventFrameType::DataFrame)) {
      continue;
    }
    for (ChannelBlock& child : frame.composition()) {
      if (child.name() == kDataBytesName) {
        return &child;
      }
    }
  }
  return nullptr;
}

std::uint64_t ChannelGroupBlock::cycleCountPosition() const {
  return position() + kHeaderSectionSize + kLinkSize * links().size() +
         layoutOffset<&ChannelGroupBlockData::cgCycleCount>();
}

void ChannelGroupBlock::setName(std::string_view text) {
  name_ = text;
  nameText_.add(createText(text));
}

std::vector<TreeChild> ChannelGroupBlock::children() {
  return {{kFirstChannel, &channels_}, {kName, &nameText_}, {kSource, &source_}};
}

DataGroupBlock::DataGroupBlock(BlockStream& stream, std::uint64_t position)
    : DescribedBlock(stream, position), channelGroups_(&stream, link(kFirstGroup)) {}

std::unique_ptr<IDataBlock> DataGroupBlock::dataBlock() const {
  return followDataLink(stream(), link(kData));
}

bool DataGroupBlock::hasCanBus() {
  for (ChannelGroupBlock& group : channelGroups_) {
    if ((group.data.cgFlags & kGroupBusEvent) == 0) {
      continue;
    }
    if (const auto* const source = group.source(); source != nullptr && source->data.siBusType == kBusIsCan) {
      return true;
    }
  }
  return false;
}

ChannelGroupBlock* DataGroupBlock::findChannelGroup(BusEventFrameType kind) {
  for (ChannelGroupBlock& group : channelGroups_) {
    if (group.acquisitionName() == mdfFrameName(kind)) {
      return &group;
    }
  }
  return nullptr;
}

std::uint64_t DataGroupBlock::dataLinkPosition() const {
  return position() + kHeaderSectionSize + kLinkSize * kData;
}

std::vector<TreeChild> DataGroupBlock::children() {
  return {{kFirstGroup, &channelGroups_}, {kData, &placeholder_, true}};
}

}  // namespace xlatr
