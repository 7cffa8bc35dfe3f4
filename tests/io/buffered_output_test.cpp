#include "io/buffered_output.hpp"

#include <gtest/gtest.h>

#include <exception>
#include <filesystem>
#include <functional>
#include <ios>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <system_error>

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
  EXPECT_THROW(output.close(), std::ios_base::failure);
}

// Nobody's bytes are mixed: whoever wrote to the file while it rested has it, and whoever writes now, too.
TEST(BufferedOutput, raisesThatSomebodyElseHasWrittenDuringARest) {
  const test::TempFolder folder;
  const std::string text = folder.file("out") + ": cannot create while another conversion is writing it: ";
  for (const bool stillWrites : {false, true}) {
    BufferedOutput output;
    output.open(folder.file("out"));
    output.write("one");
    output.rest();
    BufferedOutput other;
    other.open(folder.file("out"));
    other.write("two");
    if (stillWrites) {
      other.flush();
    } else {
      other.write(" and more");
      other.close();
    }
    try {
      output.write("text");
      FAIL() << "no failure";
    } catch (const std::ios_base::failure& failure) {
      EXPECT_TRUE(std::string_view(failure.what()).starts_with(text)) << failure.what();
    }
    EXPECT_THROW(output.write("more"), std::ios_base::failure);
    EXPECT_THROW(output.close(), std::ios_base::failure);
    EXPECT_NO_THROW(other.close());
    EXPECT_EQ(folder.read("out"), stillWrites ? "two" : "two and more");
  }
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

// Takes bytes, but for a while.
class FailingBytes final : public OutputBytes {
 public:
  void write(std::span<const char> bytes) override {
    if (raise) {
      raise();
    }
    taken.append(bytes.data(), bytes.size());
  }

  std::function<void()> raise;
  std::string taken;
};

template <typename Action>
std::string failureOf(Action action) {
  try {
    action();
  } catch (const std::exception& failure) {
    return failure.what();
  }
  return {};
}

// Whoever catches the failure of one write and goes on must not end with a file that looks whole.
TEST(BufferedOutput, remembersAFailureUntilItIsClosed) {
  const std::string large(70'000, 'x');
  for (const bool noMemory : {false, true}) {
    const auto bytes = std::make_shared<FailingBytes>();
    BufferedOutput output;
    output.open({"out", bytes});
    output.write("a");
    output.flush();
    bytes->raise = [noMemory] {
      if (noMemory) {
        throw std::bad_alloc();
      }
      throw std::ios_base::failure("out: no", std::make_error_code(std::errc::io_error));
    };
    const std::string expected = noMemory ? "std::bad_alloc" : "out: no: Input/output error";
    output.write("b");
    EXPECT_EQ(failureOf([&] { output.flush(); }), expected);
    bytes->raise = nullptr;
    EXPECT_EQ(failureOf([&] { output.write("c"); }), expected);
    EXPECT_EQ(failureOf([&] { output.write(large); }), expected);
    EXPECT_EQ(failureOf([&] { output.flush(); }), expected);
    EXPECT_EQ(failureOf([&] { output.seek(1); }), expected);
    EXPECT_EQ(failureOf([&] { output.close(); }), expected);
    EXPECT_FALSE(output.isOpen());
    EXPECT_EQ(failureOf([&] { output.close(); }), "");
    EXPECT_EQ(bytes->taken, "a");
    // The next file has nothing to do with it.
    output.open({"out", bytes});
    output.write("d");
    output.close();
    EXPECT_EQ(bytes->taken, "ad");
  }
}

TEST(BufferedOutput, remembersThatItCouldNotSeek) {
  const auto bytes = std::make_shared<FailingBytes>();
  BufferedOutput output;
  output.open({"out", bytes});
  const std::string expected =
      "out: cannot seek in what is written in order: " + std::make_error_code(std::errc::invalid_seek).message();
  EXPECT_EQ(failureOf([&] { output.seek(7); }), expected);
  EXPECT_EQ(failureOf([&] { output.write("a"); }), expected);
  EXPECT_EQ(failureOf([&] { output.close(); }), expected);
}

TEST(BufferedOutput, swallowsAFailureInItsDestructorAlone) {
  const auto bytes = std::make_shared<FailingBytes>();
  bytes->raise = [] { throw 7; };  // NOLINT(hicpp-exception-baseclass): of a caller's own kind
  {
    BufferedOutput output;
    output.open({"out", bytes});
    output.write("a");
  }
  EXPECT_EQ(bytes->taken, "");
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
