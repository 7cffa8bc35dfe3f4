// The records of a BTR file, which is the memory of a hardware logger as it stands: sectors of 512 bytes, all integers
// little endian. Plain values; the sizes of their images are constants.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "util/date_time.hpp"
#include "util/layout.hpp"

namespace xlatr {

inline constexpr std::size_t kBtrSectorSize = 512;

using SectorBytes = std::span<const std::uint8_t, kBtrSectorSize>;
using SectorImage = std::array<std::uint8_t, kBtrSectorSize>;

// A place in the file.
struct SessionLocation {
  static constexpr std::uint8_t kComputed = 0xFF;

  static consteval auto fields() {
    return FieldList{
        Field{0, "sector", &SessionLocation::sector},
        Field{4, "position", &SessionLocation::position},
        Field{5, "unused", &SessionLocation::unused},
    };
  }

  std::uint32_t sector = 0;
  std::uint8_t position = 0;  // kComputed in a location that no logger wrote
  std::array<std::uint8_t, 3> unused{};

  // Bytes from the start of the file.
  [[nodiscard]] std::uint64_t getPosition() const { return std::uint64_t{sector} * kBtrSectorSize; }
  [[nodiscard]] static SessionLocation computed(std::uint32_t sector) { return {sector, kComputed, {}}; }

  bool operator==(const SessionLocation&) const = default;
};

// The start of a session in the logger's local time.
struct SessionDateTime {
  static constexpr std::uint8_t kNoWeekday = 0xFF;  // of a date that does not exist

  static consteval auto fields() {
    return FieldList{
        Field{0, "hundredths", &SessionDateTime::hundredths}, Field{1, "second", &SessionDateTime::second},
        Field{2, "minute", &SessionDateTime::minute},         Field{3, "hour", &SessionDateTime::hour},
        Field{4, "dayOfWeek", &SessionDateTime::dayOfWeek},   Field{5, "day", &SessionDateTime::day},
        Field{6, "month", &SessionDateTime::month},           Field{7, "year", &SessionDateTime::year},
    };
  }

  std::uint8_t hundredths = 0;
  std::uint8_t second = 0;
  std::uint8_t minute = 0;
  std::uint8_t hour = 0;
  std::uint8_t dayOfWeek = 0;  // Sunday is 0
  std::uint8_t day = 0;
  std::uint8_t month = 0;
  std::uint8_t year = 0;  // since 2000

  // A year before 2000 becomes 0.
  [[nodiscard]] static SessionDateTime fromDateTime(const DateTime& date);
  // From the words of a data sector. The weekday of a date that does not exist is kNoWeekday.
  [[nodiscard]] static SessionDateTime fromSectorWords(std::uint32_t stamp, std::uint32_t time);

  // For a date that does not exist the first raises, and the second gives second 0 of 1970.
  [[nodiscard]] DateTime parseDateTime() const;
  [[nodiscard]] DateTime toDateTime() const;
  // Days since 1899-12-30, from toDateTime.
  [[nodiscard]] double toDouble() const { return toDateTime().toOleDate(); }
  // -1, 0 or 1. If this one's date does not exist, the stored fields are compared, otherwise the moments that both
  // stand for.
  [[nodiscard]] int compareTo(const SessionDateTime& other) const;

  // Year, month and day, and hour to hundredths, as one number each.
  [[nodiscard]] std::uint32_t dateWord() const;
  [[nodiscard]] std::uint32_t timeWord() const;

  bool operator==(const SessionDateTime&) const = default;
};

// A session's line in a directory.
struct SessionDescriptor {
  static consteval auto fields() {
    return FieldList{
        Field{0, "version", &SessionDescriptor::version},
        Field{1, "unused", &SessionDescriptor::unused},
        Field{3, "continued", &SessionDescriptor::continued},
        Field{4, "nextDirectorySector", &SessionDescriptor::nextDirectorySector},
        Field{8, "dateAndTime", &SessionDescriptor::dateAndTime},
        Field{16, "startTimestampUs", &SessionDescriptor::startTimestampUs},
        Field{24, "startLocation", &SessionDescriptor::startLocation},
    };
  }

