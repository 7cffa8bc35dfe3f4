// What this process shares with another one under a name: a piece of memory and the lock that guards it.
//
// Whoever opens a name first creates what it stands for, and the other process attaches to it. Only processes of the
// same user can. Nothing here raises a failure, and to remove a name takes no memory.
#pragma once

#include <chrono>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace xlatr::platform {

// A few bytes of memory. One thread at a time.
class SharedMemory {
 public:
  SharedMemory() = default;
  ~SharedMemory() { close(); }
  SharedMemory(const SharedMemory&) = delete;
  SharedMemory& operator=(const SharedMemory&) = delete;

  // Creates the memory of this name, zeroed, or attaches to it. False if that fails.
  [[nodiscard]] bool open(const std::string& name, std::size_t size);
  // Releases the memory. What another process still uses lives on.
  void close();
  [[nodiscard]] bool isOpen() const { return bytes_ != nullptr; }
  [[nodiscard]] std::span<std::byte> bytes() const { return {bytes_, size_}; }

  // Removes the name: whoever opens it from now on gets new memory. Attached processes keep what they have. No effect
  // if there is no such name.
  static void remove(std::string_view name);

  // The names with this prefix that nobody has open any more, in this or another process, and that were made more than
  // a minute ago: the processes that were to remove them were ended before.
  [[nodiscard]] static std::vector<std::string> forgottenNames(std::string_view prefix);

 private:
  std::byte* bytes_ = nullptr;
  std::size_t size_ = 0;
  int descriptor_ = -1;  // locked, which tells that the name is in use
};

// A lock between processes, free when it is created. Unlike a lock between threads it is not released when a process
// ends that holds it, so it is only ever waited for with a limit.
class NamedMutex {
 public:
  NamedMutex() = default;
  ~NamedMutex() { close(); }
  NamedMutex(const NamedMutex&) = delete;
  NamedMutex& operator=(const NamedMutex&) = delete;

  [[nodiscard]] bool open(const std::string& name);
  void close();
  [[nodiscard]] bool isOpen() const { return handle_ != nullptr; }
  // False if it was not free within the limit.
  [[nodiscard]] bool lock(std::chrono::milliseconds limit);
  void unlock();

  static void remove(std::string_view name);

 private:
  void* handle_ = nullptr;
};

}  // namespace xlatr::platform
