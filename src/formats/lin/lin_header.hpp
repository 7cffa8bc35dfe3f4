// The comment lines at the start of a LIN trace.
#pragma once

#include <string>
#include <vector>

#include "util/date_time.hpp"

namespace xlatr {

// The header states the start in days since 1899-12-30, its date, and the path of the source. The version is the target
// version printed with one decimal. The lines are in order, without line ends; a version without a header has none.
[[nodiscard]] std::vector<std::string> linHeaderLines(double targetVersion, double startDays, const DateTime& startDate,
                                                      const std::string& sourcePath);

}  // namespace xlatr
