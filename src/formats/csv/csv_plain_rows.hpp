// The rows of data frames in their plain form, which nearly all rows of a table have.
#pragma once

#include <cstdint>
#include <string_view>

#include "formats/csv/csv_columns.hpp"
#include "formats/csv/csv_table.hpp"
#include "frames/frame.hpp"
#include "frames/plain_frame.hpp"

namespace xlatr {

// Each function returns false for a row of any other form, and then leaves the frame alone. What it takes becomes the
// frame that the parser of all forms would make of it, in less than half the time. The frame is like a new one, and
// refers to `bytes`.

// The tables of version 1.0 that have plain rows: those with our own columns.
enum class CsvPlainTable : std::uint8_t { None, Narrow, Wide };

[[nodiscard]] CsvPlainTable plainTableOf(const CsvColumnLine& line);

[[nodiscard]] bool takePlainCsvRow(std::string_view row, CsvPlainTable table, char separator, PlainFrameBytes& bytes,
                                   Frame& frame);

// Whether a table of version 2.0 has our own columns, so that it may have plain rows.
[[nodiscard]] bool hasPlainRows(const CsvTableColumns& columns);

[[nodiscard]] bool takePlainCsvTableRow(std::string_view row, char separator, PlainFrameBytes& bytes, Frame& frame);

}  // namespace xlatr
