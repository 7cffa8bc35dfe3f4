// The form that a recording takes.
#pragma once

#include <cstdint>

#include "tracegen/entry.hpp"
#include "tracegen/text_output.hpp"

namespace tracegen {

// When every recording begins: 2024-03-01 08:00:00 UTC.
inline constexpr std::uint64_t kStartUnixSeconds = 1709280000;

class LinePrinter {
 public:
  virtual ~LinePrinter() = default;

  // What stands in front of the first entry.
  virtual void printHeader(TextOutput& output) = 0;
  // Prints the entry as one line; one that has no form here prints nothing.
  virtual void printEntry(const Entry& entry, TextOutput& output) = 0;
  // What stands behind the last entry.
  virtual void printEnd(TextOutput& /*output*/) {}
};

}  // namespace tracegen
