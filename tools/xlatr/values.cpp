#include "values.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>
#include <span>

#include "command_failure.hpp"

namespace xlatr::cli {
namespace {

constexpr std::int64_t kNsPerSecond = 1'000'000'000;

// A whole number of units of 10^-9 from a decimal number; nothing for what is none, or too large.
std::optional<std::int64_t> billionths(std::string_view text) {
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) {
    text.remove_prefix(1);
  }
  const std::size_t point = std::min(text.find('.'), text.size());
  const std::string_view whole = text.substr(0, point);
  std::string fraction(text.substr(std::min(point + 1, text.size())));
  constexpr std::size_t kDigits = 9;
  const auto isDigits = [](std::string_view digits) {
    return std::ranges::all_of(digits, [](char digit) { return digit >= '0' && digit <= '9'; });
  };
  if ((whole.empty() && fraction.empty()) || !isDigits(whole) || !isDigits(fraction)) {
    return std::nullopt;
  }
  fraction.resize(kDigits, '0');
  std::int64_t seconds = 0;
  std::int64_t rest = 0;
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max() / kNsPerSecond - 1;
  if (!whole.empty() &&
      (std::from_chars(whole.data(), whole.data() + whole.size(), seconds).ec != std::errc() || seconds > kMost)) {
    return std::nullopt;
  }
  std::from_chars(fraction.data(), fraction.data() + kDigits, rest);
  const std::int64_t value = seconds * kNsPerSecond + rest;
  return negative ? -value : value;
}

// A number of so many digits at the front, which is cut off together with what follows it.
std::optional<int> takeField(std::string_view& text, std::size_t digits, std::string_view after) {
  int value = 0;
  if (text.size() < digits) {
    return std::nullopt;
  }
  const auto [end, error] = std::from_chars(text.data(), text.data() + digits, value);
  if (error != std::errc() || end != text.data() + digits || value < 0) {
    return std::nullopt;
  }
  text.remove_prefix(digits);
  if (text.empty() || after.empty()) {
    return value;
  }
  if (after.find(text.front()) == std::string_view::npos) {
    return std::nullopt;
  }
  text.remove_prefix(1);
  return value;
}

// "2024-03-01", "2024-03-01T08:00", "2024-03-01 08:00:05.25".
std::optional<std::int64_t> dateValue(std::string_view text) {
  const auto year = takeField(text, 4, "-");
  const auto month = year ? takeField(text, 2, "-") : std::nullopt;
  const auto day = month ? takeField(text, 2, "T ") : std::nullopt;
  if (!day) {
    return std::nullopt;
  }
  const std::chrono::year_month_day date{std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                                         std::chrono::day(static_cast<unsigned>(*day))};
  constexpr int kFirstYear = 1700;  // nanoseconds of 64 bits reach from 1677 to 2262
  constexpr int kLastYear = 2200;
  if (!date.ok() || *year < kFirstYear || *year > kLastYear) {
    return std::nullopt;
  }
  int hour = 0;
  int minute = 0;
  std::int64_t second = 0;
  if (!text.empty()) {
    const auto hours = takeField(text, 2, ":");
    const auto minutes = hours ? takeField(text, 2, ":") : std::nullopt;
    const auto seconds = text.empty() ? std::optional<std::int64_t>(0) : billionths(text);
    constexpr std::int64_t kMinute = 60 * kNsPerSecond;
    if (!minutes || *hours > 23 || *minutes > 59 || !seconds || *seconds < 0 || *seconds >= kMinute) {
      return std::nullopt;
    }
    hour = *hours;
    minute = *minutes;
    second = *seconds;
  }
  const std::chrono::nanoseconds time = std::chrono::sys_days(date).time_since_epoch() + std::chrono::hours(hour) +
                                        std::chrono::minutes(minute) + std::chrono::nanoseconds(second);
  return time.count();
}

struct Unit {
  std::string_view name;
  std::int64_t factor;
};

// A decimal number with one of the units after it; the first of these is that of a number without one.
std::optional<std::int64_t> unitsOf(std::string_view text, std::span<const Unit> units) {
  const std::size_t end = std::min(text.find_first_not_of("0123456789."), text.size());
  const auto unit = end == text.size() ? units.begin() : std::ranges::find(units, text.substr(end), &Unit::name);
  const auto number = billionths(text.substr(0, end));
  if (unit == units.end() || !number) {
    return std::nullopt;
  }
  const std::int64_t whole = *number / kNsPerSecond;
  const std::int64_t rest = *number % kNsPerSecond;
  if (whole > std::numeric_limits<std::int64_t>::max() / unit->factor - 1) {
    return std::nullopt;
  }
  // Exact as far as it matters: the mantissa has at least 53 bits, and what is left of a unit is less than one.
  const auto part =
      std::llround(static_cast<long double>(rest) / kNsPerSecond * static_cast<long double>(unit->factor));
  return whole * unit->factor + part;
}

}  // namespace

void failValue(std::string_view option, std::string_view value, std::string_view reason) {
  throw CommandFailure(ExitCode::WrongUsage, std::string(option).append(" ").append(value).append(": ").append(reason));
}

std::int64_t secondsValue(std::string_view option, std::string_view value) {
  const auto seconds = billionths(value);
  if (!seconds) {
    failValue(option, value, "this is no number of seconds, such as 12.5");
  }
  return *seconds;
}

