// Every folder of tests/golden is a test: its source is converted as its options say, and what comes of it is compared
// byte by byte with the files that lie there.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "conversions/conversion_support.hpp"
#include "conversions/golden_case.hpp"
#include "support/conversion.hpp"
#include "support/layout.hpp"
#include "support/mf4_checker.hpp"

namespace xlatr::conversions {
namespace {

namespace fs = std::filesystem;
using test::LayoutNames;

bool updatesGoldenFiles() {
  const char* const value = std::getenv("XLATR_UPDATE_GOLDEN");  // NOLINT(concurrency-mt-unsafe): one thread
  return value != nullptr && std::string_view(value) == "1";
}

std::uint64_t nowNs() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::seconds>(now).count()) * 1000000000U;
}

bool isMf4(std::string_view name) {
  return name.ends_with(".mf4");
}

// The moment that an MF4 file names as that of its writing.
std::uint64_t writtenNsOf(std::string_view file) {
  constexpr std::size_t kOffset = 208;
  std::uint64_t value = 0;
  for (std::size_t index = 8; index-- > 0 && file.size() >= kOffset + 8;) {
    value = value << 8 | static_cast<unsigned char>(file[kOffset + index]);
  }
  return value;
}

// What the layout of an expected file can't know: the version that was asked for and the moment of writing.
LayoutNames namesOf(std::optional<double> version, std::string_view written) {
  LayoutNames names;
  names.numbers["written"] = writtenNsOf(written);
  if (version.has_value()) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%.2f", *version);
    names.texts["version"] = text.data();
    names.numbers["versionNumber"] = static_cast<std::uint64_t>(std::lround(*version * 100));
  }
  return names;
}

test::Options optionsOf(const GoldenTarget& target, std::optional<double> version) {
  test::Options options{.format = target.format};
  if (version.has_value()) {
    options.version(*version);
  }
  if (target.separator.has_value()) {
    options.separator(*target.separator);
  }
  if (target.sorted) {
    options.flag(XLATR_OPTION_SORTED);
  }
  if (target.zipped) {
    options.flag(XLATR_OPTION_ZIPPED);
  }
  for (const std::uint32_t session : target.sessions) {
    options.session(session);
  }
  return options;
}

std::string bytesOf(const fs::path& path) {
  return path.extension() == kLayoutEnding ? test::layOutFile(path, {}) : readFile(path);
}

void compareText(const std::string& written, const fs::path& expected) {
  if (updatesGoldenFiles()) {
    fs::create_directories(expected.parent_path());
    writeFile(expected, written);
    return;
  }
  if (!fs::exists(expected)) {
    ADD_FAILURE() << "there is no " << expected;
    return;
  }
  EXPECT_TRUE(sameBytes(written, readFile(expected))) << "in " << expected;
}

// A layout is never rewritten: its lines say more than its bytes.
void compareLaidOut(const std::string& written, const fs::path& layout, const LayoutNames& names) {
  const test::LaidOut expected = test::laidOutFile(layout, names);
  const auto offset = static_cast<std::size_t>(std::ranges::mismatch(written, expected.bytes).in1 - written.begin());
  EXPECT_TRUE(sameData(written, expected.bytes)) << "in " << layout << "\n  " << expected.lineAt(offset);
}

class GoldenCases : public testing::TestWithParam<fs::path> {
 protected:
  static void convertTo(const GoldenCase& golden, const GoldenTarget& target, std::optional<double> version) {
    SCOPED_TRACE(target.name + (version.has_value() ? " in version " + std::to_string(*version) : ""));
    const WorkingDirectory directory;
    writeFile(golden.sourceName, bytesOf(golden.source));
    if (golden.modified.has_value()) {
      const std::chrono::sys_seconds moment{std::chrono::seconds(*golden.modified)};
      fs::last_write_time(golden.sourceName, std::chrono::file_clock::from_sys(moment));
    }
    for (const std::string& folder : target.folders) {
      fs::create_directory(folder);
    }
    const std::uint64_t before = nowNs();
    test::Result result;
    const std::int32_t code = optionsOf(target, version).convert(golden.sourceName, target.path, result);
    expectResult(golden, target, code, result);
    expectNames(golden, target, directory.names());
    for (const std::string& folder : target.folders) {
      EXPECT_TRUE(fs::is_empty(folder)) << folder;
    }
    for (const std::string& name : target.files) {
      if (fs::exists(name)) {
        expectContent(target, version, name, before);
      }
    }
  }

