#include "formats/mf4/record_bytes.hpp"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace xlatr {

RecordBytes::RecordBytes() : bytes_(std::make_unique<std::uint8_t[]>(kPadding)) {}

void RecordBytes::reserve(std::size_t size) {
  if (size <= capacity_) {
    return;
  }
  if (size > static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) - kPadding) {
    throw std::length_error("more bytes of records than there is memory");
  }
  auto bytes = std::unique_ptr<std::uint8_t[]>(new std::uint8_t[size + kPadding]);
  std::copy_n(bytes_.get(), size_ + kPadding, bytes.get());
  bytes_ = std::move(bytes);
  capacity_ = size;
}

std::span<std::uint8_t> RecordBytes::extend(std::size_t count) {
  const std::size_t begin = size_;
  if (count > capacity_ - size_) {
    reserve(std::max(count > std::numeric_limits<std::size_t>::max() - size_ ? count : size_ + count, capacity_ * 2));
  }
  size_ += count;
  std::fill_n(bytes_.get() + size_, kPadding, std::uint8_t{0});
  return {bytes_.get() + begin, count};
}

void RecordBytes::shrink(std::size_t size) {
  size_ = std::min(size_, size);
  std::fill_n(bytes_.get() + size_, kPadding, std::uint8_t{0});
}

}  // namespace xlatr
