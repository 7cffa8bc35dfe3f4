// Binary traces of a hardware logger.
#pragma once

#include <cstdint>
#include <string>

#include "tracegen/line_printer.hpp"
#include "tracegen/random.hpp"

namespace tracegen {

struct BtrcForm {
  std::uint64_t seed = 1;
  std::uint32_t damageRate = 0;  // blocks in 10000 with noise in their middle; never the first one
};

// One record per entry, little-endian, in blocks of 8192 bytes that a filler record closes. Each block but the first
// begins with the totals so far. The head says that times are microseconds since the year 1. Events and comments are
// texts. A CAN XL frame has no record.
class BtrcPrinter : public LinePrinter {
 public:
  explicit BtrcPrinter(const BtrcForm& form) : form_(form), noise_(form.seed) {}

  void printHeader(TextOutput& output) override;
  void printEntry(const Entry& entry, TextOutput& output) override;
  void printEnd(TextOutput& output) override;

 private:
  void appendRecord(const std::string& bytes, std::uint64_t timeUs, TextOutput& output);
  void closeBlock(TextOutput& output);
  void damageBlock();

  BtrcForm form_;
  Random noise_;
  std::string block_;  // what the current block holds so far
  bool first_ = true;
  std::uint64_t records_ = 0;
};

}  // namespace tracegen
