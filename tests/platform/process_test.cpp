#include "platform/process.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "platform/thread.hpp"
#include "support/temp_folder.hpp"
#include "util/time_zone.hpp"

namespace xlatr::platform {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kLong = std::chrono::minutes(1);

// The exit code of a shell script, with the arguments as $1 and so on.
std::optional<std::uint32_t> runScript(std::string_view script, const std::vector<std::string>& arguments = {}) {
  std::vector<std::string> words = {"-c", std::string(script), "sh"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  Process process;
  return process.start("/bin/sh", words) ? process.waitFor(kLong) : std::nullopt;
}

class ProcessTest : public testing::Test {
 protected:
  void SetUp() override {
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    directory_ = test::parentOfFolders() / ("xlatr_process_" + std::to_string(currentThreadId()) + "_" + test->name());
    std::filesystem::remove_all(directory_);
    std::filesystem::create_directories(directory_);
  }
  void TearDown() override { std::filesystem::remove_all(directory_); }

  [[nodiscard]] std::string path(std::string_view name) const { return (directory_ / name).string(); }

  // A program that runs until something is written to "gate", and then exits with 4.
  void startGated(Process& process) const {
    ASSERT_EQ(::mkfifo(path("gate").c_str(), 0600), 0);
    ASSERT_TRUE(
        process.start("/bin/sh", std::vector<std::string>{"-c", R"(read line < "$1"; exit 4)", "sh", path("gate")}));
  }
  void openGate() const { std::ofstream(path("gate")) << "go\n"; }

 private:
  std::filesystem::path directory_;
};

TEST_F(ProcessTest, returnsTheExitCode) {
  EXPECT_EQ(runScript("exit 0"), 0U);
  EXPECT_EQ(runScript("exit 255"), 255U);
}

TEST_F(ProcessTest, aSignalEndsWith128AndItsNumber) {
  EXPECT_EQ(runScript("kill -9 $$"), 128U + 9U);
}

TEST_F(ProcessTest, passesArgumentsWithoutAShell) {
  EXPECT_EQ(runScript(R"(test "$#" = 3 && test "$1" = '' && test "$2" = 'a b' && test "$3" = '"$HOME"; exit 1')",
                      {"", "a b", R"("$HOME"; exit 1)"}),
            0U);
}

TEST_F(ProcessTest, searchesForABareName) {
  Process process;
  ASSERT_TRUE(process.start("true", {}));
  EXPECT_EQ(process.wait(), 0U);
}

TEST_F(ProcessTest, runsInTheParentsEnvironmentAndDirectory) {
  const ScopedTimeZone zone("XLATR-7");
  EXPECT_EQ(runScript(R"sh(test "$TZ" = 'XLATR-7' && test "$(pwd -P)" = "$1")sh",
                      {std::filesystem::canonical(std::filesystem::current_path()).string()}),
            0U);
}

TEST_F(ProcessTest, inheritsNoOtherDescriptor) {
  const int descriptor = ::open("/dev/null", O_RDONLY);
  ASSERT_GE(descriptor, 3);
  EXPECT_EQ(runScript(R"(test ! -e /proc/$$/fd/"$1")", {std::to_string(descriptor)}), 0U);
  EXPECT_EQ(runScript("test -e /proc/$$/fd/0 && test -e /proc/$$/fd/1 && test -e /proc/$$/fd/2"), 0U);
  ::close(descriptor);
}

TEST_F(ProcessTest, startsWithoutBlockedSignals) {
  sigset_t blocked;
  sigset_t former;
  ::sigemptyset(&blocked);
  ::sigaddset(&blocked, SIGTERM);
  ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, &blocked, &former), 0);
  EXPECT_EQ(runScript("kill -TERM $$; exit 1"), 128U + SIGTERM);
  ::pthread_sigmask(SIG_SETMASK, &former, nullptr);
}

