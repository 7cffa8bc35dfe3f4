// Two-digit hexadecimal, as text formats print and read payload bytes. Tables, because this runs once per byte.
#pragma once

#include <array>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace xlatr {

inline constexpr std::string_view kHexDigits = "0123456789ABCDEF";

// Byte value -> its two upper-case digits, without a terminator.
inline constexpr auto kHexPairs = [] {
  std::array<std::array<char, 2>, 256> pairs{};
  for (std::size_t value = 0; value < pairs.size(); ++value) {
    pairs[value] = {kHexDigits[value / 16], kHexDigits[value % 16]};
  }
  return pairs;
}();

// Character, as unsigned char -> value of the digit, both letter cases; -1 for any other character.
inline constexpr auto kHexDigitValues = [] {
  std::array<std::int8_t, UCHAR_MAX + 1> values{};
  values.fill(-1);
  for (std::size_t value = 0; value < kHexDigits.size(); ++value) {
    const auto digit = static_cast<std::int8_t>(value);
    values[static_cast<unsigned char>(kHexDigits[value])] = digit;
    if (value >= 10) {
      values[static_cast<unsigned char>(kHexDigits[value] - 'A' + 'a')] = digit;
    }
  }
  return values;
}();

[[nodiscard]] constexpr int hexDigitValue(char digit) {
  return kHexDigitValues[static_cast<unsigned char>(digit)];
}

// The two digits of a byte as text that lives forever.
[[nodiscard]] constexpr std::string_view hexPair(std::uint8_t value) {
  return {kHexPairs[value].data(), kHexPairs[value].size()};
}

}  // namespace xlatr
