#include "formats/native/session_clock.hpp"

#include <chrono>
#include <span>

namespace xlatr {

SessionClock SessionClock::at(UnsignedMicroseconds time) {
  return {static_cast<std::uint32_t>(time.count()), static_cast<std::uint32_t>(time.count() >> 32U)};
}

void SessionClocks::tick(std::uint32_t stampUs, Way way) {
  constexpr UnsignedMicroseconds kLongSilence = std::chrono::minutes(30);
  constexpr UnsignedMicroseconds kDistance = std::chrono::minutes(10);
  const UnsignedMicroseconds now = advance(kLogger, stampUs, way);
  for (SessionClock& clock : std::span(clocks_).first(kLogger)) {
    const UnsignedMicroseconds then = clock.now();
    if (now > then && now - then >= kLongSilence) {
      clock = SessionClock::at(now - kDistance);
    }
  }
}

}  // namespace xlatr
