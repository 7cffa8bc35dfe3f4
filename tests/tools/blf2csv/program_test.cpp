#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/process.hpp"
#include "platform/shared_memory.hpp"
#include "support/blf_builder.hpp"
#include "tools/blf2csv/table.hpp"
#include "tools/program.hpp"
#include "tracegen/generator.hpp"

// The program as the library runs it: command lines, exit codes, what it leaves.
namespace blf2csv {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using xlatr::cli::Ended;
using xlatr::cli::Workspace;
using xlatr::platform::NamedMutex;
using xlatr::platform::SharedMemory;
using xlatr::test::blf::classicFrame;
using xlatr::test::blf::file;
using xlatr::test::blf::object;
using xlatr::test::blf::stored;

constexpr char kRow[] = "1;1;0;2;1;-;291;1;0;0;0;0;0;0;0;0;2;11;12\n";

std::string smallLog() {
  return file({.objects = 300}, stored(classicFrame({.dlc = 2})));
}

// A name that no other test uses at the same time.
std::string blockName(const std::string& test) {
  return "BLF2CSV_TEST_" + test + std::to_string(::getpid());
}

bool isLeft(const std::string& name) {
  return std::ifstream("/dev/shm/" + name).is_open() || std::ifstream("/dev/shm/sem." + name + "_MUTEX").is_open();
}

// The side of the library.
class Watcher {
 public:
  explicit Watcher(const std::string& name) : name_(name) {
    opened_ = memory_.open(name, 4) && mutex_.open(name + "_MUTEX");
  }
  ~Watcher() {
    SharedMemory::remove(name_);
    NamedMutex::remove(name_ + "_MUTEX");
  }
  Watcher(const Watcher&) = delete;
  Watcher& operator=(const Watcher&) = delete;

  [[nodiscard]] bool isOpen() const { return opened_; }
  [[nodiscard]] NamedMutex& mutex() { return mutex_; }
  // Without the lock, which is for the caller to hold or for a program that has ended.
  [[nodiscard]] std::uint16_t progress() const { return word(0); }
  void askToStop() {
    const std::uint16_t stop = 1;
    std::memcpy(memory_.bytes().data() + 2, &stop, sizeof stop);
  }

 private:
  [[nodiscard]] std::uint16_t word(std::size_t offset) const {
    std::uint16_t value = 0;
    std::memcpy(&value, memory_.bytes().data() + offset, sizeof value);
    return value;
  }

  std::string name_;
  SharedMemory memory_;
  NamedMutex mutex_;
  bool opened_ = false;
};

// Long enough that there is a middle.
const std::string& largeLog() {
  static const xlatr::test::TempFolder folder;
  static const std::string path = [] {
    tracegen::RecordingOptions options;
    options.form = tracegen::Form::Blf;
    options.maxMessages = 1'000'000;
    options.traffic.makePlain();
    std::string made = folder.file("large.blf");
    tracegen::generateFile(options, made);
    return made;
  }();
  return path;
}

TEST(Blf2CsvProgram, repliesToQueries) {
  const Workspace here;
  here.write("a.blf", smallLog());
  struct Case {
    std::vector<std::string> arguments;
    std::string output;
    int exitCode;  // the low eight bits
  };
  for (const Case& query : {Case{{"-GetApiVersion"}, "1000000\n", 1000000 & 0xFF},
                            Case{{"-GetFileVersion", "a.blf"}, "4070100\n", 4070100 & 0xFF},
                            Case{{"-GetObjectsCount", "a.blf"}, "300\n", 300 & 0xFF}}) {
    const Ended run = here.run(query.arguments);
    EXPECT_EQ(run.output, query.output);
    EXPECT_EQ(run.exitCode, query.exitCode);
    EXPECT_EQ(run.errors, "");
  }
}

TEST(Blf2CsvProgram, returnsMinusOneForWhatIsNotALog) {
  const Workspace here;
  here.write("text.blf", "this is text");
  for (const char* const query : {"-GetFileVersion", "-GetObjectsCount"}) {
    for (const char* const path : {"text.blf", "missing.blf", "."}) {
      const Ended run = here.run({query, path});
      EXPECT_EQ(run.output, "-1\n");
      EXPECT_EQ(run.exitCode, 255);
      EXPECT_EQ(run.errors, "");
    }
  }
}

TEST(Blf2CsvProgram, writesTheTableAndLeavesNothingElse) {
  const Workspace here;
  const std::string name = blockName("WRITES");
  here.write("a.blf", smallLog());
  const Ended run = here.run({"a.blf", "a.csv", name});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.output, "");
  EXPECT_EQ(run.errors, "");
  EXPECT_EQ(here.read("a.csv"), std::string(kHead) + kRow);
  EXPECT_THAT(here.names(), ElementsAre("a.blf", "a.csv"));
  EXPECT_FALSE(isLeft(name));
}

