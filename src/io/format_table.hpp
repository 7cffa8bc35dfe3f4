// What is known of each trace format, one row a format.
#pragma once

#include <span>
#include <string_view>

#include "xlatr/xlatr.h"

namespace xlatr {

struct FormatRow {
  TraceFormat format;
  std::string_view extension;  // with its point
  std::string_view shortName;
  std::string_view description;
  double currentVersion;  // what a writer writes when no version is asked for
  double lowestVersion;
  std::span<const double> supportedVersions;
  std::span<const TraceFormat> allowedTargets;  // in the order in which they are offered
  bool conversionTarget;  // a conversion can write it; LIN traces are written object by object alone, BLF logs not at
                          // all
};

// All formats in the order of their flags.
[[nodiscard]] std::span<const FormatRow> formatTable();

// The row of a flag. A value that is not exactly one flag gets the row of "no format": empty texts and lists, the
// versions -1.0.
[[nodiscard]] const FormatRow& formatRow(TraceFormat format);

// The flag itself, or XLATR_FORMAT_NONE for a value that is not exactly one flag.
[[nodiscard]] TraceFormat normalizeFormat(TraceFormat format);

// The format whose extension (with its point, in any case) this is, or XLATR_FORMAT_NONE.
[[nodiscard]] TraceFormat formatOfExtension(std::string_view extension);

// The format that a path's extension names, or XLATR_FORMAT_NONE.
[[nodiscard]] TraceFormat formatOfPath(std::string_view path);

}  // namespace xlatr
