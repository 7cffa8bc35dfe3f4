#include "formats/native/session_clock.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace xlatr {
namespace {

std::vector<std::int64_t> timesOf(Way way, std::uint64_t start, const std::vector<std::uint32_t>& stamps) {
  SessionClocks clocks;
  clocks.start(UnsignedMicroseconds(start));
  std::vector<std::int64_t> times;
  times.reserve(stamps.size());
  for (const std::uint32_t stamp : stamps) {
    times.push_back(static_cast<std::int64_t>(clocks.advance(0, stamp, way).count()));
  }
  return times;
}

constexpr std::int64_t kWrap = 0x100000000;

TEST(SessionClock, countsWrapsOnBothWays) {
  for (const Way way : {Way::compatible(), Way::complete()}) {
    EXPECT_EQ(timesOf(way, 0, {2'000'000'000, 4'294'000'000, 0x10}),
              (std::vector<std::int64_t>{2'000'000'000, 4'294'000'000, kWrap + 0x10}));
  }
}

TEST(SessionClock, takesAStepBackForAWrapOnTheCompatibleWay) {
  const std::vector<std::uint32_t> stamps = {100'000'000, 99'999'999, 40'000'000, 39'999'999, 0};
  EXPECT_EQ(timesOf(Way::compatible(), 0, stamps),
            (std::vector<std::int64_t>{100'000'000, kWrap + 99'999'999, 2 * kWrap + 40'000'000, 3 * kWrap + 39'999'999,
                                       4 * kWrap}));
  EXPECT_EQ(timesOf(Way::complete(), 0, stamps),
            (std::vector<std::int64_t>{100'000'000, 99'999'999, 40'000'000, 39'999'999, 0}));
}

TEST(SessionClock, takesMoreThanAMinuteBackForAWrapOnBothWays) {
  for (const Way way : {Way::compatible(), Way::complete()}) {
    EXPECT_EQ(timesOf(way, 0, {100'000'000, 39'999'999}), (std::vector<std::int64_t>{100'000'000, kWrap + 39'999'999}));
  }
}

TEST(SessionClock, stepsBackAcrossAWrap) {
  EXPECT_EQ(timesOf(Way::complete(), kWrap, {5, 0xFFFFFFFF, 6}),
            (std::vector<std::int64_t>{kWrap + 5, kWrap - 1, kWrap + 6}));
}

}  // namespace
}  // namespace xlatr
