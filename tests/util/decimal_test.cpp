#include "util/decimal.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace xlatr {
namespace {

struct ScaledCase {
  std::string_view text;
  unsigned exponent;
  std::optional<std::int64_t> value;
};

TEST(ScaledDecimal, keepsEveryDigit) {
  static constexpr std::array kCases = {
      ScaledCase{"12.5", 6, 12'500'000},
      ScaledCase{"0", 6, 0},
      ScaledCase{"7", 0, 7},
      ScaledCase{"  1.000001", 6, 1'000'001},
      ScaledCase{"\t-0.5", 3, -500},
      ScaledCase{"+3", 2, 300},
      ScaledCase{".25", 2, 25},
      ScaledCase{"4.", 1, 40},
      // Beyond what a double tells apart.
      ScaledCase{"9007199254.740993", 6, 9'007'199'254'740'993},
      ScaledCase{"7776000000.123456", 6, 7'776'000'000'123'456},
      ScaledCase{"9223372036854775807", 0, INT64_MAX},
      ScaledCase{"-9223372036854775807", 0, -INT64_MAX},
      ScaledCase{"0000000000000000000000000000001", 0, 1},
  };
  for (const ScaledCase& test : kCases) {
    EXPECT_EQ(scaledDecimal(test.text, test.exponent), test.value) << test.text;
  }
}

TEST(ScaledDecimal, roundsHalvesAwayFromZero) {
  static constexpr std::array kCases = {
      ScaledCase{"1.4", 0, 1},        ScaledCase{"1.5", 0, 2},
      ScaledCase{"-1.5", 0, -2},      ScaledCase{"1.0005", 3, 1001},
      ScaledCase{"1.00049", 3, 1000}, ScaledCase{"0.9999999", 6, 1'000'000},
      ScaledCase{"-0.0000004", 6, 0}, ScaledCase{"1.00000000000000000000000000000000000005", 3, 1000},
  };
  for (const ScaledCase& test : kCases) {
    EXPECT_EQ(scaledDecimal(test.text, test.exponent), test.value) << test.text;
  }
}

TEST(ScaledDecimal, ignoresWhatFollows) {
  EXPECT_EQ(scaledDecimal("1.5)", 1), 15);
  EXPECT_EQ(scaledDecimal("1.5.5", 1), 15);
  EXPECT_EQ(scaledDecimal("3 4", 0), 3);
}

TEST(ScaledDecimal, refusesWhatItCannotHold) {
  for (const std::string_view text : {"", " ", ".", "-", "+.", "x", "--1", "1e3", "1.5E3", "inf", "nan"}) {
    EXPECT_EQ(scaledDecimal(text, 3), std::nullopt) << text;
  }
  EXPECT_EQ(scaledDecimal("9223372036854775808", 0), std::nullopt);
  EXPECT_EQ(scaledDecimal("9223372036854775807.5", 0), std::nullopt);
  EXPECT_EQ(scaledDecimal("9223372036854775.808", 3), std::nullopt);
  EXPECT_EQ(scaledDecimal("9223372036854776", 3), std::nullopt);
}

TEST(ScaledDecimal, doesTheSameWithDigits) {
  for (const std::string_view text : {"0", "12.5", "1.4", "1.5", "0.0005", "1.00049", "9007199254740991",
                                      "123456789.0123456", "0.9999999", "000.1"}) {
    for (const unsigned exponent : {0U, 3U, 6U, 18U}) {
      std::optional<PlainDecimal> plain;
      EXPECT_EQ(parseRealPrefix(text, plain).consumed, text.size());
      ASSERT_TRUE(plain.has_value()) << text;
      EXPECT_EQ(scaledDecimal(*plain, exponent), scaledDecimal(text, exponent)) << text << ", " << exponent;
    }
  }
  EXPECT_EQ(scaledDecimal(PlainDecimal{5, 30}, 3), 0);
  EXPECT_EQ(scaledDecimal(PlainDecimal{0, 0}, 40), 0);
  EXPECT_EQ(scaledDecimal(PlainDecimal{1, 0}, 40), std::nullopt);
}

TEST(ScaledDecimal, getsNoDigitsOfOtherNumbers) {
  for (const std::string_view text : {"", "x", "-1", "+1", " 1", "1e3", "0x1", "9007199254740992", "inf"}) {
    std::optional<PlainDecimal> plain = PlainDecimal{7, 7};
    EXPECT_EQ(parseRealPrefix(text, plain).value, parseRealPrefix(text).value) << text;
    EXPECT_FALSE(plain.has_value()) << text;
  }
}

// A number is a part of a line.
TEST(ScaledDecimal, readsNothingAfterItsText) {
  for (const std::string_view text : {"-12.5e2", "100", "0.25", "1e-3"}) {
    for (std::size_t size = 0; size <= text.size(); ++size) {
      const std::string alone(text.substr(0, size));
      EXPECT_EQ(scaledDecimal(text.substr(0, size), 6), scaledDecimal(alone, 6)) << alone;
    }
  }
}

}  // namespace
}  // namespace xlatr
