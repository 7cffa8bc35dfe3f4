#include "io/block_input.hpp"

#include <gtest/gtest.h>

#include <ios>
#include <string>
#include <string_view>

#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

std::string textOf(std::span<const std::uint8_t> bytes) {
  return {bytes.begin(), bytes.end()};
}

TEST(BlockInput, handsOutTheBytesOfTheFileInOrder) {
  const test::TempFolder folder;
  BlockInput input(folder.write("file", "abcdefgh"));
  EXPECT_EQ(textOf(input.peek(3)), "abc");
  EXPECT_EQ(input.position(), 0U);
  input.skip(3);
  EXPECT_EQ(textOf(input.peek(2)), "de");
  EXPECT_EQ(input.position(), 3U);
}

TEST(BlockInput, endOfTheFileGivesWhatThereIs) {
  const test::TempFolder folder;
  BlockInput input(folder.write("file", "abc"));
  EXPECT_EQ(textOf(input.peek(5)), "abc");
  input.skip(3);
  EXPECT_TRUE(input.peek(1).empty());
}

TEST(BlockInput, seekGoesOnAtTheOffset) {
  const test::TempFolder folder;
  BlockInput input(folder.write("file", "abcdefgh"));
  EXPECT_EQ(textOf(input.peek(1)), "a");
  input.seek(6);
  EXPECT_EQ(input.position(), 6U);
  EXPECT_EQ(textOf(input.peek(2)), "gh");
  input.seek(1000);
  EXPECT_EQ(input.position(), 1000U);
  EXPECT_TRUE(input.peek(4).empty());
}

TEST(BlockInput, piecesOverTheEndsOfItsBlocksAreWhole) {
  constexpr std::size_t kPiece = 65533;
  std::string content(3 * BlockInput::kCapacity + 17, '\0');
  for (std::size_t index = 0; index < content.size(); ++index) {
    content[index] = static_cast<char>(index * 7 % 251);
  }
  const test::TempFolder folder;
  BlockInput input(folder.write("file", content));
  std::string read;
  for (;;) {
    const auto piece = input.peek(kPiece);
    if (piece.empty()) {
      break;
    }
    read.append(piece.begin(), piece.end());
    input.skip(piece.size());
  }
  EXPECT_EQ(read, content);
  EXPECT_EQ(input.position(), content.size());
}

TEST(BlockInput, missingFileRaises) {
  const test::TempFolder folder;
  EXPECT_THROW(BlockInput(folder.file("none")), std::ios_base::failure);
}

}  // namespace
}  // namespace xlatr
