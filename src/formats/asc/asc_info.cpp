#include "formats/asc/asc_info.hpp"

#include <utility>

#include "io/line_input.hpp"
#include "util/text.hpp"

namespace xlatr {

AscInfo::AscInfo(TraceFileInfo file) : TraceInfo(std::move(file), XLATR_FORMAT_ASC) {
  if (!isOfOwnFormat()) {
    return;
  }
  lineBreakSize_ = readLineEnding();
  AscHeadKeys keys;
  tryReading([&] { keys = readHead(); });
  dateText_ = keys.dateText();
  hexBase_ = keys.hexBase();
  timestampsMode_ = keys.relativeTimestamps() ? AscTimestamps::Relative : AscTimestamps::Absolute;
  fileVersion_ = keys.fileVersion();
  tryReading([&] { startDays_ = keys.startDays(); });  // an invalid date is no start time
}

// Empty lines count among the ten and are skipped, but their bytes are not counted, so that messages begin a little
// early if there are any: countsNoBytesOfEmptyLines. The count is only checked after a line that is not empty, so the
// head goes on if the tenth line is empty: goesOnAfterAnEmptyTenthLine.
AscHeadKeys AscInfo::readHead() {
  AscHeadKeys keys;
  LineInput input(getPath());
  std::string_view line;
  std::uint64_t lineBegin = 0;
  bool versionSeen = false;
  for (std::int64_t linesLeft = 9; input.next(line); --linesLeft) {
    const std::uint64_t size = input.position() - std::exchange(lineBegin, input.position());
    if (line.empty()) {
      continue;
    }
    if (containsIgnoreCase(line, "BEGIN TRIGGERBLOCK") || versionSeen) {
      return keys;
    }
    versionSeen = containsIgnoreCase(line, "VERSION");
    keys.look(line);
    headerLength_ += size;
    if (linesLeft == 0) {
      return keys;
    }
  }
  return {};
}

}  // namespace xlatr
