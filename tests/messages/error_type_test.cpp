#include "messages/error_type.hpp"

#include <gtest/gtest.h>

namespace xlatr {
namespace {

TEST(ErrorType, isOneBitOfATrcIdentifier) {
  constexpr std::uint32_t kIds[] = {1, 2, 4, 8};
  std::uint32_t type = 0;
  for (const std::uint32_t id : kIds) {
    EXPECT_EQ(trcIdOfErrorType(type), id);
    EXPECT_EQ(errorTypeOfTrcId(id), type);
    ++type;
  }
}

TEST(ErrorType, otherIdentifiersHaveNone) {
  for (const std::uint32_t id : {0U, 3U, 5U, 9U, 16U, 0x100U, 0xFFFFFFFFU}) {
    EXPECT_EQ(errorTypeOfTrcId(id), std::nullopt) << id;
  }
}

}  // namespace
}  // namespace xlatr
