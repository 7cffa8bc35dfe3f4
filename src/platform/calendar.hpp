// The calendar of the system: the one place that asks for its time zone rules.
#pragma once

#include <cstdint>
#include <optional>

namespace xlatr::platform {

struct CalendarFields {
  std::int32_t year = 1970;  // in full
  std::int32_t month = 1;    // 1 to 12
  std::int32_t day = 1;      // 1 to 31
  std::int32_t hour = 0;
  std::int32_t minute = 0;
  std::int32_t second = 0;
  std::int32_t weekday = 4;  // 0 for Sunday to 6 for Saturday

  bool operator==(const CalendarFields&) const = default;
};

// Break seconds since 1970-01-01 00:00:00 UTC down into fields. Nothing for a negative count, whatever the system's own
// conversion could make of it, and nothing for a year that the fields can't hold. Safe from any thread.
[[nodiscard]] std::optional<CalendarFields> toLocalCalendar(std::int64_t seconds);
[[nodiscard]] std::optional<CalendarFields> toUtcCalendar(std::int64_t seconds);

// The seconds since 1970-01-01 00:00:00 UTC of local fields, or -1 if the system can't represent them. The system finds
// out whether daylight saving applies. Fields out of range carry over, so that 31 February is 2 or 3 March. The weekday
// is ignored. Safe from any thread.
[[nodiscard]] std::int64_t fromLocalCalendar(const CalendarFields& fields);

}  // namespace xlatr::platform
