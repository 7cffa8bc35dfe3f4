#include "start_time.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace xlatr::cli {
namespace {

TEST(StartTimeText, countsDaysFromTheEndOf1899) {
  struct Case {
    double days;
    const char* expected;
  };
  for (const auto& [days, expected] : std::initializer_list<Case>{
           {1.0, "1899-12-31T00:00:00.000"},
           {2.5, "1900-01-01T12:00:00.000"},
           {25569.0, "1970-01-01T00:00:00.000"},
           {44403.2222189948, "2021-07-26T05:19:59.721"},
           {36584.999999999, "2000-02-29T00:00:00.000"},  // rounds up into the next day
           {-0.25, "1899-12-29T18:00:00.000"},
       }) {
    EXPECT_EQ(startTimeText(days), expected) << days;
  }
}

TEST(StartTimeText, isEmptyWithoutAStart) {
  EXPECT_EQ(startTimeText(0.0), "");
  EXPECT_EQ(startTimeText(1e9), "");
  EXPECT_EQ(startTimeText(-1e9), "");
  EXPECT_EQ(startTimeText(std::numeric_limits<double>::quiet_NaN()), "");
  EXPECT_EQ(startTimeText(std::numeric_limits<double>::infinity()), "");
}

TEST(StartText, hasAsManyDecimalsAsItNeedsAndTheZoneIfItIsKnown) {
  xlatr_head head{};
  head.start_ns = 1'709'280'000'000'000'000;
  EXPECT_EQ(startText(head), "2024-03-01T08:00:00.000");
  head.start_ns += 123'450'000;
  EXPECT_EQ(startText(head), "2024-03-01T08:00:00.12345");
  head.start_ns += 1;
  head.zone_known = 1;
  EXPECT_EQ(startText(head), "2024-03-01T08:00:00.123450001+00:00");
  head.zone_minutes = -210;
  head.start_ns = -1;
  EXPECT_EQ(startText(head), "1969-12-31T23:59:59.999999999-03:30");
}

}  // namespace
}  // namespace xlatr::cli