TEST(Blf2CsvProgram, takesAnyPath) {
  const Workspace here;
  const std::string source = "a \"log\" of $HOME; it's `here` & there.blf";
  here.write(source, smallLog());
  EXPECT_EQ(here.run({"-GetObjectsCount", source}).output, "300\n");
  const Ended run = here.run({source, "a $(table) \\.csv", blockName("PATH")});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(here.read("a $(table) \\.csv"), std::string(kHead) + kRow);
}

TEST(Blf2CsvProgram, replacesAnOldTable) {
  const Workspace here;
  here.write("a.blf", smallLog());
  here.write("a.csv", std::string(100'000, 'x'));
  EXPECT_EQ(here.run({"a.blf", "a.csv", blockName("OLD")}).exitCode, 0);
  EXPECT_EQ(here.read("a.csv"), std::string(kHead) + kRow);
}

TEST(Blf2CsvProgram, saysWhatItSkipped) {
  const Workspace here;
  here.write("a.blf", file(stored(classicFrame({.dlc = 2}) + "junk" + object({.type = 92}, ""))));
  const Ended run = here.run({"a.blf", "a.csv", blockName("SAYS")});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(
      run.errors,
      "BLF2CSV: a.blf: stretches of bytes between objects that belong to none, skipped: 1, the first at offset 48 "
      "of the content\n"
      "BLF2CSV: a.blf: objects of types without a row, skipped: 1 (1 of type 92)\n");
  EXPECT_EQ(here.read("a.csv"), std::string(kHead) + kRow);
}

TEST(Blf2CsvProgram, failsWithOneLineAndWithoutTable) {
  const Workspace here;
  const std::string name = blockName("FAILS");
  here.write("a.blf", smallLog());
  here.write("text.blf", std::string(500, 'x'));
  struct Case {
    std::vector<std::string> paths;
    const char* message;
  };
  for (const Case& failing :
       {Case{{"text.blf", "t.csv"}, "text.blf: is not a BLF log"},
        Case{{"missing.blf", "t.csv"}, "missing.blf: cannot open"}, Case{{".", "t.csv"}, ".: cannot open"},
        Case{{"a.blf", "no/folder/t.csv"}, "no/folder/t.csv: cannot create"},
        Case{{"a.blf", "a.blf"}, "a.blf: is the log itself"},
        Case{{"a.blf", "./a.blf"}, "./a.blf: is the log itself"}}) {
    const Ended run = here.run({failing.paths[0], failing.paths[1], name});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.errors, testing::StartsWith("BLF2CSV: "));
    EXPECT_THAT(run.errors, HasSubstr(failing.message));
    EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1);
    EXPECT_THAT(here.names(), ElementsAre("a.blf", "text.blf"));
    EXPECT_EQ(here.read("a.blf"), smallLog());
    EXPECT_FALSE(isLeft(name));
  }
}

TEST(Blf2CsvProgram, failsWhenTheDiskIsFull) {
  const Workspace here;
  here.write("a.blf", smallLog());
  std::filesystem::create_symlink("/dev/full", here / "full.csv");
  const Ended run = here.run({"a.blf", "full.csv", blockName("FULL")});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.errors, HasSubstr("full.csv: cannot write"));
  // It removes only a file that it created.
  EXPECT_THAT(here.names(), ElementsAre("a.blf", "full.csv"));
}

TEST(Blf2CsvProgram, showsItsUsageForOtherArguments) {
  const Workspace here;
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{},
                                                    {"-GetApiVersion", "x"},
                                                    {"-GetFileVersion"},
                                                    {"a.blf", "a.csv"},
                                                    {"a", "b", "c", "d"}}) {
    const Ended run = here.run(arguments);
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_THAT(run.errors, testing::StartsWith("usage: BLF2CSV.exe LOG TABLE NAME\n"));
  }
}

