#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <string_view>

#include "util/numbers.hpp"

namespace xlatr {
namespace {

// The C library's conversion, which this process runs in the C locale, is the oracle.
void expectAsStrtod(const std::string& text) {
  char* end = nullptr;
  const double expected = std::strtod(text.c_str(), &end);
  const RealPrefix actual = parseRealPrefix(text);
  ASSERT_EQ(actual.consumed, static_cast<std::size_t>(end - text.c_str())) << "{" << text << "}";
  if (std::isnan(expected)) {
    ASSERT_TRUE(std::isnan(actual.value)) << "{" << text << "}";
  } else {
    ASSERT_EQ(std::bit_cast<std::uint64_t>(actual.value), std::bit_cast<std::uint64_t>(expected)) << "{" << text << "}";
  }
}

TEST(ParseRealPrefix, readsTheNumberAtTheStart) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  struct Case {
    std::string_view name;
    std::string_view text;
    double value;
    std::size_t consumed;
  };
  const Case cases[] = {
      {"empty", "", 0.0, 0},
      {"white space alone", " \t\n\v\f\r", 0.0, 0},
      {"a word", "abc", 0.0, 0},
      {"sign alone", "-", 0.0, 0},
      {"two signs", "--1", 0.0, 0},
      {"plus and minus", "+-1", 0.0, 0},
      {"blank after the sign", "- 1", 0.0, 0},
      {"point alone", ".", 0.0, 0},
      {"point and exponent", ".e5", 0.0, 0},
      {"exponent alone", "e5", 0.0, 0},
      {"zero character in front", std::string_view("\0001", 2), 0.0, 0},
      {"integer", "42", 42.0, 2},
      {"all white space in front", " \t\n\v\f\r7", 7.0, 7},
      {"plus", "+7", 7.0, 2},
      {"minus", "-7", -7.0, 2},
      {"minus zero", "-0", -0.0, 2},
      {"time of a message", "1059.900000 1 Rx", 1059.9, 11},
      {"no digit in front of the point", ".5", 0.5, 2},
      {"no digit after the point", "5.", 5.0, 2},
      {"two points", "1.2.3", 1.2, 3},
      {"a comma ends it", "1,5", 1.0, 1},
      {"a zero character ends it", std::string_view("1\0002", 3), 1.0, 1},
      {"exponent", "1.5e3", 1500.0, 5},
      {"exponent with sign", "15E-1x", 1.5, 5},
      {"exponent without digits", "1e", 1.0, 1},
      {"exponent with a sign alone", "1e+", 1.0, 1},
      {"exponent after a point", "1.e1", 10.0, 4},
      {"nearest of one tenth", "0.1", 0.1, 3},
      {"15 digits", "123456789012.345", 123456789012.345, 16},
      {"22 decimals", "0.0000000000000000000001", 1e-22, 24},
      {"23 decimals", "0.00000000000000000000001", 1e-23, 25},
      {"2^53", "9007199254740992", 9007199254740992.0, 16},
      {"2^53 + 1 goes to even", "9007199254740993", 9007199254740992.0, 16},
      {"2^53 + 3 goes to even", "9007199254740995", 9007199254740996.0, 16},
      {"largest", "1.7976931348623157e308", std::numeric_limits<double>::max(), 22},
      {"too large", "1e309", kInfinity, 5},
      {"too large, negative", "-1e309", -kInfinity, 6},
      {"too large by digits that an exponent takes back in part", "1000e306", kInfinity, 8},
      {"huge exponent", "1e99999999999999999999", kInfinity, 22},
      {"huge exponent of zero", "0e99999999999999999999", 0.0, 22},
      {"smallest denormal", "4.9406564584124654e-324", 5e-324, 23},
      {"rounds to zero", "1e-400", 0.0, 6},
      {"rounds to minus zero", "-1e-400", -0.0, 7},
      {"huge negative exponent", "1e-99999999999999999999", 0.0, 23},
      {"hexadecimal", "0x1F", 31.0, 4},
      {"hexadecimal with point and exponent", "0X1.8P+1z", 3.0, 8},
      {"hexadecimal without a digit in front of the point", "0x.8", 0.5, 4},
      {"hexadecimal without a digit after the point", "0x8.", 8.0, 4},
      {"negative hexadecimal", "-0x10", -16.0, 5},
      {"hexadecimal exponent without digits", "0x1p", 1.0, 3},
      {"hexadecimal exponent with two signs", "0x1.8P+-4", 1.5, 5},
      {"hexadecimal exponent with two minus signs", "0x1.8p--4", 1.5, 5},
      {"hexadecimal exponent with a minus and a plus", "0x1.8p-+4", 1.5, 5},
      {"decimal exponent with two signs", "1.5e+-4", 1.5, 3},
      {"too large hexadecimal", "0x1p1024", kInfinity, 8},
      {"too small hexadecimal", "0x1p-1076", 0.0, 9},
      {"smallest hexadecimal", "0x1p-1074", 5e-324, 9},
      {"hexadecimal prefix alone is a zero", "0x", 0.0, 1},
      {"hexadecimal prefix and a point", "0x.", 0.0, 1},
      {"hexadecimal prefix and a sign", "0x-1", 0.0, 1},
      {"hexadecimal prefix and infinity", "0xinf", 0.0, 1},
      {"hexadecimal prefix and a word", "-0xg", -0.0, 2},
      {"infinity, short", "inf", kInfinity, 3},
      {"infinity, long", "-InFiNiTy!", -kInfinity, 9},
      {"infinity, cut", "+infinit", kInfinity, 4},
      {"not a number", "nan", std::nan(""), 3},
      {"not a number with a text", "NaN(12ab_)x", std::nan(""), 10},
      {"not a number with an empty text", "nan()", std::nan(""), 5},
      {"not a number with a bad text", "nan(1-2)", std::nan(""), 3},
      {"not a number with an open text", "nan(12", std::nan(""), 3},
      {"part of a word", "in", 0.0, 0},
  };
  for (const Case& c : cases) {
    const RealPrefix actual = parseRealPrefix(c.text);
    EXPECT_EQ(actual.consumed, c.consumed) << c.name;
    if (std::isnan(c.value)) {
      EXPECT_TRUE(std::isnan(actual.value)) << c.name;
    } else {
      EXPECT_EQ(actual.value, c.value) << c.name;
      EXPECT_EQ(std::signbit(actual.value), std::signbit(c.value)) << c.name;
    }
    expectAsStrtod(std::string(c.text));
  }
}

TEST(ParseRealPrefix, readsNumbersOfThousandsOfDigits) {
  const std::string zeros(2000, '0');
  const std::string manyZeros(1'000'000, '0');
  for (const std::string& text :
       {"0." + zeros + "1e2001", "1" + zeros + "e-2000", "1" + zeros, "0." + zeros + "1", "0x0." + zeros + "1p8004",
        "0x1" + zeros + "p-8000", "0x1" + zeros, "0x0." + zeros + "1", "0." + zeros + "1e-99999999999999999999",
        "1" + zeros + "e-99999999999999999999", "0." + manyZeros + "1e1000001", "1" + manyZeros + "e-1000000",
        "0x0." + manyZeros + "1p4000004", zeros + "1.5", "1." + zeros + "1", "9007199254740993." + zeros + "1"}) {
    expectAsStrtod(text);
  }
}

TEST(ParseRealPrefix, agreesWithTheCLibraryOnRandomTexts) {
  constexpr std::array<std::string_view, 4> kAlphabets = {"0123456789.", "0123456789.eE+-", "0123456789abcdefpPxX.+-",
                                                          "0.eExXpP+- \t\vinfINFtyNaA()_1"};
  std::mt19937 random(20240229);
  for (int round = 0; round < 300'000; ++round) {
    const std::string_view alphabet = kAlphabets[random() % kAlphabets.size()];
    std::string text;
    for (auto length = random() % 28; length > 0; --length) {
      text += alphabet[random() % alphabet.size()];
    }
    expectAsStrtod(text);
    if (HasFatalFailure()) {
      return;
    }
  }
}

TEST(ParseRealPrefix, agreesWithTheCLibraryOnRandomNumbers) {
  std::mt19937_64 random(20240301);
  const auto printed = [](const char* format, double value) {
    std::array<char, 512> buffer{};
    std::snprintf(buffer.data(), buffer.size(), format, value);
    return std::string(buffer.data());
  };
  for (int round = 0; round < 50'000; ++round) {
    const auto any = std::bit_cast<double>(random());
    const double time = static_cast<double>(random() % 1'000'000'000'000) / 1e6;
    expectAsStrtod(printed("%.17g", any));
    expectAsStrtod(printed("%.25e", any));
    expectAsStrtod(printed("%a", any));
    expectAsStrtod(printed("%.6f", time));
    expectAsStrtod(printed("%20.12f", -time));
    expectAsStrtod(printed("%.3e", std::ldexp(time, -1080)));
    if (HasFatalFailure()) {
      return;
    }
  }
}

// A number is a part of a line.
TEST(ParseRealPrefix, readsNothingAfterItsText) {
  for (const std::string_view text : {"-12.5e+12", "0x1F.8p3", "123456", ".5", "1e999", "0.0001e-400"}) {
    for (std::size_t size = 0; size <= text.size(); ++size) {
      const std::string alone(text.substr(0, size));
      const RealPrefix cut = parseRealPrefix(text.substr(0, size));
      const RealPrefix whole = parseRealPrefix(alone);
      EXPECT_EQ(cut.value, whole.value) << alone;
      EXPECT_EQ(cut.consumed, whole.consumed) << alone;
    }
  }
}

}  // namespace
}  // namespace xlatr
