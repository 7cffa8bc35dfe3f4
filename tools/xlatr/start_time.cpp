#include "start_time.hpp"

#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace xlatr::cli {

namespace {

constexpr double kMillisecondsPerDay = 86'400'000.0;

std::string padded(std::int64_t value, std::size_t width) {
  const std::string digits = std::to_string(value);
  return std::string(width > digits.size() ? width - digits.size() : 0, '0') + digits;
}

}  // namespace

std::string startText(const xlatr_head& head) {
  const std::chrono::sys_time<std::chrono::nanoseconds> start{std::chrono::nanoseconds(head.start_ns)};
  const auto day = std::chrono::floor<std::chrono::days>(start);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss time(start - day);
  std::string text = padded(static_cast<int>(date.year()), 4) + "-" + padded(static_cast<unsigned>(date.month()), 2) +
                     "-" + padded(static_cast<unsigned>(date.day()), 2) + "T" + padded(time.hours().count(), 2) + ":" +
                     padded(time.minutes().count(), 2) + ":" + padded(time.seconds().count(), 2) + "." +
                     padded(time.subseconds().count(), 9);
  constexpr std::size_t kFewestDecimals = 3;
  const std::size_t fewest = text.find('.') + 1 + kFewestDecimals;
  while (text.size() > fewest && text.back() == '0') {
    text.pop_back();
  }
  if (head.zone_known != 0) {
    const std::int32_t minutes = std::abs(head.zone_minutes);
    text += (head.zone_minutes < 0 ? "-" : "+") + padded(minutes / 60, 2) + ":" + padded(minutes % 60, 2);
  }
  return text;
}

std::string startTimeText(double days) {
  using std::chrono::sys_days;
  using std::chrono::year;
  constexpr sys_days kEpoch{year{1899} / 12 / 30};
  constexpr double kFirst = (sys_days{year{1} / 1 / 1} - kEpoch).count();
  constexpr double kEnd = (sys_days{year{9999} / 12 / 31} - kEpoch).count();
  // Written so that NaN fails it too.
  if (days == 0.0 || !(days >= kFirst && days < kEnd)) {
    return {};
  }
  const std::chrono::sys_time<std::chrono::milliseconds> start =
      kEpoch + std::chrono::milliseconds(std::llround(days * kMillisecondsPerDay));
  const auto day = std::chrono::floor<std::chrono::days>(start);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss time(start - day);
  return padded(static_cast<int>(date.year()), 4) + "-" + padded(static_cast<unsigned>(date.month()), 2) + "-" +
         padded(static_cast<unsigned>(date.day()), 2) + "T" + padded(time.hours().count(), 2) + ":" +
         padded(time.minutes().count(), 2) + ":" + padded(time.seconds().count(), 2) + "." +
         padded(time.subseconds().count(), 3);
}

}  // namespace xlatr::cli
