// Where the sessions of a BTR file end and begin. The directory tells only where their areas begin.
#pragma once

#include <cstdint>

#include "formats/native/btr_sectors.hpp"
#include "formats/native/btr_session_entry.hpp"

namespace xlatr {

// Sets the entry's end to the last sector that belongs to it, counted from its first one, in a file of that many
// sectors. Where that can't be found out, because a sector that is looked at can't be read, the end stays as it is.
void findSessionEnd(BtrSectors& sectors, std::uint64_t sectorCount, BtrSessionEntry& entry);

// Sets the entry's start to its oldest sector: its first one, or in a session that was recorded circularly the one
// behind the newest. Where that can't be found out, and while the end is not known, the start stays as it is.
void findSessionStart(BtrSectors& sectors, BtrSessionEntry& entry);

}  // namespace xlatr
