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

}  // namespace
}  // namespace xlatr::cli
