#include "util/start_time.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>

namespace xlatr {
namespace {

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr std::int64_t kDay = 86'400 * kSecond;
constexpr std::int64_t kJuly26 = 18'834 * kDay;  // 2021-07-26

TEST(StartOfDays, countsFromTheNullDate) {
  EXPECT_EQ(startOfDays("25569"), 0) << "1970-01-01";
  EXPECT_EQ(startOfDays("44403.25"), kJuly26 + 6 * 3600 * kSecond);
  EXPECT_EQ(startOfDays("0"), -25'569 * kDay);
  EXPECT_EQ(startOfDays("-1.5"), -25'570 * kDay - kDay / 2);
}

TEST(StartOfDays, keepsNanoseconds) {
  EXPECT_EQ(startOfDays("25569.00000000001157"), 1'000) << "1157 x 0.864 ns";
  EXPECT_EQ(startOfDays("25569.00000000000001"), 1);
  EXPECT_EQ(startOfDays("25568.99999999999999"), -1);
  EXPECT_EQ(startOfDays("-0.00000000000001"), -25'569 * kDay - 1) << "0.864 ns before the null date";
}

TEST(StartOfDays, refusesWhatIsNoDay) {
  EXPECT_EQ(startOfDays(""), std::nullopt);
  EXPECT_EQ(startOfDays("yesterday"), std::nullopt);
  EXPECT_EQ(startOfDays("1000000"), std::nullopt);
  EXPECT_EQ(startOfDays("-92000"), std::nullopt) << "before what nanoseconds since 1970 reach";
}

TEST(StartOfDottedText, readsEachForm) {
  const std::int64_t eight = kJuly26 + 8 * 3600 * kSecond;
  EXPECT_EQ(startOfDottedText("26.07.2021 08:00:00"), (StartText{eight, kSecond}));
  EXPECT_EQ(startOfDottedText(" 26.7.2021 8:0:0.123"), (StartText{eight + 123'000'000, 1'000'000}));
  EXPECT_EQ(startOfDottedText("26.07.2021 08:00:00.123.456"), (StartText{eight + 123'456'000, 1'000}));
  EXPECT_EQ(startOfDottedText("26.07.2021 08:00:00.123.456.7"), (StartText{eight + 123'456'000, 1'000}));
}

TEST(StartOfDottedText, carriesIntoTheSecond) {
  const std::int64_t eight = kJuly26 + 8 * 3600 * kSecond;
  EXPECT_EQ(startOfDottedText("26.07.2021 07:59:59.1000"), (StartText{eight, 1'000'000}));
  EXPECT_EQ(startOfDottedText("26.07.2021 07:59:60"), (StartText{eight, kSecond})) << "a leap second";
}

TEST(StartOfDottedText, readsTheFirstAndTheLastMoment) {
  EXPECT_EQ(startOfDottedText("01.01.1700 00:00:00"), (StartText{-98'615 * kDay, kSecond}));
  EXPECT_EQ(startOfDottedText("31.12.2200 23:59:59"), (StartText{84'371 * kDay - kSecond, kSecond}));
  EXPECT_EQ(startOfDottedText("31.12.1699 23:59:59"), std::nullopt);
  EXPECT_EQ(startOfDottedText("01.01.2201 00:00:00"), std::nullopt);
}

TEST(StartOfDottedText, refusesOtherForms) {
  for (const char* const text :
       {"", "26.07.2021", "26.07.2021 08:00", "26/07/2021 08:00:00", "32.07.2021 08:00:00", "282.07.2021 08:00:00",
        "26.263.2021 08:00:00", "30.02.2021 08:00:00", "00.07.2021 08:00:00", "26.13.2021 08:00:00",
        "26.07.2021 24:00:00", "26.07.2021 08:60:00", "26.07.2021 08:00:61", "26.07.9999 08:00:00",
        "26.07.1500 08:00:00", "26.07.20211234567 08:00:00"}) {
    EXPECT_EQ(startOfDottedText(text), std::nullopt) << text;
  }
}

TEST(StartOf, takesTheTextWhereItIsFiner) {
  const std::int64_t eight = kJuly26 + 8 * 3600 * kSecond;
  // 15 digits of a day are 8.64 us apart.
  EXPECT_EQ(startOf("44403.3333333333", "26.07.2021 08:00:00.000.001"), eight + 1'000);
  EXPECT_EQ(startOf("44403.3333333333", "26.07.2021 07:59:59.1000.0"), eight);
}

TEST(StartOf, takesTheNumberOtherwise) {
  EXPECT_EQ(startOf("44403.25", "26.07.2021 06:00:00.001"), kJuly26 + 6 * 3600 * kSecond) << "coarser";
  EXPECT_EQ(startOf("44403.25", "26.07.2021 06:00:00.000.100"), kJuly26 + 6 * 3600 * kSecond) << "another moment";
  EXPECT_EQ(startOf("-80000", "01.01.2200 00:00:00.000.000"), startOfDays("-80000")) << "too far apart for 64 bits";
  EXPECT_EQ(startOf("44403.25", "long ago"), kJuly26 + 6 * 3600 * kSecond);
  EXPECT_EQ(startOf("44403.25", std::nullopt), kJuly26 + 6 * 3600 * kSecond);
  EXPECT_EQ(startOf(std::nullopt, "26.07.2021 06:00:00.001"), kJuly26 + 6 * 3600 * kSecond + 1'000'000);
  EXPECT_EQ(startOf(std::nullopt, std::nullopt), std::nullopt);
}

}  // namespace
}  // namespace xlatr
