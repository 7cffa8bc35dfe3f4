#include "io/format_table.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace xlatr {
namespace {

using Formats = std::vector<TraceFormat>;
using Versions = std::vector<double>;

struct Case {
  TraceFormat format;
  const char* extension;
  const char* shortName;
  const char* description;
  double currentVersion;
  Versions versions;
  Formats targets;
  bool conversionTarget;
};

TEST(FormatTable, knowsTheEightFormats) {
  const Case cases[] = {
      {1,
       ".trc",
       "BRIX-Trace",
       "BRIX trace file",
       3.0,
       {1.0, 1.1, 1.2, 1.3, 2.0, 2.1, 3.0},
       {1, 4, 16, 2, 32, 64},
       true},
      {2, ".btr", "BRIX-Bridge", "BRIX-Bridge Pro - Binary trace file", 3.0, {1.0, 2.0, 3.0}, {1, 4, 16}, true},
      {4,
       ".asc",
       "CANalyser-ASC",
       "CANalyzer ASCII logging file",
       15.0,
       {0.0, 7.0, 8.0, 9.0, 10.0, 11.0, 12.0, 13.0, 14.0, 15.0},
       {1, 16},
       true},
      {8, ".ltrc", "KORL-Trace", "KORL trace file", 1.2, {1.0, 1.1, 1.2}, {4, 16}, false},
      {16, ".csv", "CSV-File", "Character-separated values", 1.0, {1.0}, {}, true},
      {32, ".btrc", "ZELK binary trace", "ZELK binary trace file", 1.0, {1.0}, {1, 4, 16}, true},
      {64, ".mf4", "ASAM MDF", "ASAM Measurement Data Format", 4.2, {4.1, 4.11, 4.2}, {1}, true},
      {128, ".blf", "BLF", "Vector BLF trace file", 0.0, {0.0}, {16, 1, 8}, false},
  };
  ASSERT_EQ(formatTable().size(), std::size(cases));
  for (std::size_t index = 0; index < std::size(cases); ++index) {
    const Case& test = cases[index];
    const FormatRow& row = formatTable()[index];
    SCOPED_TRACE(test.extension);
    EXPECT_EQ(row.format, test.format);
    EXPECT_EQ(&formatRow(test.format), &row);
    EXPECT_EQ(row.extension, test.extension);
    EXPECT_EQ(row.shortName, test.shortName);
    EXPECT_EQ(row.description, test.description);
    EXPECT_EQ(row.currentVersion, test.currentVersion);
    EXPECT_EQ(Versions(row.supportedVersions.begin(), row.supportedVersions.end()), test.versions);
    EXPECT_EQ(Formats(row.allowedTargets.begin(), row.allowedTargets.end()), test.targets);
    EXPECT_EQ(row.conversionTarget, test.conversionTarget);
  }
}

TEST(FormatTable, normalisesWhatIsNotOneFlagToNoFormat) {
  for (const TraceFormat none : {0, 3, 5, 256, 255, -1, -128, 0x40000000}) {
    EXPECT_EQ(normalizeFormat(none), XLATR_FORMAT_NONE) << none;
    EXPECT_EQ(formatRow(none).description, "") << none;
    EXPECT_EQ(formatRow(none).extension, "") << none;
    EXPECT_EQ(formatRow(none).currentVersion, -1.0) << none;
  }
  for (const FormatRow& row : formatTable()) {
    EXPECT_EQ(normalizeFormat(row.format), row.format);
  }
}

TEST(FormatTable, findsTheFormatByTheExtensionInAnyCase) {
  const struct {
    const char* path;
    TraceFormat format;
  } cases[] = {
      {"x.trc", 1},        {"x.TRC", 1},   {"x.tRc", 1},  {"a.asc/x.btr", 2},
      {"C:\\a\\x.ASC", 4}, {"x.ltrc", 8},  {"x.csv", 16}, {"x.y.btrc", 32},
      {"/a/x.mf4", 64},    {"x.Blf", 128}, {"x", 0},      {"x.trc.bak", 0},
      {"trc", 0},          {"", 0},        {"x.", 0},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(formatOfPath(test.path), test.format) << test.path;
  }
}

}  // namespace
}  // namespace xlatr
