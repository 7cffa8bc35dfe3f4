#include "io/line_input.hpp"

#include <gtest/gtest.h>

#include <ios>
#include <string>
#include <vector>

#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

struct Line {
  std::string text;
  std::uint64_t position;
  bool operator==(const Line&) const = default;
};

void PrintTo(const Line& line, std::ostream* out) {
  *out << '"' << line.text << "\" up to " << line.position;
}

std::vector<Line> linesOf(const std::string& path, std::uint64_t from = 0) {
  LineInput input(path);
  input.seek(from);
  std::vector<Line> lines;
  std::string_view line;
  while (input.next(line)) {
    lines.push_back({std::string(line), input.position()});
  }
  return lines;
}

TEST(LineInput, handsOutLinesWithoutTheirEnds) {
  const test::TempFolder folder;
  const struct {
    const char* name;
    std::string content;
    std::vector<Line> expected;
  } cases[] = {
      {"empty file", "", {}},
      {"LF", "a\nbc\n", {{"a", 2}, {"bc", 5}}},
      {"CR LF", "a\r\nbc\r\n", {{"a", 3}, {"bc", 7}}},
      {"mixed", "a\nbc\r\n", {{"a", 2}, {"bc", 6}}},
      {"no last line end", "a\nbc", {{"a", 2}, {"bc", 4}}},
      {"empty lines", "\n\r\n\n", {{"", 1}, {"", 3}, {"", 4}}},
      {"a CR that ends no line stays", "a\rb\r\r\nc\r", {{"a\rb\r", 6}, {"c\r", 8}}},
      {"zero bytes", std::string("a\0b\n", 4), {{std::string("a\0b", 3), 4}}},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(linesOf(folder.write("lines.txt", test.content)), test.expected) << test.name;
  }
}

TEST(LineInput, goesOnFromAnOffset) {
  const test::TempFolder folder;
  const std::string path = folder.write("lines.txt", "abc\ndef\n");
  EXPECT_EQ(linesOf(path, 4), (std::vector<Line>{{"def", 8}}));
  EXPECT_EQ(linesOf(path, 8), (std::vector<Line>{}));
  EXPECT_EQ(linesOf(path, 100), (std::vector<Line>{}));
}

TEST(LineInput, handsOutLinesOfAnyLengthAroundItsBlocks) {
  const test::TempFolder folder;
  constexpr std::size_t kBlock = std::size_t{256} * 1024;
  for (const std::size_t length : {kBlock - 2, kBlock - 1, kBlock, kBlock + 1, 2 * kBlock, 5 * kBlock + 3}) {
    const std::string longLine(length, 'x');
    const auto lines = linesOf(folder.write("long.txt", "first\r\n" + longLine + "\r\nlast"));
    ASSERT_EQ(lines.size(), 3U) << length;
    EXPECT_EQ(lines[0].text, "first");
    EXPECT_TRUE(lines[1].text == longLine) << length;
    EXPECT_EQ(lines[2], (Line{"last", length + 13}));
  }
}

TEST(LineInput, namesTheFileAndTheReasonWhenItCannotBeOpened) {
  const test::TempFolder folder;
  const auto reasonOf = [](const std::string& path) -> std::string {
    try {
      LineInput input(path);
    } catch (const std::ios_base::failure& failure) {
      return failure.what();
    }
    return "";
  };
  EXPECT_EQ(reasonOf(folder.file("none")), folder.file("none") + ": cannot open: No such file or directory");
  EXPECT_EQ(reasonOf(folder.path().string()), folder.path().string() + ": cannot open: Is a directory");
}

}  // namespace
}  // namespace xlatr
