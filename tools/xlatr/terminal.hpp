// What the program's standard streams are connected to.
#pragma once

#include <cstddef>

namespace xlatr::cli {

[[nodiscard]] bool errorOutputIsTerminal();
[[nodiscard]] bool inputIsTerminal();
[[nodiscard]] bool outputIsTerminal();

// Of the terminal on stderr or stdout, in characters; 80 if none says.
[[nodiscard]] std::size_t terminalWidth();

}  // namespace xlatr::cli
