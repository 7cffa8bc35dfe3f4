#include "formats/csv/csv_start_time.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace xlatr {
namespace {

CsvStartTime startOf(const std::vector<std::string>& lines) {
  CsvStartTime start;
  for (const std::string& line : lines) {
    start.look(line);
  }
  start.finish();
  return start;
}

struct Case {
  const char* name;
  std::vector<std::string> lines;
  double days;
  bool blfTable;
};

void expectStarts(const std::vector<Case>& cases) {
  for (const Case& test : cases) {
    SCOPED_TRACE(test.name);
    const CsvStartTime start = startOf(test.lines);
    EXPECT_EQ(start.days(), test.days);
    EXPECT_EQ(start.isBlfTable(), test.blfTable);
  }
}

TEST(CsvStartTime, isTheNumberOfOurTable) {
  expectStarts({
      {"first line", {"$STARTTIME=44403.25", "Start time: 26.07.2021"}, 44403.25, false},
      {"any line", {"", "a", "  b $STARTTIME=44403.25;x", "c"}, 44403.25, false},
      {"fifteen digits", {"$STARTTIME=43774.5730005787"}, 43774.5730005787, false},
      {"no point", {"$STARTTIME=44403"}, 0.0, false},
      {"no digit after the point", {"$STARTTIME=44403.", "x"}, 0.0, false},
      {"no digit before the point", {"$STARTTIME=.5"}, 0.0, false},
      {"a blank", {"$STARTTIME= 1.5"}, 0.0, false},
      {"other case", {"$Starttime=1.5"}, 0.0, false},
      {"the first that fits", {"$STARTTIME=x$STARTTIME=1$STARTTIME=2.5$STARTTIME=3.5"}, 2.5, false},
      {"in scientific notation", {"$STARTTIME=4.5e4"}, 4.5, false},
      {"no head", {}, 0.0, false},
  });
}

TEST(CsvStartTime, readsTheHeadAsOneTextWithoutLineEnds) {
  expectStarts({
      {"number", {"$START", "TIME=444", "03.2", "5"}, 44403.25, false},
      {"date", {"$BLFSTARTTIME=01/01/2020 00:", "00:00.0", "00"}, 43831.0, true},
      {"digits of the next line", {"$STARTTIME=1.5", "25"}, 1.525, false},
  });
}

TEST(CsvStartTime, isTheDateOfTheConvertersTable) {
  // 45657 is 2024-12-31.
  const double endOf2024 = (0.5 + 1735689598.0 + 2209161600.0) / 86400.0;
  expectStarts({
      {"date", {"$BLFSTARTTIME=31/12/2024 23:59:58.500"}, endOf2024, true},
      {"the number wins, wherever it stands",
       {"$BLFSTARTTIME=31/12/2024 23:59:58.500", "$STARTTIME=44403.25"},
       44403.25,
       false},
      {"a bad number does not", {"$STARTTIME=44403 $BLFSTARTTIME=01/01/2020 00:00:00.0"}, 43831.0, true},
      {"short fields", {"$BLFSTARTTIME=1/1/2020 0:0:0.0"}, 43831.0, true},
      {"any character in front of the milliseconds",
       {"$BLFSTARTTIME=01/01/2020 00:00:00,500"},
       (0.5 + 1577836800.0 + 2209161600.0) / 86400.0,
       true},
      {"a day that the month has not", {"$BLFSTARTTIME=31/02/2024 00:00:00.000"}, 45353.0, true},
      {"milliseconds as a number",
       {"$BLFSTARTTIME=01/01/2020 00:00:00.1500"},
       (1.5 + 1577836800.0 + 2209161600.0) / 86400.0,
       true},
      {"no milliseconds", {"$BLFSTARTTIME=01/01/2020 00:00:00"}, 0.0, false},
      {"two blanks", {"$BLFSTARTTIME=01/01/2020  00:00:00.000"}, 0.0, false},
      {"points for strokes", {"$BLFSTARTTIME=01.01.2020 00:00:00.000"}, 0.0, false},
      {"the second that fits", {"$BLFSTARTTIME=x $BLFSTARTTIME=01/01/2020 00:00:00.000"}, 43831.0, true},
  });
}

TEST(CsvStartTime, isMissingForADateThatTheCalendarDoesNotHave) {
  expectStarts({
      {"before 1970", {"$BLFSTARTTIME=31/12/1969 23:59:59.000"}, 0.0, true},
      {"a field beyond every number", {"$BLFSTARTTIME=99999999999/01/2020 00:00:00.000"}, 0.0, true},
      {"null date", {"$BLFSTARTTIME=30/12/1899 00:00:00.000"}, 0.0, true},
  });
}

TEST(CsvStartTime, aFractionWithoutAPoint) {
  expectStarts({
      {"the last digit is the fraction, the one before it nothing",
       {"$BLFSTARTTIME=01/01/2020 00:00:0197 "},
       (7.0 / 1000.0 + 1577836801.0 + 2209161600.0) / 86400.0,
       true},
      {"two digits are too few", {"$BLFSTARTTIME=01/01/2020 00:00:01 "}, 0.0, false},
      {"a carriage return is no separator", {"$BLFSTARTTIME=01/01/2020 00:00:01\r", "500"}, 0.0, false},
  });
}

TEST(CsvStartTime, isFoundInAHeadOfAnyLength) {
  const std::string filler(1000, 'x');
  for (const std::string key : {"$STARTTIME=44403.25", "$BLFSTARTTIME=14/07/2021 06:00:00.000"}) {
    for (const std::size_t lines : {0U, 1048U, 1049U, 2500U}) {
      CsvStartTime start;
      for (std::size_t line = 0; line < lines; ++line) {
        start.look(filler);
      }
      for (const char character : key) {
        start.look({&character, 1});
      }
      for (std::size_t line = 0; line < lines; ++line) {
        start.look(filler);
      }
      start.finish();
      EXPECT_EQ(start.days(), key[1] == 'S' ? 44403.25 : 44391.25) << lines;
      EXPECT_EQ(start.isBlfTable(), key[1] == 'B') << lines;
    }
  }
}

}  // namespace
}  // namespace xlatr
