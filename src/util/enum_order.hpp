// Tables with a row for each value of an enumeration.
#pragma once

#include <array>
#include <cstddef>

namespace xlatr {

// Whether the rows stand in the order of the enumeration, so that a value is the index of its row.
template <class Row, std::size_t kSize, class Enum>
[[nodiscard]] consteval bool standsInOrder(const std::array<Row, kSize>& table, Enum Row::*key) {
  for (std::size_t at = 0; at < kSize; ++at) {
    if (static_cast<std::size_t>(table[at].*key) != at) {
      return false;
    }
  }
  return true;
}

}  // namespace xlatr
