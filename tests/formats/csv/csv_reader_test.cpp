#include "formats/csv/csv_reader.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "formats/csv/csv_mapping.hpp"
#include "formats/trc/trc_reader.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

constexpr char kColumns[] = "Number;Time (ms);Bus;Direction;Type;ID (hex);Reserved;Length;D0;D1;;D...\n";

CsvReader openedReader(const test::TempFolder& folder, const std::string& content) {
  return CsvReader(CsvInfo(TraceFileInfo(folder.write("x.csv", content))));
}

std::vector<std::string> textsOf(CsvReader& reader) {
  std::vector<std::string> texts;
  while (const auto message = reader.ReadNextMessage()) {
    texts.push_back((message->valid ? "+" : "-") + message->parsingText);
  }
  return texts;
}

TEST(CsvReader, returnsOneMessagePerRowAndSkipsComments) {
  const test::TempFolder folder;
  CsvReader reader = openedReader(folder, std::string("head\n") + kColumns +
                                              "1;0.500;1;Rx;DT;0123;-;1;AA\n"
                                              "a comment\n"
                                              "\n"
                                              "a comment; with a separator\n"
                                              "2;1.000;2;Tx;RR;00000456;-;2;");
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_EQ(textsOf(reader), (std::vector<std::string>{"+1;0.500;1;Rx;DT;0123;-;1;AA", "-a comment; with a separator",
                                                       "+2;1.000;2;Tx;RR;00000456;-;2;"}));
  EXPECT_EQ(reader.invalidCount(), 1U);
  EXPECT_EQ(reader.lineCount(), 5U);
  EXPECT_EQ(reader.getPercentDone(), 100.0);
}

TEST(CsvReader, givesEachMessageTheSeparatorAndTheColumns) {
  const test::TempFolder folder;
  CsvReader reader = openedReader(folder, std::string(kColumns) + "1;0.500;1;Rx;DT;0123;-;1;AA\n");
  ASSERT_TRUE(reader.setActive(true));
  CsvMessage message("#");
  message.text = "left over";
  ASSERT_TRUE(reader.readInto(message));
  EXPECT_EQ(message.separator, ";");
  EXPECT_EQ(message.columns.place(CsvColumn::Length), 7U);
  EXPECT_EQ(message.text, "");
  EXPECT_EQ(message.time, RealMilliseconds(0.5));
  EXPECT_FALSE(reader.readInto(message));
}

TEST(CsvReader, readsTheTableOfTheConverter) {
  const test::TempFolder folder;
  CsvReader reader =
      openedReader(folder,
                   "$BLFSTARTTIME=31/12/2024 23:59:58.500\n"
                   "Number,ObjectType,ObjectTimestamp,ObjectFlags,Valid,Comment,Id,Channel,Flags,FlagsExt,"
                   "Ecc,CanFdFLags,Dir,Crc,ObjectVersion,ChecksumModel,Length,D0,D1\n"
                   "1,1,1000,2,1,-,0x123,1,0,0,0,0,1,0,0,0,2,AA,BB\n"
                   "2,9,2000,2,0,not known,0,1,0,0,0,0,0,0,0,0,0\n");
  ASSERT_TRUE(reader.setActive(true));
  const auto first = reader.ReadNextMessage();
  ASSERT_NE(first, nullptr);
  EXPECT_TRUE(first->valid);
  EXPECT_EQ(first->blfId, 0x123U);
  EXPECT_EQ(first->objectTicks, 1000U);
  EXPECT_EQ(first->data, (std::vector<std::uint8_t>{0xAA, 0xBB}));
  const auto second = reader.ReadNextMessage();
  ASSERT_NE(second, nullptr);
  EXPECT_FALSE(second->valid);
  EXPECT_EQ(second->comment, "not known");
  EXPECT_EQ(reader.ReadNextMessage(), nullptr);
  EXPECT_EQ(reader.invalidCount(), 1U);
}

TEST(CsvReader, readsNothingWithoutAColumnLine) {
  const test::TempFolder folder;
  CsvReader reader = openedReader(folder, "Time (ms);Bus\n1;2\n");
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_EQ(reader.getPercentDone(), 100.0);
  EXPECT_EQ(reader.ReadNextMessage(), nullptr);
}

