// What the program's standard streams are connected to.
#pragma once

#include <cstddef>

namespace xlatr::cli {

[[nodiscard]] bool errorOutputIsTerminal();
[[nodiscard]] bool inputIsTerminal();
[[nodiscard]] bool outputIsTerminal();

// Of the terminal on stderr, in characters; 80 if it does not say.
[[nodiscard]] std::size_t terminalWidth();

}  // namespace xlatr::cli
