#include "formats/blf/blf_format.hpp"

#include <gtest/gtest.h>

#include "formats/blf/blf_converter.hpp"
#include "support/format_facts.hpp"

namespace xlatr {
namespace {

TEST(BlfFormat, isWhatCallersKnow) {
  test::expectFacts(kBlfFormat,
                    {128, ".blf", "BLF", "Vector BLF trace file", 0.0, 0.0, {0.0}, {16, 1, 8}, false, false});
}

TEST(BlfFormat, asksTheConverterForItsCurrentVersion) {
  ASSERT_NE(kBlfFormat.askCurrentVersion, nullptr);
  EXPECT_EQ(kBlfFormat.askCurrentVersion(), blfCurrentVersion());
}

}  // namespace
}  // namespace xlatr
