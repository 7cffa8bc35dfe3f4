// Printing one row.
#pragma once

#include <cstdint>

#include "formats/csv/csv_message.hpp"
#include "util/text_buffer.hpp"

namespace xlatr {

// Appends the message as the row of this number, without line end. The count of cells depends on the data: nothing is
// filled up to the columns of the head.
void appendCsvRow(TextBuffer& out, const CsvMessage& message, std::uint64_t number);

}  // namespace xlatr
