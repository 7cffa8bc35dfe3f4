#include "formats/asc/asc_format.hpp"

#include <gtest/gtest.h>

#include "support/format_facts.hpp"

namespace xlatr {
namespace {

TEST(AscFormat, isWhatCallersKnow) {
  test::expectFacts(kAscFormat, {4,
                                 ".asc",
                                 "CANalyser-ASC",
                                 "CANalyzer ASCII logging file",
                                 15.0,
                                 7.0,
                                 {0.0, 7.0, 8.0, 9.0, 10.0, 11.0, 12.0, 13.0, 14.0, 15.0},
                                 {1, 16},
                                 true,
                                 true});
}

}  // namespace
}  // namespace xlatr
