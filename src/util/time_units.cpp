#include "util/time_units.hpp"

#include <cmath>
#include <limits>

namespace xlatr {
namespace {

constexpr double kTwoTo63 = 0x1p63;
constexpr double kTwoTo64 = 0x1p64;

}  // namespace

std::optional<TimeUnit> timeUnitOf(double secondsPerUnit) {
  if (secondsPerUnit == kSecondsPerUnit<RealNanoseconds>) {
    return TimeUnit::Nanosecond;
  }
  if (secondsPerUnit == kSecondsPerUnit<RealMicroseconds>) {
    return TimeUnit::Microsecond;
  }
  if (secondsPerUnit == kSecondsPerUnit<RealMilliseconds>) {
    return TimeUnit::Millisecond;
  }
  return secondsPerUnit == kSecondsPerUnit<RealSeconds> ? std::optional(TimeUnit::Second) : std::nullopt;
}

UnsignedMicroseconds wrappedMicroseconds(RealMilliseconds time) {
  const double microseconds = std::round(RealMicroseconds(time).count());
  if (microseconds >= 0.0 && microseconds < kTwoTo64) {
    return UnsignedMicroseconds(static_cast<std::uint64_t>(microseconds));
  }
  if (microseconds < 0.0 && microseconds >= -kTwoTo63) {
    return UnsignedMicroseconds(static_cast<std::uint64_t>(static_cast<std::int64_t>(microseconds)));
  }
  return UnsignedMicroseconds(0);
}

std::uint32_t lowMicroseconds(RealMilliseconds time) {
  const double microseconds = std::round(RealMicroseconds(time).count());
  return std::abs(microseconds) < kTwoTo63 ? static_cast<std::uint32_t>(static_cast<std::int64_t>(microseconds)) : 0;
}

UnsignedMicroseconds clampedMicroseconds(RealMicroseconds time) {
  return time.count() < kTwoTo64 ? UnsignedMicroseconds(static_cast<std::uint64_t>(time.count()))
                                 : UnsignedMicroseconds::max();
}

TimeScale::TimeScale(std::int8_t exponent) {
  constexpr int kDigits = 19;  // the largest power of ten that 64 bits hold
  const int power = exponent - kMicroseconds;
  multiply = power >= 0;
  const int steps = multiply ? power : -power;
  for (int step = 0; step < steps; ++step) {
    factor *= 10;
  }
  if (!multiply && steps > kDigits) {
    factor = 0;
  }
}

}  // namespace xlatr
