#include "formats/asc/asc_plain_lines.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/asc/asc_frames.hpp"
#include "support/frame_text.hpp"
#include "support/mutated_lines.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

// The frame of a line in its plain form, as text.
std::optional<std::string> plainTextOf(std::string_view line) {
  PlainFields fields(line);
  Frame frame;
  PlainFrameBytes bytes{};
  if (!fields.takeScaled<9>(frame.timeNs)) {
    return std::nullopt;
  }
  if (!takePlainAscFrame(fields, bytes, frame)) {
    return std::nullopt;
  }
  return test::textOf(frame);
}

// The same of lines of any form: a tab is no plain separator.
std::vector<std::string> textsOfAnyForm(const std::vector<std::string>& lines) {
  const test::TempFolder folder;
  std::string log = "date Mon Jul 26 05:19:59.721 2021\nbase hex  timestamps absolute\n";
  for (std::string line : lines) {
    std::ranges::replace(line, ' ', '\t');
    log += line + "\n";
  }
  Account account;
  return test::textsOf(*openAscFrames(folder.write("log.asc", log)), account);
}

const std::vector<std::string_view> kPlainLines = {
    "   0.000001 1  123             Rx   d 8 00 11 22 33 44 55 66 77",
    "   1.500000 255  18ABCDEFx       Tx   d 3 0a B0 c1",
    "   1.500000 2  7FF             Rx   d 0",
    "   1.500000 2  7FF             Rx   d F 00 11 22 33 44 55 66 77",
    "   0.010000 1  123             Rx   d 2 0A B0  Length = 230000 BitCount = 118 ID = 291",
    "   0.010500 2  18ABCDEFx       Rx   d 2 FF FE  Length = 270000 BitCount = 138 ID = 413912559x",
    "   0.010000 CANFD   1 Rx        123                                   0 0 8  8 0A B0 12 34 56 78 9A BC        0   "
    " 0"
    "   200000        0        0        0        0        0",
    "   0.010500 CANFD   2 Tx   18ABCDEFx  Name                            1 1 9 12 00 01 02 03 04 05 06 07 08 09 0A 0B"
    "   113000  130   303000 0 0",
    "   0.010500 CANFD   2 Rx   7FF  1 0 d 32 00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13 14 15 16 17 "
    "18"
    " 19 1A 1B 1C 1D 1E 1F   113000  130   1000 0 0",
    "   0.010500 CANFD   2 Rx   7FF  0 0 0 0  0  0   4000 0 0",
    "   0.010500 CANFD   2 Rx   7FF  0 0 a 8  00 11 22 33 44 55 66 77  0  0   200000 0 0",
    "   0.010500 CANFD   2 Rx   7FF  0 0 3 3  00 11 22  0  0   3000",
};

TEST(AscPlainLines, areTaken) {
  for (const std::string_view line : kPlainLines) {
    EXPECT_TRUE(plainTextOf(line)) << line;
  }
  EXPECT_EQ(plainTextOf(kPlainLines[7]),
            "10500000 data 2 18ABCDEF x Tx FD BRS ESI dlc9 [000102030405060708090A0B] \"Name\"");
}

TEST(AscPlainLines, othersAreLeftToTheirParser) {
  for (const std::string_view line : {
           "   1.500000 1  123             Rx   r 8              ",
           "   1.500000 1  Name            Rx   d 1 00           ",
           "   1.500000 256  123           Rx   d 1 00           ",
           "   1.500000 1  800             Rx   d 1 00           ",
           "   1.500000 1  20000000x       Rx   d 1 00           ",
           "   1.500000 1  123             Xx   d 1 00           ",
           "   1.500000 1  123             RxTx d 1 00           ",
           "   1.500000 1  123             Rx   d 10 00 00 00 00 00 00 00 00",
           "   1.500000 1  123             Rx   d 2 00           ",
           "   1.500000 1  123             Rx   d 1 00  ID = 292 ",
           "   1.500000 1  123             Rx   d 1 00  ID = 291x",
           "   1.500000 1  123             Rx   d 1 00  ID = 0x123",
           "   1.500000 1  123             Rx   d 1 00  VALID = 291",
           "   1.500000 1  123             Rx   d 1 00  ID       ",
           "   1.500000 CANFD 1 Rx ErrorFrame                    ",
           "   1.500000 CANFD 1 Rx 123 0 2 1 1 00 0 0 1000",
           "   1.500000 CANFD 1 Rx 123 0 0 g 1 00 0 0 1000",
           "   1.500000 CANFD 1 Rx 123 0 0 f 65 00 0 0 1000",
           "   1.500000 CANFD 1 Rx 123 0 0 1 1 00",
           "   1.500000 CANFD 1 Rx 123 0 0 1 1 00 0 0 10",
           "   1.500000 CANFD 1 Rx 123 0 0 1 1 00 0 0 flags",
           "   1.500000 CANFD 1 Rx 123 0 0 1 1 00 0 0 1000x",
       }) {
    EXPECT_FALSE(plainTextOf(line)) << line;
  }
}

TEST(AscPlainLines, becomeTheFramesOfTheParserOfAllForms) {
  const test::TakenLines taken = test::takenOf(kPlainLines, 10, plainTextOf);
  test::expectSameTexts(taken.texts, textsOfAnyForm(taken.lines), taken.lines);
}

}  // namespace
}  // namespace xlatr
