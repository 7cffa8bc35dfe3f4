// Texts of files whose encoding nobody states.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace xlatr {

// Whether the bytes are UTF-8 (RFC 3629: no overlong forms, no surrogates, nothing above U+10FFFF).
[[nodiscard]] bool isUtf8(std::string_view bytes) noexcept;

// The text itself if it is UTF-8. Otherwise it is taken for ISO 8859-1, which has a character for every byte, and
// returned as UTF-8 in `converted`.
[[nodiscard]] std::string_view asUtf8(std::string_view bytes, std::string& converted);

// The last boundary between characters of a UTF-8 text that is at or before the offset.
[[nodiscard]] std::size_t utf8Boundary(std::string_view text, std::size_t offset) noexcept;

}  // namespace xlatr
