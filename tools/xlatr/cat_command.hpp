// xlatr cat SOURCE...
#pragma once

#include "arguments.hpp"
#include "exit_code.hpp"

namespace xlatr::cli {

[[nodiscard]] ExitCode runCat(const Arguments& arguments);

}  // namespace xlatr::cli
