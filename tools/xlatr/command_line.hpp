// What the user may type.
#pragma once

#include <variant>

#include "convert_command.hpp"
#include "exit_code.hpp"
#include "formats_command.hpp"
#include "info_command.hpp"

namespace xlatr::cli {

// One command with its arguments, or the exit code if help or the version was asked for and printed.
using Command = std::variant<ExitCode, ConvertArguments, InfoArguments, FormatsArguments>;

// Raises a CommandFailure with ExitCode::WrongUsage for a command line that can't be understood.
[[nodiscard]] Command parseCommandLine(int argc, const char* const* argv);

}  // namespace xlatr::cli
