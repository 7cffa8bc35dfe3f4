// The form that a recording takes.
#pragma once

#include <cstdint>
#include <string>

#include "tracegen/entry.hpp"
#include "tracegen/text_output.hpp"

namespace tracegen {

// When every recording begins: 2024-03-01 08:00:00 UTC.
inline constexpr std::uint64_t kStartUnixSeconds = 1709280000;

class LinePrinter {
 public:
  virtual ~LinePrinter() = default;

  // Prints what comes before the first entry.
  virtual void printHeader(TextOutput& output) = 0;
  // Prints the entry as one line; an entry that has no form here prints nothing.
  virtual void printEntry(const Entry& entry, TextOutput& output) = 0;
  // Prints what comes after the last entry.
  virtual void printEnd(TextOutput& /*output*/) {}
  // The header once the end is known, of the same length as what printHeader printed; empty if it does not change.
  [[nodiscard]] virtual std::string finalHeader() const { return {}; }
};

}  // namespace tracegen
