// xlatr info FILE...
#pragma once

#include <string>
#include <vector>

#include "exit_code.hpp"

namespace xlatr::cli {

struct InfoArguments {
  std::vector<std::string> files;
  bool json = false;
};

// Shows what each file is, in order. Returns Failed if at least one can't be read; the others are shown all the same.
[[nodiscard]] ExitCode runInfo(const InfoArguments& arguments);

}  // namespace xlatr::cli
