#include "formats/trc/trc_format.hpp"

#include <gtest/gtest.h>

#include "support/format_facts.hpp"

namespace xlatr {
namespace {

TEST(TrcFormat, isWhatCallersKnow) {
  test::expectFacts(kTrcFormat, {1,
                                 ".trc",
                                 "BRIX-Trace",
                                 "BRIX trace file",
                                 3.0,
                                 1.0,
                                 {1.0, 1.1, 1.2, 1.3, 2.0, 2.1, 3.0},
                                 {1, 4, 16, 2, 32, 64},
                                 true,
                                 true});
}

TEST(TrcFormat, splitsByBusWithoutABusColumn) {
  for (const double version : {-1.0, 0.0, 0.9, 1.0, 1.05, 1.1, 2.0}) {
    EXPECT_TRUE(kTrcFormat.isSplitTarget(version)) << version;
  }
  for (const double version : {1.15, 1.2, 1.3, 1.5, 2.05, 2.1, 2.5, 3.0, 3.1}) {
    EXPECT_FALSE(kTrcFormat.isSplitTarget(version)) << version;
  }
}

TEST(TrcFormat, knowsTheHighestBusOfItsPrograms) {
  ASSERT_TRUE(kTrcFormat.busLimit);
  EXPECT_EQ(kTrcFormat.busLimit->highest, 16U);
}

}  // namespace
}  // namespace xlatr
