// Numbers in records.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "formats/mf4/block_channels.hpp"
#include "io/quirk.hpp"
#include "util/little_endian.hpp"

namespace xlatr {

// Whether a number of a block is this value of its enumeration.
template <class Enum>
[[nodiscard]] constexpr bool is(std::uint8_t number, Enum value) {
  return number == static_cast<std::uint8_t>(value);
}

[[nodiscard]] constexpr std::uint64_t bytesOfBits(std::uint64_t bits) {
  return (bits + 7) / 8;
}

inline constexpr std::uint32_t kMostNumberBits = 64;

[[nodiscard]] constexpr std::uint64_t swapBytes(std::uint64_t value) {
  std::uint64_t swapped = 0;
  for (int index = 0; index < 8; ++index) {
    swapped = swapped << 8 | (value >> (8 * index) & 0xFFU);
  }
  return swapped;
}

// Where a number stands in a record, worked out once for all records of a group.
struct MdfNumberField {
  std::uint32_t offset = 0;
  std::uint8_t shift = 0;  // of the 8 bytes at the offset, big-endian ones swapped
  bool isBigEndian = false;
  bool isWide = false;  // the bits begin in one byte and end in the ninth
  std::uint64_t mask = 0;

  [[nodiscard]] static constexpr bool isBigEndianType(std::uint8_t dataType) { return dataType % 2 != 0; }
  // That of a channel of at most kMostNumberBits.
  [[nodiscard]] static MdfNumberField of(const ChannelBlockData& data, Way way);

  // `record` must have 8 bytes to be read at the offset, 9 of a wide one, whatever stands in those after the field.
  [[nodiscard]] std::uint64_t read(const std::uint8_t* record) const {
    if (isWide) [[unlikely]] {
      return readWide(record);
    }
    const auto bytes = loadLittle<std::uint64_t>(record + offset);
    return ((isBigEndian ? swapBytes(bytes) : bytes) >> shift) & mask;
  }
  // The same of several records.
  void read(const std::uint8_t* const* records, std::size_t count, std::uint64_t* numbers) const;

 private:
  [[nodiscard]] std::uint64_t readWide(const std::uint8_t* record) const;
};

// The nearest integer; negative ones wrap around. Nothing for what no 64 bits hold.
[[nodiscard]] std::optional<std::uint64_t> toInteger(std::optional<double> value);

}  // namespace xlatr
