// xlatr convert SOURCE... TARGET
#pragma once

#include "arguments.hpp"
#include "exit_code.hpp"

namespace xlatr::cli {

// Converts one file, or many into a folder. The exit code is that of the one that fared worst.
[[nodiscard]] ExitCode runConvert(const Arguments& arguments);

}  // namespace xlatr::cli
