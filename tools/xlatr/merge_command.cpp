#include "merge_command.hpp"

#include <algorithm>

#include "command_failure.hpp"
#include "conversions.hpp"
#include "job.hpp"
#include "standard_streams.hpp"

namespace xlatr::cli {

ExitCode runMerge(const Arguments& arguments) {
  if (arguments.output.empty()) {
    throw CommandFailure(ExitCode::WrongUsage, "name the file to write with -o");
  }
  if (std::ranges::count(arguments.paths, kStandardStream) > 1) {
    throw CommandFailure(ExitCode::WrongUsage, "-: standard input can be read once");
  }
  const JobSettings settings(arguments);
  const std::vector<JobPaths> conversions = {{arguments.paths, arguments.output}};
  return runConversions(arguments, settings, conversions);
}

}  // namespace xlatr::cli
