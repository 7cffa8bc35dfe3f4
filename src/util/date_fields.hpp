// Reading dates and times from text, by a format and in one of seven languages. The locale of the process is neither
// read nor changed, so any number of threads may parse at once, and every machine reads the same.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "platform/calendar.hpp"

namespace xlatr {

// Reads the start of `text` as `format` says. Returns the position after what it took and puts what it read into
// `fields`; a field that the format does not name stays as it is. If the text does not match the whole format, returns
// nothing and leaves `fields` alone. What follows the match is ignored.
//
//   %a %b  weekday and month, in full or abbreviated
//   %d %m  day 1 to 31 and month 1 to 12: one or two digits
//   %Y     year: one to four digits
//   %H %M  hour 0 to 23 and minute 0 to 59; %S second 0 to 60: one or two digits
//   %I %p  hour 1 to 12 and the marker AM or PM, in this order
//   %T %r  %H:%M:%S and %I:%M:%S %p
//   blank  any blanks, or none
//
// Any other character stands for itself. Blanks may come first. Names and markers may have letters of any case; accents
// may be written in UTF-8, in Latin-1 or not at all; a point may follow a name. A marker is "am", "a.m." or "a. m.".
//
// `locale` is "en-US", "en-GB", "de-DE", "fr-FR", "nl-NL", "es-ES" or "it-IT"; empty means the English names. Any other
// locale raises a failure with the text "bad locale name".
[[nodiscard]] std::optional<std::size_t> parseDateFields(std::string_view text, std::string_view format,
                                                         platform::CalendarFields& fields, std::string_view locale);

}  // namespace xlatr
