#include "formats/trc/trc_info.hpp"

#include <exception>
#include <utility>

#include "formats/trc/trc_header_keys.hpp"
#include "formats/trc/trc_version.hpp"
#include "io/line_input.hpp"
#include "util/files.hpp"

namespace xlatr {

TrcInfo::TrcInfo(TraceFileInfo file) : TraceInfo(std::move(file), XLATR_FORMAT_TRC) {
  if (isOfOwnFormat()) {
    lineBreakSize_ = static_cast<std::uint8_t>(detectLineEnding(getPath()));
    readHeader();
  }
}

TrcInfo::TrcInfo(const std::string& path) : TrcInfo(TraceFileInfo(path)) {}

bool TrcInfo::getValid() const {
  return isOfOwnFormat() && fileVersion_ >= getLowestVersion() && fileVersion_ <= getCurrentVersion();
}

void TrcInfo::readHeader() {
  TrcHeaderKeys keys;
  try {
    LineInput input(getPath());
    std::string_view line;
    while (input.next(line) && (line.empty() || line.front() == ';')) {
      keys.look(line);
      headerLength_ = input.position();
    }
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): what could be read of the header counts
  }
  fileVersion_ = keys.fileVersion();
  networkName_ = keys.networkName();
  try {
    startDays_ = keys.startDays();
  } catch (const std::exception&) {
    startDays_ = 0.0;  // a date out of range is no start time
  }
  if (listsTrcColumns(fileVersion_)) {
    columnSet_ = keys.columnSet();
  }
}

}  // namespace xlatr
