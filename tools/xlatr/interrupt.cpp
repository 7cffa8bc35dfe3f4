#include "interrupt.hpp"

#include <csignal>

namespace xlatr::cli {

namespace {

volatile std::sig_atomic_t interrupted = 0;

extern "C" void onInterrupt(int signal) {
  interrupted = 1;
  std::signal(signal, SIG_DFL);
}

}  // namespace

void watchForInterrupt() {
  std::signal(SIGINT, onInterrupt);
}

bool interruptRequested() {
  return interrupted != 0;
}

}  // namespace xlatr::cli
