// Numbers as binary files store them: the low byte first.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace xlatr {

namespace detail {

// The unsigned integer of a number's size.
template <std::size_t kSize>
using BitsOfSize = std::conditional_t<
    kSize == 1, std::uint8_t,
    std::conditional_t<kSize == 2, std::uint16_t, std::conditional_t<kSize == 4, std::uint32_t, std::uint64_t>>>;

// Whether a number stands in memory as it stands in files, so that it can be copied. Compilers turn some of the loops
// below into such a copy, but not all.
[[nodiscard]] constexpr bool canCopyLittle() {
  return !std::is_constant_evaluated() && std::endian::native == std::endian::little;
}

template <class Bits>
[[nodiscard]] constexpr Bits gatherLittle(const std::uint8_t* bytes) {
  Bits bits = 0;
  if (canCopyLittle()) {
    std::memcpy(&bits, bytes, sizeof bits);
    return bits;
  }
  for (std::size_t index = 0; index < sizeof(Bits); ++index) {
    bits = static_cast<Bits>(bits | static_cast<Bits>(static_cast<Bits>(bytes[index]) << (8 * index)));
  }
  return bits;
}

}  // namespace detail

// The integer or IEEE 754 number in the sizeof(Number) bytes at `bytes`, of any alignment.
template <class Number>
requires std::is_arithmetic_v<Number>
[[nodiscard]] constexpr Number loadLittle(const std::uint8_t* bytes) {
  return std::bit_cast<Number>(detail::gatherLittle<detail::BitsOfSize<sizeof(Number)>>(bytes));
}

template <class Number>
requires std::is_arithmetic_v<Number>
constexpr void storeLittle(std::uint8_t* bytes, Number value) {
  const auto bits = std::bit_cast<detail::BitsOfSize<sizeof(Number)>>(value);
  if (detail::canCopyLittle()) {
    std::memcpy(bytes, &bits, sizeof bits);
    return;
  }
  for (std::size_t index = 0; index < sizeof(Number); ++index) {
    bytes[index] = static_cast<std::uint8_t>(bits >> (8 * index));
  }
}

}  // namespace xlatr
