#include "formats/asc/asc_head_keys.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace xlatr {
namespace {

AscHeadKeys keysOf(const std::vector<std::string>& lines) {
  AscHeadKeys keys;
  for (const std::string& line : lines) {
    keys.look(line);
  }
  return keys;
}

TEST(AscHeadKeys, findTheFirstDate) {
  const struct {
    const char* name;
    std::vector<std::string> lines;
    const char* date;
  } cases[] = {
      {"logger's line", {"date Wed Mar 5 10:11:12.123 2025"}, "Wed Mar 5 10:11:12.123 2025"},
      {"without a fraction", {"date Wed Mar 05 10:11:12 2025"}, "Wed Mar 05 10:11:12 2025"},
      {"clock of 12 hours", {"date Wed Mar 05 10:11:12 am 2025"}, "Wed Mar 05 10:11:12 am 2025"},
      {"clock of 12 hours with a fraction",
       {"date Wed Mar 05 10:11:12.123 pm 2025"},
       "Wed Mar 05 10:11:12.123 pm 2025"},
      {"capital marker after a fraction does not count", {"date Wed Mar 05 10:11:12.123 PM 2025"}, ""},
      {"comma as the point", {"date Mi Mrz 5 10:11:12,123 2025"}, "Mi Mrz 5 10:11:12,123 2025"},
      {"runs of blanks", {"date  Wed   Mar  5 10:11:12.123 2025"}, "Wed Mar 5 10:11:12.123 2025"},
      {"two blanks in front of the clock", {"date Wed Mar 5  10:11:12 2025"}, "Wed Mar 5 10:11:12 2025"},
      {"text after it", {"Begin Wed Mar 5 10:11:12 2025 here"}, "Wed Mar 5 10:11:12 2025"},
      {"second line",
       {"nothing", "date Wed Mar 5 10:11:12 2025", "date Thu Mar 6 10:11:12 2025"},
       "Wed Mar 5 10:11:12 2025"},
      {"after a dollar", {"a$date Wed Mar 5 10:11:12 2025"}, "Wed Mar 5 10:11:12 2025"},
      {"cut by a dollar", {"date Wed Mar 5 10:11$:12 2025"}, ""},
      {"no year", {"date Wed Mar 5 10:11:12"}, ""},
      {"no day", {"date Wed Mar 10:11:12 2025"}, ""},
      {"numbers will do", {"1 2 3 4 5"}, "1 2 3 4 5"},
      {"empty", {""}, ""},
      {"ends inside", {"date Wed Mar 5 "}, ""},
      {"two digits after the point", {"date Wed Mar 5 10:11:12.12 2025"}, ""},
      {"four digits after the point", {"date Wed Mar 5 10:11:12.1234 2025"}, ""},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(keysOf(test.lines).dateText(), test.date) << test.name;
  }
}

TEST(AscHeadKeys, makeOleDaysOfTheDate) {
  EXPECT_EQ(keysOf({}).startDays(), 0.0);
  EXPECT_DOUBLE_EQ(keysOf({"date Mon Jul 26 06:00:00.000 2021"}).startDays(), 44403.25);
  EXPECT_NEAR(keysOf({"date Mo Jul 26 06:00:00.500 2021"}).startDays(), 44403.25 + 0.5 / 86400, 1e-9);
  EXPECT_DOUBLE_EQ(keysOf({"date Xx Yyy 26 06:00:00.000 2021"}).startDays(), 25569.0);
}

TEST(AscHeadKeys, readTheBaseAndTheMode) {
  const struct {
    const char* name;
    std::vector<std::string> lines;
    bool hexBase;
    bool relative;
  } cases[] = {
      {"nothing", {}, true, false},
      {"hexadecimal and absolute", {"base hex  timestamps absolute"}, true, false},
      {"decimal and relative", {"base dec  timestamps relative"}, false, true},
      {"capitals", {"BASE HEX  TIMESTAMPS ABSOLUTE"}, true, false},
      {"any other word", {"base oct timestamps no"}, false, true},
      {"two blanks after the words", {"base  hex timestamps  absolute"}, false, true},
      {"last word of a line", {"base"}, true, false},
      {"last of two", {"x timestamps"}, true, false},
      {"blank after the word", {"base "}, false, false},
      {"a later line wins", {"base dec timestamps relative", "base hex timestamps absolute"}, true, false},
      {"in the middle of a line", {"x base dec y timestamps relative z"}, false, true},
      {"tab is no blank", {"base\tdec"}, true, false},
      {"cut by a dollar", {"base$dec"}, true, false},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(keysOf(test.lines).hexBase(), test.hexBase) << test.name;
    EXPECT_EQ(keysOf(test.lines).relativeTimestamps(), test.relative) << test.name;
  }
}

TEST(AscHeadKeys, findTheFirstVersion) {
  const struct {
    const char* name;
    std::vector<std::string> lines;
    double version;
  } cases[] = {
      {"7.0.0", {"// version 7.0.0"}, 7.0},
      {"8.1.0", {"// version 8.1.0"}, 8.1},
      {"15.0.0", {"// version 15.0.0"}, 15.0},
      {"whole number", {"// version 9"}, 9.0},
      {"point without decimals", {"// version 7."}, 7.0},
      {"without slashes", {"Version 3", "version 3"}, 0.0},
      {"one slash", {"/ version 3"}, 0.0},
      {"no blank after the slashes", {"//version 3"}, 0.0},
      {"three slashes", {"///version 3"}, 3.0},
      {"signs around it", {"x // - version: = 3.5"}, 3.5},
      {"word in between", {"// the version 3"}, 0.0},
      {"word after it", {"// version number 3"}, 0.0},
      {"capital letter", {"// Version 8.1.0"}, 0.0},
      {"no number", {"// version"}, 0.0},
      {"versions", {"// versions 3"}, 0.0},
      {"no blank in front of the number", {"// version8"}, 0.0},
      {"second in a line", {"// version x // version 8.1"}, 8.1},
      {"first of two lines", {"// version 8.1", "// version 7.0"}, 8.1},
      {"version 0 is one, too", {"// version 0", "// version 7.0"}, 0.0},
      {"cut by a dollar", {"//$ version 7"}, 0.0},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(keysOf(test.lines).fileVersion(), test.version) << test.name;
  }
}

}  // namespace
}  // namespace xlatr
