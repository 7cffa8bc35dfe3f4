#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "conversions/conversion_support.hpp"
#include "support/btrc_image.hpp"
#include "tracegen/generator.hpp"

// Whole conversions from and to binary traces.
namespace xlatr::conversions {
namespace {

using namespace test::btrc;
using Lines = std::vector<std::string>;

constexpr char kStartDays[] = "46347.5515739";  // a little before kStart

std::string trc21(const Lines& lines) {
  Lines all = {";$FILEVERSION=2.1", std::string(";$STARTTIME=") + kStartDays, ";$COLUMNS=N,O,T,B,I,d,R,L,D"};
  all.insert(all.end(), lines.begin(), lines.end());
  return joinLines(all);
}

// From TRC and back ---------------------------------------------------------------------------------------------------

// The lines of a 2.1 file made of these by way of a binary trace.
Lines throughBtrc(const Lines& lines) {
  const WorkingDirectory directory;
  writeFile("in.trc", trc21(lines));
  expectSuccess(convert("in.trc", "middle.btrc", std::nullopt, XLATR_FORMAT_BTRC), {"middle.btrc"});
  expectSuccess(convert("middle.btrc", "out.trc", 2.1), {"out.trc"});
  return linesBehindHeader("out.trc", "2.1");
}

TEST(TrcToBtrcToTrc, keepsFramesOfEveryKindAndDirection) {
  const Lines lines = {
      "      1         0.000 DT 1      0100 Rx -  0    ",
      "      2         1.500 DT 2      0101 Tx -  8    01 02 03 04 05 06 07 08",
      "      3         2.000 DT 3  18FEF100 Rx -  3    01 02 03",
      "      4         3.000 FD 1      0102 Rx -  9    01 02 03 04 05 06 07 08 09 0A 0B 0C",
      "      5         4.000 FB 1  18FEF101 Tx -  9    01 02 03 04 05 06 07 08 09 0A 0B 0C",
      "      6         5.000 FE 1      0103 Rx -  2    01 02",
      "      7         6.000 BI 1      0104 Tx -  8    01 02 03 04 05 06 07 08",
      "      8         7.000 RR 1      0105 Rx -  0    ",
      "      9         8.000 RR 16     0106 Tx -  8    ",
      "     10         9.000 ST 1         - Rx -  4    00 04 00 18",
      "     11        10.000 EC 1         - Rx -  2    07 60",
  };
  EXPECT_EQ(throughBtrc(lines), lines);
}

TEST(TrcToBtrcToTrc, errorFramesKeepAllButTheirTypeWhichStandsInTheOldVersions) {
  EXPECT_EQ(throughBtrc({"      1        11.000 ER 1         - Rx -  5    02 01 0B 07 60"}),
            Lines{"      1        11.000 ER 1         - Rx -  4    01 0B 07 60"});
  const WorkingDirectory directory;
  writeFile("in.trc", trc21({"      1        11.000 ER 1         - Rx -  5    02 01 0B 07 60"}));
  expectSuccess(convert("in.trc", "middle.btrc", std::nullopt, XLATR_FORMAT_BTRC), {"middle.btrc"});
  expectSuccess(convert("middle.btrc", "out.trc", 1.3), {"out.trc"});
  EXPECT_EQ(linesBehindHeader("out.trc", "1.3"), Lines{"      1)       11.000 1  Error     0002 -  4    01 0B 07 60"});
}

std::string frameLine(std::size_t number, const char* kind, const char* direction, unsigned dlc, std::size_t bytes) {
  std::string line = std::to_string(number);
  line.insert(0, 7 - line.size(), ' ');
  std::string time = std::to_string(number) + ".000";
  time.insert(0, 13 - time.size(), ' ');
  std::string code = std::to_string(dlc);
  code.resize(4, ' ');
  line += " " + time + " " + kind + " 1      0123 " + direction + " -  " + code;
  std::string data;
  for (std::size_t index = 0; index < bytes; ++index) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    data += std::string(" ") + kDigits[index / 16 % 16] + kDigits[index % 16];
  }
  return line + (data.empty() ? " " : data);
}

TEST(TrcToBtrcToTrc, keepsFramesOfEveryLength) {
  constexpr std::size_t kLengths[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64};
  Lines lines;
  for (unsigned dlc = 0; dlc < 16; ++dlc) {
    lines.push_back(frameLine(lines.size() + 1, "FD", "Rx", dlc, kLengths[dlc]));
    if (dlc <= 8) {
      lines.push_back(frameLine(lines.size() + 1, "DT", "Rx", dlc, kLengths[dlc]));
      lines.push_back(frameLine(lines.size() + 1, "DT", "Tx", dlc, kLengths[dlc]));
      lines.push_back(frameLine(lines.size() + 1, "FB", "Tx", dlc, kLengths[dlc]));
    }
  }
  EXPECT_EQ(throughBtrc(lines), lines);
}

// A sent record has room for as many bytes as the DLC is as a number, up to the next multiple of 4.
TEST(TrcToBtrcToTrc, sentFdFramesKeep12Or16Bytes) {
  const struct {
    unsigned dlc;
    std::size_t length;
    std::size_t left;
  } cases[] = {{9, 12, 12}, {10, 16, 12}, {11, 20, 12}, {12, 24, 12}, {13, 32, 16}, {14, 48, 16}, {15, 64, 16}};
  Lines lines;
  Lines expected;
  for (const auto& test : cases) {
    expected.push_back(frameLine(lines.size() + 1, "FB", "Tx", test.dlc, test.left));
    lines.push_back(frameLine(lines.size() + 1, "FB", "Tx", test.dlc, test.length));
  }
  EXPECT_EQ(throughBtrc(lines), expected);
}

TEST(TrcToBtrcToTrc, eventsAreLost) {
  const std::string frame = frameLine(1, "DT", "Rx", 1, 1);
  EXPECT_EQ(throughBtrc({"      1         0.000 EV 1 Ignition on", frame}), Lines{frame});
}

// A received remote frame declares room for data that it does not have, so that the record behind it begins too early
// for a reader. From the next block on all is well again, unless what stands there swallows that as well.
TEST(TrcToBtrcToTrc, receivedRemoteFrameWithALengthSwallowsWhatFollows) {
  Lines lines = {frameLine(1, "RR", "Rx", 8, 0)};
  for (std::size_t index = 1; index < 2000; ++index) {
    lines.push_back(frameLine(index + 1, "DT", "Rx", 4, 4));
  }
  const Lines back = throughBtrc(lines);
  ASSERT_FALSE(back.empty());
  EXPECT_EQ(back.front(), lines.front());
  EXPECT_LT(back.size(), lines.size());
}

TEST(TrcToBtrcToTrc, keepsTensOfThousandsOfFramesOverManyBlocks) {
  const WorkingDirectory directory;
  tracegen::RecordingOptions options;
  options.traffic = {.seed = 11,
                     .buses = 4,
                     .identifiers = 20,
                     .fdShare = 0,
                     .xlShare = 0,
                     .remoteRate = 0,
                     .disturbanceRate = 20,
                     .eventRate = 0,
                     .commentRate = 50};
  options.maxMessages = 50000;
  tracegen::generateFile(options, "in.trc");
  expectSuccess(convert("in.trc", "first.trc", 2.1), {"first.trc"});
  expectSuccess(convert("in.trc", "middle.btrc", std::nullopt, XLATR_FORMAT_BTRC), {"middle.btrc"});
  EXPECT_EQ(readFile("middle.btrc").size() % kBlock, 0U);
  EXPECT_GT(readFile("middle.btrc").size(), 100 * kBlock);
  expectSuccess(convert("middle.btrc", "out.trc", 2.1), {"out.trc"});
  Lines before = linesBehindHeader("first.trc", "2.1");
  const Lines after = linesBehindHeader("out.trc", "2.1");
  EXPECT_EQ(before.size(), 50000U);
  ASSERT_EQ(after.size(), before.size());
  for (std::size_t index = 0; index < before.size(); ++index) {
    // Error frames of five bytes have their type as identifier behind a binary trace.
    if (before[index].find(" ER ") == std::string::npos) {
      ASSERT_EQ(after[index], before[index]);
    }
  }
}

// A binary trace that another program wrote: every frame of the text form of the same traffic comes through.
TEST(BtrcToTrc, readsWhatTheGeneratorWrites) {
  const WorkingDirectory directory;
  tracegen::RecordingOptions options;
  options.traffic = {.seed = 3,
                     .buses = 3,
                     .identifiers = 20,
                     .fdShare = 40,
                     .xlShare = 0,
                     .remoteRate = 100,
                     .disturbanceRate = 0,
                     .eventRate = 0,
                     .commentRate = 0};
  options.maxMessages = 20000;
  tracegen::generateFile(options, "in.trc");
  options.form = tracegen::Form::Btrc;
  tracegen::generateFile(options, "in.btrc");
  expectSuccess(convert("in.trc", "fromText.trc", 2.1), {"fromText.trc"});
  expectSuccess(convert("in.btrc", "fromBinary.trc", 2.1), {"fromBinary.trc"});
  const Lines expected = linesBehindHeader("fromText.trc", "2.1");
  EXPECT_EQ(expected.size(), 20000U);
  EXPECT_EQ(linesBehindHeader("fromBinary.trc", "2.1"), expected);
  EXPECT_EQ(splitLines(readFile("fromText.trc"))[1], splitLines(readFile("fromBinary.trc"))[1]) << "the start time";
}

TEST(BtrcToTrc, goesOnBehindDamagedBlocks) {
  const WorkingDirectory directory;
  tracegen::RecordingOptions options;
  options.maxMessages = 20000;
  options.form = tracegen::Form::Btrc;
  options.damageRate = 3000;
  tracegen::generateFile(options, "in.btrc");
  const Outcome outcome = convert("in.btrc", "out.trc", 2.1);
  EXPECT_EQ(outcome.code, XLATR_SUCCESS) << outcome.text;
  EXPECT_GT(linesBehindHeader("out.trc", "2.1").size(), 200U);
}

// From BTRC -----------------------------------------------------------------------------------------------------------

std::string image() {
  return filled(head() + plainFrame(kStart + 1000, 0) + record(0x8002, "text") +
                received(3, kStart + 2500, frameInfo(1, 9, 0x30, 0x200), "123456789012") +
                sent(5, kStart + 3000, frameInfo(0, 8, 1, 0x300), ""));
}

TEST(BtrcToTrc, messageOnBus0GoesToTheFileOfBus1) {
  const WorkingDirectory directory;
  writeFile("in.btrc", image());
  expectSuccess(convert("in.btrc", "out.trc", 2.0), {"out_BUS1.trc", "out_BUS2.trc"});
  expectSuccess(convert("in.btrc", "old.trc", 1.1), {"old_BUS1.trc", "old_BUS2.trc"});
}

TEST(BtrcToTrc, highBusesGiveNoWarning) {
  const WorkingDirectory directory;
  writeFile("in.btrc", filled(head() + plainFrame(kStart, 16) + plainFrame(kStart, 255)));
  expectSuccess(convert("in.btrc", "out.trc", 2.1), {"out.trc"});
  const Lines lines = linesBehindHeader("out.trc", "2.1");
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0].substr(0, 28), "      1         0.000 DT 17 ");
  EXPECT_EQ(lines[1].substr(0, 28), "      2         0.000 DT 256");
}

