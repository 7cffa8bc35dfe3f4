#include "terminal.hpp"

#include <sys/ioctl.h>
#include <unistd.h>

namespace xlatr::cli {

bool errorOutputIsTerminal() {
  return ::isatty(STDERR_FILENO) == 1;
}

bool inputIsTerminal() {
  return ::isatty(STDIN_FILENO) == 1;
}

bool outputIsTerminal() {
  return ::isatty(STDOUT_FILENO) == 1;
}

std::size_t terminalWidth() {
  constexpr std::size_t kUsual = 80;
  winsize size{};
  return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsual;
}

}  // namespace xlatr::cli
