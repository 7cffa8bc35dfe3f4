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
#include <utility>
#include <vector>

#include "platform/thread.hpp"
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
    directory_ = std::filesystem::temp_directory_path() /
                 ("xlatr_process_" + std::to_string(currentThreadId()) + "_" + test->name());
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

TEST_F(ProcessTest, anExitCodeThatTheHostTookAwayIsAllOnes) {
  struct sigaction ignore {};
  struct sigaction former {};
  ignore.sa_handler = SIG_IGN;
  ASSERT_EQ(::sigaction(SIGCHLD, &ignore, &former), 0);
  Process process;
  ASSERT_TRUE(process.start("true", {}));
  EXPECT_EQ(process.wait(), kNoExitCode);
  ::sigaction(SIGCHLD, &former, nullptr);
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
