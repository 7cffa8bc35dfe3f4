#include "signals.hpp"

#include <signal.h>  // NOLINT(modernize-deprecated-headers): <csignal> need not have sigaction

#include <atomic>

namespace xlatr::cli {
namespace {

// The system hands a signal to any thread, so that it is not enough to be safe from interruption by it.
std::atomic<int> ending = 0;
std::atomic<bool> progressWanted = false;
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler may touch nothing else");

extern "C" void onEnd(int signal) {
  ending = signal;
}

extern "C" void onProgressRequest(int /*signal*/) {
  progressWanted = true;
}

void watch(int signal, void (*handler)(int), unsigned flags) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = static_cast<int>(flags);
  ::sigaction(signal, &action, nullptr);
}

}  // namespace

void watchSignals() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before {};
    // A program that was started to survive hang-ups does.
    if (::sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_IGN) {
      continue;
    }
    watch(signal, onEnd, SA_RESETHAND);
  }
  watch(SIGUSR1, onProgressRequest, SA_RESTART);
}

void expectFullFiles() {
  watch(SIGXFSZ, SIG_IGN, 0);
}

std::optional<ExitCode> interruption() {
  switch (ending.load()) {
    case 0:
      return std::nullopt;
    case SIGHUP:
      return ExitCode::HungUp;
    case SIGTERM:
      return ExitCode::Terminated;
    default:
      return ExitCode::Interrupted;
  }
}

bool takeProgressRequest() {
  return progressWanted.exchange(false);
}

}  // namespace xlatr::cli
