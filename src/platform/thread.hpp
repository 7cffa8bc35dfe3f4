// What the standard library does not offer for threads.
#pragma once

#include <cstdint>

namespace xlatr::platform {

// The id of the current thread as the operating system numbers it (on Linux the kernel's thread id).
[[nodiscard]] std::uint32_t currentThreadId();

// The id of the current process, which tells a forked child from its parent.
[[nodiscard]] std::int64_t currentProcessId();

// Puts the current thread into the class that runs only when nothing else wants the processor. It may have to stay
// there: not every user may leave the class again. No effect if the platform refuses.
void enterIdlePriority();

}  // namespace xlatr::platform