TEST(BtrcToTrc, fileWithNothingToWriteHasAHeader) {
  const WorkingDirectory directory;
  writeFile("in.btrc", filled(head() + record(0x8002, "text")));
  expectSuccess(convert("in.btrc", "out.trc", 2.1), {"out.trc"});
  EXPECT_EQ(linesBehindHeader("out.trc", "2.1"), Lines());
  expectSuccess(convert("in.btrc", "split.trc", 2.0), {});
}

TEST(BtrcToTrc, impossibleDateIsReportedInFileAndResult) {
  const WorkingDirectory directory;
  writeFile("in.btrc", filled(info() + calibration(kStart, 13) + plainFrame(1000)));
  expectSuccess(convert("in.btrc", "out.trc", 2.1), {"out.trc"},
                "The source file 'in.btrc' had an invalid calculation time record (RTC).\n"
                "This information was replaced with the creation date/time of the source file.\n ");
  EXPECT_EQ(linesBehindHeader("out.trc", "2.1"),
            (Lines{";-->INVALID CALCULATION TIME RECORD (RTC). Raw data: 18 00 03 80 C6 29 66 22 C8 20 E3 00 EA 07 0D "
                   "15 0D 0E 0F 00 06 12 0F 00 .",
                   ";-->RTC replaced by creation information of the file in.btrc.",
                   "      1         1.000 DT 1      0123 Rx -  4    01 02 03 04"}));
}

