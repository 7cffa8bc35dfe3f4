#include "util/render.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <string_view>

namespace xlatr {
namespace {

std::string fixedText(double value, int decimals) {
  TextBuffer out;
  appendFixed(out, value, decimals);
  return std::string(out.view());
}

// What is undefined there is for a sanitizer to see.
TEST(TextBuffer, takesNothingWhileItIsFresh) {
  TextBuffer out;
  out.append(std::string_view());
  out.appendBlanks(0);
  out.appendRight(std::string_view(), 0);
  EXPECT_TRUE(out.empty());
  EXPECT_EQ(out.view(), "");
  out.appendRight("x", 3);
  EXPECT_EQ(out.view(), "  x");
}

TEST(AppendFixed, printsTheDecimals) {
  const struct {
    const char* name;
    double value;
    int decimals;
    const char* expected;
  } cases[] = {
      {"zero", 0.0, 3, "0.000"},
      {"negative zero", -0.0, 3, "-0.000"},
      {"whole", 7.0, 3, "7.000"},
      {"fraction", 1.5, 3, "1.500"},
      {"leading zeros of the fraction", 2.005, 3, "2.005"},
      {"rounded up to a whole", 0.9996, 3, "1.000"},
      {"no decimals", 1.75, 0, "2"},
      {"half to even where the value is exact", 0.5, 0, "0"},
      {"the same above", 1.5, 0, "2"},
      {"a half that is none, below", 1.0005, 3, "1.000"},
      {"a half that is none, above", 0.0005, 3, "0.001"},
      {"negative", -12.25, 3, "-12.250"},
      {"nine decimals", 123.456789012, 9, "123.456789012"},
      {"large", 123456789012345.678, 3, "123456789012345.672"},
      {"infinite", std::numeric_limits<double>::infinity(), 3, "inf"},
      {"not a number", std::numeric_limits<double>::quiet_NaN(), 3, "nan"},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(fixedText(test.value, test.decimals), test.expected) << test.name;
  }
}

TEST(AppendFixed, printsWhatTheCLibraryPrints) {
  std::mt19937_64 random(3);
  std::uniform_real_distribution<double> exponent(-6, 14);
  for (int round = 0; round < 100000; ++round) {
    // Every other value lies at a half of the last place, or next to one.
    double value = std::pow(10.0, exponent(random));
    if (round % 2 == 0) {
      value = (std::floor(value * 1000) + 0.5) / 1000;
    }
    if (round % 4 == 0) {
      value = std::nextafter(value, round % 8 == 0 ? 0.0 : 1e300);
    }
    char expected[64];
    std::snprintf(expected, sizeof expected, "%.3f", value);
    ASSERT_EQ(fixedText(value, 3), expected) << value;
  }
}

TEST(AppendHexBytes, joinsThemByTheSeparator) {
  const std::uint8_t bytes[] = {0x00, 0xAB, 0x7F};
  const struct {
    std::string_view separator;
    const char* expected;
  } cases[] = {{" ", "00 AB 7F"}, {";", "00;AB;7F"}, {"", "00AB7F"}, {" | ", "00 | AB | 7F"}};
  for (const auto& test : cases) {
    TextBuffer out;
    appendHexBytes(out, bytes, test.separator);
    EXPECT_EQ(out.view(), test.expected);
    out.clear();
    appendHexBytes(out, {bytes, 1}, test.separator);
    EXPECT_EQ(out.view(), "00");
    out.clear();
    appendHexBytes(out, {}, test.separator);
    EXPECT_EQ(out.view(), "");
  }
}

}  // namespace
}  // namespace xlatr
