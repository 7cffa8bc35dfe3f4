#include "formats/asc/asc_info.hpp"

#include <exception>
#include <utility>

#include "io/line_input.hpp"
#include "util/files.hpp"
#include "util/text.hpp"

namespace xlatr {

AscInfo::AscInfo(TraceFileInfo file) : TraceInfo(std::move(file), XLATR_FORMAT_ASC) {
  if (!isOfOwnFormat()) {
    return;
  }
  lineBreakSize_ = static_cast<std::uint8_t>(detectLineEnding(getPath()));
  AscHeadKeys keys;
  try {
    keys = readHead();
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): a file that can't be read has no head
  }
  dateText_ = keys.dateText();
  hexBase_ = keys.hexBase();
  timestampsMode_ = keys.relativeTimestamps() ? AscTimestamps::Relative : AscTimestamps::Absolute;
  fileVersion_ = keys.fileVersion();
  try {
    startTime_ = keys.startTime();
  } catch (const std::exception&) {
    startTime_ = 0.0;  // a date that is none is no start time
  }
}

// Empty lines count among the ten and are passed over; their bytes are not counted to the head, though, so that with
// them messages begin a little early: countsNoBytesOfEmptyLines. And since the ten are only looked at behind a line
// that is not empty, a tenth line that is empty lets the head go on: goesOnBehindAnEmptyTenthLine.
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
