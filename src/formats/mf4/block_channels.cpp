#include "formats/mf4/block_channels.hpp"

#include <algorithm>
#include <functional>
#include <numeric>

namespace xlatr {
namespace {

constexpr std::array<std::string_view, 4> kFrameNames = {"CAN_DataFrame", "CAN_RemoteFrame", "CAN_ErrorFrame",
                                                         "CAN_OverloadFrame"};
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

// The block of a link that is no list.
template <class Block>
Block* followOnce(BlockChain<Block>& cache, BlockStream* stream, std::uint64_t position) {
  if (cache.blocks().empty()) {
    if (auto block = followLink<Block>(stream, position)) {
      cache.add(std::move(block));
    }
  }
  return cache.at(0);
}

}  // namespace

std::string_view mdfFrameName(BusEventFrameType kind) {
  const auto index = static_cast<std::size_t>(kind);
  return index < kFrameNames.size() ? kFrameNames[index] : "Unknown";
}

const std::string& ChannelConversionBlock::unitText() {
  if (!unitText_) {
    unitText_ = readText(stream(), link(kUnit));
  }
  return *unitText_;
}

std::optional<double> ChannelConversionBlock::evaluate(double value) const {
  switch (static_cast<MdfConversionType>(data.ccType)) {
    case MdfConversionType::Linear:
      return data.ccVal.size() == 2 && data.ccVal[1] == 0.0 ? std::optional(data.ccVal[0]) : std::nullopt;
    case MdfConversionType::ValueToValue:
      return lookUp(value);
  }
  return std::nullopt;
}

// A record looks up every field that it has, so the table is made ready once.
std::optional<double> ChannelConversionBlock::lookUp(double value) const {
  if (!table_) {
    table_.emplace(data.ccVal);
  }
  return table_->lookUp(value);
}

std::vector<TreeChild> ChannelConversionBlock::children() {
  return {{kUnit, &unit_}};
}

std::uint64_t ChannelArrayBlock::sumOfSizes() const {
  return std::accumulate(data.dimensionSizes.begin(), data.dimensionSizes.end(), std::uint64_t{0});
}

std::uint64_t ChannelArrayBlock::productOfSizes() const {
  return std::accumulate(data.dimensionSizes.begin(), data.dimensionSizes.end(), std::uint64_t{1}, std::multiplies<>());
}

ChannelBlock::ChannelBlock(BlockStream& stream, std::uint64_t position)
    : DescribedBlock(stream, position), composition_(&stream, link(kComposition)) {}

const std::string& ChannelBlock::name() {
  if (!name_) {
    name_ = readText(stream(), link(kName));
  }
  return *name_;
}

std::unique_ptr<ChannelArrayBlock> ChannelBlock::compositionArray() const {
  return followLink<ChannelArrayBlock>(stream(), link(kComposition));
}

ChannelConversionBlock* ChannelBlock::conversion() {
  return followOnce(conversion_, stream(), link(kConversion));
}

std::unique_ptr<IDataBlock> ChannelBlock::dataLink() const {
  constexpr std::array kSignalData = {BlockTypeId::SD, BlockTypeId::DL, BlockTypeId::DZ, BlockTypeId::HL};
  const std::uint64_t position = link(kData);
  if (stream() == nullptr || position == 0 ||
      std::ranges::find(kSignalData, HeaderSection::typeOf(readHeaderSection(*stream(), position))) ==
          kSignalData.end()) {
    return nullptr;
  }
  return followDataLink(stream(), position);
}

void ChannelBlock::setName(std::string_view text) {
  name_ = text;
  nameText_.add(createText(text));
}

std::vector<TreeChild> ChannelBlock::children() {
  return {{kComposition, &composition_}, {kName, &nameText_}, {kSource, &source_}, {kConversion, &conversion_}};
}

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
  constexpr std::uint64_t kCycleCountOffset = 8;  // behind the record id
  return position() + kHeaderSectionSize + kLinkSize * links().size() + kCycleCountOffset;
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

const BlockBase* DataGroupBlock::dataPlaceholder() const {
  return placeholder_.blocks().empty() ? nullptr : placeholder_.blocks().front().get();
}

std::vector<TreeChild> DataGroupBlock::children() {
  return {{kFirstGroup, &channelGroups_}, {kData, &placeholder_, true}};
}

}  // namespace xlatr
