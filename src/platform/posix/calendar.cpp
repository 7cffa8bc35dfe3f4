#include "platform/calendar.hpp"

#include <time.h>

#include <limits>

namespace xlatr::platform {

namespace {

constexpr std::int64_t kYearOffset = 1900;
constexpr std::int64_t kMonthOffset = 1;

template <typename Convert>
std::optional<CalendarFields> breakDown(std::int64_t seconds, Convert convert) {
  if (seconds < 0 || seconds > std::numeric_limits<time_t>::max()) {
    return std::nullopt;
  }
  const auto time = static_cast<time_t>(seconds);
  tm parts{};
  if (convert(&time, &parts) == nullptr || parts.tm_year > std::numeric_limits<std::int32_t>::max() - kYearOffset) {
    return std::nullopt;
  }
  CalendarFields fields;
  fields.year = static_cast<std::int32_t>(parts.tm_year + kYearOffset);
  fields.month = static_cast<std::int32_t>(parts.tm_mon + kMonthOffset);
  fields.day = parts.tm_mday;
  fields.hour = parts.tm_hour;
  fields.minute = parts.tm_min;
  fields.second = parts.tm_sec;
  fields.weekday = parts.tm_wday;
  return fields;
}

}  // namespace

std::optional<CalendarFields> toLocalCalendar(std::int64_t seconds) {
  return breakDown(seconds, ::localtime_r);
}

std::optional<CalendarFields> toUtcCalendar(std::int64_t seconds) {
  return breakDown(seconds, ::gmtime_r);
}

std::int64_t fromLocalCalendar(const CalendarFields& fields) {
  const std::int64_t year = fields.year - kYearOffset;
  const std::int64_t month = fields.month - kMonthOffset;
  constexpr std::int64_t kLowest = std::numeric_limits<int>::min();
  if (year < kLowest || month < kLowest) {
    return -1;
  }
  tm parts{};
  parts.tm_year = static_cast<int>(year);
  parts.tm_mon = static_cast<int>(month);
  parts.tm_mday = fields.day;
  parts.tm_hour = fields.hour;
  parts.tm_min = fields.minute;
  parts.tm_sec = fields.second;
  parts.tm_isdst = -1;
  return ::mktime(&parts);
}

}  // namespace xlatr::platform
