// What the program needs to know of the terminal that it may run in.
#pragma once

namespace xlatr::cli {

// Whether standard error is a terminal, so that a line may be drawn over.
[[nodiscard]] bool errorOutputIsTerminal();

}  // namespace xlatr::cli
