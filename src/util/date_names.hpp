// The names of months and weekdays in the languages of the dates in file headers. They are kept here because a machine
// need not have a locale of those languages installed, and because the locale of the process belongs to the host
// program.
#pragma once

#include <array>
#include <span>
#include <string_view>

namespace xlatr {

// Each cell holds all the forms of one name, separated by a blank: in full, then abbreviated as the common C libraries
// do, older and newer ones. In lower case, without accents and without the point that may end an abbreviation.
struct DateNames {
  std::string_view locale;  // such as "en-US"
  std::array<std::string_view, 12> months;
  std::array<std::string_view, 7> weekdays;  // from Sunday on
};

// All the languages, in the order in which a date of unknown language is tried.
[[nodiscard]] std::span<const DateNames> allDateNames();

// The names of one locale, or null if it is not among ours.
[[nodiscard]] const DateNames* findDateNames(std::string_view locale);

// The English abbreviations as they are written.
inline constexpr std::array<std::string_view, 12> kEnglishMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                                    "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
inline constexpr std::array<std::string_view, 7> kEnglishWeekdays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

}  // namespace xlatr
