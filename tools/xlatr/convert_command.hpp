// xlatr convert SOURCE TARGET
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "exit_code.hpp"

namespace xlatr::cli {

// As typed; an option that was not given has its default.
struct ConvertArguments {
  std::string source;
  std::string target;
  std::string to;
  std::optional<double> targetVersion;
  std::vector<std::uint32_t> sessions;
  std::optional<std::string> separator;
  bool zipped = false;
  bool sorted = false;
  bool force = false;
  bool quiet = false;
};

// Checks, converts and reports. Returns Done, DoneWithWarnings or Interrupted; everything else is a CommandFailure. The
// checks fail before any file is touched.
[[nodiscard]] ExitCode runConvert(const ConvertArguments& arguments);

}  // namespace xlatr::cli
