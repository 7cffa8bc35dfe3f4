#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "conversions/conversion_support.hpp"

// Recorded traffic of a car, from and to ASC. The recordings lie outside the tree; the same frames stand in a list
// beside them. The programs asc2log and log2asc, which share no code with the library, read its logs and write logs for
// it.
namespace xlatr::conversions {
namespace {

namespace fs = std::filesystem;

const fs::path kRecordings = XLATR_RECORDINGS_DIR;

struct Frame {
  double seconds = 0.0;
  int bus = 0;
  std::string id;  // hexadecimal, eight digits when extended and three otherwise
  std::string kind;
  std::string data;  // hexadecimal, without blanks; "R" and the length of a remote frame

  bool isFd() const { return kind != "DT" && kind != "RR"; }
};

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  std::size_t begin = 0;
  while (begin <= text.size()) {
    const std::size_t end = std::min(text.find(separator, begin), text.size());
    parts.emplace_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return parts;
}

template <class Number>
Number toNumber(std::string_view text) {
  Number value{};
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

std::string padded(const std::string& id, bool extended) {
  const std::size_t digits = extended ? 8 : 3;
  return std::string(digits - std::min(digits, id.size()), '0') + id;
}

std::string kindOf(bool fd, bool brs, bool esi) {
  static constexpr std::array<const char*, 4> kFdKinds = {"FD", "FB", "FE", "BI"};
  return fd ? kFdKinds.at((brs ? 1U : 0U) + (esi ? 2U : 0U)) : "DT";
}

// Columns: time_us,bus,id,extended,remote,fd,brs,esi,length,data
std::vector<Frame> readFrameList(const std::string& name) {
  std::vector<Frame> frames;
  const std::vector<std::string> lines = splitLines(readFile(kRecordings / name));
  for (std::size_t index = 1; index < lines.size(); ++index) {
    const std::vector<std::string> cells = split(lines[index], ',');
    const bool remote = cells.at(4) == "1";
    frames.push_back({.seconds = toNumber<double>(cells.at(0)) / 1e6,
                      .bus = toNumber<int>(cells.at(1)),
                      .id = padded(cells.at(2), cells.at(3) == "1"),
                      .kind = remote ? "RR" : kindOf(cells.at(5) == "1", cells.at(6) == "1", cells.at(7) == "1"),
                      .data = remote ? "R" + cells.at(8) : cells.at(9)});
  }
  return frames;
}

// "(seconds.microseconds)". asc2log, which adds the time of day to a trace whose date it can't read, leaves 1000000
// microseconds as they are instead of carrying them.
double secondsOf(const std::string& word) {
  const std::vector<std::string> parts = split(std::string_view(word).substr(1, word.size() - 2), '.');
  return toNumber<double>(parts.at(0)) + toNumber<double>(parts.at(1)) / 1e6;
}

// Lines of the program's own form: "(seconds) can0 123#data R", with "##" and a digit of flags for CAN FD.
std::vector<Frame> readProgramLog(const fs::path& path) {
  std::vector<Frame> frames;
  for (const std::string& line : splitLines(readFile(path))) {
    const std::vector<std::string> words = split(line, ' ');
    const std::size_t hash = words.at(2).find('#');
    const std::string id = words.at(2).substr(0, hash);
    const std::string rest = words.at(2).substr(hash + 1);
    Frame frame{.seconds = secondsOf(words.at(0)),
                .bus = toNumber<int>(std::string_view(words.at(1)).substr(3)) + 1,
                .id = id,
                .kind = "DT",
                .data = rest};
    if (rest.starts_with('#')) {
      const int flags = toNumber<int>(std::string_view(rest).substr(1, 1));
      frame.kind = kindOf(true, (flags & 1) != 0, (flags & 2) != 0);
      frame.data = rest.substr(2);
    } else if (rest.starts_with('R')) {
      frame.kind = "RR";
      frame.data = rest.size() == 1 ? "R0" : rest;
    }
    frames.push_back(frame);
  }
  return frames;
}

// Columns of TRC 3.0: number, time, kind, bus, identifier, direction, eight that do not matter here, code and data.
std::vector<Frame> readTrc(const fs::path& path) {
  static constexpr std::array<int, 16> kLengths = {0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64};
  std::vector<Frame> frames;
  for (const std::string& line : linesAfterHeader(path, "3.0")) {
    if (line.starts_with(';')) {
      continue;
    }
    std::vector<std::string> words = split(line, ' ');
    std::erase(words, "");
    Frame frame{.seconds = toNumber<double>(words.at(1)) / 1000.0,
                .bus = toNumber<int>(words.at(3)),
                .id = words.at(4),
                .kind = words.at(2),
                .data = {}};
    for (std::size_t index = 13; index < words.size(); ++index) {
      frame.data += words[index];
    }
    if (frame.kind == "RR") {
      frame.data = "R" + std::to_string(kLengths.at(toNumber<std::size_t>(words.at(12))));
    }
    frames.push_back(frame);
  }
  return frames;
}

// Equal except for the start of the times, and for the lengths of remote frames if they are not kept.
void expectFrames(const std::vector<Frame>& actual, std::vector<Frame> expected, bool keepsRemoteLength) {
  ASSERT_EQ(actual.size(), expected.size());
  ASSERT_FALSE(actual.empty());
  for (std::size_t index = 0; index < actual.size(); ++index) {
    if (!keepsRemoteLength && expected[index].kind == "RR") {
      expected[index].data = "R0";
    }
    SCOPED_TRACE("frame " + std::to_string(index + 1));
    EXPECT_NEAR(actual[index].seconds - actual[0].seconds, expected[index].seconds - expected[0].seconds, 1.1e-6);
    EXPECT_EQ(actual[index].bus, expected[index].bus);
    EXPECT_EQ(actual[index].id, expected[index].id);
    EXPECT_EQ(actual[index].kind, expected[index].kind);
    EXPECT_EQ(actual[index].data, expected[index].data);
    if (testing::Test::HasFailure()) {
      return;  // one frame is enough to read
    }
  }
}

std::size_t countComments(const fs::path& path) {
  const std::vector<std::string> lines = linesAfterHeader(path, "3.0");
  return static_cast<std::size_t>(
      std::ranges::count_if(lines, [](const std::string& line) { return line.starts_with(';'); }));
}

std::vector<Frame> without(std::vector<Frame> frames, bool (*left)(const Frame&)) {
  std::erase_if(frames, left);
  return frames;
}

// The arguments are paths that the test made.
bool run(const std::string& command) {
  return std::system((command + " 2>/dev/null").c_str()) == 0;  // NOLINT(cert-env33-c,concurrency-mt-unsafe)
}

bool hasProgram(const std::string& name) {
  return run("command -v " + name + " >/dev/null");
}

class AscRecordings : public testing::Test {
 protected:
  void SetUp() override {
    if (!fs::exists(kRecordings / "asc") || !fs::exists(kRecordings / "trc")) {
      GTEST_SKIP() << "there are no recordings in " << kRecordings;
    }
  }

  WorkingDirectory directory_;
};

TEST_F(AscRecordings, loseNoFrameOnTheirWayToTrc) {
  const struct {
    const char* name;
    const char* frameList;
    std::size_t passedOver;  // lines that a head without a version takes for its own
    std::size_t frames;
  } cases[] = {
      {"vehicle", "frames.csv", 7, 5470},
      {"vehicle-v7", "frames.csv", 0, 5477},
      {"vehicle-crlf-v7", "frames.csv", 0, 5477},
      {"vehicle-fd-v8", "frames-fd.csv", 0, 5477},
      {"vehicle-fd-canfd-lines-v8", "frames-fd.csv", 0, 5477},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    const fs::path source = fs::absolute(kRecordings / "asc" / (std::string(test.name) + ".asc"));
    expectSuccess(convert(source.string(), "out.trc", 3.0), {"out.trc"});
    std::vector<Frame> expected = readFrameList(test.frameList);
    expected.erase(expected.begin(), expected.begin() + static_cast<std::ptrdiff_t>(test.passedOver));
    ASSERT_EQ(expected.size(), test.frames);
    EXPECT_EQ(countComments("out.trc"), 0U);
    expectFrames(readTrc("out.trc"), expected, false);
  }
}

TEST_F(AscRecordings, comeBackFromAscWithTheSameFrames) {
  const fs::path source = fs::absolute(kRecordings / "trc" / "vehicle-2.1.trc");
  const std::vector<Frame> frames = readFrameList("frames-fd.csv");
  for (const double version : {7.0, 8.0, 15.0}) {
    SCOPED_TRACE(version);
    expectSuccess(convert(source.string(), "there.asc", version, XLATR_FORMAT_ASC), {"there.asc"});
    expectSuccess(convert("there.asc", "back.trc", 3.0), {"back.trc"});
    const bool keepsFd = version >= 8.0;
    expectFrames(readTrc("back.trc"), keepsFd ? frames : without(frames, [](const Frame& f) { return f.isFd(); }),
                 false);
  }
}

TEST_F(AscRecordings, areReadByAsc2logAsWeWriteThem) {
  if (!hasProgram("asc2log")) {
    GTEST_SKIP() << "asc2log of the package can-utils is not installed";
  }
  const fs::path source = fs::absolute(kRecordings / "trc" / "vehicle-2.1.trc");
  const std::vector<Frame> frames = readFrameList("frames-fd.csv");
  expectSuccess(convert(source.string(), "seven.asc", 7.0, XLATR_FORMAT_ASC), {"seven.asc"});
  ASSERT_TRUE(run("asc2log -I seven.asc -O seven.log"));
  expectFrames(readProgramLog("seven.log"), without(frames, [](const Frame& f) { return f.isFd(); }), true);

  expectSuccess(convert(source.string(), "eight.asc", 8.0, XLATR_FORMAT_ASC), {"eight.asc"});
  ASSERT_TRUE(run("asc2log -I eight.asc -O eight.log"));
  // Other programs know no remote frames in CANFD lines; this is how asc2log reads one.
  const auto remote = [](const Frame& f) { return f.kind == "RR"; };
  std::vector<Frame> actual = readProgramLog("eight.log");
  ASSERT_EQ(actual.size(), frames.size());
  std::vector<Frame> expected;
  std::vector<Frame> kept;
  for (std::size_t index = 0; index < frames.size(); ++index) {
    if (!remote(frames[index])) {
      expected.push_back(frames[index]);
      kept.push_back(actual[index]);
    }
  }
  expectFrames(kept, expected, true);
}

TEST_F(AscRecordings, areReadByUsAsLog2ascWritesThem) {
  if (!hasProgram("asc2log") || !hasProgram("log2asc")) {
    GTEST_SKIP() << "asc2log and log2asc of the package can-utils are not installed";
  }
  const fs::path source = fs::absolute(kRecordings / "trc" / "vehicle-2.1.trc");
  const std::vector<Frame> frames = readFrameList("frames-fd.csv");
  expectSuccess(convert(source.string(), "eight.asc", 8.0, XLATR_FORMAT_ASC), {"eight.asc"});
  for (const char* const option : {"", "-n ", "-f "}) {
    SCOPED_TRACE(option);
    ASSERT_TRUE(run("asc2log -I eight.asc -O eight.log && log2asc " + std::string(option) +
                    "-I eight.log -O theirs.asc can0 can1"));
    // log2asc writes no version. Without one a head takes ten lines, and CANFD lines are not read.
    std::vector<std::string> lines = splitLines(readFile("theirs.asc"));
    ASSERT_GT(lines.size(), 3U);
    lines.insert(lines.begin() + 3, "// version 8.1.0");
    writeFile("theirs.asc", joinLines(lines));
    expectSuccess(convert("theirs.asc", "ours.trc", 3.0), {"ours.trc"});
    const std::vector<Frame> expected = readProgramLog("eight.log");
    ASSERT_EQ(expected.size(), frames.size());
    expectFrames(readTrc("ours.trc"), expected, false);
  }
}

}  // namespace
}  // namespace xlatr::conversions
