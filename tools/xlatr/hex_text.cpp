#include "hex_text.hpp"

#include <algorithm>
#include <string_view>

#include "xlatr/frames.h"

namespace xlatr::cli {

std::string hexText(std::uint32_t value, std::size_t digits) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  constexpr unsigned kBits = 4;
  constexpr unsigned kMask = 0xF;
  std::string text;
  while (value != 0 || text.size() < digits) {
    text += kDigits[value & kMask];
    value >>= kBits;
  }
  std::ranges::reverse(text);
  return text;
}

std::string identifierText(std::uint32_t kind, std::uint32_t id, bool extended) {
  constexpr std::size_t kBaseDigits = 3;
  constexpr std::size_t kExtendedDigits = 8;
  constexpr std::size_t kLinDigits = 2;
  if (kind == XLATR_KIND_LIN || kind == XLATR_KIND_LIN_EVENT) {
    return hexText(id, kLinDigits);
  }
  return extended ? hexText(id, kExtendedDigits) + "x" : hexText(id, kBaseDigits);
}

std::string hexBytes(std::span<const std::uint8_t> bytes, const char* separator) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  constexpr unsigned kBits = 4;
  constexpr unsigned kMask = 0xF;
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += text.empty() ? "" : separator;
    text += kDigits[byte >> kBits];
    text += kDigits[byte & kMask];
  }
  return text;
}

}  // namespace xlatr::cli
