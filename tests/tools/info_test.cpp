#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "support/btr_image.hpp"
#include "support/mf4_samples.hpp"
#include "tools/program.hpp"

namespace xlatr::cli {
namespace {

using testing::HasSubstr;

TEST(InfoCommand, showsWhatAFileIs) {
  const Workspace here;
  const std::string trace = traceOfBuses({1, 2});
  here.write("drive.trc", trace);
  const Ended run = here.run({"info", "drive.trc"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.output,
            "drive.trc\n"
            "  format      trc, BRIX trace file\n"
            "  version     2.1\n"
            "  start time  2021-07-26T05:19:59.721\n"
            "  size        " +
                std::to_string(trace.size()) +
                " bytes\n"
                "  valid       yes\n"
                "  targets     trc, btr, asc, csv, btrc, mf4\n");
  EXPECT_EQ(run.errors, "");
}

TEST(InfoCommand, showsWhatALogIs) {
  const Workspace here;
  here.write("drive.asc",
             "date Mon Jul 26 05:19:59.721 2021\nbase hex  timestamps absolute\n// version 8.1.0\n0.1 1 100 Rx d 0\n");
  const Ended run = here.run({"info", "drive.asc"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.output,
            "drive.asc\n"
            "  format      asc, CANalyzer ASCII logging file\n"
            "  version     8.1\n"
            "  start time  2021-07-26T05:19:59.721\n"
            "  size        98 bytes\n"
            "  valid       yes\n"
            "  targets     trc, csv\n");
}

TEST(InfoCommand, showsTheGroupsOfAMeasurementFile) {
  const Workspace here;
  here.write("drive.mf4", test::mf4Sample());
  const Ended run = here.run({"info", "drive.mf4"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.output,
            "drive.mf4\n"
            "  format      mf4, ASAM Measurement Data Format\n"
            "  version     4.11\n"
            "  start time  2021-07-26T06:00:00.000\n"
            "  size        8.2 kB\n"
            "  valid       yes\n"
            "  convertible yes\n"
            "  targets     trc\n"
            "  data group 1\n"
            "    CAN_DataFrame: cycle count 2\n"
            "    CAN_RemoteFrame: cycle count 0\n"
            "    CAN_ErrorFrame: cycle count 0\n");

  const Ended asJson = here.run({"info", "--json", "drive.mf4"});
  const auto json = nlohmann::json::parse(asJson.output).at(0);
  EXPECT_EQ(json.at("version"), 4.11);
  EXPECT_EQ(json.at("convertible"), true);
  EXPECT_EQ(json.at("reason"), nullptr);
  EXPECT_EQ(json.at("groupsComplete"), true);
  EXPECT_EQ(json.at("dataGroups"), nlohmann::json::parse(R"([{"channelGroups": [
                {"name": "CAN_DataFrame", "cycleCount": 2},
                {"name": "CAN_RemoteFrame", "cycleCount": 0},
                {"name": "CAN_ErrorFrame", "cycleCount": 0}]}])"));
}

TEST(InfoCommand, saysWhyAMeasurementFileCannotBeConverted) {
  struct Case {
    const char* name;
    std::size_t offset;
    char value;
    const char* reason;
  };
  const Case cases[] = {
      {"unfinished", 60, 1, "Only finalized MDF4 files are supported"},
      {"no header", 66, 'X', "Only finalized MDF4 files are supported"},
      {"no bus", 424 + 32, 0, "CAN bus not available. There is no data to be converted"},
  };
  const Workspace here;
  for (const Case& item : cases) {
    std::string file = test::mf4Sample();
    file[item.offset] = item.value;
    if (item.value == 0) {
      file.replace(item.offset, 8, 8, '\0');
    }
    here.write("x.mf4", file);
    const Ended run = here.run({"info", "x.mf4"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.output, HasSubstr(std::string("  convertible no: ") + item.reason + "\n")) << item.name;
    const auto json = nlohmann::json::parse(here.run({"info", "--json", "x.mf4"}).output).at(0);
    EXPECT_EQ(json.at("convertible"), false) << item.name;
    EXPECT_EQ(json.at("reason"), item.reason) << item.name;
    const Ended conversion = here.run({"convert", "-f", "x.mf4", "x.trc"});
    EXPECT_EQ(conversion.exitCode, 1) << item.name;
    EXPECT_THAT(conversion.errors, HasSubstr(item.reason)) << item.name;
  }
}

TEST(InfoCommand, anInvalidMeasurementFileHasNoGroups) {
  const Workspace here;
  here.write("x.mf4", "no measurement at all");
  const Ended run = here.run({"info", "x.mf4"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.output, HasSubstr("  version     unknown\n"));
  EXPECT_THAT(run.output, HasSubstr("  valid       no\n"));
  EXPECT_THAT(run.output, testing::EndsWith("  targets     trc\n"));
}

// Three sessions: the second begins in its middle, and the third has lost its sectors.
std::string threeSessions() {
  test::BtrImage image(6);
  image.session(0, {}).session(1, {.firstSector = 2, .date = {.hour = 9}}).session(2, {.firstSector = 6});
  image.sector(1, {}).sector(2, {.hour = 9}, {}, 2).sector(3, {.hour = 9}).sector(4, {.hour = 9});
  return image.bytes();
}

TEST(InfoCommand, listsTheSessionsOfAFile) {
  const Workspace here;
  here.write("log.btr", threeSessions());
  const Ended run = here.run({"info", "log.btr"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_EQ(run.output,
            "log.btr\n"
            "  format      btr, BRIX-Bridge Pro - Binary trace file\n"
            "  version     3.0\n"
            "  start time  2024-03-01T08:15:30.250\n"
            "  size        3.1 kB\n"
            "  valid       yes\n"
            "  targets     trc, asc, csv\n"
            "  sessions    3\n"
            "    1  2024-03-01T08:15:30.250  1 sector\n"
            "    2  2024-03-01T09:15:30.250  4 sectors, circular\n"
            "    3  2024-03-01T08:15:30.250  0 sectors\n");
  const auto json = nlohmann::json::parse(here.run({"info", "--json", "log.btr"}).output);
  EXPECT_EQ(json.at(0).at("sessions"), nlohmann::json::parse(R"([
              {"index": 1, "startTime": "2024-03-01T08:15:30.250", "sectors": 1, "circular": false},
              {"index": 2, "startTime": "2024-03-01T09:15:30.250", "sectors": 4, "circular": true},
              {"index": 3, "startTime": "2024-03-01T08:15:30.250", "sectors": 0, "circular": false}])"));
}

TEST(InfoCommand, aSessionFileWithoutSessionsIsNotValid) {
  const Workspace here;
  here.write("log.btr", "too short");
  const Ended run = here.run({"info", "log.btr"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.output, HasSubstr("  version     unknown\n"));
  EXPECT_THAT(run.output, HasSubstr("  valid       no\n"));
  EXPECT_THAT(run.output, testing::EndsWith("  sessions    0\n"));
  EXPECT_EQ(nlohmann::json::parse(here.run({"info", "--json", "log.btr"}).output).at(0).at("sessions").size(), 0U);
}

TEST(InfoCommand, aFileWithoutHeaderIsNotValid) {
  const Workspace here;
  here.write("junk.trc", "no trace at all\n");
  const Ended run = here.run({"info", "junk.trc"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.output, HasSubstr("  version     unknown\n"));
  EXPECT_THAT(run.output, HasSubstr("  start time  unknown\n"));
  EXPECT_THAT(run.output, HasSubstr("  valid       no\n"));
}

// A table is only a target: there is nothing to check.
TEST(InfoCommand, showsOfATableWhatItsNameSays) {
  const Workspace here;
  here.write("drive.trc", traceOfBuses({1}));
  ASSERT_EQ(here.run({"convert", "drive.trc", "drive.csv"}).exitCode, 0);
  const Ended run = here.run({"info", "drive.csv"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_THAT(run.output, testing::StartsWith("drive.csv\n  format      csv, Character-separated values\n"));
  EXPECT_THAT(run.output, HasSubstr("  valid       not checked\n"));
  EXPECT_THAT(run.output, HasSubstr("  targets     none\n"));
}

TEST(InfoCommand, jsonIsAnArrayWithOneObjectPerFile) {
  const Workspace here;
  const std::string trace = traceOfBuses({1});
  here.write("drive.TRC", trace);
  here.write("junk.trc", "");
  const Ended run = here.run({"info", "drive.TRC", "junk.trc", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.errors;
  const auto json = nlohmann::json::parse(run.output);
  ASSERT_EQ(json.size(), 2U);
  EXPECT_EQ(json.at(0), nlohmann::json({{"file", "drive.TRC"},
                                        {"format", "trc"},
                                        {"description", "BRIX trace file"},
                                        {"version", 2.1},
                                        {"startTime", "2021-07-26T05:19:59.721"},
                                        {"size", trace.size()},
                                        {"valid", true},
                                        {"targets", {"trc", "btr", "asc", "csv", "btrc", "mf4"}}}));
  EXPECT_EQ(json.at(1).at("version"), nullptr);
  EXPECT_EQ(json.at(1).at("startTime"), nullptr);
  EXPECT_EQ(json.at(1).at("size"), 0);
  EXPECT_EQ(json.at(1).at("valid"), false);
}

TEST(InfoCommand, aFileThatCannotBeReadHidesNoOther) {
  const Workspace here;
  here.write("drive.trc", traceOfBuses({1}));
  const Ended run = here.run({"info", "missing.trc", "drive.trc"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.output, testing::StartsWith("drive.trc\n"));
  EXPECT_EQ(run.errors, "xlatr: missing.trc: no such file; check the path\n");

  const Ended asJson = here.run({"info", "--json", "missing.trc", "drive.trc"});
  EXPECT_EQ(asJson.exitCode, 1);
  const auto json = nlohmann::json::parse(asJson.output);
  ASSERT_EQ(json.size(), 2U);
  EXPECT_EQ(json.at(0).at("file"), "missing.trc");
  EXPECT_THAT(json.at(0).at("error").get<std::string>(), HasSubstr("no such file"));
  EXPECT_EQ(json.at(1).at("file"), "drive.trc");
}

TEST(InfoCommand, namesWhatIsWrongWithTheFile) {
  const Workspace here;
  std::filesystem::create_directory(here / "folder.trc");
  here.write("notes.txt", "x");
  here.write("secret.trc", "x");
  std::filesystem::permissions(here / "secret.trc", std::filesystem::perms::none);
  ASSERT_EQ(::mkfifo((here / "pipe.trc").c_str(), 0600), 0);
  struct Case {
    const char* name;
    const char* expected;
  };
  std::vector<Case> cases{{"folder.trc", "is a folder"},
                          {"notes.txt", "no extension of a trace format"},
                          {"pipe.trc", "is not a regular file"},
                          {"notes.txt/drive.trc", "no such file"}};
  if (::geteuid() != 0) {  // root may read everything
    cases.push_back({"secret.trc", "Permission denied"});
  }
  for (const auto& [name, expected] : cases) {
    const Ended run = here.run({"info", name});
    EXPECT_EQ(run.exitCode, 1) << name;
    EXPECT_TRUE(isOneErrorLine(run.errors)) << run.errors;
    EXPECT_THAT(run.errors, testing::StartsWith("xlatr: " + std::string(name) + ": ")) << name;
    EXPECT_THAT(run.errors, HasSubstr(expected)) << name;
  }
}

TEST(InfoCommand, jsonHoldsEvenAPathThatIsNotUtf8) {
  const Workspace here;
  here.write("\xFF.trc", traceOfBuses({1}));
  const Ended run = here.run({"info", "--json", "\xFF.trc"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_EQ(nlohmann::json::parse(run.output).size(), 1U);
}

}  // namespace
}  // namespace xlatr::cli
