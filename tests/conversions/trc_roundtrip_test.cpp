#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "conversions/conversion_support.hpp"

// Recorded traffic of a car to every version and back. The recordings lie outside the tree; the same frames stand in a
// list beside them, and the result is compared with that list.
namespace xlatr::conversions {
namespace {

namespace fs = std::filesystem;

struct Recording {
  std::string name;
  std::string frameList;
  int onlyBus;           // 0: all buses of the list
  bool losesBus;         // the recording's version has no bus column, so all is read as bus 1
  double timePrecision;  // half a step of the recording's own time column, in ms
  std::size_t frames;
  std::size_t fdFrames;
  std::size_t remoteFrames;
};

const std::vector<Recording>& recordings() {
  static const std::vector<Recording> table = {
      {"vehicle-1.1", "frames.csv", 2, true, 0.05, 4846, 0, 0},
      {"vehicle-1.3", "frames.csv", 0, false, 0.0005, 5477, 0, 0},
      {"vehicle-2.1", "frames-fd.csv", 0, false, 0.0005, 5477, 1084, 56},
  };
  return table;
}

struct Frame {
  double timeMs = 0.0;
  int bus = 0;
  std::string id;  // as version 2.1 writes it
  std::string kind;
  std::string direction;
  std::size_t length = 0;
  std::string data;  // hexadecimal, without blanks
};

int toInt(std::string_view text) {
  int value = -1;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

double toDouble(std::string_view text) {
  double value = -1.0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

std::vector<std::string> split(std::string_view text, char separator, bool keepEmpty) {
  std::vector<std::string> parts;
  std::size_t begin = 0;
  while (begin <= text.size()) {
    const std::size_t end = std::min(text.find(separator, begin), text.size());
    if (keepEmpty || end > begin) {
      parts.emplace_back(text.substr(begin, end - begin));
    }
    begin = end + 1;
  }
  return parts;
}

std::string kindOf(bool remote, bool fd, bool brs, bool esi) {
  if (remote) {
    return "RR";
  }
  if (!fd) {
    return "DT";
  }
  if (brs) {
    return esi ? "BI" : "FB";
  }
  return esi ? "FE" : "FD";
}

std::string paddedId(const std::string& id, bool extended) {
  const std::size_t digits = extended ? 8 : 4;
  return std::string(digits - std::min(digits, id.size()), '0') + id;
}

bool isFd(const Frame& frame) {
  return frame.kind != "DT" && frame.kind != "RR";
}

// Columns: time_us,bus,id,extended,remote,fd,brs,esi,length,data
std::vector<Frame> readFrameList(const fs::path& path, const Recording& recording) {
  std::vector<Frame> frames;
  const std::vector<std::string> lines = splitLines(readFile(path));
  for (std::size_t i = 1; i < lines.size(); ++i) {
    const std::vector<std::string> cells = split(lines[i], ',', true);
    const int bus = toInt(cells.at(1));
    if (recording.onlyBus != 0 && bus != recording.onlyBus) {
      continue;
    }
    Frame frame;
    frame.timeMs = toDouble(cells.at(0)) / 1000.0;
    frame.bus = recording.losesBus ? 1 : bus;
    frame.id = paddedId(cells.at(2), cells.at(3) == "1");
    frame.kind = kindOf(cells.at(4) == "1", cells.at(5) == "1", cells.at(6) == "1", cells.at(7) == "1");
    frame.direction = "Rx";
    frame.length = static_cast<std::size_t>(toInt(cells.at(8)));
    frame.data = cells.at(9);
    frames.push_back(frame);
  }
  return frames;
}

// Columns of version 2.1: number, time, kind, bus, identifier, direction, reserved, length code, data.
std::vector<Frame> readBack(const fs::path& path) {
  static constexpr std::array<std::size_t, 16> kLengths = {0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64};
  std::vector<Frame> frames;
  for (const std::string& line : linesAfterHeader(path, "2.1")) {
    const std::vector<std::string> words = split(line, ' ', false);
    if (words.size() < 8 || line.starts_with(';')) {
      ADD_FAILURE() << "no frame: " << line;
      continue;
    }
    EXPECT_EQ(words[0], std::to_string(frames.size() + 1));
    EXPECT_EQ(words[6], "-") << line;
    Frame frame;
    frame.timeMs = toDouble(words[1]);
    frame.kind = words[2];
    frame.bus = toInt(words[3]);
    frame.id = words[4];
    frame.direction = words[5];
    frame.length = kLengths.at(static_cast<std::size_t>(toInt(words[7])));
    for (std::size_t i = 8; i < words.size(); ++i) {
      frame.data += words[i];
    }
    frames.push_back(frame);
  }
  return frames;
}

// The time as the version keeps it: 1.0 cuts to milliseconds, 1.1 rounds to a tenth, the others to a thousandth.
void expectTime(double actual, double recorded, const Recording& recording, const TrcVersion& version) {
  static constexpr double kNoise = 1e-6;
  const double slack = recording.timePrecision + kNoise;
  if (version.number == 1.0) {
    EXPECT_EQ(actual, std::floor(actual));
    EXPECT_GT(actual, recorded - 1.0 - slack);
    EXPECT_LE(actual, recorded + slack);
  } else {
    EXPECT_NEAR(actual, recorded, slack + (version.number == 1.1 ? 0.05 : 0.0005));
  }
}

void expectFrames(const std::vector<Frame>& actual, const std::vector<Frame>& expected, const Recording& recording,
                  const TrcVersion& version) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < actual.size(); ++i) {
    SCOPED_TRACE("frame " + std::to_string(i + 1));
    expectTime(actual[i].timeMs, expected[i].timeMs, recording, version);
    EXPECT_EQ(actual[i].kind, expected[i].kind);
    EXPECT_EQ(actual[i].bus, expected[i].bus);
    EXPECT_EQ(actual[i].id, expected[i].id);
    EXPECT_EQ(actual[i].direction, expected[i].direction);
    EXPECT_EQ(actual[i].length, expected[i].length);
    EXPECT_EQ(actual[i].data, expected[i].data);
    if (testing::Test::HasFailure()) {
      return;  // one frame is enough to read
    }
  }
}

std::size_t countComments(const std::string& name, const TrcVersion& version) {
  const std::vector<std::string> lines = linesAfterHeader(name, version.text);
  return static_cast<std::size_t>(
      std::ranges::count_if(lines, [](const std::string& line) { return line.starts_with(';'); }));
}

// What one target file is to hold.
struct Part {
  std::vector<Frame> frames;
  std::size_t comments = 0;
};

std::map<std::string, Part> expectedParts(const std::vector<Frame>& frames, const TrcVersion& version) {
  std::map<std::string, Part> parts;
  for (Frame frame : frames) {
    Part& part = parts[version.hasBusColumn ? "out.trc" : "out_BUS" + std::to_string(frame.bus) + ".trc"];
    if (isFd(frame) && version.number < 2.0) {
      ++part.comments;  // no form for it in these versions: its line survives as a comment
      continue;
    }
    if (!version.hasBusColumn) {
      frame.bus = version.number < 2.0 ? 1 : 0;  // what a line without a bus column is read as
    }
    part.frames.push_back(frame);
  }
  return parts;
}

class TrcRecording : public testing::TestWithParam<std::tuple<std::string, std::string>> {};

TEST_P(TrcRecording, comesBackWithTheSameFrames) {
  const fs::path directoryOfRecordings = XLATR_RECORDINGS_DIR;
  const auto& [recordingName, versionText] = GetParam();
  const Recording& recording = *std::ranges::find(recordings(), recordingName, &Recording::name);
  const TrcVersion& version = trcVersion(versionText);
  const fs::path source = fs::absolute(directoryOfRecordings / "trc" / (recording.name + ".trc"));
  const fs::path frameList = fs::absolute(directoryOfRecordings / recording.frameList);
  if (!fs::exists(source) || !fs::exists(frameList)) {
    GTEST_SKIP() << "there is no recording " << source << " with its list " << frameList;
  }
  const std::vector<Frame> frames = readFrameList(frameList, recording);
  ASSERT_EQ(frames.size(), recording.frames);
  ASSERT_EQ(static_cast<std::size_t>(std::ranges::count_if(frames, isFd)), recording.fdFrames);
  ASSERT_EQ(static_cast<std::size_t>(std::ranges::count(frames, "RR", &Frame::kind)), recording.remoteFrames);
  const std::map<std::string, Part> parts = expectedParts(frames, version);
  const WorkingDirectory directory;

  const Outcome there = convert(source.string(), "out.trc", version.number);

  EXPECT_EQ(there.code, XLATR_SUCCESS) << there.text;
  EXPECT_EQ(there.text, "");
  std::vector<std::string> names = there.files;
  std::ranges::sort(names);
  EXPECT_EQ(names, directory.names());
  ASSERT_EQ(names.size(), parts.size());
  for (const auto& [name, part] : parts) {
    SCOPED_TRACE(name);
    EXPECT_EQ(countComments(name, version), part.comments);
    const std::string backName = "back-" + name;
    expectSuccess(convert(name, backName, 2.1), {backName});
    expectFrames(readBack(backName), part.frames, recording, version);
  }
}

std::string identifier(std::string text) {
  std::ranges::replace_if(
      text, [](char c) { return c == '.' || c == '-'; }, '_');
  return text;
}

INSTANTIATE_TEST_SUITE_P(All, TrcRecording,
                         testing::Combine(testing::Values("vehicle-1.1", "vehicle-1.3", "vehicle-2.1"),
                                          testing::Values("1.0", "1.1", "1.2", "1.3", "2.0", "2.1", "3.0")),
                         [](const testing::TestParamInfo<TrcRecording::ParamType>& pair) {
                           return identifier(std::get<0>(pair.param)) + "through" + identifier(std::get<1>(pair.param));
                         });

}  // namespace
}  // namespace xlatr::conversions
