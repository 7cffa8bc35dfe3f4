// How a DateTime is read from text.
#include <cstddef>
#include <optional>

#include "util/date_fields.hpp"
#include "util/date_names.hpp"
#include "util/date_time.hpp"
#include "util/numbers.hpp"

namespace xlatr {

namespace {

using platform::CalendarFields;

// The number of milliseconds in a header. A number beyond the signed range becomes negative, and validate refuses it
// like any other that is out of range.
std::optional<std::int32_t> parseFraction(std::string_view text) {
  std::uint32_t value = 0;
  return tryParseUInt32Auto(text, value) ? std::optional(static_cast<std::int32_t>(value)) : std::nullopt;
}

// The first of the languages and formats that fits. Each language tries both clocks before the next language does.
std::optional<CalendarFields> tryLanguages(std::string_view text, std::string_view format24,
                                           std::string_view format12) {
  CalendarFields fields;
  for (const DateNames& names : allDateNames()) {
    if (parseDateFields(text, format24, fields, names.locale) ||
        parseDateFields(text, format12, fields, names.locale)) {
      return fields;
    }
  }
  return std::nullopt;
}

}  // namespace

DateTime DateTime::parseGerman(std::string_view text) {
  const std::size_t point = text.rfind('.');
  if (point == std::string_view::npos) {
    return {};
  }
  CalendarFields fields;
  if (!parseDateFields(text.substr(0, point), "%d.%m.%Y %H:%M:%S", fields, "de-DE")) {
    return {};
  }
  const auto milliseconds = parseFraction(text.substr(point + 1));
  return milliseconds ? fromLocalFields(fields, *milliseconds, 0) : DateTime();
}

DateTime DateTime::parseGermanNoFraction(std::string_view text) {
  CalendarFields fields;
  return parseDateFields(text, "%d.%m.%Y %H:%M:%S", fields, "") ? fromLocalFields(fields, 0, 0) : DateTime();
}

DateTime DateTime::parseLocalized(std::string_view text) {
  std::string working(text);
  std::int32_t milliseconds = 0;
  if (const std::size_t point = text.find('.'); point != std::string_view::npos) {
    const std::size_t blank = text.find(' ', point);
    if (blank == std::string_view::npos) {
      return {};
    }
    const auto fraction = parseFraction(text.substr(point + 1, blank - point - 1));
    if (!fraction) {
      return {};
    }
    milliseconds = *fraction;
    working.erase(point, blank - point);
  }
  auto fields = tryLanguages(working, "%a %b %d %T %Y", "%a %b %d %r %Y");
  if (const std::size_t blank = working.find(' '); !fields && blank != std::string::npos) {
    fields = tryLanguages(std::string_view(working).substr(blank), "%b %d %T %Y", "%b %d %r %Y");
  }
  return fields ? fromLocalFields(*fields, milliseconds, 0) : DateTime();
}

}  // namespace xlatr
