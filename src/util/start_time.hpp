// The start of a trace as its header states it, exact to the nanosecond, as nanoseconds since 1970-01-01 00:00:00 on
// the clock that the header means. DateTime reads the same texts as the headers' writers have always read them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "util/date_time.hpp"

namespace xlatr {

// From a decimal number of days since 1899-12-30. Nothing for what is no such number, or is farther than 64 bits reach.
[[nodiscard]] std::optional<std::int64_t> startOfDays(std::string_view days);

// A date and the length of its last digit.
struct StartText {
  std::int64_t sinceEpochNs = 0;
  std::int64_t resolutionNs = 0;

  bool operator==(const StartText&) const = default;
};

// From "dd.mm.yyyy HH:MM:SS", perhaps with ".mmm" or ".mmm.uuu"; blanks may precede it. A number too large for its
// place is carried: ".1000" is the next second. Nothing for another form, and for a date that there is not.
[[nodiscard]] std::optional<StartText> startOfDottedText(std::string_view text);

// What a header means that has both. The number of days has 15 digits in most headers, so that it says the microseconds
// less exactly than a text which has them; where the two are farther apart than that, the number counts. Day zero,
// 1899-12-30, is none, because headers without a start have it.
[[nodiscard]] std::optional<std::int64_t> startOf(std::optional<std::string_view> days,
                                                  std::optional<std::string_view> dottedText);

// Days since 1899-12-30, as headers state them.
[[nodiscard]] double daysOfStart(std::int64_t sinceEpochNs);

// The date and the time of day, to the microsecond, with seconds and fields of the same clock. Rounded to the
// nearest one, so that nothing is 1000 of anything.
[[nodiscard]] DateTime dateTimeOfStart(std::int64_t sinceEpochNs);

}  // namespace xlatr
