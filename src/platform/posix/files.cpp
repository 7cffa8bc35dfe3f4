#include "platform/files.hpp"

#include <fcntl.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): <csignal> need not have signal sets
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
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

void requireRegular(const struct stat& status, const std::string& path, const char* action) {
  if (!S_ISREG(status.st_mode)) {
    raise(path, action, S_ISDIR(status.st_mode) ? EISDIR : EOPNOTSUPP);
  }
}

// The size of a file, which must be a regular one.
std::uint64_t sizeOfRegular(int descriptor, const std::string& path) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) {
    raise(path, "open", errno);
  }
  requireRegular(status, path, "open");
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

constexpr char kIsWritten[] = "create while another conversion is writing it";
constexpr char kIsPipe[] = "create, since this is a pipe; name a file";

bool isPipe(mode_t mode) {
  return S_ISFIFO(mode) || S_ISSOCK(mode);
}

bool isSame(const struct stat& one, const struct stat& other) {
  return one.st_ino == other.st_ino && one.st_dev == other.st_dev;
}

// Whether an error says that there is nothing, or nothing that this process may look at.
bool isNothing(int error) {
  constexpr std::array kSayNothing = {ENOENT, ENOTDIR, EACCES, ELOOP, ENAMETOOLONG};
  return std::ranges::find(kSayNothing, error) != kSayNothing.end();
}

// Whether there is something. Where the system fails to say, nobody may go on as if there were nothing: a device would
// be replaced, and a source would be emptied for its target.
bool look(int (*call)(const char*, struct stat*), const std::string& path, struct stat& status) {
  if (call(path.c_str(), &status) == 0) {
    return true;
  }
  if (!isNothing(errno)) {
    raise(path, "look at", errno);
  }
  return false;
}

enum class Lock : std::uint8_t { Taken, Busy, Moved, Unknown };

// Locks an open file, and tells what it is; where the system fails to tell, errno says why. A file system without locks
// gives the file to everybody. Whoever had it before may have removed or renamed it in the meantime.
Lock lockNamed(int descriptor, const std::string& path, struct stat& status) {
  if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    return Lock::Busy;
  }
  struct stat named {};
  if (::fstat(descriptor, &status) != 0) {
    return Lock::Unknown;
  }
  if (::stat(path.c_str(), &named) != 0) {
    return isNothing(errno) ? Lock::Moved : Lock::Unknown;
  }
  return isSame(status, named) ? Lock::Taken : Lock::Moved;
}

// A folder, and a pipe that nobody reads, have errors that say little.
[[noreturn]] void raiseNotCreated(const std::string& path, int error) {
  if (error == EEXIST && kindOfPath(path) == PathKind::Folder) {
    raise(path, "create", EISDIR);
  }
  raise(path, error == ENXIO ? "create, since nobody reads from this pipe" : "create", error);
}

// A write beyond the limit of a file's size raises a signal in the thread that writes, and so does one to a pipe that
// has lost its reader. Both end the process unless it expects them, and what a process does with its signals is not
// ours to change. So the thread holds them back while it writes, and takes what its write has raised. That costs two
// short calls of the system for each write, of many kilobytes: a limit can be set at any time, so that there is no
// moment at which to learn that they are not needed.
class WriteSignals {
 public:
  WriteSignals() {
    ::sigemptyset(&signals_);
    ::sigaddset(&signals_, SIGXFSZ);
    ::sigaddset(&signals_, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &signals_, &before_);
  }
  ~WriteSignals() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  WriteSignals(const WriteSignals&) = delete;
  WriteSignals& operator=(const WriteSignals&) = delete;

  // Whether the system counts an error as worth a signal.
  [[nodiscard]] static bool raisedBy(int error) { return error == EFBIG || error == EPIPE; }
  void take() const {
    const timespec now{};
    while (::sigtimedwait(&signals_, nullptr, &now) < 0 && errno == EINTR) {
    }
  }

 private:
  sigset_t signals_{};
  sigset_t before_{};
};

}  // namespace

// Links are rare, so that one question answers for most paths.
PathKind kindOfPath(const std::string& path) {
  struct stat status {};
  if (!look(::lstat, path, status)) {
    return PathKind::Nothing;
  }
  if (S_ISLNK(status.st_mode) && !look(::stat, path, status)) {
    return PathKind::BrokenLink;
  }
  if (S_ISDIR(status.st_mode)) {
    return PathKind::Folder;
  }
  if (isPipe(status.st_mode)) {
    return PathKind::Pipe;
  }
  return S_ISREG(status.st_mode) ? PathKind::File : PathKind::Device;
}

bool fileExists(const std::string& path) {
  const PathKind kind = kindOfPath(path);
  return kind == PathKind::File || kind == PathKind::Device || kind == PathKind::Pipe;
}

