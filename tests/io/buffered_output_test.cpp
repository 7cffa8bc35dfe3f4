#include "io/buffered_output.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <ios>
#include <string>

#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

TEST(BufferedOutput, writesWhatItIsGivenInPiecesOfAnySize) {
  const test::TempFolder folder;
  std::string expected;
  BufferedOutput output;
  output.open(folder.file("out"));
  for (const std::size_t size : {1U, 65535U, 1U, 65536U, 65537U, 200000U, 3U}) {
    const std::string piece(size, static_cast<char>('a' + expected.size() % 26));
    output.write(piece);
    expected += piece;
  }
  output.close();
  EXPECT_FALSE(output.isOpen());
  EXPECT_TRUE(folder.read("out") == expected);
}

TEST(BufferedOutput, showsTheSystemNothingBeforeTheFlush) {
  const test::TempFolder folder;
  BufferedOutput output;
  output.open(folder.file("out"));
  output.write("held back");
  EXPECT_EQ(folder.read("out"), "");
  output.flush();
  EXPECT_EQ(folder.read("out"), "held back");
}

TEST(BufferedOutput, goesOnAtTheEndAfterARest) {
  const test::TempFolder folder;
  BufferedOutput output;
  output.rest();
  EXPECT_FALSE(output.isOpen());
  output.open(folder.file("out"));
  output.write("one");
  output.rest();
  output.rest();
  output.flush();
  EXPECT_EQ(folder.read("out"), "one");
  EXPECT_TRUE(output.isOpen());
  EXPECT_EQ(output.position(), 3U);
  output.write("");
  output.write(", two");
  EXPECT_EQ(output.position(), 8U);
  output.rest();
  output.close();
  EXPECT_FALSE(output.isOpen());
  EXPECT_EQ(folder.read("out"), "one, two");
}

TEST(BufferedOutput, raisesThatAFileIsGoneAfterARest) {
  const test::TempFolder folder;
  BufferedOutput output;
  output.open(folder.file("out"));
  output.rest();
  std::filesystem::remove(folder.file("out"));
  try {
    output.write("text");
    FAIL() << "no failure";
  } catch (const std::ios_base::failure& failure) {
    EXPECT_EQ(failure.what(), folder.file("out") + ": cannot open: No such file or directory");
  }
  EXPECT_NO_THROW(output.close());
}

TEST(BufferedOutput, emptiesTheFileThatIsThere) {
  const test::TempFolder folder;
  BufferedOutput output;
  output.open(folder.write("out", "a long old content"));
  output.write("new");
  output.close();
  EXPECT_EQ(folder.read("out"), "new");
}

TEST(BufferedOutput, closesInItsDestructor) {
  const test::TempFolder folder;
  {
    BufferedOutput output;
    output.open(folder.file("out"));
    output.write("text");
  }
  EXPECT_EQ(folder.read("out"), "text");
}

TEST(BufferedOutput, raisesAFullDiskOnceWithTheReason) {
  BufferedOutput output;
  output.open(std::string("/dev/full"));
  output.write("text");
  try {
    output.close();
    FAIL() << "a full disk went unheard";
  } catch (const std::ios_base::failure& failure) {
    EXPECT_STREQ(failure.what(), "/dev/full: cannot write: No space left on device");
  }
  EXPECT_NO_THROW(output.close());
}

TEST(BufferedOutput, namesTheFileThatCannotBeMade) {
  const test::TempFolder folder;
  BufferedOutput output;
  try {
    output.open(folder.file("none/out"));
    FAIL() << "made a file in a folder that is not there";
  } catch (const std::ios_base::failure& failure) {
    EXPECT_EQ(failure.what(), folder.file("none/out") + ": cannot create: No such file or directory");
  }
}

}  // namespace
}  // namespace xlatr
