// The pieces of a path. Both "/" and "\" separate directories and a letter with a colon is a drive, on every platform:
// the paths in trace files come from machines other than the one that reads them.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace xlatr {

// The largest sizes of the pieces, with a terminator: a directory of 255 characters fits, one of 256 does not.
inline constexpr std::size_t kDriveLimit = 3;
inline constexpr std::size_t kDirectoryLimit = 256;
inline constexpr std::size_t kFileNameLimit = 256;
inline constexpr std::size_t kExtensionLimit = 256;

// Views into the path; one after the other they are the whole path again.
struct PathPieces {
  std::string_view drive;      // with its colon
  std::string_view directory;  // with its last separator
  std::string_view name;       // without the extension
  std::string_view extension;  // from the last point of the last component on
};

// Nothing if one of the pieces does not fit.
[[nodiscard]] std::optional<PathPieces> splitPath(std::string_view path);

// Each is empty if the path has no such piece, or if any piece of the path does not fit, even a different one.
[[nodiscard]] std::string getFileExtension(std::string_view path);  // with its point
[[nodiscard]] std::string getFileStem(std::string_view path);
[[nodiscard]] std::string getFileName(std::string_view path);
[[nodiscard]] std::string getFileDirectory(std::string_view path);  // drive and directory, with its last separator

}  // namespace xlatr
