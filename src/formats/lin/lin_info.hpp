// What the header of a LIN trace says.
#pragma once

#include <cstdint>

#include "io/trace_info.hpp"

namespace xlatr {

// Reads the header once, at construction: all lines down to the first one that does not begin with ";". Nothing is
// raised for a file that can't be read or understood; it is just not valid.
class KorlInfo final : public TraceInfo {
 public:
  explicit KorlInfo(TraceFileInfo file);

  // Whether the file is a LIN trace by its name and has a version from 1.0 to 1.2.
  [[nodiscard]] bool getValid() const override;

  // Bytes of a line end: 1 or 2, judged by the first line.
  [[nodiscard]] std::uint8_t lineBreakSize() const { return lineBreakSize_; }

 private:
  void readHeader();

  std::uint8_t lineBreakSize_ = 0;
};

}  // namespace xlatr
