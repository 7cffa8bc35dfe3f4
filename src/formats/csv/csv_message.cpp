#include "formats/csv/csv_message.hpp"

#include "formats/csv/csv_parser.hpp"
#include "formats/csv/csv_printer.hpp"

namespace xlatr {

void CsvMessage::reset() {
  resetCommonFields(255);
  kind = MessageKind::Unknown;
  time = 0.0;
  remote = false;
  text.clear();
  reserved = kNoReserved;
  vcid = 0xFF;
  sdt = 0xFF;
  af = 0xFFFFFFFF;
  rrs = 0;
  sec = 0;
  wideRow = false;
  parsingText.clear();
  static_cast<BlfObjectFields&>(*this) = {};
  comment.clear();
}

void CsvMessage::parseRow(std::string_view row, bool blfRow) {
  if (blfRow) {
    parseBlfRow(row, *this);
  } else {
    parseCsvRow(row, *this);
  }
}

void CsvMessage::toRow(TextBuffer& out, std::uint64_t number) const {
  appendCsvRow(out, *this, number);
}

}  // namespace xlatr
