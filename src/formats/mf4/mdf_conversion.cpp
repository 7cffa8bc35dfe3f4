#include "formats/mf4/mdf_conversion.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <string>

#include "formats/mf4/mdf_number_field.hpp"

namespace xlatr {
namespace {

struct Word {
  std::string_view word;
  double number;
};

// Directions, switches, and the types of errors in the order in which MF4 counts them.
constexpr std::array kWords = {
    Word{"rx", 0.0},
    Word{"receive", 0.0},
    Word{"received", 0.0},
    Word{"tx", 1.0},
    Word{"transmit", 1.0},
    Word{"transmitted", 1.0},
    Word{"txrq", 1.0},
    Word{"false", 0.0},
    Word{"no", 0.0},
    Word{"off", 0.0},
    Word{"true", 1.0},
    Word{"yes", 1.0},
    Word{"on", 1.0},
    Word{"unknown", 0.0},
    Word{"bit", 1.0},
    Word{"bit error", 1.0},
    Word{"form", 2.0},
    Word{"form error", 2.0},
    Word{"stuff", 3.0},
    Word{"stuff error", 3.0},
    Word{"bit stuffing error", 3.0},
    Word{"crc", 4.0},
    Word{"crc error", 4.0},
    Word{"ack", 5.0},
    Word{"ack error", 5.0},
    Word{"acknowledgment error", 5.0},
};

enum Type : std::uint8_t {
  kSame,
  kLinear,
  kRational,
  kFormula,
  kInterpolated,
  kTable,
  kRanges,
  kWordsOfValues,
  kWordsOfRanges
};

// The conversions that both ways read: constants and tables.
bool isReadByAll(const ChannelConversionBlockData& data) {
  return data.ccType == kTable || (data.ccType == kLinear && data.ccVal.size() == 2 && data.ccVal[1] == 0.0);
}

std::string lowered(std::string_view text) {
  std::string result(text.substr(0, 64));
  for (char& letter : result) {
    letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  }
  return result;
}

}  // namespace

std::optional<double> numberOfWord(std::string_view word) {
  const std::string text = lowered(word);
  if (const auto* const known = std::ranges::find(kWords, text, &Word::word); known != kWords.end()) {
    return known->number;
  }
  constexpr std::string_view kDigits = "0123456789";
  const std::size_t last = text.find_last_of(kDigits);
  if (last == std::string::npos || (last + 1 != text.size() && text.find_first_of(kDigits) != 0)) {
    return std::nullopt;
  }
  const std::size_t before = text.find_last_not_of(kDigits, last);
  const std::size_t first = last + 1 == text.size() && before != std::string::npos ? before + 1 : 0;
  double number = 0.0;
  const auto result = std::from_chars(text.data() + first, text.data() + text.size(), number);
  return result.ec == std::errc() ? std::optional(number) : std::nullopt;
}

std::unique_ptr<MdfConversion> MdfConversion::ofTableBytes(std::unique_ptr<ChannelConversionBlock> block) {
  if (!block) {
    return nullptr;
  }
  std::unique_ptr<MdfConversion> made(new MdfConversion);
  made->form_ = Form::TableBytes;
  made->block_ = std::move(block);
  return made;
}

std::unique_ptr<MdfConversion> MdfConversion::make(MdfTree& tree, std::unique_ptr<ChannelConversionBlock> block,
                                                   unsigned depth) {
  if (!block || depth > kDeepest) {
    return nullptr;
  }
  const std::vector<double>& values = block->data.ccVal;
  if (!tree.takeTableRows(values.size()) || (tree.has(Quirk::Mf4ConversionsNotRead) && !isReadByAll(block->data))) {
    return nullptr;
  }
  std::unique_ptr<MdfConversion> made(new MdfConversion);
  switch (block->data.ccType) {
    case kSame:
      return made;
    case kLinear:
    case kRational: {
      const std::size_t count = block->data.ccType == kLinear ? 2 : 6;
      if (values.size() < count) {
        return nullptr;
      }
      made->form_ = block->data.ccType == kLinear ? Form::Linear : Form::Rational;
      std::copy_n(values.begin(), count, made->factors_.begin());
      return made;
    }
    case kInterpolated:
    case kTable:
      if (block->data.ccType == kTable && tree.has(Quirk::Mf4TableValuesAreKeys)) {
        made->form_ = Form::Walked;
        made->block_ = std::move(block);
        return made;
      }
      made->form_ = block->data.ccType == kTable ? Form::Steps : Form::Interpolated;
      made->makeTable(values);
      return made->rows_.empty() ? nullptr : std::move(made);
    case kRanges:
      made->makeRanges(values);
      return made;
    case kWordsOfValues:
    case kWordsOfRanges:
      made->makeWords(tree, *block, depth, block->data.ccType == kWordsOfRanges);
      return made;
    case kFormula:
    default:
      return nullptr;
  }
}

void MdfConversion::makeTable(const std::vector<double>& values) {
  for (std::size_t at = 0; at + 1 < values.size(); at += 2) {
    if (!std::isnan(values[at])) {
      rows_.push_back({values[at], values[at], values[at + 1]});
    }
  }
  std::ranges::stable_sort(rows_, {}, &Row::low);
}

void MdfConversion::makeRanges(const std::vector<double>& values) {
  form_ = Form::Ranges;
  std::size_t at = 0;
  for (; at + 2 < values.size(); at += 3) {
    if (!std::isnan(values[at])) {
      rows_.push_back({values[at], values[at + 1], values[at + 2]});
    }
  }
  if (at < values.size()) {
    otherwise_ = values[at];
  }
  std::ranges::stable_sort(rows_, {}, &Row::low);
}

// After the references of the rows comes that of everything else. A reference leads to a text or to one more
// conversion.
void MdfConversion::makeWords(MdfTree& tree, ChannelConversionBlock& block, unsigned depth, bool ranges) {
  constexpr std::size_t kFirstReference = 4;
  form_ = ranges ? Form::Ranges : Form::Values;
  const std::vector<double>& values = block.data.ccVal;
  const std::size_t width = ranges ? 2 : 1;
  const std::size_t count = values.size() / width;
  for (std::size_t row = 0; row < count; ++row) {
    const double low = values[row * width];
    const std::uint64_t reference = block.link(kFirstReference + row);
    std::optional<double> result;
    if (tree.isBlock(reference, BlockTypeId::CC)) {
      const auto nested = make(tree, tree.leaf<ChannelConversionBlock>(reference), depth + 1);
      result = nested ? nested->of(low) : std::nullopt;
    } else {
      result = numberOfWord(tree.text(reference));
    }
    if (!std::isnan(low)) {
      rows_.push_back({low, values[row * width + width - 1], result});
    }
  }
  std::ranges::stable_sort(rows_, {}, &Row::low);
  const std::uint64_t reference = block.link(kFirstReference + count);
  if (reference != 0 && tree.isBlock(reference, BlockTypeId::CC)) {
    otherwiseBy_ = make(tree, tree.leaf<ChannelConversionBlock>(reference), depth + 1);
  } else if (reference != 0) {
    otherwise_ = numberOfWord(tree.text(reference));
  }
}

std::optional<double> MdfConversion::of(double value) const {
  switch (form_) {
    case Form::Same:
      return value;
    case Form::Linear:
      return factors_[0] + factors_[1] * value;
    case Form::Rational: {
      const double below = (factors_[3] * value + factors_[4]) * value + factors_[5];
      return ((factors_[0] * value + factors_[1]) * value + factors_[2]) / below;
    }
    case Form::Steps:
    case Form::Interpolated:
      return inTable(value);
    case Form::Values:
    case Form::Ranges:
      return inRows(value);
    case Form::Walked:
      return block_->evaluate(value);
    case Form::TableBytes:
      return inTableBytes(value);
  }
  return std::nullopt;
}

// Beyond its ends a table goes on as it is there. Between two keys that of the nearer one counts, of two as near the
// lower one's.
std::optional<double> MdfConversion::inTable(double value) const {
  if (std::isnan(value)) {
    return std::nullopt;
  }
  const auto above = std::ranges::lower_bound(rows_, value, {}, &Row::low);
  if (above == rows_.end()) {
    return rows_.back().result;
  }
  if (above == rows_.begin() || above->low == value) {
    return above->result;
  }
  const auto below = above - 1;
  if (form_ == Form::Steps) {
    return value - below->low <= above->low - value ? below->result : above->result;
  }
  return *below->result + (*above->result - *below->result) * ((value - below->low) / (above->low - below->low));
}

std::optional<double> MdfConversion::inRows(double value) const {
  const auto above = std::ranges::upper_bound(rows_, value, {}, &Row::low);
  if (above != rows_.begin() && !std::isnan(value)) {
    const Row& row = *(above - 1);
    if (form_ == Form::Values ? row.low == value : value <= row.high) {
      return row.result;
    }
  }
  return otherwiseBy_ ? otherwiseBy_->of(value) : otherwise_;
}

std::optional<double> MdfConversion::inTableBytes(double index) const {
  const std::vector<double>& table = block_->data.ccVal;
  if (!(index >= 0.0 && index < static_cast<double>(table.size()))) {
    return std::nullopt;
  }
  return static_cast<double>(std::bit_cast<std::uint64_t>(table[static_cast<std::size_t>(index)]) & 0xFFU);
}

}  // namespace xlatr
