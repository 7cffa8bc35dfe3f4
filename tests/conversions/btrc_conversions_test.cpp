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

// Converts these lines to a binary trace and back to a 2.1 file, and returns the lines of that.
Lines throughBtrc(const Lines& lines) {
  const WorkingDirectory directory;
  writeFile("in.trc", trc21(lines));
  expectSuccess(convert("in.trc", "middle.btrc", std::nullopt, XLATR_FORMAT_BTRC), {"middle.btrc"});
  expectSuccess(convert("middle.btrc", "out.trc", 2.1), {"out.trc"});
  return linesAfterHeader("out.trc", "2.1");
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

// A sent record takes the DLC for the number of bytes that it has room for, rounded up to a multiple of 4.
TEST(TrcToBtrcToTrc, keepsOnly12Or16BytesOfSentFdFrames) {
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

// A received remote frame declares room for data that it does not have, so that the record after it begins too early
// for a reader. From the next block on all is well again, unless what stands there swallows that as well.
TEST(TrcToBtrcToTrc, losesWhatFollowsAReceivedRemoteFrameWithALength) {
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
  Lines before = linesAfterHeader("first.trc", "2.1");
  const Lines after = linesAfterHeader("out.trc", "2.1");
  EXPECT_EQ(before.size(), 50000U);
  ASSERT_EQ(after.size(), before.size());
  for (std::size_t index = 0; index < before.size(); ++index) {
    // Error frames of five bytes have their type as identifier after a binary trace.
    if (before[index].find(" ER ") == std::string::npos) {
      ASSERT_EQ(after[index], before[index]);
    }
  }
}

// A binary trace that another program wrote: every frame of the same traffic in text form arrives.
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
  const Lines expected = linesAfterHeader("fromText.trc", "2.1");
  EXPECT_EQ(expected.size(), 20000U);
  EXPECT_EQ(linesAfterHeader("fromBinary.trc", "2.1"), expected);
  EXPECT_EQ(splitLines(readFile("fromText.trc"))[1], splitLines(readFile("fromBinary.trc"))[1]) << "the start time";
}

TEST(BtrcToTrc, goesOnAfterDamagedBlocks) {
  const WorkingDirectory directory;
  tracegen::RecordingOptions options;
  options.maxMessages = 20000;
  options.form = tracegen::Form::Btrc;
  options.damageRate = 3000;
  tracegen::generateFile(options, "in.btrc");
  const Outcome outcome = convert("in.btrc", "out.trc", 2.1);
  EXPECT_EQ(outcome.code, XLATR_SUCCESS) << outcome.text;
  EXPECT_GT(linesAfterHeader("out.trc", "2.1").size(), 200U);
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
