#include "terminal.hpp"

#include <unistd.h>

namespace xlatr::cli {

bool errorOutputIsTerminal() {
  return ::isatty(STDERR_FILENO) == 1;
}

}  // namespace xlatr::cli
