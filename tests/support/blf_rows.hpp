// Rows of the BLF converter's table.
#pragma once

#include <cstdint>
#include <vector>

#include "formats/csv/csv_message.hpp"

namespace xlatr::test {

using Bytes = std::vector<std::uint8_t>;

// A row that was understood, at 1.234567 ms on channel 7, with the identifier 0x123 and two bytes.
inline CsvMessage blfRow(std::uint32_t objectType) {
  CsvMessage row;
  row.valid = true;
  row.objectType = objectType;
  row.objectTicks = 1234567;
  row.objectFlags = 2;
  row.comment = "why";
  row.blfId = 0x123;
  row.channel = 7;
  row.ecc = 0x59;
  row.crc = 0x7C;
  row.length = 2;
  row.data = {0xAA, 0xBB};
  return row;
}

}  // namespace xlatr::test
