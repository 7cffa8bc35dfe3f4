// The bytes of records, in one piece.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace xlatr {

// Grows without clearing what is about to be overwritten, and holds kPadding zero bytes after its end, so that a
// number of up to 8 bytes can be taken from any offset with one load.
class RecordBytes {
 public:
  static constexpr std::size_t kPadding = 8;

  RecordBytes();

  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] const std::uint8_t* data() const { return bytes_.get(); }
  [[nodiscard]] std::span<const std::uint8_t> view() const { return {bytes_.get(), size_}; }

  // These bytes; null if they are not all there.
  [[nodiscard]] const std::uint8_t* at(std::uint64_t offset, std::size_t count) const {
    return offset <= size_ && count <= size_ - static_cast<std::size_t>(offset) ? data() + offset : nullptr;
  }

  void reserve(std::size_t size);
  // Adds `count` bytes of any value and returns where they are. std::length_error for more than there can be.
  [[nodiscard]] std::span<std::uint8_t> extend(std::size_t count);
  // Takes bytes away from the end.
  void shrink(std::size_t size);

 private:
  std::unique_ptr<std::uint8_t[]> bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace xlatr
