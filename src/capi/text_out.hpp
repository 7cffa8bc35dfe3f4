// Text across the border.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace xlatr::capi {

// The length without the terminator.
inline std::uint32_t textSize(std::string_view text) {
  return static_cast<std::uint32_t>(std::min<std::size_t>(text.size(), std::numeric_limits<std::uint32_t>::max() - 1));
}

// Copies what fits and terminates it. A null buffer or a size of 0 gets nothing.
inline void copyText(std::string_view text, char* buffer, std::uint32_t bufferSize) {
  if (buffer == nullptr || bufferSize == 0) {
    return;
  }
  buffer[text.copy(buffer, bufferSize - 1)] = '\0';
}

// A text that a caller hands in, which may be null.
inline std::string textIn(const char* text) {
  return text == nullptr ? std::string() : std::string(text);
}

}  // namespace xlatr::capi
