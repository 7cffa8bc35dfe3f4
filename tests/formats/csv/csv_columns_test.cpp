#include "formats/csv/csv_columns.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace xlatr {
namespace {

// The place of each known column, -1 for missing ones, in the order of their numbers.
std::vector<int> placesOf(const CsvColumns& columns) {
  std::vector<int> places;
  for (std::size_t column = 0; column < kCsvColumnCount; ++column) {
    const auto named = static_cast<CsvColumn>(column);
    places.push_back(columns.has(named) ? static_cast<int>(columns.place(named)) : -1);
  }
  return places;
}

constexpr char kNarrow[] = "Number;Time (ms);Bus;Direction;Type;ID (hex);Reserved;Length;D0;D1;D2;D3;D4;D5;D6;D7;;D...";
constexpr char kWide[] =
    "Number;Time (ms);Bus;Direction;Type;ID/PID (hex);Reserved;VCID;SDT;AF;RRS;SEC;Length;D0;D1;D2;D3;D4;D5;D6;D7;;"
    "D...";
constexpr char kConverter[] =
    "Number,ObjectType,ObjectTimestamp,ObjectFlags,Valid,Comment,Id,Channel,Flags,FlagsExt,Ecc,CanFdFLags,Dir,Crc,"
    "ObjectVersion,ChecksumModel,Length,D0,D1";

TEST(CsvColumns, findTheirPlaces) {
  const struct {
    const char* name;
    const char* line;
    const char* separator;
    std::vector<int> places;
  } cases[] = {
      {"narrow table", kNarrow, ";", {0,  1,  2,  3,  4,  5,  6,  -1, -1, -1, -1, -1, 7,  8, -1,
                                      -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1}},
      {"wide table", kWide, ";", {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, -1,
                                  -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1}},
      {"table of the converter", kConverter, ",", {0, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 16, 17, 1,
                                                   2, 3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15}},
      {"an unknown name takes its place", "Number;Colour;Bus", ";", {0,  -1, 2,  -1, -1, -1, -1, -1, -1, -1,
                                                                     -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
                                                                     -1, -1, -1, -1, -1, -1, -1, -1, -1}},
      {"an empty name takes none", "Number;;Bus", ";", {0,  -1, 1,  -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
                                                        -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1}},
      {"the later of two", "Number;Bus;Bus", ";", {0,  -1, 2,  -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
                                                   -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1}},
      {"the word alone", "Number", "", {0,  -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
                                        -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1}},
      {"a tab", "Number\tBus", "\t", {0,  -1, 1,  -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
                                      -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1}},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    const CsvColumnLine parsed = parseCsvColumnLine(test.line);
    EXPECT_EQ(parsed.separator, test.separator);
    EXPECT_EQ(placesOf(parsed.columns), test.places);
  }
}

TEST(CsvColumns, areNamedAsTheyAreRead) {
  EXPECT_EQ(csvColumnLine(false, ";"), kNarrow);
  EXPECT_EQ(csvColumnLine(true, ";"), kWide);
  EXPECT_EQ(csvConverterColumnLine(","), std::string(kConverter) + ",D2,D3,D4,D5,D6,D7");
}

TEST(CsvColumns, areMissingWithoutTheWordNumber) {
  const CsvColumnLine parsed = parseCsvColumnLine("Time (ms);Bus");
  EXPECT_EQ(parsed.separator, "");
  EXPECT_TRUE(parsed.columns.empty());
}

TEST(CsvColumns, compareTheWholeName) {
  const CsvColumns columns = parseCsvColumnLine("Number;bus;Bus ;ID;D00").columns;
  EXPECT_TRUE(columns.has(CsvColumn::Number));
  for (const CsvColumn column : {CsvColumn::Bus, CsvColumn::Identifier, CsvColumn::Id, CsvColumn::Data0}) {
    EXPECT_FALSE(columns.has(column));
  }
}

TEST(CsvColumns, ofASeparatorOfSeveralCharactersAreCutAtItsFirst) {
  const CsvColumnLine parsed = parseCsvColumnLine("Number; Bus; Direction");
  EXPECT_EQ(parsed.separator, ";");
  EXPECT_TRUE(parsed.columns.has(CsvColumn::Number));
  EXPECT_FALSE(parsed.columns.has(CsvColumn::Bus));
  // A repeated character makes runs, and each run is one cut.
  EXPECT_EQ(parseCsvColumnLine("Number::Bus").columns.place(CsvColumn::Bus), 1U);
}

}  // namespace
}  // namespace xlatr
