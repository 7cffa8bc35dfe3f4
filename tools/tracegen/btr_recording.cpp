#include "tracegen/btr_recording.hpp"

#include <algorithm>
#include <string_view>

#include "tracegen/line_printer.hpp"

namespace tracegen {
namespace {

constexpr std::size_t kSectorSize = 512;
constexpr std::size_t kSlotSize = 20;
constexpr std::uint64_t kFramesPerSector = 24;  // after a tick
constexpr std::uint32_t kSessionsPerDirectory = 16;
constexpr std::uint32_t kUnusedId = 0xFFFFFFFF;
constexpr std::uint32_t kTickId = 256;
constexpr std::uint8_t kLogger = 15;
constexpr std::uint64_t kMicrosecondsPerSecond = 1000000;
constexpr std::uint64_t kSecondsPerDay = 86400;
constexpr std::uint64_t kShortlyBeforeTheWrap = 0x100000000 - kMicrosecondsPerSecond;

using Sector = std::array<std::uint8_t, kSectorSize>;

void put(Sector& sector, std::size_t at, std::uint64_t value, std::size_t width) {
  for (std::size_t byte = 0; byte < width; ++byte) {
    sector[at + byte] = static_cast<std::uint8_t>(value >> (8 * byte));
  }
}

void handOn(const Sector& sector, const Sink& sink) {
  sink(std::string_view(reinterpret_cast<const char*>(sector.data()), sector.size()));
}

// A moment as the logger stores it, and the two words of it that each sector repeats.
struct StoredDate {
  std::uint32_t time = 0;  // hundredths, second, minute, hour from the lowest byte up
  std::uint32_t date = 0;  // day, month, year since 2000
  std::uint8_t weekday = 0;

  static StoredDate fromMicroseconds(std::uint64_t sinceUnixEpoch) {
    const std::uint64_t seconds = sinceUnixEpoch / kMicrosecondsPerSecond;
    const std::uint64_t ofDay = seconds % kSecondsPerDay;
    StoredDate stored;
    stored.time = static_cast<std::uint32_t>(ofDay / 3600 << 24U | ofDay / 60 % 60 << 16U | ofDay % 60 << 8U |
                                             sinceUnixEpoch % kMicrosecondsPerSecond / 10000);
    stored.weekday = static_cast<std::uint8_t>((seconds / kSecondsPerDay + 4) % 7);  // the epoch was a Thursday
    stored.date = dateOf(seconds / kSecondsPerDay);
    return stored;
  }

 private:
  // Counted off year by year and month by month; recordings begin in this century.
  static std::uint32_t dateOf(std::uint64_t day) {
    constexpr std::uint64_t kDaysBefore2000 = 10957;
    constexpr std::array<std::uint8_t, 12> kMonths{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    day -= kDaysBefore2000;
    std::uint32_t year = 0;
    for (; day >= (year % 4 == 0 ? 366U : 365U); ++year) {
      day -= year % 4 == 0 ? 366U : 365U;
    }
    std::uint32_t month = 0;
    const auto length = [&] { return kMonths[month] + (month == 1 && year % 4 == 0 ? 1U : 0U); };
    for (; day >= length(); ++month) {
      day -= length();
    }
    return year << 16U | (month + 1) << 8U | static_cast<std::uint32_t>(day + 1);
  }
};

// The slot of a frame. An error or a status is not a frame and has no identifier.
void putEntry(Sector& sector, std::size_t at, const Entry& entry, std::uint32_t timestamp) {
  const bool frame = entry.kind == EntryKind::Data || entry.kind == EntryKind::Remote;
  const unsigned flags = frame ? (entry.kind == EntryKind::Remote ? 0x01U : 0U) | (entry.extended ? 0x02U : 0U) : 0x10U;
  put(sector, at, frame ? entry.canId : kUnusedId, 4);
  put(sector, at + 4, flags, 1);
  put(sector, at + 5, (entry.bus - 1U) << 4U | entry.dataLength, 1);
  if (entry.kind != EntryKind::Remote) {
    std::ranges::copy(entry.payload(), sector.begin() + static_cast<std::ptrdiff_t>(at + 8));
  }
  put(sector, at + 16, timestamp, 4);
}

// One session of a known number of messages.
class Session {
 public:
  Session(TrafficModel& model, std::uint32_t index, std::uint64_t messages) : index_(index), messages_(messages) {
    startTimestamp_ = index % 2 == 0 ? 0 : kShortlyBeforeTheWrap;
    if (messages > 0) {
      entry_ = &model.next();
      firstUs_ = entry_->timeUs;
    }
    date_ = StoredDate::fromMicroseconds((kStartUnixSeconds + std::uint64_t{index} * 60) * kMicrosecondsPerSecond +
                                         firstUs_);
  }

