// What the top of an MF4 file says.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "formats/mf4/block_header.hpp"
#include "io/trace_info.hpp"

namespace xlatr {

// Reads the top of the file once, at construction, and keeps the file open. Copies share the open file: the reader that
// is made from an information object closes it for all of them, so that one object serves one pass over the file.
class MdfInfo final : public TraceInfo {
 public:
  // Nothing is raised for a file that can't be read or is no MDF: it is not valid then.
  explicit MdfInfo(TraceFileInfo file);
  explicit MdfInfo(const std::string& path);

  // An MF4 file by its name, open, of version 4.1 to 4.2.
  [[nodiscard]] bool getValid() const override;
  // As the file states it, also once the file is closed; 0.0 where it states none that can be represented.
  [[nodiscard]] double getStartTime() const override { return startDays_; }

  // Offset in the file; the largest 64-bit value without a data group.
  [[nodiscard]] std::uint64_t firstDataGroupPosition() const { return firstDataGroupPosition_; }
  // Null for a file that is not an MF4 file by its name. Shared by all copies.
  [[nodiscard]] MdfFileHeader* header() const { return header_.get(); }

 private:
  void readHeader();

  std::uint64_t firstDataGroupPosition_;
  std::shared_ptr<MdfFileHeader> header_;
};

}  // namespace xlatr