TEST(Blf2CsvProgram, runsWithoutSharedMemory) {
  const Workspace here;
  here.write("a.blf", smallLog());
  EXPECT_EQ(here.run({"a.blf", "a.csv", "no/such/name"}).exitCode, 0);
  EXPECT_EQ(here.read("a.csv"), std::string(kHead) + kRow);
}

TEST(Blf2CsvProgram, reportsItsProgressUpToTheEnd) {
  const Workspace here;
  const std::string name = blockName("PROGRESS");
  Watcher watcher(name);
  ASSERT_TRUE(watcher.isOpen());
  here.write("a.blf", smallLog());
  EXPECT_EQ(here.run({"a.blf", "a.csv", name}).exitCode, 0);
  EXPECT_EQ(watcher.progress(), 10000);
  EXPECT_FALSE(isLeft(name));
}

TEST(Blf2CsvProgram, stopsBeforeItHasBegun) {
  const Workspace here;
  const std::string name = blockName("BEFORE");
  Watcher watcher(name);
  ASSERT_TRUE(watcher.isOpen());
  watcher.askToStop();
  here.write("a.blf", smallLog());
  const Ended run = here.run({"a.blf", "a.csv", name});
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_EQ(run.errors, "");
  EXPECT_THAT(here.names(), ElementsAre("a.blf"));
  EXPECT_FALSE(isLeft(name));
}

// Runs the program on the large log and does something once it is in the middle of it.
template <class Action>
int runUntilTheMiddle(const Workspace& here, const std::string& name, Action action) {
  Watcher watcher(name);
  EXPECT_TRUE(watcher.isOpen());
  const pid_t program = here.start({largeLog(), "large.csv", name}, STDERR_FILENO);
  std::uint16_t last = 0;
  const auto start = std::chrono::steady_clock::now();
  while (last < 1000 && std::chrono::steady_clock::now() - start < std::chrono::seconds(60)) {
    if (watcher.mutex().lock(std::chrono::milliseconds(5000))) {
      EXPECT_GE(watcher.progress(), last);
      last = watcher.progress();
      if (last >= 1000) {
        EXPECT_LT(last, 9000) << "the middle was missed";
        action(watcher, program);
      }
      watcher.mutex().unlock();
    }
    std::this_thread::yield();
  }
  return Workspace::wait(program);
}

TEST(Blf2CsvProgram, stopsInTheMiddle) {
  const Workspace here;
  const std::string name = blockName("MIDDLE");
  EXPECT_EQ(runUntilTheMiddle(here, name, [](Watcher& watcher, pid_t) { watcher.askToStop(); }), 2);
  EXPECT_THAT(here.names(), IsEmpty());
  EXPECT_FALSE(isLeft(name));
}

TEST(Blf2CsvProgram, anInterruptIsAStop) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const Workspace here;
    const std::string name = blockName("SIGNAL");
    EXPECT_EQ(runUntilTheMiddle(here, name, [signal](Watcher&, pid_t program) { ::kill(program, signal); }), 2);
    EXPECT_THAT(here.names(), IsEmpty());
    EXPECT_FALSE(isLeft(name));
  }
}

// As a shell has it for what runs in the background, and nohup for what is to survive the terminal.
TEST(Blf2CsvProgram, aSignalThatItsCallerIgnoredIsIgnored) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const Workspace here;
    const std::string name = blockName("IGNORED");
    const auto former = std::signal(signal, SIG_IGN);
    EXPECT_EQ(runUntilTheMiddle(here, name, [signal](Watcher&, pid_t program) { ::kill(program, signal); }), 0);
    std::signal(signal, former);
    EXPECT_THAT(here.names(), ElementsAre("large.csv"));
  }
}

