// What the compatible way does to tables, and what the complete way does instead.
#include <gtest/gtest.h>

#include <string>

#include "formats/csv/csv_both_ways.hpp"
#include "formats/csv/csv_frames.hpp"
#include "formats/csv/csv_mapping.hpp"
#include "formats/csv/csv_message.hpp"
#include "formats/lin/lin_frames.hpp"
#include "formats/lin/lin_message.hpp"
#include "support/frame_text.hpp"

namespace xlatr {
namespace {

class CsvQuirks : public testing::Test {
 protected:
  struct Rows {
    std::string compatible;
    std::string complete;
  };

  // The rows of a TRC trace.
  Rows rowsOf(const std::string& version, const std::string& lines) {
    const auto [compatible, complete] = test::bothTablesOf(folder_, ";$FILEVERSION=" + version + "\n" + lines);
    return {test::rowsOf(compatible), test::rowsOf(complete)};
  }

  // A row that is read.
  static CsvMessage parsed(const std::string& columns, const std::string& row, Way way) {
    CsvColumnLine line = parseCsvColumnLine(columns);
    CsvMessage message(line.separator);
    message.columns = line.columns;
    message.parseRow(row, false, way);
    return message;
  }

  test::TempFolder folder_;
};

constexpr char kQuirkColumns[] =
    "Number;Time (ms);Bus;Direction;Type;ID/PID (hex);Reserved;VCID;SDT;AF;RRS;SEC;Length;D0";
constexpr char kTrc21[] = "2.1\n;$COLUMNS=N,O,T,B,I,d,R,L,D";
constexpr char kTrc30[] = "3.0\n;$COLUMNS=N,O,T,B,I,d,R,V,S,A,r,s,L,D";

TEST_F(CsvQuirks, missingXlFieldsFilled) {
  const Rows rows = rowsOf(kTrc30, "1  2.5 XL 1 123 Tx - - - - - - 0 01\n");
  EXPECT_EQ(rows.compatible, "1;2.500;1;Tx;XL;0123;-;FF;FF;FFFFFFFF;0;0;1;01\r\n");
  EXPECT_EQ(rows.complete, "1;2.500;1;Tx;XL;0123;-;-;-;-;-;-;1;01\r\n");
}

TEST_F(CsvQuirks, errorsAsInTheSource) {
  const Rows rows = rowsOf("1.3", "1)  3.003 1  Error 0001 - 4  00 05 06 07\n");
  EXPECT_EQ(rows.compatible, "1;3.003;1;Rx;ER;0001;-;-;-;-;-;-;4;00;05;06;07\r\n");
  EXPECT_EQ(rows.complete, "1;3.003;1;Rx;ER;FFFFFFFF;-;-;-;-;-;-;5;01;00;05;06;07\r\n");
}

TEST_F(CsvQuirks, busGuessed) {
  const std::string noBus = "1  3.5 FE - 0123 Rx 5 1 FF\n";
  EXPECT_EQ(rowsOf(kTrc21, noBus).compatible, "1;3.500;255;Rx;FE;0123;5;-;-;-;-;-;1;FF\r\n");
  EXPECT_EQ(rowsOf(kTrc21, noBus).complete, "1;3.500;0;Rx;FE;0123;5;-;-;-;-;-;1;FF\r\n");
  const std::string noBusColumn = "1)  10.1  Rx  0123  1  01\n";
  EXPECT_EQ(rowsOf("1.1", noBusColumn).compatible, "1;10.100;1;Rx;DT;0123;-;-;-;-;-;-;1;01\r\n");
  EXPECT_EQ(rowsOf("1.1", noBusColumn).complete, "1;10.100;0;Rx;DT;0123;-;-;-;-;-;-;1;01\r\n");
}

TEST_F(CsvQuirks, directionGuessed) {
  const auto [compatible, complete] = test::bothTablesOf(folder_, ";BRIX-Net: Net\n1)   1841  0001  2  00 01\n");
  EXPECT_EQ(test::rowsOf(compatible), "1;1841.000;1;Rx;DT;0001;-;-;-;-;-;-;2;00;01\r\n");
  EXPECT_EQ(test::rowsOf(complete), "1;1841.000;0;None;DT;0001;-;-;-;-;-;-;2;00;01\r\n");
}

TEST_F(CsvQuirks, linAsCan) {
  const std::string line = "1) 1000 Pub 2A 2 01 02 7C EH CK";
  KorlMessage message;
  message.parseLine(line, Way::compatible());
  CsvMessage row(";");
  mapToCsv(message, row);
  TextBuffer out;
  row.toRow(out, 1);
  EXPECT_EQ(out.view(), "1;1.000;1;Tx;ER;002A;-;2;01;02");

  const auto source = openLinFrames(folder_.write("trace.ltrc", ";$FILEVERSION=1.1\n" + line + "\n"));
  const auto sink = createCsvFrames(folder_.file("complete.csv"), source->head(), SinkSettings());
  Account account;
  FrameBatch batch;
  ASSERT_TRUE(source->read(batch, account));
  sink->write(batch, account);
  sink->close();
  EXPECT_EQ(test::rowsOf(folder_.read("complete.csv")),
            "1;1.000;0;Tx;ER;002A;-;2;01;02; xlatr: lin time=0.001000000 id=2A flags=transmitted,enhanced_checksum "
            "dlc=2 data=0102 checksum=124 checksum_model=2 lin_errors=1\r\n");
  Account read;
  EXPECT_EQ(test::textsOf(*openCsvFrames(folder_.file("complete.csv")), read),
            std::vector<std::string>{test::textOf(batch.at(0))});
}

TEST_F(CsvQuirks, fewCellsRead) {
  const std::string row = "1;2.500;1;Tx;XL;0123;1F;0A;-;12345678;1;0;2;01;02";
  const CsvMessage compatible = parsed(kQuirkColumns, row, Way::compatible());
  EXPECT_TRUE(compatible.valid);
  EXPECT_EQ(compatible.reserved, CsvMessage::kNoReserved);
  EXPECT_EQ(compatible.vcid, 0xFF);
  const CsvMessage complete = parsed(kQuirkColumns, row, Way::complete());
  EXPECT_TRUE(complete.valid);
  EXPECT_EQ(complete.reserved, 0x1F);
  EXPECT_EQ(complete.vcid, 0x0A);
  EXPECT_EQ(complete.missingXlFields, csv_xl_bit::kSdt);
  EXPECT_EQ(complete.af, 0x12345678U);

  const std::string remote = "1;2.500;1;Tx;RR;0123;-;-;-;-;-;-;2;";
  EXPECT_EQ(parsed(kQuirkColumns, remote, Way::compatible()).data.size(), 2U);
  EXPECT_EQ(parsed(kQuirkColumns, remote, Way::complete()).data.size(), 0U);

  std::string longRow = "1;2.500;1;Tx;XL;0123;-;-;-;-;-;-;256";
  for (int byte = 0; byte < 256; ++byte) {
    longRow += ";00";
  }
  EXPECT_FALSE(parsed(kQuirkColumns, longRow, Way::compatible()).valid);
  EXPECT_TRUE(parsed(kQuirkColumns, longRow, Way::complete()).valid);
}

TEST_F(CsvQuirks, emptyCellsMoveOthers) {
  const std::string columns = "Number;Time (ms);Bus;Direction;Type;ID (hex);Length;D0";
  const std::string row = "7;;1;2;Rx;DT;0123;1;AA";
  const CsvMessage compatible = parsed(columns, row, Way::compatible());
  EXPECT_TRUE(compatible.valid);
  EXPECT_EQ(compatible.time.count(), 1.0);
  EXPECT_FALSE(parsed(columns, row, Way::complete()).valid);
}

TEST_F(CsvQuirks, missingColumnIsTheFirst) {
  const std::string columns = "Number;Time (ms);Direction;Type;ID (hex);Length;D0";
  const std::string row = "7;1.5;Rx;DT;0123;1;AA";
  EXPECT_EQ(parsed(columns, row, Way::compatible()).bus, 7U);
  const CsvMessage complete = parsed(columns, row, Way::complete());
  EXPECT_TRUE(complete.valid);
  EXPECT_EQ(complete.bus, CsvMessage().bus);
  EXPECT_FALSE(parsed("Number;Time (ms);Type;Length;D0", "7;1.5;DT;1;AA", Way::complete()).valid);
}

TEST_F(CsvQuirks, startOf1000Ms) {
  const auto [compatible, complete] =
      test::bothTablesOf(folder_, ";$FILEVERSION=2.1\n;$STARTTIME=44403.3333333287\n;$COLUMNS=N,O,T,B,I,d,R,L,D\n");
  EXPECT_NE(compatible.find("Start time: 26/07/2021 07:59:59.1000\r\n"), std::string::npos) << compatible;
  EXPECT_NE(complete.find("Start time: 26/07/2021 08:00:00.000\r\n"), std::string::npos) << complete;
}

}  // namespace
}  // namespace xlatr
