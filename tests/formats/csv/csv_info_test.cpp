#include "formats/csv/csv_info.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

CsvInfo infoOf(const test::TempFolder& folder, const std::string& content, const std::string& name = "x.csv") {
  return CsvInfo(TraceFileInfo(folder.write(name, content)));
}

TEST(CsvInfo, readsTheHeadUpToTheNamesOfTheColumns) {
  const test::TempFolder folder;
  const std::string head = "$STARTTIME=43774.5730005787\r\n\r\nsome text\r\nNumber,Time (ms),Bus,D0,,D...\r\n";
  const CsvInfo info = infoOf(folder, head + "1,0.000,1,AA\r\nNumber\r\n");
  EXPECT_TRUE(info.getValid());
  EXPECT_EQ(info.columnLine(), "Number,Time (ms),Bus,D0,,D...");
  EXPECT_EQ(info.separator(), ",");
  EXPECT_EQ(info.columns().place(CsvColumn::Data0), 3U);
  EXPECT_EQ(info.getHeaderLength(), head.size());
  EXPECT_EQ(info.getStartTime(), 43774.5730005787);
  EXPECT_FALSE(info.blfTable());
  EXPECT_EQ(info.lineBreakSize(), 2);
  EXPECT_EQ(info.getPath(), folder.file("x.csv"));
}

TEST(CsvInfo, statesNoVersion) {
  const test::TempFolder folder;
  const CsvInfo info = infoOf(folder, "Number;Bus\n");
  EXPECT_EQ(info.getVersion(), 0.0);
  EXPECT_EQ(info.getVersionText(), "0.0");
  EXPECT_EQ(info.getCurrentVersion(), 1.0);
  ASSERT_EQ(info.getSupportedVersions().size(), 1U);
  EXPECT_EQ(info.getSupportedVersions()[0], 1.0);
  EXPECT_TRUE(info.getAllowedConvertions().empty());
}

TEST(CsvInfo, knowsTheTableOfTheConverterByItsStart) {
  const test::TempFolder folder;
  const CsvInfo info =
      infoOf(folder, "$BLFSTARTTIME=31/12/2024 23:59:58.500\nNumber;ObjectType;Valid;CanFdFLags;D0\n1;1;1;0;AA\n");
  EXPECT_TRUE(info.blfTable());
  EXPECT_EQ(info.getStartTime(), (0.5 + 1735689598.0 + 2209161600.0) / 86400.0);
  EXPECT_EQ(info.columns().place(CsvColumn::CanFdFlags), 3U);
  EXPECT_EQ(info.lineBreakSize(), 1);
}

TEST(CsvInfo, carriesOverADateThatDoesNotExist) {
  const test::TempFolder folder;
  const CsvInfo info = infoOf(folder, "$BLFSTARTTIME=31/02/2024 00:00:00.000\nNumber;Bus\n");
  EXPECT_TRUE(info.blfTable());
  EXPECT_EQ(info.getStartTime(), 45353.0);  // 2 March 2024
}

TEST(CsvInfo, takesNoStartWithoutADecimalPoint) {
  const test::TempFolder folder;
  const CsvInfo info = infoOf(folder, "$STARTTIME=44403\nNumber;Bus\n");
  EXPECT_EQ(info.getStartTime(), 0.0);
  EXPECT_FALSE(info.blfTable());
}

TEST(CsvInfo, findsNoColumnsWithoutTheWordNumber) {
  const test::TempFolder folder;
  const std::string content = "$STARTTIME=44403.25\nTime (ms);Bus\n1;2\n";
  const CsvInfo info = infoOf(folder, content);
  EXPECT_TRUE(info.getValid());
  EXPECT_EQ(info.columnLine(), "");
  EXPECT_TRUE(info.columns().empty());
  EXPECT_EQ(info.separator(), "");
  EXPECT_EQ(info.getHeaderLength(), content.size());
  EXPECT_EQ(info.getStartTime(), 44403.25);
}

TEST(CsvInfo, takesTheFirstLineWithTheWordNumberWhereverItStands) {
  const test::TempFolder folder;
  const CsvInfo info = infoOf(folder, "    Data imported from Number 5.trc\nNumber;Bus\n");
  EXPECT_EQ(info.columnLine(), "    Data imported from Number 5.trc");
  EXPECT_EQ(info.separator(), " ");
  EXPECT_EQ(info.columns().place(CsvColumn::Number), 3U);
}

TEST(CsvInfo, readsAColumnLineWithoutLineEnd) {
  const test::TempFolder folder;
  const CsvInfo info = infoOf(folder, "x\nNumber;Bus");
  EXPECT_EQ(info.columnLine(), "Number;Bus");
  EXPECT_EQ(info.getHeaderLength(), 12U);
}

TEST(CsvInfo, findsTheFirstRowOfAFileWithBothLineEnds) {
  const test::TempFolder folder;
  EXPECT_EQ(infoOf(folder, "a\r\n\nb\nNumber;Bus\r\n1;2\n").getHeaderLength(), 18U);
}

TEST(CsvInfo, looksIntoCsvFilesOnly) {
  const test::TempFolder folder;
  const CsvInfo info = infoOf(folder, "$STARTTIME=44403.25\nNumber;Bus\n", "x.txt");
  EXPECT_FALSE(info.getValid());
  EXPECT_EQ(info.columnLine(), "");
  EXPECT_EQ(info.getStartTime(), 0.0);
  EXPECT_EQ(info.lineBreakSize(), 0);
  EXPECT_TRUE(infoOf(folder, "Number;Bus\n", "x.CSV").getValid());
}

TEST(CsvInfo, ofAMissingFileIsEmpty) {
  const test::TempFolder folder;
  const CsvInfo info{TraceFileInfo(folder.file("none.csv"))};
  EXPECT_FALSE(info.getValid());
  EXPECT_TRUE(info.columns().empty());
  EXPECT_EQ(info.getHeaderLength(), 0U);
}

}  // namespace
}  // namespace xlatr
