#include "util/date_time.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "util/failures.hpp"
#include "util/process_locale.hpp"
#include "util/time_zone.hpp"

namespace xlatr {
namespace {

constexpr std::int64_t kDay = 86400;
constexpr std::int64_t kNovember2012 = 1351765230;  // 2012-11-01 10:20:30 UTC

template <typename Act>
std::string failureOf(Act act) {
  try {
    act();
  } catch (const ConverterParsingException& failure) {
    return failure.what();
  }
  return "no failure";
}

DateTime fields(std::int32_t year, std::int32_t month, std::int32_t day, std::int32_t hour = 0, std::int32_t minute = 0,
                std::int32_t second = 0, std::int32_t millisecond = 0, std::int32_t microsecond = 0) {
  DateTime date;
  date.year = year;
  date.month = month;
  date.day = day;
  date.hour = hour;
  date.minute = minute;
  date.second = second;
  date.millisecond = millisecond;
  date.microsecond = microsecond;
  return date;
}

// Construction

TEST(DateTime, defaultIsSecondZeroInLocalFields) {
  EXPECT_EQ(DateTime().toDottedTextMicro(), "01.01.1970 00:00:00.000.000");
  const ScopedTimeZone zone(kCentralEurope);
  EXPECT_EQ(DateTime().toDottedTextMicro(), "01.01.1970 01:00:00.000.000");
  EXPECT_EQ(DateTime().seconds, 0);
}

TEST(DateTime, defaultIsValidWestOfGreenwich) {
  const ScopedTimeZone zone(kNewYork);
  EXPECT_EQ(DateTime().toDottedText(), "31.12.1969 19:00:00.000");
}

TEST(DateTime, emptyDateTimeIsSecondZeroInUtcFields) {
  const ScopedTimeZone zone(kCentralEurope);
  EXPECT_EQ(emptyDateTime().seconds, 0);
  EXPECT_EQ(emptyDateTime().toDottedTextMicro(), "01.01.1970 00:00:00.000.000");
}

TEST(DateTime, breaksSecondsDownAsTheFlagSays) {
  const ScopedTimeZone zone(kCentralEurope);
  struct Case {
    std::int64_t seconds;
    bool utc;
    std::string_view expected;
  };
  const Case cases[] = {
      {kNovember2012, true, "01.11.2012 10:20:30.123.456"}, {kNovember2012, false, "01.11.2012 11:20:30.123.456"},
      {1719835200, true, "01.07.2024 12:00:00.123.456"},    {1719835200, false, "01.07.2024 14:00:00.123.456"},
      {1709251199, true, "29.02.2024 23:59:59.123.456"},    {1709251199, false, "01.03.2024 00:59:59.123.456"},
      {32535216000, true, "01.01.3001 00:00:00.123.456"},
  };
  for (const Case& c : cases) {
    const DateTime date(c.seconds, 123, 456, c.utc);
    EXPECT_EQ(date.toDottedTextMicro(), c.expected);
    EXPECT_EQ(date.seconds, c.seconds);
  }
}

TEST(DateTime, theSecondsOfTheNullDateGiveTheNullDate) {
  for (const char* const zoneName : {"UTC", kCentralEurope, kNewYork}) {
    const ScopedTimeZone zone(zoneName);
    for (const bool utc : {true, false}) {
      const DateTime date(kNullDateSeconds, 0, 0, utc);
      EXPECT_EQ(date.toDottedTextMicro(), "30.12.1899 00:00:00.000.000") << zoneName;
      EXPECT_EQ(date.seconds, -2209161600) << zoneName;
    }
  }
}

TEST(DateTime, anyOtherNegativeSecondThrowsWithTheNumber) {
  for (const bool utc : {true, false}) {
    EXPECT_EQ(failureOf([utc] { const DateTime date(-1, 0, 0, utc); }), "Invalid data for a DateTime object: {-1}");
    EXPECT_EQ(failureOf([utc] { const DateTime date(-2209161601, 0, 0, utc); }),
              "Invalid data for a DateTime object: {-2209161601}");
  }
}

TEST(DateTime, secondsOfAYearThatDoesNotFitThrow) {
  for (const bool utc : {true, false}) {
    EXPECT_EQ(failureOf([utc] { const DateTime date(INT64_MAX, 0, 0, utc); }),
              "Invalid data for a DateTime object: {9223372036854775807}");
    EXPECT_EQ(failureOf([utc] { const DateTime date(67767976233532800, 0, 0, utc); }),
              "Invalid data for a DateTime object: {67767976233532800}")
        << "the first second of the year 2147483648";
    EXPECT_EQ(DateTime(67767976233532799, 0, 0, utc).year, 2147483647);
  }
}

TEST(DateTime, constructorValidatesTheFraction) {
  EXPECT_EQ(failureOf([] { const DateTime date(0, 1000, 0, true); }),
            "Invalid data for a DateTime object: {01.01.1970 00:00:00.1000.0}");
  EXPECT_EQ(failureOf([] { const DateTime date(0, 0, 1000, true); }),
            "Invalid data for a DateTime object: {01.01.1970 00:00:00.000.1000}");
  EXPECT_EQ(failureOf([] { const DateTime date(kNullDateSeconds, 1, 0, true); }),
            "Invalid data for a DateTime object: {30.12.1899 00:00:00.001.0}");
}

TEST(DateTime, nowHasLocalFieldsAndNoFraction) {
  const ScopedTimeZone zone(kNewYork);
  const DateTime now = DateTime::now();
  EXPECT_EQ(now.millisecond, 0);
  EXPECT_EQ(now.microsecond, 0);
  EXPECT_GT(now.seconds, 1704067200) << "the start of 2024";
  EXPECT_EQ(now, DateTime(now.seconds, 0, 0, false));
}

TEST(DateTime, localFieldsGetTheirSeconds) {
  const ScopedTimeZone zone(kCentralEurope);
  const DateTime date =
      DateTime::fromLocalFields({.year = 2024, .month = 7, .day = 1, .hour = 14, .minute = 0, .second = 0}, 12, 34);
  EXPECT_EQ(date.seconds, 1719835200);
  EXPECT_EQ(date.toDottedTextMicro(), "01.07.2024 14:00:00.012.034");
  EXPECT_EQ(failureOf([] {
              static_cast<void>(DateTime::fromLocalFields(
                  {.year = 2024, .month = 13, .day = 1, .hour = 0, .minute = 0, .second = 0}, 0, 0));
            }),
            "Invalid data for a DateTime object: {01.13.2024 00:00:00.000.0}");
}

// The two sides of the object

TEST(DateTime, updateFieldsIsLocalAndKeepsTheFraction) {
  const ScopedTimeZone zone(kCentralEurope);
  DateTime date(0, 12, 34, true);
  date.seconds = kNovember2012;
  date.updateFields();
  EXPECT_EQ(date.toDottedTextMicro(), "01.11.2012 11:20:30.012.034");
  date.seconds = kNullDateSeconds;
  date.updateFields();
  EXPECT_EQ(date.toDottedTextSeconds(), "30.12.1899 00:00:00");
  date.seconds = -5;
  EXPECT_EQ(failureOf([&date] { date.updateFields(); }), "Invalid data for a DateTime object: {-5}");
}

TEST(DateTime, updateSecondsKnowsDaylightSaving) {
  const ScopedTimeZone zone(kCentralEurope);
  DateTime summer = fields(2024, 7, 1, 14);
  summer.updateSeconds();
  EXPECT_EQ(summer.seconds, 1719835200);
  DateTime winter = fields(2024, 1, 15, 13);
  winter.updateSeconds();
  EXPECT_EQ(winter.seconds, 1705320000);
}

TEST(DateTime, updateSecondsOfTheNullDateIsTheSameInEveryTimeZone) {
  for (const char* const zoneName : {"UTC", kCentralEurope, kNewYork, "XXX-0:53:28", "XXX12"}) {
    const ScopedTimeZone zone(zoneName);
    DateTime date = fields(1899, 12, 30);
    date.updateSeconds();
    EXPECT_EQ(date.seconds, -2209161600) << zoneName;
  }
}

TEST(DateTime, updateSecondsCountsDaysBeyondTheMonthOn) {
  DateTime date = fields(2021, 2, 31);
  date.updateSeconds();
  EXPECT_EQ(date.seconds, 1614729600) << "2021-03-03";
  EXPECT_EQ(date.toDottedTextSeconds(), "31.02.2021 00:00:00");
}

TEST(DateTime, updateSecondsOfAbsurdFieldsIsMinusOne) {
  constexpr auto kLowest = std::numeric_limits<std::int32_t>::min();
  DateTime date = fields(kLowest, 1, 1);
  date.updateSeconds();
  EXPECT_EQ(date.seconds, -1);
  date = fields(2000, kLowest, 1);
  date.updateSeconds();
  EXPECT_EQ(date.seconds, -1);
}

TEST(DateTime, validateHoldsEachFieldInItsRange) {
  struct Case {
    std::string_view name;
    DateTime date;
    bool valid;
  };
  const Case cases[] = {
      {"lowest", fields(1900, 1, 1), true},
      {"highest", fields(9999, 12, 31, 23, 59, 59, 999, 999), true},
      {"a year of five digits", fields(12345, 1, 1), true},
      {"month 0", fields(2000, 0, 1), false},
      {"month 13", fields(2000, 13, 1), false},
      {"day 0", fields(2000, 1, 0), false},
      {"day 32", fields(2000, 1, 32), false},
      {"hour -1", fields(2000, 1, 1, -1), false},
      {"hour 24", fields(2000, 1, 1, 24), false},
      {"minute -1", fields(2000, 1, 1, 0, -1), false},
      {"minute 60", fields(2000, 1, 1, 0, 60), false},
      {"second -1", fields(2000, 1, 1, 0, 0, -1), false},
      {"second 60", fields(2000, 1, 1, 0, 0, 60), false},
      {"millisecond -1", fields(2000, 1, 1, 0, 0, 0, -1), false},
      {"millisecond 1000", fields(2000, 1, 1, 0, 0, 0, 1000), false},
      {"microsecond -1", fields(2000, 1, 1, 0, 0, 0, 0, -1), false},
      {"microsecond 1000", fields(2000, 1, 1, 0, 0, 0, 0, 1000), false},
      {"the null date", fields(1899, 12, 30), true},
      {"a year below 1900", fields(1899, 12, 31), false},
      {"the null date with an hour", fields(1899, 12, 30, 1), false},
      {"the null date with a minute", fields(1899, 12, 30, 0, 1), false},
      {"the null date with a second", fields(1899, 12, 30, 0, 0, 1), false},
      {"the null date with a millisecond", fields(1899, 12, 30, 0, 0, 0, 1), false},
      {"the null date with a microsecond", fields(1899, 12, 30, 0, 0, 0, 0, 1), false},
      {"year -1", fields(-1, 12, 30), false},
  };
  for (const Case& c : cases) {
    const std::string failure = failureOf([&c] { c.date.validate(); });
    EXPECT_EQ(failure,
              c.valid ? "no failure" : "Invalid data for a DateTime object: {" + c.date.toDiagnosticText() + "}")
        << c.name;
  }
}

TEST(DateTime, aDayOf31PassesInEveryMonth) {
  for (std::int32_t month = 1; month <= 12; ++month) {
    EXPECT_NO_THROW(fields(2021, month, 31).validate()) << month;
  }
}

TEST(DateTime, dayOfWeekIsThatOfTheLocalDay) {
  struct Case {
    std::int64_t seconds;
    std::int32_t expected;
  };
  // 2012-11-04 was a Sunday.
  const Case cases[] = {{kNovember2012, 4},
                        {kNovember2012 + kDay, 5},
                        {kNovember2012 + 2 * kDay, 6},
                        {kNovember2012 + 3 * kDay, 0},
                        {kNovember2012 + 4 * kDay, 1},
                        {0, 4}};
  for (const Case& c : cases) {
    EXPECT_EQ(DateTime(c.seconds, 0, 0, true).dayOfWeek(), c.expected) << c.seconds;
  }
  // 2024-02-29 23:59:59 UTC is Friday already in Central Europe.
  const ScopedTimeZone zone(kCentralEurope);
  EXPECT_EQ(DateTime(1709251199, 0, 0, true).dayOfWeek(), 5);
}

TEST(DateTime, dayOfWeekOfTheNullDateIsSaturday) {
  for (const char* const zoneName : {"UTC", kCentralEurope, kNewYork}) {
    const ScopedTimeZone zone(zoneName);
    EXPECT_EQ(DateTime(kNullDateSeconds, 0, 0, true).dayOfWeek(), 6);
  }
}

TEST(DateTime, dayOfWeekOfANegativeSecondThrows) {
  DateTime date;
  date.seconds = -86400;
  EXPECT_EQ(failureOf([&date] { static_cast<void>(date.dayOfWeek()); }),
            "Invalid data for a DateTime object: {-86400}");
}

// Days since 1899-12-30

constexpr double kDay2012 = 41214.0;  // 2012-11-01

TEST(OleDate, zeroGivesTheNullDate) {
  for (const char* const zoneName : {"UTC", kCentralEurope}) {
    const ScopedTimeZone zone(zoneName);
    for (const DateTime& date : {DateTime::fromOleDate(0.0), DateTime::fromOleDateTruncated(0.0)}) {
      EXPECT_EQ(date.seconds, kNullDateSeconds);
      EXPECT_EQ(date.toDottedTextMicro(), "30.12.1899 00:00:00.000.000");
    }
  }
}

TEST(OleDate, givesUtcFields) {
  const ScopedTimeZone zone(kCentralEurope);
  EXPECT_EQ(DateTime::fromOleDate(kDay2012).toDottedTextMicro(), "01.11.2012 00:00:00.000.000");
  EXPECT_EQ(DateTime::fromOleDate(kDay2012 + 0.75).toDottedTextMicro(), "01.11.2012 18:00:00.000.000");
  EXPECT_EQ(DateTime::fromOleDate(25569.0).seconds, 0);
}

// The days that come to exactly these seconds. There are some for every second and fraction of two near 1970, where the
// days step more finely than the seconds since 1899.
double daysOf(double seconds) {
  const double days = (seconds + 2209161600.0) / 86400.0;
  for (const double near : {days, std::nextafter(days, 0.0), std::nextafter(days, 1e9)}) {
    const double product = near * 86400.0;
    if (product - 2209161600.0 == seconds) {
      return near;
    }
  }
  ADD_FAILURE() << seconds << " can't be hit";
  return days;
}

TEST(OleDate, millisecondIsRoundedOrTruncated) {
  struct Case {
    double seconds;
    std::int32_t rounded;
    std::int32_t roundedMicro;
    std::int32_t truncated;
    std::int32_t truncatedMicro;
  };
  const Case cases[] = {
      {100.0, 0, 0, 0, 0},
      {100.5, 500, 0, 500, 0},
      {100.25, 250, 0, 250, 0},
      {100.0625, 63, 0, 62, 500},         // 62.5 ms: the half away from zero, and no negative microseconds
      {100.03125, 31, 250, 31, 250},      // 31.25 ms
      {100.046875, 47, 0, 46, 875},       // 46.875 ms
      {100.9990234375, 999, 23, 999, 23}  // 999.0234375 ms
  };
  for (const Case& c : cases) {
    const double days = daysOf(c.seconds);
    const DateTime rounded = DateTime::fromOleDate(days);
    EXPECT_EQ(rounded.seconds, 100) << c.seconds;
    EXPECT_EQ(rounded.millisecond, c.rounded) << c.seconds;
    EXPECT_EQ(rounded.microsecond, c.roundedMicro) << c.seconds;
    const DateTime truncated = DateTime::fromOleDateTruncated(days);
    EXPECT_EQ(truncated.millisecond, c.truncated) << c.seconds;
    EXPECT_EQ(truncated.microsecond, c.truncatedMicro) << c.seconds;
  }
}

// 1 - 2^-13 s is 999.878 ms: rounded it is 1000 ms.
TEST(OleDate, aMillisecondOf1000StandsAndIsNotCarriedIntoTheSecond) {
  const DateTime date = DateTime::fromOleDate(daysOf(101.0 - 1.0 / 8192.0));
  EXPECT_EQ(date.seconds, 100);
  EXPECT_EQ(date.second, 40);
  EXPECT_EQ(date.millisecond, 1000);
  EXPECT_EQ(date.microsecond, 0);
  EXPECT_EQ(date.toDottedTextMicro(), "01.01.1970 00:01:40.1000.000");
}

// Around 1970 the seconds of the scale step by 2^-21 s, a little under half a microsecond.
TEST(OleDate, aMicrosecondOf999OrMoreOfATruncatedDateCountsAsTheNextMillisecond) {
  struct Case {
    double seconds;
    std::int32_t millisecond;
    std::int32_t microsecond;
  };
  const double step = 1.0 / 2097152.0;
  const Case cases[] = {
      {100.0 + 2094.0 * step, 0, 998},  // 998.497 us
      {100.0 + 2095.0 * step, 1, 0},    // 998.974 us, rounded to 999
      {100.0 + 2096.0 * step, 1, 0},    // 999.451 us, rounded to 999
      {100.0 + 2097.0 * step, 1, 0},    // 999.928 us, rounded to 1000
      {100.0 + 2098.0 * step, 1, 0},    // 1000.404 us
      {100.0 + 2100.0 * step, 1, 1},    // 1001.358 us
  };
  for (const Case& c : cases) {
    const DateTime date = DateTime::fromOleDateTruncated(daysOf(c.seconds));
    EXPECT_EQ(date.millisecond, c.millisecond) << c.seconds;
    EXPECT_EQ(date.microsecond, c.microsecond) << c.seconds;
  }
  const DateTime last = DateTime::fromOleDateTruncated(daysOf(101.0 - step));
  EXPECT_EQ(last.millisecond, 1000) << "999.9995 ms";
  EXPECT_EQ(last.second, 40);
}

TEST(OleDate, aNegativeFractionBeforeTheNullDateStands) {
  const DateTime date = DateTime::fromOleDate(-0.25 / 86400.0);
  EXPECT_EQ(date.seconds, kNullDateSeconds);
  EXPECT_EQ(date.millisecond, -250);
  EXPECT_EQ(date.microsecond, 0);
}

TEST(OleDate, absurdDaysThrow) {
  const double cases[] = {1e300,
                          -1e300,
                          1e15,
                          -1.0,
                          1.0,
                          25568.0,
                          std::numeric_limits<double>::infinity(),
                          -std::numeric_limits<double>::infinity(),
                          std::numeric_limits<double>::quiet_NaN()};
  for (const double days : cases) {
    EXPECT_THROW(static_cast<void>(DateTime::fromOleDate(days)), ConverterParsingException) << days;
    EXPECT_THROW(static_cast<void>(DateTime::fromOleDateTruncated(days)), ConverterParsingException) << days;
  }
  EXPECT_EQ(failureOf([] { static_cast<void>(DateTime::fromOleDate(1e300)); }),
            "Invalid data for a DateTime object: {9223372036854775807}");
  EXPECT_EQ(failureOf([] { static_cast<void>(DateTime::fromOleDate(-1e300)); }),
            "Invalid data for a DateTime object: {-9223372036854775808}");
}

TEST(OleDate, reverseCountsTheFraction) {
  EXPECT_EQ(DateTime(kNullDateSeconds, 0, 0, true).toOleDate(), 0.0);
  EXPECT_EQ(DateTime(0, 0, 0, true).toOleDate(), 25569.0);
  EXPECT_EQ(DateTime(1351728000, 0, 0, true).toOleDate(), kDay2012);
  EXPECT_EQ(DateTime(1351728000 + 64800, 500, 0, true).toOleDate(), 3560954400.5 / 86400.0);
  EXPECT_EQ(DateTime(1351728000 + 64800, 500, 250, true).toOleDate(), (3560954400.5 + 250 / 1000000.0) / 86400.0);
  EXPECT_EQ(DateTime(0, 250, 500, true).toOleDate(), (2209161600.0 + 0.25 + 0.0005) / 86400.0);
  const DateTime start(1553968599, 912, 0, true);
  EXPECT_EQ(start.toOleDate(), (1553968599.0 + 2209161600.0 + 912 / 1000.0) / 86400.0);
  EXPECT_EQ(start.toOleDateFractionFirst(), (1553968599.0 + 912 / 1000.0 + 2209161600.0) / 86400.0);
  EXPECT_NE(start.toOleDate(), start.toOleDateFractionFirst());
}

TEST(OleDate, reverseOfTheLocalFieldsUsesTheSeconds) {
  const ScopedTimeZone zone(kCentralEurope);
  EXPECT_EQ(DateTime::parseGerman("01.11.2012 01:00:00.0").toOleDate(), kDay2012);
}

// Parsing

TEST(ParseGerman, readsDateTimeAndMilliseconds) {
  struct Case {
    std::string_view text;
    std::string_view expected;
  };
  const Case cases[] = {
      {"01.02.2020 03:04:05.678", "01.02.2020 03:04:05.678.000"},
      {"1.2.2020 3:4:5.6", "01.02.2020 03:04:05.006.000"},
      {"  01.02.2020   03:04:05.678", "01.02.2020 03:04:05.678.000"},
      {"01.02.2020 03:04:05.", "01.02.2020 03:04:05.000.000"},
      {"01.02.2020 03:04:05. ", "01.02.2020 03:04:05.000.000"},
      {"01.02.2020 03:04:05 more.678", "01.02.2020 03:04:05.678.000"},
      {"01.02.2020 03:04:05.0x10", "01.02.2020 03:04:05.016.000"},
      {"30.12.1899 00:00:00.000", "30.12.1899 00:00:00.000.000"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(DateTime::parseGerman(c.text).toDottedTextMicro(), c.expected) << c.text;
  }
}

TEST(ParseGerman, theFractionIsNotScaled) {
  EXPECT_EQ(DateTime::parseGerman("01.02.2020 03:04:05.5").millisecond, 5);
  EXPECT_EQ(DateTime::parseGerman("01.02.2020 03:04:05.05").millisecond, 5);
}

TEST(ParseGerman, takesWhatFollowsTheLastPoint) {
  EXPECT_EQ(DateTime::parseGerman("01.02.2020 03:04:05.678.123").toDottedTextMicro(), "01.02.2020 03:04:05.123.000");
}

TEST(ParseGerman, computesTheSeconds) {
  EXPECT_EQ(DateTime::parseGerman("01.02.2020 03:04:05.678").seconds, 1580526245);
  const ScopedTimeZone zone(kCentralEurope);
  EXPECT_EQ(DateTime::parseGerman("01.07.2024 14:00:00.000").seconds, 1719835200);
  EXPECT_EQ(DateTime::parseGerman("30.12.1899 00:00:00.000").seconds, kNullDateSeconds);
}

TEST(ParseGerman, whatCannotBeReadIsTheDefault) {
  const ScopedTimeZone zone(kCentralEurope);
  for (const std::string_view text :
       {"", ".", "no point at all", "01.02.2020 03:04:05", "01.02.2020 03:04.678", "01/02/2020 03:04:05.678",
        "32.02.2020 03:04:05.678", "01.13.2020 03:04:05.678", "01.02.2020 24:04:05.678", "01.02.2020 03:60:05.678",
        "01.02.2020 03:04:05.67x", "01.02.2020 03:04:05.-1", "01.02.2020 03:04:05.10h",
        "01.02.2020 03:04:05.4294967296", "2020-02-01 03:04:05.678"}) {
    EXPECT_EQ(DateTime::parseGerman(text), DateTime()) << text;
  }
}

TEST(ParseGerman, whatReadsButIsOutOfRangeThrows) {
  struct Case {
    std::string_view text;
    std::string_view shown;
  };
  const Case cases[] = {
      {"01.02.2020 03:04:05.1000", "01.02.2020 03:04:05.1000.0"},
      {"01.02.2020 03:04:05.4294967295", "01.02.2020 03:04:05.-01.0"},
      {"01.02.1899 03:04:05.678", "01.02.1899 03:04:05.678.0"},
      {"30.12.1899 00:00:00.001", "30.12.1899 00:00:00.001.0"},
      {"01.02.20 03:04:05.678", "01.02.20 03:04:05.678.0"},
      {"01.02.2020 03:04:60.678", "01.02.2020 03:04:60.678.0"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(failureOf([&c] { static_cast<void>(DateTime::parseGerman(c.text)); }),
              "Invalid data for a DateTime object: {" + std::string(c.shown) + "}")
        << c.text;
  }
}

TEST(ParseGermanNoFraction, readsDateAndTime) {
  EXPECT_EQ(DateTime::parseGermanNoFraction("01.02.2020 03:04:05").toDottedTextMicro(), "01.02.2020 03:04:05.000.000");
  EXPECT_EQ(DateTime::parseGermanNoFraction("01.02.2020 03:04:05").seconds, 1580526245);
  EXPECT_EQ(DateTime::parseGermanNoFraction("1.2.2020 3:4:5.678").toDottedTextMicro(), "01.02.2020 03:04:05.000.000");
  EXPECT_EQ(DateTime::parseGermanNoFraction("01.02.2020"), DateTime());
  EXPECT_EQ(DateTime::parseGermanNoFraction(""), DateTime());
  EXPECT_THROW(static_cast<void>(DateTime::parseGermanNoFraction("01.02.1850 03:04:05")), ConverterParsingException);
}

struct Language {
  std::string_view locale;
  std::array<std::string_view, 12> months;
  std::array<std::string_view, 12> shortMonths;
  std::array<std::string_view, 7> weekdays;  // from Sunday on
  std::array<std::string_view, 7> shortWeekdays;
};

// As they are written, in UTF-8.
constexpr Language kLanguages[] = {
    {"en-US",
     {"January", "February", "March", "April", "May", "June", "July", "August", "September", "October", "November",
      "December"},
     {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"},
     {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"},
     {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"}},
    {"en-GB",
     {"January", "February", "March", "April", "May", "June", "July", "August", "September", "October", "November",
      "December"},
     {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sept", "Oct", "Nov", "Dec"},
     {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"},
     {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"}},
    {"de-DE",
     {"Januar", "Februar", "M\xC3\xA4rz", "April", "Mai", "Juni", "Juli", "August", "September", "Oktober", "November",
      "Dezember"},
     {"Jan", "Feb", "Mrz", "Apr", "Mai", "Jun", "Jul", "Aug", "Sep", "Okt", "Nov", "Dez"},
     {"Sonntag", "Montag", "Dienstag", "Mittwoch", "Donnerstag", "Freitag", "Samstag"},
     {"So", "Mo", "Di", "Mi", "Do", "Fr", "Sa"}},
    {"fr-FR",
     {"janvier", "f\xC3\xA9vrier", "mars", "avril", "mai", "juin", "juillet", "ao\xC3\xBBt", "septembre", "octobre",
      "novembre",
      "d\xC3\xA9"
      "cembre"},
     {"janv", "f\xC3\xA9vr", "mars", "avr", "mai", "juin", "juil", "ao\xC3\xBBt", "sept", "oct", "nov",
      "d\xC3\xA9"
      "c"},
     {"dimanche", "lundi", "mardi", "mercredi", "jeudi", "vendredi", "samedi"},
     {"dim", "lun", "mar", "mer", "jeu", "ven", "sam"}},
    {"nl-NL",
     {"januari", "februari", "maart", "april", "mei", "juni", "juli", "augustus", "september", "oktober", "november",
      "december"},
     {"jan", "feb", "mrt", "apr", "mei", "jun", "jul", "aug", "sep", "okt", "nov", "dec"},
     {"zondag", "maandag", "dinsdag", "woensdag", "donderdag", "vrijdag", "zaterdag"},
     {"zo", "ma", "di", "wo", "do", "vr", "za"}},
    {"es-ES",
     {"enero", "febrero", "marzo", "abril", "mayo", "junio", "julio", "agosto", "septiembre", "octubre", "noviembre",
      "diciembre"},
     {"ene", "feb", "mar", "abr", "may", "jun", "jul", "ago", "sept", "oct", "nov", "dic"},
     {"domingo", "lunes", "martes", "mi\xC3\xA9rcoles", "jueves", "viernes",
      "s\xC3\xA1"
      "bado"},
     {"dom", "lun", "mar", "mi\xC3\xA9", "jue", "vie",
      "s\xC3\xA1"
      "b"}},
    {"it-IT",
     {"gennaio", "febbraio", "marzo", "aprile", "maggio", "giugno", "luglio", "agosto", "settembre", "ottobre",
      "novembre", "dicembre"},
     {"gen", "feb", "mar", "apr", "mag", "giu", "lug", "ago", "set", "ott", "nov", "dic"},
     {"domenica", "luned\xC3\xAC", "marted\xC3\xAC", "mercoled\xC3\xAC", "gioved\xC3\xAC", "venerd\xC3\xAC", "sabato"},
     {"dom", "lun", "mar", "mer", "gio", "ven", "sab"}},
};

struct Clock {
  std::string_view time;
  std::string_view fraction;
  std::string_view marker;
  std::string_view expected;
};

// A marker with points needs a fraction before it, or its own point would be taken for that of the fraction.
constexpr Clock kClocks[] = {
    {"22:20:30", "", "", "22:20:30.000"},           {"22:20:30", ".123", "", "22:20:30.123"},
    {"10:20:30", "", " pm", "22:20:30.000"},        {"10:20:30", ".123", " pm", "22:20:30.123"},
    {"10:20:30", "", " AM", "10:20:30.000"},        {"10:20:30", ".123", " AM", "10:20:30.123"},
    {"10:20:30", ".123", " p.m.", "22:20:30.123"},  {"10:20:30", ".123", " a.m.", "10:20:30.123"},
    {"10:20:30", ".123", " p. m.", "22:20:30.123"}, {"12:20:30", ".123", " a. m.", "00:20:30.123"},
    {"10:20:30", "", " p. m.", "22:20:30.000"},
};

std::string joined(std::string_view weekday, std::string_view month, const Clock& clock) {
  std::string text(weekday);
  return text.append(" ")
      .append(month)
      .append(" 05 ")
      .append(clock.time)
      .append(clock.fraction)
      .append(clock.marker)
      .append(" 2012");
}

std::string expectedText(std::size_t month, const Clock& clock) {
  const std::string number = std::to_string(month + 1);
  return "05." + std::string(2 - number.size(), '0') + number + ".2012 " + std::string(clock.expected) + ".000";
}

void parseEveryDateOf(std::span<const Language> languages) {
  for (const Language& language : languages) {
    for (const auto* const weekdays : {&language.weekdays, &language.shortWeekdays}) {
      for (const auto* const months : {&language.months, &language.shortMonths}) {
        for (std::size_t index = 0; index < std::size(kClocks) * 84; ++index) {
          const std::size_t month = index % 12;
          const Clock& clock = kClocks[index / 84];
          const std::string text = joined((*weekdays)[index / 12 % 7], (*months)[month], clock);
          EXPECT_EQ(DateTime::parseLocalized(text).toDottedTextMicro(), expectedText(month, clock))
              << language.locale << ": " << text;
        }
      }
    }
  }
}

TEST(ParseLocalized, readsEveryMonthAndWeekdayOfTheSevenLanguages) {
  parseEveryDateOf(kLanguages);
}

TEST(ParseLocalized, readsFromTwoThreadsAtOnceAndLeavesTheLocaleOfTheProcessAlone) {
  const std::string before = processLocale();
  std::thread other([] { parseEveryDateOf(kLanguages); });
  for (int count = 0; count < 1000; ++count) {
    EXPECT_EQ(DateTime(kNovember2012, 123, 0, true).toAscText(), "Thu Nov 01 10:20:30.123 2012");
  }
  parseEveryDateOf(kLanguages);
  other.join();
  EXPECT_EQ(processLocale(), before);
}

TEST(ParseLocalized, readsDatesAsTheyStandInHeaders) {
  struct Case {
    std::string_view text;
    std::string_view expected;
  };
  const Case cases[] = {
      {"Thu Nov 01 10:20:30.123 2012", "01.11.2012 10:20:30.123.000"},
      {"Thu Nov 1 10:20:30 2012", "01.11.2012 10:20:30.000.000"},
      {"Wed Mar 5 10:11:12.123 2025", "05.03.2025 10:11:12.123.000"},
      {"Thu Nov 01 10:20:30.123 pm 2012", "01.11.2012 22:20:30.123.000"},
      {"Thu Nov 01 10:20:30 pm 2012", "01.11.2012 22:20:30.000.000"},
      {"Thu Nov 01 12:20:30 am 2012", "01.11.2012 00:20:30.000.000"},
      {"Die Mrz 05 10:20:30.123 2012", "05.03.2012 10:20:30.123.000"},
      {"thu  nov   01\t10:20:30.123  2012", "01.11.2012 10:20:30.123.000"},
      {" Thu Nov 01 10:20:30.123 2012", "01.11.2012 10:20:30.123.000"},
      {"Thu Nov 01 10:20:30.123 2012 and more", "01.11.2012 10:20:30.123.000"},
      {"Do. Nov 01 10:20:30 2012", "01.11.2012 10:20:30.000.000"},
      {"jeu. nov. 01 10:20:30 2012", "01.11.2012 10:20:30.000.000"},
      {"Do Nov. 01 10:20:30 2012", "01.11.2012 10:20:30.000.000"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(DateTime::parseLocalized(c.text).toDottedTextMicro(), c.expected) << c.text;
  }
}

TEST(ParseLocalized, theFractionIsNotScaled) {
  EXPECT_EQ(DateTime::parseLocalized("Thu Nov 01 10:20:30.5 2012").millisecond, 5);
}

TEST(ParseLocalized, aWeekdayOfNoLanguageIsPassedOver) {
  EXPECT_EQ(DateTime::parseLocalized("Do Nov 01 10:20:30.123 2012").toDottedText(), "01.11.2012 10:20:30.123");
  EXPECT_EQ(DateTime::parseLocalized("Xyz Nov 01 10:20:30.123 2012").toDottedText(), "01.11.2012 10:20:30.123");
  EXPECT_EQ(DateTime::parseLocalized("Xyz Okt 01 10:20:30.123 pm 2012").toDottedText(), "01.10.2012 22:20:30.123");
}

// The weekday of one language and the month of another fit no language as a whole, but the month alone does.
TEST(ParseLocalized, languagesMayBeMixed) {
  EXPECT_EQ(DateTime::parseLocalized("Thu dic 01 10:20:30.123 2012").toDottedText(), "01.12.2012 10:20:30.123");
}

TEST(ParseLocalized, aDateWithoutWeekdayIsTheDefault) {
  EXPECT_EQ(DateTime::parseLocalized("Nov 1 10:20:30 pm 2012"), DateTime());
  EXPECT_EQ(DateTime::parseLocalized("Nov 01 10:20:30.123 2012"), DateTime());
}

TEST(ParseLocalized, aPointWithoutABlankAfterItGivesTheDefault) {
  EXPECT_EQ(DateTime::parseLocalized("Thu Nov 01 2012 10:20:30.123"), DateTime());
  EXPECT_EQ(DateTime::parseLocalized("."), DateTime());
}

// The first point is always taken for that of the fraction.
TEST(ParseLocalized, aPointAfterTheWeekdayHidesTheFraction) {
  EXPECT_EQ(DateTime::parseLocalized("jeu. nov 01 10:20:30.123 2012"), DateTime());
  EXPECT_EQ(DateTime::parseLocalized("Thu Nov 01 10:20:30 p.m. 2012"), DateTime());
}

TEST(ParseLocalized, whatCannotBeReadIsTheDefault) {
  const ScopedTimeZone zone(kCentralEurope);
  for (const std::string_view text :
       {"", " ", "Thu", "Thu ", "Thu Nov", "Thu Nov 01 10:20:30", "Thu Nov 01 10:20:30.12x 2012",
        "Thu Nov 01 10:20:30.-1 2012", "Thu Nov 32 10:20:30.123 2012", "Thu Nov 01 24:20:30.123 2012",
        "Thu Nov 01 13:20:30.123 pm 2012", "Thu Nox 01 10:20:30.123 2012", "Thu 01 Nov 10:20:30.123 2012"}) {
    EXPECT_EQ(DateTime::parseLocalized(text), DateTime()) << text;
  }
}

TEST(ParseLocalized, whatReadsButIsOutOfRangeThrows) {
  EXPECT_EQ(failureOf([] { static_cast<void>(DateTime::parseLocalized("Thu Nov 01 10:20:30.1234 2012")); }),
            "Invalid data for a DateTime object: {01.11.2012 10:20:30.1234.0}");
  EXPECT_EQ(failureOf([] { static_cast<void>(DateTime::parseLocalized("Thu Nov 01 10:20:30.123 1812")); }),
            "Invalid data for a DateTime object: {01.11.1812 10:20:30.123.0}");
}

TEST(ParseLocalized, aDayOf31InFebruaryPasses) {
  const DateTime date = DateTime::parseLocalized("Wed Feb 31 00:00:00.000 2021");
  EXPECT_EQ(date.toDottedText(), "31.02.2021 00:00:00.000");
  EXPECT_EQ(date.seconds, 1614729600) << "2021-03-03";
}

TEST(ParseLocalized, readsLocalTime) {
  const ScopedTimeZone zone(kCentralEurope);
  EXPECT_EQ(DateTime::parseLocalized("Mon Jul 01 14:00:00.000 2024").seconds, 1719835200);
}

// Text forms

TEST(DateTimeText, fillsEachFieldToItsWidth) {
  struct Case {
    std::string_view name;
    std::string (DateTime::*form)() const;
    std::string_view small;
    std::string_view large;
  };
  const Case cases[] = {
      {"toDottedText", &DateTime::toDottedText, "01.02.2003 04:05:06.007", "31.12.12345 23:59:58.987"},
      {"toDottedTextMicro", &DateTime::toDottedTextMicro, "01.02.2003 04:05:06.007.008",
       "31.12.12345 23:59:58.987.654"},
      {"toDiagnosticText", &DateTime::toDiagnosticText, "01.02.2003 04:05:06.007.8", "31.12.12345 23:59:58.987.654"},
      {"toSlashedText", &DateTime::toSlashedText, "01/02/2003 04:05:06.007", "31/12/12345 23:59:58.987"},
      {"toIsoLikeText", &DateTime::toIsoLikeText, "2003-02-01 04:05:06.007", "12345-12-31 23:59:58.987"},
      {"toDottedTextSeconds", &DateTime::toDottedTextSeconds, "01.02.2003 04:05:06", "31.12.12345 23:59:58"},
  };
  const DateTime small = fields(2003, 2, 1, 4, 5, 6, 7, 8);
  const DateTime large = fields(12345, 12, 31, 23, 59, 58, 987, 654);
  for (const Case& c : cases) {
    EXPECT_EQ((small.*c.form)(), c.small) << c.name;
    EXPECT_EQ((large.*c.form)(), c.large) << c.name;
  }
}

TEST(DateTimeText, theYearIsNotFilled) {
  EXPECT_EQ(fields(7, 1, 1).toDottedTextSeconds(), "01.01.7 00:00:00");
  EXPECT_EQ(fields(7, 1, 1).toIsoLikeText(), "7-01-01 00:00:00.000");
}

TEST(DateTimeText, printsFieldsOutOfRangeAsTheyAre) {
  EXPECT_EQ(fields(-7, 13, 100, -1, 99, 60, -5, -12).toDottedTextMicro(), "100.13.-7 -1:99:60.-05.-12");
  constexpr auto kLowest = std::numeric_limits<std::int32_t>::min();
  EXPECT_EQ(fields(kLowest, 1, 1).toDottedTextSeconds(), "01.01.-2147483648 00:00:00");
}

TEST(AscText, isEnglishWithTheYearAtTheEnd) {
  struct Case {
    std::int64_t seconds;
    std::int32_t millisecond;
    std::string_view expected;
  };
  const Case cases[] = {
      {kNovember2012, 123, "Thu Nov 01 10:20:30.123 2012"}, {0, 0, "Thu Jan 01 00:00:00.000 1970"},
      {1709251199, 7, "Thu Feb 29 23:59:59.007 2024"},      {1614729600, 999, "Wed Mar 03 00:00:00.999 2021"},
      {1000000000, 10, "Sun Sep 09 01:46:40.010 2001"},     {1719835200, 0, "Mon Jul 01 12:00:00.000 2024"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(DateTime(c.seconds, c.millisecond, 0, true).toAscText(), c.expected);
  }
}

TEST(AscText, breaksTheSecondsDownInUtcWhateverTheFieldsSay) {
  const ScopedTimeZone zone(kCentralEurope);
  DateTime date(kNovember2012, 123, 0, false);
  EXPECT_EQ(date.hour, 11);
  EXPECT_EQ(date.toAscText(), "Thu Nov 01 10:20:30.123 2012");
  date.year = 1;
  date.hour = 99;
  EXPECT_EQ(date.toAscText(), "Thu Nov 01 10:20:30.123 2012");
}

TEST(AscText, ofTheNullDateIsASaturday) {
  const ScopedTimeZone zone(kNewYork);
  EXPECT_EQ(DateTime(kNullDateSeconds, 0, 0, false).toAscText(), "Sat Dec 30 00:00:00.000 1899");
}

TEST(AscText, ofANegativeSecondThrows) {
  DateTime date;
  date.seconds = -1;
  EXPECT_EQ(failureOf([&date] { static_cast<void>(date.toAscText()); }), "Invalid data for a DateTime object: {-1}");
}

TEST(AscText, aMillisecondOutOfRangeIsPrintedAsItIs) {
  DateTime date(kNovember2012, 0, 0, true);
  date.millisecond = 1000;
  EXPECT_EQ(date.toAscText(), "Thu Nov 01 10:20:30.1000 2012");
}

TEST(AscText, isReadBackInUtc) {
  const DateTime date(kNovember2012, 123, 0, true);
  EXPECT_EQ(DateTime::parseLocalized(date.toAscText()), date);
}

}  // namespace
}  // namespace xlatr
