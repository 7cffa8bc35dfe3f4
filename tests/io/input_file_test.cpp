#include "io/input_file.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <ios>
#include <memory>
#include <string>

#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

std::string readAll(InputFile& file, std::size_t atOnce) {
  std::string text;
  std::string piece(atOnce, '\0');
  for (std::size_t count = file.read(piece); count > 0; count = file.read(piece)) {
    text.append(piece, 0, count);
  }
  return text;
}

// Hands out at most some bytes at a time, as a pipe does.
class Pipe : public SequentialBytes {
 public:
  Pipe(std::string text, std::size_t atOnce) : SequentialBytes("a pipe"), text_(std::move(text)), atOnce_(atOnce) {}
  [[nodiscard]] std::optional<std::uint64_t> size() const override { return std::nullopt; }

 protected:
  [[nodiscard]] std::size_t readNext(std::span<char> bytes) override {
    const std::size_t count = std::min({bytes.size(), atOnce_, text_.size() - offset_});
    std::copy_n(text_.begin() + static_cast<std::ptrdiff_t>(offset_), count, bytes.begin());
    offset_ += count;
    return count;
  }

 private:
  std::string text_;
  std::size_t atOnce_;
  std::size_t offset_ = 0;
};

// Bytes of which each tells its place.
std::string longText(std::size_t size) {
  std::string text(size, '\0');
  for (std::size_t at = 0; at < size; ++at) {
    text[at] = static_cast<char>(at * 7 + at / 251);
  }
  return text;
}

TEST(InputFile, readsAFile) {
  test::TempFolder folder;
  const InputSource source(folder.write("a", "0123456789"));
  EXPECT_TRUE(source.exists());
  EXPECT_EQ(source.size(), 10U);
  InputFile file(source);
  EXPECT_EQ(readAll(file, 3), "0123456789");
  file.seek(7);
  EXPECT_EQ(readAll(file, 100), "789");
  EXPECT_FALSE(InputSource(folder.file("missing")).exists());
}

TEST(InputFile, readsAPipeFromEachOfItsPlaces) {
  const InputSource source("a pipe", std::make_shared<Pipe>("0123456789", 4));
  EXPECT_TRUE(source.exists());
  EXPECT_EQ(source.size(), std::nullopt);
  InputFile one(source);
  InputFile other(source);
  std::array<char, 2> two{};
  EXPECT_EQ(one.read(two), 2U);
  EXPECT_EQ(readAll(other, 3), "0123456789");
  EXPECT_EQ(readAll(one, 100), "23456789");
  one.seek(20);
  EXPECT_EQ(readAll(one, 5), "");
  one.seek(9);
  EXPECT_EQ(readAll(one, 5), "9");
}

TEST(InputFile, keepsTheFirstAndTheLastBytesOfAPipe) {
  const std::size_t size = SequentialBytes::kFirstBytes + 3 * SequentialBytes::kLastBytes;
  const std::string text = longText(size);
  const auto bytes = std::make_shared<Pipe>(text, std::size_t{100'000});
  InputFile file(InputSource("a pipe", bytes));
  EXPECT_EQ(readAll(file, 4096), text);
  file.seek(5);
  std::string piece(1000, '\0');
  ASSERT_EQ(file.read(piece), piece.size());
  EXPECT_EQ(piece, text.substr(5, 1000));
  file.seek(size - 10);
  EXPECT_EQ(readAll(file, 4), text.substr(size - 10));
}

TEST(InputFile, refusesToGoBackInAPipe) {
  const InputSource source(
      "a pipe", std::make_shared<Pipe>(longText(SequentialBytes::kFirstBytes + 3 * SequentialBytes::kLastBytes),
                                       SequentialBytes::kLastBytes));
  InputFile file(source);
  static_cast<void>(readAll(file, 4096));
  file.seek(SequentialBytes::kFirstBytes + 1);
  std::array<char, 2> two{};
  try {
    static_cast<void>(file.read(two));
    ADD_FAILURE() << "no failure";
  } catch (const std::ios_base::failure& failure) {
    EXPECT_TRUE(std::string(failure.what()).starts_with("a pipe: the format is not read in order")) << failure.what();
  }
}

}  // namespace
}  // namespace xlatr
