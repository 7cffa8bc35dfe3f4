#include "formats/mf4/mdf_number_field.hpp"

#include <algorithm>
#include <cmath>

namespace xlatr {
namespace {

constexpr std::uint64_t lowBits(std::uint64_t count) {
  return count >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
}

}  // namespace

// With the quirk the whole bytes that the bits alone fill up, from the byte offset on; the bit offset then takes low
// bits off them. Without it those that the bits lie in.
MdfNumberField MdfNumberField::of(const ChannelBlockData& data, Way way) {
  const std::uint64_t bitsBefore = way.has(Quirk::Mf4FieldsEndWithTheirFirstBytes) ? 0 : data.cnBitOffset;
  const std::uint64_t byteCount = bytesOfBits(bitsBefore + data.cnBitCount);
  MdfNumberField number;
  number.offset = data.cnByteOffset;
  number.isBigEndian = isBigEndianType(data.cnDataType);
  if (data.cnBitCount == 0 || data.cnBitOffset >= 8 * byteCount) {
    return number;  // a mask of 0: always 0
  }
  number.isWide = byteCount > sizeof(std::uint64_t);
  const std::uint64_t above = number.isBigEndian && !number.isWide ? 64 - 8 * byteCount : 0;
  number.shift = static_cast<std::uint8_t>(above + data.cnBitOffset);
  number.mask = lowBits(data.cnBitCount) & lowBits(8 * byteCount - data.cnBitOffset);
  return number;
}

// Most fields are plain, and a loop without questions is several times as fast.
void MdfNumberField::read(const std::uint8_t* const* records, std::size_t count, std::uint64_t* numbers) const {
  if (isBigEndian || isWide) {
    std::transform(records, records + count, numbers, [this](const std::uint8_t* record) { return read(record); });
    return;
  }
  const MdfNumberField field = *this;
  for (std::size_t at = 0; at < count; ++at) {
    numbers[at] = (loadLittle<std::uint64_t>(records[at] + field.offset) >> field.shift) & field.mask;
  }
}

std::uint64_t MdfNumberField::readWide(const std::uint8_t* record) const {
  const std::uint8_t* const bytes = record + offset;
  const std::uint64_t low =
      isBigEndian ? swapBytes(loadLittle<std::uint64_t>(bytes + 1)) : loadLittle<std::uint64_t>(bytes);
  const std::uint64_t high = isBigEndian ? bytes[0] : bytes[sizeof(std::uint64_t)];
  return (low >> shift | high << (64U - shift)) & mask;
}

std::optional<std::uint64_t> toInteger(std::optional<double> value) {
  constexpr double kEnd = 18446744073709551616.0;  // 2 to the 64th
  if (!value) {
    return std::nullopt;
  }
  const double rounded = std::round(*value);
  if (rounded >= 0.0 && rounded < kEnd) {
    return static_cast<std::uint64_t>(rounded);
  }
  return rounded < 0.0 && rounded >= -kEnd / 2
             ? std::optional(static_cast<std::uint64_t>(static_cast<std::int64_t>(rounded)))
             : std::nullopt;
}

}  // namespace xlatr
