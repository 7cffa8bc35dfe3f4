#include "formats/csv/csv_message.hpp"

namespace xlatr {

void CsvMessage::reset() {
  resetCommonFields(255);
  static_cast<CsvRowFields&>(*this) = {};
  static_cast<BlfObjectFields&>(*this) = {};
  text.clear();
  parsingText.clear();
  comment.clear();
}

}  // namespace xlatr
