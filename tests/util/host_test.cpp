#include "util/host.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

#include "platform/thread.hpp"
#include "support/temp_folder.hpp"
#include "util/time_zone.hpp"

namespace xlatr {
namespace {

class Host : public testing::Test {
 protected:
  void SetUp() override {
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    directory_ =
        test::parentOfFolders() / ("xlatr_host_" + std::to_string(platform::currentThreadId()) + "_" + test->name());
    std::filesystem::remove_all(directory_);
    std::filesystem::create_directories(directory_);
  }
  void TearDown() override { std::filesystem::remove_all(directory_); }

  [[nodiscard]] std::string path(std::string_view name) const { return (directory_ / name).string(); }

 private:
  std::filesystem::path directory_;
};

TEST_F(Host, creationTimeOfAFreshFileIsNow) {
  const auto before = DateTime::now().seconds;
  std::ofstream(path("file")) << "x";
  const auto after = DateTime::now().seconds;
  const DateTime time = getFileCreationTime(path("file"));
  // The file system's clock ticks more coarsely and may lie a tick behind.
  EXPECT_GE(time.seconds, before - 1);
  EXPECT_LE(time.seconds, after);
  EXPECT_NO_THROW(time.validate());
}

TEST_F(Host, creationTimeOfWhatCannotBeOpenedIsSecondZero) {
  const ScopedTimeZone zone(kCentralEurope);
  EXPECT_EQ(getFileCreationTime(path("missing")), DateTime());
  EXPECT_EQ(getFileCreationTime(path("")), DateTime()) << "a directory";
  EXPECT_EQ(getFileCreationTime(""), DateTime());
  EXPECT_EQ(getFileCreationTime(path("missing")).hour, 1) << "local fields";
}

TEST_F(Host, creationTimeKeepsNoHandleOpen) {
  std::ofstream(path("file")) << "x";
  const auto openFiles = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator());
  };
  const auto before = openFiles();
  for (int count = 0; count < 10; ++count) {
    static_cast<void>(getFileCreationTime(path("file")));
  }
  EXPECT_EQ(openFiles(), before);
}

