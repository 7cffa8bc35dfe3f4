#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "support/blf_stand_in.hpp"
#include "support/temp_folder.hpp"
#include "tools/program.hpp"

// The program with a stand-in for the converter, both in an installation that the test makes.
namespace xlatr::cli {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::HasSubstr;

class Installation {
 public:
  Installation() {
    fs::create_directories(root_.path() / "bin");
    fs::create_directories(lib_);
    fs::create_directories(temporary());
    fs::copy_file(XLATR_PROGRAM, program());
    fs::copy_file(XLATR_LIBRARY, lib_ / XLATR_LIBRARY_NAME);
  }

  [[nodiscard]] std::string program() const { return root_.file("bin/xlatr"); }
  [[nodiscard]] std::string converter() const { return (lib_ / "BLF2CSV.exe").string(); }
  // Where the program puts its temporary files, if the environment says so.
  [[nodiscard]] fs::path temporary() const { return root_.path() / "tmp"; }
  // What the stand-in noted under this name.
  [[nodiscard]] std::string noted(const std::string& name) const { return root_.read("lib/" + name); }

  void standIn(const std::string& conversion) const {
    test::writeStandIn(root_,
                       R"(printf '%s' "$3" > "$(dirname "$0")/block"; echo $$ > "$(dirname "$0")/pid"; )" + conversion);
    fs::rename(root_.file("BLF2CSV.exe"), converter());
  }

 private:
  test::TempFolder root_;
  const fs::path lib_ = root_.path() / "lib";
};

class BlfConvert : public testing::Test {
 public:
  ~BlfConvert() override { ::unsetenv("TMPDIR"); }  // NOLINT(concurrency-mt-unsafe)

 protected:
  BlfConvert() {
    ::setenv("TMPDIR", installation_.temporary().c_str(), 1);  // NOLINT(concurrency-mt-unsafe): there is one thread
    here.write("drive.blf", test::kConverterTable);
    installation_.standIn(R"(cp "$1" "$2")");
  }

  void expectNothingLeft() const {
    EXPECT_TRUE(fs::is_empty(installation_.temporary()));
    EXPECT_EQ(test::countSharedNames(installation_.noted("block")), 0U);
    EXPECT_EQ(::kill(std::stoi(installation_.noted("pid")), 0), -1) << "the converter is still there";
  }

