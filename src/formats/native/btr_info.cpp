#include "formats/native/btr_info.hpp"

#include <unordered_set>
#include <utility>

#include "formats/native/btr_sectors.hpp"
#include "util/date_time.hpp"
#include "util/failures.hpp"

namespace xlatr {
namespace {

// The sector number that a link leads to. Loggers count bytes in 32 bits, and so does the link.
std::uint32_t linkedSector(const SessionDescriptor& last) {
  constexpr std::uint8_t kFirstVersionWithLinks = 3;
  if (last.version < kFirstVersionWithLinks || last.continued != 1) {
    return 0;
  }
  return last.nextDirectorySector * std::uint32_t{kBtrSectorSize} / std::uint32_t{kBtrSectorSize};
}

}  // namespace

BtrInfo::BtrInfo(TraceFileInfo file) : TraceInfo(std::move(file), XLATR_FORMAT_BTR) {
  if (!isOfOwnFormat()) {
    return;
  }
  bool whole = false;
  tryReading([&] {
    BtrSectors sectors(getPath());
    whole = readDirectories(sectors) && !sessions_.empty();
  });
  if (!whole) {
    sessions_.clear();  // half a directory would make sessions end where they don't
    return;
  }
  fileVersion_ = sessions_.front().description.version;
  headerLength_ = sessions_.front().description.startLocation.getPosition();
  takeStartTime();
}

bool BtrInfo::getValid() const {
  return !sessions_.empty() && getVersion() >= getLowestVersion() && getVersion() <= getCurrentVersion();
}

// Whether all directories could be read. One that was read already ends the reading: a damaged link must not
// lead in circles.
bool BtrInfo::readDirectories(BtrSectors& sectors) {
  std::unordered_set<std::uint32_t> read;
  std::uint32_t directory = 0;
  do {
    read.insert(directory);
    const std::uint8_t* const bytes = sectors.read(directory);
    if (bytes == nullptr) {
      return false;
    }
    const std::size_t firstUnbounded = sessions_.empty() ? 0 : sessions_.size() - 1;
    const SessionDescriptor last = readDirectory(bytes);
    findEnds(sectors, firstUnbounded);
    directory = linkedSector(last);
  } while (!read.contains(directory));  // the first one, sector 0, is what no link leads to
  return true;
}

// Returns the last descriptor, which has the link.
SessionDescriptor BtrInfo::readDirectory(const std::uint8_t* bytes) {
  SessionDescriptor descriptor;
  for (std::size_t slot = 0; slot < kDirectorySlots; ++slot) {
    loadFields(bytes + slot * kLayoutSize<SessionDescriptor>, descriptor);
    if (descriptor.isUsed()) {
      const auto index = static_cast<std::uint32_t>(sessions_.size() + 1);
      sessions_.push_back({descriptor, descriptor.startLocation, {}, getPath(), index});
    }
  }
  return descriptor;
}

// The last session ends where its sectors end, the others at the latest where the next one begins. Those before
// `firstUnbounded` have had their turn with an earlier directory.
void BtrInfo::findEnds(BtrSectors& sectors, std::size_t firstUnbounded) {
  if (sessions_.empty()) {
    return;
  }
  findSessionEnd(sectors, getFileSize() / kBtrSectorSize, sessions_.back());
  findSessionStart(sectors, sessions_.back());
  for (std::size_t index = sessions_.size() - 1; index > firstUnbounded; --index) {
    BtrSessionEntry& entry = sessions_[index - 1];
    if (entry.end.sector == 0) {
      entry.end = SessionLocation::computed(sessions_[index].firstSector() - 1);
      findSessionStart(sectors, entry);
    }
  }
}

void BtrInfo::takeStartTime() {
  const SessionDateTime& start = sessions_.front().description.dateAndTime;
  try {
    startDays_ = start.parseDateTime().toOleDate();
  } catch (const ConverterGenericException&) {
    startDays_ = DateTime::now().toOleDate();
    startTimeReplaced_ = true;
  }
}

}  // namespace xlatr
