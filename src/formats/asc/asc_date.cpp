#include "formats/asc/asc_date.hpp"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <string>

#include "platform/calendar.hpp"
#include "util/date_fields.hpp"
#include "util/date_names.hpp"
#include "util/date_time.hpp"
#include "util/decimal.hpp"
#include "util/render.hpp"
#include "util/start_time.hpp"
#include "util/text.hpp"
#include "util/token_cursor.hpp"

namespace xlatr {
namespace {

constexpr std::int64_t kMillisecond = 1'000'000;
constexpr std::int64_t kSecond = 1'000'000'000;
constexpr std::int64_t kNullDate = kNullDateSeconds * kSecond;

// The number of a month by its name; 0 for any other word.
std::int32_t monthOf(std::string_view word) {
  for (const DateNames& names : allDateNames()) {
    platform::CalendarFields fields;
    const auto taken = parseDateFields(word, "%b", fields, names.locale);
    if (taken && *taken == word.size()) {
      return fields.month;
    }
  }
  return 0;
}

// A fraction of a second, in nanoseconds.
std::int64_t fractionOf(std::string_view digits) {
  constexpr std::size_t kMostOfMilliseconds = 4;
  if (digits.size() <= kMostOfMilliseconds) {
    return scaledDecimal(digits, 0).value_or(0) * kMillisecond;
  }
  return scaledDecimal("0." + std::string(digits), 9).value_or(0);
}

// A date, word by word.
class DateWords {
 public:
  void take(std::string_view word) {
    if (word.find(':') != std::string_view::npos) {
      takeClock(word);
    } else if (isDecimalDigit(word.front())) {
      takeNumber(word);
    } else {
      takeWord(word);
    }
  }

  [[nodiscard]] std::optional<std::int64_t> start() const {
    if (month_ == 0 || day_.empty() || year_.empty() || clock_.empty()) {
      return std::nullopt;
    }
    const auto date =
        startOfDottedText(std::string(day_) + '.' + std::to_string(month_) + '.' + std::string(year_) + " 00:00:00");
    const auto clock = startOfDottedText("1.1.1970 " + std::string(clock_));
    if (!date || !clock) {
      return std::nullopt;
    }
    constexpr std::int64_t kHour = 3600 * kSecond;
    constexpr std::int64_t kNoon = 12;
    const std::int64_t hour = clock->sinceEpochNs / kHour;
    std::int64_t shift = 0;
    if (marker_ == 'P' && hour < kNoon) {
      shift = kNoon * kHour;
    } else if (marker_ == 'A' && hour == kNoon) {
      shift = -kNoon * kHour;
    }
    return date->sinceEpochNs + clock->sinceEpochNs + shift + fraction_;
  }

 private:
  void takeClock(std::string_view word) {
    const std::size_t end = countLeading(word, [](char c) { return isDecimalDigit(c) || c == ':'; });
    clock_ = word.substr(0, end);
    if (end < word.size()) {
      const std::string_view rest = word.substr(end + 1);
      fraction_ = fractionOf(rest.substr(0, countLeading(rest, isDecimalDigit)));
    }
  }

  // A day has two digits at most; a point may follow it.
  void takeNumber(std::string_view word) {
    constexpr std::size_t kMostOfDay = 2;
    const std::string_view digits = word.substr(0, countLeading(word, isDecimalDigit));
    (digits.size() <= kMostOfDay && day_.empty() ? day_ : year_) = digits;
  }

  // The month follows the weekday, which in some languages has the same short name as a month.
  void takeWord(std::string_view word) {
    const char first = toUpperAscii(word.front());
    const bool marks = (first == 'A' || first == 'P') && (word.size() == 1 || word[1] == '.' || word.size() == 2);
    if (marks && !clock_.empty()) {
      marker_ = first;
    } else if (const std::int32_t month = monthOf(word); month != 0 && clock_.empty()) {
      month_ = month;
    }
  }

  std::int32_t month_ = 0;
  std::string_view day_;
  std::string_view year_;
  std::string_view clock_;
  std::int64_t fraction_ = 0;
  char marker_ = '\0';  // A for AM, P for PM
};

void appendFilledNumber(TextBuffer& out, std::uint64_t value, std::size_t digits) {
  const std::string text = std::to_string(value);
  for (std::size_t at = text.size(); at < digits; ++at) {
    out.append('0');
  }
  out.append(text);
}

}  // namespace

std::optional<std::int64_t> startOfAscDate(std::string_view line) {
  DateWords words;
  for (TokenCursor<' ', '\t'> tokens(line); !tokens.atEnd();) {
    words.take(tokens.take());
  }
  const auto start = words.start();
  return start == kNullDate ? std::nullopt : start;
}

void appendAscDate(TextBuffer& out, std::optional<std::int64_t> sinceEpochNs) {
  using Nanoseconds = std::chrono::duration<std::int64_t, std::nano>;
  const auto sinceEpoch = std::chrono::round<std::chrono::milliseconds>(Nanoseconds(sinceEpochNs.value_or(kNullDate)));
  const auto days = std::chrono::floor<std::chrono::days>(sinceEpoch);
  const std::chrono::year_month_day date{std::chrono::sys_days(days)};
  const std::chrono::weekday weekday{std::chrono::sys_days(days)};
  const std::chrono::hh_mm_ss<std::chrono::milliseconds> clock(sinceEpoch - days);
  out.append(kEnglishWeekdays[weekday.c_encoding()]);
  out.append(' ');
  out.append(kEnglishMonths[static_cast<unsigned>(date.month()) - 1]);
  out.append(' ');
  appendFilledNumber(out, static_cast<unsigned>(date.day()), 2);
  char separator = ' ';
  for (const std::int64_t part : {clock.hours().count(), clock.minutes().count(), clock.seconds().count()}) {
    out.append(separator);
    appendFilledNumber(out, static_cast<std::uint64_t>(part), 2);
    separator = ':';
  }
  out.append('.');
  appendFilledNumber(out, static_cast<std::uint64_t>(clock.subseconds().count()), 3);
  out.append(' ');
  appendDecimal(out, static_cast<std::uint64_t>(static_cast<int>(date.year())));
}

}  // namespace xlatr
