// xlatr compare TRACE TRACE
#pragma once

#include "arguments.hpp"
#include "exit_code.hpp"

namespace xlatr::cli {

// Says whether two traces hold the same frames, and where not: Done if they do, DoneWithLosses if not.
[[nodiscard]] ExitCode runCompare(const Arguments& arguments);

}  // namespace xlatr::cli
