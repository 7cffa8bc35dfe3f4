#include "formats/mf4/block_stream.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

constexpr std::size_t kWindow = 65'536;
constexpr std::size_t kWindowAfterJump = 1024;

class BlockStreamTest : public testing::Test {
 protected:
  BlockStreamTest() : bytes_(300'000) {
    for (std::size_t index = 0; index < bytes_.size(); ++index) {
      bytes_[index] = static_cast<std::uint8_t>(index * 7 + index / 256);
    }
    path_ = folder_.write("blocks.bin", std::string(bytes_.begin(), bytes_.end()));
  }

  void expectRead(BlockStream& stream, std::size_t position, std::size_t size) const {
    std::vector<std::uint8_t> read(size);
    ASSERT_TRUE(stream.read(position, read)) << size << " bytes at " << position;
    EXPECT_TRUE(std::equal(read.begin(), read.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(position)))
        << size << " bytes at " << position;
  }

  std::vector<std::uint8_t> bytes_;
  test::TempFolder folder_;
  std::string path_;
};

TEST_F(BlockStreamTest, readsFarBlocksInTurn) {
  BlockStream stream(path_);
  std::size_t near = 0;
  std::size_t far = bytes_.size() - 100;
  for (int count = 0; count < 100; ++count) {
    expectRead(stream, near, 24);  // a head, then what stands after it
    expectRead(stream, near + 24, 76);
    expectRead(stream, far, 24);
    expectRead(stream, far + 24, 76);
    near += 100;
    far -= 100;
  }
}

TEST_F(BlockStreamTest, readsAcrossTheBorderOfWhatItHolds) {
  for (const std::size_t start : {std::size_t{0}, std::size_t{150'000}}) {
    for (const std::size_t window : {kWindowAfterJump, kWindow, kWindowAfterJump + kWindow}) {
      for (const std::size_t before : {0U, 1U, 12U, 23U, 24U}) {
        BlockStream stream(path_);
        expectRead(stream, 290'000, 1);
        for (std::size_t position = start; position < start + window - before; position += 24) {
          expectRead(stream, position, std::min<std::size_t>(24, start + window - before - position));
        }
        expectRead(stream, start + window - before, 24);
        expectRead(stream, start, 24);
      }
    }
  }
}

TEST_F(BlockStreamTest, readsMoreThanItHoldsAfterAJump) {
  BlockStream stream(path_);
  for (const std::size_t size : {kWindowAfterJump - 1, kWindowAfterJump, kWindowAfterJump + 1, kWindow / 2,
                                 kWindow / 2 + 1, kWindow, kWindow + 1}) {
    expectRead(stream, 200'000, size);
    expectRead(stream, 100, size);
    expectRead(stream, 100 + size / 2, 24);
  }
}

TEST_F(BlockStreamTest, readsUpToTheEndAndNotBeyond) {
  BlockStream stream(path_);
  expectRead(stream, 0, 24);
  expectRead(stream, bytes_.size() - 24, 24);
  std::vector<std::uint8_t> read(24);
  for (const std::size_t position : {bytes_.size() - 23, bytes_.size(), bytes_.size() + 1}) {
    EXPECT_FALSE(stream.read(position, read)) << position;
  }
  expectRead(stream, 0, 24);
  expectRead(stream, bytes_.size() - 1, 1);
}

}  // namespace
}  // namespace xlatr
