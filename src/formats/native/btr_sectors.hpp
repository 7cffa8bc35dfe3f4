// The sectors of a BTR file.
#pragma once

#include <cstdint>
#include <memory>

#include "formats/native/btr_layout.hpp"
#include "io/input_file.hpp"

namespace xlatr {

// Reads sectors by their number. One thread at a time. Failures are std::ios_base::failure.
class BtrSectors {
 public:
  // Holds `ahead` sectors, so that reading in sequence asks the system only once for them all.
  explicit BtrSectors(const InputSource& source, std::size_t ahead = 1);

  // The bytes of a sector, valid until the next call; null when the file ends before the sector does.
  [[nodiscard]] const std::uint8_t* read(std::uint64_t sector);

 private:
  void fill(std::uint64_t sector);

  InputFile file_;
  std::size_t ahead_;
  std::unique_ptr<std::uint8_t[]> bytes_;
  std::uint64_t first_ = 0;   // the first sector held
  std::uint64_t held_ = 0;    // whole sectors held
  std::uint64_t offset_ = 0;  // of the file, where the system reads next
};

}  // namespace xlatr
