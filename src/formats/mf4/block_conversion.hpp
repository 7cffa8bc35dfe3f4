// The block that makes physical values of the raw ones of a channel.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "formats/mf4/block_base.hpp"
#include "formats/mf4/block_texts.hpp"
#include "formats/mf4/value_table.hpp"

namespace xlatr {

enum class MdfConversionType : std::uint8_t { Linear = 1, ValueToValue = 5 };

struct ChannelConversionBlockData {
  static constexpr BlockTypeId kType = BlockTypeId::CC;
  static constexpr std::size_t kLinkCount = 4;

  std::uint8_t ccType = 0;
  std::uint8_t ccPrecision = 0;
  std::uint16_t ccFlags = 0;
  std::uint16_t ccRefCount = 0;  // of links after the four
  std::uint16_t ccValCount = 0;
  double ccPhyRangeMin = 0.0;
  double ccPhyRangeMax = 0.0;
  std::vector<double> ccVal;

  static consteval auto fields() {
    return FieldList{
        Field{0, "ccType", &ChannelConversionBlockData::ccType},
        Field{1, "ccPrecision", &ChannelConversionBlockData::ccPrecision},
        Field{2, "ccFlags", &ChannelConversionBlockData::ccFlags},
        Field{4, "ccRefCount", &ChannelConversionBlockData::ccRefCount},
        Field{6, "ccValCount", &ChannelConversionBlockData::ccValCount},
        Field{8, "ccPhyRangeMin", &ChannelConversionBlockData::ccPhyRangeMin},
        Field{16, "ccPhyRangeMax", &ChannelConversionBlockData::ccPhyRangeMax},
        Counted{"ccVal", &ChannelConversionBlockData::ccVal, &ChannelConversionBlockData::ccValCount},
    };
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

  // The physical value, or nothing for a conversion of another kind:
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

}  // namespace xlatr
