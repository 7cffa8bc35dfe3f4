// Calls of the system that fail when a test says so. A program that links this has its own open, read, write and so on,
// which the library then calls in place of the system's: what is tested is built as always.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace xlatr::test {

// The calls of one kind can fail without those of the others.
enum class FaultKind : std::uint8_t { Open, Read, Write, Seek, Close, Status, Rename, Unlink, Lock, Truncate, Memory };
inline constexpr unsigned kFileFaults = 0x3FFU;  // all but Memory

[[nodiscard]] constexpr unsigned faultBit(FaultKind kind) {
  return 1U << static_cast<unsigned>(kind);
}
template <typename... Kinds>
[[nodiscard]] constexpr unsigned faultBits(Kinds... kinds) {
  return (faultBit(kinds) | ...);
}

struct FaultPlan {
  unsigned kinds = kFileFaults;
  std::uint64_t nth = 0;  // counted from 1; 0: only count
  bool forGood = false;   // each one from there on, not only the one
  int error = 0;          // as in errno; 0: a transfer of half the bytes, and nothing for other calls
  // Only calls for files of a path that ends so, as far as a call has a path or a file.
  std::string_view pathEnd = {};
};

// Calls of all threads are counted, and fail, between construction and destruction. One at a time.
class Faults {
 public:
  explicit Faults(const FaultPlan& plan);
  ~Faults();
  Faults(const Faults&) = delete;
  Faults& operator=(const Faults&) = delete;

  // How many calls of the kinds there were.
  [[nodiscard]] std::uint64_t calls() const;
  // Whether one has failed.
  [[nodiscard]] bool struck() const;
};

// While it lives, no call fails or is counted: for what a test does beside what it tests.
class NoFaults {
 public:
  NoFaults();
  ~NoFaults();
  NoFaults(const NoFaults&) = delete;
  NoFaults& operator=(const NoFaults&) = delete;

 private:
  bool before_;
};

// "call 17, from then on: No space left on device".
[[nodiscard]] std::string faultText(const FaultPlan& plan);

}  // namespace xlatr::test