bool isSameFile(const std::string& one, const std::string& other) {
  struct stat first {};
  struct stat second {};
  return look(::stat, other, second) && S_ISREG(second.st_mode) && look(::stat, one, first) && isSame(first, second);
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

// Some file systems can't look and rename in one step; there another program may come in between.
bool nameFile(const std::string& path, const std::string& by) {
  if (::renameat2(AT_FDCWD, by.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) == 0) {
    return true;
  }
  if (errno == EEXIST) {
    return false;
  }
  if (errno != EINVAL && errno != ENOSYS) {
    raise(path, "create", errno);
  }
  if (kindOfPath(path) != PathKind::Nothing) {
    return false;
  }
  replaceFile(path, by);
  return true;
}

// The path is kept first: without memory for it no file is opened, or even created.
File::File(const std::string& path, int flags) : path_(path) {
  descriptor_ = ::open(path.c_str(), flags | O_CLOEXEC, kAllMayReadAndWrite);
}

File::~File() {
  static_cast<void>(release());
}

File::File(File&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)),
      locked_(std::exchange(other.locked_, false)),
      path_(std::move(other.path_)),
      offset_(other.offset_),
      sizeAtOpen_(other.sizeAtOpen_) {}

File& File::operator=(File&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  std::swap(locked_, other.locked_);
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
  file.sizeAtOpen_ = sizeOfRegular(file.descriptor_, path);
  return file;
}

// Nothing is emptied before it is known that nobody else writes to it. A pipe without a reader refuses to be opened
// without waiting.
File File::createForWriting(const std::string& path, Creation creation, Pipes pipes) {
  if (pipes == Pipes::Refuse && kindOfPath(path) == PathKind::Pipe) {
    raise(path, kIsPipe, EOPNOTSUPP);  // to open it would be an empty trace for its reader
  }
  const int exclusive = creation == Creation::New ? O_EXCL : 0;
  for (;;) {
    File file(path, O_WRONLY | O_CREAT | O_NONBLOCK | O_NOCTTY | exclusive);
    if (!file.isOpen()) {
      raiseNotCreated(path, errno);
    }
    struct stat status {};
    if (::fstat(file.descriptor_, &status) != 0) {
      raise(path, "create", errno);
    }
    if (!S_ISREG(status.st_mode)) {
      if (pipes == Pipes::Refuse && isPipe(status.st_mode)) {
        raise(path, kIsPipe, EOPNOTSUPP);
      }
      file.makeWaiting();
      return file;
    }
    const Lock lock = creation == Creation::Reserved ? Lock::Taken : lockNamed(file.descriptor_, path, status);
    file.locked_ = creation != Creation::Reserved && lock != Lock::Busy;
    if (lock == Lock::Unknown) {
      raise(path, "create", errno);
    }
    if (lock == Lock::Busy) {
      raise(path, kIsWritten, EBUSY);
    }
    if (lock == Lock::Taken) {
      if (::ftruncate(file.descriptor_, 0) != 0) {
        raise(path, "create", errno);
      }
      return file;
    }
  }
}

// Between its writers' turns nobody may have written to it.
File File::openForAppending(const std::string& path, Creation creation, std::uint64_t size) {
  File file(path, O_WRONLY | O_APPEND | O_NONBLOCK);
  if (!file.isOpen()) {
    raise(path, "open", errno);
  }
  struct stat status {};
  const std::uint64_t found = sizeOfRegular(file.descriptor_, path);
  const Lock lock = creation == Creation::Reserved ? Lock::Taken : lockNamed(file.descriptor_, path, status);
  file.locked_ = creation != Creation::Reserved && lock != Lock::Busy;
  if (lock == Lock::Unknown) {
    raise(path, "open", errno);
  }
  if (found != size || lock != Lock::Taken) {
    raise(path, kIsWritten, EBUSY);
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
    struct stat status {};
    const Lock lock = lockNamed(file.descriptor_, path, status);
    if (lock == Lock::Busy) {
      return {};
    }
    file.locked_ = true;
    if (lock == Lock::Unknown) {
      const int error = errno;
      removeFile(path);  // which nobody else has
      raise(path, "create", error);
    }
    requireRegular(status, path, "create");
    if (lock == Lock::Taken) {
      return file;
    }
  }
}

File File::createTemporary() {
  std::string name = P_tmpdir "/xlatr-XXXXXX";
  File file;
  file.path_ = "a temporary file";
  file.descriptor_ = ::mkostemp(name.data(), O_CLOEXEC);
  if (file.isOpen()) {
    ::unlink(name.c_str());
  }
  return file;
}

// From here on a pipe or a device makes its writer wait, as those who name one expect.
void File::makeWaiting() const {
  const int flags = ::fcntl(descriptor_, F_GETFL);
  if (flags < 0 || ::fcntl(descriptor_, F_SETFL, flags & ~O_NONBLOCK) != 0) {
    raise(path_, "create", errno);
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
  const WriteSignals signals;
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor_, bytes.data(), std::min(bytes.size(), kLargestTransfer));
    if (count >= 0) {
      bytes = bytes.subspan(static_cast<std::size_t>(count));
    } else if (const int error = errno; error != EINTR) {
      if (WriteSignals::raisedBy(error)) {
        signals.take();
      }
      raise(path_, "write", error);
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
  if (!release()) {
    fail("close");
  }
}

// A process that was forked meanwhile has the file open, too, and would keep it locked.
bool File::release() noexcept {
  if (!isOpen()) {
    return true;
  }
  if (std::exchange(locked_, false)) {
    ::flock(descriptor_, LOCK_UN);
  }
  return ::close(std::exchange(descriptor_, -1)) == 0 || errno == EINTR;
}

void File::fail(const char* action) const {
  raise(path_, action, errno);
}

}  // namespace xlatr::platform
