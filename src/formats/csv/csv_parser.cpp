// How a CsvMessage reads a row.
#include <utility>

#include "formats/csv/csv_column_table.hpp"
#include "formats/csv/csv_message.hpp"

namespace xlatr {
namespace {

template <CsvCellReader CsvColumnRow::*kReader, std::size_t kRow>
bool readCell(CsvCells& cells, CsvMessage& message) {
  constexpr CsvColumnRow kColumn = kCsvColumnTable[kRow];
  if constexpr (kColumn.*kReader == nullptr) {
    return true;
  } else {
    return (kColumn.*kReader)(cells, message.columns.place(kColumn.column), message);
  }
}

// Reads cell after cell up to the first that ends the row. The compiler sees the whole table and makes one function of
// the readers of one kind of row.
template <CsvCellReader CsvColumnRow::*kReader, std::size_t... kRows>
bool readCells(std::string_view row, CsvMessage& message, std::index_sequence<kRows...> /*rows*/) {
  CsvCells cells(row, message.separator);
  return (readCell<kReader, kRows>(cells, message) && ...);
}

constexpr std::make_index_sequence<kCsvColumnTable.size()> kAllRows;

}  // namespace

void CsvMessage::parseRow(std::string_view row, bool blfRow) {
  if (!blfRow) {
    valid = readCells<&CsvColumnRow::readOwn>(row, *this, kAllRows);
  } else if (!readCells<&CsvColumnRow::readConverter>(row, *this, kAllRows)) {
    valid = false;
  }
}

}  // namespace xlatr
