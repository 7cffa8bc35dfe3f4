#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "conversions/conversion_support.hpp"

// What conversions from and to ASC do at their edges.
namespace xlatr::conversions {
namespace {

const std::string kHead = "base hex  timestamps absolute\n// version 7.0.0\n";

// The lines behind the header of the TRC file that the log becomes.
std::vector<std::string> converted(const std::string& log, const char* version, const std::string& file = "out.trc") {
  writeFile("in.asc", log);
  EXPECT_EQ(convert("in.asc", "out.trc", trcVersion(version).number).code, XLATR_SUCCESS);
  return linesBehindHeader(file, version);
}

class AscEdges : public testing::Test {
 protected:
  WorkingDirectory directory_;
};

TEST_F(AscEdges, aLineThatIsTooShortEndsTheConversion) {
  writeFile("in.asc", kHead + "0.1 1 100 Rx d 1 01\n0.2 1 100 Rx d 2 01\n0.3 1 100 Rx d 1 03\n");
  const Outcome outcome = convert("in.asc", "out.trc", 2.1);
  EXPECT_EQ(outcome.status, 3);
  EXPECT_EQ(outcome.text, "invalid vector subscript ");
  EXPECT_EQ(linesBehindHeader("out.trc", "2.1"),
            std::vector<std::string>{"      1       100.000 DT 1      0100 Rx -  1    01"});
}

TEST_F(AscEdges, everyLineThatIsNoFrameIsAComment) {
  EXPECT_EQ(converted(kHead + "\n0.5 CAN 1 Status:chip status\nEnd TriggerBlock\n", "2.1"),
            (std::vector<std::string>{";", ";0.5 CAN 1 Status:chip status", ";End TriggerBlock"}));
}

TEST_F(AscEdges, commentsKeepTheirSlashesOnTheWayThroughTrc) {
  EXPECT_EQ(converted(kHead + "// a comment here\n0.1 1 100 Rx d 1 01\n", "2.1").front(), ";// a comment here");
  // A TRC reader passes comments over.
  expectSuccess(convert("out.trc", "back.asc", 7.0, XLATR_FORMAT_ASC), {"back.asc"});
  EXPECT_EQ(splitLines(readFile("back.asc")).back(), "   0.100000 1  100             Rx   d 1 01");
}

TEST_F(AscEdges, aLineThatIsNotUnderstoodHasSlashesInAsc) {
  writeFile("in.trc", ";$FILEVERSION=1.1\n1) 1 Rx 0123 1 AA\nbroken line\n");
  expectSuccess(convert("in.trc", "out.asc", 8.0, XLATR_FORMAT_ASC), {"out.asc"});
  EXPECT_EQ(splitLines(readFile("out.asc")).back(), "// broken line");
}

TEST_F(AscEdges, relativeTimesAreSummedOverFramesAlone) {
  EXPECT_EQ(
      converted("base hex  timestamps relative\n// version 7.0.0\n0.1 1 100 Rx d 0\n9.0 x\n0.2 1 100 Rx d 0\n", "2.1"),
      (std::vector<std::string>{"      1       100.000 DT 1      0100 Rx -  0    ", ";9.0 x",
                                "      2       300.000 DT 1      0100 Rx -  0    "}));
}

TEST_F(AscEdges, relativeTimesAreSummedAlsoOverABusWhoseFileCantBeOpened) {
  writeFile("in.asc",
            "base hex  timestamps relative\n// version 7.0.0\n1.0 1 100 Rx d 0\n1.0 2 100 Rx d 0\n1.0 1 100 Rx d 0\n");
  std::filesystem::create_directory("out_BUS2.trc");
  EXPECT_EQ(convert("in.asc", "out.trc", 2.0).code, XLATR_FAILED);
  EXPECT_EQ(linesBehindHeader("out_BUS1.trc", "2.0"),
            (std::vector<std::string>{"      1      1000.000 DT     0100 Rx 0  ",
                                      "      2      3000.000 DT     0100 Rx 0  "}));
}

TEST_F(AscEdges, fdFramesReachATrcVersionThatHasNone) {
  EXPECT_EQ(
      converted("base hex  timestamps absolute\n// version 8.1.0\n"
                "0.1 CANFD 1 Rx 100 0 0 9 12 01 02 03 04 05 06 07 08 09 0A 0B 0C 0 0 1000 0 0 0 0 0\n",
                "1.3"),
      std::vector<std::string>{"      1)      100.000 1  Rx        0100 -  12   01 02 03 04 05 06 07 08 09 0A 0B 0C"});
}

TEST_F(AscEdges, bus17IsKeptWithAWarning) {
  writeFile("in.asc", kHead + "0.1 17 100 Rx d 1 01\n");
  expectSuccess(convert("in.asc", "out.trc", 2.1), {"out.trc"},
                "The Converted file 'out.trc' contents at least one invalid BUS number: 17.\nOnly BRIX trace files "
                "with bus numbers from 1 to 16 are supported ");
}

TEST_F(AscEdges, aMessageOnBus0GoesToTheFileThatWasWrittenLast) {
  const std::string log =
      kHead + "0.1 2 100 Rx d 1 01\n0.2 0 100 Rx d 1 02\n0.3 1 100 Rx d 1 03\n0.4 0 100 Rx d 1 04\n";
  writeFile("in.asc", log);
  expectSuccess(convert("in.asc", "out.trc", 2.0), {"out_BUS2.trc", "out_BUS1.trc"});
  EXPECT_EQ(linesBehindHeader("out_BUS2.trc", "2.0"),
            (std::vector<std::string>{"      1       100.000 DT     0100 Rx 1  01",
                                      "      2       200.000 DT     0100 Rx 1  02"}));
  EXPECT_EQ(linesBehindHeader("out_BUS1.trc", "2.0"),
            (std::vector<std::string>{"      1       300.000 DT     0100 Rx 1  03",
                                      "      2       400.000 DT     0100 Rx 1  04"}));
}

TEST_F(AscEdges, aFirstMessageOnBus0HasNoFileToGoTo) {
  writeFile("in.asc", kHead + "0.1 0 100 Rx d 1 01\n");
  const Outcome outcome = convert("in.asc", "out.trc", 2.0);
  EXPECT_EQ(outcome.status, 3);
  EXPECT_EQ(outcome.text, "Writer is not initialized ");
  EXPECT_TRUE(outcome.files.empty());
}

TEST_F(AscEdges, linesBeforeTheFirstFrameWaitForItsFile) {
  const std::string log = kHead + "first comment\n\nsecond comment\n0.1 3 100 Rx d 1 01\n";
  EXPECT_EQ(converted(log, "2.0", "out_BUS3.trc"),
            (std::vector<std::string>{";first comment", ";", ";second comment",
                                      "      1       100.000 DT     0100 Rx 1  01"}));
}

TEST_F(AscEdges, aLogOfCommentsAloneOpensNoFile) {
  writeFile("in.asc", kHead + "first comment\nsecond comment\n");
  expectSuccess(convert("in.asc", "out.trc", 2.0), {});
  EXPECT_EQ(directory_.names(), std::vector<std::string>{"in.asc"});
}

TEST_F(AscEdges, aLogWithoutAHeadHasNoMessages) {
  writeFile("in.asc", "base hex  timestamps absolute\n0.1 1 100 Rx d 1 01\n");
  expectSuccess(convert("in.asc", "out.trc", 2.1), {"out.trc"});
  EXPECT_TRUE(linesBehindHeader("out.trc", "2.1").empty());
}

TEST_F(AscEdges, aVersionThatNobodyKnowsHasNoFrames) {
  EXPECT_EQ(converted("base hex  timestamps absolute\n// version 5.0\n0.1 1 100 Rx d 1 01\n", "2.1"),
            std::vector<std::string>{";0.1 1 100 Rx d 1 01"});
}

TEST_F(AscEdges, theNewestVersionIsWrittenInTheFormOf8) {
  writeFile("in.trc", ";$FILEVERSION=1.1\n1) 1 Rx 0123 1 AA\n");
  expectSuccess(convert("in.trc", "out.asc", std::nullopt, XLATR_FORMAT_ASC), {"out.asc"});
  EXPECT_EQ(splitLines(readFile("out.asc")).at(3), "// version 8.1.0");
}

TEST_F(AscEdges, twoBlanksInFrontOfDataMakeNoDifference) {
  EXPECT_EQ(converted(kHead + "  0.1  1  100  Rx   d  2   0A\t0B  \n", "2.1"),
            std::vector<std::string>{"      1       100.000 DT 1      0100 Rx -  2    0A 0B"});
}

}  // namespace
}  // namespace xlatr::conversions
