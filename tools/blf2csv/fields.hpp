// Numbers in the bytes of a log.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "util/little_endian.hpp"

namespace blf2csv {

// Bytes from which little-endian numbers are read at any offset. What lies beyond the end is 0, so that no number in
// the file can lead out of it. The bytes must outlive the view.
class Fields {
 public:
  Fields() = default;
  explicit Fields(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  [[nodiscard]] std::size_t size() const { return bytes_.size(); }
  [[nodiscard]] std::uint16_t u16(std::size_t offset) const { return number<std::uint16_t>(offset); }
  [[nodiscard]] std::uint32_t u32(std::size_t offset) const { return number<std::uint32_t>(offset); }
  [[nodiscard]] std::uint64_t u64(std::size_t offset) const { return number<std::uint64_t>(offset); }
  // A number of 1, 2 or 4 bytes; of no bytes it is 0.
  [[nodiscard]] std::uint32_t sized(std::size_t offset, std::size_t width) const {
    switch (width) {
      case 1:
        return number<std::uint8_t>(offset);
      case 2:
        return u16(offset);
      case 4:
        return u32(offset);
      default:
        return 0;
    }
  }

  // The bytes from the offset on, at most `count`; fewer at the end, or none.
  [[nodiscard]] std::span<const std::uint8_t> bytes(std::size_t offset, std::size_t count) const {
    if (offset >= bytes_.size()) {
      return {};
    }
    const std::size_t left = bytes_.size() - offset;
    return bytes_.subspan(offset, count < left ? count : left);
  }

 private:
  template <class Number>
  [[nodiscard]] Number number(std::size_t offset) const {
    if (bytes_.size() < sizeof(Number) || offset > bytes_.size() - sizeof(Number)) {
      return 0;
    }
    return xlatr::loadLittle<Number>(bytes_.data() + offset);
  }

  std::span<const std::uint8_t> bytes_;
};

}  // namespace blf2csv
