// The clocks of a logger's session, whose time stamps are the low half of them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "io/quirk.hpp"
#include "util/time_units.hpp"

namespace xlatr {

// The 64 bits of a clock of microseconds of which the file has the low 32.
struct SessionClock {
  // How far a time stamp can be before the one before it without counting as a wrap, which it does on the compatible
  // way however near it is. Producers write frames of several controllers a little out of order.
  static constexpr UnsignedMicroseconds kStepBack = std::chrono::minutes(1);

  std::uint32_t low = 0;
  std::uint32_t high = 0;

  [[nodiscard]] static SessionClock at(UnsignedMicroseconds time);
  [[nodiscard]] UnsignedMicroseconds now() const { return UnsignedMicroseconds(std::uint64_t{high} << 32U | low); }
  // A stamp that is lower than the one before has wrapped.
  void advance(std::uint32_t stampUs, Way way) {
    if (!way.has(Quirk::BtrStepBackIsAWrap) && low - stampUs <= kStepBack.count()) {
      high -= stampUs > low ? 1 : 0;
    } else if (stampUs < low) {
      ++high;
    }
    low = stampUs;
  }
};

// The clocks of the buses of a session, and the logger's own.
class SessionClocks {
 public:
  // Buses count from 0; the last of these numbers is the logger's.
  static constexpr std::size_t kClocks = 16;
  static constexpr std::size_t kLogger = kClocks - 1;

  // All clocks stand at the same time.
  void start(UnsignedMicroseconds time) { clocks_.fill(SessionClock::at(time)); }
  // The time of a stamp of that bus. One before the start of all wraps modulo 2^64.
  UnsignedMicroseconds advance(std::size_t bus, std::uint32_t stampUs, Way way) {
    clocks_[bus].advance(stampUs, way);
    return clocks_[bus].now();
  }
  // The logger's clock ticks on where a bus is silent. A bus that was silent for long is taken along, so that it can't
  // miss a wrap of its time stamps; it stays behind the logger, since frames of a short while ago may still come.
  void tick(std::uint32_t stampUs, Way way);

  [[nodiscard]] const SessionClock& of(std::size_t bus) const { return clocks_[bus]; }

 private:
  std::array<SessionClock, kClocks> clocks_{};
};

}  // namespace xlatr
