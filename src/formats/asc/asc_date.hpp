// The dates in the heads of ASC logs.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "util/text_buffer.hpp"

namespace xlatr {

// The date in a line of a head, in nanoseconds since 1970-01-01 00:00:00 on the clock that the log means: a month by
// its name in any language that we know, a day, a time and a year, perhaps with a weekday, AM or PM, and a fraction.
// Three digits of a fraction are milliseconds, and so are fewer or four: ".1000" is the next second. Nothing for a line
// without a date, for a date that there is not, and for the null date of 1899, which stands for none.
[[nodiscard]] std::optional<std::int64_t> startOfAscDate(std::string_view line);

// "Mon Jul 26 05:19:59.721 2021", rounded to the nearest millisecond. The null date if there is none.
void appendAscDate(TextBuffer& out, std::optional<std::int64_t> sinceEpochNs);

}  // namespace xlatr
