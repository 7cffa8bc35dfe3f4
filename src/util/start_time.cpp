#include "util/start_time.hpp"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "util/decimal.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

using Nanoseconds = std::chrono::duration<std::int64_t, std::nano>;

constexpr std::int64_t kNanosecondsPerMicrosecond = 1'000;
constexpr std::int64_t kNanosecondsPerMillisecond = 1'000'000;
constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr std::chrono::sys_days kNullDate = std::chrono::year(1899) / 12 / 30;

// Reads numbers one after the other, each with the character that must follow it.
class Fields {
 public:
  explicit Fields(std::string_view text) : rest_(text.substr(countLeading(text, isSpaceCharacter))) {}

  // At most nine digits and, unless it is '\0', the character after them.
  std::optional<std::int64_t> take(char end) {
    constexpr std::size_t kMostDigits = 9;
    const std::size_t digits = countLeading(rest_, isDecimalDigit);
    if (digits == 0 || digits > kMostDigits) {
      return std::nullopt;
    }
    if (end != '\0' && (digits == rest_.size() || rest_[digits] != end)) {
      return std::nullopt;
    }
    const auto value = scaledDecimal(rest_.substr(0, digits), 0);
    rest_.remove_prefix(digits + (end == '\0' ? 0 : 1));
    return value;
  }
  // Whether the character is next, which is then taken.
  bool skip(char character) {
    const bool found = !rest_.empty() && rest_.front() == character;
    rest_.remove_prefix(found ? 1 : 0);
    return found;
  }

 private:
  std::string_view rest_;
};

}  // namespace

std::optional<std::int64_t> startOfDays(std::string_view days) {
  // Units of 1e-14 days, of which 1000 are 864 ns; the days of a thousand years fit into 64 bits.
  constexpr unsigned kDecimals = 14;
  constexpr std::int64_t kUnits = 1000;
  constexpr std::int64_t kNanosecondsPerUnits = 864;
  const auto units = scaledDecimal(days, kDecimals);
  if (!units) {
    return std::nullopt;
  }
  const std::int64_t rest = *units % kUnits * kNanosecondsPerUnits;
  const std::int64_t half = rest < 0 ? -kUnits / 2 : kUnits / 2;
  const std::int64_t sinceNullDate = *units / kUnits * kNanosecondsPerUnits + (rest + half) / kUnits;
  constexpr std::int64_t kNullDateNs = Nanoseconds(kNullDate.time_since_epoch()).count();
  if (sinceNullDate < std::numeric_limits<std::int64_t>::min() - kNullDateNs) {
    return std::nullopt;
  }
  return sinceNullDate + kNullDateNs;
}

std::optional<StartText> startOfDottedText(std::string_view text) {
  static constexpr std::array<char, 6> kEnds = {'.', '.', ' ', ':', ':', '\0'};
  Fields fields(text);
  std::array<std::int64_t, kEnds.size()> values{};
  for (std::size_t at = 0; at < kEnds.size(); ++at) {
    const auto value = fields.take(kEnds[at]);
    if (!value) {
      return std::nullopt;
    }
    values[at] = *value;
  }
  const auto [day, month, year, hour, minute, second] = values;
  constexpr std::int64_t kLastYear = 2200;  // nanoseconds since 1970 reach to 2262
  constexpr std::int64_t kFirstYear = 1700;
  // The calendar keeps a day and a month in a byte each, into which larger numbers would wrap.
  if (day > 31 || month > 12 || year < kFirstYear || year > kLastYear || hour > 23 || minute > 59 || second > 60) {
    return std::nullopt;
  }
  const std::chrono::year_month_day date{std::chrono::year(static_cast<int>(year)),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  if (!date.ok()) {
    return std::nullopt;
  }
  StartText start{Nanoseconds(std::chrono::sys_days(date).time_since_epoch()).count() +
                      ((hour * 60 + minute) * 60 + second) * kNanosecondsPerSecond,
                  kNanosecondsPerSecond};
  for (const std::int64_t unit : {kNanosecondsPerMillisecond, kNanosecondsPerMicrosecond}) {
    const auto value = fields.skip('.') ? fields.take('\0') : std::nullopt;
    if (!value) {
      break;
    }
    start.sinceEpochNs += *value * unit;
    start.resolutionNs = unit;
  }
  return start;
}

std::optional<std::int64_t> startOf(std::optional<std::string_view> days, std::optional<std::string_view> dottedText) {
  constexpr std::int64_t kLastOfFifteenDigits = 10'000;  // 1e-10 days, a little more
  const auto number = days ? startOfDays(*days) : std::nullopt;
  const auto text = dottedText ? startOfDottedText(*dottedText) : std::nullopt;
  // Headers without a start have day zero of the scale.
  constexpr std::int64_t kNullDateNs = Nanoseconds(kNullDate.time_since_epoch()).count();
  if (!number || *number == kNullDateNs) {
    return text && text->sinceEpochNs != kNullDateNs ? std::optional(text->sinceEpochNs) : std::nullopt;
  }
  if (!text || text->resolutionNs >= kLastOfFifteenDigits) {
    return number;
  }
  // Without signs, since the two may be further apart than 64 bits reach.
  const std::uint64_t later = static_cast<std::uint64_t>(text->sinceEpochNs) - static_cast<std::uint64_t>(*number);
  constexpr std::uint64_t kLast = kLastOfFifteenDigits;
  const bool same = later + kLast <= 2 * kLast;
  return same ? text->sinceEpochNs : number;
}

double daysOfStart(std::int64_t sinceEpochNs) {
  using Days = std::chrono::duration<double, std::chrono::days::period>;
  // Whole days apart from the rest, so that both are as exact as a double can be.
  const Nanoseconds sinceEpoch(sinceEpochNs);
  const auto whole = std::chrono::floor<std::chrono::days>(sinceEpoch);
  return Days(whole - kNullDate.time_since_epoch()).count() + Days(sinceEpoch - whole).count();
}

DateTime dateTimeOfStart(std::int64_t sinceEpochNs) {
  using std::chrono::microseconds;
  const microseconds sinceEpoch = std::chrono::round<microseconds>(Nanoseconds(sinceEpochNs));
  const auto seconds = std::chrono::floor<std::chrono::seconds>(sinceEpoch);
  const auto days = std::chrono::floor<std::chrono::days>(seconds);
  const std::chrono::year_month_day date{std::chrono::sys_days(days)};
  const std::chrono::hh_mm_ss<std::chrono::seconds> clock(seconds - days);
  DateTime start = emptyDateTime();
  start.seconds = seconds.count();
  start.year = static_cast<int>(date.year());
  start.month = static_cast<std::int32_t>(static_cast<unsigned>(date.month()));
  start.day = static_cast<std::int32_t>(static_cast<unsigned>(date.day()));
  start.hour = static_cast<std::int32_t>(clock.hours().count());
  start.minute = static_cast<std::int32_t>(clock.minutes().count());
  start.second = static_cast<std::int32_t>(clock.seconds().count());
  const microseconds fraction = sinceEpoch - seconds;
  start.millisecond = static_cast<std::int32_t>(fraction.count() / 1'000);
  start.microsecond = static_cast<std::int32_t>(fraction.count() % 1'000);
  return start;
}

}  // namespace xlatr
