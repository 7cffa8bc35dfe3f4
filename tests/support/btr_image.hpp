// BTR files written down byte by byte, for tests. Knows nothing of the library.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace xlatr::test {

// Year since 2000, month, day, hour, minute, second, hundredths.
struct BtrDate {
  std::uint8_t year = 24;
  std::uint8_t month = 3;
  std::uint8_t day = 1;
  std::uint8_t hour = 8;
  std::uint8_t minute = 15;
  std::uint8_t second = 30;
  std::uint8_t hundredths = 25;
  std::uint8_t dayOfWeek = 5;  // 2024-03-01 was a Friday
};

struct BtrSlot {
  std::uint32_t id = 0x123;
  std::uint8_t flags = 0;
  std::uint8_t bus = 0;  // counted from 0; 15 is the logger
  std::uint8_t length = 0;
  std::uint32_t timestamp = 0;
  std::array<std::uint8_t, 8> data{};
};

// The logger's note of its clock.
inline BtrSlot btrTick(std::uint32_t timestamp) {
  return {.id = 256, .bus = 15, .timestamp = timestamp};
}

struct BtrSession {
  std::uint32_t firstSector = 1;  // 0 leaves the slot of the directory free
  BtrDate date = {};
  std::uint8_t version = 3;
  std::uint64_t startTimestamp = 0;
  std::uint8_t continued = 0;
  std::uint32_t nextDirectory = 0;
};

// An image of so many sectors, which are zero at first.
class BtrImage {
 public:
  explicit BtrImage(std::size_t sectors) : bytes_(sectors * kSector, '\0') {}

  // Slot 0 to 15 of the directory that begins at this sector.
  BtrImage& session(std::size_t slot, const BtrSession& session, std::uint32_t directory = 0) {
    const std::size_t at = directory * kSector + slot * 32;
    put(at, session.version, 1);
    put(at + 3, session.continued, 1);
    put(at + 4, session.nextDirectory, 4);
    put(at + 8, timeWord(session.date), 4);
    put(at + 12, session.date.dayOfWeek, 1);
    put(at + 13, session.date.day, 1);
    put(at + 14, session.date.month, 1);
    put(at + 15, session.date.year, 1);
    put(at + 16, session.startTimestamp, 8);
    put(at + 24, session.firstSector, 4);
    return *this;
  }

  // A sector of the session that began then. Slots beyond those given are unused.
  BtrImage& sector(std::size_t number, const BtrDate& date, const std::vector<BtrSlot>& slots = {},
                   std::uint8_t wrapCounter = 1) {
    const std::size_t at = number * kSector;
    const std::uint32_t stamp = static_cast<std::uint32_t>(wrapCounter) << 24U |
                                static_cast<std::uint32_t>(date.year) << 16U |
                                static_cast<std::uint32_t>(date.month) << 8U | date.day;
    put(at, stamp, 4);
    for (std::size_t index = 0; index < 25; ++index) {
      const std::size_t place = at + 4 + index * 20;
      if (index >= slots.size()) {
        put(place, 0xFFFFFFFF, 4);
        continue;
      }
      const BtrSlot& slot = slots[index];
      put(place, slot.id, 4);
      put(place + 4, slot.flags, 1);
      put(place + 5, static_cast<std::uint64_t>(slot.bus) << 4U | slot.length, 1);
      for (std::size_t byte = 0; byte < 8; ++byte) {
        put(place + 8 + byte, slot.data[byte], 1);
      }
      put(place + 16, slot.timestamp, 4);
    }
    put(at + 504, timeWord(date), 4);
    put(at + 508, stamp ^ timeWord(date), 4);
    return *this;
  }

  BtrImage& put(std::size_t at, std::uint64_t value, std::size_t width) {
    for (std::size_t byte = 0; byte < width; ++byte) {
      bytes_[at + byte] = static_cast<char>(value >> (8 * byte) & 0xFFU);
    }
    return *this;
  }

  [[nodiscard]] const std::string& bytes() const { return bytes_; }

  static constexpr std::size_t kSector = 512;

 private:
  static std::uint32_t timeWord(const BtrDate& date) {
    return static_cast<std::uint32_t>(date.hour) << 24U | static_cast<std::uint32_t>(date.minute) << 16U |
           static_cast<std::uint32_t>(date.second) << 8U | date.hundredths;
  }

  std::string bytes_;
};

}  // namespace xlatr::test
