// Which row belongs to which identifier.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace xlatr {

// A hash table with open addressing from keys to rows that are counted from 0. Grows with the number of keys only.
class IdentifierIndex {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  IdentifierIndex() : slots_(kFewest) {}

  // kNone for a key that has no row.
  [[nodiscard]] std::uint32_t find(std::uint64_t key) const {
    for (std::size_t at = firstSlot(key);; at = (at + 1) & (slots_.size() - 1)) {
      const Slot& slot = slots_[at];
      if (slot.row == kNone || slot.key == key) {
        return slot.row;
      }
    }
  }
  // Gives a key that has none the next row, and returns that.
  std::uint32_t add(std::uint64_t key);

 private:
  struct Slot {
    std::uint64_t key = 0;
    std::uint32_t row = kNone;
  };
  static constexpr std::size_t kFewest = 1024;

  [[nodiscard]] std::size_t firstSlot(std::uint64_t key) const {
    constexpr std::uint64_t kGolden = 0x9E3779B97F4A7C15;  // 2^64 / the golden ratio: spreads neighbours
    constexpr unsigned kHalf = 32;
    return static_cast<std::size_t>((key * kGolden) >> kHalf) & (slots_.size() - 1);
  }
  void place(const Slot& slot);

  std::vector<Slot> slots_;  // a power of two; more than half of them are free
  std::uint32_t rows_ = 0;
};

}  // namespace xlatr
