#include "util/time_units.hpp"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <optional>
#include <ratio>

namespace xlatr {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

// Some of these come out one bit apart when a division is done as a multiplication by the reciprocal, or the other way.
constexpr std::array kTimes = {0.0,       -0.0,   0.1,     1.1,      -3.3,         9.7,         1234.5678,
                               1500.0005, 5.0e-4, 1.0e300, 4.9e-324, 86399.999999, 4294967.295, 123456789012345.6};

// The bits, so that -0 and 0 are two and the last digit counts.
template <class Unit>
std::uint64_t bitsOf(Unit time) {
  return std::bit_cast<std::uint64_t>(time.count());
}
std::uint64_t bitsOf(double number) {
  return std::bit_cast<std::uint64_t>(number);
}

TEST(TimeUnits, greaterUnitsAreReachedByDivision) {
  for (const double time : kTimes) {
    EXPECT_EQ(bitsOf(RealSeconds(RealMilliseconds(time))), bitsOf(time / 1000.0)) << time;
    EXPECT_EQ(bitsOf(RealMilliseconds(RealMicroseconds(time))), bitsOf(time / 1000.0)) << time;
    EXPECT_EQ(bitsOf(RealMicroseconds(RealNanoseconds(time))), bitsOf(time / 1000.0)) << time;
    EXPECT_EQ(bitsOf(RealMilliseconds(RealNanoseconds(time))), bitsOf(time / 1e6)) << time;
    EXPECT_EQ(bitsOf(RealSeconds(RealMicroseconds(time))), bitsOf(time / 1e6)) << time;
    EXPECT_EQ(bitsOf(RealMilliseconds(RealTensOfMicroseconds(time))), bitsOf(time / 100.0)) << time;
  }
}

TEST(TimeUnits, smallerUnitsAreReachedByMultiplication) {
  for (const double time : kTimes) {
    EXPECT_EQ(bitsOf(RealMilliseconds(RealSeconds(time))), bitsOf(time * 1000.0)) << time;
    EXPECT_EQ(bitsOf(RealMicroseconds(RealMilliseconds(time))), bitsOf(time * 1000.0)) << time;
    EXPECT_EQ(bitsOf(RealNanoseconds(RealMicroseconds(time))), bitsOf(time * 1000.0)) << time;
    EXPECT_EQ(bitsOf(RealMicroseconds(RealSeconds(time))), bitsOf(time * 1e6)) << time;
    EXPECT_EQ(bitsOf(RealMicroseconds(RealTensOfMicroseconds(time))), bitsOf(time * 10.0)) << time;
    EXPECT_EQ(bitsOf(RealNanoseconds(RealMinutes(time))), bitsOf(time * 6e10)) << time;
  }
}

// The two tests above hold something only if the other ways give other numbers.
TEST(TimeUnits, reciprocalsWouldGiveOtherDigits) {
  EXPECT_NE(9.7 / 1000.0, 9.7 * 0.001);
  EXPECT_NE(9.7 * 1000.0, 9.7 / 0.001);
  EXPECT_NE(1500.0005 / 1e6, 1500.0005 * 1e-6);
  EXPECT_NE(1500.0005 / 1e6, 1500.0005 / 1000.0 / 1000.0);
  EXPECT_NE(123456789012345.6 * 1e6, 123456789012345.6 * 1000.0 * 1000.0);
}

TEST(TimeUnits, sumsAreFormedInTheSmallerUnitFromLeftToRight) {
  const RealNanoseconds sum = RealNanoseconds(1.0e18 + 128.0) + RealMinutes(-720.0) + RealMinutes(60.0);
  EXPECT_EQ(bitsOf(sum), bitsOf(1.0e18 + 128.0 + -720.0 * 6e10 + 60.0 * 6e10));
}

TEST(TimeUnits, countsBecomeRealNumbersBeforeTheyAreDivided) {
  for (const std::uint64_t count : {std::uint64_t{0}, std::uint64_t{1500250}, (std::uint64_t{1} << 53) + 1,
                                    std::numeric_limits<std::uint64_t>::max()}) {
    const auto number = static_cast<double>(count);
    EXPECT_EQ(bitsOf(RealMilliseconds(UnsignedMicroseconds(count))), bitsOf(number / 1000.0)) << count;
    EXPECT_EQ(bitsOf(RealSeconds(UnsignedMicroseconds(count))), bitsOf(number / 1e6)) << count;
  }
}

TEST(TimeUnits, countsWrap) {
  EXPECT_EQ(UnsignedMicroseconds(2) - UnsignedMicroseconds(5) + UnsignedMicroseconds(10), UnsignedMicroseconds(7));
  EXPECT_EQ(UnsignedMicroseconds(std::chrono::microseconds(-1)), UnsignedMicroseconds::max());
}

TEST(TimeUnits, unitsAreFoundByTheirExactSeconds) {
  EXPECT_EQ(bitsOf(kSecondsPerUnit<RealNanoseconds>), bitsOf(1e-9));
  EXPECT_EQ(timeUnitOf(1e-9), TimeUnit::Nanosecond);
  EXPECT_EQ(timeUnitOf(1e-6), TimeUnit::Microsecond);
  EXPECT_EQ(timeUnitOf(0.001), TimeUnit::Millisecond);
  EXPECT_EQ(timeUnitOf(1.0), TimeUnit::Second);
  for (const double none : {0.0, 60.0, 0.01, -1.0, 1.0000000000000002e-9, kNotANumber, kInfinity}) {
    EXPECT_EQ(timeUnitOf(none), std::nullopt) << none;
  }
}

TEST(TimeUnits, numbersOfAUnitBecomeMicroseconds) {
  for (const double time : kTimes) {
    EXPECT_EQ(bitsOf(toMicroseconds(time, TimeUnit::Nanosecond)), bitsOf(time / 1000.0)) << time;
    EXPECT_EQ(bitsOf(toMicroseconds(time, TimeUnit::Microsecond)), bitsOf(time)) << time;
    EXPECT_EQ(bitsOf(toMicroseconds(time, TimeUnit::Millisecond)), bitsOf(time * 1000.0)) << time;
    EXPECT_EQ(bitsOf(toMicroseconds(time, TimeUnit::Second)), bitsOf(time * 1e6)) << time;
  }
}

TEST(TimeUnits, roundsMillisecondsToMicrosecondsThatWrap) {
  const struct {
    double milliseconds;
    std::uint64_t microseconds;
  } cases[] = {{0.0, 0},
               {1.0004, 1000},
               {1.0005, 1001},
               {1.0006, 1001},
               {1.8e16, 18000000000000000000U},
               {-0.002, std::uint64_t{0} - 2},
               {1e300, 0},
               {-1e300, 0},
               {kInfinity, 0},
               {kNotANumber, 0}};
  for (const auto& test : cases) {
    EXPECT_EQ(wrappedMicroseconds(RealMilliseconds(test.milliseconds)).count(), test.microseconds) << test.milliseconds;
  }
}

TEST(TimeUnits, lowMicrosecondsHaveALowerLimit) {
  const struct {
    double milliseconds;
    std::uint32_t microseconds;
  } cases[] = {{0.0004, 0},      {0.0005, 1},      {4294967.295, 0xFFFFFFFF},
               {4294967.296, 0}, {4294967.297, 1}, {-0.001, 0xFFFFFFFF},
               {9.3e15, 0},      {-9.3e15, 0},     {kInfinity, 0},
               {kNotANumber, 0}};
  for (const auto& test : cases) {
    EXPECT_EQ(lowMicroseconds(RealMilliseconds(test.milliseconds)), test.microseconds) << test.milliseconds;
  }
}

TEST(TimeUnits, clampedMicrosecondsAreCut) {
  EXPECT_EQ(clampedMicroseconds(RealMicroseconds(0.999)), UnsignedMicroseconds(0));
  EXPECT_EQ(clampedMicroseconds(RealMicroseconds(1234.567)), UnsignedMicroseconds(1234));
  EXPECT_EQ(clampedMicroseconds(RealMicroseconds(0x1p63)), UnsignedMicroseconds(std::uint64_t{1} << 63U));
  EXPECT_EQ(clampedMicroseconds(RealMicroseconds(0x1p64)), UnsignedMicroseconds::max());
  EXPECT_EQ(clampedMicroseconds(RealMicroseconds(kInfinity)), UnsignedMicroseconds::max());
}

TEST(TimeUnits, ticksAreScaledModulo2ToThe64th) {
  constexpr std::uint64_t kTicks = 12345678901;
  const struct {
    int exponent;
    std::uint64_t microseconds;
  } cases[] = {{TimeScale::kMicroseconds, kTicks},
               {-5, kTicks * 10},
               {0, kTicks * 1000000},
               {-9, kTicks / 1000},
               {-25, 0},
               {-26, 0},
               {14, kTicks * 7766279631452241920U},  // 10 to the 20th, modulo 2 to the 64th
               {127, 0}};
  for (const auto& test : cases) {
    EXPECT_EQ(TimeScale(static_cast<std::int8_t>(test.exponent)).toMicroseconds(kTicks).count(), test.microseconds)
        << test.exponent;
  }
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
  EXPECT_EQ(TimeScale(-25).toMicroseconds(kMost).count(), 1U) << "divided by the largest power of ten";
  EXPECT_EQ(TimeScale(-24).toMicroseconds(kMost).count(), 18U);
  EXPECT_EQ(TimeScale(-26).toMicroseconds(kMost).count(), 0U) << "not by 10 to the 20th, modulo 2 to the 64th";
}

}  // namespace
}  // namespace xlatr
