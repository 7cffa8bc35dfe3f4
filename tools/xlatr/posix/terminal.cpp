#include "terminal.hpp"

#include <sys/ioctl.h>
#include <unistd.h>

#include <initializer_list>

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
  for (const int stream : {STDERR_FILENO, STDOUT_FILENO}) {
    winsize size{};
    if (::ioctl(stream, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
      return size.ws_col;
    }
  }
  return kUsual;
}

}  // namespace xlatr::cli
