#include "formats/mf4/mdf_frame_layout.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <utility>

#include "messages/enumerations.hpp"
#include "util/little_endian.hpp"

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

}  // namespace

std::optional<MdfValue> MdfValue::of(MdfTree& tree, const MdfChannel& channel, const ChannelGroupBlockData& group) {
  constexpr std::uint8_t kLargestShift = 7;
  const ChannelBlockData& data = channel.data;
  MdfValue value;
  value.column_ = static_cast<std::uint32_t>(channel.column);
  value.bitCount_ = data.cnBitCount;
  if ((data.cnFlags & kAllInvalid) != 0) {
    value.invalidBit_ = kNeverValid;
  } else if ((data.cnFlags & kInvalidBitUsed) != 0 && data.cnInvalBitPos / 8 < group.cgInvalBytes) {
    value.invalidBit_ = data.cnInvalBitPos;
  }
  if (isVirtual(data)) {
    value.form_ = Form::Index;
    value.bitCount_ = kMostNumberBits;
  } else {
    const std::uint64_t bytes = bytesOfBits(std::uint64_t{data.cnBitOffset} + data.cnBitCount);
    if (data.cnBitCount > kMostNumberBits || data.cnBitOffset > kLargestShift ||
        data.cnDataType > static_cast<std::uint8_t>(MdfDataType::RealBig) ||
        data.cnByteOffset + bytes > group.cgDataBytes) {
      return std::nullopt;
    }
    value.number_ = MdfNumberField::of(data, Way::complete());
    switch (static_cast<MdfDataType>(data.cnDataType)) {
      case MdfDataType::SignedLittle:
      case MdfDataType::SignedBig:
        value.form_ = Form::Signed;
        break;
      case MdfDataType::RealLittle:
      case MdfDataType::RealBig:
        if (data.cnBitCount != 16 && data.cnBitCount != 32 && data.cnBitCount != 64) {
          return std::nullopt;
        }
        value.form_ = data.cnBitCount == 64 ? Form::Real64 : data.cnBitCount == 32 ? Form::Real32 : Form::Real16;
        break;
      default:
        break;
    }
  }
  if (channel.conversion != 0) {
    value.conversion_ = MdfConversion::make(tree, channel.conversion);
    value.lacksConversion_ = value.conversion_ == nullptr;
  }
  value.isPlain_ = value.form_ == Form::Unsigned && channel.conversion == 0 && value.invalidBit_ == kAlwaysValid;
  if (!value.isPlain_ && value.form_ != Form::Index && value.bitCount_ <= kMostPrepared) {
    auto prepared = std::make_shared<std::vector<std::optional<std::uint64_t>>>();
    for (std::uint64_t bits = 0; bits < std::uint64_t{1} << value.bitCount_; ++bits) {
      prepared->push_back(value.converted(bits));
    }
    value.prepared_ = std::move(prepared);
  }
  return value;
}

bool MdfValue::isValid(const MdfRow& row) const {
  if (invalidBit_ < 0) {
    return invalidBit_ == kAlwaysValid;
  }
  const std::uint8_t* const bits = row.invalid[column_];
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
  const std::uint64_t value = bits(row);
  return prepared_ ? (*prepared_)[static_cast<std::size_t>(value)] : converted(value);
}

std::optional<std::int64_t> MdfValue::readTime(const MdfRow& row, const MdfTimeScale& scale) const {
  const std::uint64_t value = bits(row);
  switch (form_) {
    case Form::Unsigned:
    case Form::Index:
      return scale.ofCount(value);
    case Form::Signed:
      return scale.ofCount(signedOf(value));
    default:
      return scale.ofReal(realOf(value));
  }
}

std::optional<double> MdfValue::readReal(const MdfRow& row) const {
  return conversion_ ? conversion_->of(realOf(bits(row))) : std::nullopt;
}

