#include "util/byte_growth.hpp"

namespace xlatr {

std::uint8_t* growBytes(std::vector<std::uint8_t>& bytes, std::size_t count) {
  bytes.resize(bytes.size() + count);
  return bytes.data() + bytes.size() - count;
}

void appendBytes(std::vector<std::uint8_t>& bytes, std::span<const std::uint8_t> more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

}  // namespace xlatr
