#include "platform/calendar.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>

#include "util/time_zone.hpp"

namespace xlatr::platform {
namespace {

TEST(Calendar, breaksSecondsDownInUtc) {
  const ScopedTimeZone zone(kCentralEurope);
  EXPECT_EQ(toUtcCalendar(0), (CalendarFields{.year = 1970, .month = 1, .day = 1, .weekday = 4}));
  EXPECT_EQ(
      toUtcCalendar(1709251199),
      (CalendarFields{.year = 2024, .month = 2, .day = 29, .hour = 23, .minute = 59, .second = 59, .weekday = 4}));
}

TEST(Calendar, breaksSecondsDownInLocalTime) {
  const ScopedTimeZone zone(kCentralEurope);
  EXPECT_EQ(toLocalCalendar(1709251199),
            (CalendarFields{.year = 2024, .month = 3, .day = 1, .hour = 0, .minute = 59, .second = 59, .weekday = 5}));
  EXPECT_EQ(toLocalCalendar(1719835200),
            (CalendarFields{.year = 2024, .month = 7, .day = 1, .hour = 14, .weekday = 1}));
}

TEST(Calendar, refusesNegativeSeconds) {
  for (const std::int64_t seconds : {std::int64_t{-1}, std::int64_t{-2209161600}, INT64_MIN}) {
    EXPECT_EQ(toUtcCalendar(seconds), std::nullopt) << seconds;
    EXPECT_EQ(toLocalCalendar(seconds), std::nullopt) << seconds;
  }
}

TEST(Calendar, refusesYearsThatDoNotFit) {
  EXPECT_EQ(toUtcCalendar(INT64_MAX), std::nullopt);
  EXPECT_EQ(toLocalCalendar(INT64_MAX), std::nullopt);
}

TEST(Calendar, turnsLocalFieldsBackIntoSeconds) {
  const ScopedTimeZone zone(kCentralEurope);
  EXPECT_EQ(fromLocalCalendar({.year = 2024, .month = 7, .day = 1, .hour = 14}), 1719835200);
  EXPECT_EQ(fromLocalCalendar({.year = 2024, .month = 1, .day = 15, .hour = 13}), 1705320000);
  EXPECT_EQ(fromLocalCalendar({.year = 1970, .month = 1, .day = 1, .hour = 1}), 0);
}

TEST(Calendar, carriesFieldsOutOfRangeOver) {
  EXPECT_EQ(fromLocalCalendar({.year = 2021, .month = 2, .day = 31}), 1614729600);
}

TEST(Calendar, whatTheSystemCannotRepresentIsMinusOne) {
  constexpr auto kLowest = std::numeric_limits<std::int32_t>::min();
  EXPECT_EQ(fromLocalCalendar({.year = kLowest}), -1);
  EXPECT_EQ(fromLocalCalendar({.month = kLowest}), -1);
}

}  // namespace
}  // namespace xlatr::platform
