#include "formats.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>

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

TEST(FormatsCommand, tableHasARowForEachFormat) {
  const Workspace here;
  const Ended run = here.run({"formats"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.errors, "");
  EXPECT_EQ(std::count(run.output.begin(), run.output.end(), '\n'), std::ssize(allFormats()) + 1);
  EXPECT_THAT(run.output, HasSubstr("1.0, 1.1, 1.2, 1.3, 2.0, 2.1, 3.0"));
  EXPECT_THAT(run.output, HasSubstr("trc, btr, asc, csv, btrc, mf4\n"));
}

TEST(FormatsCommand, jsonHoldsTheMatrix) {
  const Workspace here;
  const Ended run = here.run({"formats", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.errors;
  const auto json = nlohmann::json::parse(run.output);
  ASSERT_TRUE(json.is_array());
  ASSERT_EQ(json.size(), allFormats().size());
  for (const auto& row : json) {
    EXPECT_TRUE(row.at("format").is_string()) << row;
    EXPECT_EQ(row.at("extension"), std::string(".").append(row.at("format").get<std::string>()));
    EXPECT_TRUE(row.at("description").is_string()) << row;
    EXPECT_TRUE(row.at("versions").is_array()) << row;
    EXPECT_TRUE(row.at("reads").is_boolean()) << row;
    EXPECT_TRUE(row.at("writes").is_boolean()) << row;
    EXPECT_TRUE(row.at("targets").is_array()) << row;
  }
  const auto& trc = json.at(0);
  EXPECT_EQ(trc.at("format"), "trc");
  EXPECT_EQ(trc.at("description"), "BRIX trace file");
  EXPECT_EQ(trc.at("versions"), nlohmann::json({1.0, 1.1, 1.2, 1.3, 2.0, 2.1, 3.0}));
  EXPECT_EQ(trc.at("targets"), nlohmann::json({"trc", "btr", "asc", "csv", "btrc", "mf4"}));
  const auto& csv = json.at(4);
  EXPECT_EQ(csv.at("format"), "csv");
  EXPECT_EQ(csv.at("reads"), false);
  EXPECT_EQ(csv.at("writes"), true);
  EXPECT_EQ(csv.at("versions"), nlohmann::json({1.0}));
  EXPECT_EQ(csv.at("targets"), nlohmann::json::array());
}

}  // namespace
}  // namespace xlatr::cli
