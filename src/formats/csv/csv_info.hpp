// What the head of a CSV table says.
#pragma once

#include <cstdint>
#include <string>

#include "formats/csv/csv_columns.hpp"
#include "io/trace_info.hpp"

namespace xlatr {

// Reads the head once, at construction: all lines down to the first one with the word "Number", which names the
// columns. Nothing is raised for a file that can't be read.
class CsvInfo final : public TraceInfo {
 public:
  explicit CsvInfo(TraceFileInfo file);

  // Whether the file is a CSV file by its name. Tables state no version, so nothing else can be checked.
  [[nodiscard]] bool getValid() const override { return isOfOwnFormat(); }

  // The line that names the columns; empty if there is none; then there are no rows either.
  [[nodiscard]] const std::string& columnLine() const { return columnLine_; }
  [[nodiscard]] const CsvColumns& columns() const { return columns_; }
  // One character, or empty.
  [[nodiscard]] const std::string& separator() const { return separator_; }
  // Bytes of a line end: 1 or 2, judged by the first line.
  [[nodiscard]] std::uint8_t lineBreakSize() const { return lineBreakSize_; }
  // Whether the rows are those of the external BLF converter.
  [[nodiscard]] bool blfTable() const { return blfTable_; }

 private:
  void readHead();

  std::string columnLine_;
  CsvColumns columns_;
  std::string separator_;
  std::uint8_t lineBreakSize_ = 0;
  bool blfTable_ = false;
};

}  // namespace xlatr
