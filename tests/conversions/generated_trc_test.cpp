// Generated traffic, converted from one TRC version to another, is compared with what the generator prints in the
// target version. The generator shares no code with the library.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "tracegen/generator.hpp"
#include "xlatr/xlatr.h"

namespace {

using tracegen::RecordingOptions;
using tracegen::TrcVersion;

struct Pair {
  TrcVersion source;
  TrcVersion target;
};

std::vector<Pair> allPairs() {
  constexpr std::array kVersions{TrcVersion::V1_1, TrcVersion::V1_2, TrcVersion::V1_3,
                                 TrcVersion::V2_0, TrcVersion::V2_1, TrcVersion::V3_0};
  std::vector<Pair> pairs;
  for (const TrcVersion source : kVersions) {
    for (const TrcVersion target : kVersions) {
      // 1.1 has no microseconds, so only 1.1 can be compared with its output.
      if (source != TrcVersion::V1_1 || target == TrcVersion::V1_1) {
        pairs.push_back({source, target});
      }
    }
  }
  return pairs;
}

std::string pairName(const Pair& pair) {
  std::string name =
      std::string(tracegen::trcVersionText(pair.source)) + "_to_" + std::string(tracegen::trcVersionText(pair.target));
  std::replace(name.begin(), name.end(), '.', '_');
  return name;
}

// What both versions can hold, on one bus, since a target may have no column for more.
RecordingOptions commonTraffic(const Pair& pair) {
  RecordingOptions options;
  options.traffic = {.seed = 11,
                     .buses = 1,
                     .identifiers = 20,
                     .fdShare = 30,
                     .xlShare = 10,
                     .remoteRate = 100,
                     .disturbanceRate = 30,
                     .eventRate = 60,
                     .commentRate = 60};
  options.maxMessages = 5000;
  tracegen::limitToVersion(options.traffic, pair.source);
  tracegen::limitToVersion(options.traffic, pair.target);
  if (pair.source < TrcVersion::V2_0 && pair.target >= TrcVersion::V2_0) {
    // The older versions keep a part of an error in place of the identifier; it does not become data again.
    options.traffic.disturbanceRate = 0;
  }
  return options;
}

std::vector<std::string> messageLines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1);
    const std::string_view line = text.substr(0, end + 1);
    if (!line.starts_with(';')) {
      lines.emplace_back(line);
    }
    text.remove_prefix(end + 1);
  }
  return lines;
}

std::vector<std::string> linesOf(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return messageLines(std::string{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()});
}

// Where the bus stands in a line; 0 in the versions without it. Small numbers take one digit.
std::size_t busColumn(TrcVersion version) {
  switch (version) {
    case TrcVersion::V1_2:
    case TrcVersion::V1_3:
      return 22;
    case TrcVersion::V2_1:
    case TrcVersion::V3_0:
      return 25;
    case TrcVersion::V1_1:
    case TrcVersion::V2_0:
      break;
  }
  return 0;
}

// What has no bus column is read as bus 1 below 2.0 and as bus 0 from there on.
char busDigit(TrcVersion source) {
  return source == TrcVersion::V2_0 ? '0' : '1';
}

void convert(const std::filesystem::path& source, const std::filesystem::path& target, TrcVersion version) {
  ConversionOption option{};
  option.tag = XLATR_OPTION_TARGET_VERSION;
  option.value.version = std::stod(std::string(tracegen::trcVersionText(version)));
  ConversionOptions options{};
  options.target_format = XLATR_FORMAT_TRC;
  options.option_count = 1;
  options.options = &option;
  ConversionResult result{};
  EXPECT_EQ(xlatr_convert(source.c_str(), target.c_str(), &options, &result), XLATR_SUCCESS);
  EXPECT_STREQ(result.text, "");
  xlatr_free(&result);
}

class GeneratedTrc : public testing::TestWithParam<Pair> {
 protected:
  void SetUp() override { std::filesystem::create_directories(folder_); }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  std::filesystem::path folder_ = std::filesystem::path(testing::TempDir()) / ("generated_trc_" + pairName(GetParam()));
};

TEST_P(GeneratedTrc, comesOutAsTheGeneratorPrintsIt) {
  const Pair pair = GetParam();
  RecordingOptions options = commonTraffic(pair);
  options.version = pair.source;
  tracegen::generateFile(options, folder_ / "source.trc");
  options.version = pair.target;
  tracegen::generateFile(options, folder_ / "expected.trc");

  convert(folder_ / "source.trc", folder_ / "target.trc", pair.target);
  const char bus = busDigit(pair.source);
  const std::size_t column = busColumn(pair.target);
  const std::string targetName = column == 0 ? std::string("target_BUS") + bus + ".trc" : "target.trc";
  const std::vector<std::string> actual = linesOf(folder_ / targetName);
  std::vector<std::string> expected = linesOf(folder_ / "expected.trc");
  if (column > 0) {
    for (std::string& line : expected) {
      ASSERT_EQ(line.substr(column - 1, 3), " 1 ") << line;
      line[column] = bus;
    }
  }
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t index = 0; index < expected.size(); ++index) {
    ASSERT_EQ(actual[index], expected[index]);
  }
}

INSTANTIATE_TEST_SUITE_P(Pairs, GeneratedTrc, testing::ValuesIn(allPairs()),
                         [](const testing::TestParamInfo<Pair>& test) { return pairName(test.param); });

}  // namespace
