#include "util/numbers.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>

#include "platform/thread.hpp"
#include "util/failures.hpp"

namespace xlatr {
namespace {

// The number in decimal, or the text of the failure.
template <typename Parse, typename... Arguments>
std::string outcome(Parse parse, Arguments... arguments) {
  try {
    return std::to_string(parse(arguments...));
  } catch (const ConverterParsingException& failure) {
    return failure.what();
  }
}

// The number in decimal, or "refused" if `out` kept its value.
template <typename Number, typename Try, typename... Arguments>
std::string tryOutcome(Try tryParse, std::string_view text, Arguments... arguments) {
  constexpr Number kUntouched = 99;
  Number out = kUntouched;
  if (tryParse(text, out, arguments...)) {
    return std::to_string(out);
  }
  return out == kUntouched ? "refused" : "refused, but touched";
}

struct Case {
  std::string_view name;
  std::string_view text;
  std::string_view expected;
};

TEST(ParseBool, readsZeroAndOne) {
  const Case cases[] = {
      {"zero", "0", "0"},
      {"one", "1", "1"},
      {"blanks around", " 1 ", "1"},
      {"blanks around a zero", "\t0\r\n", "0"},
      {"two", "2", "Bool is not 0 nor 1: {2}"},
      {"the failure shows the blanks", " 2 ", "Bool is not 0 nor 1: { 2 }"},
      {"empty", "", "Bool is not 0 nor 1: {}"},
      {"blanks alone", "  ", "Bool is not 0 nor 1: {  }"},
      {"two digits", "01", "Bool is not 0 nor 1: {01}"},
      {"a word", "true", "Bool is not 0 nor 1: {true}"},
      {"vertical tab", "\v1", "Bool is not 0 nor 1: {\v1}"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(outcome(parseBool, c.text), c.expected) << c.name;
    bool value = false;
    const bool read = tryParseBool(c.text, value);
    EXPECT_EQ(read, c.expected.size() == 1) << c.name;
    EXPECT_EQ(value, c.expected == "1") << c.name;
  }
}

TEST(ParseHexPair, readsTwoDigits) {
  const Case cases[] = {
      {"lowest", "00", "0"},
      {"highest", "FF", "255"},
      {"lower case", "af", "175"},
      {"mixed case", "Fa", "250"},
      {"bad second digit", "1G", "Digit is not 0..F nor 0..f: {G}"},
      {"bad first digit", "g1", "Digit is not 0..F nor 0..f: {g}"},
      {"the first of two bad digits", "xy", "Digit is not 0..F nor 0..f: {x}"},
      {"a blank is not trimmed", " 1", "Digit is not 0..F nor 0..f: { }"},
      {"sign", "+1", "Digit is not 0..F nor 0..f: {+}"},
      {"empty", "", "String is not a 2 digits hexa 00..FF: {}"},
      {"one digit", "1", "String is not a 2 digits hexa 00..FF: {1}"},
      {"three digits", "001", "String is not a 2 digits hexa 00..FF: {001}"},
      {"pair with a blank", "FF ", "String is not a 2 digits hexa 00..FF: {FF }"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(outcome(parseHexPair, c.text), c.expected) << c.name;
  }
}

TEST(ParseByte, readsDecimals) {
  const Case cases[] = {
      {"lowest", "0", "0"},
      {"highest", "255", "255"},
      {"leading zeros", "000255", "255"},
      {"above", "256", "String is not a byte: {256}"},
      {"past 32 bits", "4294967296", "String is not a byte: {4294967296}"},
      {"past 64 bits", "18446744073709551616", "String is not a byte: {18446744073709551616}"},
      {"hexadecimal digit", "FF", "String is not a byte: {FF}"},
      {"sign", "+1", "String is not a byte: {+1}"},
      {"minus", "-1", "String is not a byte: {-1}"},
      {"inner blank", "1 2", "String is not a byte: {1 2}"},
      {"the failure shows the blanks", " x ", "String is not a byte: { x }"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(outcome(parseByte, c.text, 10), c.expected) << c.name;
    const bool fails = c.expected.front() == 'S';
    EXPECT_EQ(tryOutcome<std::uint8_t>(tryParseByte, c.text), fails ? "refused" : c.expected) << c.name;
  }
}

TEST(ParseByte, readsHexadecimals) {
  const Case cases[] = {
      {"highest", "FF", "255"},
      {"lower case", "fe", "254"},
      {"above", "100", "String is not a hexa byte: {100}"},
      {"prefix", "0x1", "String is not a hexa byte: {0x1}"},
      {"no digit", "G", "String is not a hexa byte: {G}"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(outcome(parseByte, c.text, 16), c.expected) << c.name;
  }
}

TEST(ParseByte, failsInOtherBasesAndShowsTheBase) {
  EXPECT_EQ(outcome(parseByte, "12", 8), "Base not supported: {8}");
  EXPECT_EQ(outcome(parseByte, "1", 2), "Base not supported: {2}");
  EXPECT_EQ(outcome(parseByte, "1", 0), "Base not supported: {0}");
  EXPECT_EQ(outcome(parseByte, "x", -1), "Base not supported: {-1}");
}

TEST(ParseUInt16, readsDecimals) {
  const Case cases[] = {
      {"highest", "65535", "65535"},
      {"blanks around", "\t7 ", "7"},
      {"above", "65536", "String is not a uint16: {65536}"},
      {"past 32 bits", "4294967297", "String is not a uint16: {4294967297}"},
      {"past 64 bits", "18446744073709551617", "String is not a uint16: {18446744073709551617}"},
      {"no digit", "A", "String is not a uint16: {A}"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(outcome(parseUInt16, c.text), c.expected) << c.name;
    const bool fails = c.expected.front() == 'S';
    EXPECT_EQ(tryOutcome<std::uint16_t>(tryParseUInt16, c.text), fails ? "refused" : c.expected) << c.name;
  }
}

TEST(ParseInt16Hex, refusesNumbersWithTheTopBit) {
  const Case cases[] = {
      {"lowest", "0", "0"},
      {"highest", "7FFF", "32767"},
      {"lower case", "7ffe", "32766"},
      {"blanks around", " 10\r", "16"},
      {"the top bit", "8000", "String is not a int16 hexa: {8000}"},
      {"all bits", "FFFF", "String is not a int16 hexa: {FFFF}"},
      {"past 16 bits", "10001", "String is not a int16 hexa: {10001}"},
      {"past 32 bits", "FFFFFFFFF", "String is not a int16 hexa: {FFFFFFFFF}"},
      {"past 64 bits", "10000000000000001", "String is not a int16 hexa: {10000000000000001}"},
      {"minus", "-1", "String is not a int16 hexa: {-1}"},
      {"prefix", "0x1", "String is not a int16 hexa: {0x1}"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(outcome(parseInt16Hex, c.text), c.expected) << c.name;
    const bool fails = c.expected.front() == 'S';
    EXPECT_EQ(tryOutcome<std::int16_t>(tryParseInt16Hex, c.text), fails ? "refused" : c.expected) << c.name;
  }
}

TEST(ParseUInt32, readsThreeBases) {
  struct BaseCase {
    std::string_view name;
    std::string_view text;
    int base;
    std::string_view expected;
  };
  const BaseCase cases[] = {
      {"decimal", "1234567890", 10, "1234567890"},
      {"highest decimal", "4294967295", 10, "4294967295"},
      {"above", "4294967296", 10, "String is not a uint32: {4294967296}"},
      {"past 64 bits", "99999999999999999999", 10, "String is not a uint32: {99999999999999999999}"},
      {"a word", "abc", 10, "String is not a uint32: {abc}"},
      {"sign", "+5", 10, "String is not a uint32: {+5}"},
      {"point", "1.5", 10, "String is not a uint32: {1.5}"},
      {"highest hexadecimal", "ffffFFFF", 16, "4294967295"},
      {"above in hexadecimal", "100000000", 16, "String is not a hexa uint32: {100000000}"},
      {"prefix", "0x10", 16, "String is not a hexa uint32: {0x10}"},
      {"no hexadecimal digit", "1G", 16, "String is not a hexa uint32: {1G}"},
      {"highest binary", "11111111111111111111111111111111", 2, "4294967295"},
      {"above in binary", "100000000000000000000000000000000", 2,
       "String is not a binary uint32: {100000000000000000000000000000000}"},
      {"no binary digit", "102", 2, "String is not a binary uint32: {102}"},
  };
  for (const BaseCase& c : cases) {
    EXPECT_EQ(outcome(parseUInt32, c.text, c.base), c.expected) << c.name;
    const bool fails = c.expected.front() == 'S';
    EXPECT_EQ(tryOutcome<std::uint32_t>(tryParseUInt32, c.text, c.base), fails ? "refused" : c.expected) << c.name;
  }
}

TEST(ParseUInt32, failsInOtherBasesAndShowsTheInput) {
  EXPECT_EQ(outcome(parseUInt32, "12", 8), "Base not supported: {12}");
  EXPECT_EQ(outcome(parseUInt32, "", 0), "Base not supported: {}");
  EXPECT_EQ(tryOutcome<std::uint32_t>(tryParseUInt32, "12", 8), "refused");
  EXPECT_EQ(tryOutcome<std::uint32_t>(tryParseUInt32, "12", 36), "refused");
}

TEST(ParseUInt64, readsDecimals) {
  const Case cases[] = {
      {"highest", "18446744073709551615", "18446744073709551615"},
      {"blanks around", " 12\t", "12"},
      {"no digit", "1x", "String is not a uint64: {1x}"},
      {"minus", "-1", "String is not a uint64: {-1}"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(outcome(parseUInt64, c.text), c.expected) << c.name;
    const bool fails = c.expected.front() == 'S';
    EXPECT_EQ(tryOutcome<std::uint64_t>(tryParseUInt64, c.text), fails ? "refused" : c.expected) << c.name;
  }
}

TEST(ParseUInt64, takesTheLargestValueForANumberPastIt) {
  EXPECT_EQ(outcome(parseUInt64, "18446744073709551616"), "18446744073709551615");
  EXPECT_EQ(outcome(parseUInt64, "18446744073709551625"), "18446744073709551615");
  EXPECT_EQ(outcome(parseUInt64, "36893488147419103232"), "18446744073709551615") << "0 modulo 2^64";
  EXPECT_EQ(outcome(parseUInt64, " " + std::string(100, '9')), "18446744073709551615");
  EXPECT_EQ(outcome(parseUInt64, std::string(100, '9') + "x"),
            "String is not a uint64: {" + std::string(100, '9') + "x}");
}

// What all strict parsers without a sign have in common; `expected` is "refused" or the value.
const Case kCommonCases[] = {
    {"blanks in front of a number", " 7", "7"},
    {"blanks after a number", "7 ", "7"},
    {"all of the blank set", "\n\t \r7\n\t \r", "7"},
    {"vertical tab", "\v7", "refused"},
    {"form feed", "7\f", "refused"},
    {"vertical tab alone", "\v", "refused"},
    {"inner blank", "1 1", "refused"},
    {"zero", "0", "0"},
    {"zeros", "00", "0"},
    {"leading zeros", "007", "7"},
    {"sign", "+7", "refused"},
    {"sign alone", "+", "refused"},
    {"minus zero", "-0", "refused"},
    {"zero character after it", std::string_view("7\0", 2), "refused"},
    {"zero character inside", std::string_view("1\0001", 3), "refused"},
    {"zero character alone", std::string_view("\0", 1), "refused"},
    {"a byte above 127", "\xB2", "refused"},
    {"a no-break blank", "\xA0\x37", "refused"},
};

const Case kEmptyIsZeroButBlanksAreNot[] = {
    {"empty", "", "0"},
    {"a blank", " ", "refused"},
    {"blanks", "   ", "refused"},
    {"a line feed", "\n", "refused"},
};

const Case kZeroMustBeTheWholeText[] = {
    {"blank in front", " 0", "refused"},
    {"blank after it", "0 ", "refused"},
    {"blanks around", "\t0\r", "refused"},
    {"zeros with a blank", " 00", "refused"},
    {"zeros with a blank after it", "00 ", "refused"},
};

// Checks every strict parser in decimal and hexadecimal against the cases.
template <std::size_t Size>
void expectOfEachStrictParser(const Case (&cases)[Size]) {
  for (const Case& c : cases) {
    const auto shown = [&c](std::string_view word) {
      return c.expected == "refused"
                 ? std::string(word).append(": {").append(c.text.substr(0, c.text.find('\0'))).append("}")
                 : std::string(c.expected);
    };
    const auto expect = [&](const std::string& actual, std::string_view word) {
      const std::string expected = shown(word);
      if (c.text.find('\0') == std::string_view::npos) {
        EXPECT_EQ(actual, expected) << c.name;
      } else {
        EXPECT_EQ(actual + "}", expected) << c.name << ": a C text ends at the zero character";
      }
    };
    expect(outcome(parseByte, c.text, 10), "String is not a byte");
    expect(outcome(parseByte, c.text, 16), "String is not a hexa byte");
    expect(outcome(parseUInt16, c.text), "String is not a uint16");
    expect(outcome(parseInt16Hex, c.text), "String is not a int16 hexa");
    expect(outcome(parseUInt32, c.text, 10), "String is not a uint32");
    expect(outcome(parseUInt32, c.text, 16), "String is not a hexa uint32");
    expect(outcome(parseUInt64, c.text), "String is not a uint64");
    EXPECT_EQ(tryOutcome<std::uint8_t>(tryParseByte, c.text), c.expected) << c.name;
    EXPECT_EQ(tryOutcome<std::int16_t>(tryParseInt16Hex, c.text), c.expected) << c.name;
    EXPECT_EQ(tryOutcome<std::uint32_t>(tryParseUInt32, c.text, 10), c.expected) << c.name;
    EXPECT_EQ(tryOutcome<std::uint32_t>(tryParseUInt32, c.text, 16), c.expected) << c.name;
    EXPECT_EQ(tryOutcome<std::uint16_t>(tryParseUInt16, c.text), c.expected) << c.name;
    EXPECT_EQ(tryOutcome<std::uint64_t>(tryParseUInt64, c.text), c.expected) << c.name;
  }
}

TEST(StrictNumbers, readDigitsBetweenBlanks) {
  expectOfEachStrictParser(kCommonCases);
}

TEST(StrictNumbers, takeAnEmptyTextForZeroButNotBlanks) {
  expectOfEachStrictParser(kEmptyIsZeroButBlanksAreNot);
  EXPECT_EQ(outcome(parseUInt32, "", 2), "0");
  EXPECT_EQ(outcome(parseUInt32, " ", 2), "String is not a binary uint32: { }");
  EXPECT_EQ(outcome(parseInt32, ""), "0");
  EXPECT_EQ(outcome(parseInt32, "   "), "String is not a int32: {   }");
}

TEST(StrictNumbers, refuseAZeroWithABlankBesideItThoughASevenPasses) {
  expectOfEachStrictParser(kZeroMustBeTheWholeText);
  EXPECT_EQ(outcome(parseUInt32, " 0", 2), "String is not a binary uint32: { 0}");
  EXPECT_EQ(outcome(parseInt32, " 0"), "String is not a int32: { 0}");
  EXPECT_EQ(outcome(parseInt32, "0 "), "String is not a int32: {0 }");
  EXPECT_EQ(outcome(parseInt32, " 7"), "7");
}

TEST(StrictNumbers, keepTheWholeTextForTheLastErrorStore) {
  EXPECT_THROW(std::ignore = parseUInt16(std::string_view("7\0x", 3)), ConverterParsingException);
  EXPECT_EQ(lastErrorText(platform::currentThreadId()), std::string_view("String is not a uint16: {7\0x}", 29));
}

TEST(ParseInt32, readsSignedDecimals) {
  const Case cases[] = {
      {"positive", "12", "12"},
      {"negative", "-12", "-12"},
      {"plus", "+12", "12"},
      {"blanks around", " -12\t", "-12"},
      {"zero", "0", "0"},
      {"zeros", "00", "0"},
      {"plus zero", "+0", "0"},
      {"minus zeros", "-00", "0"},
      {"highest", "2147483647", "2147483647"},
      {"above", "2147483648", "String is not a int32: {2147483648}"},
      {"lowest", "-2147483648", "-2147483648"},
      {"below", "-2147483649", "String is not a int32: {-2147483649}"},
      {"past 64 bits", "18446744073709551617", "String is not a int32: {18446744073709551617}"},
      {"past 64 bits, negative", "-18446744073709551617", "String is not a int32: {-18446744073709551617}"},
      {"two signs", "--5", "String is not a int32: {--5}"},
      {"two kinds of sign", "+-5", "String is not a int32: {+-5}"},
      {"sign after it", "5-", "String is not a int32: {5-}"},
      {"vertical tab after the sign", "-\v5", "String is not a int32: {-\v5}"},
      {"a word", "abc", "String is not a int32: {abc}"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(outcome(parseInt32, c.text), c.expected) << c.name;
  }
}

TEST(ParseInt32, allowsBlanksAfterASignOnlyBeforeAZero) {
  const Case cases[] = {
      {"minus, blank, number", "- 5", "String is not a int32: {- 5}"},
      {"plus, tab, number", "+\t5", "String is not a int32: {+\t5}"},
      {"blank, minus, blank, number", " - 5", "String is not a int32: { - 5}"},
      {"minus, blank, zero", "- 0", "0"},
      {"minus, blank, zeros", "- 00", "0"},
      {"a sign lets the blank after the zero pass", "-0 ", "0"},
      {"but not the blank in front", " -0", "String is not a int32: { -0}"},
      {"nor in front of a detached zero", " - 0", "String is not a int32: { - 0}"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(outcome(parseInt32, c.text), c.expected) << c.name;
  }
}

TEST(ParseInt32, takesASignAloneForZero) {
  EXPECT_EQ(outcome(parseInt32, "+"), "0");
  EXPECT_EQ(outcome(parseInt32, "-"), "0");
  EXPECT_EQ(outcome(parseInt32, "- "), "0");
  EXPECT_EQ(outcome(parseInt32, " -"), "String is not a int32: { -}");
  EXPECT_EQ(outcome(parseInt32, "--"), "String is not a int32: {--}");
}

void expectOfUInt32Auto(const Case& c) {
  EXPECT_EQ(outcome(parseUInt32Auto, c.text), c.expected) << c.name;
  const bool fails = c.expected.front() == 'S';
  EXPECT_EQ(tryOutcome<std::uint32_t>(tryParseUInt32Auto, c.text), fails ? "refused" : c.expected) << c.name;
}

TEST(ParseUInt32Auto, takesTheBaseFromThePrefix) {
  const Case cases[] = {
      {"decimal", "10", "10"},
      {"hexadecimal", "0x10", "16"},
      {"upper-case prefix", "0XfF", "255"},
      {"highest", "0xFFFFFFFF", "4294967295"},
      {"binary", "0b101", "5"},
      {"upper-case binary", "0B11", "3"},
      {"blanks after it", "0x10 \r", "16"},
      {"hexadecimal zero", "0x0", "0"},
      {"empty", "", "0"},
      {"above", "0x100000000", "String is not a hexa uint32: {100000000}"},
      {"the failure shows what is left", "0xFG", "String is not a hexa uint32: {FG}"},
      {"no binary digit", "0b12", "String is not a binary uint32: {12}"},
      {"decimal with a hexadecimal digit", "1F", "String is not a uint32: {1F}"},
      {"the failure shows no blanks", " 1F ", "String is not a uint32: {1F}"},
      {"blanks alone are trimmed to an empty text", "  ", "0"},
      {"a prefix twice", "0x0x1", "String is not a hexa uint32: {0x1}"},
      {"sign", "-1", "String is not a uint32: {-1}"},
      {"a prefix without a leading zero", "1x10", "String is not a uint32: {1x10}"},
      {"octal is decimal", "010", "10"},
  };
  for (const Case& c : cases) {
    expectOfUInt32Auto(c);
  }
}

TEST(ParseUInt32Auto, refusesEveryTextThatEndsInH) {
  const Case cases[] = {
      {"hexadecimal with suffix", "10h", "String is not a hexa uint32: {10"},
      {"upper case", "10H", "String is not a hexa uint32: {10"},
      {"zero", "0h", "String is not a hexa uint32: {0"},
      {"blanks around", " FFh\t", "String is not a hexa uint32: {FF"},
      {"prefix and suffix", "0x1h", "String is not a hexa uint32: {0x1"},
      {"letters", "hh", "String is not a hexa uint32: {h"},
      {"the letter alone is too short for a suffix", "h", "String is not a uint32: {h}"},
  };
  for (const Case& c : cases) {
    expectOfUInt32Auto(c);
  }
  EXPECT_THROW(std::ignore = parseUInt32Auto("10h"), ConverterParsingException);
  EXPECT_EQ(lastErrorText(platform::currentThreadId()), std::string_view("String is not a hexa uint32: {10\0}", 34));
}

TEST(ParseUInt32Auto, seesNoPrefixAfterBlanks) {
  const Case cases[] = {
      {"hexadecimal", " 0x10", "String is not a uint32: {0x10}"},
      {"binary", "\t0b1", "String is not a uint32: {0b1}"},
      {"a decimal may stand after blanks", " 10", "10"},
  };
  for (const Case& c : cases) {
    expectOfUInt32Auto(c);
  }
}

TEST(ParseUInt32Auto, seesNoPrefixWithoutACharacterAfterIt) {
  const Case cases[] = {
      {"hexadecimal", "0x", "String is not a uint32: {0x}"},
      {"binary", "0b", "String is not a uint32: {0b}"},
      {"blanks do not count", "0x  ", "String is not a uint32: {0x}"},
  };
  for (const Case& c : cases) {
    expectOfUInt32Auto(c);
  }
}

TEST(ParseUInt32Auto, checksAZeroAgainstTheTextWithoutPrefixAndOuterBlanks) {
  const Case cases[] = {
      {"a blank in front of a zero passes here", " 0", "0"},
      {"a blank after it too", "0 ", "0"},
      {"and after a prefixed zero", "0x0 ", "0"},
      {"a blank after the prefix of a number", "0x 7", "7"},
      {"a blank after the prefix of a zero", "0x 0", "String is not a hexa uint32: { 0}"},
  };
  for (const Case& c : cases) {
    expectOfUInt32Auto(c);
  }
}

TEST(ParseByteAuto, takesTheBaseFromThePrefix) {
  const Case cases[] = {
      {"decimal", "255", "255"},
      {"hexadecimal", "0xfF", "255"},
      {"zero with a blank", " 0", "0"},
      {"empty", "", "0"},
      {"above", "256", "String is not a byte: {256}"},
      {"above in hexadecimal", "0x100", "String is not a hexa byte: {100}"},
      {"suffix", "10h", "String is not a hexa byte: {10"},
      {"prefix after a blank", " 0x1", "String is not a byte: {0x1}"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(outcome(parseByteAuto, c.text), c.expected) << c.name;
    const bool fails = c.expected.front() == 'S';
    EXPECT_EQ(tryOutcome<std::uint8_t>(tryParseByteAuto, c.text), fails ? "refused" : c.expected) << c.name;
  }
}

TEST(ParseByteAuto, refusesBinaryNumbersAsABaseNotSupported) {
  EXPECT_EQ(outcome(parseByteAuto, "0b101"), "Base not supported: {2}");
  EXPECT_EQ(outcome(parseByteAuto, "0Bxyz"), "Base not supported: {2}");
  EXPECT_EQ(tryOutcome<std::uint8_t>(tryParseByteAuto, "0b101"), "refused");
}

TEST(TryParseUInt64, readsWhatTheThrowingFormReads) {
  std::uint64_t value = 7;
  EXPECT_TRUE(tryParseUInt64(" 12", value));
  EXPECT_EQ(value, 12U);
  EXPECT_TRUE(tryParseUInt64("18446744073709551616", value));
  EXPECT_EQ(value, 18446744073709551615U);
  EXPECT_FALSE(tryParseUInt64(" 0", value));
  EXPECT_FALSE(tryParseUInt64("x", value));
  EXPECT_EQ(value, 18446744073709551615U);
}

}  // namespace
}  // namespace xlatr
