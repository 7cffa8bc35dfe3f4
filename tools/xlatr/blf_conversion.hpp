// A conversion from a BLF log, which the library does only object by object.
#pragma once

#include <functional>

#include "conversion_run.hpp"
#include "target_files.hpp"

namespace xlatr::cli {

// Raises a CommandFailure with ExitCode::Failed, which names the path, if the program that reads BLF logs is not where
// the library looks for it or can't be run.
void requireBlfConverter(const std::string& source);

// What a BLF log needs from the request besides its source and target format.
struct BlfTarget {
  TargetFiles files;
  double version;
  char separator;  // of a table
};

// Converts as runConversion does: the first half of the progress is that of the converter program. After an interrupt
// the converter has ended and its temporary file is gone.
[[nodiscard]] ConversionOutcome runBlfConversion(const ConversionRequest& request, const BlfTarget& target,
                                                 const std::function<void(double)>& onProgress);

}  // namespace xlatr::cli
