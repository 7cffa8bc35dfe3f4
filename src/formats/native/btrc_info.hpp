// What the head of a BTRC file says.
#pragma once

#include <string>

#include "formats/native/btrc_file_header.hpp"
#include "io/trace_info.hpp"

namespace xlatr {

// Reads the head once, at construction. Nothing is raised for a file that can't be read: it is not valid then.
class BtrcInfo final : public TraceInfo {
 public:
  explicit BtrcInfo(TraceFileInfo file);
  explicit BtrcInfo(const std::string& path);

  // A file that begins as a BTRC file does, of version 1. Version 0 is written but not read.
  [[nodiscard]] bool getValid() const override;
  [[nodiscard]] const BtrcFileHeader& GetHeader() const { return header_; }

 private:
  BtrcFileHeader header_;
};

}  // namespace xlatr
