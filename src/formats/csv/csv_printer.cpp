// How a CsvMessage prints its row.
#include <string_view>
#include <utility>

#include "formats/csv/csv_column_table.hpp"
#include "formats/csv/csv_message.hpp"
#include "formats/csv/csv_quotes.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

constexpr std::size_t kOwnColumns = [] {
  std::size_t count = 0;
  while (findCsvColumn(&CsvColumnRow::ownPlace, static_cast<int>(count)) != nullptr) {
    ++count;
  }
  return count;
}();

template <std::size_t kPlace>
void appendCell(TextBuffer& out, const CsvMessage& message, std::uint64_t number) {
  constexpr CsvColumnRow kColumn = *findCsvColumn(&CsvColumnRow::ownPlace, static_cast<int>(kPlace));
  if (kColumn.onlyWide && !message.wideRow) {
    return;
  }
  if (kPlace > 0) {
    out.append(message.separator);
  }
  kColumn.print(out, message, number);
}

// After the data, or in the place of the first byte of a frame without any.
void appendText(TextBuffer& out, const CsvMessage& message) {
  if (!message.data.empty()) {
    out.append(message.separator);
  }
  const std::string_view text = message.text;
  const bool isCell =
      !text.empty() && text.find(kCsvQuote) == std::string_view::npos && !containsAny(text, message.separator);
  if (isCell) {
    out.append(text);
  } else {
    appendQuoted(out, text);
  }
}

template <std::size_t... kPlaces>
void appendCells(TextBuffer& out, const CsvMessage& message, std::uint64_t number,
                 std::index_sequence<kPlaces...> /*places*/) {
  (appendCell<kPlaces>(out, message, number), ...);
}

}  // namespace

void CsvMessage::toRow(TextBuffer& out, std::uint64_t number, Way way) const {
  appendCells(out, *this, number, std::make_index_sequence<kOwnColumns>());
  if (hasText && !way.has(Quirk::CsvTextLeftOut)) {
    appendText(out, *this);
  }
}

}  // namespace xlatr
