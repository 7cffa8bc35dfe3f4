#include "formats/mf4/mdf_record_value.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <utility>

#include "frames/frame.hpp"

namespace xlatr {
namespace {

constexpr std::uint8_t kVirtualTime = 3;  // a master without bytes of its own
constexpr std::uint32_t kAllInvalid = 0x1;
constexpr std::uint32_t kInvalidBitUsed = 0x2;

// IEEE 754 binary16.
double halfReal(std::uint16_t bits) {
  constexpr int kMantissaBits = 10;
  constexpr int kBias = 15;
  constexpr int kHighest = 31;
  const int exponent = bits >> kMantissaBits & kHighest;
  const int mantissa = bits & ((1 << kMantissaBits) - 1);
  double value = 0.0;
  if (exponent == kHighest) {
    value = mantissa == 0 ? std::numeric_limits<double>::infinity() : std::numeric_limits<double>::quiet_NaN();
  } else if (exponent == 0) {
    value = std::ldexp(mantissa, 1 - kBias - kMantissaBits);
  } else {
    value = std::ldexp(mantissa + (1 << kMantissaBits), exponent - kBias - kMantissaBits);
  }
  return (bits & 0x8000U) != 0 ? -value : value;
}

bool isVirtual(const ChannelBlockData& data) {
  return is(data.cnType, MdfChannelType::VirtualData) || data.cnType == kVirtualTime;
}

bool isRealNumber(std::uint8_t dataType) {
  return is(dataType, MdfDataType::RealLittle) || is(dataType, MdfDataType::RealBig);
}

}  // namespace

bool MdfValue::setForm(const ChannelBlockData& data) {
  if (is(data.cnDataType, MdfDataType::SignedLittle) || is(data.cnDataType, MdfDataType::SignedBig)) {
    form_ = Form::Signed;
  } else if (isRealNumber(data.cnDataType)) {
    form_ = data.cnBitCount == 64 ? Form::Real64 : data.cnBitCount == 32 ? Form::Real32 : Form::Real16;
    return form_ != Form::Real16 || data.cnBitCount == 16;
  }
  return true;
}

bool MdfValue::setNumber(MdfTree& tree, const ChannelBlockData& data, std::uint64_t dataBytes, bool formed) {
  constexpr std::uint8_t kLargestShift = 7;
  const bool endsEarly = tree.has(Quirk::Mf4FieldsEndWithTheirFirstBytes);
  const std::uint64_t bytes = bytesOfBits((endsEarly ? 0 : std::uint64_t{data.cnBitOffset}) + data.cnBitCount);
  if (data.cnBitCount > kMostNumberBits || (data.cnBitOffset > kLargestShift && !endsEarly) ||
      data.cnDataType > static_cast<std::uint8_t>(MdfDataType::RealBig) || data.cnByteOffset + bytes > dataBytes) {
    return false;
  }
  number_ = MdfNumberField::of(data, endsEarly ? Way::compatible() : Way::complete());
  return !formed || setForm(data);
}

// The number of its record, or with the quirk 0.
void MdfValue::setVirtual(MdfTree& tree) {
  const bool isConstant = tree.has(Quirk::Mf4VirtualChannelsAreConstants);
  form_ = isConstant ? Form::Unsigned : Form::Index;
  bitCount_ = isConstant ? 0 : kMostNumberBits;
}

std::optional<MdfValue> MdfValue::rawOf(MdfTree& tree, const MdfChannel& channel, const ChannelGroupBlockData& group,
                                        bool formed) {
  const ChannelBlockData& data = channel.data;
  MdfValue value;
  value.column_ = static_cast<std::uint32_t>(channel.column);
  value.bitCount_ = data.cnBitCount;
  if (tree.has(Quirk::Mf4InvalidChannelsRead)) {
    value.invalidBit_ = kAlwaysValid;
  } else if ((data.cnFlags & kAllInvalid) != 0) {
    value.invalidBit_ = kNeverValid;
  } else if ((data.cnFlags & kInvalidBitUsed) != 0 && data.cnInvalBitPos / 8 < group.cgInvalBytes) {
    value.invalidBit_ = data.cnInvalBitPos;
  }
  if (isVirtual(data)) {
    value.setVirtual(tree);
  } else if (!value.setNumber(tree, data, group.cgDataBytes, formed)) {
    return std::nullopt;
  }
  value.isPlain_ = value.form_ == Form::Unsigned && value.isAlwaysValid();
  return value;
}

void MdfValue::setConversion(std::unique_ptr<MdfConversion> conversion) {
  conversion_ = std::move(conversion);
  lacksConversion_ = conversion_ == nullptr;
  isPlain_ = false;
}

std::optional<MdfValue> MdfValue::of(MdfTree& tree, const MdfChannel& channel, const ChannelGroupBlockData& group) {
  auto block = tree.leaf<ChannelConversionBlock>(channel.conversion);
  const bool isOfReadType =
      is(channel.data.cnType, MdfChannelType::FixedLength) || is(channel.data.cnType, MdfChannelType::VirtualData);
  if (!isOfReadType && tree.has(Quirk::Mf4ChannelTypesNotRead)) {
    return std::nullopt;
  }
  std::optional<MdfValue> value = rawOf(tree, channel, group, !tree.has(Quirk::Mf4NumbersAreBits));
  if (!value) {
    return std::nullopt;
  }
  const bool isNone = !block && tree.has(Quirk::Mf4DamagedBlocksFail);  // it is something else, then
  if (channel.conversion != 0 && !isNone) {
    value->setConversion(MdfConversion::make(tree, std::move(block)));
  }
  if (isVirtual(channel.data) && tree.has(Quirk::Mf4VirtualChannelsAreConstants) &&
      (!value->conversion_ || !value->converted(0))) {
    return std::nullopt;
  }
  value->prepare();
  return value;
}

std::optional<MdfValue> MdfValue::ofTableBytes(MdfTree& tree, const MdfChannel& channel,
                                               const ChannelGroupBlockData& group) {
  std::optional<MdfValue> value = rawOf(tree, channel, group, false);
  if (!value) {
    return std::nullopt;
  }
  value->setConversion(MdfConversion::ofTableBytes(tree.leaf<ChannelConversionBlock>(channel.conversion)));
  return value->conversion_ ? value : std::nullopt;
}

MdfValue MdfValue::validityOf(MdfTree& tree, const MdfChannel& channel, const ChannelGroupBlockData& group) {
  MdfChannel empty = channel;
  empty.conversion = 0;
  empty.data.cnByteOffset = 0;
  empty.data.cnBitOffset = 0;
  empty.data.cnBitCount = 0;
  empty.data.cnDataType = 0;
  return of(tree, empty, group).value_or(MdfValue());
}

void MdfValue::prepare() {
  if (isPlain_ || form_ == Form::Index || bitCount_ > kMostPrepared) {
    return;
  }
  auto prepared = std::make_shared<std::vector<std::optional<std::uint64_t>>>();
  for (std::uint64_t bits = 0; bits < std::uint64_t{1} << bitCount_; ++bits) {
    prepared->push_back(converted(bits));
  }
  prepared_ = std::move(prepared);
}

bool MdfValue::isMarkedValid(const MdfRow& row) const {
  if (invalidBit_ == kNeverValid) {
    return false;
  }
  const std::uint8_t* const bits = row.invalid(column_);
  return bits == nullptr || (bits[invalidBit_ / 8] >> (invalidBit_ % 8) & 1) == 0;
}

std::int64_t MdfValue::signedOf(std::uint64_t bits) const {
  const unsigned unused = bitCount_ == 0 ? 0 : 64 - bitCount_;
  return static_cast<std::int64_t>(bits << unused) >> unused;
}

double MdfValue::realOf(std::uint64_t bits) const {
  switch (form_) {
    case Form::Signed:
      return static_cast<double>(signedOf(bits));
    case Form::Real16:
      return halfReal(static_cast<std::uint16_t>(bits));
    case Form::Real32:
      return std::bit_cast<float>(static_cast<std::uint32_t>(bits));
    case Form::Real64:
      return std::bit_cast<double>(bits);
    case Form::Unsigned:
    case Form::Index:
      break;
  }
  return static_cast<double>(bits);
}

std::optional<std::uint64_t> MdfValue::converted(std::uint64_t bits) const {
  if (lacksConversion_) {
    return std::nullopt;
  }
  if (conversion_) {
    return toInteger(conversion_->of(realOf(bits)));
  }
  switch (form_) {
    case Form::Unsigned:
    case Form::Index:
      return bits;
    case Form::Signed:
      return static_cast<std::uint64_t>(signedOf(bits));
    default:
      return toInteger(realOf(bits));
  }
}

std::optional<std::uint64_t> MdfValue::readConverted(const MdfRow& row) const {
  if (!isValid(row)) {
    return std::nullopt;
  }
  return result(bits(row));
}

void MdfValue::read(const MdfRow& first, std::size_t count, MdfNumbers& numbers) const {
  if (isPlain_) {
    number_.read(first.rows.columns[column_].records.data() + first.at, count, numbers.values.data());
    std::fill_n(numbers.known.begin(), count, true);
    return;
  }
  for (std::size_t at = 0; at < count; ++at) {
    const auto value = readConverted({first.rows, first.at + at});
    numbers.values[at] = value.value_or(0);
    numbers.known[at] = value.has_value();
  }
}

void MdfValue::readBits(const MdfRow& first, std::size_t count, std::uint16_t bit, std::uint16_t* bits) const {
  const auto set = [bit, bits](std::size_t at, std::uint64_t value) {
    bits[at] = static_cast<std::uint16_t>(bits[at] | (value != 0 ? bit : 0U));
  };
  if (isPlain_ && !number_.isWide && !number_.isBigEndian) {
    const std::uint8_t* const* const records = first.rows.columns[column_].records.data() + first.at;
    const std::uint64_t mask = number_.mask << number_.shift;
    for (std::size_t at = 0; at < count; ++at) {
      set(at, loadLittle<std::uint64_t>(records[at] + number_.offset) & mask);
    }
    return;
  }
  for (std::size_t at = 0; at < count; ++at) {
    set(at, read({first.rows, first.at + at}).value_or(0));
  }
}

std::optional<MdfTimeReader> MdfTimeReader::of(MdfTree& tree, const MdfChannel& channel,
                                               const ChannelGroupBlockData& group) {
  std::optional<MdfValue> value = MdfValue::rawOf(tree, channel, group, true);
  if (!value) {
    return std::nullopt;
  }
  MdfTimeReader reader;
  reader.value_ = std::move(*value);
  const bool isRead =
      tree.has(Quirk::Mf4TimesOfFourUnits) ? reader.setUnit(tree, channel.conversion) : reader.setScale(tree, channel);
  return isRead ? std::optional(std::move(reader)) : std::nullopt;
}

// Nanoseconds, or what a conversion without an offset says by its factor. False for other times.
bool MdfTimeReader::setUnit(MdfTree& tree, std::uint64_t conversion) {
  if (value_.form_ == MdfValue::Form::Real16) {
    return false;
  }
  const auto block = tree.leaf<ChannelConversionBlock>(conversion);
  if (!block) {
    return true;
  }
  const ChannelConversionBlockData& data = block->data;
  if (!is(data.ccType, MdfConversionType::Linear) || data.ccVal.size() != 2 || data.ccVal[0] != 0.0 ||
      tree.text(block->link(ChannelConversionBlock::kUnit)) != "s") {
    return false;
  }
  const std::optional<TimeUnit> unit = timeUnitOf(data.ccVal[1]);
  unit_ = unit.value_or(unit_);
  return unit.has_value();
}

// A conversion gives seconds, or what its unit or the channel's says. Without both real numbers are seconds; whole
// seconds would be of no use to anyone, so that counts are taken for the nanoseconds that loggers count. False for
// times that can't be told.
bool MdfTimeReader::setScale(MdfTree& tree, const MdfChannel& channel) {
  constexpr std::uint8_t kLinear = 1;
  constexpr int kNanoseconds = 9;
  std::optional<int> unit = MdfTimeScale::unitExponentOf(tree.text(channel.unit));
  double offset = 0.0;
  double factor = 1.0;
  bool isLinear = true;
  if (channel.conversion != 0) {
    auto block = tree.leaf<ChannelConversionBlock>(channel.conversion);
    if (!block) {
      return false;
    }
    if (const auto own = MdfTimeScale::unitExponentOf(tree.text(block->link(ChannelConversionBlock::kUnit)))) {
      unit = own;
    }
    isLinear = block->data.ccType <= kLinear;
    if (block->data.ccType == kLinear) {
      if (block->data.ccVal.size() < 2) {
        return false;
      }
      offset = block->data.ccVal[0];
      factor = block->data.ccVal[1];
    }
    if (!isLinear) {
      value_.setConversion(MdfConversion::make(tree, std::move(block)));
      if (value_.lacksConversion_) {
        return false;
      }
    }
  }
  const bool isCount = value_.form_ == MdfValue::Form::Unsigned || value_.form_ == MdfValue::Form::Signed;
  guessed_ = !unit && channel.conversion == 0 && isCount;
  const int exponent = unit.value_or(guessed_ ? kNanoseconds : 0);
  if (isLinear) {
    scale_ = MdfTimeScale(offset, factor, exponent);
  } else {
    for (int at = 0; at < exponent; ++at) {
      nsPerUnit_ /= 10;
    }
  }
  return true;
}

// Times are put in order, and no number has no place in one.
std::optional<RealMicroseconds> MdfTimeReader::readReal(const std::uint8_t* record) const {
  constexpr double kNoTime = -1.0;  // with the quirk: Mf4MinusOneIsNoTime
  const double count = value_.realOf(value_.number_.read(record));
  return std::isnan(count) || count == kNoTime ? std::nullopt : std::optional(toMicroseconds(count, unit_));
}

// The time of a value with a conversion that is no scale.
std::optional<std::int64_t> MdfTimeReader::converted(std::uint64_t bits) const {
  const auto units = value_.conversion_->of(value_.realOf(bits));
  if (!units || nsPerUnit_ == 0 ||
      !(std::fabs(*units) <= static_cast<double>(kFarthestNs) / static_cast<double>(nsPerUnit_) - 1.0)) {
    return std::nullopt;
  }
  const double whole = std::trunc(*units);
  return static_cast<std::int64_t>(whole) * nsPerUnit_ +
         static_cast<std::int64_t>(std::round((*units - whole) * static_cast<double>(nsPerUnit_)));
}

void MdfTimeReader::read(const MdfRows& rows, std::int64_t* times, bool* known) const {
  std::array<std::uint64_t, MdfRows::kMost> bits;
  if (value_.form_ == MdfValue::Form::Index) {
    for (std::size_t at = 0; at < rows.count; ++at) {
      bits[at] = rows.firstIndex + at;
    }
  } else {
    value_.number_.read(rows.columns[value_.column_].records.data(), rows.count, bits.data());
  }
  using Form = MdfValue::Form;
  const auto each = [&](auto&& timeOf) {
    for (std::size_t at = 0; at < rows.count; ++at) {
      const std::optional<std::int64_t> time = timeOf(bits[at]);
      times[at] = time.value_or(0);
      known[at] = time.has_value();
    }
  };
  if (!scale_) {
    each([this](std::uint64_t value) { return converted(value); });
  } else if (value_.form_ == Form::Unsigned || value_.form_ == Form::Index) {
    each([this](std::uint64_t value) { return scale_->ofCount(value); });
  } else if (value_.form_ == Form::Signed) {
    each([this](std::uint64_t value) { return scale_->ofCount(value_.signedOf(value)); });
  } else if (value_.form_ == Form::Real64) {
    each([this](std::uint64_t value) { return scale_->ofReal(std::bit_cast<double>(value)); });
  } else {
    each([this](std::uint64_t value) { return scale_->ofReal(value_.realOf(value)); });
  }
  for (std::size_t at = 0; at < rows.count && !value_.isAlwaysValid(); ++at) {
    known[at] = known[at] && value_.isValid({rows, at});
  }
}

}  // namespace xlatr
