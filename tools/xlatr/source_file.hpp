// The checks of a file that is to be read.
#pragma once

#include <string>

#include "xlatr/xlatr.h"

namespace xlatr::cli {

// Raises a CommandFailure with ExitCode::Failed, which names the file and the system's reason, when the path is not
// that of a regular file that can be opened. A pipe or a device is refused: a source is read more than once.
void requireReadable(const std::string& path);

// The format of a file that exists, from its extension. Raises a CommandFailure when that is no trace format's, and
// when the library can't take so long a path.
[[nodiscard]] TraceFormat requireTraceFormat(const std::string& path);

}  // namespace xlatr::cli
