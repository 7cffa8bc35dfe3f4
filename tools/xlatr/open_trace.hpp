// Traces that a command reads itself.
#pragma once

#include <string>

#include "arguments.hpp"
#include "exit_code.hpp"
#include "progress.hpp"
#include "wanted.hpp"
#include "xlatr/frames.hpp"

namespace xlatr::cli {

// "-" is standard input. Whoever reads the stream, `watch` sees it, unless it is null. Raises an xlatr::Error.
[[nodiscard]] Stream openTrace(const std::string& path, TraceFormat format, const Wanted& wanted, Watch* watch);

// Why a trace was not read to its end: that the program is asked to end comes first.
struct ReadFailure {
  ExitCode exitCode;
  std::string text;  // one line
};
[[nodiscard]] ReadFailure failureOf(const Error& error);

// Whether a trace is whole and nothing of it had to be guessed.
[[nodiscard]] bool isWhole(const Stream& stream);

// Prints what is wrong with a trace that is not.
void printDamage(const std::string& path, const Stream& stream);

}  // namespace xlatr::cli
