// xlatr merge SOURCE... -o TARGET
#pragma once

#include "arguments.hpp"
#include "exit_code.hpp"

namespace xlatr::cli {

[[nodiscard]] ExitCode runMerge(const Arguments& arguments);

}  // namespace xlatr::cli
