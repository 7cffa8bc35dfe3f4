#include "frames/analysis/identifier_index.hpp"

#include <utility>

namespace xlatr {

std::uint32_t IdentifierIndex::add(std::uint64_t key) {
  if ((rows_ + std::size_t{1}) * 2 > slots_.size()) {
    std::vector<Slot> old(slots_.size() * 2);
    std::swap(old, slots_);
    for (const Slot& slot : old) {
      if (slot.row != kNone) {
        place(slot);
      }
    }
  }
  place({key, rows_});
  return rows_++;
}

void IdentifierIndex::place(const Slot& slot) {
  std::size_t at = firstSlot(slot.key);
  while (slots_[at].row != kNone) {
    at = (at + 1) & (slots_.size() - 1);
  }
  slots_[at] = slot;
}

}  // namespace xlatr
