#include "platform/shared_memory.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <semaphore.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <memory>
#include <utility>

namespace xlatr::platform {

namespace {

constexpr mode_t kOwnerOnly = 0600;

// Where the system keeps shared memory under its names.
constexpr char kFolder[] = "/dev/shm";

struct FolderCloser {
  void operator()(DIR* folder) const { ::closedir(folder); }
};

// The names of shared objects begin with a slash and contain no other. Needs no memory, since names are removed when
// objects end. A name that is too long for the system is cut one character after that, so that the system refuses it.
class ObjectName {
 public:
  explicit ObjectName(std::string_view name) {
    text_[0] = '/';
    name.copy(text_.data() + 1, text_.size() - 2);
  }
  [[nodiscard]] const char* get() const { return text_.data(); }

 private:
  std::array<char, NAME_MAX + 3> text_{};
};

timespec deadlineAfter(std::chrono::milliseconds limit) {
  constexpr long kNanosecondsPerSecond = 1'000'000'000;
  timespec time{};
  ::clock_gettime(CLOCK_MONOTONIC, &time);
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(limit);
  time.tv_sec += seconds.count();
  time.tv_nsec += std::chrono::nanoseconds(limit - seconds).count();
  if (time.tv_nsec >= kNanosecondsPerSecond) {
    time.tv_nsec -= kNanosecondsPerSecond;
    ++time.tv_sec;
  }
  return time;
}

// Opens the memory and locks it together with all others that use it. Whoever makes sure that nobody does may have
// removed the name in the meantime, so that it stands for other memory.
int openInUse(const std::string& name) {
  for (;;) {
    const int descriptor = ::shm_open(ObjectName(name).get(), O_RDWR | O_CREAT, kOwnerOnly);
    struct stat status {};
    if (descriptor < 0 || ::flock(descriptor, LOCK_SH) != 0 || ::fstat(descriptor, &status) != 0 ||
        status.st_nlink > 0) {
      return descriptor;
    }
    ::close(descriptor);
  }
}

// Whoever has just made the name may not have locked it yet.
bool isForgotten(const char* name) {
  constexpr std::int64_t kLongEnough = 60;  // seconds
  const int descriptor = ::shm_open(ObjectName(name).get(), O_RDWR, 0);
  if (descriptor < 0) {
    return false;
  }
  struct stat status {};
  const bool forgotten = ::fstat(descriptor, &status) == 0 && ::time(nullptr) - status.st_mtime > kLongEnough &&
                         ::flock(descriptor, LOCK_EX | LOCK_NB) == 0;
  ::close(descriptor);
  return forgotten;
}

}  // namespace

bool SharedMemory::open(const std::string& name, std::size_t size) {
  close();
  const int descriptor = openInUse(name);
  if (descriptor < 0) {
    return false;
  }
  void* mapped = MAP_FAILED;
  if (::ftruncate(descriptor, static_cast<off_t>(size)) == 0) {
    mapped = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
  }
  if (mapped == MAP_FAILED) {
    ::close(descriptor);
    return false;
  }
  bytes_ = static_cast<std::byte*>(mapped);
  size_ = size;
  descriptor_ = descriptor;
  return true;
}

void SharedMemory::close() {
  if (isOpen()) {
    ::munmap(std::exchange(bytes_, nullptr), std::exchange(size_, 0));
    ::close(std::exchange(descriptor_, -1));
  }
}

std::vector<std::string> SharedMemory::forgottenNames(std::string_view prefix) {
  std::vector<std::string> names;
  const std::unique_ptr<DIR, FolderCloser> folder(::opendir(kFolder));
  if (folder == nullptr) {
    return names;
  }
  while (const dirent* const entry = ::readdir(folder.get())) {  // NOLINT(concurrency-mt-unsafe): our own stream
    if (std::string_view(entry->d_name).starts_with(prefix) && isForgotten(entry->d_name)) {
      names.emplace_back(entry->d_name);
    }
  }
  return names;
}

void SharedMemory::remove(std::string_view name) {
  ::shm_unlink(ObjectName(name).get());
}

bool NamedMutex::open(const std::string& name) {
  close();
  sem_t* const semaphore = ::sem_open(ObjectName(name).get(), O_CREAT, kOwnerOnly, 1U);
  handle_ = semaphore == SEM_FAILED ? nullptr : semaphore;
  return isOpen();
}

void NamedMutex::close() {
  if (isOpen()) {
    ::sem_close(static_cast<sem_t*>(std::exchange(handle_, nullptr)));
  }
}

bool NamedMutex::lock(std::chrono::milliseconds limit) {
  if (!isOpen()) {
    return false;
  }
  const timespec deadline = deadlineAfter(limit);
  int answer = 0;
  do {
    answer = ::sem_clockwait(static_cast<sem_t*>(handle_), CLOCK_MONOTONIC, &deadline);
  } while (answer != 0 && errno == EINTR);
  return answer == 0;
}

void NamedMutex::unlock() {
  ::sem_post(static_cast<sem_t*>(handle_));
}

void NamedMutex::remove(std::string_view name) {
  ::sem_unlink(ObjectName(name).get());
}

}  // namespace xlatr::platform
