#include "formats/trc/trc_header_keys.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace xlatr {
namespace {

TrcHeaderKeys keysOf(const std::vector<std::string>& lines) {
  TrcHeaderKeys keys;
  for (const std::string& line : lines) {
    keys.look(line);
  }
  return keys;
}

TEST(TrcHeaderKeys, findsTheFileVersion) {
  const struct {
    const char* name;
    std::vector<std::string> lines;
    double version;
  } cases[] = {
      {"key", {";$FILEVERSION=1.1"}, 1.1},
      {"key inside a line", {"; see $FILEVERSION=2.1 there"}, 2.1},
      {"after one that does not fit", {";$FILEVERSION=x $FILEVERSION=1.3"}, 1.3},
      {"the first of two", {";$FILEVERSION=2.0", ";$FILEVERSION=2.1"}, 2.0},
      {"a version that is not known", {";$FILEVERSION=3.1"}, 3.1},
      {"several digits", {";$FILEVERSION=12.34;"}, 12.34},
      {"no point", {";$FILEVERSION=2"}, 0.0},
      {"nothing after the point", {";$FILEVERSION=2."}, 0.0},
      {"another case", {";$fileversion=2.0"}, 0.0},
      {"the mark of an old program", {";  made by BRIX Scope"}, 1.0},
      {"the mark of an old network", {";  BRIX-Net: can1"}, 1.0},
      {"a network without a name is no mark", {";  BRIX-Net: "}, 0.0},
      {"a network without a blank is no mark", {";  BRIX-Net:can1"}, 0.0},
      {"a network after two blanks is no mark", {";  BRIX-Net:  can1"}, 0.0},
      {"the key before the mark", {";  BRIX Scope", ";$FILEVERSION=1.2"}, 1.2},
      {"neither", {";  a comment", ""}, 0.0},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(keysOf(test.lines).fileVersion(), test.version) << test.name;
  }
}

TEST(TrcHeaderKeys, findsTheStartTime) {
  const struct {
    const char* name;
    std::vector<std::string> lines;
    double start;
  } cases[] = {
      {"number", {";$STARTTIME=44403.25"}, 44403.25},
      {"number before text", {";  Start time: 01.01.2000 00:00:00.0", ";$STARTTIME=44403.25"}, 44403.25},
      {"a number without a point is none", {";$STARTTIME=44403"}, 0.0},
      // 26 July 2021 is day 44403 since 1899-12-30.
      {"text", {";   Start time: 26.07.2021 06:00:00.0"}, 44403.25},
      {"text with milliseconds", {";   Start time: 26.07.2021 00:00:00.500"}, 44403.0 + 0.5 / 86400.0},
      // The last point ends the seconds, and what follows it counts as milliseconds.
      {"text with microseconds", {";   Start time: 26.07.2021 00:00:00.721.500"}, 44403.0 + 0.5 / 86400.0},
      // One character after the colon is dropped even if it is a digit: day 26 becomes day 6.
      {"text without a blank", {";   Start time:26.07.2021 06:00:00.0"}, 44383.25},
      {"no text", {";   Start time: yesterday"}, 0.0},
      {"text of another shape", {";   Start time: 26/07/2021 06:00:00.0"}, 0.0},
      {"text without seconds", {";   Start time: 26.07.2021 06:00:x"}, 0.0},
      {"nothing", {";"}, 0.0},
  };
  for (const auto& test : cases) {
    EXPECT_DOUBLE_EQ(keysOf(test.lines).startDays(), test.start) << test.name;
  }
}

// A date that can't be read at all counts as second 0, which is day 25569.
TEST(TrcHeaderKeys, countsADateThatFitsButCannotBeReadAsSecondZero) {
  EXPECT_DOUBLE_EQ(keysOf({";  Start time: 26.07.2021 00:00:00"}).startDays(), 25569.0);
  EXPECT_DOUBLE_EQ(keysOf({";  Start time: 45.13.2021 06:00:00.0"}).startDays(), 25569.0);
}

TEST(TrcHeaderKeys, findsTheColumns) {
  const struct {
    const char* name;
    std::vector<std::string> lines;
    TrcColumnSet columns;
  } cases[] = {
      {"2.0", {";$COLUMNS=N,O,T,I,d,l,D"}, 0x2DE},
      {"2.1", {";$COLUMNS=N,O,T,B,I,d,R,L,D"}, 0x3EF},
      {"3.0", {";$COLUMNS=N,O,T,B,I,d,R,V,S,A,r,s,L,D"}, 0x7FEF},
      {"every letter", {";$COLUMNS=B,d,D,I,l,L,N,O,R,T,A,r,s,S,V"}, 0x7FFF},
      {"up to what is no letter", {";$COLUMNS=N,O,X,T"}, 0x00C0},
      {"a blank ends it", {";$COLUMNS=N,O, T"}, 0x00C0},
      {"two commas end it", {";$COLUMNS=N,,O"}, 0x0040},
      {"the first letter of a part counts", {";$COLUMNS=NOT,B"}, 0x0041},
      {"the first of two keys", {";$COLUMNS=N", ";$COLUMNS=O"}, 0x0040},
      {"no letter", {";$COLUMNS=,N"}, 0},
      {"no key", {";"}, 0},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(keysOf(test.lines).columnSet(), test.columns) << test.name;
  }
}

TEST(TrcHeaderKeys, findsTheNetworkName) {
  EXPECT_EQ(keysOf({";   BRIX-Net: Can500 2"}).networkName(), "Can500");
  EXPECT_EQ(keysOf({";   BRIX-Net: N/A"}).networkName(), "N");
  EXPECT_EQ(keysOf({";   BRIX-Net: "}).networkName(), "");
  EXPECT_EQ(keysOf({";"}).networkName(), "");
}

}  // namespace
}  // namespace xlatr
