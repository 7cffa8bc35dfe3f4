#include "formats/lin/lin_info.hpp"

#include <utility>

#include "formats/lin/lin_header_keys.hpp"
#include "io/line_input.hpp"

namespace xlatr {

KorlInfo::KorlInfo(TraceFileInfo file) : TraceInfo(std::move(file), XLATR_FORMAT_LIN) {
  if (!isOfOwnFormat()) {
    return;
  }
  lineBreakSize_ = readLineEnding();
  if (!tryReading([&] { readHeader(); })) {
    // Half a header says nothing, and neither does one with an invalid date.
    headerLength_ = 0;
    fileVersion_ = 0.0;
    startDays_ = 0.0;
  }
}

bool KorlInfo::getValid() const {
  return isOfOwnFormat() && fileVersion_ >= getLowestVersion() && fileVersion_ <= getCurrentVersion();
}

void KorlInfo::readHeader() {
  LinHeaderKeys keys;
  LineInput input(getPath());
  std::string_view line;
  while (input.next(line) && !line.empty() && line.front() == ';') {
    keys.look(line);
    headerLength_ = input.position();
  }
  fileVersion_ = keys.fileVersion();
  startDays_ = keys.startDays();
}

}  // namespace xlatr
