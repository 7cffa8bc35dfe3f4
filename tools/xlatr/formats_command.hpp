// xlatr formats
#pragma once

#include "exit_code.hpp"

namespace xlatr::cli {

struct FormatsArguments {
  bool json = false;
};

// Prints one row per format: what it is, its versions, whether `convert` reads and writes it, and the library's
// targets.
[[nodiscard]] ExitCode runFormats(const FormatsArguments& arguments);

}  // namespace xlatr::cli
