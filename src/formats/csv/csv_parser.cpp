// How a CsvMessage reads a row.
#include <utility>

#include "formats/csv/csv_column_table.hpp"
#include "formats/csv/csv_message.hpp"

namespace xlatr {
namespace {

constexpr CsvCellReader readerOf(const CsvColumnRow& column, bool blfRow, Way way) {
  if (blfRow) {
    return column.readConverter;
  }
  return way.has(Quirk::CsvFewCellsRead) ? column.readOwn : column.readWhole;
}

template <bool kBlfRow, bool kCompatible, std::size_t kRow>
bool readCell(CsvCells& cells, CsvMessage& message) {
  constexpr Way kWay = kCompatible ? Way::compatible() : Way::complete();
  constexpr CsvColumnRow kColumn = kCsvColumnTable[kRow];
  constexpr CsvCellReader kReader = readerOf(kColumn, kBlfRow, kWay);
  if constexpr (kReader == nullptr) {
    return true;
  } else {
    if constexpr (!kWay.has(Quirk::CsvMissingColumnIsTheFirst)) {
      if (!message.columns.has(kColumn.column)) {
        return !kColumn.needed;
      }
    }
    return kReader(cells, message.columns.place(kColumn.column), message);
  }
}

// Reads cell after cell up to the first that ends the row. The compiler sees the whole table and makes one function of
// the readers of one kind of row and one way.
template <bool kBlfRow, bool kCompatible, std::size_t... kRows>
bool readCells(std::string_view row, CsvMessage& message, std::index_sequence<kRows...> /*rows*/) {
  constexpr Way kWay = kCompatible ? Way::compatible() : Way::complete();
  CsvCells cells(row, message.separator, kWay.has(Quirk::CsvEmptyCellsMoveOthers) ? CsvCut::AtRuns : CsvCut::AtEach);
  return (readCell<kBlfRow, kCompatible, kRows>(cells, message) && ...);
}

constexpr std::make_index_sequence<kCsvColumnTable.size()> kAllRows;

}  // namespace

void CsvMessage::parseRow(std::string_view row, bool blfRow, Way way) {
  if (!way.has(Quirk::CsvFewCellsRead)) {
    valid = readCells<false, false>(row, *this, kAllRows);
  } else if (!blfRow) {
    valid = readCells<false, true>(row, *this, kAllRows);
  } else if (!readCells<true, true>(row, *this, kAllRows)) {
    valid = false;
  }
}

}  // namespace xlatr