TEST(FileTime, microsecondIsCutNotRounded) {
  struct Case {
    std::int32_t nanoseconds;
    std::int32_t millisecond;
    std::int32_t microsecond;
  };
  const Case cases[] = {
      {0, 0, 0},
      {999, 0, 0},
      {1'000, 0, 1},
      {999'999, 0, 999},
      {1'000'000, 1, 0},
      {123'456'789, 123, 456},
      {999'999'999, 999, 999},
  };
  for (const Case& c : cases) {
    const DateTime time = fileTimeToDateTime({1351765230, c.nanoseconds});
    EXPECT_EQ(time.millisecond, c.millisecond) << c.nanoseconds;
    EXPECT_EQ(time.microsecond, c.microsecond) << c.nanoseconds;
    EXPECT_EQ(time.seconds, 1351765230) << c.nanoseconds;
  }
}

TEST(FileTime, hasLocalFields) {
  const ScopedTimeZone zone(kCentralEurope);
  const DateTime time = fileTimeToDateTime({1719835200, 0});
  EXPECT_EQ(time.toDottedText(), "01.07.2024 14:00:00.000");
  EXPECT_EQ(time.seconds, 1719835200);
}

TEST(FileTime, whatNoCalendarBreaksDownIsSecondZero) {
  EXPECT_EQ(fileTimeToDateTime({-1, 0}), DateTime());
  EXPECT_EQ(fileTimeToDateTime({INT64_MAX, 5}), DateTime());
}

TEST(HostVersion, printsTheFourParts) {
  EXPECT_EQ(hostVersionToText({platform::HostVersionState::Found, {1, 2, 3, 65535}}), "1.2.3.65535");
  EXPECT_EQ(hostVersionToText({platform::HostVersionState::Found, {}}), "0.0.0.0");
}

TEST(HostVersion, failuresAreResults) {
  using platform::HostVersionState;
  EXPECT_EQ(hostVersionToText({HostVersionState::NoRecord, {}}), "No Version Information!");
  EXPECT_EQ(hostVersionToText({HostVersionState::OutOfMemory, {}}), "Out of memory!");
  EXPECT_EQ(hostVersionToText({HostVersionState::Unreadable, {}}), "Failed!");
  EXPECT_EQ(hostVersionToText({HostVersionState::Malformed, {}}), "Could Not Retrieve Values!");
}

TEST(HostVersion, ofAProgramWithoutARecordSaysSo) {
  EXPECT_EQ(getHostVersionText(), "No Version Information!");
}

TEST(LibraryDirectory, isThatOfThisProgramWhenLinkedIn) {
  const auto program = std::filesystem::read_symlink("/proc/self/exe");
  EXPECT_EQ(getLibraryDirectory(), program.parent_path().string());
}

TEST(Command, runReturnsTheExitCode) {
  EXPECT_EQ(runCommandAndWait("/bin/sh", {"-c", "exit 0"}), 0U);
  EXPECT_EQ(runCommandAndWait("/bin/sh", {"-c", "exit 7"}), 7U);
  EXPECT_EQ(runCommandAndWait("/bin/sh", {"-c", "exit 255"}), 255U);
}

TEST(Command, runReturnsAllOnesIfTheStartFails) {
  EXPECT_EQ(runCommandAndWait("/nowhere/program", {}), 0xFFFFFFFFU);
  EXPECT_EQ(runCommandAndWait("", {}), 0xFFFFFFFFU);
}

TEST(Command, argumentsReachTheProgramAsTheyAre) {
  EXPECT_EQ(runCommandAndWait("/bin/sh", {"-c", R"(test "$1" = 'a b "c" $HOME;exit 3' && test -z "$2" && exit 9)", "sh",
                                          R"(a b "c" $HOME;exit 3)", ""}),
            9U);
}

TEST(Command, readReturnsOutputAndExitCode) {
  const auto answer = runCommandAndRead("/bin/sh", {"-c", R"(printf '%s' "$1"; exit 9)", "sh", "a b \"c\" $HOME"}, 100);
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->output, "a b \"c\" $HOME");
  EXPECT_EQ(answer->exitCode, 9U);
  EXPECT_EQ(runCommandAndRead("/bin/sh", {"-c", "echo 12345"}, 3)->output, "123");
  EXPECT_FALSE(runCommandAndRead("/nowhere/program", {}, 100));
}

TEST_F(Host, startCommandDoesNotWait) {
  ASSERT_EQ(::mkfifo(path("gate").c_str(), 0600), 0);
  platform::Process process;
  ASSERT_TRUE(startCommand("/bin/sh", {"-c", R"(read line < "$1"; exit 4)", "sh", path("gate")}, process));
  EXPECT_EQ(process.waitFor(std::chrono::milliseconds(0)), std::nullopt);
  std::ofstream(path("gate")) << "go\n";
  EXPECT_EQ(process.wait(), 4U);
}

TEST(Command, startThatFailsRefersToNoProgram) {
  platform::Process process;
  EXPECT_FALSE(startCommand("/nowhere/program", {}, process));
  EXPECT_FALSE(process.isStarted());
}

class UniquePath : public testing::Test {
 protected:
  static constexpr std::size_t kFixedSize = 1 + 32 + 1;  // separator, GUID, point
};

TEST_F(UniquePath, isDirectoryPrefixGuidAndExtension) {
  std::string path;
  ASSERT_TRUE(makeUniqueFilePath("/tmp/x", "BLF", "CSV", path));
  EXPECT_THAT(path, testing::MatchesRegex("/tmp/x/BLF[0-9A-F]{32}\\.CSV"));
}

TEST_F(UniquePath, isNewEveryTime) {
  std::string first;
  std::string second;
  ASSERT_TRUE(makeUniqueFilePath(".", "", "t", first));
  ASSERT_TRUE(makeUniqueFilePath(".", "", "t", second));
  EXPECT_NE(first, second);
}

TEST_F(UniquePath, of260CharactersIsRefused) {
  std::string path = "untouched";
  const std::string longest(259 - kFixedSize - 6, 'd');
  EXPECT_FALSE(makeUniqueFilePath(longest + "d", "BLF", "CSV", path));
  EXPECT_EQ(path, "untouched");
  EXPECT_TRUE(makeUniqueFilePath(longest, "BLF", "CSV", path));
  EXPECT_EQ(path.size(), 259U);
}

}  // namespace
}  // namespace xlatr
