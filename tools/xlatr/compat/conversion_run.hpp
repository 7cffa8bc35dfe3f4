// One conversion from its start to its end.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "xlatr/xlatr.h"

namespace xlatr::cli {

struct ConversionRequest {
  std::string source;
  std::string target;
  TraceFormat format = XLATR_FORMAT_NONE;  // of the target
  std::vector<ConversionOption> options;
};

struct ConversionOutcome {
  bool interrupted = false;  // the conversion may still run; nothing else counts
  std::int32_t status = XLATR_UNEXPECTED;
  std::string text;                // failures, or warnings of a success, on one line
  std::vector<std::string> files;  // names, without the directory, of all that were begun, even if it failed
};

// Converts, and calls `onProgress` with the percent done, on this thread, every few milliseconds until the conversion
// has ended or an interruption was seen (signals.hpp). A conversion that was interrupted ends when the library is
// unloaded. No other one may be run after that.
[[nodiscard]] ConversionOutcome runConversion(const ConversionRequest& request,
                                              const std::function<void(double)>& onProgress);

}  // namespace xlatr::cli
