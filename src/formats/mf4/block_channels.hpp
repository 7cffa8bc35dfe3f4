// The blocks that say how records are laid out: data groups, channel groups, channels and their conversions.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/mf4/block_base.hpp"
#include "formats/mf4/block_data.hpp"
#include "formats/mf4/block_layout_options.hpp"
#include "formats/mf4/block_texts.hpp"
#include "formats/mf4/value_table.hpp"

namespace xlatr {

// The name of a bus-logging frame as channel groups and channels carry it: "CAN_DataFrame" and so on, "Unknown" for a
// kind that there is not.
[[nodiscard]] std::string_view mdfFrameName(BusEventFrameType kind);

enum class MdfConversionType : std::uint8_t { Linear = 1, ValueToValue = 5 };

struct ChannelConversionBlockData {
  static constexpr BlockTypeId kType = BlockTypeId::CC;
  static constexpr std::size_t kLinkCount = 4;

  std::uint8_t ccType = 0;
  std::uint8_t ccPrecision = 0;
  std::uint16_t ccFlags = 0;
  std::uint16_t ccRefCount = 0;  // of links behind the four
  std::uint16_t ccValCount = 0;
  double ccPhyRangeMin = 0.0;
  double ccPhyRangeMax = 0.0;
  std::vector<double> ccVal;

  template <class Fields, class Self>
  static void describe(Fields& fields, Self& self) {
    fields.number("ccType", self.ccType);
    fields.number("ccPrecision", self.ccPrecision);
    fields.number("ccFlags", self.ccFlags);
    fields.number("ccRefCount", self.ccRefCount);
    fields.number("ccValCount", self.ccValCount);
    fields.number("ccPhyRangeMin", self.ccPhyRangeMin);
    fields.number("ccPhyRangeMax", self.ccPhyRangeMax);
    fields.array("ccVal", self.ccVal, self.ccValCount);
  }
};

class ChannelConversionBlock final : public DescribedBlock<ChannelConversionBlockData> {
 public:
  enum Link : std::size_t { kName, kUnit, kComment, kInverse };

  using DescribedBlock::DescribedBlock;

  // The conversion of a time in nanoseconds to seconds.
  [[nodiscard]] static std::unique_ptr<ChannelConversionBlock> createForTime();

  // Trailing zero bytes cut; empty without a text.
  [[nodiscard]] const std::string& unitText();

  // The physical value, or nothing where the conversion is none that is understood:
  // - Linear with a factor of 0: the constant.
  // - A table from values to values: that of the nearest key; of two as near the lower one's. Its elements are walked
  //   one by one, values as well as keys, so that a value that equals the input counts as a key too:
  //   tableFindsValuesThatEqualTheInput.
  [[nodiscard]] std::optional<double> evaluate(double value) const;

  [[nodiscard]] std::vector<TreeChild> children() override;

 private:
  [[nodiscard]] std::optional<double> lookUp(double value) const;

  BlockChain<TextBlock> unit_;
  std::optional<std::string> unitText_;
  mutable std::optional<ValueTable> table_;  // made at the first look-up
};

struct ChannelArrayBlockData {
  static constexpr BlockTypeId kType = BlockTypeId::CA;
  static constexpr std::size_t kLinkCount = 1;

  std::uint8_t caType = 0;
  std::uint8_t caStorage = 0;
  std::uint16_t caDimCount = 0;
  std::uint32_t caFlags = 0;
  std::uint32_t caByteOffsetBase = 0;
  std::uint32_t caInvalBitPosBase = 0;
  std::vector<std::uint64_t> dimensionSizes;

  template <class Fields, class Self>
  static void describe(Fields& fields, Self& self) {
    fields.number("caType", self.caType);
    fields.number("caStorage", self.caStorage);
    fields.number("caDimCount", self.caDimCount);
    fields.number("caFlags", self.caFlags);
    fields.number("caByteOffsetBase", self.caByteOffsetBase);
    fields.number("caInvalBitPosBase", self.caInvalBitPosBase);
    fields.array("caDimSize", self.dimensionSizes, self.caDimCount);
  }
};

// Only read: no file that is written has one.
class ChannelArrayBlock final : public DescribedBlock<ChannelArrayBlockData> {
 public:
  using DescribedBlock::DescribedBlock;

  // Both wrap around at 64 bits.
  [[nodiscard]] std::uint64_t sumOfSizes() const;
  [[nodiscard]] std::uint64_t productOfSizes() const;
};

enum class MdfChannelType : std::uint8_t {
  FixedLength = 0,
  VariableLength = 1,
  Master = 2,
  MaximumLength = 5,
  VirtualData = 6
};

// Odd ones of the first six are big-endian.
enum class MdfDataType : std::uint8_t {
  UnsignedLittle = 0,
  UnsignedBig = 1,
  SignedLittle = 2,
  SignedBig = 3,
  RealLittle = 4,
  RealBig = 5,
  ByteArray = 10
};

// Bits of cnFlags.
inline constexpr std::uint32_t kChannelPrecisionValid = 0x4;
inline constexpr std::uint32_t kChannelLimitValid = 0x10;
inline constexpr std::uint32_t kChannelMonotonous = 0x40;  // of error fields: the raw value is coded by another rule
inline constexpr std::uint32_t kChannelBusEvent = 0x400;
inline constexpr std::uint32_t kChannelStream = 0x4000;

struct ChannelBlockData {
  static constexpr BlockTypeId kType = BlockTypeId::CN;
  static constexpr std::size_t kLinkCount = 8;

