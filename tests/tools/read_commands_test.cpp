#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "support/btr_image.hpp"
#include "support/mf4_samples.hpp"
#include "tools/program.hpp"

// merge, cat, check and info as a user types them.
namespace xlatr::cli {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

using Json = nlohmann::json;

constexpr const char* kHead =
    ";$FILEVERSION=2.1\r\n"
    ";$STARTTIME=44403.5\r\n"
    ";$COLUMNS=N,O,T,B,I,d,R,L,D\r\n";

std::string traceOf(const std::string& lines) {
  return kHead + lines;
}

// ---- merge

TEST(MergeCommand, putsTracesTogetherByTime) {
  const Workspace here;
  here.write("a.trc", traceOf("1 1.0 DT 1 0001 Rx - 0\r\n2 3.0 DT 1 0002 Rx - 0\r\n"));
  here.write("b.trc", traceOf("1 2.0 DT 2 0003 Rx - 0\r\n"));
  const Ended run = here.run({"merge", "a.trc", "b.trc", "-o", "all.csv", "--target-version", "2.0"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.errors, "xlatr: a.trc and 1 more -> all.csv: 3 frames read, 3 written\n");
  EXPECT_EQ(here.shell("xlatr cat all.csv | cut -c7-33").output,
            "0.001000  1  Rx       001  \n"
            "0.002000  2  Rx       003  \n"
            "0.003000  1  Rx       002  \n");
  EXPECT_EQ(here.shell("xlatr merge a.trc - -o - --to trc -q < b.trc | xlatr cat - | wc -l").output, "3\n");
}

TEST(MergeCommand, alignsAndClosesGaps) {
  const Workspace here;
  here.write("a.trc", traceOf("1 1.0 DT 1 0001 Rx - 0\r\n"));
  here.write("b.trc",
             ";$FILEVERSION=2.1\r\n;$STARTTIME=44404.5\r\n;$COLUMNS=N,O,T,B,I,d,R,L,D\r\n1 2.0 DT 2 0003 Rx - 0\r\n");
  const auto lastTime = [&here](const std::string& options) {
    EXPECT_EQ(here.shell("xlatr merge -q -f a.trc b.trc -o x.trc " + options).exitCode, 0) << options;
    return here.shell("xlatr cat x.trc --json | tail -1 | cut -d, -f1").output;
  };
  EXPECT_EQ(lastTime(""), "{\"time_ns\":86400002000000\n");
  EXPECT_EQ(lastTime("--align start"), "{\"time_ns\":2000000\n");
  EXPECT_EQ(lastTime("--gap close"), "{\"time_ns\":1000000\n");
  EXPECT_EQ(here.run({"merge", "a.trc", "b.trc"}).errors, "xlatr: name the file to write with -o\n");
  EXPECT_EQ(here.run({"merge", "-", "-", "-o", "x.trc"}).exitCode, 2);
  EXPECT_EQ(here.run({"merge", "a.trc", "-o", "x.trc", "--gap", "x"}).exitCode, 2);
}

// ---- cat

TEST(CatCommand, printsFramesOfEveryKind) {
  const Workspace here;
  here.write("a.trc", traceOf("1 1.5 DT 1 0123 Rx - 2 01 AB\r\n"
                              "2 2.5 FB 2 18FEF100 Tx - 9 01 02 03 04 05 06 07 08 09 0A 0B 0C\r\n"
                              "3 3.5 RR 1 0124 Rx - 4\r\n"
                              "4 4.5 EV 1 an \"event\"\r\n"));
  const Ended text = here.run({"cat", "a.trc"});
  EXPECT_EQ(text.exitCode, 0) << text.errors;
  EXPECT_EQ(text.output,
            "      0.001500  1  Rx       123  data          2  01 ab\n"
            "      0.002500  2  Tx  18FEF100  data         12  01 02 03 04 05 06 07 08 09 0a 0b 0c  FD BRS\n"
            "      0.003500  1  Rx       124  remote        4\n"
            "      0.004500  1   -         -  event         0  an \"event\"\n");
  EXPECT_EQ(text.errors, "");
  EXPECT_EQ(here.run({"cat", "a.trc", "--json"}).output,
            R"({"time_ns":1500000,"kind":"data","bus":1,"id":"123","dir":0,"ide":0,"edl":0,"brs":0,"esi":0,)"
            R"("dlc":2,"length":2,"data":"01ab"})"
            "\n"
            R"({"time_ns":2500000,"kind":"data","bus":2,"id":"18FEF100","dir":1,"ide":1,"edl":1,"brs":1,"esi":0,)"
            R"("dlc":9,"length":12,"data":"0102030405060708090a0b0c"})"
            "\n"
            R"({"time_ns":3500000,"kind":"remote","bus":1,"id":"124","dir":0,"ide":0,"edl":0,"brs":0,"esi":0,)"
            R"("dlc_known":1,"dlc":4,"length":0,"data":""})"
            "\n"
            R"({"time_ns":4500000,"kind":"event","bus":1,"ide":0,"edl":0,"brs":0,"esi":0,)"
            R"("dlc":0,"length":0,"data":"","text":"an \"event\""})"
            "\n");
  const Ended table = here.run({"cat", "a.trc", "--csv", "--kind", "data"});
  EXPECT_THAT(table.output, StartsWith("time_ns,kind,bus,id,ide,dir,edl,brs,esi,dlc,length,data,err,text,"));
  EXPECT_THAT(table.output, HasSubstr("\r\n1500000,data,1,123,0,0,0,0,0,2,2,01ab,,,"));
  EXPECT_EQ(here.run({"cat", "a.trc", "--csv", "--json"}).exitCode, 2);
}

