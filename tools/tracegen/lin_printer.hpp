// LIN text traces, file version 1.2.
#pragma once

#include <cstdint>

#include "tracegen/line_printer.hpp"

namespace tracegen {

// Classic data frames as those of one LIN bus, with what a LIN frame has instead: six bits of identifier, and the
// enhanced checksum over the protected identifier and the data. What the recording device sends is a publisher frame.
// An error frame is a slave that did not respond. Other entries have no form here.
class LinPrinter : public LinePrinter {
 public:
  void printHeader(TextOutput& output) override;
  void printEntry(const Entry& entry, TextOutput& output) override;

 private:
  std::uint64_t number_ = 0;
};

}  // namespace tracegen
