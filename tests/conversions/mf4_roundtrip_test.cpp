// TRC to MF4 and back, in every layout and version.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "conversions/conversion_support.hpp"
#include "support/conversion.hpp"
#include "support/mf4_checker.hpp"
#include "tracegen/generator.hpp"

namespace xlatr::conversions {
namespace {

namespace fs = std::filesystem;

struct Layout {
  bool sorted;
  bool zipped;
  double version;
};

class Mf4RoundTrip : public testing::TestWithParam<std::tuple<bool, bool, double>> {
 protected:
  [[nodiscard]] static Layout layout() {
    return {.sorted = std::get<0>(GetParam()), .zipped = std::get<1>(GetParam()), .version = std::get<2>(GetParam())};
  }

  // Converts the TRC file into "out.mf4", which must be sound, and that into "back.trc", which has this warning.
  static void convertThereAndBack(const std::string& source, std::string_view warning = "") {
    test::Options options{.format = XLATR_FORMAT_MF4, .items = {}};
    options.version(layout().version);
    if (layout().sorted) {
      options.flag(XLATR_OPTION_SORTED);
    }
    if (layout().zipped) {
      options.flag(XLATR_OPTION_ZIPPED);
    }
    test::Result result;
    ASSERT_EQ(options.convert(source, "out.mf4", result), XLATR_SUCCESS) << result.text();
    const test::Mf4Report report = test::checkMf4(readFile("out.mf4"));
    EXPECT_EQ(faultsOf(report), "");
    EXPECT_EQ(report.version, layout().version);
    expectSuccess(convert("out.mf4", "back.trc", 2.1), {"back.trc"}, warning);
  }
};

std::string nameOf(const testing::TestParamInfo<Mf4RoundTrip::ParamType>& parameters) {
  const auto& [sorted, zipped, version] = parameters.param;
  return std::string(sorted ? "sorted" : "unsorted") + (zipped ? "Zipped" : "Plain") +
         std::to_string(static_cast<int>(version * 100.0 + 0.5));
}

INSTANTIATE_TEST_SUITE_P(AllLayouts, Mf4RoundTrip,
                         testing::Combine(testing::Bool(), testing::Bool(), testing::Values(4.1, 4.11, 4.2)), nameOf);

// A line of a TRC 2.1 file, without its number.
std::string dataLine(const char* head, int first, int count) {
  std::string line = head;
  for (int index = 0; index < count; ++index) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned>(first + index) & 0xFFU;
    line += index == 0 ? "" : " ";
    line += kDigits[byte >> 4U];
    line += kDigits[byte & 0xFU];
  }
  return line;
}

// What is left of tests/golden/trc-mf4/every-frame after the way there and back. Errors keep their type and position:
// the first byte is gone, and the identifier that holds the type has no column here.
const std::vector<std::string> kDataFrames = {
    "        0.000 DT 1      0100 Rx -  8    00 11 22 33 44 55 66 77",
    "        1.250 DT 2  18FEF100 Tx -  8    FF EE DD CC BB AA 99 88",
    dataLine("        2.500 FD 3      0501 Rx -  9    ", 1, 12),
    dataLine("        2.750 FB 1  18DA00F1 Tx -  10   ", 1, 16),
    dataLine("        3.001 FE 2      0503 Rx -  15   ", 1, 64),
    "        3.002 BI -  1FFFFFFF Tx -  0    ",
    "        0.500 DT 0      0400 Rx -  0    ",
    dataLine("        4.000 FD 1      0020 Rx -  11   ", 0x20, 20),
    dataLine("        4.250 FD 1      0024 Rx -  12   ", 0x24, 24),
    dataLine("        4.500 FD 1      0032 Rx -  13   ", 0x32, 32),
    dataLine("        4.750 FD 1      0048 Rx -  14   ", 0x48, 48),
    " 12345678.901 DT 17     07FF Tx -  1    EE",
};
const std::vector<std::string> kRemoteFrames = {
    "        1.500 RR 1      0200 Rx -  8    ",
    "        2.000 RR 16 00012345 Tx -  2    ",
};
const std::vector<std::string> kErrorFrames = {
    "        3.125 ER 2         - Rx -  4    00 20 00 00",  // at bit 29
    "        3.250 ER 1         - Rx -  4    00 02 00 00",  // at no known bit, which is 255 in the file
    "        3.375 ER 44        - Rx -  4    00 03 00 00",  // the low byte of bus 300
    "        3.500 ER 1         - Rx -  4    00 FF 00 00",
};

// Lines of one kind, by their index.
struct Pick {
  const std::vector<std::string>& lines;
  std::size_t first;
  std::size_t count;
};

std::vector<std::string> numbered(const std::vector<Pick>& picks) {
  std::vector<std::string> lines;
  for (const Pick& pick : picks) {
    for (std::size_t index = 0; index < pick.count; ++index) {
      const std::string number = std::to_string(lines.size() + 1);
      lines.push_back(std::string(7 - number.size(), ' ') + number + " " + pick.lines.at(pick.first + index));
    }
  }
  return lines;
}

TEST_P(Mf4RoundTrip, bringsBackEveryKindOfFrame) {
  const WorkingDirectory directory;
  fs::copy_file(fs::path(XLATR_GOLDEN_DIR) / "trc-mf4/every-frame/source.trc", "in.trc");
  ASSERT_NO_FATAL_FAILURE(
      convertThereAndBack("in.trc",
                          "The Converted file 'back.trc' contents at least one invalid BUS number: 17 44 255.\n"
                          "Only BRIX trace files with bus numbers from 1 to 16 are supported "));
  // Sorted groups are merged by time, ties apart; within a group the order of the file stays, so the data frame at 0.5
  // holds the errors up no longer than it is held up itself.
  const std::vector<std::string> expected = layout().sorted ? numbered({{kDataFrames, 0, 2},
                                                                        {kRemoteFrames, 0, 2},
                                                                        {kDataFrames, 2, 5},
                                                                        {kErrorFrames, 0, 4},
                                                                        {kDataFrames, 7, 5}})
                                                            : numbered({{kDataFrames, 0, 2},
                                                                        {kRemoteFrames, 0, 2},
                                                                        {kDataFrames, 2, 4},
                                                                        {kErrorFrames, 0, 4},
                                                                        {kDataFrames, 6, 6}});
  EXPECT_EQ(linesAfterHeader("back.trc", "2.1"), expected);
}

TEST_P(Mf4RoundTrip, ordersFramesOfOneTimeByTheirKind) {
  const WorkingDirectory directory;
  writeFile("in.trc",
            ";$FILEVERSION=2.1\r\n;$STARTTIME=45658.25\r\n;$COLUMNS=N,O,T,B,I,d,R,L,D\r\n"
            "1 5.000 ER 1 - Rx - 5 01 00 03 00 00\r\n"
            "2 5.000 RR 1 0200 Rx - 8\r\n"
            "3 5.000 DT 1 0100 Rx - 1 AA\r\n");
  ASSERT_NO_FATAL_FAILURE(convertThereAndBack("in.trc"));
  const std::string error = "        5.000 ER 1         - Rx -  4    00 03 00 00";
  const std::string remote = "        5.000 RR 1      0200 Rx -  8    ";
  const std::string data = "        5.000 DT 1      0100 Rx -  1    AA";
  const std::vector<std::string> order =
      layout().sorted ? std::vector{data, remote, error} : std::vector{error, remote, data};
  EXPECT_EQ(linesAfterHeader("back.trc", "2.1"), numbered({{order, 0, 3}}));
}

TEST_P(Mf4RoundTrip, bringsBackErrorsOfOlderVersions) {
  const WorkingDirectory directory;
  writeFile("in.trc",
            ";$FILEVERSION=1.3\r\n;$STARTTIME=45658.25\r\n"
            "1) 5.0 1 Error 0004 - 4 00 07 00 00\r\n");
  ASSERT_NO_FATAL_FAILURE(convertThereAndBack("in.trc"));
  expectSuccess(convert("out.mf4", "old.trc", 1.3), {"old.trc"});
  EXPECT_EQ(linesAfterHeader("back.trc", "2.1"),
            std::vector<std::string>{"      1         5.000 ER 1         - Rx -  4    00 07 00 00"});
  const std::vector<std::string> old = splitLines(readFile("old.trc"));
  ASSERT_FALSE(old.empty());
  EXPECT_NE(old.back().find("Error     0004 -  4    00 07 00 00"), std::string::npos) << old.back();
}

// The message lines of a TRC file of version 2.1, without their numbers. Lines of the same time may change places.
std::vector<std::string> framesOf(const char* path, bool inAnyOrder) {
  std::vector<std::string> frames;
  for (const std::string& line : splitLines(readFile(path))) {
    if (!line.starts_with(';')) {
      frames.push_back(line.substr(8));
    }
  }
  if (inAnyOrder) {
    std::ranges::sort(frames);
  }
  return frames;
}

TEST_P(Mf4RoundTrip, bringsBackGeneratedTraffic) {
  const WorkingDirectory directory;
  tracegen::RecordingOptions options;
  options.traffic = {.seed = 41,
                     .buses = 3,
                     .identifiers = 28,
                     .fdShare = 30,
                     .remoteRate = 200,
                     .disturbanceRate = 0,
                     .eventRate = 0};
  options.maxMessages = 20000;  // more than the records that are held before they are written
  tracegen::generateFile(options, "in.trc");
  ASSERT_NO_FATAL_FAILURE(convertThereAndBack("in.trc"));
  const std::vector<std::string> back = framesOf("back.trc", layout().sorted);
  EXPECT_EQ(back.size(), 20000U);
  EXPECT_TRUE(back == framesOf("in.trc", layout().sorted));
}

TEST_P(Mf4RoundTrip, bringsBackARecording) {
  const fs::path recording = fs::absolute(fs::path(XLATR_RECORDINGS_DIR) / "trc" / "vehicle-2.1.trc");
  if (!fs::exists(recording)) {
    GTEST_SKIP() << "there is no " << recording;
  }
  const WorkingDirectory directory;
  expectSuccess(convert(recording.string(), "in.trc", 2.1), {"in.trc"});
  ASSERT_NO_FATAL_FAILURE(convertThereAndBack("in.trc"));
  EXPECT_TRUE(framesOf("back.trc", layout().sorted) == framesOf("in.trc", layout().sorted));
}

}  // namespace
}  // namespace xlatr::conversions
