#include "util/hex.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace xlatr {
namespace {

TEST(Hex, givesTheValueOfEachDigit) {
  const std::string_view upper = "0123456789ABCDEF";
  const std::string_view lower = "0123456789abcdef";
  for (int character = 0; character < 256; ++character) {
    const auto digit = static_cast<char>(character);
    const auto expected = std::min(upper.find(digit), lower.find(digit));
    EXPECT_EQ(hexDigitValue(digit), expected == std::string_view::npos ? -1 : static_cast<int>(expected)) << character;
  }
}

TEST(Hex, printsTwoUpperCaseDigits) {
  EXPECT_EQ(hexPair(0x00), "00");
  EXPECT_EQ(hexPair(0x0A), "0A");
  EXPECT_EQ(hexPair(0x9F), "9F");
  EXPECT_EQ(hexPair(0xFF), "FF");
}

TEST(Hex, readsBackWhatItPrints) {
  for (int value = 0; value < 256; ++value) {
    const auto pair = hexPair(static_cast<std::uint8_t>(value));
    EXPECT_EQ(hexDigitValue(pair[0]) * 16 + hexDigitValue(pair[1]), value);
  }
}

}  // namespace
}  // namespace xlatr
