// The checks of a file that is to be read.
#pragma once

#include <string>

#include "xlatr/xlatr.h"

namespace xlatr::cli {

// Raises a CommandFailure with ExitCode::Failed, which names the file and the system's reason, if the path is not
// that of a regular file that can be opened. A pipe or a device is refused: a source is read more than once.
void requireReadable(const std::string& path);

// The format of a file that exists, from its extension. Raises a CommandFailure if that belongs to no trace format, and
// if the path is too long for the library.
[[nodiscard]] TraceFormat requireTraceFormat(const std::string& path);

}  // namespace xlatr::cli
