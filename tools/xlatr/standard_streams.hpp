// Standard input as a trace that is read, and standard output as one that is written.
#pragma once

#include <string>

#include "xlatr/frames.h"

namespace xlatr::cli {

// What stands for standard input or output among paths.
inline constexpr const char* kStandardStream = "-";

// One that a file was redirected to can be read at any place, others in order. The name stays for ever.
[[nodiscard]] xlatr_input standardInput();

// `name` stands in the trace for its path, and must stay.
[[nodiscard]] xlatr_output standardOutput(const char* name);

}  // namespace xlatr::cli
