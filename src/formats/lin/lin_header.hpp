// The comment lines at the start of a LIN trace.
#pragma once

#include <string>
#include <vector>

namespace xlatr {

// Days since 1899-12-30 and the path of the source stand in the header; the version is what a target version prints as
// with one decimal. The lines are in order, without line ends; none for a version without a header.
[[nodiscard]] std::vector<std::string> linHeaderLines(double targetVersion, double startTime,
                                                      const std::string& sourcePath);

}  // namespace xlatr
