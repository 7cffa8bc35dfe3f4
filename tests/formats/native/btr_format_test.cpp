#include "formats/native/btr_format.hpp"

#include <gtest/gtest.h>

#include "support/format_facts.hpp"

namespace xlatr {
namespace {

TEST(BtrFormat, isWhatCallersKnow) {
  test::expectFacts(kBtrFormat, {2,
                                 ".btr",
                                 "BRIX-Bridge",
                                 "BRIX-Bridge Pro - Binary trace file",
                                 3.0,
                                 1.0,
                                 {1.0, 2.0, 3.0},
                                 {1, 4, 16},
                                 true,
                                 true});
}

TEST(BtrFormat, namesTheTargetsOfItsSessions) {
  EXPECT_EQ(kBtrFormat.sessionMarker, "_S");
}

}  // namespace
}  // namespace xlatr