  // An empty session has an empty sector.
  [[nodiscard]] static std::uint64_t sectorsFor(std::uint64_t messages) {
    return std::max<std::uint64_t>(1, (messages + kFramesPerSector - 1) / kFramesPerSector);
  }

  void describe(Sector& directory, std::uint32_t firstSector) const {
    const std::size_t at = std::size_t{index_ % kSessionsPerDirectory} * 32;
    put(directory, at, 3, 1);
    put(directory, at + 8, date_.time, 4);
    put(directory, at + 12, date_.weekday, 1);
    put(directory, at + 13, date_.date, 3);
    put(directory, at + 16, startTimestamp_, 8);
    put(directory, at + 24, firstSector, 4);
  }

  [[nodiscard]] std::vector<Sector> record(TrafficModel& model, bool circular) {
    const std::uint64_t count = sectorsFor(messages_);
    const std::uint64_t newest = circular && count > 1 ? std::max<std::uint64_t>(1, count / 3) : 0;
    std::vector<Sector> sectors;
    sectors.reserve(count);
    for (std::uint64_t sector = 0; sector < count; ++sector) {
      sectors.push_back(recordSector(model, sector >= count - newest ? 2 : 1));
    }
    std::rotate(sectors.begin(), sectors.end() - static_cast<std::ptrdiff_t>(newest), sectors.end());
    return sectors;
  }

 private:
  Sector recordSector(TrafficModel& model, std::uint32_t wrapCounter) {
    Sector sector{};
    for (std::size_t slot = 0; slot <= kFramesPerSector; ++slot) {
      put(sector, 4 + slot * kSlotSize, kUnusedId, 4);
    }
    for (std::size_t slot = 0; slot <= kFramesPerSector && recorded_ < messages_; ++slot) {
      const std::size_t at = 4 + slot * kSlotSize;
      const auto timestamp = static_cast<std::uint32_t>(startTimestamp_ + entry_->timeUs - firstUs_);
      if (slot == 0) {
        put(sector, at, kTickId, 4);
        put(sector, at + 5, kLogger << 4U, 1);
        put(sector, at + 16, timestamp, 4);
        continue;
      }
      putEntry(sector, at, *entry_, timestamp);
      if (++recorded_ < messages_) {
        entry_ = &model.next();
      }
    }
    const std::uint32_t stamp = wrapCounter << 24U | date_.date;
    put(sector, 0, stamp, 4);
    put(sector, 504, date_.time, 4);
    put(sector, 508, stamp ^ date_.time, 4);
    return sector;
  }

  std::uint32_t index_;
  std::uint64_t messages_;
  std::uint64_t recorded_ = 0;
  std::uint64_t startTimestamp_;
  const Entry* entry_ = nullptr;  // the next one
  std::uint64_t firstUs_ = 0;
  StoredDate date_;
};

}  // namespace

void limitToBtr(TrafficOptions& options) {
  options.fdShare = 0;
  options.xlShare = 0;
  options.eventRate = 0;
  options.commentRate = 0;
}

std::uint64_t writeBtrRecording(TrafficModel& model, const BtrForm& form, std::uint64_t messages, const Sink& sink) {
  std::uint64_t written = 0;
  for (std::uint32_t first = 0; first < form.sessions; first += kSessionsPerDirectory) {
    const std::uint32_t end = std::min(form.sessions, first + kSessionsPerDirectory);
    Sector directory{};
    std::vector<Sector> sectors;
    for (std::uint32_t index = first; index < end; ++index) {
      const std::uint64_t share = messages / form.sessions + (index < messages % form.sessions ? 1 : 0);
      Session session(model, index, share);
      session.describe(directory, static_cast<std::uint32_t>(written + 1 + sectors.size()));
      const std::vector<Sector> own = session.record(model, form.circular);
      sectors.insert(sectors.end(), own.begin(), own.end());
    }
    if (end < form.sessions) {
      put(directory, 15 * 32 + 3, 1, 1);
      put(directory, 15 * 32 + 4, written + 1 + sectors.size(), 4);
    }
    handOn(directory, sink);
    for (const Sector& sector : sectors) {
      handOn(sector, sink);
    }
    written += 1 + sectors.size();
  }
  return written * kSectorSize;
}

}  // namespace tracegen
