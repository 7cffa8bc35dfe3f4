#include "util/text_buffer.hpp"

#include <algorithm>

namespace xlatr {

void TextBuffer::grow(std::size_t count) {
  constexpr std::size_t kFirstCapacity = 512;
  const std::size_t capacity = std::max({size_ + count, 2 * capacity_, kFirstCapacity});
  auto storage = std::make_unique_for_overwrite<char[]>(capacity);
  if (size_ > 0) {
    std::memcpy(storage.get(), storage_.get(), size_);
  }
  storage_ = std::move(storage);
  capacity_ = capacity;
}

}  // namespace xlatr
