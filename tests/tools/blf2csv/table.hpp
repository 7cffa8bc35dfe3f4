// The table of a log, in memory.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "blf2csv/remarks.hpp"
#include "blf2csv/table_conversion.hpp"
#include "support/temp_folder.hpp"

namespace blf2csv {

inline constexpr std::string_view kHead =
    "$BLFSTARTTIME=31/12/2024 23:59:58.500\n"
    "Number;ObjectType;ObjectTimestamp;ObjectFlags;Valid;Comment;Id;Channel;Flags;FlagsExt;Ecc;CanFdFLags;Dir;Crc;"
    "ObjectVersion;ChecksumModel;Length;D0;D1;D2;D3;D4;D5;D6;D7\n";

struct Converted {
  std::string table;
  Remarks remarks;

  // Without the head, which must be that of every log from the builder.
  [[nodiscard]] std::string rows() const {
    return table.starts_with(kHead) ? table.substr(kHead.size()) : "head of\n" + table;
  }
};

inline Converted convertLog(const std::string& log) {
  static const xlatr::test::TempFolder folder;
  Converted converted;
  const std::string path = folder.write("log.blf", log);
  static_cast<void>(convertToTable(
      path, [&](std::string_view block) { converted.table += block; }, [](std::uint16_t) { return true; },
      converted.remarks));
  return converted;
}

}  // namespace blf2csv
