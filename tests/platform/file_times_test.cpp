#include "platform/file_times.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "platform/thread.hpp"
#include "support/temp_folder.hpp"

namespace xlatr::platform {
namespace {

class FileTimes : public testing::Test {
 protected:
  void SetUp() override {
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    directory_ = test::parentOfFolders() / ("xlatr_times_" + std::to_string(currentThreadId()) + "_" + test->name());
    std::filesystem::remove_all(directory_);
    std::filesystem::create_directories(directory_);
    std::ofstream(path("file")) << "x";
  }
  void TearDown() override { std::filesystem::remove_all(directory_); }

  [[nodiscard]] std::string path(std::string_view name) const { return (directory_ / name).string(); }

 private:
  std::filesystem::path directory_;
};

TEST_F(FileTimes, creationTimeOutlivesAModification) {
  const timespec modification[] = {{1000000000, 123456789}, {1000000000, 123456789}};
  ASSERT_EQ(::utimensat(AT_FDCWD, path("file").c_str(), modification, 0), 0);
  struct statx status {};
  ASSERT_EQ(::statx(AT_FDCWD, path("file").c_str(), 0, STATX_BTIME, &status), 0);
  const auto time = readCreationTime(path("file"));
  ASSERT_TRUE(time.has_value());
  if ((status.stx_mask & STATX_BTIME) != 0) {
    EXPECT_GT(time->seconds, 1700000000);
  } else {
    EXPECT_EQ(time->seconds, 1000000000);
    EXPECT_EQ(time->nanoseconds, 123456789);
  }
}

TEST_F(FileTimes, withoutACreationTimeItIsTheLastModification) {
  // The process file system keeps no creation times.
  const std::string file = "/proc/self/status";
  struct statx status {};
  ASSERT_EQ(::statx(AT_FDCWD, file.c_str(), 0, STATX_BTIME | STATX_MTIME, &status), 0);
  ASSERT_EQ(status.stx_mask & STATX_BTIME, 0U);
  const auto time = readCreationTime(file);
  ASSERT_TRUE(time.has_value());
  EXPECT_EQ(time->seconds, status.stx_mtime.tv_sec);
  EXPECT_EQ(time->nanoseconds, static_cast<std::int32_t>(status.stx_mtime.tv_nsec));
}

TEST_F(FileTimes, thereAreNoneOfWhatIsNotAReadableFile) {
  EXPECT_FALSE(readCreationTime(path("missing")).has_value());
  EXPECT_FALSE(readCreationTime(path("")).has_value()) << "a directory";
  EXPECT_FALSE(readCreationTime("").has_value());
  ASSERT_EQ(::chmod(path("file").c_str(), 0), 0);
  const bool mayReadAll = ::geteuid() == 0;
  EXPECT_EQ(readCreationTime(path("file")).has_value(), mayReadAll);
}

TEST_F(FileTimes, aPipeIsNotWaitedFor) {
  ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
  EXPECT_TRUE(readCreationTime(path("pipe")).has_value());
}

}  // namespace
}  // namespace xlatr::platform
