// Loaded before a program, this refuses one allocation, and all after it, of the program and of its libraries: that of
// the number XLATR_REFUSED_ALLOCATION, counted from 0. It leaves the file XLATR_REFUSED_FILE if it came to that.
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

long numberToRefuse() {
  const char* const number = std::getenv("XLATR_REFUSED_ALLOCATION");
  return number == nullptr ? -1 : std::strtol(number, nullptr, 10);
}

void leaveWord() {
  const char* const path = std::getenv("XLATR_REFUSED_FILE");
  std::FILE* const file = path == nullptr ? nullptr : std::fopen(path, "w");
  if (file != nullptr) {
    std::fclose(file);
  }
}

bool isRefused() {
  static const long refused = numberToRefuse();
  static std::atomic<long> asked = 0;
  const long number = asked++;
  if (number == refused) {
    leaveWord();
  }
  return refused >= 0 && number >= refused;
}

void* allocate(std::size_t size) {
  void* const memory = isRefused() ? nullptr : std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

}  // namespace

#define XLATR_SEEN __attribute__((visibility("default")))

XLATR_SEEN void* operator new(std::size_t size) {
  return allocate(size);
}
XLATR_SEEN void* operator new[](std::size_t size) {
  return allocate(size);
}
XLATR_SEEN void operator delete(void* memory) noexcept {
  std::free(memory);
}
XLATR_SEEN void operator delete[](void* memory) noexcept {
  std::free(memory);
}
XLATR_SEEN void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}
XLATR_SEEN void operator delete[](void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}
