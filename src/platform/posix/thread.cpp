#include "platform/thread.hpp"

#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace xlatr::platform {

std::uint32_t currentThreadId() {
  return static_cast<std::uint32_t>(::syscall(SYS_gettid));
}

std::int64_t currentProcessId() {
  return ::getpid();
}

void enterIdlePriority() {
  const sched_param none{};
  ::sched_setscheduler(0, SCHED_IDLE, &none);
}

}  // namespace xlatr::platform