TEST(CatCommand, takesSeveralSourcesAndTellsWhatIsDamaged) {
  const Workspace here;
  here.write("a.trc", traceOf("1 1.5 DT 1 0123 Rx - 0\r\nnoise\x1b\r\n"));
  const Ended run = here.run({"cat", "a.trc", "missing.trc", "a.trc"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(run.output,
            "      0.001500  1  Rx       123  data          0\n"
            "      0.001500  -   -         -  comment       0  noise?\n"
            "      0.001500  1  Rx       123  data          0\n"
            "      0.001500  -   -         -  comment       0  noise?\n");
  EXPECT_EQ(run.errors,
            "xlatr: a.trc: 1 noted: the line can't be understood (the first is line 5: \"noise?\")\n"
            "xlatr: missing.trc: there is no such file\n"
            "xlatr: a.trc: 1 noted: the line can't be understood (the first is line 5: \"noise?\")\n");
  EXPECT_EQ(here.run({"cat", "a.trc"}).exitCode, 3);
}

TEST(CatCommand, showsNanosecondsAndNegativeTimes) {
  const Workspace here;
  here.write("a.csv",
             "time_ns,kind,bus,id,ide,dir,edl,brs,esi,dlc,length,data,err,text\r\n"
             "-1500000001,data,1,1,0,,0,0,0,0,0,,,\r\n"
             "1000,error,1,0,0,,0,0,0,0,0,,2,\r\n");
  EXPECT_EQ(here.run({"cat", "a.csv"}).output,
            "  -1.500000001  1   -       001  data          0\n"
            "      0.000001  1   -         -  error         0  error_type=2\n");
  EXPECT_THAT(here.run({"cat", "--json", "--kind", "error", "a.csv"}).output, HasSubstr(",\"err\":2}"));
}

// ---- check

TEST(CheckCommand, readsToTheEnd) {
  const Workspace here;
  here.write("whole.trc", traceOf("1 1.5 DT 1 0123 Rx - 0\r\n"));
  here.write("cut.trc", traceOf("1 1.5 DT 1 0123 Rx - 0\r\n2 2.5 DT 1 01"));
  here.write("none.trc", "hello");
  EXPECT_EQ(here.run({"check", "whole.trc"}).exitCode, 0);
  EXPECT_EQ(here.run({"check", "whole.trc"}).output, "whole.trc: trc, 1 frame, whole\n");
  EXPECT_EQ(here.run({"check", "-q", "whole.trc"}).output, "");
  const Ended cut = here.run({"check", "-q", "-j", "2", "whole.trc", "cut.trc"});
  EXPECT_EQ(cut.exitCode, 3);
  EXPECT_EQ(cut.output,
            "cut.trc: trc, 2 frames; 1 noted: the line can't be understood (the first is line 5: \"2 2.5 DT 1 01\")\n");
  const Ended none = here.run({"check", "--json", "whole.trc", "none.trc"});
  EXPECT_EQ(none.exitCode, 1);
  const Json json = Json::parse(none.output);
  EXPECT_EQ(json.at(0).at("whole"), true);
  EXPECT_EQ(json.at(0).at("frames"), 1);
  EXPECT_EQ(json.at(1).at("whole"), false);
  EXPECT_THAT(json.at(1).at("error").get<std::string>(), StartsWith("none.trc: this is no trace"));
}

// ---- info

TEST(InfoCommand, showsWhatAFileIs) {
  const Workspace here;
  const std::string trace = traceOfBuses({1, 2, 2});
  here.write("drive.trc", trace);
  const Ended run = here.run({"info", "drive.trc"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  const std::string head =
      "drive.trc\n"
      "  format      trc, BRIX trace file\n"
      "  version     2.1\n"
      "  start       2021-07-26T05:19:59.72115072, zone unknown\n"
      "  size        " +
      std::to_string(trace.size()) + " bytes\n";
  EXPECT_EQ(run.output, head + "  frames      not stated; --count reads the file\n");
  EXPECT_EQ(here.run({"info", "--count", "drive.trc"}).output, head +
                                                                   "  frames      3\n"
                                                                   "    bus 1: data 1\n"
                                                                   "    bus 2: data 2\n"
                                                                   "  duration    0.020000 s\n"
                                                                   "  whole       yes\n");
}

TEST(InfoCommand, showsTheGroupsOfAMeasurementFile) {
  const Workspace here;
  here.write("drive.mf4", test::mf4Sample());
  const Ended run = here.run({"info", "drive.mf4"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_THAT(run.output, HasSubstr("  version     4.11\n"));
  EXPECT_THAT(run.output, HasSubstr("  frames      2\n"
                                    "  finalised   yes\n"
                                    "  sorted      no\n"
                                    "  data group  1\n"
                                    "    CAN_DataFrame: cycle count 2\n"
                                    "    CAN_RemoteFrame: cycle count 0\n"
                                    "    CAN_ErrorFrame: cycle count 0\n"));
  const Json json = Json::parse(here.run({"info", "--json", "drive.mf4"}).output).at(0);
  EXPECT_EQ(json.at("sorted"), false);
  EXPECT_EQ(json.at("unfinished"), false);
  EXPECT_EQ(json.at("data_groups").at(0).at("channel_groups").at(0),
            Json::parse(R"({"name": "CAN_DataFrame", "cycle_count": 2})"));
}

TEST(InfoCommand, saysWhenAWriterWasStopped) {
  const Workspace here;
  std::string file = test::mf4Sample();
  file.replace(0, 8, "UnFinMF ");
  file[60] = 1;
  here.write("log.mf4", file);
  const Ended run = here.run({"info", "log.mf4"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_THAT(run.output, HasSubstr("  finalised   no: its writer was stopped; its counts may be too low\n"));
  EXPECT_EQ(here.run({"check", "log.mf4"}).exitCode, 3);
}

TEST(InfoCommand, listsTheSessionsOfAFile) {
  const Workspace here;
  test::BtrImage image(6);
  image.session(0, {}).session(1, {.firstSector = 2, .date = {.hour = 9}});
  image.sector(1, {}).sector(2, {.hour = 9}, {}, 2).sector(3, {.hour = 9}).sector(4, {.hour = 9});
  here.write("log.btr", image.bytes());
  EXPECT_THAT(here.run({"info", "log.btr"}).output,
              testing::EndsWith("  sessions    2\n"
                                "    1  2024-03-01T08:15:30.250  1 sector\n"
                                "    2  2024-03-01T09:15:30.250  3 sectors, circular\n"));
  EXPECT_EQ(Json::parse(here.run({"info", "--json", "log.btr"}).output).at(0).at("sessions").size(), 2U);
}

TEST(InfoCommand, aFileThatCannotBeReadHidesNoOther) {
  const Workspace here;
  here.write("drive.trc", traceOfBuses({1}));
  here.write("\xFF.trc", traceOfBuses({1}));
  const Ended run = here.run({"info", "missing.trc", "drive.trc"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.output, StartsWith("drive.trc\n"));
  EXPECT_EQ(run.errors, "xlatr: missing.trc: there is no such file\n");
  const Json json = Json::parse(here.run({"info", "--json", "--count", "missing.trc", "\xFF.trc"}).output);
  ASSERT_EQ(json.size(), 2U);
  EXPECT_THAT(json.at(0).at("error").get<std::string>(), HasSubstr("no such file"));
  EXPECT_EQ(json.at(1).at("frames"), 1);
  EXPECT_EQ(json.at(1).at("whole"), true);
  EXPECT_EQ(json.at(1).at("buses"), Json::parse(R"([{"bus": 1, "data": 1}])"));
}

}  // namespace
}  // namespace xlatr::cli
