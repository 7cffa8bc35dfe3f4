#include "formats/native/btr_session_entry.hpp"

#include <algorithm>
#include <limits>

#include "formats/native/btr_sectors.hpp"
#include "util/failures.hpp"

namespace xlatr {
namespace {

DataSector readSector(BtrSectors& sectors, std::int64_t number) {
  const std::uint8_t* const bytes = sectors.read(static_cast<std::uint64_t>(number));
  if (bytes == nullptr) {
    throwProcessingFailure("Sector pb");
  }
  return DataSector::fromBytes(SectorBytes(bytes, kBtrSectorSize));
}

// A sector that must be one of the entry's session.
DataSector readOwnSector(BtrSectors& sectors, std::int64_t number, const BtrSessionEntry& entry) {
  const DataSector sector = readSector(sectors, number);
  if (!sector.belongsTo(entry.description.dateAndTime)) {
    throwProcessingFailure("Sector pb");
  }
  return sector;
}

// The last sector of [low, high) that matches, when those that match come before those that don't; low when not
// even that one does. Looks at the lowest first.
template <class Matches>
std::int64_t bisect(std::int64_t low, std::int64_t high, const Matches& matches) {
  std::int64_t sector = low;
  do {
    if (matches(sector)) {
      low = sector;
      if (high == sector + 1) {
        return sector;
      }
      sector += (high - low) / 2;
    } else {
      high = sector;
      if (low == high - 1) {
        return low;
      }
      sector = high - (high - low) / 2;
    }
  } while (sector != high);
  return sector;
}

SessionLocation locationOf(std::int64_t sector) {
  return SessionLocation::computed(static_cast<std::uint32_t>(sector));
}

}  // namespace

void findSessionEnd(BtrSectors& sectors, std::uint64_t sectorCount, BtrSessionEntry& entry) {
  constexpr std::uint64_t kAddressable = std::uint64_t{std::numeric_limits<std::uint32_t>::max()} + 1;
  const SessionDateTime& start = entry.description.dateAndTime;
  const auto matches = [&](std::int64_t number) {
    const DataSector sector = readSector(sectors, number);
    return sector.belongsTo(start) && SessionDateTime::fromSectorWords(sector.stamp, sector.time).compareTo(start) == 0;
  };
  try {
    const auto high = static_cast<std::int64_t>(std::min(sectorCount, kAddressable));
    entry.end = locationOf(bisect(entry.firstSector(), high, matches));
  } catch (const ConverterGenericException&) {  // NOLINT(bugprone-empty-catch): the end is not to be found
  }
}

void findSessionStart(BtrSectors& sectors, BtrSessionEntry& entry) {
  const std::int64_t first = entry.firstSector();
  const std::int64_t end = entry.end.sector;
  if (end < first) {
    return;  // not found, or the next session begins before this one
  }
  try {
    const std::uint8_t wrapCounter = readOwnSector(sectors, first, entry).wrapCounter();
    const std::int64_t newest = bisect(first, end + 1, [&](std::int64_t number) {
      return readOwnSector(sectors, number, entry).wrapCounter() == wrapCounter;
    });
    entry.start = newest == end ? entry.description.startLocation : locationOf(newest + 1);
  } catch (const ConverterGenericException&) {  // NOLINT(bugprone-empty-catch): it is read from its first sector then
  }
}

}  // namespace xlatr
