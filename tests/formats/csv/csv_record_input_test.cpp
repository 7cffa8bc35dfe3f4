#include "formats/csv/csv_record_input.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

class CsvRecords : public testing::Test {
 protected:
  // Each as "line:text", with a mark for broken ones.
  std::vector<std::string> read(const std::string& content, char separator = ',') {
    CsvRecordInput input(folder_.write("records.csv", content));
    input.setSeparator(separator);
    std::vector<std::string> records;
    CsvRecord record;
    while (input.next(record)) {
      records.push_back(std::to_string(record.line) + ":" + std::string(record.text) +
                        (record.broken ? " (broken)" : ""));
    }
    EXPECT_EQ(input.position(), content.size());
    return records;
  }

  test::TempFolder folder_;
};

TEST_F(CsvRecords, areLinesUnlessAQuotationGoesOn) {
  EXPECT_EQ(read("a,b\r\nc\n\nd,\"e\"\n\"f\r\ng\",h\ni"),
            (std::vector<std::string>{"1:a,b", "2:c", "3:", "4:d,\"e\"", "5:\"f\r\ng\",h", "7:i"}));
}

TEST_F(CsvRecords, knowDoubledQuotes) {
  EXPECT_EQ(read("\"a\"\"\n\"\"\",b\nc\n"), (std::vector<std::string>{"1:\"a\"\"\n\"\"\",b", "3:c"}));
  EXPECT_EQ(read("\"\",b\nc\n"), (std::vector<std::string>{"1:\"\",b", "2:c"}));
}

TEST_F(CsvRecords, areQuotedWhereACellBegins) {
  EXPECT_EQ(read("a\"b\nc\n"), (std::vector<std::string>{"1:a\"b", "2:c"}));
  EXPECT_EQ(read("a;\"b\nc\"\n", ';'), (std::vector<std::string>{"1:a;\"b\nc\""}));
}

TEST_F(CsvRecords, areSingleLinesWhereAQuotationDoesNotEnd) {
  EXPECT_EQ(read("a,\"b\nc\nd\n"), (std::vector<std::string>{"1:a,\"b (broken)", "2:c", "3:d"}));
  EXPECT_EQ(read("a\",\"\nb\",\"\n"), (std::vector<std::string>{"1:a\",\" (broken)", "2:b\",\" (broken)"}));
  const std::string later(CsvRecordInput::kLongestRecord, 'x');
  EXPECT_EQ(read("a,\"b\nc\n" + later + "\"\n").front(), "1:a,\"b (broken)");
}

// Looking for the end of each of them would take hours.
TEST_F(CsvRecords, areFoundInTimeWhateverTheQuotes) {
  std::string lines;
  while (lines.size() < 2 * CsvRecordInput::kLongestRecord) {
    lines += "a\",\"\n";
  }
  EXPECT_EQ(read(lines).size(), lines.size() / 5);
}

TEST_F(CsvRecords, areCutWhereALineIsLongerThanAny) {
  const std::string line(CsvRecordInput::kLongestRecord + 5, 'x');
  const auto records = read(line + "\ny\n");
  ASSERT_EQ(records.size(), 3U);
  EXPECT_EQ(records[0].size(), 2 + CsvRecordInput::kLongestRecord + 9);
  EXPECT_EQ(records[1], "1:xxxxx");
  EXPECT_EQ(records[2], "2:y");
}

TEST_F(CsvRecords, growBeyondABlock) {
  const std::string text(600'000, 'x');
  EXPECT_EQ(read("\"" + text + "\n" + text + "\",b\nc\n"),
            (std::vector<std::string>{"1:\"" + text + "\n" + text + "\",b", "3:c"}));
}

}  // namespace
}  // namespace xlatr
