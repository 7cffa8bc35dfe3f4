// From the words that the user typed to a command with its arguments.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "arguments.hpp"
#include "options.hpp"

namespace xlatr::cli {

struct CommandLine {
  const CommandRow* command = nullptr;  // null if help or the version of the program is asked for
  Arguments arguments = {};
  bool version = false;
};

// `words` without the program's own name; `defaults` is the value of XLATR_DEFAULTS, options that stand before those of
// the user where the command has them. Raises a CommandFailure with ExitCode::WrongUsage for what can't be understood.
[[nodiscard]] CommandLine parseCommandLine(const std::vector<std::string>& words, const std::string& defaults);

}  // namespace xlatr::cli
