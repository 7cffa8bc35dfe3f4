#include "formats/trc/trc_info.hpp"

#include <utility>

#include "formats/trc/trc_header_keys.hpp"
#include "formats/trc/trc_version.hpp"
#include "io/line_input.hpp"

namespace xlatr {

TrcInfo::TrcInfo(TraceFileInfo file) : TraceInfo(std::move(file), XLATR_FORMAT_TRC) {
  if (isOfOwnFormat()) {
    lineBreakSize_ = readLineEnding();
    readHeader();
  }
}

TrcInfo::TrcInfo(const std::string& path) : TrcInfo(TraceFileInfo(path)) {}

bool TrcInfo::getValid() const {
  return isOfOwnFormat() && fileVersion_ >= getLowestVersion() && fileVersion_ <= getCurrentVersion();
}

void TrcInfo::readHeader() {
  TrcHeaderKeys keys;
  tryReading([&] {
    LineInput input(getPath());
    std::string_view line;
    while (input.next(line) && (line.empty() || line.front() == ';')) {
      keys.look(line);
      headerLength_ = input.position();
    }
  });
  fileVersion_ = keys.fileVersion();
  networkName_ = keys.networkName();
  tryReading([&] { startDays_ = keys.startDays(); });  // a date out of range is no start time
  if (listsTrcColumns(fileVersion_)) {
    columnSet_ = keys.columnSet();
  }
}

}  // namespace xlatr
