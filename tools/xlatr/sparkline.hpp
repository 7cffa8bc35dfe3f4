// A line of characters that shows how often something happened over time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace xlatr::cli {

// Whether the user's terminal shows UTF-8, as LC_ALL, LC_CTYPE or LANG say, the first of them that is set.
[[nodiscard]] bool showsUtf8();

// `width` characters, each for an equal part of the time that `covered` bins take, the last of which may be a part of a
// bin. The highest is the most frequent; a blank is nothing at all.
[[nodiscard]] std::string sparkline(std::span<const std::uint32_t> bins, double covered, std::size_t width, bool utf8);

}  // namespace xlatr::cli
