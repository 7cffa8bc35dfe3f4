#include "util/utf8.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace xlatr {
namespace {

// A range of first bytes: how many bytes follow, and the range of the first of these (RFC 3629, section 4).
struct Lead {
  std::uint8_t first;
  std::uint8_t last;
  std::uint8_t following;
  std::uint8_t lowest;
  std::uint8_t highest;
};

constexpr std::array kLeads = {
    Lead{0x00, 0x7F, 0, 0x80, 0xBF}, Lead{0xC2, 0xDF, 1, 0x80, 0xBF}, Lead{0xE0, 0xE0, 2, 0xA0, 0xBF},
    Lead{0xE1, 0xEC, 2, 0x80, 0xBF}, Lead{0xED, 0xED, 2, 0x80, 0x9F}, Lead{0xEE, 0xEF, 2, 0x80, 0xBF},
    Lead{0xF0, 0xF0, 3, 0x90, 0xBF}, Lead{0xF1, 0xF3, 3, 0x80, 0xBF}, Lead{0xF4, 0xF4, 3, 0x80, 0x8F},
};

bool isAscii(char character) {
  return static_cast<std::uint8_t>(character) < 0x80;
}

}  // namespace

bool isUtf8(std::string_view bytes) noexcept {
  std::size_t at = 0;
  while (at < bytes.size()) {
    const auto byteAt = [bytes](std::size_t place) { return static_cast<std::uint8_t>(bytes[place]); };
    const std::uint8_t first = byteAt(at);
    const auto* const lead =
        std::ranges::find_if(kLeads, [first](const Lead& each) { return first >= each.first && first <= each.last; });
    if (lead == kLeads.end() || bytes.size() - at <= lead->following) {
      return false;
    }
    for (std::size_t next = 1; next <= lead->following; ++next) {
      const std::uint8_t lowest = next == 1 ? lead->lowest : 0x80;
      const std::uint8_t highest = next == 1 ? lead->highest : 0xBF;
      if (byteAt(at + next) < lowest || byteAt(at + next) > highest) {
        return false;
      }
    }
    at += 1U + lead->following;
  }
  return true;
}

std::string_view asUtf8(std::string_view bytes, std::string& converted) {
  if (std::ranges::all_of(bytes, isAscii) || isUtf8(bytes)) {
    return bytes;
  }
  converted.clear();
  for (const char character : bytes) {
    if (isAscii(character)) {
      converted += character;
    } else {
      const auto byte = static_cast<std::uint8_t>(character);
      converted += static_cast<char>(0xC0 | byte >> 6);
      converted += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return converted;
}

std::size_t utf8Boundary(std::string_view text, std::size_t offset) noexcept {
  if (offset >= text.size()) {
    return text.size();
  }
  while (offset > 0 && (static_cast<std::uint8_t>(text[offset]) & 0xC0) == 0x80) {
    --offset;
  }
  return offset;
}

}  // namespace xlatr
