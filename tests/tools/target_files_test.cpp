#include "compat/target_files.hpp"

#include <gmock/gmock.h>

#include "tools/program.hpp"

namespace xlatr::cli {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(TargetFiles, takeTheTargetFormatsExtension) {
  struct Case {
    const char* target;
    TraceFormat format;
    const char* expected;
  };
  for (const auto& [target, format, expected] : std::initializer_list<Case>{
           {"x.trc", XLATR_FORMAT_TRC, "x.trc"},
           {"x.TRC", XLATR_FORMAT_TRC, "x.trc"},
           {"x.trc", XLATR_FORMAT_ASC, "x.asc"},
           {"x.bak", XLATR_FORMAT_ASC, "x.bak.asc"},
           {"x", XLATR_FORMAT_TRC, "x.trc"},
           {"a.b/x.y.mf4", XLATR_FORMAT_TRC, "a.b/x.y.trc"},
           {"a.trc/x", XLATR_FORMAT_TRC, "a.trc/x.trc"},
           {"../x.ltrc", XLATR_FORMAT_CSV, "../x.csv"},
           {"/x.", XLATR_FORMAT_TRC, "/x..trc"},
           {".trc", XLATR_FORMAT_TRC, ".trc"},
       }) {
    EXPECT_EQ(targetFiles(target, format, 3.0, XLATR_FORMAT_TRC).plainPath(), expected) << target;
  }
}

TEST(TargetFiles, onlyTracesWithoutBusColumnAreSplit) {
  for (const double version : {1.0, 1.1, 2.0}) {
    EXPECT_TRUE(targetFiles("x.trc", XLATR_FORMAT_TRC, version, XLATR_FORMAT_TRC).perBus) << version;
  }
  for (const double version : {1.2, 1.3, 2.1, 3.0}) {
    EXPECT_FALSE(targetFiles("x.trc", XLATR_FORMAT_TRC, version, XLATR_FORMAT_TRC).perBus) << version;
  }
  EXPECT_FALSE(targetFiles("x.csv", XLATR_FORMAT_CSV, 1.0, XLATR_FORMAT_TRC).perBus);
}

TEST(TargetFiles, sessionTargetStaysInTheWorkingDirectory) {
  EXPECT_EQ(targetFiles("x.trc", XLATR_FORMAT_TRC, 3.0, XLATR_FORMAT_BTR).pathForLibrary(), "./x.trc");
  EXPECT_EQ(targetFiles("out/x.trc", XLATR_FORMAT_TRC, 3.0, XLATR_FORMAT_BTR).pathForLibrary(), "out/x.trc");
  EXPECT_EQ(targetFiles("x.trc", XLATR_FORMAT_TRC, 3.0, XLATR_FORMAT_TRC).pathForLibrary(), "x.trc");
}

TEST(TargetFiles, knowTheNumberedNames) {
  const auto perBus = targetFiles("x.trc", XLATR_FORMAT_TRC, 2.0, XLATR_FORMAT_TRC);
  const auto perSession = targetFiles("x.csv", XLATR_FORMAT_CSV, 1.0, XLATR_FORMAT_BTR);
  const auto perBoth = targetFiles("x.trc", XLATR_FORMAT_TRC, 1.1, XLATR_FORMAT_BTR);
  EXPECT_TRUE(perBus.mayWrite("x_BUS1.trc"));
  EXPECT_TRUE(perBus.mayWrite("x_BUS17.trc"));
  EXPECT_TRUE(perSession.mayWrite("x_S0.csv"));
  EXPECT_TRUE(perBoth.mayWrite("x_S10_BUS2.trc"));
  for (const char* name : {"x.trc", "x_BUS.trc", "x_BUSa.trc", "x_BUS1a.trc", "x_BUS1.csv", "xx_BUS1.trc", "x_BUS1",
                           "X_BUS1.trc", "x_S0_BUS1.trc", ""}) {
    EXPECT_FALSE(perBus.mayWrite(name)) << name;
  }
  for (const char* name : {"x_S0.trc", "x_BUS2.trc", "x_BUS2_S0.trc"}) {
    EXPECT_FALSE(perBoth.mayWrite(name)) << name;
  }
}

TEST(TargetFiles, findWhatIsInTheWay) {
  const Workspace here;
  const std::string target = (here / "x.trc").string();
  const auto one = targetFiles(target, XLATR_FORMAT_TRC, 3.0, XLATR_FORMAT_TRC);
  const auto split = targetFiles(target, XLATR_FORMAT_TRC, 2.0, XLATR_FORMAT_TRC);
  EXPECT_THAT(one.existing(), IsEmpty());
  EXPECT_THAT(split.existing(), IsEmpty());
  here.write("x_BUS2.trc", "");
  here.write("x_BUS1.trc", "");
  here.write("x_BUS1.asc", "");
  std::filesystem::create_directory(here / "x_BUS3.trc");
  std::filesystem::create_symlink("elsewhere", here / "x_BUS4.trc");
  EXPECT_THAT(one.existing(), IsEmpty());
  EXPECT_THAT(split.existing(), ElementsAre((here / "x_BUS1.trc").string(), (here / "x_BUS2.trc").string(),
                                            (here / "x_BUS4.trc").string()));
  here.write("x.trc", "");
  EXPECT_THAT(one.existing(), ElementsAre(target));
  EXPECT_EQ(split.existing().size(), 4U);
}

TEST(TargetFiles, findNothingInAFolderThatDoesNotExist) {
  const Workspace here;
  const std::string target = (here / "missing/x.trc").string();
  EXPECT_THAT(targetFiles(target, XLATR_FORMAT_TRC, 2.0, XLATR_FORMAT_TRC).existing(), IsEmpty());
}

TEST(TargetFiles, messagesNameTheFirst) {
  EXPECT_EQ(firstAndCount({"a"}), "a");
  EXPECT_EQ(firstAndCount({"a", "b", "c"}), "a and 2 more");
}

}  // namespace
}  // namespace xlatr::cli