// A conversion gives seconds, or what its unit or the channel's says. Without both real numbers are seconds; whole
// seconds would be of no use to anyone, so that counts are taken for the nanoseconds that loggers count.
std::optional<MdfTimeReader> MdfTimeReader::of(MdfTree& tree, const MdfChannel& channel,
                                               const ChannelGroupBlockData& group) {
  constexpr std::uint8_t kLinear = 1;
  constexpr int kNanoseconds = 9;
  std::optional<int> unit = MdfTimeScale::unitExponentOf(tree.text(channel.unit));
  double offset = 0.0;
  double factor = 1.0;
  bool isLinear = true;
  if (channel.conversion != 0) {
    const auto block = tree.leaf<ChannelConversionBlock>(channel.conversion);
    if (!block) {
      return std::nullopt;
    }
    if (const auto own = MdfTimeScale::unitExponentOf(tree.text(block->link(ChannelConversionBlock::kUnit)))) {
      unit = own;
    }
    isLinear = block->data.ccType <= kLinear;
    if (block->data.ccType == kLinear) {
      if (block->data.ccVal.size() < 2) {
        return std::nullopt;
      }
      offset = block->data.ccVal[0];
      factor = block->data.ccVal[1];
    }
  }
  MdfChannel plain = channel;
  plain.conversion = isLinear ? 0 : channel.conversion;
  std::optional<MdfValue> value = MdfValue::of(tree, plain, group);
  if (!value || value->lacksConversion_) {
    return std::nullopt;
  }
  MdfTimeReader reader;
  const bool isCount = value->form_ == MdfValue::Form::Unsigned || value->form_ == MdfValue::Form::Signed;
  reader.guessed_ = !unit && channel.conversion == 0 && isCount;
  const int exponent = unit.value_or(reader.guessed_ ? kNanoseconds : 0);
  if (isLinear) {
    reader.scale_ = MdfTimeScale(offset, factor, exponent);
  } else {
    reader.scale_.reset();
    for (int at = 0; at < exponent; ++at) {
      reader.nsPerUnit_ /= 10;
    }
  }
  reader.value_ = std::move(*value);
  return reader;
}

std::optional<std::int64_t> MdfTimeReader::read(const MdfRow& row) const {
  if (!value_.isValid(row)) {
    return std::nullopt;
  }
  if (scale_) {
    return value_.readTime(row, *scale_);
  }
  const auto units = value_.readReal(row);
  if (!units || nsPerUnit_ == 0 ||
      !(std::fabs(*units) <= static_cast<double>(kFarthestNs) / static_cast<double>(nsPerUnit_) - 1.0)) {
    return std::nullopt;
  }
  const double whole = std::trunc(*units);
  return static_cast<std::int64_t>(whole) * nsPerUnit_ +
         static_cast<std::int64_t>(std::round((*units - whole) * static_cast<double>(nsPerUnit_)));
}

std::unique_ptr<MdfFrameLayout> MdfFrameLayout::make(const MdfLayoutContext& context,
                                                     const std::vector<const MdfGroupInfo*>& columns) {
  std::unique_ptr<MdfFrameLayout> layout(new MdfFrameLayout);
  layout->name_ = columns.front()->frame;
  layout->busNumber_ = columns.front()->busNumber;
  layout->slots_.fill(static_cast<std::uint8_t>(kNoValue));
  for (std::size_t column = 0; column < columns.size(); ++column) {
    const MdfGroupInfo& group = *columns[column];
    if (group.master && !layout->time_) {
      MdfChannel channel = *group.master;
      channel.column = column;
      layout->time_ = MdfTimeReader::of(context.tree, channel, group.data);
    }
    if (group.frame != layout->name_) {
      continue;
    }
    if (group.whole && !layout->whole_) {
      // Its bytes are no number, so that only what says whether they are valid is taken.
      MdfChannel channel = *group.whole;
      channel.column = column;
      channel.conversion = 0;
      channel.data.cnByteOffset = 0;
      channel.data.cnBitOffset = 0;
      channel.data.cnBitCount = 0;
      channel.data.cnDataType = 0;
      layout->whole_ = MdfValue::of(context.tree, channel, group.data);
    }
    for (const MdfMemberChannel& member : group.members) {
      MdfChannel channel = member.channel;
      channel.column = column;
      layout->addMember(context, member.member, channel, group.data);
    }
  }
  return layout->hasAllThatIsNeeded() ? std::move(layout) : nullptr;
}

