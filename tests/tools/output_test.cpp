#include "output.hpp"

#include <gtest/gtest.h>

namespace xlatr::cli {
namespace {

TEST(OneLine, foldsLineBreaksAndTamesControlCharacters) {
  struct Case {
    const char* text;
    const char* expected;
  };
  for (const auto& [text, expected] : std::initializer_list<Case>{
           {"", ""},
           {"  ", ""},
           {"text ", "text"},
           {"a\nb", "a b"},
           {"a:\r\n\r\nb \n", "a: b"},
           {"two  blanks stay", "two  blanks stay"},
           {"a\tb\x1b[2J\x7f", "a?b?[2J?"},
           {"gr\xc3\xbc\xc3\x9f", "gr\xc3\xbc\xc3\x9f"},
           {"a\xc2\x9b[2J\xc2\x80\xc2\xa0", "a?[2J?\xc2\xa0"},
           {"cut \xc2", "cut \xc2"},
       }) {
    EXPECT_EQ(oneLine(text), expected);
  }
}

TEST(VersionText, hasADigitAfterThePoint) {
  EXPECT_EQ(versionText(2.0), "2.0");
  EXPECT_EQ(versionText(2.1), "2.1");
  EXPECT_EQ(versionText(4.11), "4.11");
  EXPECT_EQ(versionText(15.0), "15.0");
  EXPECT_EQ(versionText(0.0), "0.0");
  EXPECT_EQ(versionListText({}), "");
  EXPECT_EQ(versionListText({4.1, 4.11}), "4.1, 4.11");
}

TEST(CountText, groupsDigits) {
  EXPECT_EQ(countText(0), "0");
  EXPECT_EQ(countText(999), "999");
  EXPECT_EQ(countText(1000), "1,000");
  EXPECT_EQ(countText(1'234'567), "1,234,567");
}

TEST(SizeText, picksTheUnit) {
  EXPECT_EQ(sizeText(0), "0 bytes");
  EXPECT_EQ(sizeText(1), "1 byte");
  EXPECT_EQ(sizeText(999), "999 bytes");
  EXPECT_EQ(sizeText(1000), "1.0 kB");
  EXPECT_EQ(sizeText(999'949), "999.9 kB");
  EXPECT_EQ(sizeText(999'950), "1.0 MB");
  EXPECT_EQ(sizeText(2'500'000'000), "2.5 GB");
  EXPECT_EQ(sizeText(5'000'000'000'000'000), "5000.0 TB");
}

TEST(TableText, alignsColumnsWithoutTrailingBlanks) {
  EXPECT_EQ(tableText({{"A", "LONG", "C"}, {"wide", "b", "x, y"}}),
            "A     LONG  C\n"
            "wide  b     x, y\n");
}

}  // namespace
}  // namespace xlatr::cli
