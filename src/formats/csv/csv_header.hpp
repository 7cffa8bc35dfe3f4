// The lines at the start of a CSV table, down to the names of its columns.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace xlatr {

// The values in a head.
struct CsvHeaderValues {
  std::string startNumber;  // the start time in days since 1899-12-30
  std::string startText;    // the same as date text
  std::string sourcePath;
  std::string hostVersion;
  bool wide = false;         // the table has the columns of CAN XL
  bool loggerBuses = false;  // the buses of a hardware logger are listed
};

// The lines in order, without line ends; empty lines are among them.
[[nodiscard]] std::vector<std::string> csvHeaderLines(const CsvHeaderValues& values, std::string_view separator);

}  // namespace xlatr
