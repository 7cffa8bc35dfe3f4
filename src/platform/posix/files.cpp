#include "platform/files.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ios>
#include <system_error>
#include <utility>

namespace xlatr::platform {
namespace {

[[noreturn]] void raise(const std::string& path, const char* action, int error) {
  throw std::ios_base::failure(path + ": cannot " + action, std::error_code(error, std::generic_category()));
}

// Some systems refuse or cut a transfer of 2 GiB and more.
constexpr std::size_t kLargestTransfer = std::size_t{1} << 30;

}  // namespace

bool fileExists(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

std::uint64_t fileSize(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && status.st_size > 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

void removeFile(const std::string& path) {
  ::unlink(path.c_str());
}

File::File(int descriptor, std::string path) : descriptor_(descriptor), path_(std::move(path)) {}

File::~File() {
  if (isOpen()) {
    ::close(descriptor_);
  }
}

File::File(File&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)), path_(std::move(other.path_)) {}

File& File::operator=(File&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  std::swap(path_, other.path_);
  return *this;
}

// A pipe would make the call wait for someone to write to it, and a device may have no end.
File File::openForReading(const std::string& path) {
  File file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK), path);
  if (!file.isOpen()) {
    raise(path, "open", errno);
  }
  struct stat status {};
  if (::fstat(file.descriptor_, &status) != 0 || !S_ISREG(status.st_mode)) {
    raise(path, "open", S_ISDIR(status.st_mode) ? EISDIR : EOPNOTSUPP);
  }
  return file;
}

File File::createForWriting(const std::string& path) {
  constexpr mode_t kAllMayReadAndWrite = 0666;  // minus the process's mask
  File file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kAllMayReadAndWrite), path);
  if (!file.isOpen()) {
    raise(path, "create", errno);
  }
  return file;
}

std::size_t File::read(std::span<char> bytes) {
  for (;;) {
    const ssize_t count = ::read(descriptor_, bytes.data(), std::min(bytes.size(), kLargestTransfer));
    if (count >= 0) {
      return static_cast<std::size_t>(count);
    }
    if (errno != EINTR) {
      fail("read");
    }
  }
}

void File::write(std::span<const char> bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor_, bytes.data(), std::min(bytes.size(), kLargestTransfer));
    if (count >= 0) {
      bytes = bytes.subspan(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      fail("write");
    }
  }
}

void File::seek(std::uint64_t offset) {
  if (::lseek(descriptor_, static_cast<off_t>(offset), SEEK_SET) < 0) {
    fail("seek in");
  }
}

void File::close() {
  if (isOpen() && ::close(std::exchange(descriptor_, -1)) != 0 && errno != EINTR) {
    fail("close");
  }
}

void File::fail(const char* action) const {
  raise(path_, action, errno);
}

}  // namespace xlatr::platform
