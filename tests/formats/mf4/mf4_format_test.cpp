#include "formats/mf4/mf4_format.hpp"

#include <gtest/gtest.h>

#include "support/format_facts.hpp"

namespace xlatr {
namespace {

TEST(Mf4Format, isWhatCallersKnow) {
  test::expectFacts(
      kMf4Format,
      {64, ".mf4", "ASAM MDF", "ASAM Measurement Data Format", 4.2, 4.1, {4.1, 4.11, 4.2}, {1}, true, true});
}

}  // namespace
}  // namespace xlatr
