#include "formats/mf4/mdf_data_file.hpp"

#include <algorithm>
#include <limits>

namespace xlatr {

MdfDataFile::MdfDataFile(const InputSource& source)
    : file_(source),
      size_(source.size().value_or(0)),
      limit_(size_ > std::numeric_limits<std::uint64_t>::max() / (2 * kReadFactor)
                 ? std::numeric_limits<std::uint64_t>::max()
                 : size_ * kReadFactor + kReadAllowance) {}

std::size_t MdfDataFile::read(std::uint64_t position, std::span<std::uint8_t> bytes) {
  const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), bytesAfter(position)));
  if (wanted == 0 || exhausted()) {
    return 0;
  }
  readCount_ += wanted;
  if (position != position_) {
    file_.seek(position);
    position_ = position;
  }
  std::size_t done = 0;
  while (done < wanted) {
    const std::size_t count = file_.read({reinterpret_cast<char*>(bytes.data()) + done, wanted - done});
    if (count == 0) {
      break;  // the file became shorter
    }
    done += count;
  }
  position_ += done;
  return done;
}

bool MdfDataFile::hold(std::uint64_t bytes) {
  if (bytes > kMostHeld - held_) {
    return false;
  }
  held_ += bytes;
  return true;
}

void MdfDataFile::sortBlocks() {
  std::ranges::sort(blocks_);
}

std::uint64_t MdfDataFile::endOfOpenBlock(std::uint64_t position) const {
  const auto next = std::ranges::upper_bound(blocks_, position);
  return next == blocks_.end() ? size_ : std::min(*next, size_);
}

}  // namespace xlatr
