// Reading one row.
#pragma once

#include <string_view>

#include "formats/csv/csv_message.hpp"

namespace xlatr {

// Fill `message`, which is fresh but for its separator, columns and parsing text, from a row of our own table or of the
// external BLF converter's, and set its valid flag when the row was understood. Raise nothing and keep nothing of
// `row`.
void parseCsvRow(std::string_view row, CsvMessage& message);
void parseBlfRow(std::string_view row, CsvMessage& message);

}  // namespace xlatr
