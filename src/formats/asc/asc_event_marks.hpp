// The lines of what a logger writes beside the traffic.
#pragma once

#include <string_view>

namespace xlatr {

// Whether a line has the mark of a trigger, a statistic, a variable, a marker, a comment of a user or the like.
[[nodiscard]] bool hasAscEventMark(std::string_view line);

}  // namespace xlatr
