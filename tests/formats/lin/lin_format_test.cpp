#include "formats/lin/lin_format.hpp"

#include <gtest/gtest.h>

#include "support/format_facts.hpp"

namespace xlatr {
namespace {

TEST(LinFormat, isWhatCallersKnow) {
  test::expectFacts(kLinFormat,
                    {8, ".ltrc", "KORL-Trace", "KORL trace file", 1.2, 1.0, {1.0, 1.1, 1.2}, {4, 16}, true, false});
}

}  // namespace
}  // namespace xlatr
