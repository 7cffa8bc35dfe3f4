// What the head of an ASC log says.
#pragma once

#include <cstdint>
#include <string>

#include "formats/asc/asc_head_keys.hpp"
#include "formats/asc/asc_message.hpp"
#include "io/trace_info.hpp"

namespace xlatr {

// Reads the head once, at construction. Nothing is raised for a file that can't be read or understood.
//
// The head ends before "begin triggerblock", after the first line with "version", or after ten lines. A file that ends
// earlier has no head and its messages begin at its end: it is not a log.
class AscInfo final : public TraceInfo {
 public:
  explicit AscInfo(TraceFileInfo file);

  // Whether the file is an ASC log by its name, whatever it contains.
  [[nodiscard]] bool getValid() const override { return isOfOwnFormat(); }

  // The start of the recording as the head has it, its words one blank apart; empty if it has none.
  [[nodiscard]] const std::string& dateText() const { return dateText_; }
  // Whether identifiers and data are hexadecimal.
  [[nodiscard]] bool hexBase() const { return hexBase_; }
  [[nodiscard]] AscTimestamps timestampsMode() const { return timestampsMode_; }
  // Bytes of a line end: 1 or 2, judged by the first line.
  [[nodiscard]] std::uint8_t lineBreakSize() const { return lineBreakSize_; }

 private:
  [[nodiscard]] AscHeadKeys readHead();

  std::string dateText_;
  std::uint8_t lineBreakSize_ = 0;
  AscTimestamps timestampsMode_ = AscTimestamps::Absolute;
  bool hexBase_ = false;
};

}  // namespace xlatr
