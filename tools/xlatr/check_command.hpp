// xlatr check FILE...
#pragma once

#include "arguments.hpp"
#include "exit_code.hpp"

namespace xlatr::cli {

// Reads the files to their ends. DoneWithLosses if one is damaged, Failed if one is no trace.
[[nodiscard]] ExitCode runCheck(const Arguments& arguments);

}  // namespace xlatr::cli
