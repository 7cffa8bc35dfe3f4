// A whole BLF log, turned into its table by the parts of the converter. The input is the file. The library must
// understand each row of the table as it was meant.
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "blf2csv/table_conversion.hpp"
#include "formats/csv/csv_message.hpp"
#include "scratch_folder.hpp"
#include "target.hpp"

namespace {

using fuzz::require;

constexpr std::size_t kMostData = 64;

std::string_view takeLine(std::string_view& text) {
  const std::size_t end = text.find('\n');
  require(end != std::string_view::npos);
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(end + 1);
  return line;
}

void checkTable(std::string_view table, const blf2csv::Remarks& remarks) {
  require(takeLine(table).starts_with("$BLFSTARTTIME="));
  const xlatr::CsvColumnLine line = xlatr::parseCsvColumnLine(takeLine(table));
  require(line.separator == ";");
  std::uint64_t cut = 0;
  for (std::uint64_t number = 1; !table.empty(); ++number) {
    const std::string_view row = takeLine(table);
    require(row.starts_with(std::to_string(number) + ";"));
    xlatr::CsvMessage message(line.separator);
    message.columns = line.columns;
    message.parseRow(row, true);
    require(message.data.size() == message.length && message.length <= kMostData);
    require(message.valid == (message.comment == "-"));
    cut += message.comment == "cut short" ? 1U : 0U;
  }
  require(cut == remarks.times(blf2csv::Remark::CutObject));
}

std::string tableOf(const std::string& path, blf2csv::Remarks& remarks) {
  std::string table;
  std::uint16_t last = 0;
  const auto outcome = blf2csv::convertToTable(
      path, [&table](std::string_view block) { table += block; },
      [&last](std::uint16_t progress) {
        require(progress >= last && progress <= 10000);
        last = progress;
        return true;
      },
      remarks);
  require(outcome == blf2csv::Outcome::Done);
  return table;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  folder.write("log.blf", std::span(data, size));
  const std::string path = folder.path("log.blf");
  try {
    blf2csv::Remarks remarks;
    const std::string table = tableOf(path, remarks);
    checkTable(table, remarks);
    blf2csv::Remarks again;
    require(tableOf(path, again) == table);
    require(again.lines() == remarks.lines());
  } catch (const std::runtime_error&) {
    require(size < 144 || data[0] != 'L' || data[1] != 'O' || data[2] != 'G' || data[3] != 'G');
  }
  return 0;
}
