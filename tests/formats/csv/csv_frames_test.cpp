// Tables of version 1.0 as frames.
#include "formats/csv/csv_frames.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <ios>
#include <string>
#include <vector>

#include "formats/csv/csv_both_ways.hpp"
#include "support/frame_text.hpp"
#include "support/temp_folder.hpp"
#include "util/host.hpp"
#include "util/start_time.hpp"

namespace xlatr {
namespace {

using Texts = std::vector<std::string>;

constexpr char kNarrow[] =
    "Number;Time (ms);Bus;Direction;Type;ID (hex);Reserved;Length;D0;D1;D2;D3;D4;D5;D6;D7;;D...\r\n";
constexpr char kWide[] =
    "Number;Time (ms);Bus;Direction;Type;ID/PID (hex);Reserved;VCID;SDT;AF;RRS;SEC;Length;D0;D1;D2;D3;D4;D5;D6;D7;;D..."
    "\r\n";

class CsvFrames : public testing::Test {
 protected:
  Texts read(const std::string& content) {
    source_ = openCsvFrames(folder_.write("source.csv", content));
    account_ = {};
    return test::textsOf(*source_, account_);
  }
  // Writes a table and reads it back.
  Texts writeAndRead(const FrameBatch& batch, const StreamHead& head, const SinkSettings& settings = {}) {
    account_ = {};
    const auto sink = createCsvFrames(folder_.file("target.csv"), head, settings);
    sink->write(batch, account_);
    sink->close();
    source_ = openCsvFrames(folder_.file("target.csv"));
    Account read;
    return test::textsOf(*source_, read);
  }

