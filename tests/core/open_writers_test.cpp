#include "core/open_writers.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "formats/trc/trc_writer.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

// Writers of that many files, and how many of these the process has open.
class OpenWritersTest : public testing::Test {
 protected:
  void make(std::size_t count) {
    while (writers_.size() < count) {
      open_.makeRoom();
      auto writer = std::make_unique<TrcWriter>(name(writers_.size()));
      writer->setActive(true);
      open_.use(*writer);
      writers_.push_back(std::move(writer));
    }
  }
  void write(std::size_t index, const std::string& text) {
    open_.use(*writers_[index]);
    writers_[index]->WriteComment(text);
  }
  [[nodiscard]] std::string name(std::size_t index) const { return folder_.file(std::to_string(index) + ".trc"); }
  [[nodiscard]] std::size_t openFiles() const {
    std::size_t count = 0;
    for (const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fd")) {
      std::error_code gone;
      const std::string file = std::filesystem::read_symlink(descriptor.path(), gone).string();
      count += file.starts_with(folder_.path().string()) ? 1U : 0U;
    }
    return count;
  }

  test::TempFolder folder_;
  OpenWriters open_;
  std::vector<std::unique_ptr<TrcWriter>> writers_;
};

TEST_F(OpenWritersTest, keepsNoMoreFilesOpenThanItSays) {
  make(OpenWriters::kMost);
  EXPECT_EQ(openFiles(), OpenWriters::kMost);
  make(3 * OpenWriters::kMost);
  EXPECT_EQ(openFiles(), OpenWriters::kMost);
}

TEST_F(OpenWritersTest, aFileThatRestedGoesOnWhereItEnded) {
  const std::size_t files = OpenWriters::kMost + 10;
  make(files);
  for (const char* const text : {"first", "second", "third"}) {
    for (std::size_t index = 0; index < files; ++index) {
      write(index, text);
    }
  }
  EXPECT_EQ(openFiles(), OpenWriters::kMost);
  for (std::size_t index = 0; index < files; ++index) {
    EXPECT_TRUE(writers_[index]->getActive());
    writers_[index]->setActive(false);
    EXPECT_EQ(folder_.read(std::to_string(index) + ".trc"), ";first\r\n;second\r\n;third\r\n");
  }
}

TEST_F(OpenWritersTest, letsTheFileRestThatWasNotWrittenForLongest) {
  make(OpenWriters::kMost);
  write(0, "again");
  make(OpenWriters::kMost + 1);
  std::filesystem::remove(name(0));
  std::filesystem::remove(name(1));
  EXPECT_NO_THROW(write(0, "it is open still"));
  EXPECT_THROW(write(1, "this one rested"), std::ios_base::failure);
}

}  // namespace
}  // namespace xlatr