TimeValue timeValue(std::string_view option, std::string_view value) {
  if (const auto seconds = billionths(value)) {
    return {*seconds, false};
  }
  const auto date = dateValue(value);
  if (!date) {
    failValue(option, value,
              "this is neither a number of seconds, such as 12.5, nor a time, such as 2024-03-01T08:00:05");
  }
  return {*date, true};
}

std::int64_t durationValue(std::string_view option, std::string_view value) {
  static constexpr std::array kUnits = {Unit{"s", kNsPerSecond}, Unit{"m", 60 * kNsPerSecond},
                                        Unit{"min", 60 * kNsPerSecond}, Unit{"h", 3600 * kNsPerSecond},
                                        Unit{"ms", 1'000'000}};
  const auto duration = unitsOf(value, kUnits);
  if (!duration || *duration == 0) {
    failValue(option, value, "this is no time, such as 30s, 10m or 1h");
  }
  return *duration;
}

std::uint64_t sizeValue(std::string_view option, std::string_view value) {
  static constexpr std::array kUnits = {Unit{"B", 1},          Unit{"k", 1000},          Unit{"K", 1000},
                                        Unit{"M", 1'000'000},  Unit{"G", 1'000'000'000}, Unit{"Ki", 1LL << 10},
                                        Unit{"Mi", 1LL << 20}, Unit{"Gi", 1LL << 30}};
  const auto size = unitsOf(value, kUnits);
  if (!size || *size == 0) {
    failValue(option, value, "this is no size, such as 100M or 2G");
  }
  return static_cast<std::uint64_t>(*size);
}

std::uint64_t toleranceValue(std::string_view option, std::string_view value) {
  static constexpr std::array kUnits = {Unit{"s", kNsPerSecond}, Unit{"ms", 1'000'000}, Unit{"us", 1000},
                                        Unit{"ns", 1}};
  const auto tolerance = unitsOf(value, kUnits);
  if (!tolerance) {
    failValue(option, value, "say how long: 0, 10us, 1.5ms, 2s");
  }
  return static_cast<std::uint64_t>(*tolerance);
}

std::uint32_t bitRateValue(std::string_view option, std::string_view value) {
  static constexpr std::array kUnits = {Unit{"", 1}, Unit{"k", 1000}, Unit{"M", 1'000'000}, Unit{"G", 1'000'000'000}};
  constexpr std::int64_t kHighest = 4'000'000'000;
  const auto rate = unitsOf(value, kUnits);
  if (!rate || *rate == 0 || *rate > kHighest) {
    failValue(option, value, "say how many bits per second: 19200, 500k or 2M");
  }
  return static_cast<std::uint32_t>(*rate);
}

BitRatePair bitRatesValue(std::string_view option, std::string_view value) {
  const std::size_t comma = value.find(',');
  BitRatePair rates{.nominal = bitRateValue(option, value.substr(0, comma))};
  if (comma != std::string_view::npos) {
    rates.data = bitRateValue(option, value.substr(comma + 1));
  }
  return rates;
}

std::uint32_t numberValue(std::string_view option, std::string_view value, std::uint32_t largest) {
  const bool hexadecimal = value.starts_with("0x") || value.starts_with("0X");
  const std::string_view digits = value.substr(hexadecimal ? 2 : 0);
  std::uint32_t number = 0;
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), number, hexadecimal ? 16 : 10);
  if (error != std::errc() || end != digits.data() + digits.size() || number > largest) {
    failValue(option, value, "this is no number from 0 to " + std::to_string(largest));
  }
  return number;
}

std::int32_t zoneValue(std::string_view option, std::string_view value) {
  if (value == "UTC" || value == "Z" || value == "utc") {
    return 0;
  }
  std::string digits(value.substr(std::min<std::size_t>(1, value.size())));
  std::erase(digits, ':');
  const bool isSigned = value.starts_with('+') || value.starts_with('-');
  const bool isNumber = std::ranges::all_of(digits, [](char digit) { return digit >= '0' && digit <= '9'; });
  constexpr std::size_t kHoursAlone = 2;
  constexpr std::size_t kBoth = 4;
  if (!isSigned || !isNumber || digits.empty() || digits.size() > kBoth || digits.size() == kBoth - 1) {
    failValue(option, value, "this is no zone, such as UTC or +01:00");
  }
  const int number = std::stoi(digits);
  const int minutes = digits.size() <= kHoursAlone ? number * 60 : number / 100 * 60 + number % 100;
  constexpr int kMost = 14 * 60;
  if (minutes > kMost || (digits.size() == kBoth && number % 100 > 59)) {
    failValue(option, value, "there is no such zone");
  }
  return value.starts_with('-') ? -minutes : minutes;
}

std::vector<std::string> listValue(std::string_view option, const std::vector<std::string>& values) {
  std::vector<std::string> pieces;
  for (const std::string& value : values) {
    for (std::size_t at = 0; at <= value.size();) {
      const std::size_t end = std::min(value.find(',', at), value.size());
      if (end == at) {
        failValue(option, value, "a piece of the list is empty");
      }
      pieces.push_back(value.substr(at, end - at));
      at = end + 1;
    }
  }
  return pieces;
}

std::size_t choiceValue(std::string_view option, std::string_view value, const std::vector<std::string_view>& words) {
  const auto found = std::ranges::find(words, value);
  if (found == words.end()) {
    std::string list;
    for (const std::string_view word : words) {
      list.append(list.empty() ? "" : ", ").append(word);
    }
    failValue(option, value, "use one of " + list);
  }
  return static_cast<std::size_t>(found - words.begin());
}

}  // namespace xlatr::cli
