// How a command gives up: with an exit code and one line that names the file, what is wrong and what to do.
#pragma once

#include <stdexcept>
#include <string>

#include "exit_code.hpp"

namespace xlatr::cli {

class CommandFailure : public std::runtime_error {
 public:
  CommandFailure(ExitCode code, const std::string& text) : std::runtime_error(text), code_(code) {}

  [[nodiscard]] ExitCode code() const noexcept { return code_; }

 private:
  ExitCode code_;
};

}  // namespace xlatr::cli
