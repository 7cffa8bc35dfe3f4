#include "platform/unique_id.hpp"

#include <gtest/gtest.h>

namespace xlatr::platform {
namespace {

TEST(UniqueId, isARandomGuid) {
  for (int count = 0; count < 100; ++count) {
    const auto id = makeUniqueId();
    ASSERT_TRUE(id.has_value());
    EXPECT_EQ(id->data3 >> 12, 4) << "version";
    EXPECT_EQ(id->data4[0] >> 6, 2) << "variant";
  }
}

TEST(UniqueId, differsFromTheOneBefore) {
  EXPECT_NE(makeUniqueId(), makeUniqueId());
}

}  // namespace
}  // namespace xlatr::platform
