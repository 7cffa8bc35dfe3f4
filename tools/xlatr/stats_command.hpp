// xlatr stats TRACE...
#pragma once

#include "arguments.hpp"
#include "exit_code.hpp"

namespace xlatr::cli {

// Shows what the traffic of each trace is like, in order. The others are shown even if one can't be read.
[[nodiscard]] ExitCode runStats(const Arguments& arguments);

}  // namespace xlatr::cli
