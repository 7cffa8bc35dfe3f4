#include "io/input_file.hpp"

#include <algorithm>
#include <cstring>
#include <ios>
#include <system_error>
#include <utility>

namespace xlatr {

SequentialBytes::SequentialBytes(std::string name)
    : name_(std::move(name)),
      first_(std::make_unique_for_overwrite<char[]>(kFirstBytes)),
      last_(std::make_unique_for_overwrite<char[]>(kLastBytes)) {}

std::size_t SequentialBytes::readAt(std::uint64_t offset, std::span<char> bytes) {
  while (offset >= end_) {
    if (!readBlock()) {
      return 0;
    }
  }
  const std::span<const char> held = heldAt(offset);
  if (held.empty()) {
    throw std::ios_base::failure(
        name_ + ": the format is not read in order, and this can't go back: save it to a file first",
        std::make_error_code(std::errc::invalid_seek));
  }
  const std::size_t count = std::min(held.size(), bytes.size());
  std::memcpy(bytes.data(), held.data(), count);
  return count;
}

std::span<const char> SequentialBytes::heldAt(std::uint64_t offset) const {
  if (offset >= end_ - lastCount_) {
    const auto count = static_cast<std::size_t>(end_ - offset);
    return {last_.get() + (lastCount_ - count), count};
  }
  const std::uint64_t firstEnd = std::min<std::uint64_t>(end_, kFirstBytes);
  return offset < firstEnd ? std::span(first_.get() + offset, static_cast<std::size_t>(firstEnd - offset))
                           : std::span<const char>();
}

// False at the end.
bool SequentialBytes::readBlock() {
  const std::size_t count = readNext({last_.get(), kLastBytes});
  if (count == 0) {
    return false;
  }
  if (end_ < kFirstBytes) {
    std::memcpy(first_.get() + end_, last_.get(), std::min(count, kFirstBytes - static_cast<std::size_t>(end_)));
  }
  lastCount_ = count;
  end_ += count;
  return true;
}

}  // namespace xlatr