  const Installation installation_;
  const Workspace here{installation_.program()};
};

std::string lastLines(const std::string& text, int count) {
  std::size_t at = text.size();
  for (int left = count + 1; left > 0 && at != std::string::npos && at > 0; --left) {
    at = text.rfind('\n', at - 1);
  }
  return at == std::string::npos ? text : text.substr(at + 1);
}

TEST_F(BlfConvert, makesATable) {
  const Ended run = here.run({"convert", "drive.blf", "drive.csv", "--separator", ","});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_THAT(run.output, testing::StartsWith("wrote drive.csv ("));
  EXPECT_EQ(run.errors, "");
  const std::string table = here.read("drive.csv");
  EXPECT_THAT(table, testing::StartsWith("$STARTTIME=44403.25\r\nStart time: 26/07/2021 06:00:00.000\r\n"));
  EXPECT_EQ(lastLines(table, 3),
            "1,1.000,2,Rx,DT,0123,-,2,AA,BB\r\n2,2.500,1,Tx,DT,002A,-,1,CC\r\nBLF Object Type 2 not-understood\r\n");
  expectNothingLeft();
}

TEST_F(BlfConvert, makesATrcTrace) {
  const Ended run = here.run({"convert", "drive.blf", "drive.trc", "--target-version", "2.1"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  const std::string trace = here.read("drive.trc");
  EXPECT_THAT(trace, testing::StartsWith(";$FILEVERSION=2.1\r\n;$STARTTIME=44403.25\r\n"));
  EXPECT_EQ(lastLines(trace, 3),
            "      1         1.000 DT 2      0123 Rx -  2    AA BB\r\n"
            ";BLF Object Type 57 (LIN)\r\n;BLF Object Type 2 not-understood\r\n");
  expectNothingLeft();
}

TEST_F(BlfConvert, makesALinTrace) {
  const Ended run = here.run({"convert", "drive.blf", "drive.ltrc"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  const std::string trace = here.read("drive.ltrc");
  EXPECT_THAT(trace, testing::StartsWith(";$FILEVERSION=1.2\r\n;$STARTTIME=44403.25\r\n;\r\n;drive.blf\r\n"));
  EXPECT_EQ(lastLines(trace, 3),
            ";BLF Object Type 1 (CAN)\r\n"
            "     1)             2500   Pub   2A  1  CC                      7C  EH  \r\n"
            ";BLF Object Type 2 not-understood\r\n");
  expectNothingLeft();
}

TEST_F(BlfConvert, makesOneFilePerBusIfTheTargetHasNoBusColumn) {
  const Ended run = here.run({"convert", "drive.blf", "x.trc", "--target-version", "2.0"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_THAT(here.names(), ElementsAre("drive.blf", "x_BUS1.trc", "x_BUS2.trc"));
  EXPECT_EQ(lastLines(here.read("x_BUS2.trc"), 1), "      1         1.000 DT     0123 Rx 2  AA BB\r\n");
  EXPECT_EQ(lastLines(here.read("x_BUS1.trc"), 2),
            ";BLF Object Type 57 (LIN)\r\n;BLF Object Type 2 not-understood\r\n");
}

TEST_F(BlfConvert, overwritesOnlyWhenAskedTo) {
  here.write("drive.csv", "mine");
  EXPECT_EQ(here.run({"convert", "drive.blf", "drive.csv"}).exitCode, 4);
  EXPECT_EQ(here.read("drive.csv"), "mine");
  EXPECT_EQ(here.run({"convert", "drive.blf", "drive.csv", "-f"}).exitCode, 0);
}

TEST_F(BlfConvert, refusesWhatABlfLogCannotBecome) {
  const Ended run = here.run({"convert", "drive.blf", "drive.asc"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.errors, HasSubstr("blf can't be converted into asc; choose one of trc, ltrc, csv"));
}

TEST_F(BlfConvert, namesTheConverterThatIsMissing) {
  fs::remove(installation_.converter());
  const Ended run = here.run({"convert", "drive.blf", "drive.csv"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_TRUE(isOneErrorLine(run.errors)) << run.errors;
  EXPECT_THAT(run.errors, HasSubstr(fs::canonical(installation_.temporary().parent_path()).string() +
                                    "/lib/BLF2CSV.exe, is missing"));
  EXPECT_THAT(here.names(), ElementsAre("drive.blf"));
}

TEST_F(BlfConvert, namesAConverterThatCantBeRun) {
  fs::permissions(installation_.converter(), fs::perms::owner_read);
  const Ended run = here.run({"convert", "drive.blf", "drive.csv"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.errors, HasSubstr("BLF2CSV.exe, can't be run"));
}

TEST_F(BlfConvert, reportsTheExitCodeOfAConverterThatFails) {
  installation_.standIn("exit 5");
  const Ended run = here.run({"convert", "drive.blf", "drive.csv"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_TRUE(isOneErrorLine(run.errors)) << run.errors;
  EXPECT_THAT(run.errors, HasSubstr("drive.blf: Error while converting BLF to temporary CSV 5; nothing was written"));
  EXPECT_THAT(here.names(), ElementsAre("drive.blf"));
  expectNothingLeft();
}

TEST_F(BlfConvert, aTargetThatAFailureLeftAloneIsNotCalledIncomplete) {
  installation_.standIn("exit 5");
  here.write("drive.csv", "mine");
  const Ended run = here.run({"convert", "drive.blf", "drive.csv", "-f"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.errors, HasSubstr("; nothing was written; fix the problem and convert again with -f"));
  EXPECT_EQ(here.read("drive.csv"), "mine");
}

TEST_F(BlfConvert, aTargetThatCannotBeFinishedIsCalledIncomplete) {
  fs::create_symlink("/dev/full", here / "full.csv");
  const Ended run = here.run({"convert", "drive.blf", "full.csv", "-f"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.errors, HasSubstr("; full.csv is incomplete; fix the problem and convert again with -f"));
}

TEST_F(BlfConvert, warnsWhenALogWithObjectsGivesNoMessage) {
  installation_.standIn("exit 0");
  const Ended run = here.run({"convert", "drive.blf", "drive.csv"});
  EXPECT_EQ(run.exitCode, 3);
  EXPECT_EQ(run.errors,
            "xlatr: warning: drive.blf: no message was converted: BLF2CSV.exe knows none of the log's objects, or left "
            "no table\n");
}

TEST_F(BlfConvert, aLogWithoutObjectsNeedsNoWarning) {
  here.write("empty.blf", test::kConverterHead);
  const Ended run = here.run({"convert", "empty.blf", "empty.csv"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_EQ(run.errors, "");
}

// A conversion that hangs in its converter.
class BlfInterrupt : public BlfConvert {
 protected:
  // Starts the program, interrupts it as soon as the converter runs, and waits for its end.
  int interrupted(const std::string& conversion) {
    installation_.standIn(conversion);
    const int errors = ::open((here / "errors").c_str(), O_WRONLY | O_CREAT, 0600);
    const pid_t program = here.start({"convert", "drive.blf", "drive.csv"}, errors);
    ::close(errors);
    while (installation_.noted("pid").find('\n') == std::string::npos) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_EQ(::kill(program, SIGINT), 0);
    return Workspace::wait(program);
  }
};

TEST_F(BlfInterrupt, stopsTheConverterAndLeavesNothing) {
  EXPECT_EQ(interrupted(R"sh(echo half > "$2"
    until test "$(od -An -tu2 -j2 -N2 /dev/shm/"$3" 2> /dev/null || echo 0)" -eq 1; do sleep 0.01; done
    echo stopped > "$(dirname "$0")/stopped"; exit 2)sh"),
            130);
  EXPECT_EQ(installation_.noted("stopped"), "stopped\n");
  EXPECT_THAT(here.read("errors"), HasSubstr("interrupted; nothing was written"));
  expectNothingLeft();
}

TEST_F(BlfInterrupt, endsAConverterThatDoesNotListen) {
  EXPECT_EQ(interrupted("echo half > \"$2\"; exec sleep 1000"), 130);
  expectNothingLeft();
}

TEST_F(BlfConvert, infoShowsTheVersionOfALog) {
  const Ended run = here.run({"info", "drive.blf"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_THAT(run.output, HasSubstr("format      blf, Vector BLF trace file\n"));
  EXPECT_THAT(run.output, HasSubstr("version     4.080203\n"));
  EXPECT_THAT(run.output, HasSubstr("start time  unknown\n"));
  EXPECT_THAT(run.output, HasSubstr("valid       yes\n"));
}

TEST_F(BlfConvert, infoShowsALogWithoutAConverter) {
  fs::remove(installation_.converter());
  const Ended run = here.run({"info", "drive.blf"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_THAT(run.output, HasSubstr("version     unknown\n"));
}

}  // namespace
}  // namespace xlatr::cli
