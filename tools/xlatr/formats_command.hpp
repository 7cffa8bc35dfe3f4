// xlatr formats
#pragma once

#include "arguments.hpp"
#include "exit_code.hpp"

namespace xlatr::cli {

// Prints what the formats are, and what each version that is written can hold.
[[nodiscard]] ExitCode runFormats(const Arguments& arguments);

}  // namespace xlatr::cli
