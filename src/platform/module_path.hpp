// Where this library's own file is, and how the platform writes a path.
#pragma once

#include <string>

namespace xlatr::platform {

// The directory of the file that holds this code, absolute, links followed, without a trailing separator: that of the
// shared library, or of the program if the library is linked into it. Empty if the system does not say.
[[nodiscard]] std::string moduleDirectory();

// What the platform puts between two directories. Paths are split at other characters too: see util/paths.
[[nodiscard]] char pathSeparator();

}  // namespace xlatr::platform
