// Ctrl-C as a state that a command checks when it suits it.
#pragma once

namespace xlatr::cli {

// From now on the first SIGINT only sets a flag; the second one ends the program at once, should it hang.
void watchForInterrupt();

// Whether SIGINT came since watchForInterrupt.
[[nodiscard]] bool interruptRequested();

}  // namespace xlatr::cli
