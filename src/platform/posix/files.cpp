#include "platform/files.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ios>
#include <memory>
#include <system_error>
#include <utility>

namespace xlatr::platform {
namespace {

[[noreturn]] void raise(const std::string& path, const char* action, int error) {
  throw std::ios_base::failure(path + ": cannot " + action, std::error_code(error, std::generic_category()));
}

std::uint64_t sizeIn(const struct stat& status) {
  return static_cast<std::uint64_t>(std::max<off_t>(status.st_size, 0));
}

// Returns the size of the file.
std::uint64_t requireRegular(int descriptor, const std::string& path, const char* action) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) {
    raise(path, action, errno);
  }
  if (!S_ISREG(status.st_mode)) {
    raise(path, action, S_ISDIR(status.st_mode) ? EISDIR : EOPNOTSUPP);
  }
  return sizeIn(status);
}

// What the system has no number for.
class FileFailures final : public std::error_category {
 public:
  enum Number : int { kBecameShorter = 1 };

  [[nodiscard]] const char* name() const noexcept override { return "file"; }
  [[nodiscard]] std::string message(int /*number*/) const override { return "the file became shorter in the meantime"; }
};

[[noreturn]] void raiseBecameShorter(const std::string& path) {
  static const FileFailures failures;
  throw std::ios_base::failure(path + ": cannot read", std::error_code(FileFailures::kBecameShorter, failures));
}

// Some systems refuse or cut a transfer of 2 GiB and more.
constexpr std::size_t kLargestTransfer = std::size_t{1} << 30;

constexpr mode_t kAllMayReadAndWrite = 0666;  // minus the process's mask

}  // namespace

PathKind kindOfPath(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    return PathKind::Nothing;
  }
  if (S_ISDIR(status.st_mode)) {
    return PathKind::Folder;
  }
  return S_ISREG(status.st_mode) ? PathKind::File : PathKind::Device;
}

bool fileExists(const std::string& path) {
  const PathKind kind = kindOfPath(path);
  return kind == PathKind::File || kind == PathKind::Device;
}

std::string pathBehindLinks(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
  return real == nullptr ? path : real.get();
}

std::optional<std::uint64_t> dataSize(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0 || S_ISDIR(status.st_mode)) {
    return std::nullopt;
  }
  return sizeIn(status);
}

std::uint64_t fileSize(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    raise(path, "read the size", errno);
  }
  return sizeIn(status);
}

void removeFile(const std::string& path) {
  ::unlink(path.c_str());
}

void replaceFile(const std::string& path, const std::string& by) {
  struct stat status {};
  if (::stat(path.c_str(), &status) == 0) {
    constexpr mode_t kPermissions = 0777;
    ::chmod(by.c_str(), status.st_mode & kPermissions);  // a file system without permissions refuses, and needs none
  }
  if (std::rename(by.c_str(), path.c_str()) != 0) {
    raise(path, "create", errno);
  }
}

// The path is kept first: without memory for it no file is opened, or even created.
File::File(const std::string& path, int flags) : path_(path) {
  descriptor_ = ::open(path.c_str(), flags | O_CLOEXEC, kAllMayReadAndWrite);
}

File::~File() {
  if (isOpen()) {
    ::close(descriptor_);
  }
}

File::File(File&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)),
      path_(std::move(other.path_)),
      offset_(other.offset_),
      sizeAtOpen_(other.sizeAtOpen_) {}

File& File::operator=(File&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  std::swap(path_, other.path_);
  std::swap(offset_, other.offset_);
  std::swap(sizeAtOpen_, other.sizeAtOpen_);
  return *this;
}

// A pipe would make the call wait for someone to write to it, and a device may have no end.
File File::openForReading(const std::string& path) {
  File file(path, O_RDONLY | O_NONBLOCK);
  if (!file.isOpen()) {
    raise(path, "open", errno);
  }
  file.sizeAtOpen_ = requireRegular(file.descriptor_, path, "open");
  return file;
}

File File::createForWriting(const std::string& path) {
  File file(path, O_WRONLY | O_CREAT | O_TRUNC);
  if (!file.isOpen()) {
    raise(path, "create", errno);
  }
  return file;
}

File File::openForAppending(const std::string& path) {
  File file(path, O_WRONLY | O_APPEND | O_NONBLOCK);
  if (!file.isOpen()) {
    raise(path, "open", errno);
  }
  return file;
}

File File::lockForWriting(const std::string& path) {
  for (;;) {
    // Somebody else's link or pipe at that place is no place to write to.
    File file(path, O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK);
    if (!file.isOpen()) {
      raise(path, "create", errno);
    }
    static_cast<void>(requireRegular(file.descriptor_, path, "create"));
    if (::flock(file.descriptor_, LOCK_EX | LOCK_NB) != 0) {
      if (errno == EWOULDBLOCK) {
        return {};
      }
      return file;  // a file system without locks
    }
    // Whoever had it before may have removed or renamed it in the meantime.
    struct stat locked {};
    struct stat named {};
    if (::fstat(file.descriptor_, &locked) == 0 && ::stat(path.c_str(), &named) == 0 && locked.st_ino == named.st_ino &&
        locked.st_dev == named.st_dev) {
      return file;
    }
  }
}

std::size_t File::read(std::span<char> bytes) {
  for (;;) {
    const ssize_t count = ::read(descriptor_, bytes.data(), std::min(bytes.size(), kLargestTransfer));
    if (count > 0) {
      offset_ += static_cast<std::uint64_t>(count);
      return static_cast<std::size_t>(count);
    }
    if (count == 0) {
      if (offset_ < sizeAtOpen_ && !bytes.empty()) {
        raiseBecameShorter(path_);
      }
      return 0;
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
  offset_ = offset;
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
