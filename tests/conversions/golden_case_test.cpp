#include "conversions/golden_case.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "support/temp_folder.hpp"

namespace xlatr::conversions {
namespace {

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::HasSubstr;

class GoldenCaseTest : public testing::Test {
 protected:
  GoldenCaseTest() : case_(fs::path(folder_.path()) / "trc-csv" / "a-case") {
    fs::create_directories(case_);
    std::ofstream(case_ / "source.trc") << "";
  }

  [[nodiscard]] GoldenCase read(const std::string& options) const {
    std::ofstream(case_ / "options") << options;
    return readGoldenCase(case_);
  }

  [[nodiscard]] std::string mistakeIn(const std::string& options) const {
    try {
      static_cast<void>(read(options));
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "none";
  }

  test::TempFolder folder_;
  fs::path case_;
};

TEST_F(GoldenCaseTest, hasDefaults) {
  const GoldenCase golden = read("");
  EXPECT_EQ(golden.source, case_ / "source.trc");
  EXPECT_EQ(golden.sourceName, "source.trc");
  ASSERT_EQ(golden.targets.size(), 1U);
  const GoldenTarget& target = golden.targets[0];
  EXPECT_EQ(target.folder, case_);
  EXPECT_EQ(target.format, XLATR_FORMAT_CSV);
  EXPECT_EQ(target.path, "out.csv");
  EXPECT_EQ(target.versions, std::vector<std::optional<double>>{std::nullopt});
  EXPECT_EQ(target.code, XLATR_SUCCESS);
  EXPECT_EQ(target.text, "");
  EXPECT_EQ(target.files, std::vector<std::string>{});
}

TEST_F(GoldenCaseTest, readsEveryKey) {
  const GoldenCase golden = read(
      "# a comment\n"
      "source = ../other/x.btr.layout\n"
      "modified = 5\n"
      "target = ./y\n"
      "version = 4.1 4.2\n"
      "separator = tab\n"
      "sorted = yes\n"
      "zipped = yes\n"
      "sessions = 3 1\n"
      "code = nothing converted\n"
      "text = \"a \\\"b\\\"\\n\"\n"
      "text = \"c \"\n"
      "files = a b\n"
      "folders = d\n"
      "unit tests = e\n");
  EXPECT_EQ(golden.source, case_.parent_path() / "other/x.btr.layout");
  EXPECT_EQ(golden.sourceName, "x.btr");
  EXPECT_EQ(golden.modified, 5);
  EXPECT_EQ(golden.unitTestFiles, std::vector<fs::path>{case_ / "e"});
  const GoldenTarget& target = golden.targets.at(0);
  EXPECT_EQ(target.path, "./y");
  EXPECT_EQ(target.versions, (std::vector<std::optional<double>>{4.1, 4.2}));
  EXPECT_EQ(target.separator, '\t');
  EXPECT_TRUE(target.sorted);
  EXPECT_TRUE(target.zipped);
  EXPECT_EQ(target.sessions, (std::vector<std::uint32_t>{3, 1}));
  EXPECT_EQ(target.code, XLATR_NOTHING_CONVERTED);
  EXPECT_EQ(target.text, "a \"b\"\nc ");
  EXPECT_EQ(target.files, (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(target.folders, std::vector<std::string>{"d"});
}

TEST_F(GoldenCaseTest, beginsEverySectionWithWhatStandsBeforeTheFirst) {
  const GoldenCase golden = read("files = a\n[one]\nversion = 2.1\n[two]\nfiles = b\nunit tests = c\n");
  ASSERT_EQ(golden.targets.size(), 2U);
  EXPECT_EQ(golden.targets[0].folder, case_ / "one");
  EXPECT_EQ(golden.targets[0].files, std::vector<std::string>{"a"});
  EXPECT_EQ(golden.targets[0].versions, std::vector<std::optional<double>>{2.1});
  EXPECT_EQ(golden.targets[1].files, std::vector<std::string>{"b"});
  EXPECT_EQ(golden.targets[1].versions, std::vector<std::optional<double>>{std::nullopt});
  EXPECT_EQ(golden.unitTestFiles, std::vector<fs::path>{case_ / "two/c"});
}

TEST_F(GoldenCaseTest, expectsALayoutIfThereIsOne) {
  const GoldenTarget target = read("").targets.at(0);
  EXPECT_EQ(expectedFile(target, "out.mf4"), case_ / "out.mf4");
  std::ofstream(case_ / "out.mf4.layout") << "";
  EXPECT_EQ(expectedFile(target, "out.mf4"), case_ / "out.mf4.layout");
}

TEST_F(GoldenCaseTest, namesTheLineOfAMistake) {
  EXPECT_THAT(mistakeIn("files = a\nfile = b\n"), EndsWith("options:2: no such key: file = b"));
  EXPECT_THAT(mistakeIn("version 2\n"), HasSubstr("no KEY = VALUE"));
  EXPECT_THAT(mistakeIn("zipped = maybe\n"), HasSubstr("yes or no"));
  EXPECT_THAT(mistakeIn("separator = ;;\n"), HasSubstr("a separator is one character"));
  EXPECT_THAT(mistakeIn("text = x\n"), HasSubstr("a text stands in quotes"));
  EXPECT_THAT(mistakeIn("version = new\n"), HasSubstr("options:1: "));
  EXPECT_THAT(mistakeIn("code = bad\n"), HasSubstr("options:1: "));
  fs::remove(case_ / "source.trc");
  EXPECT_THAT(mistakeIn(""), HasSubstr("neither a source nor a line that names one"));
}

}  // namespace
}  // namespace xlatr::conversions
