// Where the library is; it looks for its helper programs beside itself.
#pragma once

#include <string>

namespace xlatr::cli {

// The folder of the shared library that this program runs with, links followed; empty if the system does not say.
[[nodiscard]] std::string libraryFolder();

// Whether this user may run the program at the path.
[[nodiscard]] bool isExecutable(const std::string& path);

}  // namespace xlatr::cli
