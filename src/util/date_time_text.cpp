// The text forms of a DateTime.
#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>

#include "util/date_names.hpp"
#include "util/date_time.hpp"

namespace xlatr {

namespace {

void appendFilled(std::string& text, std::int32_t value, std::size_t width) {
  std::array<char, 11> buffer{};
  const auto* const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
  std::string_view digits(buffer.data(), static_cast<std::size_t>(end - buffer.data()));
  if (value < 0) {
    // The sign counts towards the width and comes before the zeros.
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

}  // namespace

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
  const platform::CalendarFields fields = breakDown(seconds, true);
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

}  // namespace xlatr
