#include "formats/native/btr_sectors.hpp"

namespace xlatr {

BtrSectors::BtrSectors(const InputSource& source, std::size_t ahead)
    : file_(source), ahead_(ahead), bytes_(std::make_unique<std::uint8_t[]>(ahead * kBtrSectorSize)) {}

const std::uint8_t* BtrSectors::read(std::uint64_t sector) {
  if (sector - first_ >= held_) {  // also true for a sector before the first one held
    fill(sector);
  }
  return held_ == 0 ? nullptr : bytes_.get() + (sector - first_) * kBtrSectorSize;
}

void BtrSectors::fill(std::uint64_t sector) {
  const std::uint64_t offset = sector * kBtrSectorSize;
  held_ = 0;
  first_ = sector;
  if (offset != offset_) {
    file_.seek(offset);
  }
  std::size_t filled = 0;
  const std::size_t wanted = ahead_ * kBtrSectorSize;
  while (filled < wanted) {
    const std::size_t count =
        file_.read({reinterpret_cast<char*>(bytes_.get()) + filled, wanted - filled});  // bytes are bytes
    if (count == 0) {
      break;
    }
    filled += count;
  }
  offset_ = offset + filled;
  held_ = filled / kBtrSectorSize;
}

}  // namespace xlatr
