// The conversions of channels, made ready for many values.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "formats/mf4/block_conversion.hpp"
#include "formats/mf4/mdf_tree.hpp"

namespace xlatr {

// What words mean where a number is wanted: "Tx" is 1, "Bit error" is 1, "yes" is 1, "CAN 2" is 2. Nothing for others.
[[nodiscard]] std::optional<double> numberOfWord(std::string_view word);

// From raw values to physical ones. Words become the numbers that they stand for.
class MdfConversion {
 public:
  // The conversion of a block. Null for null, and for what is not read: formulas.
  [[nodiscard]] static std::unique_ptr<MdfConversion> make(MdfTree& tree,
                                                           std::unique_ptr<ChannelConversionBlock> block) {
    return make(tree, std::move(block), 0);
  }
  // From an index to a byte of a table: the lowest of the eight that its entry has. Null for null.
  [[nodiscard]] static std::unique_ptr<MdfConversion> ofTableBytes(std::unique_ptr<ChannelConversionBlock> block);

  // Nothing for what the conversion says nothing of.
  [[nodiscard]] std::optional<double> of(double value) const;

 private:
  static constexpr unsigned kDeepest = 3;

  enum class Form : std::uint8_t { Same, Linear, Rational, Steps, Interpolated, Values, Ranges, Walked, TableBytes };
  struct Row {
    double low;
    double high;  // of ranges
    std::optional<double> result;
  };

  [[nodiscard]] static std::unique_ptr<MdfConversion> make(MdfTree& tree, std::unique_ptr<ChannelConversionBlock> block,
                                                           unsigned depth);
  void makeTable(const std::vector<double>& values);
  void makeRanges(const std::vector<double>& values);
  void makeWords(MdfTree& tree, ChannelConversionBlock& block, unsigned depth, bool ranges);
  [[nodiscard]] std::optional<double> inTable(double value) const;
  [[nodiscard]] std::optional<double> inRows(double value) const;
  [[nodiscard]] std::optional<double> inTableBytes(double index) const;

  Form form_ = Form::Same;
  std::array<double, 6> factors_{};
  std::vector<Row> rows_;  // in the order of `low`
  std::optional<double> otherwise_;
  std::unique_ptr<MdfConversion> otherwiseBy_;
  std::unique_ptr<ChannelConversionBlock> block_;  // of Walked and TableBytes
};

}  // namespace xlatr
