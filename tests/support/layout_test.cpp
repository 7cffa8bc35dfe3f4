#include "support/layout.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "support/temp_folder.hpp"

namespace xlatr::test {
namespace {

using testing::HasSubstr;

std::string bytesOf(const char* layout) {
  return layOut(layout, {.numbers = {{"n", 0x102}}, .texts = {{"t", "ab"}}});
}

std::string mistakeIn(const char* layout) {
  try {
    static_cast<void>(bytesOf(layout));
  } catch (const LayoutError& error) {
    return error.what();
  }
  return "none";
}

TEST(Layout, writesFields) {
  EXPECT_EQ(bytesOf("\"x y\" z2 s3:$t u8:255 u16:$n 7F  # a comment\n\n# another\nu32:0x10"),
            std::string("x y\0\0ab\0\xFF\x02\x01\x7F\x10\0\0\0", 16));
  EXPECT_EQ(bytesOf("f64:1"), std::string("\0\0\0\0\0\0\xF0\x3F", 8));
}

TEST(Layout, takesNegativeNumbersAndSums) {
  EXPECT_EQ(bytesOf("u8:-6 u16:$n+1 u8:1+2+3"), std::string("\xFA\x03\x01\x06", 4));
}

TEST(Layout, namesNumbersAndTexts) {
  EXPECT_EQ(bytesOf("$a = 3\n$b = $a+1\n$c = \"xyz\"\nu8:$a u8:$b s4:$c"), std::string("\x03\x04xyz\0", 6));
}

TEST(Layout, knowsPlacesThatComeLater) {
  EXPECT_EQ(bytesOf("@0 raw 2 u8:$later u8:1\nz3\n@$later raw 1 u8:$later"), std::string("\x05\x01\0\0\0\x05", 6));
}

TEST(Layout, repeatsLines) {
  EXPECT_EQ(bytesOf("repeat 2 {\n01\nrepeat 3 {\n02  # inner\n}\n}\n03"), "\x01\x02\x02\x02\x01\x02\x02\x02\x03");
}

TEST(Layout, holdsLinesInALineWithALength) {
  EXPECT_EQ(bytesOf("@0 raw 4 01 {\n02 03\n04\n}"), "\x01\x02\x03\x04");
  EXPECT_EQ(bytesOf("@0 TX 32 () {\n\"abc\" z5\n}"),
            std::string("##TX\0\0\0\0\x20\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0abc\0\0\0\0\0", 32));
}

TEST(Layout, alignsWhatFollows) {
  EXPECT_EQ(bytesOf("01\nalign 4\nalign 4\n02"), std::string("\x01\0\0\0\x02", 5));
}

TEST(Layout, deflatesABlock) {
  const std::string block = bytesOf("@$data zipped DT {\nrepeat 100 {\n61 62\n}\n}\nalign 8\n@$end end");
  ASSERT_GT(block.size(), 48U);
  EXPECT_LT(block.size(), 80U);
  EXPECT_TRUE(block.starts_with("##DZ"));
  EXPECT_EQ(block.substr(24, 8), std::string("DT\0\0\0\0\0\0", 8));
  EXPECT_EQ(block.substr(32, 8), std::string("\xC8\0\0\0\0\0\0\0", 8));
  EXPECT_EQ(block.size() % 8, 0U);
}

TEST(Layout, includesFilesAndKnowsTheLineOfEachByte) {
  const TempFolder folder;
  std::ofstream(folder.file("inner")) << "# a comment\n02 03\n";
  std::ofstream(folder.file("outer")) << "01\ninclude inner\n04\n";
  const LaidOut laidOut = laidOutFile(folder.file("outer"), {});
  EXPECT_EQ(laidOut.bytes, "\x01\x02\x03\x04");
  EXPECT_EQ(laidOut.lineAt(0), "outer:1: 01");
  EXPECT_EQ(laidOut.lineAt(2), "inner:2: 02 03");
  EXPECT_EQ(laidOut.lineAt(3), "outer:3: 04");
  EXPECT_EQ(laidOut.lineAt(4), "");
  EXPECT_EQ(includesOf(folder.file("outer")), std::vector<std::filesystem::path>{folder.file("inner")});
}

TEST(Layout, namesTheLineOfAMistake) {
  EXPECT_EQ(mistakeIn("01\n@2 raw 1 01"), "stands at 1\n  in layout:2: @2 raw 1 01");
  EXPECT_EQ(mistakeIn("@0 raw 2 01"), "has length 1\n  in layout:1: @0 raw 2 01");
  EXPECT_EQ(mistakeIn("@0 raw 1 {\n01 02\n}"), "has length 2\n  in layout:1: @0 raw 1 {");
  EXPECT_THAT(mistakeIn("u8:$unknown"), HasSubstr("no such name: $unknown\n  in layout:1"));
  EXPECT_THAT(mistakeIn("s3:$unknown"), HasSubstr("not understood"));
  EXPECT_THAT(mistakeIn("@$twice raw 1 01\n@$twice raw 1 02"), HasSubstr("is the place of two lines"));
  EXPECT_THAT(mistakeIn("0G"), HasSubstr("no field: 0G"));
  EXPECT_THAT(mistakeIn("x8:1"), HasSubstr("no field: x8:1"));
  EXPECT_THAT(mistakeIn("\"open"), HasSubstr("text without an end"));
  EXPECT_THAT(mistakeIn("}"), HasSubstr("no line is open"));
  EXPECT_THAT(mistakeIn("repeat 2 {\n01"), HasSubstr("{ without its }"));
  EXPECT_THAT(mistakeIn("repeat 0 {\n}"), HasSubstr("a repetition has a count and a {"));
  EXPECT_THAT(mistakeIn("@0 TX 24 z0"), HasSubstr("a block has links in brackets"));
  EXPECT_THAT(mistakeIn("@0 zipped DT 01"), HasSubstr("a zipped block has an ID and a {"));
  EXPECT_THAT(mistakeIn("include no-such-file"), HasSubstr("cannot read"));
  EXPECT_THAT(mistakeIn("include"), HasSubstr("include without a path"));
  EXPECT_THAT(mistakeIn("align"), HasSubstr("not understood"));
  EXPECT_THAT(mistakeIn("align 0"), HasSubstr("no multiple of 0"));
}

}  // namespace
}  // namespace xlatr::test