 private:
  static void expectResult(const GoldenCase& golden, const GoldenTarget& target, std::int32_t code,
                           const test::Result& result) {
    EXPECT_EQ(code, target.code);
    EXPECT_EQ(result.status(), target.code);
    EXPECT_TRUE(result.finished());
    EXPECT_EQ(target.textGoesOn ? result.text().substr(0, target.text.size()) : result.text(), target.text);
    std::vector<std::string> files = result.files();
    std::vector<std::string> expected = target.files;
    if (golden.sourceName.ends_with(".btr")) {  // its sessions end in any order
      std::ranges::sort(files);
      std::ranges::sort(expected);
    }
    EXPECT_EQ(files, expected);
  }

  static void expectNames(const GoldenCase& golden, const GoldenTarget& target,
                          const std::vector<std::string>& present) {
    std::set<std::string> expected = {golden.sourceName};
    expected.insert(target.files.begin(), target.files.end());
    expected.insert(target.folders.begin(), target.folders.end());
    EXPECT_EQ(present, std::vector<std::string>(expected.begin(), expected.end()));
  }

  static void expectContent(const GoldenTarget& target, std::optional<double> version, const std::string& name,
                            std::uint64_t before) {
    const std::string written = readFile(name);
    if (isMf4(name) && !written.empty()) {
      EXPECT_GE(writtenNsOf(written), before);
      EXPECT_LE(writtenNsOf(written), nowNs());
      EXPECT_EQ(faultsOf(test::checkMf4(written)), "");
    }
    const fs::path expected = expectedFile(target, name);
    if (expected.extension() == kLayoutEnding) {
      compareLaidOut(written, expected, namesOf(version, written));
    } else {
      compareText(written, expected);
    }
  }
};

TEST_P(GoldenCases, convertsAsExpected) {
  const GoldenCase golden = readGoldenCase(GetParam());
  for (const GoldenTarget& target : golden.targets) {
    for (const std::optional<double> version : target.versions) {
      convertTo(golden, target, version);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Golden, GoldenCases, testing::ValuesIn(goldenCaseFolders()), [](const auto& test) {
  std::string name = test.param.parent_path().filename().string() + "_" + test.param.filename().string();
  std::ranges::replace_if(
      name, [](char c) { return c == '.' || c == '-'; }, '_');
  return name;
});

void insertWithIncluded(const fs::path& path, std::set<fs::path>& files) {
  files.insert(path);
  if (path.extension() == kLayoutEnding && fs::exists(path)) {
    for (const fs::path& included : test::includesOf(path)) {
      files.insert(included);
    }
  }
}

// Those files of the first set that the second one lacks, one per line.
std::string missingOf(const std::set<fs::path>& files, const std::set<fs::path>& others) {
  std::string lines;
  for (const fs::path& file : files) {
    if (!others.contains(file)) {
      lines += file.lexically_relative(XLATR_GOLDEN_DIR).string() + "\n";
    }
  }
  return lines;
}

TEST(GoldenFiles, areAllInUse) {
  std::set<fs::path> used;
  for (const fs::path& folder : goldenCaseFolders()) {
    const GoldenCase golden = readGoldenCase(folder);
    used.insert(folder / "options");
    insertWithIncluded(golden.source, used);
    used.insert(golden.unitTestFiles.begin(), golden.unitTestFiles.end());
    for (const GoldenTarget& target : golden.targets) {
      for (const std::string& name : target.files) {
        insertWithIncluded(expectedFile(target, name), used);
      }
    }
  }
  std::set<fs::path> present;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(XLATR_GOLDEN_DIR)) {
    const std::string name = entry.path().filename().string();
    if (entry.is_regular_file() && name != "README.md" && name != ".gitattributes") {
      present.insert(entry.path());
    }
  }
  EXPECT_EQ(missingOf(present, used), "") << "nothing reads these files";
  EXPECT_EQ(missingOf(used, present), "") << "these files are not there";
}

}  // namespace
}  // namespace xlatr::conversions