TEST_F(ProcessTest, cannotStartWhatIsNotAProgram) {
  std::ofstream(path("file")) << "text\n";
  for (const std::string& program : {path("missing"), path("file"), path(""), std::string()}) {
    Process process;
    EXPECT_FALSE(process.start(program, {})) << program;
    EXPECT_FALSE(process.isStarted()) << program;
    EXPECT_EQ(process.waitFor(milliseconds(0)), kNoExitCode) << program;
    EXPECT_EQ(process.wait(), kNoExitCode) << program;
  }
}

TEST_F(ProcessTest, waitWithALimitSeesTheProgramRunAndEnd) {
  Process process;
  startGated(process);
  EXPECT_EQ(process.waitFor(milliseconds(0)), std::nullopt);
  EXPECT_EQ(process.waitFor(milliseconds(10)), std::nullopt);
  openGate();
  EXPECT_EQ(process.waitFor(kLong), 4U);
  EXPECT_EQ(process.waitFor(milliseconds(0)), 4U) << "asked again";
  EXPECT_EQ(process.wait(), 4U) << "asked again";
}

TEST_F(ProcessTest, aLimitBeyondTheClockIsNoLimit) {
  Process process;
  ASSERT_TRUE(process.start("true", {}));
  EXPECT_EQ(process.waitFor(milliseconds::max()), 0U);
}

// A host that does not want to hear of the ends of its programs.
class IgnoredEnds {
 public:
  IgnoredEnds() {
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    EXPECT_EQ(::sigaction(SIGCHLD, &ignore, &former_), 0);
  }
  ~IgnoredEnds() { ::sigaction(SIGCHLD, &former_, nullptr); }
  IgnoredEnds(const IgnoredEnds&) = delete;
  IgnoredEnds& operator=(const IgnoredEnds&) = delete;

 private:
  struct sigaction former_ {};
};

TEST_F(ProcessTest, anExitCodeThatTheHostTookAwayIsAllOnes) {
  const IgnoredEnds ignored;
  Process process;
  ASSERT_TRUE(process.start("true", {}));
  EXPECT_EQ(process.wait(), kNoExitCode);
  EXPECT_EQ(process.waitFor(milliseconds(0)), kNoExitCode) << "asked again";
}

TEST_F(ProcessTest, theEndOfAProgramIsSeenWithoutSignals) {
  const IgnoredEnds ignored;
  Process process;
  startGated(process);
  EXPECT_EQ(process.waitFor(milliseconds(10)), std::nullopt);
  openGate();
  EXPECT_EQ(process.waitFor(kLong), kNoExitCode);
}

// A program with a link, whose other end is its descriptor 3.
void startLinked(Process& process, std::string_view script, const std::string& argument = {}) {
  ASSERT_TRUE(process.start("/bin/sh", std::vector<std::string>{"-c", std::string(script), "sh", argument},
                            StandardStreams::Closed, ProgramTie::Link));
}

TEST_F(ProcessTest, aLinkTellsTheExitCodeThatTheHostTookAway) {
  const IgnoredEnds ignored;
  Process process;
  startLinked(process, R"(printf '\004' >&3; exit 4)");
  EXPECT_EQ(process.waitFor(kLong), 4U);
  Process silent;
  startLinked(silent, "exit 4");
  EXPECT_EQ(silent.wait(), kNoExitCode);
}

TEST_F(ProcessTest, theSystemKnowsTheExitCodeBetterThanTheLink) {
  Process process;
  startLinked(process, R"(printf '\004' >&3; exit 5)");
  EXPECT_EQ(process.wait(), 5U);
}

TEST_F(ProcessTest, aProgramFindsItsLinkByItsEnvironment) {
  Process process;
  startLinked(process, R"(test "$XLATR_PARENT_LINK" = 3 && test -S /proc/$$/fd/3 && ! test -e /proc/$$/fd/4)");
  EXPECT_EQ(process.wait(), 0U);
  // Nobody takes over the link of somebody else.
  ::setenv("XLATR_PARENT_LINK", "3", 1);
  EXPECT_EQ(runScript(R"(test -z "$XLATR_PARENT_LINK")"), 0U);
  ::unsetenv("XLATR_PARENT_LINK");
}

