#include "standard_streams.hpp"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>

#include "signals.hpp"

namespace xlatr::cli {
namespace {

constexpr std::uint64_t kLargestTransfer = std::uint64_t{1} << 30;

template <typename Transfer>
std::int64_t uninterrupted(Transfer transfer) {
  for (;;) {
    const ssize_t count = transfer();
    if (count >= 0 || errno != EINTR) {
      return count;
    }
  }
}

// Waits for something to read, or its end. False if the program is asked to end meanwhile, which a signal alone does
// not tell if it comes before the waiting begins.
bool waitForInput() {
  constexpr int kMilliseconds = 100;
  pollfd input{STDIN_FILENO, POLLIN, 0};
  while (::poll(&input, 1, kMilliseconds) == 0 || input.revents == 0) {
    if (interruption()) {
      return false;
    }
  }
  return true;
}

std::int64_t readInOrder(void* /*context*/, std::uint64_t /*offset*/, void* buffer, std::uint64_t bytes) {
  if (!waitForInput()) {
    return -1;
  }
  const auto most = static_cast<std::size_t>(std::min(bytes, kLargestTransfer));
  return uninterrupted([&] { return ::read(STDIN_FILENO, buffer, most); });
}

std::int64_t readAnywhere(void* /*context*/, std::uint64_t offset, void* buffer, std::uint64_t bytes) {
  const auto most = static_cast<std::size_t>(std::min(bytes, kLargestTransfer));
  return uninterrupted([&] { return ::pread(STDIN_FILENO, buffer, most, static_cast<off_t>(offset)); });
}

std::int32_t writeAll(void* /*context*/, const void* bytes, std::uint64_t count) {
  const char* at = static_cast<const char*>(bytes);
  while (count > 0) {
    const auto most = static_cast<std::size_t>(std::min(count, kLargestTransfer));
    const std::int64_t written = uninterrupted([&] { return ::write(STDOUT_FILENO, at, most); });
    if (written < 0) {
      return -1;
    }
    at += written;
    count -= static_cast<std::uint64_t>(written);
  }
  return 0;
}

}  // namespace

xlatr_input standardInput() {
  xlatr_input input{};
  input.size = sizeof input;
  input.name = "standard input";
  struct stat status {};
  // What was read of it before, by the shell, stays read.
  if (::fstat(STDIN_FILENO, &status) == 0 && S_ISREG(status.st_mode) && ::lseek(STDIN_FILENO, 0, SEEK_CUR) == 0) {
    input.read = readAnywhere;
    input.length = static_cast<std::uint64_t>(status.st_size);
    input.length_known = 1;
  } else {
    input.read = readInOrder;
    input.in_order = 1;
  }
  return input;
}

xlatr_output standardOutput(const char* name) {
  xlatr_output output{};
  output.size = sizeof output;
  output.write = writeAll;
  output.name = name;
  return output;
}

}  // namespace xlatr::cli
