#include "formats/native/btr_directory.hpp"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <limits>

namespace xlatr {

std::optional<std::int64_t> BtrSessionArea::start() const {
  constexpr int kFirstYear = 2000;
  constexpr std::int64_t kSecond = 1'000'000'000;
  constexpr std::int64_t kHundredth = kSecond / 100;
  const SessionDateTime& date = description.dateAndTime;
  const std::chrono::year_month_day day{std::chrono::year(kFirstYear + date.year), std::chrono::month(date.month),
                                        std::chrono::day(date.day)};
  if (!day.ok() || date.hour > 23 || date.minute > 59 || date.second > 60) {
    return std::nullopt;
  }
  const std::chrono::seconds seconds = std::chrono::sys_days(day).time_since_epoch() + std::chrono::hours(date.hour) +
                                       std::chrono::minutes(date.minute) + std::chrono::seconds(date.second);
  return seconds.count() * kSecond + date.hundredths * kHundredth;
}

// A sector that was read already ends the reading: a damaged link must not lead in circles.
BtrDirectory BtrDirectory::read(BtrSectors& file, std::uint64_t sectorCount) {
  BtrDirectory directory;
  std::uint32_t next = 0;
  do {
    const std::uint8_t* const bytes = file.read(next);
    if (bytes == nullptr) {
      directory.damage.note(Remark::SourceCut, 1);
      break;
    }
    directory.sectors.insert(next);
    next = directory.takeSector(bytes);
  } while (next != 0 && !directory.sectors.contains(next));
  directory.bound(sectorCount);
  return directory;
}

std::uint32_t BtrDirectory::takeSector(const std::uint8_t* bytes) {
  constexpr std::uint8_t kFirstVersionWithLinks = 3;
  SessionDescriptor descriptor;
  for (std::size_t slot = 0; slot < kDirectorySlots; ++slot) {
    loadFields(bytes + slot * kLayoutSize<SessionDescriptor>, descriptor);
    if (descriptor.isUsed()) {
      sessions.push_back({descriptor, descriptor.startLocation.sector, descriptor.startLocation.sector});
    }
  }
  const bool goesOn = descriptor.version >= kFirstVersionWithLinks && descriptor.continued == 1;
  return goesOn ? descriptor.nextDirectorySector : 0;
}

// A session ends at the latest where another one begins, or with the file.
void BtrDirectory::bound(std::uint64_t sectorCount) {
  std::vector<std::size_t> order(sessions.size());
  for (std::size_t at = 0; at < order.size(); ++at) {
    order[at] = at;
  }
  std::ranges::stable_sort(order, {}, [this](std::size_t at) { return sessions[at].first; });
  std::uint64_t previous = std::numeric_limits<std::uint64_t>::max();
  for (std::size_t at = 0; at < order.size(); ++at) {
    BtrSessionArea& session = sessions[order[at]];
    std::size_t after = at + 1;
    while (after < order.size() && sessions[order[after]].first == session.first) {
      ++after;
    }
    if (session.first == previous) {
      damage.note(Remark::RecordNotUnderstood, 1);  // another one has its sectors
    } else if (session.first >= sectorCount) {
      damage.note(Remark::SourceCut, 1);
    } else {
      session.end = after < order.size() ? std::min(sessions[order[after]].first, sectorCount) : sectorCount;
    }
    previous = session.first;
  }
}

}  // namespace xlatr
