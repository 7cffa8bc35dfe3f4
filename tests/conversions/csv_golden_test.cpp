#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "conversions/conversion_support.hpp"
#include "support/object_families.hpp"
#include "xlatr/objects.h"

namespace xlatr::conversions {
namespace {

namespace fs = std::filesystem;
using test::Destructor;

fs::path csvGolden(const std::string& name) {
  return goldenDirectory().parent_path() / "csv" / name;
}

void expectGolden(const std::string& goldenName) {
  const std::string written = readFile("out.csv");
  // Nothing here changes the environment, so no other thread can be in the way.
  const char* const update = std::getenv("XLATR_UPDATE_GOLDEN");  // NOLINT(concurrency-mt-unsafe)
  if (update != nullptr && std::string_view(update) == "1") {
    writeFile(csvGolden(goldenName), written);
    return;
  }
  EXPECT_TRUE(sameBytes(written, readFile(csvGolden(goldenName)))) << "against " << goldenName;
}

std::string sourceName(const std::string& version) {
  return "source-" + version + ".trc";
}

// Converts the source of a TRC version in the current directory into out.csv.
void convertToTable(const std::string& version, char separator) {
  const std::string source = sourceName(version);
  fs::copy_file(goldenDirectory() / source, source);
  ConversionOption option{};
  option.tag = XLATR_OPTION_SEPARATOR;
  option.value.separator = separator;
  ConversionOptions options{};
  options.target_format = XLATR_FORMAT_CSV;
  options.option_count = separator == ';' ? 0 : 1;  // the default
  options.options = &option;
  ConversionResult result{};
  EXPECT_EQ(xlatr_convert(source.c_str(), "out.csv", &options, &result), XLATR_SUCCESS);
  EXPECT_STREQ(result.text, "");
  ASSERT_EQ(result.file_count, 1U);
  EXPECT_STREQ(result.files[0], "out.csv");
  xlatr_free(&result);
}

struct Separator {
  const char* name;
  char character;
};
constexpr std::array kSeparators = {Separator{"semicolon", ';'}, Separator{"comma", ','}, Separator{"tab", '\t'}};

class CsvTable : public testing::TestWithParam<std::tuple<std::string, Separator>> {};

TEST_P(CsvTable, isTheGoldenFile) {
  const auto& [version, separator] = GetParam();
  const WorkingDirectory directory;
  convertToTable(version, separator.character);
  EXPECT_EQ(directory.names(), (std::vector<std::string>{"out.csv", sourceName(version)}));
  expectGolden(version + "-" + separator.name + ".csv");
}

INSTANTIATE_TEST_SUITE_P(All, CsvTable,
                         testing::Combine(testing::Values("1.0", "1.1", "1.2", "1.3", "2.0", "2.1", "3.0"),
                                          testing::ValuesIn(kSeparators)),
                         [](const auto& test) {
                           std::string version = std::get<0>(test.param);
                           version[1] = '_';
                           return "from" + version + "with" + std::get<1>(test.param).name;
                         });

class CsvTableOfObjects : public testing::TestWithParam<std::string> {};

// Only a writer object takes a separator of several characters.
TEST_P(CsvTableOfObjects, isTheGoldenFile) {
  const std::string source = sourceName(GetParam());
  const WorkingDirectory directory;
  fs::copy_file(goldenDirectory() / source, source);
  const std::unique_ptr<TrcInfo, Destructor<TrcInfo_Destruct>> info(TrcInfo_Construct_2(source.c_str()));
  const std::unique_ptr<TrcReader, Destructor<TrcReader_Destruct>> reader(TrcReader_Construct(info.get()));
  const std::unique_ptr<CsvWriter, Destructor<CsvWriter_Destruct>> writer(CsvWriter_Construct("out.csv", false, 1.0));
  CsvWriter_setSeparator(writer.get(), " | ");
  CsvWriter_setActive(writer.get(), true);
  CsvWriter_WriteHeader(writer.get(), reinterpret_cast<const ITraceInfo*>(info.get()));
  ASSERT_TRUE(TrcReader_setActive(reader.get(), true));
  MessageCan* next = nullptr;
  while (TrcReader_ReadNextMessage(reader.get(), &next)) {
    const std::unique_ptr<MessageCan, Destructor<MessageCan_Destruct>> message(next);
    if (MessageCan_getValid(next)) {
      CsvWriter_WriteMessage(writer.get(), reinterpret_cast<const IMessage*>(next));
      continue;
    }
    std::string text(MessageCan_getParsingTextSize(next) + std::size_t{1}, '\0');
    MessageCan_getParsingText(next, text.data(), static_cast<std::uint32_t>(text.size()));
    text.pop_back();
    if (text.find_first_not_of(' ') != std::string::npos) {
      CsvWriter_WriteComment(writer.get(), text.c_str());
    }
  }
  CsvWriter_setActive(writer.get(), false);
  expectGolden(GetParam() + "-several.csv");
}

INSTANTIATE_TEST_SUITE_P(Several, CsvTableOfObjects, testing::Values("2.1", "3.0"),
                         [](const auto& test) { return test.param == "2.1" ? "from2_1" : "from3_0"; });

// A log has no columns of CAN XL, and its times are seconds.
TEST(CsvTableOfALog, holdsItsFramesAndItsOtherLines) {
  const WorkingDirectory directory;
  writeFile("log.asc",
            "date Thu Nov 01 10:20:30.123 2012\n"
            "base hex  timestamps absolute\n"
            "no internal events logged\n"
            "// version 7.0.0\n"
            "Begin Triggerblock Thu Nov 01 10:20:30.123 2012\n"
            "   0.000000 Start of measurement\n"
            "   0.100000 1  123             Rx   d 2 AA BB\n"
            "   0.200012 2  18FEF100x       Tx   d 1 0C\n"
            "   0.300000 1  123             Rx   r\n"
            "   0.400000 1  7FF             Rx   d 0\n"
            "End TriggerBlock\n");
  const Outcome outcome = convert("log.asc", "log.csv", std::nullopt, XLATR_FORMAT_CSV);
  expectSuccess(outcome, {"log.csv"});
  const std::string table = readFile("log.csv");
  EXPECT_TRUE(table.starts_with("$STARTTIME=41214.4309042014")) << table;
  EXPECT_EQ(table.find("CAN XL"), std::string::npos);
  const std::size_t columns = table.find("Number;");
  ASSERT_NE(columns, std::string::npos);
  EXPECT_EQ(splitLines(table.substr(columns)),
            (std::vector<std::string>{
                "Number;Time (ms);Bus;Direction;Type;ID (hex);Reserved;Length;D0;D1;D2;D3;D4;D5;D6;D7;;D...",
                "Begin Triggerblock Thu Nov 01 10:20:30.123 2012", "   0.000000 Start of measurement",
                "1;100.000;1;Rx;DT;0123;-;2;AA;BB", "2;200.012;2;Tx;DT;18FEF100;-;1;0C", "3;300.000;1;Rx;RR;0123;-;0;",
                "4;400.000;1;Rx;DT;07FF;-;0;", "End TriggerBlock"}));
}

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

// A reader of tables that is none of ours: the cells of each row behind the names of the columns, one row a line, cells
// in brackets. Lines of one cell are comments.
constexpr char kPythonReader[] = R"(
import csv, sys
with open('out.csv', newline='') as table:
    behind_names = False
    for row in csv.reader(table, delimiter=sys.argv[1]):
        if row and row[0] == 'Number':
            behind_names = True
            assert row[:7] == ['Number', 'Time (ms)', 'Bus', 'Direction', 'Type', 'ID/PID (hex)', 'Reserved'], row
            assert row[12:22] == ['Length', 'D0', 'D1', 'D2', 'D3', 'D4', 'D5', 'D6', 'D7', ''], row
        elif behind_names and len(row) > 1:
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
    GTEST_SKIP() << "there is no python3 here";
  }
  for (const char* const version : {"1.1", "2.0", "2.1", "3.0"}) {
    for (const Separator& separator : kSeparators) {
      SCOPED_TRACE(std::string(version) + " with " + separator.name);
      const WorkingDirectory directory;
      convertToTable(version, separator.character);
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