  test::TempFolder folder_;
  std::unique_ptr<FrameSource> source_;
  Account account_;
};

TEST_F(CsvFrames, haveWhatARowHas) {
  EXPECT_EQ(
      read(std::string("$STARTTIME=44403.25\r\nStart time: 26/07/2021 06:00:00.000\r\n\r\n/n/Number.csv\r\n") + kWide +
           "1;0.001;1;Rx;DT;0100;-;-;-;-;-;-;2;00;11\r\n"
           "2;1.000;2;Tx;BI;18FEF100;1F;-;-;-;-;-;0;\r\n"
           "3;2.500;1;Rx;RR;0200;-;-;-;-;-;-;8;\r\n"
           "4;3.500;1;None;RR;0200;-;-;-;-;-;-;-;\r\n"
           "5;4.500;3;Tx;XL;07A5;-;03;-;00000005;0;1;3;C0;FF;EE\r\n"
           "6;5.500;1;Rx;ST;FFFFFFFF;-;-;-;-;-;-;4;00;00;00;08\r\n"
           "7;6.500;1;Rx;EC;0000;-;-;-;-;-;-;2;60;80\r\n"
           "8;7.500;2;Rx;ER;FFFFFFFF;-;-;-;-;-;-;5;02;00;20;30;40\r\n"
           "9;8.500;0;None;EV;FFFFFFFF;-;-;-;-;-;-;0;some words; and more\r\n"),
      (Texts{"1000 data 1 100 Rx dlc2 [0011]", "1000000 data 2 18FEF100 x Tx FD BRS ESI reserved=31",
             "2500000 remote 1 200 Rx known dlc8", "3500000 remote 1 200",
             "4500000 data 3 7A5 Tx XL dlc2 [C0FFEE] vcid=3 acceptance_field=5 rrs=0 sec=1",
             "5500000 status 1 0 bus_state=8", "6500000 counters 1 0 tx_errors=128 rx_errors=96",
             "7500000 error 2 0 Tx error_type=1 error_position=32 tx_errors=64 rx_errors=48",
             "8500000 event 0 0 \"some words; and more\""}));
  EXPECT_TRUE(account_.complete());
  EXPECT_EQ(source_->head().version, 1.0);
  EXPECT_EQ(source_->head().start, (TraceStart{1'627'279'200'000'000'000, std::nullopt}));
}

// As the compatible way writes errors of older TRC versions.
TEST_F(CsvFrames, knowErrorsInEveryForm) {
  EXPECT_EQ(read(std::string(kWide) + "1;3.003;1;Rx;ER;0001;-;-;-;-;-;-;4;00;05;06;07\r\n"
                                      "2;3.003;1;Rx;ER;0000;-;-;-;-;-;-;2;60;80\r\n"
                                      "3;3.003;1;Rx;ER;FFFFFFFF;-;-;-;-;-;-;2;60;80\r\n"
                                      "4;3.003;1;Tx;ER;FFFFFFFF;-;-;-;-;-;-;0;\r\n"),
            (Texts{"3003000 error 1 0 Tx error_type=0 error_position=5 tx_errors=7 rx_errors=6",
                   "3003000 counters 1 0 tx_errors=128 rx_errors=96", "3003000 error 1 0 Rx [6080]",
                   "3003000 error 1 0 Tx"}));
}

TEST_F(CsvFrames, comeWithAnySeparatorAndLineEnd) {
  for (const char separator : {';', ',', '\t', '|'}) {
    std::string table =
        std::string("\xEF\xBB\xBF") + kNarrow + "1;1.5;1;Rx;DT;0123;-;1;AA;;;;;\n2;2.5;1;Rx;DT;0124;-;0;;\r\n";
    std::ranges::replace(table, ';', separator);
    EXPECT_EQ(read(table), (Texts{"1500000 data 1 123 Rx dlc1 [AA]", "2500000 data 1 124 Rx"})) << separator;
    EXPECT_TRUE(account_.complete());
  }
}

TEST_F(CsvFrames, keepEveryDigitOfATime) {
  EXPECT_EQ(
      read(std::string(kNarrow) +
           "1;9007199254.740993;1;Rx;DT;0001;-;0;\r\n2;-0.001;1;Rx;DT;0001;-;0;\r\n3;1.5E+3;1;Rx;DT;0001;-;0;\r\n"),
      (Texts{"9007199254740993 data 1 1 Rx", "-1000 data 1 1 Rx", "1500000000 data 1 1 Rx"}));
}

TEST_F(CsvFrames, haveCommentsForAllElse) {
  EXPECT_EQ(
      read(std::string(kNarrow) + "1;1.000;1;Rx;DT;0001;-;0;\r\n"
                                  "\r\n"
                                  "power was cut; here\r\n"
                                  "2;1,5;1;Rx;DT;0001;-;0;\r\n"
                                  "3;2.0;70000;Rx;DT;0001;-;0;\r\n"
                                  "4;3.0;1;Rx;DT;0001;-;2;AA\r\n"
                                  "5;4.0;1;Rx;QQ;0001;-;0;\r\n"
                                  "6;1e300;1;Rx;DT;0001;-;0;\r\n"
                                  " xlatr: overload time=5.000000000 bus=2\r\n"),
      (Texts{"1000000 data 1 1 Rx", "1000000 comment 0 0 \"power was cut; here\"",
             "1000000 comment 0 0 \"2;1,5;1;Rx;DT;0001;-;0;\"", "1000000 comment 0 0 \"3;2.0;70000;Rx;DT;0001;-;0;\"",
             "1000000 comment 0 0 \"4;3.0;1;Rx;DT;0001;-;2;AA\"", "1000000 comment 0 0 \"5;4.0;1;Rx;QQ;0001;-;0;\"",
             "1000000 comment 0 0 \"6;1e300;1;Rx;DT;0001;-;0;\"", "5000000000 overload 2 0"}));
  EXPECT_EQ(account_.noted(Remark::LineNotUnderstood), (Account::Count{5, 5}));
}

TEST_F(CsvFrames, ofAFileThatIsNoTableAreComments) {
  EXPECT_EQ(read("what is this\n1;2;3\n"), (Texts{"0 comment 0 0 \"what is this\"", "0 comment 0 0 \"1;2;3\""}));
  EXPECT_EQ(source_->head().version, 0.0);
  EXPECT_EQ(account_.noted(Remark::LineNotUnderstood), (Account::Count{2, 1}));
}

TEST_F(CsvFrames, ofAMissingFileAreAFailureOfTheSystem) {
  EXPECT_THROW(static_cast<void>(openCsvFrames(folder_.file("missing.csv"))), std::ios_base::failure);
}

constexpr std::array<std::uint8_t, 3> kBytes = {0x0A, 0xB0, 0xFF};

FrameBatch someFrames() {
  FrameBatch batch;
  Frame frame;
  frame.timeNs = 1'500'499;
  frame.bus = 2;
  frame.id = 0x12;
  frame.set(frame_flag::kReceived);
  frame.dlc = 3;
  frame.data = kBytes;
  batch.append(frame);
  frame.set(frame_flag::kExtended | frame_flag::kFd | frame_flag::kBrs);
  frame.text = "say \"a;b\"";
  batch.append(frame);
  frame.text = "one\ntwo";
  batch.append(frame);
  frame.reset();
  frame.kind = FrameKind::Event;
  frame.text = "begin";
  batch.append(frame);
  frame.text = "";
  batch.append(frame);
  frame.kind = FrameKind::Overload;
  frame.text.reset();
  batch.append(frame);
  frame.kind = FrameKind::Comment;
  frame.text = "a line";
  batch.append(frame);
  frame.text = "1;a line";
  batch.append(frame);
  return batch;
}

TEST_F(CsvFrames, areWrittenAsATable) {
  StreamHead head;
  head.path = "/traces/drive.mf4";
  head.format = XLATR_FORMAT_MF4;
  head.start = TraceStart{.sinceEpochNs = 1'627'279'200'123'600'000, .zoneMinutes = 120};
  EXPECT_EQ(writeAndRead(someFrames(), head),
            (Texts{"1500000 data 2 12 Rx dlc3 [0AB0FF]", "1500000 data 2 12 x Rx FD BRS dlc3 [0AB0FF] \"say \"a;b\"\"",
                   "1500000 data 2 12 x Rx FD BRS dlc3 [0AB0FF] \"one\ntwo\"", "0 event 0 0 \"begin\"",
                   "0 event 0 0 \"\"", "0 overload 0 0", "0 comment 0 0 \"a line\"", "0 comment 0 0 \"1;a line\""}));
  EXPECT_EQ(source_->head().start, (TraceStart{*startOfDays("44403.2500014306"), std::nullopt}));
  EXPECT_EQ(folder_.read("target.csv"),
            "$STARTTIME=44403.2500014306\r\n"
            "Start time: 26/07/2021 06:00:00.124\r\n"
            "\r\n"
            "/traces/drive.csv\r\n"
            "\r\n"
            "    Generated by ZELK-Converter Version " +
                getHostVersionText() +
                "\r\n"
                "    Data imported from /traces/drive.mf4\r\n"
                "\r\n"
                "-------------------------------------------------------------------------------\r\n"
                "   Glossary:\r\n"
                "     Rx: The frame was received\r\n"
                "     Tx: The frame was transmitted\r\n"
                "     DT: CAN or J1939 data frame\r\n"
                "     FD: CAN FD data frame\r\n"
                "     FB: CAN FD data frame with BRS bit set (Bit Rate Switch)\r\n"
                "     FE: CAN FD data frame with ESI bit set (Error State Indicator)\r\n"
                "     BI: CAN FD data frame with both BRS and ESI bits set\r\n"
                "     XL: CAN XL data frame\r\n"
                "     RR: Remote Request Frame\r\n"
                "     ST: Hardware Status change\r\n"
                "     ER: Error Frame\r\n"
                "     EV: Event. User-defined text, begins directly after 2-digit type indicator\r\n"
                "     Reserved column: Destination address of a J1939 message, if any\r\n"
                "-------------------------------------------------------------------------------\r\n"
                "\r\n" +
                kWide +
                "1;1.500;2;Rx;DT;0012;-;-;-;-;-;-;3;0A;B0;FF\r\n"
                "2;1.500;2;Rx;FB;00000012;-;-;-;-;-;-;3;0A;B0;FF;\"say \"\"a;b\"\"\"\r\n"
                "3;1.500;2;Rx;FB;00000012;-;-;-;-;-;-;3;0A;B0;FF; xlatr: data time=0.001500000 bus=2 id=12 "
                "flags=extended,received,fd,brs dlc=3 data=0AB0FF text=one\\ntwo\r\n"
                "4;0.000;0;None;EV;FFFFFFFF;-;-;-;-;-;-;0;begin\r\n"
                "5;0.000;0;None;EV;FFFFFFFF;-;-;-;-;-;-;0;\"\"\r\n"
                " xlatr: overload time=0.000000000\r\n"
                "a line\r\n"
                " xlatr: comment time=0.000000000 text=1;a line\r\n");
  EXPECT_EQ(account_.written(), 8U);
  EXPECT_EQ(account_.commented(Remark::KindNotHeld), (Account::Count{1, 0}));
  EXPECT_EQ(account_.noted(Remark::TimeRounded).frames, 3U);
}

TEST_F(CsvFrames, areWrittenWithAnySeparator) {
  const Texts expected = writeAndRead(someFrames(), StreamHead());
  for (const char* const separator : {",", "\t", "|"}) {
    EXPECT_EQ(writeAndRead(someFrames(), StreamHead(), SinkSettings{.separator = separator}), expected) << separator;
  }
}

// Their tables have no columns for it.
TEST_F(CsvFrames, ofXlComeBackFromNarrowTablesToo) {
  FrameBatch batch;
  Frame frame;
  frame.set(frame_flag::kXl);
  frame.dlc = 2;
  frame.data = kBytes;
  frame.attributes.set(FrameAttribute::Vcid, 7);
  batch.append(frame);
  StreamHead head;
  head.format = XLATR_FORMAT_ASC;
  EXPECT_EQ(writeAndRead(batch, head), Texts{"0 data 0 0 XL dlc2 [0AB0FF] vcid=7"});
  EXPECT_EQ(test::rowsOf(folder_.read("target.csv")),
            "1;0.000;0;None;XL;0000;-;3;0A;B0;FF; xlatr: data time=0.000000000 flags=xl dlc=2 data=0AB0FF vcid=7\r\n");
}

TEST_F(CsvFrames, areTheSameBytesOnBothWaysWhereNoQuirkHarmsThem) {
  const auto [compatible, complete] =
      test::bothTablesOf(folder_,
                         ";$FILEVERSION=3.0\n;$STARTTIME=44403.25\n;$COLUMNS=N,O,T,B,I,d,R,V,S,A,r,s,L,D\n"
                         "1  0.500 DT 1 123 Rx - - - - - - 2 01 02\n"
                         "2  0.600 DT 2 00012345 Tx 5 - - - - - 0\n"
                         "3  1.234 FB 3 00000123 Tx - - - - - - 9 00 01 02 03 04 05 06 07 08 09 0A 0B\n"
                         "4  1.500 XL 1 123 Tx - 0A 01 12345678 1 0 2 01 02 03\n"
                         "5  2.500 RR 1 123 Rx - - - - - - 8\n"
                         "power was cut here\n"
                         "6  3.500 ST 1 - Rx - - - - - - 4 00 04 00 14\n"
                         "7  4.500 EC 1 - Rx - - - - - - 2 60 80\n"
                         "8  5.500 ER 2 - Rx - - - - - - 5 02 00 20 30 40\n"
                         "9  12345678.901 ER 2 - Rx - - - - - - 5 02 01 20 30 40\n");
  EXPECT_EQ(complete, compatible);
}

TEST(CsvTables, areRecognisedByTheirColumnLine) {
  EXPECT_TRUE(looksLikeCsv("$STARTTIME=44403.25\r\n\r\nNumber;Time (ms);Bus\r\n"));
  EXPECT_TRUE(looksLikeCsv("\xEF\xBB\xBFtime_ns,kind\r\n1,data\r\n"));
  EXPECT_TRUE(looksLikeCsv("\n\"id\";\"time_ns\""));
  EXPECT_FALSE(looksLikeCsv(""));
  EXPECT_FALSE(looksLikeCsv("Number"));
  EXPECT_FALSE(looksLikeCsv("a,b\n1,2\ntime_ns,b\n"));
  EXPECT_FALSE(looksLikeCsv(";$FILEVERSION=2.1\n;   Number of frames: 1\n"));
}

TEST(CsvCapacities, knowWhichKindsHaveNoRow) {
  const auto capacities = csvCapacities();
  ASSERT_EQ(capacities.size(), 2U);
  EXPECT_EQ(capacities[0].version, 1.0);
  EXPECT_FALSE(capacities[0].holds(FrameKind::Overload));
  EXPECT_FALSE(capacities[0].holds(FrameKind::LinEvent));
  EXPECT_EQ(capacities[1].version, 2.0);
  EXPECT_TRUE(capacities[1].holds(FrameKind::Overload));
  EXPECT_EQ(capacities[1].resolutionNs, 1);
}

}  // namespace
}  // namespace xlatr
