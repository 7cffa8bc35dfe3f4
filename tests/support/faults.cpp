#include "support/faults.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <system_error>

namespace xlatr::test {
namespace {

// Everything here can be called at any time, on any thread, before the first constructor and without memory.
constinit std::atomic<bool> armed = false;
constinit std::atomic<std::uint64_t> counted = 0;
constinit std::atomic<bool> hasStruck = false;
constinit FaultPlan current;

enum class Fate : std::uint8_t { Goes, Fails, Half };

Fate nextFate(FaultKind kind) {
  if (!armed.load(std::memory_order_acquire) || (current.kinds & faultBit(kind)) == 0) {
    return Fate::Goes;
  }
  const std::uint64_t number = ++counted;
  if (current.nth == 0 || number < current.nth || (number > current.nth && !current.forGood)) {
    return Fate::Goes;
  }
  hasStruck = true;
  return current.error == 0 ? Fate::Half : Fate::Fails;
}

Fate fateOfPath(FaultKind kind, const char* path) {
  if (!current.pathEnd.empty() && armed && !std::string_view(path).ends_with(current.pathEnd)) {
    return Fate::Goes;
  }
  return nextFate(kind);
}

Fate fateOfFile(FaultKind kind, int file) {
  if (current.pathEnd.empty() || !armed) {
    return nextFate(kind);
  }
  std::array<char, 32> link{};
  std::array<char, 4096> path{};
  static_cast<void>(std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", file));
  static_cast<void>(::readlink(link.data(), path.data(), path.size() - 1));
  if (char* const removed = std::strstr(path.data(), " (deleted)")) {
    *removed = '\0';
  }
  return fateOfPath(kind, path.data());
}

// errno for a call that fails, as the system sets it.
int failed() {
  errno = current.error;
  return -1;
}

std::size_t halfOf(std::size_t size) {
  return std::max<std::size_t>(size / 2, 1);
}

void* allocate(std::size_t size, std::size_t alignment) {
  if (nextFate(FaultKind::Memory) == Fate::Fails) {
    return nullptr;
  }
  const std::size_t wanted = std::max<std::size_t>(size, 1);
  if (alignment == 0) {
    return std::malloc(wanted);
  }
  return std::aligned_alloc(alignment, (wanted + alignment - 1) / alignment * alignment);
}

void* allocateOrThrow(std::size_t size, std::size_t alignment = 0) {
  void* const memory = allocate(size, alignment);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

}  // namespace

Faults::Faults(const FaultPlan& plan) {
  current = plan;
  counted = 0;
  hasStruck = false;
  armed.store(true, std::memory_order_release);
}

Faults::~Faults() {
  armed = false;
}

std::uint64_t Faults::calls() const {
  return counted;
}

bool Faults::struck() const {
  return hasStruck;
}

NoFaults::NoFaults() : before_(armed.exchange(false)) {}

NoFaults::~NoFaults() {
  armed = before_;
}

std::string faultText(const FaultPlan& plan) {
  std::string text = "call " + std::to_string(plan.nth) + (plan.forGood ? ", from then on: " : ": ");
  return text + (plan.error == 0 ? "half a transfer" : std::generic_category().message(plan.error));
}

}  // namespace xlatr::test

using xlatr::test::allocate;
using xlatr::test::allocateOrThrow;
using xlatr::test::failed;
using xlatr::test::Fate;
using xlatr::test::fateOfFile;
using xlatr::test::fateOfPath;
using xlatr::test::FaultKind;
using xlatr::test::halfOf;
using xlatr::test::nextFate;

// The system's functions, by their numbers: no other library has to be asked for them.
extern "C" {

int open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const unsigned mode = (flags & O_CREAT) != 0 ? va_arg(rest, unsigned) : 0U;
  va_end(rest);
  if (fateOfPath(FaultKind::Open, path) == Fate::Fails) {
    return failed();
  }
  return static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

ssize_t read(int file, void* bytes, size_t size) {
  const Fate fate = fateOfFile(FaultKind::Read, file);
  return fate == Fate::Fails ? failed() : ::syscall(SYS_read, file, bytes, fate == Fate::Half ? halfOf(size) : size);
}

ssize_t write(int file, const void* bytes, size_t size) {
  const Fate fate = fateOfFile(FaultKind::Write, file);
  return fate == Fate::Fails ? failed() : ::syscall(SYS_write, file, bytes, fate == Fate::Half ? halfOf(size) : size);
}

off_t lseek(int file, off_t offset, int from) noexcept {
  return fateOfFile(FaultKind::Seek, file) == Fate::Fails ? failed() : ::syscall(SYS_lseek, file, offset, from);
}

// What fails to be closed is closed all the same.
int close(int file) {
  const Fate fate = fateOfFile(FaultKind::Close, file);
  const int result = static_cast<int>(::syscall(SYS_close, file));
  return fate == Fate::Fails ? failed() : result;
}

int stat(const char* path, struct stat* status) noexcept {
  return fateOfPath(FaultKind::Status, path) == Fate::Fails
             ? failed()
             : static_cast<int>(::syscall(SYS_newfstatat, AT_FDCWD, path, status, 0));
}

// Links are looked at themselves.
int lstat(const char* path, struct stat* status) noexcept {
  return fateOfPath(FaultKind::Status, path) == Fate::Fails
             ? failed()
             : static_cast<int>(::syscall(SYS_newfstatat, AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW));
}

int fstat(int file, struct stat* status) noexcept {
  return fateOfFile(FaultKind::Status, file) == Fate::Fails
             ? failed()
             : static_cast<int>(::syscall(SYS_newfstatat, file, "", status, AT_EMPTY_PATH));
}

int rename(const char* from, const char* to) noexcept {
  return fateOfPath(FaultKind::Rename, to) == Fate::Fails
             ? failed()
             : static_cast<int>(::syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
  return fateOfPath(FaultKind::Rename, to) == Fate::Fails
             ? failed()
             : static_cast<int>(::syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
}

int ftruncate(int file, off_t size) noexcept {
  return fateOfFile(FaultKind::Truncate, file) == Fate::Fails ? failed()
                                                              : static_cast<int>(::syscall(SYS_ftruncate, file, size));
}

int unlink(const char* path) noexcept {
  return fateOfPath(FaultKind::Unlink, path) == Fate::Fails
             ? failed()
             : static_cast<int>(::syscall(SYS_unlinkat, AT_FDCWD, path, 0));
}

int flock(int file, int operation) noexcept {
  return fateOfFile(FaultKind::Lock, file) == Fate::Fails ? failed()
                                                          : static_cast<int>(::syscall(SYS_flock, file, operation));
}

// The linker has the library call the second one instead of calloc, and gives that the name of the first.
void* systemCalloc(size_t count, size_t size) __asm__("__real_calloc");
void* refusingCalloc(size_t count, size_t size) __asm__("__wrap_calloc");
void* refusingCalloc(size_t count, size_t size) {
  return nextFate(FaultKind::Memory) == Fate::Fails ? nullptr : systemCalloc(count, size);
}

}  // extern "C"

// All of them, since a sanitizer has its own for those that are missing, whose memory is not to be mixed with ours.
void* operator new(std::size_t size) {
  return allocateOrThrow(size);
}
void* operator new[](std::size_t size) {
  return allocateOrThrow(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return allocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return allocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return allocate(size, 0);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return allocate(size, 0);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::align_val_t /*alignment*/) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::align_val_t /*alignment*/) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept {
  std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept {
  std::free(memory);
}
