// What readers ask about a file before they open it. Both functions need the same small amount of memory whatever the
// size of the file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace xlatr {

// In bytes; nothing if there is no such file, or if it is a directory.
[[nodiscard]] std::optional<std::uint64_t> getFileSize(const std::string& path);

// How many characters end a line of the file, judged by its first line: 1 for a line feed, 2 for a carriage return and
// a line feed. A first line without line feed counts as the rest of the file. One carriage return anywhere in that line
// makes it 2, and so does an empty file. std::ios_base::failure for a file that can't be read.
[[nodiscard]] std::uint32_t detectLineEnding(const std::string& path);

}  // namespace xlatr
