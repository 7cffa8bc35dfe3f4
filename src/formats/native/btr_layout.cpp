#include "formats/native/btr_layout.hpp"

#include <algorithm>
#include <compare>
#include <tuple>

#include "util/failures.hpp"
#include "util/time_units.hpp"

namespace xlatr {
namespace {

constexpr std::int32_t kFirstYear = 2000;

static_assert(kLayoutSize<SessionDescriptor> == 32);
static_assert(kLayoutSize<DataSector> == kBtrSectorSize);

int signOf(std::strong_ordering order) {
  if (std::is_eq(order)) {
    return 0;
  }
  return std::is_lt(order) ? -1 : 1;
}

std::uint8_t byteOf(std::uint32_t word, unsigned index) {
  return static_cast<std::uint8_t>(word >> (8 * index));
}

}  // namespace

SessionDateTime SessionDateTime::fromDateTime(const DateTime& date) {
  const auto byte = [](std::int32_t value) { return static_cast<std::uint8_t>(value); };
  const auto hundredths = std::chrono::duration_cast<Hundredths>(std::chrono::milliseconds(date.millisecond));
  SessionDateTime result;
  result.hundredths = byte(hundredths.count());
  result.second = byte(date.second);
  result.minute = byte(date.minute);
  result.hour = byte(date.hour);
  result.dayOfWeek = byte(date.dayOfWeek());
  result.day = byte(date.day);
  result.month = byte(date.month);
  result.year = byte(std::max(date.year - kFirstYear, 0));
  return result;
}

SessionDateTime SessionDateTime::fromSectorWords(std::uint32_t stamp, std::uint32_t time) {
  SessionDateTime result;
  result.hundredths = byteOf(time, 0);
  result.second = byteOf(time, 1);
  result.minute = byteOf(time, 2);
  result.hour = byteOf(time, 3);
  result.day = byteOf(stamp, 0);
  result.month = byteOf(stamp, 1);
  result.year = byteOf(stamp, 2);
  try {
    result.dayOfWeek = static_cast<std::uint8_t>(result.parseDateTime().dayOfWeek());
  } catch (const ConverterGenericException&) {
    result.dayOfWeek = kNoWeekday;
  }
  return result;
}

DateTime SessionDateTime::parseDateTime() const {
  const std::chrono::milliseconds fraction = Hundredths(hundredths);
  return DateTime::fromLocalFields(
      {.year = kFirstYear + year, .month = month, .day = day, .hour = hour, .minute = minute, .second = second},
      static_cast<std::int32_t>(fraction.count()), 0);
}

DateTime SessionDateTime::toDateTime() const {
  try {
    return parseDateTime();
  } catch (const ConverterGenericException&) {
    return {};
  }
}

std::uint32_t SessionDateTime::dateWord() const {
  return std::uint32_t{year} << 16U | std::uint32_t{month} << 8U | day;
}

std::uint32_t SessionDateTime::timeWord() const {
  return std::uint32_t{hour} << 24U | std::uint32_t{minute} << 16U | std::uint32_t{second} << 8U | hundredths;
}

int SessionDateTime::compareTo(const SessionDateTime& other) const {
  if (dayOfWeek == kNoWeekday) {
    return signOf(std::tuple(dateWord(), timeWord()) <=> std::tuple(other.dateWord(), other.timeWord()));
  }
  const DateTime mine = toDateTime();
  const DateTime others = other.toDateTime();
  return signOf(std::tuple(mine.seconds, mine.millisecond, mine.microsecond) <=>
                std::tuple(others.seconds, others.millisecond, others.microsecond));
}

DataSector DataSector::fromBytes(SectorBytes bytes) {
  DataSector result;
  loadFields(bytes.data(), result);
  return result;
}

SectorImage DataSector::toBytes() const {
  SectorImage image{};
  storeFields(image.data(), *this);
  return image;
}

bool DataSector::belongsTo(const SessionDateTime& sessionStart) const {
  return stamp != 0 && time == sessionStart.timeWord() && check == (stamp ^ time);
}

void DataSector::seal(const SessionDateTime& sessionStart, std::uint8_t wrapCounter) {
  stamp = std::uint32_t{wrapCounter} << 24U | sessionStart.dateWord();
  time = sessionStart.timeWord();
  check = stamp ^ time;
}

MsgEntry& DataSector::entryAt(std::size_t index) {
  if (index >= kEntries) {
    throwProcessingFailure("BTR index out of entry bounds");
  }
  return entries[index];
}

}  // namespace xlatr
