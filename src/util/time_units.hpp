// The units of time, and how one becomes another. A time says its unit by its type, and a number of another unit can't
// be mistaken for it; only a number as it stands in a file, and what a C function takes or returns, is a bare one,
// whose name says the unit.
//
// Durations of real numbers convert by assignment, and the result is part of what is written: the last digits of a file
// depend on it. std::chrono converts with exactly one rounding between the units below, by a division where the target
// is the greater unit and by a multiplication where it is the smaller one: 9.7 ms are 9.7 / 1000.0 s, and not
// 9.7 * 0.001 s, which is another number. That is what the files have always held, and the test of this header keeps
// it.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <ratio>

namespace xlatr {

using RealNanoseconds = std::chrono::duration<double, std::nano>;
using RealMicroseconds = std::chrono::duration<double, std::micro>;
using RealMilliseconds = std::chrono::duration<double, std::milli>;
using RealSeconds = std::chrono::duration<double>;
using RealMinutes = std::chrono::duration<double, std::ratio<60>>;

// The coarse unit of the objects of a BLF log, of which 100 make a millisecond.
using RealTensOfMicroseconds = std::chrono::duration<double, std::ratio<1, 100'000>>;

// Counts of 64 bits as files keep them. They add and subtract modulo 2^64: what is before a start wraps, and comes
// right when the start is added.
using UnsignedNanoseconds = std::chrono::duration<std::uint64_t, std::nano>;
using UnsignedMicroseconds = std::chrono::duration<std::uint64_t, std::micro>;

using Hundredths = std::chrono::duration<std::int32_t, std::centi>;  // of a second

// The unit of a number in a file, where the file says which one it is.
enum class TimeUnit : std::uint8_t { Nanosecond, Microsecond, Millisecond, Second };

// The seconds of one unit, as a file states them: 1e-9, 1e-6, 0.001 or 1.0, the double nearest to each.
template <class Unit>
inline constexpr double kSecondsPerUnit = static_cast<double>(Unit::period::num) /
                                          static_cast<double>(Unit::period::den);

// The unit that has exactly these seconds; nothing for any other number.
[[nodiscard]] std::optional<TimeUnit> timeUnitOf(double secondsPerUnit);

[[nodiscard]] constexpr RealMicroseconds toMicroseconds(double count, TimeUnit unit) {
  switch (unit) {
    case TimeUnit::Nanosecond:
      return RealNanoseconds(count);
    case TimeUnit::Microsecond:
      return RealMicroseconds(count);
    case TimeUnit::Millisecond:
      return RealMilliseconds(count);
    case TimeUnit::Second:
      break;
  }
  return RealSeconds(count);
}

// The nearest whole microsecond, modulo 2^64, so that a time before the start wraps. 0 for what is no number and for
// what 64 bits don't hold: below -2^63 and from 2^64 on.
[[nodiscard]] UnsignedMicroseconds wrappedMicroseconds(RealMilliseconds time);

// The low 32 bits of the nearest whole microsecond. 0 for what is no number and for -2^63 and below, 2^63 and above: a
// limit of its own, other than that of wrappedMicroseconds.
[[nodiscard]] std::uint32_t lowMicroseconds(RealMilliseconds time);

// The whole microseconds in a time that is not negative, cut and not rounded. What no counter holds is the largest one.
[[nodiscard]] UnsignedMicroseconds clampedMicroseconds(RealMicroseconds time);

// How the ticks of a file that states their length as a power of ten become microseconds. Everything is unsigned and
// modulo 2^64; a divisor beyond that leaves nothing.
class TimeScale {
 public:
  static constexpr std::int8_t kMicroseconds = -6;  // the exponent of ticks that are microseconds

  TimeScale() = default;
  // A tick is ten to the power of the exponent seconds.
  explicit TimeScale(std::int8_t exponent);

  [[nodiscard]] UnsignedMicroseconds toMicroseconds(std::uint64_t ticks) const {
    if (multiply) {
      return UnsignedMicroseconds(ticks * factor);
    }
    return UnsignedMicroseconds(factor == 0 ? 0 : ticks / factor);
  }

  bool multiply = true;  // or divide
  std::uint64_t factor = 1;
};

}  // namespace xlatr
