#include "core/format_matrix.hpp"

#include <gtest/gtest.h>

namespace xlatr {
namespace {

TEST(FormatMatrix, answersTheTargetsOfASource) {
  const struct {
    TraceFormat source;
    TraceFormat targets;
  } cases[] = {{1, 119},  {2, 21}, {4, 17}, {8, 20},  {16, 0}, {32, 21}, {64, 1},
               {128, 25}, {0, 0},  {3, 0},  {256, 0}, {-1, 0}, {255, 0}};
  for (const auto& test : cases) {
    EXPECT_EQ(formatsConvertibleFrom(test.source), test.targets) << test.source;
  }
}

TEST(FormatMatrix, answersTheSourcesOfATarget) {
  const struct {
    TraceFormat targets;
    TraceFormat sources;
  } cases[] = {{0, 255}, {1, 1 | 2 | 4 | 32 | 64 | 128}, {2, 1},  {4, 1 | 2 | 8 | 32},
               {8, 128}, {16, 1 | 2 | 4 | 8 | 32 | 128}, {32, 1}, {64, 1},
               {128, 0}};
  for (const auto& test : cases) {
    EXPECT_EQ(formatsConvertibleTo(test.targets), test.sources) << test.targets;
  }
}

TEST(FormatMatrix, answersTheSourcesThatReachAllOfSeveralTargets) {
  EXPECT_EQ(formatsConvertibleTo(1 | 4), 1 | 2 | 32);
  EXPECT_EQ(formatsConvertibleTo(1 | 8), 128);
  EXPECT_EQ(formatsConvertibleTo(1 | 4 | 8), 0);
  EXPECT_EQ(formatsConvertibleTo(256), 0);
}

}  // namespace
}  // namespace xlatr
