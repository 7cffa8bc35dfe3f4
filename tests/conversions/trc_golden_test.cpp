#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "conversions/conversion_support.hpp"
#include "xlatr/objects.h"

namespace xlatr::conversions {
namespace {

namespace fs = std::filesystem;

// What tests/golden/trc/source-<version>.trc does to its targets.
struct Source {
  std::string version;
  std::vector<int> buses;    // in the order in which something is first written for them
  std::string invalidBuses;  // those above 16, as the warning lists them
};

const std::vector<Source>& sources() {
  static const std::vector<Source> table = {
      {"1.0", {1}, ""},
      {"1.1", {1}, ""},
      {"1.2", {1, 2, 0, 17}, " 17"},
      {"1.3", {1, 2, 0, 17}, " 17"},
      // A line that breaks before its bus is known is on bus 1, all others are on bus 0.
      {"2.0", {0, 1}, ""},
      {"2.1", {1, 2, 0, 17, 255, 3}, " 17 255"},
      {"3.0", {1, 2, 0, 17, 255, 3}, " 17 255"},
  };
  return table;
}

struct TargetFile {
  std::string name;
  std::string golden;
};

std::vector<TargetFile> targetFiles(const Source& source, const TrcVersion& target) {
  const std::string goldenStem = source.version + "-to-" + target.text;
  if (target.hasBusColumn) {
    return {{"out.trc", goldenStem + ".trc"}};
  }
  std::vector<TargetFile> files;
  for (const int bus : source.buses) {
    const std::string ending = "_BUS" + std::to_string(bus) + ".trc";
    files.push_back({"out" + ending, goldenStem + ending});
  }
  return files;
}

std::string warning(const Source& source, const TrcVersion& target) {
  if (!target.hasBusColumn || source.invalidBuses.empty()) {
    return "";
  }
  return "The Converted file 'out.trc' contents at least one invalid BUS number:" + source.invalidBuses +
         ".\nOnly BRIX trace files with bus numbers from 1 to 16 are supported ";
}

std::string identifier(std::string version) {
  std::ranges::replace(version, '.', '_');
  return version;
}

class TrcPair : public testing::TestWithParam<std::tuple<std::string, std::string>> {};

TEST_P(TrcPair, writesTheGoldenFiles) {
  const auto& [sourceVersion, targetVersion] = GetParam();
  const Source& source = *std::ranges::find(sources(), sourceVersion, &Source::version);
  const TrcVersion& target = trcVersion(targetVersion);
  const std::string sourceName = "source-" + source.version + ".trc";
  const std::vector<TargetFile> expected = targetFiles(source, target);
  const WorkingDirectory directory;
  fs::copy_file(goldenDirectory() / sourceName, sourceName);

  const Outcome outcome = convert(sourceName, "out.trc", target.number);

  std::vector<std::string> expectedNames;
  for (const TargetFile& file : expected) {
    expectedNames.push_back(file.name);
  }
  expectSuccess(outcome, expectedNames, warning(source, target));
  std::set<std::string> inDirectory(expectedNames.begin(), expectedNames.end());
  inDirectory.insert(sourceName);
  EXPECT_EQ(directory.names(), std::vector<std::string>(inDirectory.begin(), inDirectory.end()));
  for (const TargetFile& file : expected) {
    if (fs::exists(file.name)) {
      expectGolden(file.name, goldenDirectory() / file.golden);
    }
  }
}

std::vector<std::string> versionTexts() {
  std::vector<std::string> texts;
  for (const TrcVersion& version : trcVersions()) {
    texts.emplace_back(version.text);
  }
  return texts;
}

INSTANTIATE_TEST_SUITE_P(All, TrcPair,
                         testing::Combine(testing::ValuesIn(versionTexts()), testing::ValuesIn(versionTexts())),
                         [](const testing::TestParamInfo<TrcPair::ParamType>& pair) {
                           return "from" + identifier(std::get<0>(pair.param)) + "to" +
                                  identifier(std::get<1>(pair.param));
                         });

struct Release {
  void operator()(TrcInfo* info) const { TrcInfo_Destruct(info); }
  void operator()(TrcWriter* writer) const { TrcWriter_Destruct(writer); }
};

class TrcHeader : public testing::TestWithParam<std::string> {};

// The versions without a bus column open no file for a source without messages, so the writer is driven by hand.
TEST_P(TrcHeader, isTheGoldenHeader) {
  const TrcVersion& version = trcVersion(GetParam());
  const WorkingDirectory directory;
  fs::copy_file(goldenDirectory() / "header-source.trc", "header-source.trc");
  const std::unique_ptr<TrcInfo, Release> info(TrcInfo_Construct_2("header-source.trc"));
  const std::unique_ptr<TrcWriter, Release> writer(TrcWriter_Construct("out.trc", false, version.number));

  TrcWriter_setActive(writer.get(), true);
  TrcWriter_WriteHeader(writer.get(), reinterpret_cast<const ITraceInfo*>(info.get()));
  TrcWriter_setActive(writer.get(), false);

  expectGolden("out.trc", goldenDirectory() / ("header-" + GetParam() + ".trc"));
}

// Where there is one file for all buses it is made at once, and a conversion of the same source gives just the header.
TEST_P(TrcHeader, isAllThatASourceWithoutMessagesGives) {
  const TrcVersion& version = trcVersion(GetParam());
  const WorkingDirectory directory;
  fs::copy_file(goldenDirectory() / "header-source.trc", "header-source.trc");

  const Outcome outcome = convert("header-source.trc", "out.trc", version.number);

  if (version.hasBusColumn) {
    expectSuccess(outcome, {"out.trc"});
    expectGolden("out.trc", goldenDirectory() / ("header-" + GetParam() + ".trc"));
  } else {
    expectSuccess(outcome, {});
    EXPECT_EQ(directory.names(), std::vector<std::string>{"header-source.trc"});
  }
}

INSTANTIATE_TEST_SUITE_P(All, TrcHeader, testing::ValuesIn(versionTexts()),
                         [](const testing::TestParamInfo<std::string>& version) {
                           return "version" + identifier(version.param);
                         });

TEST(TrcGoldenFiles, areAllInUse) {
  std::set<std::string> known = {"README.md", "header-source.trc"};
  for (const Source& source : sources()) {
    known.insert("source-" + source.version + ".trc");
    for (const TrcVersion& target : trcVersions()) {
      for (const TargetFile& file : targetFiles(source, target)) {
        known.insert(file.golden);
      }
    }
  }
  for (const TrcVersion& version : trcVersions()) {
    known.insert("header-" + std::string(version.text) + ".trc");
    if (version.number >= 1.3) {
      known.insert("header-" + std::string(version.text) + "-btr.trc");
    }
  }
  std::set<std::string> present;
  for (const fs::directory_entry& entry : fs::directory_iterator(goldenDirectory())) {
    present.insert(entry.path().filename().string());
  }
  EXPECT_EQ(present, known);
}

}  // namespace
}  // namespace xlatr::conversions
