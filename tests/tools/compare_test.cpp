#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "tools/program.hpp"

namespace xlatr::cli {
namespace {

using nlohmann::json;
using testing::HasSubstr;

const std::string kComparedHead = ";$FILEVERSION=2.1\r\n;$STARTTIME=43894.5\r\n;$COLUMNS=N,O,T,B,I,d,R,L,D\r\n";
const std::string kFirst = "1 0.0 DT 1 0123 Rx - 2 01 02\r\n";
const std::string kSecond = "2 5.0 FB 1 18FF0102 Tx - 2 01 02\r\n";
const std::string kThird = "3 10.0 DT 1 0123 Rx - 2 01 03\r\n";
const std::string kChanged = "3 10.0 DT 1 0123 Rx - 2 01 04\r\n";

class CompareCommand : public testing::Test {
 protected:
  CompareCommand() {
    here_.write("a.trc", kComparedHead + kFirst + kSecond + kThird);
    here_.write("b.trc", kComparedHead + kFirst + kChanged);
  }

  Workspace here_;
};

TEST_F(CompareCommand, findsEqualTracesEqual) {
  here_.write("c.trc", kComparedHead + "noise\r\n" + kFirst + kSecond + kThird);
  const Ended run = here_.run({"compare", "a.trc", "c.trc"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.output, "a.trc and c.trc: the same 3 frames (times within 1 us)\n");
  EXPECT_THAT(run.errors, HasSubstr("c.trc: "));
}

TEST_F(CompareCommand, comparesWhatWasConverted) {
  ASSERT_EQ(here_.run({"convert", "a.trc", "a.mf4", "-q"}).exitCode, 0);
  const Ended run = here_.run({"compare", "a.trc", "a.mf4"});
  EXPECT_EQ(run.exitCode, 0) << run.output;
}

TEST_F(CompareCommand, showsWhatDiffers) {
  const Ended run = here_.run({"compare", "a.trc", "b.trc"});
  EXPECT_EQ(run.exitCode, 3);
  EXPECT_EQ(run.errors, "");
  EXPECT_EQ(run.output,
            "a.trc and b.trc: different (times within 1 us)\n"
            "  equal          1\n"
            "  different      1: data 1\n"
            "  only in a.trc  1\n"
            "  only in b.trc  0\n"
            "\n"
            "- a.trc\n"
            "+ b.trc\n"
            "\n"
            "- line 5:       0.005000  1  Tx  18FF0102  data          2  01 02  FD BRS\n"
            "- line 6:       0.010000  1  Rx       123  data          2  01 03\n"
            "+ line 5:       0.010000  1  Rx       123  data          2  01 04\n"
            "  differ in data\n");
  EXPECT_THAT(here_.run({"compare", "a.trc", "b.trc", "--limit", "1"}).output,
              HasSubstr("\n1 more; --limit shows them\n"));
  EXPECT_THAT(here_.run({"compare", "a.trc", "b.trc", "--limit", "0"}).output,
              HasSubstr("only in b.trc  0\n2 more; --limit shows them\n"));
}

TEST_F(CompareCommand, printsJson) {
  const Ended run = here_.run({"compare", "a.trc", "b.trc", "--json"});
  EXPECT_EQ(run.exitCode, 3);
  const json result = json::parse(run.output);
  EXPECT_EQ(result["same"], false);
  EXPECT_EQ(result["equal"], 1);
  EXPECT_EQ(result["tolerance_ns"], 1'000);
  EXPECT_EQ(result["different_by"], (json{{"data", 1}}));
  EXPECT_EQ(result["first"]["file"], "a.trc");
  EXPECT_EQ(result["first"]["only"], 1);
  ASSERT_EQ(result["differences"].size(), 2U);
  EXPECT_EQ(result["differences"][0]["second"], nullptr);
  EXPECT_EQ(result["differences"][1]["fields"], json::array({"data"}));
  EXPECT_EQ(result["differences"][1]["second"]["data"], "0104");
  EXPECT_EQ(result["differences"][1]["second"]["place"], 5);
}

TEST_F(CompareCommand, takesATolerance) {
  here_.write("late.trc", kComparedHead + "1 0.5 DT 1 0123 Rx - 2 01 02\r\n2 5.5 FB 1 18FF0102 Tx - 2 01 02\r\n" +
                              "3 10.5 DT 1 0123 Rx - 2 01 03\r\n");
  EXPECT_EQ(here_.run({"compare", "a.trc", "late.trc"}).exitCode, 3);
  const Ended run = here_.run({"compare", "a.trc", "late.trc", "--tolerance", "1ms"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.output, "a.trc and late.trc: the same 3 frames (times within 1 ms, up to 500 us apart)\n");
  EXPECT_EQ(here_.run({"compare", "a.trc", "late.trc", "--tolerance", "soon"}).exitCode, 2);
}

TEST_F(CompareCommand, comparesWhatIsSelected) {
  EXPECT_EQ(here_.run({"compare", "a.trc", "b.trc", "--until-time", "0.001"}).exitCode, 0);
  here_.write("noisy.trc", kComparedHead + kFirst + kSecond + kThird + "noise\r\n");
  EXPECT_EQ(here_.run({"compare", "a.trc", "noisy.trc"}).exitCode, 0);
  EXPECT_EQ(here_.run({"compare", "a.trc", "noisy.trc", "--kind", "comment"}).exitCode, 3);
}

TEST_F(CompareCommand, comparesTextsIfAsked) {
  here_.write("one.trc", kComparedHead + "1 1.0 EV 1 begin\r\n");
  here_.write("other.trc", kComparedHead + "1 1.0 EV 1 end\r\n");
  EXPECT_EQ(here_.run({"compare", "one.trc", "other.trc"}).exitCode, 0);
  const Ended run = here_.run({"compare", "one.trc", "other.trc", "--texts"});
  EXPECT_EQ(run.exitCode, 3);
  EXPECT_THAT(run.output, HasSubstr("event         0  begin\n"));
  EXPECT_EQ(here_.run({"compare", "one.trc", "other.trc", "--attributes"}).exitCode, 0);
}

// Recordings of other programs, each with a table of its frames that was made without this library.
TEST_F(CompareCommand, findsRecordingsEqualToTheirTables) {
  namespace fs = std::filesystem;
  const fs::path recordings = XLATR_RECORDINGS_DIR;
  int compared = 0;
  for (const char* const folder : {"blf", "mf4"}) {
    if (!fs::exists(recordings / folder)) {
      GTEST_SKIP() << "there is no " << recordings / folder;
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(recordings / folder)) {
      const fs::path table = fs::path(entry.path()).replace_extension(".expected.csv");
      if (entry.path().extension() == ".csv" || !fs::exists(table)) {
        continue;
      }
      const Ended run = here_.run({"compare", entry.path().string(), table.string()});
      EXPECT_EQ(run.exitCode, 0) << run.output << run.errors;
      ++compared;
    }
  }
  EXPECT_GT(compared, 10);
}

TEST_F(CompareCommand, needsTwoTraces) {
  EXPECT_EQ(here_.run({"compare", "a.trc"}).exitCode, 2);
  EXPECT_EQ(here_.run({"compare", "a.trc", "b.trc", "a.trc"}).exitCode, 2);
  const Ended run = here_.run({"compare", "a.trc", "missing.trc"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_TRUE(isOneErrorLine(run.errors));
}

}  // namespace
}  // namespace xlatr::cli
