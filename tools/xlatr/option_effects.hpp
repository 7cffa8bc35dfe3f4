// Options that were given and change nothing.
#pragma once

#include <vector>

#include "arguments.hpp"
#include "job.hpp"

namespace xlatr::cli {

// Says so, one line for each. Raises a CommandFailure with ExitCode::WrongUsage for those that only --compat has.
void tellOptionsWithoutEffect(const Arguments& arguments, const JobSettings& settings,
                              const std::vector<JobPaths>& conversions);

}  // namespace xlatr::cli