TEST(BtrcToTrc, impossibleDateEndsAConversionThatSplitsByBus) {
  const WorkingDirectory directory;
  writeFile("in.btrc", filled(info() + calibration(kStart, 13) + plainFrame(1000)));
  const Outcome outcome = convert("in.btrc", "out.trc", 2.0);
  EXPECT_EQ(outcome.status, XLATR_FAILED);
  EXPECT_EQ(outcome.text, "Writer is not initialized ");
}

TEST(BtrcToTrc, fileThatIsNoneGivesAFileWithoutLines) {
  const WorkingDirectory directory;
  writeFile("in.btrc", "no binary trace at all, but long enough to look like one");
  const Outcome outcome = convert("in.btrc", "out.trc", 2.1);
  EXPECT_EQ(outcome.status, XLATR_SUCCESS) << outcome.text;
  EXPECT_EQ(readFile("out.trc"), "");
}

TEST(BtrcToAsc, writesFramesInBothForms) {
  const WorkingDirectory directory;
  writeFile("in.btrc", image());
  expectSuccess(convert("in.btrc", "old.asc", 7.0, XLATR_FORMAT_ASC), {"old.asc"});
  EXPECT_EQ(readFile("old.asc"),
            "date Sat Nov 21 13:14:15.988 2026\r\nbase hex  timestamps absolute\r\nno internal events logged\r\n"
            "// version 7.0.0\r\n"
            "   0.001000 1  123             Rx   d 4 01 02 03 04\r\n"
            "   0.003000 1  300             Tx   r 8\r\n");
  expectSuccess(convert("in.btrc", "new.asc", 8.0, XLATR_FORMAT_ASC), {"new.asc"});
  const Lines lines = splitLines(readFile("new.asc"));
  ASSERT_EQ(lines.size(), 7U);
  EXPECT_EQ(lines[5],
            "   0.002500 CANFD   2 Rx        200                                   1 0 9 12 31 32 33 34 35 36 37 "
            "38 39 30 31 32        0    0     3000        0        0        0        0        0");
}

