// The table of a value-to-value conversion.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace xlatr {

// A list of pairs of key and value, through which a look-up goes one element at a time, values as well as keys: an
// element that equals the input gives the element after it, and an input between an element and the one two further on
// gives the value of the nearer of the two, the lower where both are as near.
//
// The walk is made once and not for each input. Between two neighbours among the sorted elements, and on each of them,
// it stops at the same element whatever the input, so a look-up is a binary search.
class ValueTable {
 public:
  // The elements are not copied and must stay.
  explicit ValueTable(std::span<const double> elements);

  // None where the walk finds nothing, or the table is not made of pairs.
  [[nodiscard]] std::optional<double> lookUp(double input) const;

 private:
  // A place is an element (odd) or what lies below, between or above the elements (even), in the order of their values.
  [[nodiscard]] std::size_t placeOf(double input) const;
  void findStops();

  std::span<const double> elements_;
  std::vector<double> sorted_;        // each value once
  std::vector<std::uint32_t> stops_;  // for each place the index of the element at which the walk stops
};

}  // namespace xlatr