  std::uint8_t cnType = 0;      // MdfChannelType
  std::uint8_t cnSyncType = 0;  // 1: time
  std::uint8_t cnDataType = 0;  // MdfDataType
  std::uint8_t cnBitOffset = 0;
  std::uint32_t cnByteOffset = 0;  // from the start of the record, behind the record id
  std::uint32_t cnBitCount = 0;
  std::uint32_t cnFlags = 0;
  std::uint32_t cnInvalBitPos = 0;
  std::uint8_t cnPrecision = 0;
  std::uint16_t cnAttachmentCount = 0;
  double cnValRangeMin = 0.0;
  double cnValRangeMax = 0.0;
  double cnLimitMin = 0.0;
  double cnLimitMax = 0.0;
  double cnLimitExtMin = 0.0;
  double cnLimitExtMax = 0.0;

  template <class Fields, class Self>
  static void describe(Fields& fields, Self& self) {
    fields.number("cnType", self.cnType);
    fields.number("cnSyncType", self.cnSyncType);
    fields.number("cnDataType", self.cnDataType);
    fields.number("cnBitOffset", self.cnBitOffset);
    fields.number("cnByteOffset", self.cnByteOffset);
    fields.number("cnBitCount", self.cnBitCount);
    fields.number("cnFlags", self.cnFlags);
    fields.number("cnInvalBitPos", self.cnInvalBitPos);
    fields.number("cnPrecision", self.cnPrecision);
    fields.reserved(1);
    fields.number("cnAttachmentCount", self.cnAttachmentCount);
    fields.number("cnValRangeMin", self.cnValRangeMin);
    fields.number("cnValRangeMax", self.cnValRangeMax);
    fields.number("cnLimitMin", self.cnLimitMin);
    fields.number("cnLimitMax", self.cnLimitMax);
    fields.number("cnLimitExtMin", self.cnLimitExtMin);
    fields.number("cnLimitExtMax", self.cnLimitExtMax);
  }
};

class ChannelBlock final : public DescribedBlock<ChannelBlockData> {
 public:
  enum Link : std::size_t { kNext, kComposition, kName, kSource, kConversion, kData, kUnit, kComment };

  ChannelBlock() = default;
  ChannelBlock(BlockStream& stream, std::uint64_t position);

  // Trailing zero bytes cut; empty without a text.
  [[nodiscard]] const std::string& name();
  // The channels that this one is made of; none where a channel array stands instead.
  [[nodiscard]] BlockChain<ChannelBlock>& composition() { return composition_; }
  [[nodiscard]] std::unique_ptr<ChannelArrayBlock> compositionArray() const;
  // Null without one.
  [[nodiscard]] ChannelConversionBlock* conversion();
  // Null for no link and for a channel group, whose records are the values of the channel.
  [[nodiscard]] std::unique_ptr<IDataBlock> dataLink() const;
  [[nodiscard]] bool isByteArray() const {
    return data.cnDataType == static_cast<std::uint8_t>(MdfDataType::ByteArray);
  }

  // For blocks to be written.
  void setName(std::string_view text);
  void setSource(std::unique_ptr<SourceInformationBlock> source) { source_.add(std::move(source)); }
  void setConversion(std::unique_ptr<ChannelConversionBlock> conversion) { conversion_.add(std::move(conversion)); }

  [[nodiscard]] std::vector<TreeChild> children() override;

 private:
  BlockChain<ChannelBlock> composition_;
  BlockChain<TextBlock> nameText_;
  BlockChain<SourceInformationBlock> source_;
  BlockChain<ChannelConversionBlock> conversion_;
  std::optional<std::string> name_;
};

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

  template <class Fields, class Self>
  static void describe(Fields& fields, Self& self) {
    fields.number("cgRecordId", self.cgRecordId);
    fields.number("cgCycleCount", self.cgCycleCount);
    fields.number("cgFlags", self.cgFlags);
    fields.number("cgPathSeparator", self.cgPathSeparator);
    fields.reserved(4);
    fields.number("cgDataBytes", self.cgDataBytes);
    fields.number("cgInvalBytes", self.cgInvalBytes);
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

  template <class Fields, class Self>
  static void describe(Fields& fields, Self& self) {
    fields.number("dgRecIdSize", self.dgRecIdSize);
    fields.reserved(7);
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

  // Of a group to be written: the block that stands for its data block, or null.
  [[nodiscard]] const BlockBase* dataPlaceholder() const;
  void setDataPlaceholder(std::unique_ptr<BlockBase> placeholder) { placeholder_.addBlock(std::move(placeholder)); }

  [[nodiscard]] std::vector<TreeChild> children() override;

 private:
  BlockChain<ChannelGroupBlock> channelGroups_;
  BlockList placeholder_;
};

// The data groups of a file to be written: one, or when sorted one for each kind of frame.
void addDataGroups(const MdfLayoutOptions& options, BlockChain<DataGroupBlock>& groups);

}  // namespace xlatr
