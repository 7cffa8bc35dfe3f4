// One recording session of a BTR file, and where it ends and begins: the directory tells only where its area begins.
#pragma once

#include <cstdint>
#include <string>

#include "formats/native/btr_layout.hpp"

namespace xlatr {

class BtrSectors;

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

// Sets the entry's end to the last sector that belongs to it, counted from its first one, in a file of that many
// sectors. Where that can't be found out, because the file ends before a sector that is looked at, the end stays as it
// is. std::ios_base::failure when the system refuses, here and below.
void findSessionEnd(BtrSectors& sectors, std::uint64_t sectorCount, BtrSessionEntry& entry);

// Sets the entry's start to its oldest sector: its first one, or in a session that was recorded circularly the one
// after the newest. Where that can't be found out, and while the end is not known, the start stays as it is.
void findSessionStart(BtrSectors& sectors, BtrSessionEntry& entry);

}  // namespace xlatr
