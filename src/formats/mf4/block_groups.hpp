// The groups: data groups, whose records lie together, and channel groups, whose records are alike.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "formats/mf4/block_base.hpp"
#include "formats/mf4/block_channels.hpp"
#include "formats/mf4/block_data.hpp"
#include "formats/mf4/block_layout_options.hpp"
#include "formats/mf4/block_texts.hpp"

namespace xlatr {

// Bits of cgFlags.
inline constexpr std::uint16_t kGroupVariableLength = 0x1;  // records are one channel's values of varying length
inline constexpr std::uint16_t kGroupBusEvent = 0x2;
inline constexpr std::uint16_t kGroupPlainBusEvent = 0x4;
inline constexpr std::uint16_t kGroupRemoteMaster = 0x8;  // a seventh link leads to another group's master channel

struct ChannelGroupBlockData {
  static constexpr BlockTypeId kType = BlockTypeId::CG;
  static constexpr std::size_t kLinkCount = 6;

  std::uint64_t cgRecordId = 0;
  std::uint64_t cgCycleCount = 0;
  std::uint16_t cgFlags = 0;
  std::uint16_t cgPathSeparator = 0;  // UTF-16; 0 for none
  std::uint32_t cgDataBytes = 0;      // of a record, without record id
  std::uint32_t cgInvalBytes = 0;

  static consteval auto fields() {
    return FieldList{
        Field{0, "cgRecordId", &ChannelGroupBlockData::cgRecordId},
        Field{8, "cgCycleCount", &ChannelGroupBlockData::cgCycleCount},
        Field{16, "cgFlags", &ChannelGroupBlockData::cgFlags},
        Field{18, "cgPathSeparator", &ChannelGroupBlockData::cgPathSeparator},
        Reserved{20, 4},
        Field{24, "cgDataBytes", &ChannelGroupBlockData::cgDataBytes},
        Field{28, "cgInvalBytes", &ChannelGroupBlockData::cgInvalBytes},
    };
  }
};

class ChannelGroupBlock final : public DescribedBlock<ChannelGroupBlockData> {
 public:
  enum Link : std::size_t { kNext, kFirstChannel, kName, kSource, kSampleReduction, kComment, kMaster };

  ChannelGroupBlock() = default;
  ChannelGroupBlock(BlockStream& stream, std::uint64_t position);

  // A group to be written for the frames of this kind, with all its channels.
  [[nodiscard]] static std::unique_ptr<ChannelGroupBlock> createTree(const MdfLayoutOptions& options,
                                                                     BusEventFrameType kind);

  [[nodiscard]] BlockChain<ChannelBlock>& channels() { return channels_; }
  [[nodiscard]] ChannelBlock* firstChannel() { return channels_.at(0); }
  // Trailing zero bytes cut; empty without a text.
  [[nodiscard]] const std::string& acquisitionName();
  // Null without one.
  [[nodiscard]] SourceInformationBlock* source();
  // The character between the parts of a channel's name, as UTF-8; empty where the group states none.
  [[nodiscard]] std::string pathSeparatorText() const;
  // The channel with the payload of data frames, a child of the frame's channel; null without one.
  [[nodiscard]] ChannelBlock* findDataBytesChannel();
  // Offset in the file of cgCycleCount.
  [[nodiscard]] std::uint64_t cycleCountPosition() const;

  // For blocks to be written.
  void setName(std::string_view text);
  void setSource(std::unique_ptr<SourceInformationBlock> source) { source_.set(std::move(source)); }

  [[nodiscard]] std::vector<TreeChild> children() override;
  [[nodiscard]] bool hasValidLinkCount() const override { return links().size() == 6 || links().size() == 7; }

 private:
  BlockChain<ChannelBlock> channels_;
  BlockChain<TextBlock> nameText_;
  BlockChain<SourceInformationBlock> source_;
  std::optional<std::string> name_;
};

struct DataGroupBlockData {
  static constexpr BlockTypeId kType = BlockTypeId::DG;
  static constexpr std::size_t kLinkCount = 4;

  std::uint8_t dgRecIdSize = 0;  // bytes of the record id before each record: 0, 1, 2, 4 or 8

  static consteval auto fields() {
    return FieldList{
        Field{0, "dgRecIdSize", &DataGroupBlockData::dgRecIdSize},
        Reserved{1, 7},
    };
  }
};

class DataGroupBlock final : public DescribedBlock<DataGroupBlockData> {
 public:
  enum Link : std::size_t { kNext, kFirstGroup, kData, kComment };

  DataGroupBlock() = default;
  DataGroupBlock(BlockStream& stream, std::uint64_t position);

  // A group to be written: unsorted with one channel group for each kind of frame, sorted with that of `kind` alone.
  // Its data link leads to where the tree below it ends, until the data block is written.
  [[nodiscard]] static std::unique_ptr<DataGroupBlock> createTree(const MdfLayoutOptions& options,
                                                                  BusEventFrameType kind);
  // An unsorted group to be written, whose channel groups and data are added to the file later.
  [[nodiscard]] static std::unique_ptr<DataGroupBlock> createEmpty();

  [[nodiscard]] BlockChain<ChannelGroupBlock>& channelGroups() { return channelGroups_; }
  [[nodiscard]] ChannelGroupBlock* firstChannelGroup() { return channelGroups_.at(0); }
  // Null for no link and for blocks that hold no data.
  [[nodiscard]] std::unique_ptr<IDataBlock> dataBlock() const;
  // Whether one of its channel groups holds frames of a CAN bus.
  [[nodiscard]] bool hasCanBus();
  // The group whose acquisition name is that of the frames of this kind; null without one.
  [[nodiscard]] ChannelGroupBlock* findChannelGroup(BusEventFrameType kind);
  // Offset in the file of the link to the data.
  [[nodiscard]] std::uint64_t dataLinkPosition() const;

  // Of a group to be written: the block that stands for its data block.
  void setDataPlaceholder(std::unique_ptr<BlockBase> placeholder) { placeholder_.addBlock(std::move(placeholder)); }

  [[nodiscard]] std::vector<TreeChild> children() override;

 private:
  BlockChain<ChannelGroupBlock> channelGroups_;
  BlockList placeholder_;
};

// The data groups of a file to be written: one, or when sorted one for each kind of frame.
void addDataGroups(const MdfLayoutOptions& options, BlockChain<DataGroupBlock>& groups);

}  // namespace xlatr
