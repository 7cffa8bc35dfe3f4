#include "io/block_input.hpp"

#include <cstring>

namespace xlatr {

BlockInput::BlockInput(const InputSource& source)
    : file_(source), buffer_(std::make_unique_for_overwrite<std::uint8_t[]>(kCapacity)) {}

void BlockInput::seek(std::uint64_t offset) {
  file_.seek(offset);
  begin_ = end_ = 0;
  position_ = offset;
}

// Moves what is left to the front and reads on until there is enough or the file ends.
void BlockInput::fill(std::size_t count) {
  std::memmove(buffer_.get(), buffer_.get() + begin_, end_ - begin_);
  end_ -= begin_;
  begin_ = 0;
  while (end_ < count) {
    auto* const free = reinterpret_cast<char*>(buffer_.get() + end_);
    const std::size_t read = file_.read({free, kCapacity - end_});
    if (read == 0) {
      return;
    }
    end_ += read;
  }
}

}  // namespace xlatr
