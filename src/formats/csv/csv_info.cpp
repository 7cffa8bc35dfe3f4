#include "formats/csv/csv_info.hpp"

#include <utility>

#include "formats/csv/csv_start_time.hpp"
#include "io/line_input.hpp"

namespace xlatr {

CsvInfo::CsvInfo(TraceFileInfo file) : TraceInfo(std::move(file), XLATR_FORMAT_CSV) {
  if (isOfOwnFormat()) {
    lineBreakSize_ = readLineEnding();
    readHead();
  }
}

void CsvInfo::readHead() {
  CsvStartTime start;
  const bool read = tryReading([&] {
    LineInput input(getPath());
    std::string_view line;
    while (columnLine_.empty() && input.next(line)) {
      start.look(line);
      headerLength_ = input.position();
      if (line.find(kCsvNumberName) != std::string_view::npos) {
        columnLine_ = line;
      }
    }
  });
  if (!read) {
    return;  // half a head says nothing
  }
  start.finish();
  startDays_ = start.days();
  blfTable_ = start.isBlfTable();
  CsvColumnLine parsed = parseCsvColumnLine(columnLine_);
  columns_ = parsed.columns;
  separator_ = std::move(parsed.separator);
}

}  // namespace xlatr
