// One recording session of a BTR file.
#pragma once

#include <cstdint>
#include <string>

#include "formats/native/btr_layout.hpp"

namespace xlatr {

struct BtrSessionEntry {
  SessionDescriptor description;
  SessionLocation start;  // the first sector to read
  SessionLocation end;    // the last sector of its run; sector 0 when it could not be found
  std::string sourcePath;
  std::uint32_t index = 0;  // counted from 1 in the order of the directory

  [[nodiscard]] std::uint32_t firstSector() const { return description.startLocation.sector; }
  // Whether the logger came to the end of the session's area and went on at its beginning.
  [[nodiscard]] bool isCircular() const { return start.sector != firstSector(); }
  // Of the run, whatever is in the sectors. Wraps when the end could not be found.
  [[nodiscard]] std::uint32_t sectorsCount() const { return end.sector - firstSector() + 1; }
};

}  // namespace xlatr
