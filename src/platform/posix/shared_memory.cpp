#include "platform/shared_memory.hpp"

#include <fcntl.h>
#include <semaphore.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace xlatr::platform {

namespace {

constexpr mode_t kOwnerOnly = 0600;

// The names of shared objects begin with a slash and contain no other.
std::string objectName(const std::string& name) {
  return "/" + name;
}

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

}  // namespace

bool SharedMemory::open(const std::string& name, std::size_t size) {
  close();
  const int descriptor = ::shm_open(objectName(name).c_str(), O_RDWR | O_CREAT, kOwnerOnly);
  if (descriptor < 0) {
    return false;
  }
  void* mapped = MAP_FAILED;
  if (::ftruncate(descriptor, static_cast<off_t>(size)) == 0) {
    mapped = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
  }
  ::close(descriptor);  // the mapping does not need it
  if (mapped == MAP_FAILED) {
    return false;
  }
  bytes_ = static_cast<std::byte*>(mapped);
  size_ = size;
  return true;
}

void SharedMemory::close() {
  if (isOpen()) {
    ::munmap(std::exchange(bytes_, nullptr), std::exchange(size_, 0));
  }
}

void SharedMemory::remove(const std::string& name) {
  ::shm_unlink(objectName(name).c_str());
}

bool NamedMutex::open(const std::string& name) {
  close();
  sem_t* const semaphore = ::sem_open(objectName(name).c_str(), O_CREAT, kOwnerOnly, 1U);
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

void NamedMutex::remove(const std::string& name) {
  ::sem_unlink(objectName(name).c_str());
}

}  // namespace xlatr::platform
