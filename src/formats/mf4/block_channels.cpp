#include "formats/mf4/block_channels.hpp"

#include <algorithm>
#include <array>
#include <functional>
#include <numeric>

namespace xlatr {
namespace {

constexpr std::array<std::string_view, 4> kFrameNames = {"CAN_DataFrame", "CAN_RemoteFrame", "CAN_ErrorFrame",
                                                         "CAN_OverloadFrame"};

}  // namespace

std::string_view mdfFrameName(BusEventFrameType kind) {
  const auto index = static_cast<std::size_t>(kind);
  return index < kFrameNames.size() ? kFrameNames[index] : "Unknown";
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

}  // namespace xlatr
