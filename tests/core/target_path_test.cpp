// Where a conversion's targets go.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "core/conversion.hpp"

namespace xlatr {
namespace {

std::string pathOfSession(const char* target, std::uint32_t index) {
  return makeTargetPathTemplate(target, XLATR_FORMAT_TRC).pathOfSession("_S", index);
}

TEST(TargetPathTemplate, namesASessionByItsIndex) {
  EXPECT_EQ(pathOfSession("x/out.trc", 12), "x//out_S12.trc");
  EXPECT_EQ(pathOfSession("x/out.csv", 1), "x//out_S1.trc");
  EXPECT_EQ(pathOfSession("x/out.dat", 1), "x//out.dat_S1.trc");
}

TEST(TargetPathTemplate, putsASessionWithoutAFolderAtTheRoot) {
  EXPECT_EQ(pathOfSession("out.trc", 1), "/out_S1.trc");
  EXPECT_EQ(pathOfSession(nullptr, 1), "/_S1.trc");
}

TEST(TargetPathTemplate, keepsADirectorysOwnSeparators) {
  EXPECT_EQ(pathOfSession("./out.trc", 1), ".//out_S1.trc");
  EXPECT_EQ(pathOfSession("C:\\traces\\out.trc", 1), "C:\\traces\\/out_S1.trc");
}

}  // namespace
}  // namespace xlatr
