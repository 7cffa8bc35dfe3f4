// The start time of a trace as text.
#pragma once

#include <string>

#include "xlatr/frames.h"

namespace xlatr::cli {

// ISO 8601 without a zone, as "2021-07-26T05:19:59.721": a trace says what its recorder's clock showed, not where that
// clock hung. `days` counts from 1899-12-30 00:00. Empty for 0.0, which means that the trace states no start, and for
// what lies outside the years 1 to 9999.
[[nodiscard]] std::string startTimeText(double days);

// The start of a trace, which it states, to the last digit that is not 0 of the nanoseconds, and with the zone if that
// is known: "2021-07-26T05:19:59.721+02:00".
[[nodiscard]] std::string startText(const xlatr_head& head);

}  // namespace xlatr::cli
