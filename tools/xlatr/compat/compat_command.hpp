// xlatr convert --compat: what the library's xlatr_convert writes, and nothing else.
#pragma once

#include <string>
#include <vector>

#include "arguments.hpp"
#include "exit_code.hpp"
#include "job.hpp"

namespace xlatr::cli {

// Raises a CommandFailure with ExitCode::WrongUsage if an option was given that this way does not have.
void requireCompatOptions(const Arguments& arguments);

// Checks, converts and reports, one file after the other. The checks of a file fail before any file of it is touched;
// until all its targets are whole there are the old ones, or none.
[[nodiscard]] ExitCode runCompatConversions(const Arguments& arguments, const std::vector<JobPaths>& conversions);

}  // namespace xlatr::cli
