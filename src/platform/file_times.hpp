// What the file system knows about the age of a file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace xlatr::platform {

struct FileTime {
  std::int64_t seconds = 0;      // since 1970-01-01 00:00:00 UTC, negative before
  std::int32_t nanoseconds = 0;  // 0 to 999'999'999, counted forward from `seconds`
};

// When the file was created, or last modified if the file system keeps no creation time. Nothing if there is no such
// file, if it is a directory, or if the caller may not read it. The file is not opened.
[[nodiscard]] std::optional<FileTime> readCreationTime(const std::string& path);
// When it was last modified; nothing in the same cases.
[[nodiscard]] std::optional<FileTime> readModificationTime(const std::string& path);

}  // namespace xlatr::platform
