#include "formats/mf4/mdf_number_field.hpp"

#include <cmath>

namespace xlatr {
namespace {

constexpr std::uint64_t lowBits(std::uint64_t count) {
  return count >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
}

bool isBigEndian(std::uint8_t dataType) {
  return dataType % 2 != 0;
}

}  // namespace

// The whole bytes that the bits fill up, from the byte offset on; the bit offset then takes low bits off them. So a
// field that begins within a byte and ends in another one loses what stands in the last byte.
MdfNumberField MdfNumberField::of(const ChannelBlockData& data) {
  const std::uint64_t byteCount = bytesOfBits(data.cnBitCount);
  MdfNumberField number;
  number.offset = data.cnByteOffset;
  number.isBigEndian = xlatr::isBigEndian(data.cnDataType);
  if (byteCount == 0 || data.cnBitOffset >= 8 * byteCount) {
    return number;  // a mask of 0: always 0
  }
  const std::uint64_t above = number.isBigEndian ? 64 - 8 * byteCount : 0;
  number.shift = static_cast<std::uint8_t>(above + data.cnBitOffset);
  number.mask = lowBits(data.cnBitCount) & lowBits(8 * byteCount - data.cnBitOffset);
  return number;
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