TEST(CsvReader, returnsEveryLineOfATableWithoutSeparator) {
  const test::TempFolder folder;
  CsvReader reader = openedReader(folder, "Number\n1\n\n2\n");
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_EQ(textsOf(reader), (std::vector<std::string>{"-1", "-2"}));
}

TEST(CsvReader, endsAt100PercentWithEitherLineEnd) {
  const test::TempFolder folder;
  for (const char* const content : {"Number;Bus\n1;2\n", "Number;Bus\r\n1;2\r\n"}) {
    CsvReader reader = openedReader(folder, content);
    ASSERT_TRUE(reader.setActive(true));
    EXPECT_LT(reader.getPercentDone(), 100.0);
    EXPECT_EQ(textsOf(reader), (std::vector<std::string>{"-1;2"}));
    EXPECT_EQ(reader.getPercentDone(), 100.0);
  }
}

TEST(CsvReader, startsAgainWhenActivatedTwice) {
  const test::TempFolder folder;
  CsvReader reader = openedReader(folder, "Number;Bus\n1;2\n3;4\n");
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_EQ(textsOf(reader).size(), 2U);
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_EQ(reader.invalidCount(), 0U);
  EXPECT_EQ(textsOf(reader).size(), 2U);
  EXPECT_FALSE(reader.setActive(false));
  EXPECT_EQ(reader.ReadNextMessage(), nullptr);
}

// Compares what CsvReader makes of a written table with what TrcReader makes of its source.
class WrittenTable : public testing::TestWithParam<std::tuple<const char*, const char*>> {};

TEST_P(WrittenTable, holdsTheFramesOfItsSource) {
  const auto& [version, separator] = GetParam();
  const std::filesystem::path golden = XLATR_GOLDEN_DIR;
  const std::string from = "from-" + std::string(version);
  TrcReader source(TrcInfo((golden / "trc-trc" / from / ("source-" + std::string(version) + ".trc")).string()));
  const auto path = golden / "trc-csv" / from / separator / "out.csv";
  CsvReader table{CsvInfo(TraceFileInfo(path.string()))};
  ASSERT_TRUE(source.setActive(true));
  ASSERT_TRUE(table.setActive(true));
  BrixMessage frame;
  CsvMessage expected;
  CsvMessage row;
  int rows = 0;
  while (source.readInto(frame)) {
    if (!frame.valid) {
      continue;
    }
    ++rows;
    ASSERT_TRUE(table.readInto(row)) << "row " << rows;
    mapToCsv(frame, expected);
    EXPECT_TRUE(row.valid) << row.parsingText;
    EXPECT_NEAR(row.time.count(), expected.time.count(), 0.0005);
    EXPECT_EQ(row.bus, expected.bus);
    EXPECT_EQ(row.direction, expected.direction);
    EXPECT_EQ(row.kind, expected.kind);
    EXPECT_EQ(row.id, expected.id);
    // A base identifier beyond four digits is as wide as an extended one.
    EXPECT_EQ(row.extended, expected.extended || expected.id > 0xFFFF);
    EXPECT_EQ(row.length, expected.length);
    EXPECT_EQ(row.data, expected.data);
    EXPECT_EQ(row.remote, expected.kind == MessageKind::RR);
  }
  EXPECT_FALSE(table.readInto(row)) << row.parsingText;
  EXPECT_EQ(table.invalidCount(), 0U);
  EXPECT_GT(rows, 10);
  EXPECT_NEAR(table.getTrace().getStartTime(), source.getTrace().getStartTime(), 1e-9);
}

INSTANTIATE_TEST_SUITE_P(Golden, WrittenTable,
                         testing::Combine(testing::Values("1.0", "1.1", "1.2", "1.3", "2.0", "2.1", "3.0"),
                                          testing::Values("semicolon", "comma", "tab")),
                         [](const auto& test) {
                           std::string name = std::string(std::get<0>(test.param)) + std::get<1>(test.param);
                           name[1] = '_';
                           return name;
                         });

}  // namespace
}  // namespace xlatr
