#include "formats/csv/csv_start_time.hpp"

#include <array>
#include <charconv>
#include <cstdint>
#include <system_error>

#include "platform/calendar.hpp"
#include "util/date_time.hpp"
#include "util/numbers.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

constexpr std::string_view kNumberKey = "$STARTTIME=";
constexpr std::string_view kDateKey = "$BLFSTARTTIME=";

// How much text is collected before it is searched, and how much of it is kept then: more than any start needs.
constexpr std::size_t kGathered = std::size_t{1} << 20;
constexpr std::size_t kKept = 4096;

std::string_view leadingDigits(std::string_view text) {
  return text.substr(0, countLeading(text, isDecimalDigit));
}

// The fields of a date in the order of the text, as their digits.
struct DateText {
  std::array<std::string_view, 7> fields;  // day, month, year, hour, minute, second, millisecond
  std::size_t size = 0;
};

// Any character may separate the second and the millisecond. Without one, all digits but the last two are the second,
// one digit is skipped, and the last one is the millisecond: aFractionWithoutAPoint.
bool splitSecond(std::string_view text, DateText& date) {
  const std::string_view digits = leadingDigits(text);
  const std::string_view rest = text.substr(digits.size());
  const std::string_view after = rest.empty() ? rest : leadingDigits(rest.substr(1));
  if (!digits.empty() && !after.empty() && rest.front() != '\r' && rest.front() != '\n') {
    date.fields[5] = digits;
    date.fields[6] = after;
    date.size += digits.size() + 1 + after.size();
    return true;
  }
  if (digits.size() < 3) {
    return false;
  }
  date.fields[5] = digits.substr(0, digits.size() - 2);
  date.fields[6] = digits.substr(digits.size() - 1);
  date.size += digits.size();
  return true;
}

// dd/mm/yyyy HH:MM:SS.mmm at the start of the text, with any number of digits in each field.
std::optional<DateText> splitDate(std::string_view text) {
  constexpr std::string_view kMarks = "// ::";  // after day, month, year, hour, minute
  DateText date;
  for (std::size_t field = 0; field < kMarks.size(); ++field) {
    const std::string_view digits = leadingDigits(text.substr(date.size));
    date.fields[field] = digits;
    date.size += digits.size();
    if (digits.empty() || date.size == text.size() || text[date.size] != kMarks[field]) {
      return std::nullopt;
    }
    ++date.size;
  }
  return splitSecond(text.substr(date.size), date) ? std::optional(date) : std::nullopt;
}

// Days since 1899-12-30; 0.0 for a date that no calendar has. Fields out of range carry over, so 31 February is a day
// in March.
double toDays(const DateText& date) {
  std::array<std::int32_t, 7> numbers{};
  for (std::size_t field = 0; field < numbers.size(); ++field) {
    const std::string_view digits = date.fields[field];
    if (std::from_chars(digits.data(), digits.data() + digits.size(), numbers[field]).ec != std::errc()) {
      return 0.0;
    }
  }
  const auto [day, month, year, hour, minute, second, millisecond] = numbers;
  const std::int64_t seconds = platform::fromLocalCalendar(
      {.year = year, .month = month, .day = day, .hour = hour, .minute = minute, .second = second});
  if (seconds < 0) {
    return 0.0;
  }
  DateTime start;
  start.seconds = seconds;
  start.millisecond = millisecond;
  return start.toOleDateFractionFirst();
}

}  // namespace

std::optional<CsvStartTime::Found> CsvStartTime::findNumber(std::string_view text) {
  for (auto at = text.find(kNumberKey); at != std::string_view::npos; at = text.find(kNumberKey, at + 1)) {
    const std::string_view value = text.substr(at + kNumberKey.size());
    const std::size_t whole = leadingDigits(value).size();
    if (whole == 0 || whole == value.size() || value[whole] != '.') {
      continue;
    }
    const std::size_t fraction = leadingDigits(value.substr(whole + 1)).size();
    if (fraction > 0) {
      const std::size_t size = whole + 1 + fraction;
      return Found{parseRealPrefix(value.substr(0, size)).value, at + kNumberKey.size() + size};
    }
  }
  return std::nullopt;
}

std::optional<CsvStartTime::Found> CsvStartTime::findDate(std::string_view text) {
  for (auto at = text.find(kDateKey); at != std::string_view::npos; at = text.find(kDateKey, at + 1)) {
    if (const auto date = splitDate(text.substr(at + kDateKey.size()))) {
      return Found{toDays(*date), at + kDateKey.size() + date->size};
    }
  }
  return std::nullopt;
}

void CsvStartTime::look(std::string_view line) {
  text_ += line;
  if (text_.size() > kGathered) {
    search(false);
    text_.erase(0, text_.size() - kKept);
  }
}

void CsvStartTime::finish() {
  search(true);
  text_.clear();
}

// A value that reaches to the end of the text may go on in the next line.
void CsvStartTime::search(bool isWhole) {
  const auto take = [&](std::optional<double>& field, std::optional<Found> found) {
    if (!field && found && (isWhole || found->end < text_.size())) {
      field = found->days;
    }
  };
  take(number_, findNumber(text_));
  take(date_, findDate(text_));
}

double CsvStartTime::days() const {
  return number_.value_or(date_.value_or(0.0));
}

}  // namespace xlatr
