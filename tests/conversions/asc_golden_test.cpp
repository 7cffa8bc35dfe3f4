#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "conversions/conversion_support.hpp"

namespace xlatr::conversions {
namespace {

namespace fs = std::filesystem;

fs::path ascDirectory() {
  return goldenDirectory().parent_path() / "asc";
}

std::string identifier(std::string text) {
  std::ranges::replace_if(
      text, [](char c) { return c == '.' || c == '-'; }, '_');
  return text;
}

// From TRC ------------------------------------------------------------------------------------------------------------

struct AscForm {
  double targetVersion;
  const char* text;
};

constexpr AscForm kForms[] = {{7.0, "7.0"}, {8.0, "8.1"}, {15.0, "8.1"}};

class TrcToAsc : public testing::TestWithParam<std::string> {};

TEST_P(TrcToAsc, writesTheGoldenFile) {
  for (const AscForm& form : kForms) {
    SCOPED_TRACE(form.targetVersion);
    const WorkingDirectory directory;
    const std::string source = "source-" + GetParam() + ".trc";
    fs::copy_file(goldenDirectory() / source, source);
    expectSuccess(convert(source, "out.asc", form.targetVersion, XLATR_FORMAT_ASC), {"out.asc"});
    expectGolden("out.asc", ascDirectory() / ("trc-" + GetParam() + "-to-" + form.text + ".asc"));
  }
}

std::vector<std::string> trcVersionTexts() {
  std::vector<std::string> texts;
  for (const TrcVersion& version : trcVersions()) {
    texts.emplace_back(version.text);
  }
  return texts;
}

INSTANTIATE_TEST_SUITE_P(All, TrcToAsc, testing::ValuesIn(trcVersionTexts()),
                         [](const testing::TestParamInfo<std::string>& version) {
                           return "from" + identifier(version.param);
                         });

// To TRC --------------------------------------------------------------------------------------------------------------

// What tests/golden/asc/source-<name>.asc does to its targets.
struct Source {
  const char* name;
  std::vector<int> buses;  // in the order in which something is first written for them
  const char* invalidBuses;
};

const std::vector<Source>& sources() {
  static const std::vector<Source> table = {
      {"7.0", {1, 2, 17}, " 17"},
      {"7.5-decimal-relative", {1, 2}, ""},
      {"8.1", {1, 2, 3}, ""},
      {"9.0-decimal-relative", {1, 2}, ""},
  };
  return table;
}

const std::vector<std::string> kTargetVersions = {"1.1", "1.3", "2.0", "2.1", "3.0"};

// The endings that tell the target files of a conversion apart.
std::vector<std::string> endings(const Source& source, const TrcVersion& target) {
  if (target.hasBusColumn) {
    return {".trc"};
  }
  std::vector<std::string> result;
  for (const int bus : source.buses) {
    result.push_back("_BUS" + std::to_string(bus) + ".trc");
  }
  return result;
}

class AscToTrc : public testing::TestWithParam<std::tuple<std::string, std::string>> {};

TEST_P(AscToTrc, writesTheGoldenFiles) {
  const auto& [name, versionText] = GetParam();
  const Source& source = *std::ranges::find(sources(), name, &Source::name);
  const TrcVersion& target = trcVersion(versionText);
  const WorkingDirectory directory;
  const std::string sourceName = "source-" + name + ".asc";
  fs::copy_file(ascDirectory() / sourceName, sourceName);
  std::vector<std::string> names;
  for (const std::string& ending : endings(source, target)) {
    names.push_back("out" + ending);
  }
  std::string warning;
  if (target.hasBusColumn && source.invalidBuses[0] != '\0') {
    warning = std::string("The Converted file 'out.trc' contents at least one invalid BUS number:") +
              source.invalidBuses + ".\nOnly BRIX trace files with bus numbers from 1 to 16 are supported ";
  }

  expectSuccess(convert(sourceName, "out.trc", target.number), names, warning);

  std::set<std::string> inDirectory(names.begin(), names.end());
  inDirectory.insert(sourceName);
  EXPECT_EQ(directory.names(), std::vector<std::string>(inDirectory.begin(), inDirectory.end()));
  for (const std::string& ending : endings(source, target)) {
    expectGolden("out" + ending, ascDirectory() / (name + "-to-" + versionText + ending));
  }
}

std::vector<std::string> sourceNames() {
  std::vector<std::string> names;
  for (const Source& source : sources()) {
    names.emplace_back(source.name);
  }
  return names;
}

INSTANTIATE_TEST_SUITE_P(All, AscToTrc,
                         testing::Combine(testing::ValuesIn(sourceNames()), testing::ValuesIn(kTargetVersions)),
                         [](const testing::TestParamInfo<AscToTrc::ParamType>& pair) {
                           return "from" + identifier(std::get<0>(pair.param)) + "to" +
                                  identifier(std::get<1>(pair.param));
                         });

class AscToCsv : public testing::TestWithParam<std::string> {};

TEST_P(AscToCsv, writesTheGoldenTable) {
  const WorkingDirectory directory;
  const std::string sourceName = "source-" + GetParam() + ".asc";
  fs::copy_file(ascDirectory() / sourceName, sourceName);
  expectSuccess(convert(sourceName, "out.csv", std::nullopt, XLATR_FORMAT_CSV), {"out.csv"});
  expectGolden("out.csv", ascDirectory() / (GetParam() + "-to-csv.csv"));
}

INSTANTIATE_TEST_SUITE_P(All, AscToCsv, testing::ValuesIn(sourceNames()),
                         [](const testing::TestParamInfo<std::string>& name) { return identifier(name.param); });

TEST(AscGoldenFiles, areAllInUse) {
  std::set<std::string> known = {"README.md"};
  for (const std::string& version : trcVersionTexts()) {
    for (const AscForm& form : kForms) {
      known.insert("trc-" + version + "-to-" + form.text + ".asc");
    }
  }
  for (const Source& source : sources()) {
    known.insert(std::string("source-") + source.name + ".asc");
    known.insert(std::string(source.name) + "-to-csv.csv");
    for (const std::string& version : kTargetVersions) {
      for (const std::string& ending : endings(source, trcVersion(version))) {
        known.insert(std::string(source.name) + "-to-" + version + ending);
      }
    }
  }
  std::set<std::string> present;
  for (const fs::directory_entry& entry : fs::directory_iterator(ascDirectory())) {
    present.insert(entry.path().filename().string());
  }
  EXPECT_EQ(present, known);
}

}  // namespace
}  // namespace xlatr::conversions
