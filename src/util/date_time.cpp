#include "util/date_time.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>

#include "util/failures.hpp"

namespace xlatr {

namespace {

using platform::CalendarFields;

constexpr double kOleEpochSeconds = 2209161600.0;  // from 1899-12-30 to 1970-01-01
constexpr double kSecondsPerDay = 86400.0;
constexpr CalendarFields kNullDateFields = {
    .year = 1899, .month = 12, .day = 30, .hour = 0, .minute = 0, .second = 0, .weekday = 6};

// Start times come from files and may be anything. What has no seconds becomes a number that no calendar can break
// down.
std::int64_t truncateToSeconds(double value) {
  constexpr double kLimit = 9223372036854775808.0;  // 2 to the 63rd
  if (value >= kLimit) {
    return std::numeric_limits<std::int64_t>::max();
  }
  // A NaN fails this comparison too.
  return value > -kLimit ? static_cast<std::int64_t>(value) : std::numeric_limits<std::int64_t>::min();
}

DateTime splitOleDate(double days, double (*toWhole)(double)) {
  const double daySeconds = days * kSecondsPerDay;
  const double value = daySeconds - kOleEpochSeconds;
  DateTime result(truncateToSeconds(value), 0, 0, true);
  const double remainder = value - static_cast<double>(result.seconds);
  const double millisecond = toWhole(remainder * 1000.0);
  const double allMicroseconds = remainder * 1000000.0;
  const double wholeMilliseconds = millisecond * 1000.0;
  const double microsecond = std::round(std::max(0.0, allMicroseconds - wholeMilliseconds));
  // Only a truncated millisecond leaves so many; a rounded one leaves 500 at most.
  const bool carried = microsecond >= 999.0;
  result.millisecond = static_cast<std::int32_t>(millisecond) + (carried ? 1 : 0);
  result.microsecond = carried ? 0 : static_cast<std::int32_t>(microsecond);
  return result;
}

bool isWithin(std::int32_t value, std::int32_t lowest, std::int32_t highest) {
  return value >= lowest && value <= highest;
}

}  // namespace

CalendarFields DateTime::breakDown(std::int64_t secondsSince1970, bool utc) {
  const auto fields = utc ? platform::toUtcCalendar(secondsSince1970) : platform::toLocalCalendar(secondsSince1970);
  if (fields) {
    return *fields;
  }
  if (secondsSince1970 != kNullDateSeconds) {
    throwParsingFailure(kInvalidDateTime, std::to_string(secondsSince1970));
  }
  return kNullDateFields;
}

DateTime::DateTime() : DateTime(0, 0, 0, false) {}

DateTime::DateTime(std::int64_t secondsSince1970, std::int32_t milliseconds, std::int32_t microseconds, bool utc)
    : seconds(secondsSince1970), millisecond(milliseconds), microsecond(microseconds) {
  setFields(breakDown(seconds, utc));
  validate();
}

DateTime DateTime::now() {
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return {std::chrono::floor<std::chrono::seconds>(sinceEpoch).count(), 0, 0, false};
}

DateTime DateTime::fromLocalFields(const CalendarFields& fields, std::int32_t milliseconds, std::int32_t microseconds) {
  DateTime result(emptyDateTime());
  result.setFields(fields);
  result.millisecond = milliseconds;
  result.microsecond = microseconds;
  result.updateSeconds();
  result.validate();
  return result;
}

DateTime DateTime::fromOleDate(double days) {
  return splitOleDate(days, [](double milliseconds) { return std::round(milliseconds); });
}

DateTime DateTime::fromOleDateTruncated(double days) {
  return splitOleDate(days, [](double milliseconds) { return std::trunc(milliseconds); });
}

void DateTime::updateFields() {
  setFields(breakDown(seconds, false));
}

void DateTime::updateSeconds() {
  // Asked first: the system may know the local time of 1899, which is not that of the scale's day zero.
  if (isNullDate()) {
    seconds = kNullDateSeconds;
    return;
  }
  seconds = platform::fromLocalCalendar(
      {.year = year, .month = month, .day = day, .hour = hour, .minute = minute, .second = second});
}

void DateTime::validate() const {
  const bool valid = year < 1900 ? isNullDate()
                                 : isWithin(month, 1, 12) && isWithin(day, 1, 31) && isWithin(hour, 0, 23) &&
                                       isWithin(minute, 0, 59) && isWithin(second, 0, 59) &&
                                       isWithin(millisecond, 0, 999) && isWithin(microsecond, 0, 999);
  if (!valid) {
    throwParsingFailure(kInvalidDateTime, toDiagnosticText());
  }
}

std::int32_t DateTime::dayOfWeek() const {
  return breakDown(seconds, false).weekday;
}

double DateTime::toOleDate() const {
  return (static_cast<double>(seconds) + kOleEpochSeconds + millisecond / 1000.0 + microsecond / 1000000.0) /
         kSecondsPerDay;
}

double DateTime::toOleDateFractionFirst() const {
  return (static_cast<double>(seconds) + millisecond / 1000.0 + microsecond / 1000000.0 + kOleEpochSeconds) /
         kSecondsPerDay;
}

bool DateTime::isNullDate() const {
  return year == kNullDateFields.year && month == kNullDateFields.month && day == kNullDateFields.day && hour == 0 &&
         minute == 0 && second == 0 && millisecond == 0 && microsecond == 0;
}

void DateTime::setFields(const CalendarFields& fields) {
  year = fields.year;
  month = fields.month;
  day = fields.day;
  hour = fields.hour;
  minute = fields.minute;
  second = fields.second;
}

const DateTime& emptyDateTime() {
  static const DateTime empty(0, 0, 0, true);
  return empty;
}

}  // namespace xlatr
