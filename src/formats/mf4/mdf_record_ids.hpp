// The ids before the records of a data group.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <unordered_map>

#include "util/little_endian.hpp"

namespace xlatr {

// The id of this size, 1 to 8 bytes, in 8 readable ones.
[[nodiscard]] inline std::uint64_t readMdfRecordId(const std::uint8_t* bytes, std::uint8_t size) {
  return loadLittle<std::uint64_t>(bytes) & (~std::uint64_t{0} >> (64U - 8U * size));
}

// Which group has an id.
class MdfRecordIds {
 public:
  static constexpr std::size_t kNone = ~std::size_t{0};

  MdfRecordIds() { small_.fill(kNone); }

  // Of two groups with one id the later one counts.
  void add(std::uint64_t id, std::size_t group) {
    if (id < kSmallIds) {
      small_[id] = group;
    } else {
      large_[id] = group;
    }
  }
  [[nodiscard]] std::size_t find(std::uint64_t id) const {
    if (id < kSmallIds) {
      return small_[id];
    }
    const auto found = large_.find(id);
    return found == large_.end() ? kNone : found->second;
  }

 private:
  static constexpr std::size_t kSmallIds = 256;  // those of one byte, which nearly all are

  std::array<std::size_t, kSmallIds> small_;
  std::unordered_map<std::uint64_t, std::size_t> large_;
};

}  // namespace xlatr
