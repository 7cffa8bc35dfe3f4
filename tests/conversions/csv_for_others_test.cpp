// Written tables, read by Python.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "conversions/conversion_support.hpp"

namespace xlatr::conversions {
namespace {

struct Separator {
  const char* name;
  char character;
};
constexpr std::array kSeparators = {Separator{"semicolon", ';'}, Separator{"comma", ','}, Separator{"tab", '\t'}};

// What a command prints, or nothing when it fails.
std::string outputOf(const std::string& command) {
  std::string output;
  FILE* const pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) {
    return output;
  }
  std::array<char, 4096> buffer{};
  for (std::size_t count = 0; (count = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
    output.append(buffer.data(), count);
  }
  return ::pclose(pipe) == 0 ? output : std::string();
}

// An independent reader of tables: it prints the cells of each row after the names of the columns, one row per line,
// cells in brackets. Lines of one cell are comments.
constexpr char kPythonReader[] = R"(
import csv, sys
with open('out.csv', newline='') as table:
    after_names = False
    for row in csv.reader(table, delimiter=sys.argv[1]):
        if row and row[0] == 'Number':
            after_names = True
            assert row[:7] == ['Number', 'Time (ms)', 'Bus', 'Direction', 'Type', 'ID/PID (hex)', 'Reserved'], row
            assert row[12:22] == ['Length', 'D0', 'D1', 'D2', 'D3', 'D4', 'D5', 'D6', 'D7', ''], row
        elif after_names and len(row) > 1:
            print(''.join('[' + cell + ']' for cell in row))
)";

std::string bracketed(std::string_view line, char separator) {
  std::string cells = "[";
  for (const char character : line) {
    cells += character == separator ? "][" : std::string(1, character);
  }
  return cells + "]";
}

TEST(CsvTableForOthers, isReadByPython) {
  if (outputOf("python3 --version 2>/dev/null").empty()) {
    GTEST_SKIP() << "python3 is not installed";
  }
  for (const char* const version : {"1.1", "2.0", "2.1", "3.0"}) {
    for (const Separator& separator : kSeparators) {
      SCOPED_TRACE(std::string(version) + " with " + separator.name);
      const WorkingDirectory directory;
      const auto table = goldenDirectory() / "trc-csv" / ("from-" + std::string(version)) / separator.name / "out.csv";
      std::filesystem::copy_file(table, "out.csv");
      writeFile("reader.py", kPythonReader);
      std::vector<std::string> expected;
      for (const std::string& line : splitLines(readFile("out.csv"))) {
        if (line[0] >= '1' && line[0] <= '9') {
          expected.push_back(bracketed(line, separator.character));
        }
      }
      ASSERT_GT(expected.size(), 10U);
      const std::string argument =
          separator.character == '\t' ? "\"$(printf '\\t')\"" : "'" + std::string(1, separator.character) + "'";
      EXPECT_EQ(splitLines(outputOf("python3 reader.py " + argument)), expected);
    }
  }
}

}  // namespace
}  // namespace xlatr::conversions