bool MdfFrameLayout::hasAllThatIsNeeded() const {
  const bool hasIdentifier =
      name_->kind == FrameKind::Data || name_->kind == FrameKind::Remote || name_->kind == FrameKind::Lin;
  return time_ && (!hasIdentifier || has(MdfMember::Id));
}

void MdfFrameLayout::addMember(const MdfLayoutContext& context, MdfMember member, const MdfChannel& channel,
                               const ChannelGroupBlockData& group) {
  if (member == MdfMember::DataBytes) {
    if (!payload_) {
      addPayload(context, channel, group);
    }
    return;
  }
  std::optional<MdfValue> value = MdfValue::of(context.tree, channel, group);
  if (value && !has(member)) {
    slots_[static_cast<std::size_t>(member)] = static_cast<std::uint8_t>(values_.size());
    values_.push_back(std::move(*value));
  }
}

void MdfFrameLayout::addPayload(const MdfLayoutContext& context, const MdfChannel& channel,
                                const ChannelGroupBlockData& group) {
  const ChannelBlockData& data = channel.data;
  Payload payload;
  payload.column = channel.column;
  MdfChannel validity = channel;
  validity.conversion = 0;
  validity.data.cnBitCount = 0;
  validity.data.cnBitOffset = 0;
  validity.data.cnByteOffset = 0;
  validity.data.cnDataType = 0;
  payload.validity = MdfValue::of(context.tree, validity, group);
  if (!is(data.cnType, MdfChannelType::VariableLength)) {
    payload.offset = data.cnByteOffset;
    payload.size = static_cast<std::uint32_t>(bytesOfBits(data.cnBitCount));
    if (std::uint64_t{payload.offset} + payload.size > group.cgDataBytes) {
      return;
    }
    payload_ = std::move(payload);
    if (is(data.cnType, MdfChannelType::MaximumLength)) {
      addLengthOf(context, channel, group);
    }
    return;
  }
  MdfChannel position = channel;
  position.conversion = 0;
  position.data.cnDataType = 0;
  position.data.cnType = static_cast<std::uint8_t>(MdfChannelType::FixedLength);
  position.data.cnFlags &= ~(kAllInvalid | kInvalidBitUsed);
  payload.position = MdfValue::of(context.tree, position, group);
  const auto owner = std::ranges::find(context.groups, channel.dataLink, &MdfGroupInfo::position);
  if (owner != context.groups.end() && channel.dataLink != 0) {
    const auto sizes = context.sizes.find(owner->dataGroup);
    if (owner->recordIdSize == 0 || sizes == context.sizes.end()) {
      return;
    }
    payload.variable = std::make_unique<MdfVariableRecords>(context.file, owner->dataLink, sizes->second,
                                                            owner->data.cgRecordId, context.limits);
    payload.inOrder = context.offsetsUnknown;
  } else {
    payload.stored =
        std::make_unique<MdfDataStream>(context.file, channel.dataLink, MdfDataRole::Values, context.limits);
  }
  if (payload.position) {
    payload_ = std::move(payload);
  }
}

// Where the channel of the bytes says itself which one has their length.
void MdfFrameLayout::addLengthOf(const MdfLayoutContext& context, const MdfChannel& payload,
                                 const ChannelGroupBlockData& group) {
  if (payload.dataLink == 0 || !context.tree.isBlock(payload.dataLink, BlockTypeId::CN)) {
    return;
  }
  if (const auto block = context.tree.leaf<ChannelBlock>(payload.dataLink)) {
    const MdfChannel channel{block->data, payload.dataLink, block->link(ChannelBlock::kConversion), 0,
                             0,           payload.column};
    addMember(context, MdfMember::DataLength, channel, group);
  }
}

void MdfFrameLayout::close() {
  if (payload_ && payload_->stored) {
    payload_->stored->close();
  }
  if (payload_ && payload_->variable) {
    payload_->variable->close();
  }
}

}  // namespace xlatr
