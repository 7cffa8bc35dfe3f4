// What the header of a TRC file says.
#pragma once

#include <cstdint>
#include <string>

#include "formats/trc/trc_columns.hpp"
#include "io/trace_info.hpp"

namespace xlatr {

// Reads the header once, at construction. A file that can't be read or understood is not valid; nothing is raised.
// Of a header key that occurs twice the first one counts.
class TrcInfo final : public TraceInfo {
 public:
  explicit TrcInfo(TraceFileInfo file);
  explicit TrcInfo(const std::string& path);

  // A TRC file by its name, of a version from 1.0 to 3.0.
  [[nodiscard]] bool getValid() const override;

  // The columns of the file's lines; 0 below version 2.0, where they are fixed, and without a $COLUMNS key.
  [[nodiscard]] TrcColumnSet columnSet() const { return columnSet_; }
  // The network name that files of version 1.x may carry.
  [[nodiscard]] const std::string& networkName() const { return networkName_; }
  // Bytes of a line end: 1 or 2, judged by the first line.
  [[nodiscard]] std::uint8_t lineBreakSize() const { return lineBreakSize_; }

 private:
  void readHeader();

  TrcColumnSet columnSet_ = 0;
  std::string networkName_;
  std::uint8_t lineBreakSize_ = 0;
};

}  // namespace xlatr
