#include "util/plain_fields.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace xlatr {
namespace {

std::optional<std::int64_t> nanosecondsAt(std::string_view line) {
  std::int64_t value = 0;
  return PlainFields(line).takeScaled<9>(value) ? std::optional(value) : std::nullopt;
}

TEST(PlainFields, takeTimesWithoutRounding) {
  struct Case {
    std::string_view name;
    std::string_view field;
    std::optional<std::int64_t> expected;
  };
  const Case cases[] = {
      {"microseconds", "0.000001", 1'000},
      {"one digit on each side", "1.5", 1'500'000'000},
      {"seven digits on each side", "1234567.7654321", 1'234'567'765'432'100},
      {"zeros in front", "0000001.50", 1'500'000'000},
      {"eight digits", "12345678.5", 12'345'678'500'000'000},
      {"nine digits", "123456789.7654321", 123'456'789'765'432'100},
      {"ten digits", "1234567890.5", std::nullopt},
      {"eight decimals", "1.12345678", std::nullopt},
      {"no point", "15", std::nullopt},
      {"no digit before the point", ".5", std::nullopt},
      {"no digit after it", "5.", std::nullopt},
      {"a sign", "-1.5", std::nullopt},
      {"a plus", "+1.5", std::nullopt},
      {"an exponent", "1.5e3", std::nullopt},
      {"a character after the digits", "1.5:", std::nullopt},
      {"a character above the digits", "1:5", std::nullopt},
      {"two points", "1.5.5", std::nullopt},
      {"a byte above 127", "1.5\xB2", std::nullopt},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(nanosecondsAt(std::string(c.field) + " and what follows it"), c.expected) << c.name;
  }
  EXPECT_EQ(nanosecondsAt("1.5 1  12  Rx d  "), std::nullopt) << "so short a line";
  EXPECT_EQ(nanosecondsAt("1.5 1  12  Rx d 0 "), 1'500'000'000) << "just long enough";
}

TEST(PlainFields, takeNoMoreDecimalsThanTheUnitHas) {
  std::int64_t value = 0;
  EXPECT_TRUE(PlainFields("10.123456 DT 1 0123 Rx").takeScaled<6>(value));
  EXPECT_EQ(value, 10'123'456);
  EXPECT_FALSE(PlainFields("10.1234567 DT 1 0123 Rx").takeScaled<6>(value));
}

TEST(PlainFields, takeNumbers) {
  std::uint32_t value = 0;
  bool marked = false;
  EXPECT_TRUE(PlainFields("007").takeDecimal(value));
  EXPECT_EQ(value, 7U);
  EXPECT_TRUE(PlainFields("999999999 ").takeDecimal(value));
  EXPECT_EQ(value, 999'999'999U);
  EXPECT_TRUE(PlainFields("291x").takeDecimal(value, marked));
  EXPECT_TRUE(marked);
  for (const std::string_view field : {"", "-1", "A", "1A", "1000000000", "291x"}) {
    EXPECT_FALSE(PlainFields(field).takeDecimal(value)) << field;
  }

  std::size_t digits = 0;
  EXPECT_TRUE(PlainFields("00aF").takeHex(value, digits, marked));
  EXPECT_EQ(value, 0xAFU);
  EXPECT_EQ(digits, 4U);
  EXPECT_FALSE(marked);
  EXPECT_TRUE(PlainFields("18ABCDEFx Rx").takeHex(value, digits, marked));
  EXPECT_EQ(value, 0x18ABCDEFU);
  EXPECT_TRUE(marked);
  for (const std::string_view field : {"", "x", "G", "12G", "123456789", "12xx"}) {
    EXPECT_FALSE(PlainFields(field).takeHex(value, digits, marked)) << field;
  }
}

TEST(PlainFields, takeWordsAndCharacters) {
  PlainFields fields("  Rx          d  anything \x01");
  EXPECT_FALSE(fields.take("R"));
  EXPECT_FALSE(fields.take("Tx"));
  EXPECT_TRUE(fields.take("Rx"));
  char character = 0;
  EXPECT_TRUE(fields.takeCharacter(character));
  EXPECT_EQ(character, 'd');
  std::string_view field;
  EXPECT_TRUE(fields.takeAny(field));
  EXPECT_EQ(field, "anything");
  EXPECT_EQ(fields.rest(), "\x01");
  EXPECT_FALSE(fields.skipAny());
  PlainFields two("RxTx");
  EXPECT_FALSE(two.take("Rx") || two.take("Tx"));
  EXPECT_TRUE(two.take("RxTx"));
  EXPECT_TRUE(PlainFields(" ").atEnd());
  EXPECT_FALSE(PlainFields("").takeCharacter(character));
  EXPECT_FALSE(PlainFields("dd").takeCharacter(character));
  EXPECT_FALSE(PlainFields("a\tb").skipAny());
}

TEST(PlainFields, takeLongNumbers) {
  struct Case {
    std::string_view field;
    std::optional<std::int64_t> expected;
  };
  for (const Case& c : {Case{"0", 0}, Case{"1234567", 1'234'567}, Case{"12345678", 12'345'678},
                        Case{"123456789012345", 123'456'789'012'345}, Case{"1234567890123456", std::nullopt},
                        Case{"", std::nullopt}, Case{"-1", std::nullopt}, Case{"12345678x", std::nullopt}}) {
    std::int64_t value = 0;
    const std::string row = std::string(c.field) + ";and what follows it";
    PlainCells cells(row, {';'});
    EXPECT_EQ(cells.takeLong(value) ? std::optional(value) : std::nullopt, c.expected) << c.field;
  }
  std::int64_t value = 0;
  EXPECT_FALSE(PlainCells("1;so short;row", {';'}).takeLong(value));
}

TEST(PlainCells, areOneSeparatorApart) {
  PlainCells cells("Rx;;-;0A;b1;0C0d;1", {';'});
  EXPECT_FALSE(cells.takeNothing());
  EXPECT_TRUE(cells.take("Rx"));
  EXPECT_FALSE(cells.take("-"));
  EXPECT_TRUE(cells.takeNothing());
  EXPECT_TRUE(cells.take("-"));
  std::array<std::uint8_t, 2> bytes = {};
  EXPECT_TRUE(cells.takeBytes(bytes));
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 2>{0x0A, 0xB1}));
  EXPECT_TRUE(cells.takePairs(bytes));
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 2>{0x0C, 0x0D}));
  EXPECT_EQ(cells.rest(), "1");
  EXPECT_FALSE(cells.takePairs(bytes));
  EXPECT_FALSE(PlainCells("0C0g", {';'}).takePairs(bytes));
  EXPECT_FALSE(PlainCells("0C0D0", {';'}).takePairs(bytes));
  EXPECT_FALSE(PlainCells("0A 0B", {';'}).takeBytes(bytes));
}

TEST(PlainFields, takeBytes) {
  std::array<std::uint8_t, 3> bytes = {};
  PlainFields fields("00 7f FF  end");
  EXPECT_TRUE(fields.takeBytes(bytes));
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 3>{0x00, 0x7F, 0xFF}));
  EXPECT_EQ(fields.rest(), "end");
  EXPECT_TRUE(PlainFields("00 01 02").takeBytes(bytes));
  EXPECT_TRUE(PlainFields("").takeBytes({}));
  for (const std::string_view line :
       {"", "00 01", "00 01 0", "00 01 2 ", "00 01 0G", "00 01  02", "00-01 02", "00 01 020", "0001 02", "x0 01 02"}) {
    EXPECT_FALSE(PlainFields(line).takeBytes(bytes)) << line;
  }
}

}  // namespace
}  // namespace xlatr
