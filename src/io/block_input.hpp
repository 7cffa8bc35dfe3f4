// Reading a binary file record by record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "io/input_file.hpp"

namespace xlatr {

// Hands out the bytes of a file as views into its own buffer, which holds one block of the file. One thread at a time.
// Failures are std::ios_base::failure.
class BlockInput {
 public:
  // The most bytes that peek can show at once.
  static constexpr std::size_t kCapacity = std::size_t{256} * 1024;

  explicit BlockInput(const InputSource& source);

  // Goes on reading at this offset in bytes, which may lie beyond the end of the file.
  void seek(std::uint64_t offset);
  [[nodiscard]] std::uint64_t position() const { return position_; }

  // The next bytes, at most kCapacity; fewer only if the file ends before. The position stays. The view is valid
  // until the next call.
  [[nodiscard]] std::span<const std::uint8_t> peek(std::size_t count) {
    if (end_ - begin_ < count) {
      fill(count);
    }
    return {buffer_.get() + begin_, end_ - begin_ < count ? end_ - begin_ : count};
  }
  // Goes on after bytes that peek has handed out.
  void skip(std::size_t count) {
    begin_ += count;
    position_ += count;
  }

 private:
  void fill(std::size_t count);

  InputFile file_;
  std::unique_ptr<std::uint8_t[]> buffer_;
  std::size_t begin_ = 0;  // first byte not handed out
  std::size_t end_ = 0;    // after the last byte held
  std::uint64_t position_ = 0;
};

}  // namespace xlatr
