#include "formats/mf4/mdf_time_scale.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>

namespace xlatr {
namespace {

constexpr std::uint64_t kBeyondDoubles = (std::uint64_t{1} << 53) + 1;

TEST(MdfTimeScale, makesNanosecondsOfCountsExactly) {
  struct Case {
    double offset;
    double factor;
    int unit;
    std::uint64_t count;
    std::optional<std::int64_t> expected;
  };
  static constexpr Case kCases[] = {
      {0, 1e-9, 0, 1'513'000, 1'513'000},
      {0, 1e-9, 0, kBeyondDoubles, 9'007'199'254'740'993},
      {0, 1e-7, 0, kBeyondDoubles, 900'719'925'474'099'300},
      {0, 1e-6, 0, 9'007'199'254'740'993, std::nullopt},
      {0, 1.0, 9, kBeyondDoubles, 9'007'199'254'740'993},
      {0, 1.0, 6, 1'234'567'890'123, 1'234'567'890'123'000},
      {0, 1.25e-8, 0, 3, 38},
      {0, 1.25e-8, 0, 1, 13},  // 12.5
      {0, 1e-12, 0, 1'499, 1},
      {0, 1e-12, 0, 1'500, 2},
      {0, 1.0 / 32768, 0, 32'768, 1'000'000'000},
      {0, 1.0 / 32768, 0, std::uint64_t{32'768} * 1'000'000'001, 1'000'000'001'000'000'000},
      {0.5, 1e-6, 0, 7, 500'007'000},
      {-2.0, 1e-3, 0, 1, -1'999'000'000},
      {0, -1e-9, 0, 5, -5},
      {0, 1e-40, 0, 5, 0},
      {1e-40, 1e-9, 0, 5, 5},
      {0, 1.2345678901234567e9, 0, 2, 2'469'135'780'246'913'400},
      {0, 1e30, 0, 1, std::nullopt},
      {8e9, 1e-9, 0, 9'000'000'000'000'000'000U, std::nullopt},
      {-8e9, -1e-9, 0, 9'000'000'000'000'000'000U, std::nullopt},
      {0, 1e-9, 0, 9'000'000'000'000'000'000U, 9'000'000'000'000'000'000},
      {0, 1e-9, 0, 9'000'000'000'000'000'001U, std::nullopt},
      {0, 1.0, 0, std::numeric_limits<std::uint64_t>::max(), std::nullopt},
      {0, 0.0, 0, 77, 0},
  };
  for (const Case& each : kCases) {
    EXPECT_EQ(MdfTimeScale(each.offset, each.factor, each.unit).ofCount(each.count), each.expected)
        << each.factor << " " << each.count;
  }
}

TEST(MdfTimeScale, readsNegativeCounts) {
  EXPECT_EQ(MdfTimeScale(0, 1e-9, 0).ofCount(std::int64_t{-5}), -5);
  EXPECT_EQ(MdfTimeScale(0, 1.25e-8, 0).ofCount(std::int64_t{-1}), -13);
  EXPECT_EQ(MdfTimeScale(0, 1e-9, 0).ofCount(std::numeric_limits<std::int64_t>::min()), std::nullopt);
}

TEST(MdfTimeScale, makesNanosecondsOfRealNumbers) {
  EXPECT_EQ(MdfTimeScale(0, 1.0, 0).ofReal(1.513), 1'513'000'000);
  EXPECT_EQ(MdfTimeScale(0, 1.0, 0).ofReal(-0.000'001), -1'000);
  EXPECT_EQ(MdfTimeScale(0, 1e-9, 0).ofReal(9'007'199'254'740'992.0), 9'007'199'254'740'992);
  EXPECT_EQ(MdfTimeScale(0, 0.001, 0).ofReal(5.73), 5'730'000);
  // 1e9 seconds and an eighth: a product of doubles would be off by 16.
  EXPECT_EQ(MdfTimeScale(0, 1.0, 0).ofReal(1'000'000'000.125), 1'000'000'000'125'000'000);
  EXPECT_EQ(MdfTimeScale(0, 1.0, 0).ofReal(std::numeric_limits<double>::quiet_NaN()), std::nullopt);
  EXPECT_EQ(MdfTimeScale(0, 1.0, 0).ofReal(std::numeric_limits<double>::infinity()), std::nullopt);
  EXPECT_EQ(MdfTimeScale(0, 1.0, 0).ofReal(1e30), std::nullopt);
}

TEST(MdfTimeScale, survivesFactorsThatAreNoNumbers) {
  EXPECT_EQ(MdfTimeScale(0, std::numeric_limits<double>::quiet_NaN(), 0).ofCount(std::uint64_t{1}), std::nullopt);
  EXPECT_EQ(MdfTimeScale(std::numeric_limits<double>::infinity(), 1.0, 0).ofReal(1.0), std::nullopt);
  EXPECT_EQ(MdfTimeScale(0, 1e300, 0).ofCount(std::uint64_t{7}), std::nullopt);
  EXPECT_EQ(MdfTimeScale(0, 1e-300, 0).ofCount(std::uint64_t{7}), 0);
}

}  // namespace
}  // namespace xlatr
