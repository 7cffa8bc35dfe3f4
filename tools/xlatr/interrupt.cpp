#include "interrupt.hpp"

#include <atomic>
#include <csignal>

namespace xlatr::cli {

namespace {

// The system hands the signal to any thread, so that it is not enough to be safe from interruption by it.
std::atomic<bool> interrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may touch nothing else");

extern "C" void onInterrupt(int signal) {
  interrupted = true;
  std::signal(signal, SIG_DFL);
}

}  // namespace

void watchForInterrupt() {
  std::signal(SIGINT, onInterrupt);
}

bool interruptRequested() {
  return interrupted;
}

}  // namespace xlatr::cli
