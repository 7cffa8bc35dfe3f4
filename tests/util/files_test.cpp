#include "util/files.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/thread.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

class Files : public testing::Test {
 protected:
  void SetUp() override {
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    directory_ =
        test::parentOfFolders() / ("xlatr_files_" + std::to_string(platform::currentThreadId()) + "_" + test->name());
    std::filesystem::remove_all(directory_);
    std::filesystem::create_directories(directory_);
  }
  void TearDown() override { std::filesystem::remove_all(directory_); }

  [[nodiscard]] std::string path(std::string_view name) const { return (directory_ / name).string(); }

  [[nodiscard]] std::string write(std::string_view content) const {
    std::ofstream(path("file"), std::ios::binary) << content;
    return path("file");
  }

 private:
  std::filesystem::path directory_;
};

TEST_F(Files, detectLineEndingLooksAtTheFirstLine) {
  struct Case {
    std::string_view name;
    std::string content;
    std::uint32_t expected;
  };
  const std::string longLine(10'000, 'a');
  const Case cases[] = {
      {"line feed", "a\nb\r\n", 1},
      {"carriage return and line feed", "a\r\nb\n", 2},
      {"line feed alone", "\n", 1},
      {"carriage return alone", "\r", 2},
      {"carriage return inside the line", "a\rb\n", 2},
      {"no line end at all", "abc", 1},
      {"no line feed but a carriage return", "abc\rdef", 2},
      {"an empty file", "", 2},
      {"a long line, line feed", longLine + "\n\r", 1},
      {"a long line, carriage return and line feed", longLine + "\r\n", 2},
      {"a carriage return long before the line feed", "\r" + longLine + "\n", 2},
      {"a line feed that starts the next piece", std::string(4096, 'a') + "\n\r", 1},
      {"a pair across two pieces", std::string(4095, 'a') + "\r\n", 2},
      {"zero characters", std::string("\0\0\n\r", 4), 1},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(detectLineEnding(write(c.content)), c.expected) << c.name;
  }
}

TEST_F(Files, detectLineEndingRaisesWhatTheSystemRefuses) {
  EXPECT_THROW(static_cast<void>(detectLineEnding(path("missing"))), std::ios_base::failure);
  EXPECT_THROW(static_cast<void>(detectLineEnding(path(""))), std::ios_base::failure) << "a directory";
}

TEST_F(Files, getFileSizeCountsBytes) {
  EXPECT_EQ(getFileSize(write("")), 0U);
  EXPECT_EQ(getFileSize(write("a\r\n")), 3U);
}

TEST_F(Files, getFileSizeKnowsSizesAboveFourGigabytes) {
  const std::string file = write("a");
  std::error_code error;
  std::filesystem::resize_file(file, 5'000'000'001, error);
  if (!error) {
    EXPECT_EQ(getFileSize(file), 5'000'000'001U);
  }
}

TEST_F(Files, getFileSizeIsNothingWithoutAFile) {
  EXPECT_EQ(getFileSize(path("missing")), std::nullopt);
  EXPECT_EQ(getFileSize(path("")), std::nullopt) << "a directory";
}

}  // namespace
}  // namespace xlatr