TEST(Blf2CsvProgram, nobodyElseMayReadTheTable) {
  const Workspace here;
  here.write("a.blf", smallLog());
  EXPECT_EQ(here.run({"a.blf", "a.csv", blockName("MODE")}).exitCode, 0);
  EXPECT_EQ(std::filesystem::status(here / "a.csv").permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

// Starts the program on the large log as the library does, and waits for ever.
[[noreturn]] void beItsParent(const Workspace& here, const std::string& name) {
  xlatr::platform::Process program;
  const std::vector<std::string> arguments{largeLog(), here / "large.csv", name};
  const bool started = program.start(XLATR_PROGRAM, arguments, xlatr::platform::StandardStreams::Closed,
                                     xlatr::platform::ProgramTie::Link);
  while (started) {
    ::pause();
  }
  ::_exit(1);
}

// However that ends; the table and the names would stay for good.
TEST(Blf2CsvProgram, endsWithItsParentAndLeavesNothing) {
  // Who has lost its parent is ours then, so that its end can be seen.
  ASSERT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
  static_cast<void>(largeLog());
  for (const int signal : {SIGKILL, SIGTERM, SIGHUP}) {
    const Workspace here;
    const std::string name = blockName("PARENT");
    Watcher watcher(name);
    ASSERT_TRUE(watcher.isOpen());
    const pid_t parent = ::fork();
    if (parent == 0) {
      beItsParent(here, name);
    }
    while (watcher.progress() < 1000) {
      std::this_thread::yield();
    }
    EXPECT_LT(watcher.progress(), 9000) << "the middle was missed";
    EXPECT_FALSE(here.names().empty());
    ::kill(parent, signal);
    EXPECT_EQ(Workspace::wait(parent), 128 + signal);
    int status = -1;
    EXPECT_GT(::wait(&status), 0);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 2);
    EXPECT_THAT(here.names(), IsEmpty());
    EXPECT_FALSE(isLeft(name));
  }
  ::prctl(PR_SET_CHILD_SUBREAPER, 0);
}

TEST(Blf2CsvProgram, tellsItsExitCodeToAParentThatIgnoresItsEnd) {
  const Workspace here;
  here.write("a.blf", smallLog());
  const auto former = std::signal(SIGCHLD, SIG_IGN);
  for (const auto& [source, exitCode] : {std::pair("a.blf", 0U), std::pair("none.blf", 1U)}) {
    xlatr::platform::Process program;
    ASSERT_TRUE(program.start(XLATR_PROGRAM,
                              std::vector<std::string>{here / source, here / "a.csv", blockName("TELLS")},
                              xlatr::platform::StandardStreams::Closed, xlatr::platform::ProgramTie::Link));
    EXPECT_EQ(program.wait(), exitCode);
  }
  std::signal(SIGCHLD, former);
}

// A variable that it inherited from somebody else's program is no link.
TEST(Blf2CsvProgram, runsWithoutTheLinkThatItIsPromised) {
  const Workspace here;
  here.write("a.blf", smallLog());
  ::setenv("XLATR_PARENT_LINK", "3", 1);
  EXPECT_EQ(here.run({"a.blf", "a.csv", blockName("PROMISED")}).exitCode, 0);
  EXPECT_EQ(here.shell("xlatr a.blf b.csv " + blockName("PROMISED") + " 3< a.blf").exitCode, 0);
  ::unsetenv("XLATR_PARENT_LINK");
  EXPECT_EQ(here.read("b.csv"), std::string(kHead) + kRow);
}

// A process that holds the lock for ever delays the conversion once, for the limit of an access, and not at each step;
// even a small log takes several.
TEST(Blf2CsvProgram, aDeadWatcherDoesNotHoldItUpForLong) {
  const Workspace here;
  const std::string name = blockName("DEAD");
  Watcher watcher(name);
  ASSERT_TRUE(watcher.isOpen());
  ASSERT_TRUE(watcher.mutex().lock(std::chrono::milliseconds(5000)));
  std::string containers;
  for (int count = 0; count < 100; ++count) {
    containers += stored(classicFrame({.dlc = 2}));
  }
  here.write("a.blf", file(containers));
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(here.run({"a.blf", "a.csv", name}).exitCode, 0);
  const auto took = std::chrono::steady_clock::now() - start;
  EXPECT_GE(took, std::chrono::milliseconds(5000));
  EXPECT_LT(took, std::chrono::seconds(60));
  EXPECT_THAT(here.names(), ElementsAre("a.blf", "a.csv"));
}

}  // namespace
}  // namespace blf2csv
