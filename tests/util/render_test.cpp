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
      {"not quite a half, below", 1.0005, 3, "1.000"},
      {"not quite a half, above", 0.0005, 3, "0.001"},
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

TEST(FormatFixed, printsTheDecimals) {
  const struct {
    const char* name;
    double value;
    int precision;
    const char* expected;
  } cases[] = {
      {"zero", 0.0, 2, "0.00"},
      {"negative zero", -0.0, 1, "-0.0"},
      {"no decimals", 1.75, 0, "2"},
      {"half to even where the value is exact", 2.5, 0, "2"},
      {"rounded up to a whole", 9.9996, 3, "10.000"},
      {"negative", -12.25, 1, "-12.2"},
      {"smaller than its decimals show", 1e-300, 3, "0.000"},
      {"no exponent", 1e22, 1, "10000000000000000000000.0"},
      {"more decimals than digits", 0.5, 12, "0.500000000000"},
      {"not a number", std::numeric_limits<double>::quiet_NaN(), 3, "nan"},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(formatFixed(test.value, test.precision), test.expected) << test.name;
  }
}

TEST(FormatFixed, fitsTheLongestValue) {
  const std::string text = formatFixed(-std::numeric_limits<double>::max(), 9);
  EXPECT_EQ(text.size(), 1U + 309U + 1U + 9U);
  EXPECT_TRUE(text.starts_with("-17976931348623157"));
  EXPECT_TRUE(text.ends_with(".000000000"));
}

TEST(AppendTraceId, fillsEightColumns) {
  const struct {
    const char* name;
    std::uint32_t identifier;
    bool extended;
    std::size_t width;
    const char* expected;
  } cases[] = {
      {"base in three digits", 0xA, false, 3, "     00A"},
      {"base in four digits", 0xA, false, 4, "    000A"},
      {"base as wide as its digits", 0x7FF, false, 3, "     7FF"},
      {"base wider than its digits", 0x12345, false, 3, "   12345"},
      {"extended", 0x123, true, 4, "00000123"},
      {"extended, all digits", 0xFFFFFFFF, true, 4, "FFFFFFFF"},
      {"zero", 0, false, 4, "    0000"},
      {"extended zero", 0, true, 3, "00000000"},
  };
  for (const auto& test : cases) {
    TextBuffer out;
    appendTraceId(out, test.identifier, test.extended, test.width);
    EXPECT_EQ(out.view(), test.expected) << test.name;
  }
}

TEST(AppendAscId, fillsFifteenColumns) {
  const struct {
    const char* name;
    std::uint32_t identifier;
    bool extended;
    const char* expected;
  } cases[] = {
      {"base", 0x7FF, false, "7FF            "},
      {"no fill in front", 0xA, false, "A              "},
      {"extended", 0x18ABCDEF, true, "18ABCDEFx      "},
      {"extended of one digit", 0, true, "0x             "},
  };
  for (const auto& test : cases) {
    TextBuffer out;
    out.append("|");  // what comes before does not count as a column
    appendAscId(out, test.identifier, test.extended);
    EXPECT_EQ(out.view(), std::string("|") + test.expected) << test.name;
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
