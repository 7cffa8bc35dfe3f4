// The date parsers get text as a header may hold it, and the conversions from days get any double. The first byte
// selects one of them. Every date that they read must print, and what a text form printed must be read as the same
// date.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "target.hpp"
#include "util/date_fields.hpp"
#include "util/date_names.hpp"
#include "util/date_time.hpp"
#include "xlatr/failures.hpp"

namespace {

using fuzz::require;

using xlatr::DateTime;

// What `make` returns, or nothing if it raises the one exception that it may raise.
template <typename Make>
std::optional<DateTime> attempt(Make make) {
  try {
    return make();
  } catch (const xlatr::ConverterParsingException&) {
    return std::nullopt;
  }
}

void checkForms(const DateTime& date) {
  require(date.toDottedTextMicro().size() > date.toDottedText().size());
  require(date.toDiagnosticText().size() > date.toDottedText().size());
  require(date.toSlashedText().size() == date.toDottedText().size());
  require(date.toIsoLikeText().size() == date.toDottedText().size());
  require(date.toDottedTextSeconds().size() < date.toDottedText().size());
  try {
    static_cast<void>(date.toAscText());
    require(date.dayOfWeek() >= 0 && date.dayOfWeek() <= 6);
  } catch (const xlatr::ConverterParsingException&) {
    require(date.seconds < 0);
  }
}

// What a parser made is valid, and the German form carries all of it.
void checkParsed(const std::optional<DateTime>& parsed) {
  if (!parsed) {
    return;
  }
  parsed->validate();
  checkForms(*parsed);
  const DateTime back = DateTime::parseGerman(parsed->toDottedText());
  require(back == *parsed);
}

void checkFields(std::string_view text) {
  for (const xlatr::DateNames& names : xlatr::allDateNames()) {
    for (const std::string_view format : {"%a %b %d %T %Y", "%b %d %r %Y", "%d.%m.%Y %H:%M:%S"}) {
      xlatr::platform::CalendarFields fields;
      const auto end = xlatr::parseDateFields(text, format, fields, names.locale);
      require(end ? *end <= text.size() : fields == xlatr::platform::CalendarFields());
    }
  }
}

void checkDays(std::string_view bytes) {
  double days = 0.0;
  if (bytes.size() < sizeof(days)) {
    return;
  }
  std::memcpy(&days, bytes.data(), sizeof(days));
  for (const auto& date : {attempt([days] { return DateTime::fromOleDate(days); }),
                           attempt([days] { return DateTime::fromOleDateTruncated(days); })}) {
    if (date) {
      require(date->millisecond >= -1000 && date->millisecond <= 1000);
      require(date->microsecond >= 0 && date->microsecond <= 1000);
      checkForms(*date);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  // A copy of the exact size, so that a read past the end is seen.
  const std::string input(data + 1, data + size);
  switch (data[0] % 5) {
    case 0:
      checkParsed(attempt([&input] { return DateTime::parseLocalized(input); }));
      break;
    case 1:
      checkParsed(attempt([&input] { return DateTime::parseGerman(input); }));
      break;
    case 2:
      checkParsed(attempt([&input] { return DateTime::parseGermanNoFraction(input); }));
      break;
    case 3:
      checkFields(input);
      break;
    default:
      checkDays(input);
      break;
  }
  return 0;
}
