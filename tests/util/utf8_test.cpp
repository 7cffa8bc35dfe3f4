#include "util/utf8.hpp"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace xlatr {
namespace {

TEST(IsUtf8, knowsWholeCharacters) {
  for (const std::string_view text : {"", "plain", "\xC3\xA4", "\xE2\x82\xAC", "\xF0\x9F\x9A\x97", "\xED\x9F\xBF",
                                      "\xEE\x80\x80", "\xF4\x8F\xBF\xBF", "\xE0\xA0\x80", "\x7F"}) {
    EXPECT_TRUE(isUtf8(text)) << text;
  }
}

TEST(IsUtf8, refusesAllElse) {
  for (const std::string_view text :
       {"\x80", "\xC3", "\xC3(", "\xC0\x80", "\xC1\xBF", "\xE0\x80\x80", "\xE2\x82", "\xED\xA0\x80", "\xF0\x80\x80\x80",
        "\xE2\x82\xC0", "\xE2\x82\x7F", "\xF0\x9F\x9A\xC0", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF", "a\xE4z"}) {
    EXPECT_FALSE(isUtf8(text)) << text;
  }
}

TEST(IsUtf8, looksAtNothingAfterItsBytes) {
  EXPECT_FALSE(isUtf8(std::string_view("\xC3\xA4").substr(0, 1)));
  EXPECT_FALSE(isUtf8(std::string_view("a\xE2\x82\xAC").substr(0, 3)));
  EXPECT_FALSE(isUtf8(std::string_view("\xF0\x9F\x9A\x97").substr(0, 3)));
}

TEST(AsUtf8, leavesUtf8Alone) {
  std::string converted = "unused";
  const std::string_view text = "K\xC3\xBChler";
  EXPECT_EQ(asUtf8(text, converted).data(), text.data());
  EXPECT_EQ(converted, "unused");
}

TEST(AsUtf8, takesOtherBytesForLatin1) {
  std::string converted;
  EXPECT_EQ(asUtf8("K\xFChler \x80\xFF", converted), "K\xC3\xBChler \xC2\x80\xC3\xBF");
  EXPECT_TRUE(isUtf8(converted));
}

TEST(Utf8Boundary, neverCutsACharacter) {
  const std::string_view text = "a\xE2\x82\xAC!";
  EXPECT_EQ(utf8Boundary(text, 0), 0U);
  EXPECT_EQ(utf8Boundary(text, 1), 1U);
  EXPECT_EQ(utf8Boundary(text, 2), 1U);
  EXPECT_EQ(utf8Boundary(text, 3), 1U);
  EXPECT_EQ(utf8Boundary(text, 4), 4U);
  EXPECT_EQ(utf8Boundary(text, 99), 5U);
}

}  // namespace
}  // namespace xlatr
