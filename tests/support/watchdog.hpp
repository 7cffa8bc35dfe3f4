// Ends a test program that hangs.
#pragma once

#include <signal.h>  // NOLINT(modernize-deprecated-headers): <csignal> need not have sigaction
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <string_view>

namespace xlatr::test {

// While it lives, something has to happen that must not take for ever. After a minute the program says what that was,
// and aborts. One at a time.
class Watchdog {
 public:
  explicit Watchdog(std::string_view what) {
    text_ = "This does not end: " + std::string(what) + "\n";
    struct sigaction action {};
    action.sa_handler = [](int /*signal*/) {
      static_cast<void>(!::write(STDERR_FILENO, text_.data(), text_.size()));
      std::abort();
    };
    ::sigaction(SIGALRM, &action, nullptr);
    ::alarm(kMostSeconds);
  }
  ~Watchdog() { ::alarm(0); }
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

 private:
  static constexpr unsigned kMostSeconds = 60;

  inline static std::string text_;
};

}  // namespace xlatr::test
