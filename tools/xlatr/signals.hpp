// What the user or the system asks a running program for.
#pragma once

#include <optional>

#include "exit_code.hpp"

namespace xlatr::cli {

// From now on the first Ctrl-C, hang-up or request to end only sets a flag; a second one ends the program at once,
// should it hang. A request for progress sets another flag.
void watchSignals();

// From now on a write beyond the limit of a file's size fails with a reason, as one to a full disk does, and does not
// end the program without a word.
void expectFullFiles();

// How the program is to end, if it is asked to.
[[nodiscard]] std::optional<ExitCode> interruption();

// Whether progress was asked for since the last call.
[[nodiscard]] bool takeProgressRequest();

}  // namespace xlatr::cli
