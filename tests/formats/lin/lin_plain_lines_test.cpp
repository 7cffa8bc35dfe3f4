#include "formats/lin/lin_plain_lines.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/lin/lin_frames.hpp"
#include "support/frame_text.hpp"
#include "support/mutated_lines.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

std::optional<std::string> plainTextOf(std::string_view line) {
  Frame frame;
  PlainFrameBytes bytes{};
  return takePlainLinFrame(line, bytes, frame) ? std::optional(test::textOf(frame)) : std::nullopt;
}

// The same of lines of any form: words in lower case are not plain.
std::vector<std::string> textsOfAnyForm(const std::vector<std::string>& lines) {
  const test::TempFolder folder;
  std::string text = ";$FILEVERSION=1.1\n";
  for (std::string line : lines) {
    line[line.find("ub ") - 1] |= 0x20;
    text += line + "\n";
  }
  Account account;
  return test::textsOf(*openLinFrames(folder.write("trace.ltrc", text)), account);
}

const std::vector<std::string_view> kPlainLinLines = {
    "     1)       1000 Pub 2A 2 01 02                       7C CL",
    "     2)  123456789 Sub 3F 8 01 02 03 04 05 06 07 08     1FF EH",
    "3) 123456789012345 Sub 0  0                             00 CL ",
    "     4)       1000 Pub 12345678 1 FF FFFFFFFF EH",
};

TEST(LinPlainLines, areTaken) {
  for (const std::string_view line : kPlainLinLines) {
    EXPECT_TRUE(plainTextOf(line)) << line;
  }
  EXPECT_EQ(plainTextOf(kPlainLinLines[0]), "1000000 lin 0 2A Tx dlc2 [0102] checksum=124 checksum_model=1");
}

TEST(LinPlainLines, othersAreLeftToTheirParser) {
  for (const std::string_view line : {
           "",
           "     1)       1000 --- -- - Wake-up -- --           ",
           "     1)      -1000 Pub 2A 2 01 02           7C CL   ",
           "     1)    1000.00 Pub 2A 2 01 02           7C CL   ",
           "     1)       1000 --- 2A 2 01 02           7C CL   ",
           "     1)       1000 SubAL 2A 2 01 02         7C CL   ",
           "     1)       1000 Pub 2Ax 2 01 02          7C CL   ",
           "     1)       1000 Pub -- 2 01 02           7C CL   ",
           "     1)       1000 Pub 2A 65 01 02          7C CL   ",
           "     1)       1000 Pub 2A 3 01 02           7C CL   ",
           "     1)       1000 Pub 2A 2 -- --           7C CL   ",
           "     1)       1000 Pub 2A 2 01 02           xx CL   ",
           "     1)       1000 Pub 2A 2 01 02           7C AU   ",
           "     1)       1000 Pub 2A 2 01 02           7C CL CK",
           "     1)       1000 Pub 2A 2 01 02           7C      ",
       }) {
    EXPECT_FALSE(plainTextOf(line)) << line;
  }
}

TEST(LinPlainLines, becomeTheFramesOfTheParserOfAllForms) {
  const test::TakenLines taken = test::takenOf(kPlainLinLines, 20, plainTextOf);
  test::expectSameTexts(taken.texts, textsOfAnyForm(taken.lines), taken.lines);
}

}  // namespace
}  // namespace xlatr