  std::uint8_t version = 0;  // file version
  std::array<std::uint8_t, 2> unused{};
  std::uint8_t continued = 0;  // 1 in the last descriptor of a directory that goes on in another sector
  std::uint32_t nextDirectorySector = 0;
  SessionDateTime dateAndTime;
  std::uint64_t startTimestampUs = 0;  // where the time stamps of all buses begin
  SessionLocation startLocation;       // sector 0 marks a slot without a session

  [[nodiscard]] bool isUsed() const { return startLocation.sector != 0; }

  bool operator==(const SessionDescriptor&) const = default;
};

inline constexpr std::size_t kDirectorySlots = kBtrSectorSize / kLayoutSize<SessionDescriptor>;

// One frame slot of a data sector.
struct MsgEntry {
  static constexpr std::uint32_t kNoId = 0xFFFFFFFF;  // of an unused slot, and of error and status frames
  static constexpr std::uint8_t kRemote = 0x01;       // the bits of `flags`
  static constexpr std::uint8_t kExtended = 0x02;
  static constexpr std::uint8_t kError = 0x10;  // an error or a status frame
  static constexpr std::uint8_t kLoggerSource = 0xF;

  static consteval auto fields() {
    return FieldList{
        Field{0, "id", &MsgEntry::id},         Field{4, "flags", &MsgEntry::flags},
        Field{5, "source", &MsgEntry::source}, Field{6, "unused", &MsgEntry::unused},
        Field{8, "data", &MsgEntry::data},     Field{16, "timestampUs", &MsgEntry::timestampUs},
    };
  }

  std::uint32_t id = kNoId;
  std::uint8_t flags = 0;
  std::uint8_t source = 0;  // the bus, counted from 0, in the high half, the length in the low half
  std::uint16_t unused = 0;
  std::array<std::uint8_t, 8> data{};
  std::uint32_t timestampUs = 0;  // begins again at 0 after 71.6 minutes

  // The bus counted from 0, or kLoggerSource for what the logger notes for itself.
  [[nodiscard]] std::uint8_t getSource() const { return static_cast<std::uint8_t>(source >> 4U); }
  [[nodiscard]] std::uint8_t getLength() const { return source & 0xFU; }
  // At most `length` data bytes; there are no more than eight.
  [[nodiscard]] std::span<const std::uint8_t> payload(std::size_t length) const {
    return std::span(data).first(std::min(length, data.size()));
  }
  [[nodiscard]] bool isRemote() const { return (flags & kRemote) != 0; }
  [[nodiscard]] bool isExtended() const { return (flags & kExtended) != 0; }
  [[nodiscard]] bool isError() const { return (flags & kError) != 0; }

  bool operator==(const MsgEntry&) const = default;
};

// A sector of frames.
struct DataSector {
  static constexpr std::size_t kEntries = 25;

  static consteval auto fields() {
    return FieldList{
        Field{0, "stamp", &DataSector::stamp},
        Field{4, "entries", &DataSector::entries},
        Field{504, "time", &DataSector::time},
        Field{508, "check", &DataSector::check},
    };
  }

  std::uint32_t stamp = 0;  // day, month, year since 2000 and the wrap counter, from the lowest byte up
  std::array<MsgEntry, kEntries> entries{};
  std::uint32_t time = 0;  // the first four bytes of the session's date
  std::uint32_t check = 0;

  [[nodiscard]] static DataSector fromBytes(SectorBytes bytes);
  [[nodiscard]] SectorImage toBytes() const;

  // How often the logger had begun the session's area anew when it wrote the sector.
  [[nodiscard]] std::uint8_t wrapCounter() const { return static_cast<std::uint8_t>(stamp >> 24U); }
  // Whether the sector is whole and of the session that began then.
  [[nodiscard]] bool belongsTo(const SessionDateTime& sessionStart) const;
  // Marks the sector as one of that session.
  void seal(const SessionDateTime& sessionStart, std::uint8_t wrapCounter);
  // Raises "BTR index out of entry bounds" for an index that no slot has.
  [[nodiscard]] MsgEntry& entryAt(std::size_t index);

  bool operator==(const DataSector&) const = default;
};

}  // namespace xlatr
