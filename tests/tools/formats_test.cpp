#include "formats.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "tools/program.hpp"

namespace xlatr::cli {
namespace {

using testing::HasSubstr;

TEST(Formats, nameOrExtensionInAnyCaseNamesAFormat) {
  struct Case {
    const char* name;
    TraceFormat expected;
  };
  for (const auto& [name, expected] : std::initializer_list<Case>{
           {"trc", XLATR_FORMAT_TRC},
           {"TRC", XLATR_FORMAT_TRC},
           {".Trc", XLATR_FORMAT_TRC},
           {"btr", XLATR_FORMAT_BTR},
           {"asc", XLATR_FORMAT_ASC},
           {"lin", XLATR_FORMAT_LIN},
           {"ltrc", XLATR_FORMAT_LIN},
           {"csv", XLATR_FORMAT_CSV},
           {"btrc", XLATR_FORMAT_BTRC},
           {"mf4", XLATR_FORMAT_MF4},
           {"blf", XLATR_FORMAT_BLF},
           {".lin", XLATR_FORMAT_NONE},
           {"", XLATR_FORMAT_NONE},
           {".", XLATR_FORMAT_NONE},
           {"..trc", XLATR_FORMAT_NONE},
           {"trcx", XLATR_FORMAT_NONE},
       }) {
    EXPECT_EQ(formatFromName(name), expected) << name;
  }
}

TEST(Formats, listsTheFlagsOfASet) {
  EXPECT_THAT(formatsOf(XLATR_FORMAT_NONE), testing::IsEmpty());
  EXPECT_THAT(formatsOf(XLATR_FORMAT_CSV | XLATR_FORMAT_TRC), testing::ElementsAre(XLATR_FORMAT_TRC, XLATR_FORMAT_CSV));
  EXPECT_EQ(formatsOf(255).size(), 8U);
  EXPECT_EQ(nameList(XLATR_FORMAT_TRC | XLATR_FORMAT_LIN), "trc, ltrc");
}

TEST(Formats, knowsAllFormatsOfTheLibrary) {
  EXPECT_THAT(allFormats(),
              testing::IsSupersetOf({XLATR_FORMAT_TRC, XLATR_FORMAT_BTR, XLATR_FORMAT_ASC, XLATR_FORMAT_LIN,
                                     XLATR_FORMAT_CSV, XLATR_FORMAT_BTRC, XLATR_FORMAT_MF4, XLATR_FORMAT_BLF}));
  EXPECT_TRUE(std::is_sorted(allFormats().begin(), allFormats().end()));
  constexpr TraceFormat kTheseEight = 255;
  EXPECT_EQ(nameList(targetFormats() & kTheseEight), "trc, btr, asc, ltrc, csv, btrc, mf4");
  EXPECT_EQ(extensionList(XLATR_FORMAT_TRC | XLATR_FORMAT_BLF), ".trc, .blf");
}

TEST(Formats, csvIsNoSourceAndBlfNoTarget) {
  EXPECT_TRUE(isConversionSource(XLATR_FORMAT_TRC));
  EXPECT_FALSE(isConversionSource(XLATR_FORMAT_CSV));
  EXPECT_TRUE(isConversionSource(XLATR_FORMAT_BLF));
  EXPECT_TRUE(isConversionTarget(XLATR_FORMAT_TRC));
  EXPECT_TRUE(isConversionTarget(XLATR_FORMAT_CSV));
  EXPECT_TRUE(isConversionTarget(XLATR_FORMAT_LIN));
  EXPECT_FALSE(isConversionTarget(XLATR_FORMAT_BLF));
}

TEST(Formats, allButBlfAreWritten) {
  EXPECT_EQ(nameList(writtenFormats()), "trc, btr, asc, ltrc, csv, btrc, mf4");
}

TEST(FormatsCommand, tablesHaveARowForEachFormatAndVersion) {
  const Workspace here;
  const Ended run = here.run({"formats"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.errors, "");
  EXPECT_THAT(run.output, HasSubstr("\ntrc     BRIX trace file                      yes   yes\n"));
  EXPECT_THAT(run.output, HasSubstr("\nblf     Vector BLF trace file                yes   -\n"));
  EXPECT_THAT(run.output, HasSubstr("\ntrc 1.0          CAN          yes     -       none     1 ms    yes       -\n"));
  EXPECT_THAT(run.output, HasSubstr("\ntrc 1.2, 1.3     CAN          yes     yes     0-65535  1 us    yes       -\n"));
  EXPECT_THAT(run.output,
              HasSubstr("\nmf4 4.1 to 4.2   CAN, FD      yes     yes     0-255    1 ns    -         yes\n"));
  EXPECT_THAT(run.output, HasSubstr("\nltrc 1.0 to 1.2  LIN "));
}

TEST(FormatsCommand, tablesFitAnyTerminal) {
  const Workspace here;
  std::istringstream lines(here.run({"formats"}).output);
  for (std::string line; std::getline(lines, line);) {
    EXPECT_LE(line.size(), 80U) << line;
  }
}

TEST(FormatsCommand, jsonSaysWhatVersionsHold) {
  const Workspace here;
  const Ended run = here.run({"formats", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.errors;
  const auto json = nlohmann::json::parse(run.output);
  ASSERT_EQ(json.size(), allFormats().size());
  const auto& trc = json.at(0);
  EXPECT_EQ(trc.at("format"), "trc");
  EXPECT_EQ(trc.at("extension"), ".trc");
  EXPECT_EQ(trc.at("description"), "BRIX trace file");
  ASSERT_EQ(trc.at("versions").size(), 7U);
  EXPECT_EQ(trc.at("versions").at(6).at("version"), 3.0);
  EXPECT_EQ(trc.at("versions").at(6).at("xl"), true);
  EXPECT_EQ(trc.at("versions").at(0).at("resolution_ns"), 1'000'000);
  EXPECT_EQ(trc.at("compat_targets"), nlohmann::json({"trc", "btr", "asc", "csv", "btrc", "mf4"}));
  EXPECT_TRUE(json.at(7).at("versions").empty());
}

}  // namespace
}  // namespace xlatr::cli
