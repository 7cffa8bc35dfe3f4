// The channels, which say what the fields of a record are and where they lie.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/mf4/block_base.hpp"
#include "formats/mf4/block_conversion.hpp"
#include "formats/mf4/block_data.hpp"
#include "formats/mf4/block_texts.hpp"

namespace xlatr {

// The name of a bus-logging frame as channel groups and channels carry it: "CAN_DataFrame" and so on, "Unknown" for any
// other kind.
[[nodiscard]] std::string_view mdfFrameName(BusEventFrameType kind);

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

  static consteval auto fields() {
    return FieldList{
        Field{0, "caType", &ChannelArrayBlockData::caType},
        Field{1, "caStorage", &ChannelArrayBlockData::caStorage},
        Field{2, "caDimCount", &ChannelArrayBlockData::caDimCount},
        Field{4, "caFlags", &ChannelArrayBlockData::caFlags},
        Field{8, "caByteOffsetBase", &ChannelArrayBlockData::caByteOffsetBase},
        Field{12, "caInvalBitPosBase", &ChannelArrayBlockData::caInvalBitPosBase},
        Counted{"caDimSize", &ChannelArrayBlockData::dimensionSizes, &ChannelArrayBlockData::caDimCount},
    };
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
  std::uint32_t cnByteOffset = 0;  // from the start of the record, after the record id
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

  static consteval auto fields() {
    return FieldList{
        Field{0, "cnType", &ChannelBlockData::cnType},
        Field{1, "cnSyncType", &ChannelBlockData::cnSyncType},
        Field{2, "cnDataType", &ChannelBlockData::cnDataType},
        Field{3, "cnBitOffset", &ChannelBlockData::cnBitOffset},
        Field{4, "cnByteOffset", &ChannelBlockData::cnByteOffset},
        Field{8, "cnBitCount", &ChannelBlockData::cnBitCount},
        Field{12, "cnFlags", &ChannelBlockData::cnFlags},
        Field{16, "cnInvalBitPos", &ChannelBlockData::cnInvalBitPos},
        Field{20, "cnPrecision", &ChannelBlockData::cnPrecision},
        Reserved{21, 1},
        Field{22, "cnAttachmentCount", &ChannelBlockData::cnAttachmentCount},
        Field{24, "cnValRangeMin", &ChannelBlockData::cnValRangeMin},
        Field{32, "cnValRangeMax", &ChannelBlockData::cnValRangeMax},
        Field{40, "cnLimitMin", &ChannelBlockData::cnLimitMin},
        Field{48, "cnLimitMax", &ChannelBlockData::cnLimitMax},
        Field{56, "cnLimitExtMin", &ChannelBlockData::cnLimitExtMin},
        Field{64, "cnLimitExtMax", &ChannelBlockData::cnLimitExtMax},
    };
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
  // Offset in the file of that link.
  [[nodiscard]] std::uint64_t dataLinkPosition() const { return position() + kHeaderSectionSize + kLinkSize * kData; }
  [[nodiscard]] bool isByteArray() const {
    return data.cnDataType == static_cast<std::uint8_t>(MdfDataType::ByteArray);
  }

  // For blocks to be written.
  void setName(std::string_view text);
  void setSource(std::unique_ptr<SourceInformationBlock> source) { source_.set(std::move(source)); }
  void setConversion(std::unique_ptr<ChannelConversionBlock> conversion) { conversion_.add(std::move(conversion)); }

  [[nodiscard]] std::vector<TreeChild> children() override;

 private:
  BlockChain<ChannelBlock> composition_;
  BlockChain<TextBlock> nameText_;
  BlockChain<SourceInformationBlock> source_;
  BlockChain<ChannelConversionBlock> conversion_;
  std::optional<std::string> name_;
};

}  // namespace xlatr
