// The time zone of a test. Rules are written out, so that no time zone database is needed.
#pragma once

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace xlatr {

inline constexpr const char* kCentralEurope = "CET-1CEST,M3.5.0,M10.5.0/3";
inline constexpr const char* kNewYork = "EST5EDT,M3.2.0,M11.1.0";

// Sets the zone of the process and puts the former one back. For single-threaded tests.
class ScopedTimeZone {
 public:
  explicit ScopedTimeZone(const char* zone) {
    if (const char* former = std::getenv("TZ")) {
      former_ = former;
    }
    set(zone);
  }
  ~ScopedTimeZone() { set(former_ ? former_->c_str() : nullptr); }
  ScopedTimeZone(const ScopedTimeZone&) = delete;
  ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;

 private:
  static void set(const char* zone) {
    if (zone != nullptr) {
      ::setenv("TZ", zone, 1);
    } else {
      ::unsetenv("TZ");
    }
    ::tzset();
  }

  std::optional<std::string> former_;
};

}  // namespace xlatr
