#include "util/text.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace xlatr {
namespace {

using Tokens = std::vector<std::string>;

TEST(SplitText, cutsAtSeparators) {
  struct Case {
    std::string_view name;
    std::string_view text;
    std::string_view separators;
    bool collapse;
    bool unique;
    Tokens expected;
  };
  const Case cases[] = {
      {"a run inside gives an empty token", "a,,b", ",", false, false, {"a", "", "b"}},
      {"a collapsed run gives none", "a,,b", ",", true, false, {"a", "b"}},
      {"a run of three gives two empty tokens", "a,,,b", ",", false, false, {"a", "", "", "b"}},
      {"a separator at the end gives a last empty token", "a,", ",", false, false, {"a", ""}},
      {"a run at the end", "a,,", ",", false, false, {"a", "", ""}},
      {"a separator at the start gives a first empty token", ",a", ",", false, false, {"", "a"}},
      {"a separator alone gives two empty tokens", ",", ",", false, false, {"", ""}},
      {"an empty text gives one empty token", "", ",", false, false, {""}},
      {"no separator in the text", "abc", ",", false, false, {"abc"}},
      {"no separators at all", "a,b", "", false, false, {"a,b"}},
      {"collapsed: empty text", "", ",", true, false, {}},
      {"collapsed: separators alone", ",,,", ",", true, false, {}},
      {"collapsed: runs at the ends", ",,a,b,,", ",", true, false, {"a", "b"}},
      {"collapsed: no separators at all", "a b", "", true, false, {"a b"}},
      {"every character of the set separates", "a, b\tc", ", \t", true, false, {"a", "b", "c"}},
      {"different separators make one run", "a, b", ", ", false, false, {"a", "", "b"}},
      {"unique drops a later equal token", "a b a", " ", true, true, {"a", "b"}},
      {"unique keeps tokens that differ in case", "a A", " ", true, true, {"a", "A"}},
      {"unique keeps tokens that differ in length", "a aa a", " ", true, true, {"a", "aa"}},
      {"unique drops later empty tokens", ",,a,", ",", false, true, {"", "a"}},
      {"equal tokens stay without unique", "a b a", " ", true, false, {"a", "b", "a"}},
      {"bytes above 127", "\xE4;\xFF;\xE4", ";", true, true, {"\xE4", "\xFF"}},
      {"a zero character is text", std::string_view("a\0b,c", 5), ",", true, false, {std::string("a\0b", 3), "c"}},
      {"a zero character separates", std::string_view("a\0b", 3), std::string_view("\0", 1), true, false, {"a", "b"}},
  };
  for (const Case& c : cases) {
    Tokens tokens = {"left over"};
    splitText(c.text, c.separators, tokens, c.collapse, c.unique);
    EXPECT_EQ(tokens, c.expected) << c.name;

    std::vector<std::string_view> views = {"left over"};
    splitText(c.text, c.separators, views, c.collapse, c.unique);
    EXPECT_EQ(Tokens(views.begin(), views.end()), c.expected) << c.name << ", as views";
  }
}

TEST(SplitText, dropsEqualTokensOfAHugeLineInLinearTime) {
  std::string text;
  for (int i = 0; i < 200'000; ++i) {
    text.append(std::to_string(i)).append(" ");
  }
  text += text;
  std::vector<std::string_view> tokens;
  splitText(text, " ", tokens, true, true);
  EXPECT_EQ(tokens.size(), 200'000U);
}

TEST(ParseKeyValues, readsPairs) {
  struct Case {
    std::string_view name;
    std::string_view text;
    std::string_view separators;
    KeyValues expected;
  };
  const Case cases[] = {
      {"blanks around the sign", "Length = 10 ID = 5", " ", {{"Length", "10"}, {"ID", "5"}}},
      {"no blanks", "Length=10 ID=5", " ", {{"Length", "10"}, {"ID", "5"}}},
      {"tabs and blanks", "\tA\t= 1 \t B =\t2\t", " \t", {{"A", "1"}, {"B", "2"}}},
      {"the last token in front of the sign is the key", "Error Frame ID = 5", " ", {{"ID", "5"}}},
      {"the first token after the sign is the value", "ID = 5 and more", " ", {{"ID", "5"}}},
      {"one token between two signs is value and key", "a=b=c", " ", {{"a", "b"}, {"b", "c"}}},
      {"the last of equal keys wins", "a=1 a=2", " ", {{"a", "2"}}},
      {"a value without a key is dropped", "= 5 ID = 6", " ", {{"ID", "6"}}},
      {"a blank in front of the first sign is no key", "  = 5", " ", {}},
      {"a key without a value gets an empty one", "ID =", " ", {{"ID", ""}}},
      {"doubled sign", "a==b", " ", {{"a", ""}}},
      {"no sign", "Length 10", " ", {}},
      {"empty text", "", " ", {}},
      {"no separators", "a b=c d=e", "", {{"a b", "c d"}, {"c d", "e"}}},
      {"a comma among the separators", "a=1,b=2", ", ", {{"a", "1"}, {"b", "2"}}},
  };
  for (const Case& c : cases) {
    KeyValues values = {{"left", "over"}};
    parseKeyValues(c.text, c.separators, values);
    EXPECT_EQ(values, c.expected) << c.name;
  }
}

TEST(TrimBlanks, removesTheBlankSetOnly) {
  struct Case {
    std::string_view name;
    std::string_view text;
    std::string_view expected;
  };
  const Case cases[] = {
      {"empty", "", ""},
      {"nothing to do", "a", "a"},
      {"blanks alone", " \t\r\n", ""},
      {"both ends", "\r\n a b\t ", "a b"},
      {"front", " a", "a"},
      {"end", "a ", "a"},
      {"vertical tab and form feed stay", " \va\f ", "\va\f"},
      {"a zero character stays", std::string_view(" \0 ", 3), std::string_view("\0", 1)},
  };
  for (const Case& c : cases) {
    std::string text(c.text);
    trimBlanks(text);
    EXPECT_EQ(text, c.expected) << c.name;
    EXPECT_EQ(trimmed(c.text), c.expected) << c.name << ", as a view";
  }
}

TEST(TrimCharacters, removesTheGivenSet) {
  struct Case {
    std::string_view name;
    std::string_view text;
    std::string_view characters;
    std::string_view expected;
  };
  const Case cases[] = {
      {"quotes", "\"a\"", "\"", "a"},
      {"a set of two", "(-a-)", "()-", "a"},
      {"inner characters stay", "xaxbx", "x", "axb"},
      {"all of the text", "xxx", "x", ""},
      {"an empty set leaves the text alone", " a ", "", " a "},
      {"an empty text", "", "x", ""},
  };
  for (const Case& c : cases) {
    std::string text(c.text);
    trimCharacters(text, c.characters);
    EXPECT_EQ(text, c.expected) << c.name;
    EXPECT_EQ(trimmed(c.text, c.characters), c.expected) << c.name << ", as a view";
  }
}

TEST(NormalizeBlanks, joinsWordsWithOneBlank) {
  struct Case {
    std::string_view name;
    std::string_view text;
    std::string_view expected;
  };
  const Case cases[] = {
      {"empty", "", ""},
      {"blanks alone", "   ", ""},
      {"runs", "  Wed  Mar   5 ", "Wed Mar 5"},
      {"one word", "Wed", "Wed"},
      {"a tab is no blank", "a\t b\r", "a\t b\r"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(normalizeBlanks(c.text), c.expected) << c.name;
  }
}

TEST(Ascii, knowsTheLettersOfAsciiOnly) {
  EXPECT_EQ(toUpperAscii("azAZ09_{`"), "AZAZ09_{`");
  EXPECT_EQ(toUpperAscii("\xE4\xFF"), "\xE4\xFF");
  EXPECT_EQ(toUpperAscii(std::string_view()), "");
  EXPECT_EQ(toUpperAscii('x'), 'X');

  struct Case {
    std::string_view name;
    std::string_view left;
    std::string_view right;
    bool expected;
  };
  const Case cases[] = {
      {"same", "abc", "abc", true},
      {"other case", "aBc", "AbC", true},
      {"empty", "", "", true},
      {"prefix", "ab", "abc", false},
      {"longer", "abc", "ab", false},
      {"signs that differ in the bit of the case", "@[", "`{", false},
      {"letters that are not ASCII", "\xE4", "\xC4", false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(equalsIgnoreCase(c.left, c.right), c.expected) << c.name;
  }
}

TEST(StartsAndEndsWithIgnoreCase, compareNoMoreThanTheOtherText) {
  EXPECT_TRUE(startsWithIgnoreCase("Begin TriggerBlock", "begin"));
  EXPECT_TRUE(startsWithIgnoreCase("begin", "BEGIN"));
  EXPECT_TRUE(startsWithIgnoreCase("", ""));
  EXPECT_FALSE(startsWithIgnoreCase("begi", "begin"));
  EXPECT_FALSE(startsWithIgnoreCase("a begin", "begin"));
  EXPECT_TRUE(endsWithIgnoreCase("End TriggerBlock", "BLOCK"));
  EXPECT_TRUE(endsWithIgnoreCase("block", "block"));
  EXPECT_TRUE(endsWithIgnoreCase("block", ""));
  EXPECT_FALSE(endsWithIgnoreCase("lock", "block"));
  EXPECT_FALSE(endsWithIgnoreCase("block ", "block"));
}

TEST(FindIgnoreCase, findsAnUpperCaseTextInAnyCase) {
  EXPECT_EQ(findIgnoreCase("Begin TriggerBlock", "TRIGGERBLOCK"), 6U);
  EXPECT_EQ(findIgnoreCase("aab", "AB"), 1U);
  EXPECT_EQ(findIgnoreCase("trigger", "TRIGGERBLOCK"), std::string_view::npos);
  EXPECT_EQ(findIgnoreCase("", "A"), std::string_view::npos);
  EXPECT_EQ(findIgnoreCase("", ""), 0U);
  EXPECT_TRUE(containsIgnoreCase("x:=y", ":="));
  EXPECT_FALSE(containsIgnoreCase("x:y", ":="));
}

TEST(CharacterClasses, areThoseOfTheCLocale) {
  for (int code = 0; code < 256; ++code) {
    const char character = static_cast<char>(code);
    const std::string one(1, character);
    EXPECT_EQ(isSpaceCharacter(character), code != 0 && std::string(" \t\n\v\f\r").find(one) != std::string::npos);
    const bool isLetter = (code >= 'A' && code <= 'Z') || (code >= 'a' && code <= 'z');
    EXPECT_EQ(isWordCharacter(character), isLetter || (code >= '0' && code <= '9') || code == '_') << code;
  }
}

}  // namespace
}  // namespace xlatr
