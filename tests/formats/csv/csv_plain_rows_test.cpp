#include "formats/csv/csv_plain_rows.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/csv/csv_frames.hpp"
#include "support/frame_text.hpp"
#include "support/mutated_lines.hpp"
#include "support/temp_folder.hpp"
#include "util/text_buffer.hpp"

namespace xlatr {
namespace {

// ---- version 1.0

struct PlainTable {
  CsvPlainTable table;
  char separator;
  std::vector<std::string_view> rows;
};

const std::array kPlainTables = {
    PlainTable{CsvPlainTable::Narrow,
               ';',
               {"1234567;10.000;1;Rx;DT;0123;-;8;0A;B0;12;34;56;78;9A;BC", "2;10.5;65535;Tx;DT;18ABCDEF;-;3;FF;fe;FD",
                "3;123456789.123456;0;Rx;FB;7FF;-;9;01;02;03;04;05;06;07;08;09", "4;10.500;2;Rx;BI;18ABCDEF;-;0",
                "5;10.500;2;Rx;FE;18ABCDEF;-;0;", "6;10.500;02;Rx;FD;18ABCDEF;-;02;00;11;"}},
    PlainTable{
        CsvPlainTable::Wide,
        ',',
        {"1234567,10.000,1,Rx,DT,0123,-,-,-,-,-,-,8,0A,B0,12,34,56,78,9A,BC", "2,10.5,2,Tx,FD,00000001,-,-,-,-,-,-,0"}},
};

std::string columnLineOf(const PlainTable& table) {
  return csvColumnLine(table.table == CsvPlainTable::Wide, std::string_view(&table.separator, 1));
}

std::optional<std::string> plainTextOf(const PlainTable& table, std::string_view row) {
  Frame frame;
  PlainFrameBytes bytes{};
  return takePlainCsvRow(row, table.table, table.separator, bytes, frame) ? std::optional(test::textOf(frame))
                                                                          : std::nullopt;
}

std::vector<std::string> textsOfFile(const std::string& content) {
  const test::TempFolder folder;
  Account account;
  return test::textsOf(*openCsvFrames(folder.write("table.csv", content)), account);
}

// The same of rows of any form: a column of another program moves all of ours.
std::vector<std::string> textsOfAnyForm(const PlainTable& table, const std::vector<std::string>& rows) {
  const std::string separator(1, table.separator);
  std::string content = columnLineOf(table);
  content.insert(content.find(separator), separator + "Other") += "\n";
  for (const std::string& row : rows) {
    std::string wider = row;
    content += wider.insert(row.find(separator), separator + "x") + "\n";
  }
  return textsOfFile(content);
}

TEST(CsvPlainRows, areTaken) {
  for (const PlainTable& table : kPlainTables) {
    for (const std::string_view row : table.rows) {
      EXPECT_TRUE(plainTextOf(table, row)) << row;
    }
  }
  EXPECT_EQ(plainTextOf(kPlainTables[0], kPlainTables[0].rows[2]),
            "123456789123456 data 0 7FF Rx FD BRS dlc9 [010203040506070809]");
}

TEST(CsvPlainRows, othersAreLeftToTheirParser) {
  for (const std::string_view row : {
           "",
           "1",
           "1;10.000;1;Rx;RR;0123;-;8",
           "1;10.000;1;Rx;ER;0123;-;1;00",
           "1;10.000;1;-;DT;0123;-;1;00",
           "1;10.000;1;Rx;DT;0123;0;1;00",
           "1;10.000;0x1;Rx;DT;0123;-;1;00",
           "1;10.000;65536;Rx;DT;0123;-;1;00",
           "1;10.000;1;Rx;DT;0x123;-;1;00",
           "1;10.000;1;Rx;DT;123x;-;1;00",
           "1;10.000;1;Rx;DT;0123;-;65;00",
           "1;10.000;1;Rx;DT;0123;-;2;00",
           "1;10.000;1;Rx;DT;0123;-;1;00;text",
           "1;10.000;1;Rx;DT;0123;-;1;00;\"\"",
           "1;10;1;Rx;DT;0123;-;1;00;;;;;",
           "1;-10.0;1;Rx;DT;0123;-;1;00",
           "1;10.000,1;Rx;DT;0123;-;1;00",
       }) {
    EXPECT_FALSE(plainTextOf(kPlainTables[0], row)) << row;
  }
  EXPECT_FALSE(plainTextOf(kPlainTables[1], "1,10.000,1,Rx,XL,0123,-,01,-,-,-,-,1,00"));
  EXPECT_FALSE(plainTextOf(kPlainTables[1], "1,10.000,1,Rx,DT,0123,-,01,-,-,-,-,1,00"));
  EXPECT_FALSE(plainTextOf({CsvPlainTable::None, ';', {}}, kPlainTables[0].rows[0]));
}

TEST(CsvPlainRows, areThoseOfTablesWithOurColumns) {
  const auto tableOf = [](std::string_view line) { return plainTableOf(parseCsvColumnLine(line)); };
  for (const PlainTable& table : kPlainTables) {
    EXPECT_EQ(tableOf(columnLineOf(table)), table.table);
  }
  EXPECT_EQ(tableOf(csvColumnLine(true, "|")), CsvPlainTable::None) << "a separator that nobody expects";
  EXPECT_EQ(tableOf(csvConverterColumnLine(";")), CsvPlainTable::None);
  EXPECT_EQ(tableOf("Number;Time (ms);Direction;Bus;Type;ID (hex);Reserved;Length;D0"), CsvPlainTable::None);
  EXPECT_EQ(tableOf("Number"), CsvPlainTable::None);
}

TEST(CsvPlainRows, becomeTheFramesOfTheParserOfAllForms) {
  for (const PlainTable& table : kPlainTables) {
    const test::TakenLines taken =
        test::takenOf(table.rows, 20, [&table](std::string_view row) { return plainTextOf(table, row); });
    test::expectSameTexts(taken.texts, textsOfAnyForm(table, taken.lines), taken.lines);
    std::string content = columnLineOf(table) + "\n";
    for (const std::string& row : taken.lines) {
      content += row + "\n";
    }
    test::expectSameTexts(textsOfFile(content), taken.texts, taken.lines);
  }
}

// ---- version 2.0

const std::vector<std::string_view> kPlainTableRows = {
    "500000,data,1,123,0,0,0,0,0,8,8,0ab0123456789abc,,,0,0,0,,,,,,,,,,,,,,,,",
    "123456789012345,data,65535,18ABCDEF,1,1,0,0,0,3,3,FFFEFD,,,0,0,0,,,,,,,,,,,,,,,,",
    "0,data,0,0,0,,1,1,1,9,12,000102030405060708090A0B,,,0,0,0,,,,,,,,,,,,,,,,",
    "12345678,data,0,7FF,0,,1,1,1,0,0,,,,0,1,1,,,,,,,,,,,,,,,,",
};

std::optional<std::string> plainTableTextOf(std::string_view row) {
  Frame frame;
  PlainFrameBytes bytes{};
  return takePlainCsvTableRow(row, ',', bytes, frame) ? std::optional(test::textOf(frame)) : std::nullopt;
}

std::string tableHeader() {
  TextBuffer header;
  appendCsvTableHeader(header);
  return std::string(header.view());
}

std::string tableOf(std::string header, std::string_view end, const std::vector<std::string>& rows) {
  header.insert(header.find('\r'), end);
  for (const std::string& row : rows) {
    header += row;
    header += end.empty() ? "\r\n" : ",\r\n";
  }
  return header;
}

TEST(CsvTablePlainRows, areTaken) {
  for (const std::string_view row : kPlainTableRows) {
    EXPECT_TRUE(plainTableTextOf(row)) << row;
  }
  EXPECT_EQ(plainTableTextOf(kPlainTableRows[1]), "123456789012345 data 65535 18ABCDEF x Tx dlc3 [FFFEFD]");
}

TEST(CsvTablePlainRows, othersAreLeftToTheirParser) {
  for (const std::string_view row : {
           "",
           "-500000,data,1,123,0,0,0,0,0,1,1,0a,,,0,0,0,,,,,,,,,,,,,,,,",
           "1234567890123456,data,1,123,0,0,0,0,0,1,1,0a,,,0,0,0,,,,,,,,,,,,,,,,",
           "500000,remote,1,123,0,0,0,0,0,1,1,0a,,,0,0,0,,,,,,,,,,,,,,,,",
           "500000,data,65536,123,0,0,0,0,0,1,1,0a,,,0,0,0,,,,,,,,,,,,,,,,",
           "500000,data,1.0,123,0,0,0,0,0,1,1,0a,,,0,0,0,,,,,,,,,,,,,,,,",
           "500000,data,1,123x,0,0,0,0,0,1,1,0a,,,0,0,0,,,,,,,,,,,,,,,,",
           "500000,data,1,123,true,0,0,0,0,1,1,0a,,,0,0,0,,,,,,,,,,,,,,,,",
           "500000,data,1,123,0,Tx,0,0,0,1,1,0a,,,0,0,0,,,,,,,,,,,,,,,,",
           "500000,data,1,123,0,0,2,0,0,1,1,0a,,,0,0,0,,,,,,,,,,,,,,,,",
           "500000,data,1,123,0,0,0,0,0,65536,1,0a,,,0,0,0,,,,,,,,,,,,,,,,",
           "500000,data,1,123,0,0,0,0,0,1,65,0a,,,0,0,0,,,,,,,,,,,,,,,,",
           "500000,data,1,123,0,0,0,0,0,1,2,0a,,,0,0,0,,,,,,,,,,,,,,,,",
           "500000,data,1,123,0,0,0,0,0,1,1,\"0a\",,,0,0,0,,,,,,,,,,,,,,,,",
           "500000,data,1,123,0,0,0,0,0,1,1,0a,1,,0,0,0,,,,,,,,,,,,,,,,",
           "500000,data,1,123,0,0,0,0,0,1,1,0a,,\"\",0,0,0,,,,,,,,,,,,,,,,",
           "500000,data,1,123,0,0,0,0,0,1,1,0a,,,1,0,0,,,,,,,,,,,,,,,",
           "500000,data,1,123,0,0,0,0,0,1,1,0a,,,0,0,0,,,,,,,,,,,,,,,,5",
           "500000,data,1,123,0,0,0,0,0,1,1,0a,,,0,0,0,,,,,,,,,,,,,,,",
           "500000,data,1,123,0,0,0,0,0,1,1,0a,,,0,0,0,,,,,,,,,,,,,,,,,",
           "500000,data,1,123,0,0,0,0,0,1,1,0a,,,0,0,0",
       }) {
    EXPECT_FALSE(plainTableTextOf(row)) << row;
  }
}

TEST(CsvTablePlainRows, areThoseOfTablesWithOurColumns) {
  const std::string header = tableHeader().substr(0, tableHeader().find('\r'));
  EXPECT_TRUE(hasPlainRows(*CsvTableColumns::parse(header)));
  std::string semicolons = header;
  std::ranges::replace(semicolons, ',', ';');
  EXPECT_TRUE(hasPlainRows(*CsvTableColumns::parse(semicolons)));
  EXPECT_FALSE(hasPlainRows(*CsvTableColumns::parse(header + ",other")));
  EXPECT_FALSE(hasPlainRows(*CsvTableColumns::parse("time_ns,id,data")));
}

TEST(CsvTablePlainRows, becomeTheFramesOfTheParserOfAllForms) {
  const test::TakenLines taken = test::takenOf(kPlainTableRows, 20, plainTableTextOf);
  test::expectSameTexts(taken.texts, textsOfFile(tableOf(tableHeader(), ",other", taken.lines)), taken.lines);
  test::expectSameTexts(textsOfFile(tableOf(tableHeader(), "", taken.lines)), taken.texts, taken.lines);
}

}  // namespace
}  // namespace xlatr
