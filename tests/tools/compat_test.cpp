#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "support/btr_image.hpp"
#include "support/btrc_image.hpp"
#include "tools/program.hpp"

namespace xlatr::cli {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class CompatCommand : public testing::Test {
 protected:
  void SetUp() override { here.write("drive.trc", traceOfBuses({1, 2})); }

  const Workspace here{};
};

TEST_F(CompatCommand, writesTheTargetAndNamesIt) {
  const Ended run = here.run({"convert", "--compat", "drive.trc", "copy.trc", "--target-version", "2.1"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_THAT(run.errors, testing::StartsWith("xlatr: wrote copy.trc ("));
  EXPECT_EQ(run.output, "");
  EXPECT_THAT(here.names(), ElementsAre("copy.trc", "drive.trc"));
  EXPECT_THAT(here.read("copy.trc"), testing::StartsWith(";$FILEVERSION=2.1\r\n"));
}

TEST_F(CompatCommand, writesTheCurrentVersionByDefault) {
  const Ended run = here.run({"convert", "--compat", "drive.trc", "copy.trc"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_THAT(here.read("copy.trc"), testing::StartsWith(";$FILEVERSION=3.0\r\n"));
}

TEST_F(CompatCommand, quietSaysNothing) {
  const Ended run = here.run({"convert", "--compat", "-q", "drive.trc", "copy.trc"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.output, "");
  EXPECT_EQ(run.errors, "");
}

TEST_F(CompatCommand, oneFilePerBusIfTheTargetHasNoBusColumn) {
  std::filesystem::create_directory(here / "out");
  const Ended run = here.run({"convert", "--compat", "drive.trc", "out/x.trc", "--target-version", "2.0"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_THAT(run.errors, HasSubstr("wrote out/x_BUS1.trc ("));
  EXPECT_THAT(run.errors, HasSubstr("wrote out/x_BUS2.trc ("));
  EXPECT_FALSE(std::filesystem::exists(here / "out/x.trc"));
}

TEST_F(CompatCommand, toNamesTheFormatWhateverTheExtension) {
  EXPECT_EQ(here.run({"convert", "--compat", "drive.trc", "x.log", "--to", "TRC"}).exitCode, 0);
  EXPECT_EQ(here.run({"convert", "--compat", "drive.trc", "y.asc", "--to", ".trc"}).exitCode, 0);
  EXPECT_THAT(here.names(), ElementsAre("drive.trc", "x.log.trc", "y.trc"));
}

TEST_F(CompatCommand, convertsToAnAscLogAndBack) {
  EXPECT_EQ(here.run({"convert", "--compat", "drive.trc", "x.asc", "--target-version", "7.0"}).exitCode, 0);
  EXPECT_THAT(here.read("x.asc"), HasSubstr("\r\n// version 7.0.0\r\n"));
  EXPECT_EQ(here.run({"convert", "--compat", "x.asc", "back.trc"}).exitCode, 0);
  EXPECT_THAT(here.names(), ElementsAre("back.trc", "drive.trc", "x.asc"));
}

TEST_F(CompatCommand, aTableHasTheSeparatorThatWasAskedFor) {
  struct Case {
    std::vector<std::string> arguments;
    const char* separator;
  };
  for (const auto& [arguments, separator] : std::initializer_list<Case>{
           {{}, ";"}, {{"--separator", ","}, ","}, {{"--separator", "tab"}, "\t"}, {{"--separator", "\\t"}, "\t"}}) {
    std::vector<std::string> command{"convert", "--compat", "-f", "drive.trc", "drive.csv"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const Ended run = here.run(command);
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_THAT(run.errors, testing::StartsWith("xlatr: wrote drive.csv ("));
    const std::string table = here.read("drive.csv");
    EXPECT_THAT(table, testing::StartsWith("$STARTTIME=44403.2222"));
    EXPECT_THAT(table, HasSubstr(std::string("\nNumber") + separator + "Time (ms)" + separator + "Bus" + separator));
    EXPECT_THAT(table, HasSubstr(std::string("\n2") + separator));
  }
}

TEST_F(CompatCommand, aTargetThatExistsIsKept) {
  here.write("copy.trc", "precious");
  const Ended run = here.run({"convert", "--compat", "drive.trc", "copy.TRC"});
  EXPECT_EQ(run.exitCode, 4);
  EXPECT_EQ(run.errors, "xlatr: copy.trc: exists already; choose another target or replace it with -f\n");
  EXPECT_EQ(run.output, "");
  EXPECT_EQ(here.read("copy.trc"), "precious");
}

TEST_F(CompatCommand, aNumberedTargetThatExistsIsKept) {
  here.write("copy_BUS2.trc", "precious");
  for (const char* version : {"1.0", "1.1", "2.0"}) {
    const Ended run = here.run({"convert", "--compat", "drive.trc", "copy.trc", "--target-version", version});
    EXPECT_EQ(run.exitCode, 4) << version;
    EXPECT_TRUE(isOneErrorLine(run.errors)) << run.errors;
    EXPECT_THAT(run.errors, HasSubstr("copy_BUS2.trc")) << version;
  }
  EXPECT_EQ(here.read("copy_BUS2.trc"), "precious");
  EXPECT_THAT(here.names(), ElementsAre("copy_BUS2.trc", "drive.trc"));
}

TEST_F(CompatCommand, aSessionTargetThatExistsIsKept) {
  here.write("log.btr", "");
  here.write("log_S3.csv", "precious");
  const Ended run = here.run({"convert", "--compat", "log.btr", "log.csv"});
  EXPECT_EQ(run.exitCode, 4);
  EXPECT_THAT(run.errors, HasSubstr("log_S3.csv"));
}

TEST_F(CompatCommand, eachSessionBecomesAFileInTheWorkingDirectory) {
  test::BtrImage image(4);
  for (std::uint8_t index = 0; index < 3; ++index) {
    image.session(index, {.firstSector = index + 1U, .date = {.minute = index}});
    image.sector(index + 1U, {.minute = index}, {{.id = index}});
  }
  here.write("log.btr", image.bytes());
  const Ended all = here.run({"convert", "--compat", "log.btr", "log.csv"});
  EXPECT_EQ(all.exitCode, 0) << all.errors;
  EXPECT_THAT(here.names(), testing::IsSupersetOf({"log_S1.csv", "log_S2.csv", "log_S3.csv"}));
  const Ended some = here.run({"convert", "--compat", "log.btr", "some.trc", "--session", "1", "--session", "3"});
  EXPECT_EQ(some.exitCode, 0) << some.errors;
  EXPECT_THAT(here.names(), testing::IsSupersetOf({"some_S1.trc", "some_S3.trc"}));
  EXPECT_THAT(here.names(), testing::Not(testing::Contains("some_S2.trc")));
  const Ended none = here.run({"convert", "--compat", "log.btr", "none.trc", "--session", "9"});
  EXPECT_EQ(none.exitCode, 1);
  EXPECT_THAT(none.errors, HasSubstr("nothing to convert"));
}

TEST_F(CompatCommand, forceOverwrites) {
  here.write("copy.trc", "precious");
  EXPECT_EQ(here.run({"convert", "--compat", "-f", "drive.trc", "copy.trc"}).exitCode, 0);
  EXPECT_THAT(here.read("copy.trc"), testing::StartsWith(";$FILEVERSION=3.0"));
  EXPECT_EQ(here.run({"convert", "--compat", "drive.trc", "copy.trc", "--force", "--target-version", "1.3"}).exitCode,
            0);
  EXPECT_THAT(here.read("copy.trc"), testing::StartsWith(";$FILEVERSION=1.3"));
}

TEST_F(CompatCommand, theSourceIsNeverTheTarget) {
  const std::string trace = here.read("drive.trc");
  std::filesystem::create_symlink("drive.trc", here / "link.trc");
  std::filesystem::create_hard_link(here / "drive.trc", here / "hard.trc");
  std::filesystem::create_hard_link(here / "drive.trc", here / "split_BUS2.trc");
  struct Case {
    const char* target;
    const char* version;
  };
  for (const auto& [target, version] : std::initializer_list<Case>{{"drive.trc", "2.1"},
                                                                   {"./drive.trc", "2.1"},
                                                                   {"drive.TRC", "2.1"},
                                                                   {"link.trc", "3.0"},
                                                                   {"hard.trc", "3.0"},
                                                                   {"link.trc", "1.1"},
                                                                   {"split.trc", "1.1"},
                                                                   {"split.trc", "2.0"}}) {
    for (const char* force : {"-q", "-f"}) {
      const Ended run = here.run({"convert", "--compat", "drive.trc", target, "--target-version", version, force});
      EXPECT_EQ(run.exitCode, 1) << target << " " << version << " " << force;
      EXPECT_TRUE(isOneErrorLine(run.errors)) << run.errors;
      EXPECT_THAT(run.errors, HasSubstr("is the source itself")) << target;
    }
  }
  EXPECT_EQ(here.read("drive.trc"), trace);
  EXPECT_THAT(here.names(), ElementsAre("drive.trc", "hard.trc", "link.trc", "split_BUS2.trc"));
}

TEST_F(CompatCommand, whatCannotBeReadFailsBeforeAnythingIsWritten) {
  std::filesystem::create_directory(here / "folder.trc");
  here.write("notes.txt", "x");
  here.write("table.csv", "x");
  here.write("log.asc", "x");
  here.write("log.blf", "x");
  struct Case {
    const char* source;
    const char* target;
    const char* expected;
  };
  for (const auto& [source, target, expected] : std::initializer_list<Case>{
           {"missing.trc", "x.trc", "no such file"},
           {"folder.trc", "x.trc", "is a folder"},
           {"notes.txt", "x.trc", "no extension of a trace format"},
           {"table.csv", "x.trc", "csv can't be converted into trc with --compat; leave --compat out"},
           {"log.asc", "x.mf4", "leave --compat out, or choose one of trc, csv"},
           {"log.blf", "x.trc", "blf can't be converted into trc with --compat; leave --compat out"},
           {"drive.trc", "x.ltrc", "leave --compat out, or choose one of trc, btr, asc, csv, btrc, mf4"},
       }) {
    const Ended run = here.run({"convert", "--compat", source, target});
    EXPECT_EQ(run.exitCode, 1) << source;
    EXPECT_TRUE(isOneErrorLine(run.errors)) << run.errors;
    EXPECT_THAT(run.errors, HasSubstr(expected)) << source;
  }
  EXPECT_THAT(here.names(), ElementsAre("drive.trc", "folder.trc", "log.asc", "log.blf", "notes.txt", "table.csv"));
}

TEST_F(CompatCommand, aPathThatTheLibraryCannotTakeIsNotCalledAnUnknownExtension) {
  const std::string folder = std::string(100, 'a') + "/" + std::string(100, 'b') + "/" + std::string(100, 'c') + "/";
  std::filesystem::create_directories(here / folder);
  here.write(folder + "drive.TRC", traceOfBuses({1}));
  here.write(folder + "notes.txt", "x");
  const Ended trace = here.run({"convert", "--compat", folder + "drive.TRC", "x.trc"});
  EXPECT_EQ(trace.exitCode, 1);
  EXPECT_EQ(trace.errors,
            "xlatr: " + folder +
                "drive.TRC: the path is too long; change to the folder of the file and name it from there\n");
  EXPECT_THAT(here.run({"convert", "--compat", folder + "notes.txt", "x.trc"}).errors,
              HasSubstr("no extension of a trace format"));
}

TEST_F(CompatCommand, whatTheLibraryReportsIsOneLineAndCode1) {
  std::filesystem::create_symlink("/dev/full", here / "full.trc");
  for (const char* target : {"missing/x.trc", "full.trc"}) {
    const Ended run = here.run({"convert", "--compat", "-f", "drive.trc", target});
    EXPECT_EQ(run.exitCode, 1) << target;
    EXPECT_TRUE(isOneErrorLine(run.errors)) << run.errors;
    EXPECT_THAT(run.errors, HasSubstr(target));
    EXPECT_THAT(run.errors, testing::EndsWith("; nothing was written\n"));
    EXPECT_EQ(run.output, "") << target;
  }
}

TEST_F(CompatCommand, aTargetStaysAsItWasWhenTheConversionFails) {
  here.write("junk.mf4", "no measurement at all");
  here.write("old.trc", "precious");
  const Ended run = here.run({"convert", "--compat", "junk.mf4", "old.trc", "-f"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.errors, testing::EndsWith("; nothing was written\n"));
  EXPECT_EQ(here.read("old.trc"), "precious");
}

TEST_F(CompatCommand, flagsChooseTheLayoutOfAMeasurementFile) {
  const auto groupsOf = [this](const std::vector<std::string>& flags) {
    std::vector<std::string> arguments = {"convert", "--compat", "-f", "drive.trc", "drive.mf4"};
    arguments.insert(arguments.end(), flags.begin(), flags.end());
    const Ended run = here.run(arguments);
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    const auto json = nlohmann::json::parse(here.run({"info", "--json", "drive.mf4"}).output);
    return json.at(0).at("data_groups").size();
  };
  const auto isZipped = [this] { return here.read("drive.mf4").find("##DZ") != std::string::npos; };
  EXPECT_EQ(groupsOf({}), 1U);
  EXPECT_FALSE(isZipped());
  EXPECT_EQ(groupsOf({"--sorted"}), 3U);
  EXPECT_FALSE(isZipped());
  EXPECT_EQ(groupsOf({"--zipped"}), 1U);
  EXPECT_TRUE(isZipped());
  EXPECT_EQ(groupsOf({"--zipped", "--sorted", "--target-version", "4.1"}), 3U);
  EXPECT_TRUE(isZipped());
  EXPECT_EQ(here.read("drive.mf4").substr(8, 4), "4.10");
}

TEST_F(CompatCommand, aSourceThatIsNotValidLeavesAMeasurementFileEmpty) {
  here.write("junk.trc", "no trace at all\n");
  const Ended run = here.run({"convert", "--compat", "-q", "junk.trc", "junk.mf4"});
  EXPECT_EQ(run.exitCode, 3);
  EXPECT_EQ(run.errors,
            "xlatr: warning: junk.trc: is not a valid trc file, so the target is empty; look at its header\n");
  EXPECT_EQ(here.read("junk.mf4"), "");
}

TEST_F(CompatCommand, aSourceThatIsNotValidLeavesASessionWithoutMessages) {
  here.write("junk.trc", "no trace at all\n");
  const Ended run = here.run({"convert", "--compat", "-q", "junk.trc", "junk.btr"});
  EXPECT_EQ(run.exitCode, 3);
  EXPECT_EQ(run.errors,
            "xlatr: warning: junk.trc: is not a valid trc file, so the target holds no messages; look at its header\n");
}

TEST_F(CompatCommand, framesOfABinarySourceThatIsNotValidAreConvertedWithoutAHeader) {
  using namespace test::btrc;
  here.write("old.btrc", filled(info(0) + plainFrame(1000)));
  here.write("new.btr", test::BtrImage(2).session(0, {.version = 9}).sector(1, {}, {{.length = 1}}).bytes());
  struct Case {
    const char* source;
    const char* format;
    const char* written;
  };
  for (const auto& [source, format, written] :
       std::initializer_list<Case>{{"old.btrc", "btrc", "x.trc"}, {"new.btr", "btr", "x_S1.trc"}}) {
    const Ended run = here.run({"convert", "--compat", "-q", source, "x.trc", "--target-version", "2.1"});
    EXPECT_EQ(run.exitCode, 3) << source;
    EXPECT_EQ(run.errors, std::string("xlatr: warning: ") + source + ": is not a valid " + format +
                              " file, so the target has no header; look at its header\n");
    EXPECT_THAT(here.read(written), testing::StartsWith("      1 ")) << source;
    std::filesystem::remove(here / "x.trc");
  }
}

TEST_F(CompatCommand, anImpossiblePairNamesBothFormats) {
  const Ended run = here.run({"convert", "--compat", "drive.trc", "x.ltrc"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_TRUE(isOneErrorLine(run.errors)) << run.errors;
  EXPECT_THAT(run.errors, HasSubstr("trc can't be converted into ltrc with --compat"));
  EXPECT_THAT(here.names(), ElementsAre("drive.trc"));
}

TEST_F(CompatCommand, aSourceThatIsNotValidIsWrittenWithAWarning) {
  here.write("junk.trc", "no trace at all\n");
  const Ended run = here.run({"convert", "--compat", "junk.trc", "x.trc"});
  EXPECT_EQ(run.exitCode, 3);
  EXPECT_THAT(run.errors, HasSubstr("\nxlatr: warning: junk.trc: "));
  EXPECT_THAT(here.read("x.trc"), HasSubstr("no trace at all"));
}

TEST_F(CompatCommand, aWarningOfTheLibraryIsPrintedOnOneLine) {
  here.write("buses.trc", traceOfBuses({1, 17}));
  const Ended run = here.run({"convert", "--compat", "-q", "buses.trc", "x.trc", "--target-version", "2.1"});
  EXPECT_EQ(run.exitCode, 3);
  EXPECT_TRUE(isOneErrorLine(run.errors)) << run.errors;
  EXPECT_THAT(run.errors, testing::StartsWith("xlatr: warning: buses.trc: "));
  EXPECT_THAT(run.errors, HasSubstr(" 17"));
  EXPECT_EQ(run.output, "");
}

TEST_F(CompatCommand, aTraceWithoutMessagesMayLeaveNoFile) {
  here.write("empty.trc", traceOfBuses({}));
  const Ended run = here.run({"convert", "--compat", "empty.trc", "x.trc", "--target-version", "2.0"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_EQ(run.errors, "xlatr: nothing to write: the source holds no messages\n");
  EXPECT_THAT(here.names(), ElementsAre("drive.trc", "empty.trc"));
}

TEST_F(CompatCommand, convertsManyFilesIntoAFolder) {
  here.write("two.trc", traceOfBuses({1}));
  here.write("bad.mf4", "no measurement at all");
  std::filesystem::create_directory(here / "out");
  const Ended run = here.run({"convert", "--compat", "-q", "drive.trc", "bad.mf4", "two.trc", "out", "--to", "csv"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_TRUE(isOneErrorLine(run.errors)) << run.errors;
  EXPECT_TRUE(std::filesystem::exists(here / "out/drive.csv"));
  EXPECT_TRUE(std::filesystem::exists(here / "out/two.csv"));
  EXPECT_FALSE(std::filesystem::exists(here / "out/bad.csv"));
}

TEST_F(CompatCommand, refusesWhatOnlyTheCompleteWayHas) {
  for (const auto& option :
       std::vector<std::vector<std::string>>{{"--id", "1"}, {"--json"}, {"--strict"}, {"--rebase"}}) {
    std::vector<std::string> arguments{"convert", "--compat", "drive.trc", "x.asc"};
    arguments.insert(arguments.end(), option.begin(), option.end());
    const Ended run = here.run(arguments);
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.errors, "xlatr: " + option.front() + ": there is no such option with --compat\n");
  }
  EXPECT_EQ(here.run({"convert", "--compat", "drive.trc", "-", "--to", "csv"}).exitCode, 2);
}

// If the target is a pipe, the test can hold the conversion up as long as it likes: it goes on only as the pipe is
// read.
class HeldConversion : public CompatCommand {
 protected:
  void SetUp() override {
    here.write("long.trc", traceOfBuses(std::vector<int>(200'000, 1)));
    ASSERT_EQ(::mkfifo((here / "slow.trc").c_str(), 0600), 0);
    pipe = ::open((here / "slow.trc").c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(pipe, 0);
  }

  void TearDown() override { ::close(pipe); }

  // Whether something can be read from the descriptor within the limit.
  static bool hasInput(int descriptor) {
    pollfd wait{descriptor, POLLIN, 0};
    return ::poll(&wait, 1, 60'000) == 1 && (wait.revents & POLLIN) != 0;
  }

  static std::string readSome(int descriptor) {
    std::array<char, 65536> buffer{};
    const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
    return {buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0};
  }

  void drain() const {
    while (hasInput(pipe) && !readSome(pipe).empty()) {
    }
  }

  int pipe = -1;
};

TEST_F(HeldConversion, interruptEndsWith130) {
  const int errors = ::open((here / "errors").c_str(), O_WRONLY | O_CREAT, 0600);
  const pid_t program = here.start({"convert", "--compat", "-f", "long.trc", "slow.trc"}, errors);
  ::close(errors);
  ASSERT_TRUE(hasInput(pipe));
  ASSERT_EQ(::kill(program, SIGINT), 0);
  drain();
  EXPECT_EQ(Workspace::wait(program), 130);
  const std::string text = here.read("errors");
  EXPECT_TRUE(isOneErrorLine(text)) << text;
  EXPECT_THAT(text, HasSubstr("long.trc: interrupted; nothing was written"));
}

TEST_F(HeldConversion, progressIsDrawnOnATerminal) {
  const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_GE(terminal, 0);
  ASSERT_EQ(::grantpt(terminal), 0);
  ASSERT_EQ(::unlockpt(terminal), 0);
  std::array<char, 128> name{};
  ASSERT_EQ(::ptsname_r(terminal, name.data(), name.size()), 0);
  const int errors = ::open(name.data(), O_RDWR | O_NOCTTY);
  ASSERT_GE(errors, 0);
  const pid_t program = here.start({"convert", "--compat", "-f", "long.trc", "slow.trc"}, errors);
  ::close(errors);
  EXPECT_TRUE(hasInput(terminal));
  const std::string drawn = readSome(terminal);
  EXPECT_THAT(drawn, testing::StartsWith("\r["));
  EXPECT_THAT(drawn, HasSubstr(" %"));
  drain();
  EXPECT_EQ(Workspace::wait(program), 0);
  ::close(terminal);
}

}  // namespace
}  // namespace xlatr::cli
