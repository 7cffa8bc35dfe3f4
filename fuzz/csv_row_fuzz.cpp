// A row of either form, parsed and printed. The first line of the input names the columns, the rest is the row. A row
// of our own form that was understood is printed, read and printed again, which must not change it.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "formats/csv/csv_message.hpp"
#include "target.hpp"

namespace {

using fuzz::require;

constexpr std::uint64_t kNumber = 7;
constexpr char kWideColumns[] =
    "Number;Time (ms);Bus;Direction;Type;ID/PID (hex);Reserved;VCID;SDT;AF;RRS;SEC;Length;D0;D1;;D...";

xlatr::CsvMessage parsed(const xlatr::CsvColumnLine& line, const std::string& row, bool blfRow) {
  xlatr::CsvMessage message(line.separator);
  message.columns = line.columns;
  message.parseRow(row, blfRow);
  require(message.data.size() <= message.length);
  return message;
}

std::string printed(const xlatr::CsvMessage& message) {
  xlatr::TextBuffer out;
  message.toRow(out, kNumber);
  return std::string(out.view());
}

void printAndReadAgain(xlatr::CsvMessage message) {
  const xlatr::CsvColumnLine line = xlatr::parseCsvColumnLine(kWideColumns);
  message.separator = line.separator;
  message.wideRow = true;
  const std::string row = printed(message);
  if (!message.valid) {
    return;
  }
  xlatr::CsvMessage again = parsed(line, row, false);
  require(again.valid);
  require(again.data == message.data);
  require(again.kind == message.kind);
  again.wideRow = true;
  // What the reader ignores, and a base identifier as wide as an extended one, which it becomes.
  again.reserved = message.reserved;
  again.vcid = message.vcid;
  again.sdt = message.sdt;
  again.af = message.af;
  require(again.extended || message.id <= 0xFFFF);
  require(printed(again) == row || again.extended != message.extended);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Copies of the exact size, so that a read past the end is seen.
  const std::string input(data, data + size);
  const std::size_t end = input.find('\n');
  const std::string columnLine = input.substr(0, end);
  const std::string row = end == std::string::npos ? std::string() : input.substr(end + 1);
  const xlatr::CsvColumnLine line = xlatr::parseCsvColumnLine(columnLine);
  printed(parsed(line, row, true));
  printAndReadAgain(parsed(line, row, false));
  return 0;
}
