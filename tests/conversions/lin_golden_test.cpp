#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

#include "conversions/conversion_support.hpp"

// LIN traces of every version, with every direction, checksum type, length and combination of errors, as tables and
// logs.
namespace xlatr::conversions {
namespace {

namespace fs = std::filesystem;

fs::path linGolden(const std::string& name) {
  return goldenDirectory().parent_path() / "lin" / name;
}

class LinTrace : public testing::TestWithParam<const char*> {
 protected:
  LinTrace() { fs::copy_file(linGolden(source_), source_); }

  WorkingDirectory directory_;
  const std::string name_ = std::string("all-") + GetParam();
  const std::string source_ = name_ + ".ltrc";
};

TEST_P(LinTrace, becomesATable) {
  expectSuccess(convert(source_, "out.csv", std::nullopt, XLATR_FORMAT_CSV), {"out.csv"});
  expectGolden("out.csv", linGolden(name_ + ".csv"));
}

TEST_P(LinTrace, becomesALogOfBothForms) {
  expectSuccess(convert(source_, "out.asc", 7.0, XLATR_FORMAT_ASC), {"out.asc"});
  expectGolden("out.asc", linGolden(name_ + "-to-7.0.asc"));
  expectSuccess(convert(source_, "out.asc", 8.0, XLATR_FORMAT_ASC), {"out.asc"});
  expectGolden("out.asc", linGolden(name_ + "-to-8.0.asc"));
}

INSTANTIATE_TEST_SUITE_P(All, LinTrace, testing::Values("1.0", "1.1", "1.2"), [](const auto& test) {
  std::string version = test.param;
  version[1] = '_';
  return version;
});

TEST(LinEdges, everyLineThatIsNoFrameIsAComment) {
  const WorkingDirectory directory;
  writeFile("in.ltrc", ";$FILEVERSION=1.2\nno frame\n\n; a comment\n1) 1000 Pub 2A 2 01 02 7C CL\n");
  expectSuccess(convert("in.ltrc", "out.asc", 7.0, XLATR_FORMAT_ASC), {"out.asc"});
  const std::vector<std::string> lines = splitLines(readFile("out.asc"));
  EXPECT_EQ(std::vector<std::string>(lines.begin() + 4, lines.end()),
            (std::vector<std::string>{"// no frame", "// ", "   0.001000 1  2A              Rx   d 2 01 02"}));
}

TEST(LinEdges, aFrameOfMoreThan8BytesWritesNothingToALog) {
  const WorkingDirectory directory;
  writeFile("in.ltrc", ";$FILEVERSION=1.2\n1) 1000 Pub 2A 9 01 02 03 04 05 06 07 08 09 7C CL\n");
  expectSuccess(convert("in.ltrc", "out.asc", 7.0, XLATR_FORMAT_ASC), {"out.asc"});
  EXPECT_EQ(splitLines(readFile("out.asc")).size(), 4U);
}

TEST(LinEdges, aStartBefore1970FailsTheConversion) {
  const WorkingDirectory directory;
  writeFile("in.ltrc", ";$FILEVERSION=1.1\n;$STARTTIME=22201.25\n1) 1 Pub 01 0 FF CL\n");
  const Outcome outcome = convert("in.ltrc", "out.csv", std::nullopt, XLATR_FORMAT_CSV);
  EXPECT_EQ(outcome.status, 3);
  EXPECT_EQ(outcome.text.find("Invalid data for a DateTime object: {"), 0U) << outcome.text;
}

TEST(LinEdges, noTraceIsWrittenByAConversion) {
  const WorkingDirectory directory;
  writeFile("in.trc", ";$FILEVERSION=1.1\n1) 1 Rx 0123 1 AA\n");
  EXPECT_EQ(convert("in.trc", "out.ltrc", 1.2, XLATR_FORMAT_LIN).status, 3);
  EXPECT_EQ(directory.names(), std::vector<std::string>{"in.trc"});
  writeFile("in.ltrc", ";$FILEVERSION=1.2\n");
  EXPECT_EQ(convert("in.ltrc", "out.trc", 2.1, XLATR_FORMAT_TRC).status, 3);
}

}  // namespace
}  // namespace xlatr::conversions
