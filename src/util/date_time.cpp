#include "util/date_time.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>

#include "util/date_fields.hpp"
#include "util/date_names.hpp"
#include "util/failures.hpp"
#include "util/numbers.hpp"

namespace xlatr {

namespace {

using platform::CalendarFields;

constexpr double kOleEpochSeconds = 2209161600.0;  // from 1899-12-30 to 1970-01-01
constexpr double kSecondsPerDay = 86400.0;
constexpr CalendarFields kNullDateFields = {
    .year = 1899, .month = 12, .day = 30, .hour = 0, .minute = 0, .second = 0, .weekday = 6};

CalendarFields breakDown(std::int64_t seconds, bool utc) {
  const auto fields = utc ? platform::toUtcCalendar(seconds) : platform::toLocalCalendar(seconds);
  if (fields) {
    return *fields;
  }
  if (seconds != kNullDateSeconds) {
    throwParsingFailure(kInvalidDateTime, std::to_string(seconds));
  }
  return kNullDateFields;
}

// Start times come from files and may be anything. What has no seconds becomes a number that no calendar breaks down.
std::int64_t truncateToSeconds(double value) {
  constexpr double kLimit = 9223372036854775808.0;  // 2 to the 63rd
  if (value >= kLimit) {
    return std::numeric_limits<std::int64_t>::max();
  }
  // A value that is no number fails this comparison too.
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

// A number of milliseconds in a header. One beyond the signed range becomes negative, which validate refuses like any
// other that is out of range.
std::optional<std::int32_t> parseFraction(std::string_view text) {
  std::uint32_t value = 0;
  return tryParseUInt32Auto(text, value) ? std::optional(static_cast<std::int32_t>(value)) : std::nullopt;
}

// The first of the languages and formats that fits. Each language tries both clocks before the next has its turn.
std::optional<CalendarFields> tryLanguages(std::string_view text, std::string_view format24,
                                           std::string_view format12) {
  CalendarFields fields;
  for (const DateNames& names : allDateNames()) {
    if (parseDateFields(text, format24, fields, names.locale) ||
        parseDateFields(text, format12, fields, names.locale)) {
      return fields;
    }
  }
  return std::nullopt;
}

void appendFilled(std::string& text, std::int32_t value, std::size_t width) {
  std::array<char, 11> buffer{};
  const auto* const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
  std::string_view digits(buffer.data(), static_cast<std::size_t>(end - buffer.data()));
  if (value < 0) {
    // The sign counts into the width and stands in front of the zeros.
    text += '-';
    digits.remove_prefix(1);
    width -= std::min<std::size_t>(width, 1);
  }
  text.append(width - std::min(width, digits.size()), '0').append(digits);
}

std::string dayFirst(const DateTime& date, char separator) {
  std::string text;
  appendFilled(text, date.day, 2);
  text += separator;
  appendFilled(text, date.month, 2);
  text += separator;
  appendFilled(text, date.year, 0);
  return text;
}

void appendTime(std::string& text, std::int32_t hour, std::int32_t minute, std::int32_t second) {
  text += ' ';
  appendFilled(text, hour, 2);
  text += ':';
  appendFilled(text, minute, 2);
  text += ':';
  appendFilled(text, second, 2);
}

void appendTimeAndMillisecond(std::string& text, const DateTime& date) {
  appendTime(text, date.hour, date.minute, date.second);
  text += '.';
  appendFilled(text, date.millisecond, 3);
}

bool isWithin(std::int32_t value, std::int32_t lowest, std::int32_t highest) {
  return value >= lowest && value <= highest;
}

}  // namespace

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

DateTime DateTime::parseGerman(std::string_view text) {
  const std::size_t point = text.rfind('.');
  if (point == std::string_view::npos) {
    return {};
  }
  CalendarFields fields;
  if (!parseDateFields(text.substr(0, point), "%d.%m.%Y %H:%M:%S", fields, "de-DE")) {
    return {};
  }
  const auto milliseconds = parseFraction(text.substr(point + 1));
  return milliseconds ? fromLocalFields(fields, *milliseconds, 0) : DateTime();
}

DateTime DateTime::parseGermanNoFraction(std::string_view text) {
  CalendarFields fields;
  return parseDateFields(text, "%d.%m.%Y %H:%M:%S", fields, "") ? fromLocalFields(fields, 0, 0) : DateTime();
}

DateTime DateTime::parseLocalized(std::string_view text) {
  std::string working(text);
  std::int32_t milliseconds = 0;
  if (const std::size_t point = text.find('.'); point != std::string_view::npos) {
    const std::size_t blank = text.find(' ', point);
    if (blank == std::string_view::npos) {
      return {};
    }
    const auto fraction = parseFraction(text.substr(point + 1, blank - point - 1));
    if (!fraction) {
      return {};
    }
    milliseconds = *fraction;
    working.erase(point, blank - point);
  }
  auto fields = tryLanguages(working, "%a %b %d %T %Y", "%a %b %d %r %Y");
  if (const std::size_t blank = working.find(' '); !fields && blank != std::string::npos) {
    fields = tryLanguages(std::string_view(working).substr(blank), "%b %d %T %Y", "%b %d %r %Y");
  }
  return fields ? fromLocalFields(*fields, milliseconds, 0) : DateTime();
}

void DateTime::updateFields() {
  setFields(breakDown(seconds, false));
}

void DateTime::updateSeconds() {
  // Asked before the system is: it may know the local time of 1899, which is not that of the scale's day zero.
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

std::string DateTime::toDottedText() const {
  std::string text = dayFirst(*this, '.');
  appendTimeAndMillisecond(text, *this);
  return text;
}

std::string DateTime::toDottedTextMicro() const {
  std::string text = toDottedText() + '.';
  appendFilled(text, microsecond, 3);
  return text;
}

std::string DateTime::toDiagnosticText() const {
  std::string text = toDottedText() + '.';
  appendFilled(text, microsecond, 0);
  return text;
}

std::string DateTime::toSlashedText() const {
  std::string text = dayFirst(*this, '/');
  appendTimeAndMillisecond(text, *this);
  return text;
}

std::string DateTime::toIsoLikeText() const {
  std::string text;
  appendFilled(text, year, 0);
  text += '-';
  appendFilled(text, month, 2);
  text += '-';
  appendFilled(text, day, 2);
  appendTimeAndMillisecond(text, *this);
  return text;
}

std::string DateTime::toDottedTextSeconds() const {
  std::string text = dayFirst(*this, '.');
  appendTime(text, hour, minute, second);
  return text;
}

std::string DateTime::toAscText() const {
  const CalendarFields fields = breakDown(seconds, true);
  std::string text(kEnglishWeekdays[static_cast<std::size_t>(fields.weekday)]);
  text.append(" ").append(kEnglishMonths[static_cast<std::size_t>(fields.month - 1)]).append(" ");
  appendFilled(text, fields.day, 2);
  appendTime(text, fields.hour, fields.minute, fields.second);
  text += '.';
  appendFilled(text, millisecond, 3);
  text += ' ';
  appendFilled(text, fields.year, 0);
  return text;
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