TEST(BtrcToCsv, writesFramesAsRows) {
  const WorkingDirectory directory;
  writeFile("in.btrc", image());
  expectSuccess(convert("in.btrc", "out.csv", std::nullopt, XLATR_FORMAT_CSV), {"out.csv"});
  const Lines lines = splitLines(readFile("out.csv"));
  ASSERT_GT(lines.size(), 3U);
  EXPECT_EQ(Lines(lines.end() - 3, lines.end()),
            (Lines{"1;1.000;1;Rx;DT;0123;-;4;01;02;03;04",
                   "2;2.500;2;Rx;FB;0200;-;12;31;32;33;34;35;36;37;38;39;30;31;32", "3;3.000;1;Tx;RR;0300;-;8;"}));
}

// Damage --------------------------------------------------------------------------------------------------------------

TEST(BtrcDamage, anyFlippedByteAndAnyLengthEndsWell) {
  const WorkingDirectory directory;
  const std::string whole = head() + plainFrame(kStart + 1) +
                            sent(4, kStart + 7, frameInfo(0, 8, 0, 0x7FF), "12345678") +
                            record(7, number(kStart, 8) + number(0, 8)) + record(0x8002, "text") +
                            received(3, kStart + 9, frameInfo(0, 9, 0x30, 1), "123456789012") + filler(40);
  for (std::size_t index = 0; index < whole.size(); ++index) {
    std::string damaged = whole;
    damaged[index] = static_cast<char>(~damaged[index]);
    writeFile("in.btrc", damaged);
    const Outcome flipped = convert("in.btrc", "out.trc", 2.1);
    EXPECT_EQ(flipped.status, XLATR_SUCCESS) << index << ": " << flipped.text;
    writeFile("in.btrc", whole.substr(0, index));
    const Outcome cut = convert("in.btrc", "out.trc", 2.1);
    EXPECT_EQ(cut.status, XLATR_SUCCESS) << index << ": " << cut.text;
  }
}

}  // namespace
}  // namespace xlatr::conversions