TEST_F(ProcessTest, aLinkEndsWithItsHandle) {
  ASSERT_EQ(::mkfifo(path("seen").c_str(), 0600), 0);
  {
    Process process;
    startLinked(process, R"(cat <&3 > "$1")", path("seen"));
    // Opened by both: the program reads its link.
    std::ifstream seen(path("seen"));
    process = Process();
    EXPECT_EQ(seen.get(), std::char_traits<char>::eof());
  }
}

TEST_F(ProcessTest, aProgramHearsOfTheEndsOfItsOwnPrograms) {
  const IgnoredEnds ignored;
  Process process;
  const auto ignoredSignals =
      process.run("/bin/sh", std::vector<std::string>{"-c", "grep SigIgn /proc/self/status"}, 100);
  ASSERT_TRUE(ignoredSignals);
  const std::uint64_t mask = std::stoull(ignoredSignals->substr(ignoredSignals->find('\t')), nullptr, 16);
  EXPECT_EQ(mask & (std::uint64_t{1} << (SIGCHLD - 1)), 0U);
}

TEST_F(ProcessTest, anotherThreadMayWaitForTheEndThatOneThreadBrings) {
  Process process;
  startGated(process);
  std::thread waiting([&] { process.awaitEnd(); });
  process.kill();
  waiting.join();
  EXPECT_EQ(process.waitFor(milliseconds(0)), 128U + 9U) << "it was only awaited";
  Process().kill();
  Process().awaitEnd();
}

// What a shell script prints, cut after `most` bytes, and then its exit code.
std::string outputOf(std::string_view script, std::size_t most = 1000) {
  Process process;
  const auto output = process.run("/bin/sh", std::vector<std::string>{"-c", std::string(script)}, most);
  return output ? *output + "|" + std::to_string(process.wait()) : "not started";
}

TEST_F(ProcessTest, returnsWhatAProgramPrints) {
  EXPECT_EQ(outputOf("echo out; echo err >&2; exit 3"), "out\n|3");
  EXPECT_EQ(outputOf("exit 0"), "|0");
  EXPECT_EQ(outputOf("printf a; sleep 0.05; printf b"), "ab|0");
  EXPECT_EQ(outputOf("printf 12345; exit 1", 3), "123|1");
  EXPECT_EQ(outputOf("head -c 1000000 /dev/zero | tr '\\0' x", 2), "xx|0");
  EXPECT_EQ(outputOf("exec >&-; sleep 0.05; exit 4"), "|4");
  EXPECT_EQ(outputOf("printf a; kill -9 $$"), "a|137");
  EXPECT_EQ(outputOf("cat; echo read"), "read\n|0") << "there is nothing to read";
}

TEST_F(ProcessTest, cannotRunWhatIsNotAProgram) {
  Process process;
  EXPECT_EQ(process.run(path("missing"), {}, 10), std::nullopt);
  EXPECT_FALSE(process.isStarted());
}

TEST_F(ProcessTest, aProgramMayHaveNoStandardStreams) {
  Process process;
  ASSERT_TRUE(process.start("/bin/sh", std::vector<std::string>{"-c", R"sh(test -z "$(cat)" && echo lost && exit 6)sh"},
                            StandardStreams::Closed));
  EXPECT_EQ(process.waitFor(kLong), 6U);
}

TEST_F(ProcessTest, endsAProgramAtOnce) {
  Process process;
  startGated(process);
  process.terminate();
  EXPECT_EQ(process.waitFor(milliseconds(0)), 128U + 9U);
  process.terminate();
  EXPECT_EQ(process.wait(), 128U + 9U);
  Process().terminate();
}

TEST_F(ProcessTest, aMovedHandleTakesItsProgramAlong) {
  Process first;
  startGated(first);
  Process second(std::move(first));
  Process third;
  third = std::move(second);
  EXPECT_EQ(third.waitFor(milliseconds(0)), std::nullopt);
  openGate();
  EXPECT_EQ(third.wait(), 4U);
}

TEST_F(ProcessTest, theProgramLivesOnWithoutItsHandle) {
  {
    Process process;
    startGated(process);
  }
  // Opening the write end would never return if nobody read.
  openGate();
}

}  // namespace
}  // namespace xlatr::platform
