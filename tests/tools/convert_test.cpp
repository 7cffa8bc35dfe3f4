#include <gmock/gmock.h>

#include <array>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/blf_builder.hpp"
#include "tools/program.hpp"

// The complete way as a user types it.
namespace xlatr::cli {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

using Json = nlohmann::json;

class ConvertCommand : public testing::Test {
 protected:
  void SetUp() override { here.write("drive.trc", traceOfBuses({1, 2})); }

  // The identifiers and times that cat shows of a file.
  [[nodiscard]] std::string framesOf(const std::string& name) const {
    std::string frames;
    std::istringstream lines(here.run({"cat", "--json", name}).output);
    for (std::string line; std::getline(lines, line);) {
      const auto frame = Json::parse(line);
      frames += std::to_string(frame.at("bus").get<int>()) + "@" +
                std::to_string(frame.at("time_ns").get<std::int64_t>() / 1'000'000) + " ";
    }
    return frames;
  }

  const Workspace here{};
};

TEST_F(ConvertCommand, tellsWhatCameOver) {
  const Ended run = here.run({"convert", "drive.trc", "drive.mf4"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.output, "");
  EXPECT_EQ(run.errors, "xlatr: drive.trc -> drive.mf4: 2 frames read, 2 written\n");
  EXPECT_EQ(framesOf("drive.mf4"), "1@10 2@20 ");
  EXPECT_THAT(here.names(), ElementsAre("drive.mf4", "drive.trc"));
  EXPECT_EQ(here.run({"convert", "-q", "drive.mf4", "back.asc"}).errors, "");
}

// A target has the name that it was given, whatever format is in it.
TEST_F(ConvertCommand, writesEveryFormatUnderAnyName) {
  for (const char* format : {"trc", "btr", "asc", "csv", "btrc", "MF4", ".trc"}) {
    const Ended run = here.run({"convert", "-f", "drive.trc", "x.log", "--to", format});
    EXPECT_EQ(run.exitCode, std::string(format) == "btr" ? 3 : 0) << format << ": " << run.errors;
    EXPECT_EQ(framesOf("x.log"), "1@10 2@20 ") << format;
  }
  EXPECT_THAT(here.names(), ElementsAre("drive.trc", "x.log"));
}

TEST_F(ConvertCommand, tellsWhatWasLostAndWhere) {
  here.write("noise.trc", traceOfBuses({1}) + "noise\r\n");
  const Ended noise = here.run({"convert", "noise.trc", "noise.mf4"});
  EXPECT_EQ(noise.exitCode, 3);
  EXPECT_EQ(noise.errors,
            "xlatr: noise.trc -> noise.mf4: 2 frames read, 1 written; 1 dropped: the target has no such kind of frame "
            "(the first is line 6); 1 noted: the line can't be understood (the first is line 6: \"noise\")\n");
  const Ended buses = here.run({"convert", "-q", "drive.trc", "buses.trc", "--target-version", "1.1"});
  EXPECT_EQ(buses.exitCode, 3);
  EXPECT_THAT(buses.errors, HasSubstr("2 noted: the target names no buses (the first is line 5)"));
  EXPECT_EQ(here.run({"convert", "-qq", "-f", "noise.trc", "noise.mf4"}).errors, "");
}

// Coarser times alone are no loss that a user must be told of by the exit code.
TEST_F(ConvertCommand, roundsTimesWithoutAWarning) {
  here.write("ns.csv",
             "time_ns,kind,bus,id,ide,dir,edl,brs,esi,dlc,length,data,err,text\r\n1499,data,1,1,0,0,0,0,0,0,0,,,\r\n");
  const Ended run = here.run({"convert", "ns.csv", "us.trc", "--target-version", "2.1"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.errors, HasSubstr("1 noted: the target's times are coarser (the first is line 2)"));
}

TEST_F(ConvertCommand, aStrictConversionLeavesNothing) {
  here.write("noise.trc", traceOfBuses({1}) + "noise\r\n");
  const Ended run = here.run({"convert", "--strict", "noise.trc", "noise.mf4"});
  EXPECT_EQ(run.exitCode, 3);
  EXPECT_THAT(run.errors,
              StartsWith("xlatr: noise.mf4: not everything would come over, so that nothing was written; "));
  EXPECT_THAT(here.names(), ElementsAre("drive.trc", "noise.trc"));
}

// What should have been copied or recorded there was not, which a script is to learn.
TEST_F(ConvertCommand, tellsOfASourceWithoutAByte) {
  for (const char* const source : {"empty.trc", "empty.asc", "empty.csv", "empty.ltrc"}) {
    here.write(source, "");
    const Ended run = here.run({"convert", "-f", source, "x.trc"});
    EXPECT_EQ(run.exitCode, 3) << source;
    EXPECT_EQ(run.errors, "xlatr: " + std::string(source) +
                              " -> x.trc: 0 frames read, 0 written; 1 noted: the source ends in the middle of it (the "
                              "first is line 1)\n");
  }
}

TEST_F(ConvertCommand, refusesWhatIsNoTrace) {
  here.write("hello.asc", "hello");
  here.write("empty.txt", "");
  here.write("text.mf4", "no measurement at all\n");
  fs::create_directory(here / "folder.trc");
  struct Case {
    const char* source;
    const char* expected;
  };
  for (const auto& [source, expected] :
       std::initializer_list<Case>{{"hello.asc", "hello.asc: this is no trace, but looks like a text of another kind"},
                                   {"text.mf4", "text.mf4: this is no trace, but looks like a text of another kind"},
                                   {"empty.txt", "empty.txt: the file is empty"},
                                   {"missing.trc", "missing.trc: there is no such file"}}) {
    const Ended run = here.run({"convert", source, "x.trc"});
    EXPECT_EQ(run.exitCode, 1) << source;
    EXPECT_EQ(run.errors, std::string("xlatr: ") + expected + "\n");
  }
  EXPECT_FALSE(fs::exists(here / "x.trc"));
}

TEST_F(ConvertCommand, readsAndWritesStandardStreams) {
  EXPECT_EQ(here.shell("xlatr convert drive.trc - --to btrc | xlatr convert - out.asc").exitCode, 0);
  EXPECT_EQ(framesOf("out.asc"), "1@10 2@20 ");
  for (const char* format : {"trc", "asc", "csv", "btrc"}) {
    EXPECT_EQ(here.shell(std::string("xlatr convert -q drive.trc - --to ") + format + " | xlatr cat - | wc -l").output,
              "2\n")
        << format;
  }
  const Ended mf4 = here.run({"convert", "drive.trc", "-", "--to", "mf4"});
  EXPECT_EQ(mf4.exitCode, 2);
  EXPECT_THAT(mf4.errors, HasSubstr(".mf4 are not written in order: name a file"));
  ASSERT_EQ(here.run({"convert", "drive.trc", "drive.mf4"}).exitCode, 0);
  const Ended piped = here.shell("cat drive.mf4 | xlatr convert - x.trc");
  EXPECT_EQ(piped.exitCode, 2);
  EXPECT_THAT(piped.errors, HasSubstr(".mf4 are not read in order: save it to a file first"));
  // A file that is redirected can be read at any place.
  EXPECT_EQ(here.shell("xlatr convert - x.trc < drive.mf4").exitCode, 0);
  EXPECT_FALSE(fs::exists(here / "-.csv"));
}

TEST_F(ConvertCommand, writesToADeviceAsItIs) {
  EXPECT_EQ(here.run({"convert", "drive.trc", "/dev/null", "--to", "csv"}).exitCode, 0);
  EXPECT_FALSE(fs::exists("/dev/null.csv"));
  const Ended full = here.run({"convert", "drive.trc", "/dev/full", "--to", "csv"});
  EXPECT_EQ(full.exitCode, 5);
  EXPECT_THAT(full.errors, StartsWith("xlatr: /dev/full: cannot write: No space left"));
}

TEST_F(ConvertCommand, keepsATargetThatExists) {
  here.write("copy.trc", "precious");
  const Ended run = here.run({"convert", "drive.trc", "copy.trc"});
  EXPECT_EQ(run.exitCode, 4);
  EXPECT_EQ(run.errors,
            "xlatr: copy.trc: the file exists and is not to be replaced; -f replaces it, -n leaves it out\n");
  EXPECT_EQ(here.read("copy.trc"), "precious");
  EXPECT_EQ(here.run({"convert", "-n", "drive.trc", "copy.trc"}).errors, "xlatr: copy.trc: exists; left out\n");
  EXPECT_EQ(here.read("copy.trc"), "precious");
  EXPECT_EQ(here.run({"convert", "-f", "drive.trc", "copy.trc"}).exitCode, 0);
  EXPECT_EQ(framesOf("copy.trc"), "1@10 2@20 ");
}

TEST_F(ConvertCommand, theSourceIsNeverTheTarget) {
  const std::string trace = here.read("drive.trc");
  fs::create_symlink("drive.trc", here / "link.trc");
  fs::create_hard_link(here / "drive.trc", here / "hard.trc");
  fs::create_hard_link(here / "drive.trc", here / "part_001.trc");
  for (const char* target : {"drive.trc", "./drive.trc", "link.trc", "hard.trc"}) {
    const Ended run = here.run({"convert", "-f", "drive.trc", target});
    EXPECT_EQ(run.exitCode, 1) << target;
    EXPECT_THAT(run.errors, HasSubstr("the target is the source")) << target;
  }
  EXPECT_EQ(here.run({"convert", "-f", "drive.trc", "part.trc", "--split-time", "1h"}).exitCode, 1);
  EXPECT_EQ(here.read("drive.trc"), trace);
}

TEST_F(ConvertCommand, selectsAndChanges) {
  const auto converted = [this](std::vector<std::string> options) {
    std::vector<std::string> arguments{"convert", "-f", "drive.trc", "x.trc"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Ended run = here.run(arguments);
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    return framesOf("x.trc");
  };
  EXPECT_EQ(converted({"--bus", "2"}), "2@20 ");
  EXPECT_EQ(converted({"--bus", "!2"}), "1@10 ");
  EXPECT_EQ(converted({"--from-time", "0.02"}), "2@20 ");
  EXPECT_EQ(converted({"--until-time", "0.02"}), "1@10 ");
  EXPECT_EQ(converted({"--until-time", "2021-07-26T05:19:59.735"}), "1@10 ");
  EXPECT_EQ(converted({"--id", "0x200-0x300"}), "");
  EXPECT_EQ(converted({"--id=!0x200-0x300", "--kind", "data"}), "1@10 2@20 ");
  EXPECT_EQ(converted({"--shift-time", "-1", "--map-bus", "1=7"}), "7@-990 2@-980 ");
  EXPECT_EQ(converted({"--rebase", "--bus", "2"}), "2@0 ");
}

TEST_F(ConvertCommand, splits) {
  const Ended run = here.run({"convert", "drive.trc", "part.trc", "--split-time", "15ms"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.errors, "xlatr: drive.trc -> part_001.trc and 1 more: 2 frames read, 2 written\n");
  EXPECT_EQ(framesOf("part_002.trc"), "2@20 ");
  EXPECT_EQ(here.run({"convert", "drive.trc", "bus-%b.mf4", "--split-bus"}).exitCode, 0);
  EXPECT_EQ(framesOf("bus-2.mf4"), "2@20 ");
  EXPECT_EQ(here.run({"convert", "drive.trc", "bus.mf4", "--split-size", "x"}).exitCode, 2);
}

TEST_F(ConvertCommand, writesAReport) {
  here.write("noise.trc", traceOfBuses({1}) + "noise\r\n");
  const Ended run = here.run({"convert", "-q", "noise.trc", "noise.mf4", "--json", "--report", "report.json"});
  EXPECT_EQ(run.exitCode, 3);
  EXPECT_EQ(run.output, here.read("report.json"));
  const Json json = Json::parse(run.output);
  EXPECT_EQ(json.at("exit_code"), 3);
  const Json& one = json.at("conversions").at(0);
  EXPECT_EQ(one.at("status"), "incomplete");
  EXPECT_EQ(one.at("read"), 2);
  EXPECT_EQ(one.at("written"), 1);
  EXPECT_EQ(one.at("dropped"), 1);
  EXPECT_EQ(one.at("error"), nullptr);
  EXPECT_EQ(one.at("head").at("start"), "2021-07-26T05:19:59.72115072");
  EXPECT_EQ(one.at("files").at(0).at("bytes"), fs::file_size(here / "noise.mf4"));
  EXPECT_EQ(one.at("remarks").at(0),
            Json::parse(R"({"remark": "kind_not_held", "class": "not_held", "effect": "dropped",
                            "text": "the target has no such kind of frame", "count": 1, "first": 6, "met": ""})"));
  const Ended refused = here.run({"convert", "-f", "drive.trc", "y.mf4", "--report", "missing/report.json"});
  EXPECT_EQ(refused.exitCode, 5);
}

TEST_F(ConvertCommand, tellsOptionsWithoutEffect) {
  const Ended run = here.run({"convert", "drive.trc", "x.csv", "--zipped", "--jobs", "4"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.errors, HasSubstr("xlatr: note: --zipped: has no effect on a target that is no mf4\n"));
  EXPECT_THAT(run.errors, HasSubstr("xlatr: note: --jobs: has no effect on one file\n"));
  EXPECT_EQ(here.run({"convert", "drive.trc", "y.trc", "--sorted"}).exitCode, 2);
  EXPECT_EQ(here.run({"convert", "drive.trc", "y.trc", "-f", "-n"}).exitCode, 2);
}

// In this process: nothing lies beside the library that reads them.
TEST_F(ConvertCommand, readsLogsWithoutAConverter) {
  using namespace test::blf;
  here.write("log.blf", file({}, {object({.type = 1, .timestamp = 5'000'000},
                                         Bytes().u16(2).u8(0).u8(2).u32(0x123).counting(8, 1).str())}));
  fs::create_directories(here / "alone/lib");
  fs::create_directories(here / "alone/bin");
  fs::copy_file(XLATR_PROGRAM, here / "alone/bin/xlatr");
  fs::copy_file(XLATR_LIBRARY, here / "alone/lib" / XLATR_LIBRARY_NAME);
  const Ended run = here.shell("alone/bin/xlatr convert log.blf log.csv");
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_EQ(framesOf("log.csv"), "2@5 ");
}

// ---- many files

class ManyFiles : public ConvertCommand {
 protected:
  void SetUp() override {
    for (const char* name : {"logs/a.trc", "logs/deep/b.trc", "logs/deep/c.TRC"}) {
      fs::create_directories((here / name).parent_path());
      here.write(name, traceOfBuses({1, 2}));
    }
    here.write("logs/notes.txt", "no trace");
  }
};

TEST_F(ManyFiles, goIntoAFolder) {
  fs::create_directory(here / "out");
  const Ended run = here.run({"convert", "logs/a.trc", "logs/deep/b.trc", "out/", "--to", "csv"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_THAT(run.errors, HasSubstr("xlatr: logs/a.trc -> out/a.csv: 2 frames read, 2 written\n"));
  EXPECT_THAT(run.errors, HasSubstr("xlatr: 2 sources: 4 frames read, 4 written, 0 dropped; 2 complete\n"));
  EXPECT_TRUE(fs::exists(here / "out/b.csv"));
  const Ended again = here.run({"convert", "-n", "logs/a.trc", "logs/deep/b.trc", "out/", "--to", "csv"});
  EXPECT_EQ(again.exitCode, 0);
  EXPECT_THAT(again.errors, HasSubstr("2 skipped"));
}

TEST_F(ManyFiles, mirrorAFolder) {
  const Ended run = here.run({"convert", "-r", "logs", "-O", "out", "--to", "mf4", "-j", "0"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_EQ(framesOf("out/a.mf4"), "1@10 2@20 ");
  EXPECT_EQ(framesOf("out/deep/b.mf4"), "1@10 2@20 ");
  EXPECT_EQ(framesOf("out/deep/c.mf4"), "1@10 2@20 ");
  EXPECT_EQ(here.run({"convert", "logs", "-O", "out", "--to", "mf4"}).errors,
            "xlatr: logs: this is a folder; give -r to take the traces in it\n");
}

TEST_F(ManyFiles, goOnAfterOneThatFails) {
  here.write("logs/bad.trc", "no trace at all");
  const Ended run = here.run({"convert", "-q", "-r", "logs", "-O", "out", "--to", "asc", "-j", "3"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.errors, StartsWith("xlatr: logs/bad.trc: this is no trace"));
  EXPECT_TRUE(fs::exists(here / "out/deep/c.asc"));
}

TEST_F(ManyFiles, comeFromAList) {
  EXPECT_EQ(here.shell("find logs -name '*.trc' | xlatr convert --files-from - -O out --to csv").exitCode, 0);
  EXPECT_TRUE(fs::exists(here / "out/b.csv"));
  fs::remove_all(here / "out");
  EXPECT_EQ(here.shell("find logs -name '*.trc' -print0 > list; xlatr convert --files-from list --null -O out --to csv")
                .exitCode,
            0);
  EXPECT_TRUE(fs::exists(here / "out/a.csv"));
  EXPECT_EQ(here.run({"convert", "--files-from", "missing", "-O", "out", "--to", "csv"}).exitCode, 1);
}

TEST_F(ManyFiles, areSharedByAHashOfTheirPaths) {
  for (const char* shard : {"1/3", "2/3", "3/3"}) {
    EXPECT_EQ(here.run({"convert", "-r", "logs", "-O", "out", "--to", "csv", "--shard", shard}).exitCode, 0) << shard;
  }
  // Each by one of them: nothing was there already.
  for (const char* name : {"out/a.csv", "out/deep/b.csv", "out/deep/c.csv"}) {
    EXPECT_TRUE(fs::exists(here / name)) << name;
  }
  for (const char* shard : {"0/3", "4/3", "3", "x/3", "1/0"}) {
    EXPECT_EQ(here.run({"convert", "-r", "logs", "-O", "out", "--to", "csv", "--shard", shard}).exitCode, 2) << shard;
  }
}

TEST_F(ManyFiles, areToldApartFromOneTarget) {
  fs::create_directory(here / "out");
  here.write("logs/a.asc", "x");
  struct Case {
    std::vector<std::string> arguments;
    const char* expected;
  };
  const std::vector<Case> cases = {
      {{"convert", "logs/a.trc", "logs/deep/b.trc", "all.csv"},
       "2 sources and the target all.csv, which is no folder: name a folder to convert each into, or use 'xlatr merge"},
      {{"convert", "logs/a.trc", "out"}, "out: say with --to in which format to write: trc, btr"},
      {{"convert", "logs/a.trc"}, "logs/a.trc: name a TARGET after it"},
      {{"convert", "-r", "logs", "x.trc"}, "say with -O"},
      {{"convert", "-", "-O", "out", "--to", "trc"}, "standard input has no name"},
      {{"convert", "logs/a.trc", "logs/a.asc", "-O", "out", "--to", "csv"}, "would both become out/a.csv"},
      {{"convert", "logs/a.trc", "-O", "out", "--to", "blf"}, "blf is read and not written; choose one of trc"},
      {{"convert", "logs/a.trc", "x.trc", "-j", "x"}, "--jobs x"},
  };
  for (const auto& [arguments, expected] : cases) {
    const Ended run = here.run(arguments);
    EXPECT_EQ(run.exitCode, 2) << expected;
    EXPECT_TRUE(isOneErrorLine(run.errors)) << run.errors;
    EXPECT_THAT(run.errors, HasSubstr(expected));
  }
}

}  // namespace
}  // namespace xlatr::cli
