// Running conversions one by one or several at a time, and telling what became of them.
#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "arguments.hpp"
#include "exit_code.hpp"
#include "job.hpp"

namespace xlatr::cli {

// Runs all of them, as many at a time as --jobs says, and prints a line for each, a summary and the JSON that was asked
// for. After an interruption no further one is begun.
[[nodiscard]] ExitCode runConversions(const Arguments& arguments, const JobSettings& settings,
                                      const std::vector<JobPaths>& conversions);

// What --progress asks for; a bar needs a terminal.
[[nodiscard]] ProgressForm progressForm(const Arguments& arguments);

// How many at a time. Raises a CommandFailure with ExitCode::WrongUsage.
[[nodiscard]] std::size_t jobCount(const Arguments& arguments, std::size_t files);

// Calls `work` with each number below `count`, on so many threads, or on as many as the system starts. When it raises a
// failure, no further number is begun; the first failure comes out when all threads have ended.
void inParallel(std::size_t count, std::size_t threads, const std::function<void(std::size_t)>& work);

}  // namespace xlatr::cli
