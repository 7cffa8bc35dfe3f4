// Traces that a command reads itself.
#pragma once

#include <string>

#include "arguments.hpp"
#include "wanted.hpp"
#include "xlatr/frames.hpp"

namespace xlatr::cli {

// "-" is standard input. Raises an xlatr::Error.
[[nodiscard]] Stream openTrace(const std::string& path, TraceFormat format, const Wanted& wanted);

// Whether a trace is whole and nothing of it had to be guessed.
[[nodiscard]] bool isWhole(const Stream& stream);

// Prints what is wrong with a trace that is not.
void printDamage(const std::string& path, const Stream& stream);

}  // namespace xlatr::cli
