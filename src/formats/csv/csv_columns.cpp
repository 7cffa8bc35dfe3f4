#include "formats/csv/csv_columns.hpp"

#include <vector>

#include "formats/csv/csv_column_table.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

static_assert(kCsvColumnTable.size() == kCsvColumnCount);

// After "D0", which is the name of a column; the further ones are counted from there.
constexpr std::array<std::string_view, 7> kFurtherDataNames = {"D1", "D2", "D3", "D4", "D5", "D6", "D7"};

void append(std::string& line, std::string_view separator, std::string_view name) {
  line.append(line.empty() ? "" : separator).append(name);
}

std::string columnLine(int CsvColumnRow::*table, bool fromTrc, std::string_view separator) {
  std::string line;
  for (int place = 0; const CsvColumnRow* const row = findCsvColumn(table, place); ++place) {
    if (fromTrc || !row->onlyWide) {
      append(line, separator, fromTrc && !row->nameForTrc.empty() ? row->nameForTrc : row->name);
    }
  }
  for (const std::string_view name : kFurtherDataNames) {
    append(line, separator, name);
  }
  return line;
}

const CsvColumnRow* findByName(std::string_view name) {
  for (const CsvColumnRow& row : kCsvColumnTable) {
    if (name == row.name || (name == row.nameForTrc && !name.empty())) {
      return &row;
    }
  }
  return nullptr;
}

}  // namespace

void CsvColumns::setPlace(CsvColumn column, std::uint32_t place) {
  places_[static_cast<std::size_t>(column)] = place;
  named_ |= 1U << static_cast<std::uint32_t>(column);
}

CsvColumnLine parseCsvColumnLine(std::string_view line) {
  CsvColumnLine result;
  const std::size_t number = line.find(kCsvNumberName);
  if (number == std::string_view::npos) {
    return result;
  }
  // Taken from the file and not from any setting, so that a table of any separator is read.
  result.separator = line.substr(number + kCsvNumberName.size(), 1);
  std::vector<std::string_view> names;
  splitText(line, result.separator, names, true, false);
  for (std::size_t place = 0; place < names.size(); ++place) {
    if (const CsvColumnRow* const row = findByName(names[place])) {
      result.columns.setPlace(row->column, static_cast<std::uint32_t>(place));
    }
  }
  return result;
}

std::string csvColumnLine(bool fromTrc, std::string_view separator) {
  // After two separators, which sets the bytes beyond the eighth apart: theFurtherDataFollowTwoSeparators.
  return columnLine(&CsvColumnRow::ownPlace, fromTrc, separator).append(separator).append(separator).append("D...");
}

std::string csvConverterColumnLine(std::string_view separator) {
  return columnLine(&CsvColumnRow::converterPlace, false, separator);
}

}  // namespace xlatr
