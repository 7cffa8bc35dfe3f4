#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "support/blf_builder.hpp"
#include "tools/program.hpp"

// What stands under a target's name while the program runs and after it was stopped, and what the terminal shows.
namespace xlatr::cli {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class SafeFiles : public testing::Test {
 protected:
  void SetUp() override {
    here.write("long.trc", traceOfBuses(std::vector<int>(20'000, 1)));
    ASSERT_EQ(here.run({"convert", "-q", "long.trc", "whole.asc"}).exitCode, 0);
    whole_ = here.read("whole.asc");
    fs::remove(here / "whole.asc");
  }

  // Starts a conversion that can't come to its end.
  [[nodiscard]] pid_t startHeld(const std::vector<std::string>& options) {
    std::string words = "convert - out.asc";
    for (const std::string& option : options) {
      words += " " + option;
    }
    const pid_t program = startWithHeldInput(words);
    for (int tries = 0; tries < 2000 && !fs::exists(here / ".out.asc.xlatr-part"); ++tries) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return program;
  }

  // Its standard input is a pipe that holds the first lines.
  [[nodiscard]] pid_t startWithHeldInput(const std::string& words) {
    EXPECT_EQ(::mkfifo((here / "held").c_str(), 0600), 0);
    // Read and written by this end, so that nobody waits for another.
    source_ = ::open((here / "held").c_str(), O_RDWR | O_CLOEXEC);
    // More than is looked at to know the format, and less than a pipe takes.
    const std::string lines = traceOfBuses(std::vector<int>(kHeldFrames, 1));
    EXPECT_EQ(::write(source_, lines.data(), lines.size()), static_cast<ssize_t>(lines.size()));
    const int errors = ::open((here / "errors").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const pid_t program =
        shell_.start({"-c", "cd '" + here.path() + "'; exec " XLATR_PROGRAM " " + words + " < held"}, errors);
    ::close(errors);
    return program;
  }
  void TearDown() override {
    if (source_ >= 0) {
      ::close(source_);
    }
  }

  static constexpr int kHeldFrames = 200;

  const Workspace here{};
  const Workspace shell_{"/bin/sh"};
  std::string whole_;
  int source_ = -1;
};

TEST_F(SafeFiles, aFragmentNeverHasTheName) {
  here.write("out.asc", "old");
  const pid_t program = startHeld({"-f"});
  EXPECT_TRUE(fs::exists(here / ".out.asc.xlatr-part"));
  EXPECT_EQ(here.read("out.asc"), "old");
  const Ended second = here.run({"convert", "-f", "long.trc", "out.asc"});
  EXPECT_EQ(second.exitCode, 5);
  EXPECT_THAT(second.errors, HasSubstr("another conversion is writing this file"));
  ASSERT_EQ(::kill(program, SIGKILL), 0);
  EXPECT_EQ(Workspace::wait(program), 128 + SIGKILL);
  EXPECT_EQ(here.read("out.asc"), "old");
  // The next one takes the place over.
  EXPECT_EQ(here.run({"convert", "-qf", "long.trc", "out.asc"}).exitCode, 0);
  EXPECT_TRUE(here.read("out.asc") == whole_);
  EXPECT_FALSE(fs::exists(here / ".out.asc.xlatr-part"));
}

// What is converted while the program is ended.
struct Deed {
  std::vector<std::string> words;
  std::map<std::string, std::string> whole;  // what check says of each target
};

class EndedPrograms : public SafeFiles {
 protected:
  void SetUp() override {
    SafeFiles::SetUp();
    const std::vector<std::string> targets = {"trc", "btr", "asc", "csv", "btrc", "mf4", "ltrc"};
    here.write("long.trc", traceOfTwoBuses());
    here.write("long.ltrc", traceOfLin());
    here.write("long.blf", logOfTwoBuses());
    for (const std::string& format : targets) {
      static_cast<void>(here.run({"convert", "-qqn", "long.trc", "long." + format}));
    }
    for (const std::string source : {"trc", "btr", "asc", "csv", "btrc", "mf4", "ltrc", "blf"}) {
      for (const std::string& target : targets) {
        add({"convert", "-qqf", "long." + source, "out." + target});
        add({"convert", "-qqf", "--compat", "long." + source, "out." + target});
      }
      add({"convert", "-qqf", "--compat", "--target-version", "2.0", "long." + source, "out.trc"});
      add({"convert", "-qqf", "--split-bus", "long." + source, "out_%b.asc"});
      add({"convert", "-qqf", "--split-size", "100K", "long." + source, "out_%n.trc"});
    }
  }

  static std::string traceOfTwoBuses() {
    std::vector<int> buses(std::size_t{kFrames}, 1);
    std::fill(buses.begin(), buses.begin() + kFrames / 2, 2);
    return traceOfBuses(buses);
  }
  static std::string traceOfLin() {
    std::string trace = ";$FILEVERSION=1.2\n;$STARTTIME=44403.25\n";
    for (int number = 1; number <= kFrames; ++number) {
      trace += std::to_string(number) + ") " + std::to_string(number * 1000) + " Pub 2A 2 01 02 7C CL\n";
    }
    return trace;
  }
  static std::string logOfTwoBuses() {
    std::string objects;
    for (std::uint64_t number = 1; number <= kFrames; ++number) {
      objects += test::blf::classicFrame(
          {.channel = static_cast<std::uint16_t>(1 + number % 2), .timestamp = number * 1'000'000});
    }
    return test::blf::file({.objects = kFrames}, test::blf::zipped(objects));
  }

  // No effect on what can't be converted on the compatible way.
  void add(std::vector<std::string> words) {
    static_cast<void>(here.run(words));
    if (std::map<std::string, std::string> whole = targets(); !whole.empty()) {
      deeds_.push_back({std::move(words), std::move(whole)});
    }
    removeTargets();
  }
  // The names begin with "out", those of fragments with a point.
  [[nodiscard]] std::vector<std::string> namesThatBegin(std::string_view start) const {
    std::vector<std::string> names = here.names();
    std::erase_if(names, [start](const std::string& name) { return !name.starts_with(start); });
    return names;
  }
  [[nodiscard]] std::map<std::string, std::string> targets() const {
    std::map<std::string, std::string> said;
    for (const std::string& name : namesThatBegin("out")) {
      said[name] = saidOf(name);
    }
    return said;
  }
  [[nodiscard]] std::string saidOf(const std::string& name) const {
    return here.read(name) == "old" ? "old" : here.run({"check", name}).output;
  }
  void removeTargets() const {
    for (const std::string_view start : {"out", "."}) {
      for (const std::string& name : namesThatBegin(start)) {
        fs::remove(here / name);
      }
    }
  }

  static constexpr int kFrames = 8'000;
  std::vector<Deed> deeds_;
};

// At two hundred moments of its life, whatever it reads and writes and however it is ended, if it is.
TEST_F(EndedPrograms, leaveTheOldFilesOrTheNewOnes) {
  constexpr std::array kSignals = {SIGKILL, SIGTERM, SIGHUP};
  constexpr std::size_t kEnds = 210;
  constexpr std::size_t kNotEnded = 20;  // one in so many ends by itself, however slow the machine is
  EXPECT_GT(deeds_.size(), 8 * 7 + 8 + 1U);
  EXPECT_LT(deeds_.size(), kEnds) << "each is to be ended";
  const int errors = ::open((here / "errors").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  std::size_t wholeOnes = 0;
  for (std::size_t run = 0; run < kEnds; ++run) {
    const Deed& deed = deeds_[run % deeds_.size()];
    for (const auto& [name, said] : deed.whole) {
      here.write(name, "old");
    }
    const int signal = kSignals[(run + run / deeds_.size()) % kSignals.size()];
    const pid_t program = here.start(deed.words, errors);
    if (run % kNotEnded != 0) {
      std::this_thread::sleep_for(std::chrono::microseconds(run * 7 % 100 * 500));
      static_cast<void>(::kill(program, signal));
    }
    static_cast<void>(Workspace::wait(program));
    const std::string what = testing::PrintToString(deed.words) + ", signal " + std::to_string(signal);
    EXPECT_TRUE(signal == SIGKILL || namesThatBegin(".").empty()) << what;
    for (const auto& [name, said] : targets()) {
      const auto expected = deed.whole.find(name);
      ASSERT_NE(expected, deed.whole.end()) << what << ": " << name;
      ASSERT_TRUE(said == "old" || said == expected->second) << what << ": " << name << ": " << said;
      wholeOnes += said == "old" ? 0U : 1U;
    }
    EXPECT_EQ(namesThatBegin("out").size(), deed.whole.size()) << what;
    removeTargets();
  }
  ::close(errors);
  EXPECT_GT(wholeOnes, 0U);
}

TEST_F(SafeFiles, signalsEndItWithoutAFragment) {
  struct Case {
    int signal;
    int exitCode;
  };
  for (const auto& [signal, exitCode] : std::initializer_list<Case>{{SIGINT, 130}, {SIGTERM, 143}, {SIGHUP, 129}}) {
    const pid_t program = startHeld({});
    ASSERT_EQ(::kill(program, signal), 0);
    // The other end of the pipe stays open: the signal ends the waiting too.
    EXPECT_EQ(Workspace::wait(program), exitCode);
    EXPECT_EQ(here.read("errors"), "xlatr: interrupted; out.asc was not written\n");
    ::close(std::exchange(source_, -1));
    EXPECT_FALSE(fs::exists(here / "out.asc"));
    EXPECT_FALSE(fs::exists(here / ".out.asc.xlatr-part"));
    fs::remove(here / "held");
  }
}

TEST_F(SafeFiles, aFragmentIsKeptWhenThatIsAskedFor) {
  const pid_t program = startHeld({"--keep-partial"});
  ASSERT_EQ(::kill(program, SIGINT), 0);
  EXPECT_EQ(Workspace::wait(program), 130);
  EXPECT_FALSE(fs::exists(here / "out.asc"));
  EXPECT_THAT(here.read("out.partial.asc"), StartsWith("date "));
}

TEST_F(SafeFiles, aFolderThatCannotBeWrittenIsTold) {
  fs::create_directory(here / "shut");
  fs::permissions(here / "shut", fs::perms::owner_read | fs::perms::owner_exec);
  if (::geteuid() != 0) {  // root may write everywhere
    EXPECT_EQ(here.run({"convert", "long.trc", "shut/out.asc"}).exitCode, 5);
  }
  EXPECT_EQ(here.run({"convert", "long.trc", "none/out.asc"}).exitCode, 5);
  EXPECT_EQ(here.run({"convert", "long.trc", "shut"}).exitCode, 2);
}

// Over the limit of a file's size a write fails as it does on a full disk. A program that counts what runs of it would
// write its counts over the limit, too.
TEST_F(SafeFiles, aFullDiskLeavesTheOldFile) {
  here.write("out.asc", "old");
  const Ended run = here.shell("export LLVM_PROFILE_FILE=/dev/null; ulimit -f 64; xlatr convert -f long.trc out.asc");
  EXPECT_EQ(run.exitCode, 5);
  EXPECT_THAT(run.errors, StartsWith("xlatr: out.asc: cannot write: "));
  EXPECT_EQ(here.read("out.asc"), "old");
  EXPECT_FALSE(fs::exists(here / ".out.asc.xlatr-part"));
}

// On a disk of one's own, where the system lets a test have one: what it holds in the end, and what the program said.
class SafeFilesOnADisk : public SafeFiles {
 protected:
  // The lines begin with "old" in the target, and end with the program.
  [[nodiscard]] std::optional<Ended> run(const std::string& before) const {
    const std::string disk = "mkdir disk && mount -t tmpfs -o size=64k none disk && echo old > disk/out.asc";
    if (here.shell("unshare -rm sh -c '" + disk + "' || exit 9").exitCode == 9) {
      return std::nullopt;
    }
    fs::remove(here / "disk");
    return here.shell("unshare -rm sh -c '" + disk + "; " + before +
                      "; " XLATR_PROGRAM
                      " convert -f long.trc disk/out.asc; echo $? > code; ls -A disk; cat disk/out.asc'");
  }
  void expectOldFile(const std::string& before, const std::string& errors) const {
    const auto ended = run(before);
    if (!ended) {
      GTEST_SKIP() << "no disk of one's own on this system";
    }
    EXPECT_EQ(here.read("code"), "5\n");
    EXPECT_EQ(ended->output, "out.asc\nold\n");
    EXPECT_EQ(ended->errors, errors);
  }
};

TEST_F(SafeFilesOnADisk, aFullOneIsToldWithItsReason) {
  expectOldFile("true", "xlatr: disk/out.asc: cannot write: No space left on device\n");
}

TEST_F(SafeFilesOnADisk, oneThatHasBecomeReadOnlyIsToldWithItsReason) {
  expectOldFile("mount -o remount,ro disk", "xlatr: disk/out.asc: cannot create: Read-only file system\n");
}

TEST_F(SafeFiles, signalsEndWhatReadsTraces) {
  for (const char* const words : {"stats -", "check -", "cat -", "info --count -", "compare - long.trc"}) {
    const pid_t program = startWithHeldInput(words);
    // Until the program has read all that the pipe held, and waits for more.
    int left = 1;
    for (int tries = 0; tries < 2000 && left > 0; ++tries) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      ASSERT_EQ(::ioctl(source_, FIONREAD, &left), 0);
    }
    ASSERT_EQ(left, 0) << words << ": " << here.read("errors");
    ASSERT_EQ(::kill(program, SIGTERM), 0);
    EXPECT_EQ(Workspace::wait(program), 143) << words;
    EXPECT_EQ(here.read("errors"), "xlatr: interrupted\n") << words;
    ::close(std::exchange(source_, -1));
    fs::remove(here / "held");
  }
}

TEST_F(SafeFiles, aFullDiskBehindStandardOutputIsTold) {
  for (const char* command : {"cat", "convert --to asc"}) {
    const std::string target = command == std::string_view("cat") ? "" : " -";
    const Ended run = here.shell("export LLVM_PROFILE_FILE=/dev/null; ulimit -f 8; xlatr " + std::string(command) +
                                 " long.trc" + target + " > out.txt");
    EXPECT_NE(run.exitCode, 0) << command;
    EXPECT_LT(run.exitCode, 128) << command;
    EXPECT_THAT(run.errors, StartsWith("xlatr: standard output: ")) << command;
  }
}

TEST_F(SafeFiles, nothingIsMadeBehindALinkThatLeadsNowhere) {
  fs::create_symlink("elsewhere", here / "out.asc");
  for (const char* way : {"-q", "--compat"}) {
    const Ended run = here.run({"convert", way, "long.trc", "out.asc"});
    EXPECT_EQ(run.exitCode, 4) << way;
    EXPECT_THAT(run.errors, StartsWith("xlatr: out.asc: ")) << way;
  }
  for (const char* way : {"-q", "--compat"}) {
    EXPECT_EQ(here.run({"convert", way, "-n", "long.trc", "out.asc"}).exitCode, 0) << way;
  }
  EXPECT_TRUE(fs::is_symlink(here / "out.asc"));
  EXPECT_FALSE(fs::exists(here / "elsewhere"));
}

TEST_F(SafeFiles, aPipeThatNobodyReadsIsRefused) {
  ASSERT_EQ(::mkfifo((here / "out.asc").c_str(), 0600), 0);
  const Ended run = here.run({"convert", "long.trc", "out.asc"});
  EXPECT_EQ(run.exitCode, 5);
  EXPECT_EQ(run.errors,
            "xlatr: out.asc: cannot create, since nobody reads from this pipe: No such device or address\n");
  const Ended compatible = here.run({"convert", "--compat", "-f", "long.trc", "out.asc"});
  EXPECT_EQ(compatible.exitCode, 1);
  EXPECT_THAT(compatible.errors, HasSubstr("nobody reads from this pipe"));
  const int reader = ::open((here / "out.asc").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  here.write("short.trc", traceOfBuses({1, 2}));
  EXPECT_EQ(here.run({"convert", "-q", "short.trc", "out.asc"}).exitCode, 0);
  std::string text(10'000, '\0');
  text.resize(static_cast<std::size_t>(::read(reader, text.data(), text.size())));
  ::close(reader);
  EXPECT_THAT(text, StartsWith("date "));
}

TEST_F(SafeFiles, aRequestForProgressIsAnswered) {
  const pid_t program = startHeld({});
  ASSERT_EQ(::kill(program, SIGUSR1), 0);
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  ::close(std::exchange(source_, -1));
  EXPECT_EQ(Workspace::wait(program), 0);
  EXPECT_THAT(here.read("errors"), HasSubstr("xlatr: 200 frames, "));
}

// ---- a terminal

class Terminal {
 public:
  explicit Terminal(unsigned columns) : own_(::posix_openpt(O_RDWR | O_NOCTTY)) {
    std::array<char, 128> name{};
    EXPECT_EQ(::grantpt(own_), 0);
    EXPECT_EQ(::unlockpt(own_), 0);
    EXPECT_EQ(::ptsname_r(own_, name.data(), name.size()), 0);
    programs_ = ::open(name.data(), O_RDWR | O_NOCTTY);
    const winsize size{24, static_cast<unsigned short>(columns), 0, 0};
    EXPECT_EQ(::ioctl(programs_, TIOCSWINSZ, &size), 0);
  }
  ~Terminal() { ::close(own_); }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  [[nodiscard]] int forProgram() const { return programs_; }
  // All that the program writes until it ends.
  [[nodiscard]] std::string readAll() {
    ::close(programs_);
    std::string text;
    std::array<char, 4096> buffer{};
    for (ssize_t count = 1; count > 0;) {
      count = ::read(own_, buffer.data(), buffer.size());
      text.append(buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    }
    return text;
  }

 private:
  int own_;
  int programs_ = -1;
};

// It makes room for the results, which may go to the same terminal.
TEST_F(SafeFiles, readersDrawABarToo) {
  here.write("longer.trc", traceOfBuses(std::vector<int>(200'000, 1)));
  for (const char* const words : {"stats longer.trc longer.trc", "compare longer.trc longer.trc"}) {
    Terminal terminal(80);
    const pid_t program =
        shell_.start({"-c", "cd '" + here.path() + "'; exec " XLATR_PROGRAM " " + std::string(words) + " > out"},
                     terminal.forProgram());
    const std::string text = terminal.readAll();
    EXPECT_EQ(Workspace::wait(program), 0);
    EXPECT_THAT(text, StartsWith("\r["));
    EXPECT_THAT(text, testing::EndsWith(" \r"));
    EXPECT_THAT(here.read("out"), Not(HasSubstr("[")));
  }
}

TEST_F(SafeFiles, aBarIsDrawnOnATerminalAndFitsIt) {
  here.write("longer.trc", traceOfBuses(std::vector<int>(200'000, 1)));
  for (const unsigned columns : {40U, 120U}) {
    Terminal terminal(columns);
    const pid_t program = here.start({"convert", "-f", "longer.trc", "out.csv"}, terminal.forProgram());
    const std::string text = terminal.readAll();
    EXPECT_EQ(Workspace::wait(program), 0);
    EXPECT_THAT(text, HasSubstr("%"));
    EXPECT_THAT(text, testing::EndsWith("xlatr: longer.trc -> out.csv: 200,000 frames read, 200,000 written\r\n"));
    for (std::size_t at = text.find('\r'); at != std::string::npos;) {
      const std::size_t next = text.find('\r', at + 1);
      if (next != std::string::npos && text.substr(at, next - at).find("xlatr:") == std::string::npos) {
        EXPECT_LE(next - at, columns) << text.substr(at, next - at);
      }
      at = next;
    }
  }
}

TEST_F(SafeFiles, progressComesAsJsonForPrograms) {
  const Ended run = here.run({"convert", "--progress=json", "long.trc", "out.csv"});
  EXPECT_THAT(run.errors, StartsWith("{\"bytes_read\":"));
  EXPECT_THAT(run.errors, HasSubstr("\"files_done\":1,\"files\":1,"));
  EXPECT_THAT(here.run({"convert", "--progress=none", "-f", "long.trc", "out.csv"}).errors, StartsWith("xlatr: "));
  EXPECT_EQ(here.run({"convert", "--progress=x", "-f", "long.trc", "out.csv"}).exitCode, 2);
}

}  // namespace
}  // namespace xlatr::cli
