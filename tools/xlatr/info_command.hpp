// xlatr info FILE...
#pragma once

#include "arguments.hpp"
#include "exit_code.hpp"

namespace xlatr::cli {

// Shows what each file is, in order. Failed if at least one can't be read; the others are shown all the same.
[[nodiscard]] ExitCode runInfo(const Arguments& arguments);

}  // namespace xlatr::cli
