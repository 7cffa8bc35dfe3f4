// A TRC trace as a table on both ways.
#pragma once

#include <string>
#include <string_view>

#include "formats/csv/csv_writer.hpp"
#include "io/format.hpp"
#include "support/both_ways.hpp"
#include "support/temp_folder.hpp"

namespace xlatr::test {

struct BothTables {
  std::string compatible;
  std::string complete;
};

inline BothTables bothTablesOf(const TempFolder& folder, std::string_view trace) {
  const std::string path = folder.write("trace.trc", trace);
  Account account;
  return {compatibleOf<CsvWriter>(folder, path, true),
          completeOf(folder, path, formatOf(XLATR_FORMAT_CSV), account, {.version = 1.0})};
}

// What follows the column line.
inline std::string rowsOf(const std::string& table) {
  return table.substr(table.find("D...\r\n") + 6);
}

}  // namespace xlatr::test
