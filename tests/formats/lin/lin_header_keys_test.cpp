#include "formats/lin/lin_header_keys.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "util/failures.hpp"

namespace xlatr {
namespace {

LinHeaderKeys keysOf(const std::vector<std::string>& lines) {
  LinHeaderKeys keys;
  for (const std::string& line : lines) {
    keys.look(line);
  }
  return keys;
}

TEST(LinHeaderKeys, findsVersionAndStart) {
  const LinHeaderKeys keys = keysOf({";$FILEVERSION=1.2", ";$STARTTIME=44403.25"});
  EXPECT_EQ(keys.fileVersion(), 1.2);
  EXPECT_EQ(keys.startDays(), 44403.25);
  EXPECT_EQ(keysOf({}).fileVersion(), 0.0);
  EXPECT_EQ(keysOf({}).startDays(), 0.0);
}

TEST(LinHeaderKeys, aStartWithoutADecimalPointLeavesTheDateToDecide) {
  const LinHeaderKeys keys = keysOf({";$STARTTIME=0", ";   Start time: 26.07.2021 06:00:00"});
  EXPECT_EQ(keys.startDays(), 44403.25);
}

TEST(LinHeaderKeys, aNumberCountsBeforeADate) {
  EXPECT_EQ(keysOf({";   Start time: 26.07.2021 06:00:00", ";$STARTTIME=44000.5"}).startDays(), 44000.5);
}

TEST(LinHeaderKeys, theFirstOfEachCounts) {
  const LinHeaderKeys keys =
      keysOf({";$FILEVERSION=x $FILEVERSION=1.1", ";$FILEVERSION=1.2", ";$STARTTIME=1.5", ";$STARTTIME=2.5"});
  EXPECT_EQ(keys.fileVersion(), 1.1);
  EXPECT_EQ(keys.startDays(), 1.5);
}

TEST(LinHeaderKeys, passesOverDatesOfOtherShapes) {
  for (const char* line : {";   Start time:26.07.2021 06:00:00", ";   Start time: 2021-07-26 06:00:00.000",
                           ";   Start time: ", ";   Start time: 26.07.2021", ";   Start time:  26.07.2021 06:00:00",
                           ";   Start time: 26..07.2021 06:00:00", ";   Start time: .26.07.2021 06:00:00",
                           ";   start time: 26.07.2021 06:00:00"}) {
    EXPECT_EQ(keysOf({line}).startDays(), 0.0) << line;
  }
}

TEST(LinHeaderKeys, aDateThatCantBeReadIsTheFirstOf1970) {
  EXPECT_EQ(keysOf({";   Start time: 2021 06"}).startDays(), 25569.0);
}

TEST(LinHeaderKeys, aDateOutOfRangeIsAFailure) {
  EXPECT_THROW(static_cast<void>(keysOf({";   Start time: 01.01.1000 00:00:00"}).startDays()),
               ConverterParsingException);
}

}  // namespace
}  // namespace xlatr
