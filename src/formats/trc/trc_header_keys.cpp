#include "formats/trc/trc_header_keys.hpp"

#include "util/date_time.hpp"
#include "util/key_search.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

bool isAlphanumeric(char character) {
  const char upper = toUpperAscii(character);
  return isDecimalDigit(character) || (upper >= 'A' && upper <= 'Z');
}

// Blanks, then dd.mm.yyyy HH:MM: and the seconds with any fraction; returns all of it.
std::optional<std::string_view> matchDate(std::string_view text) {
  constexpr std::string_view kShape = "00.00.0000 00:00:";  // 0 is a digit, a blank any space
  const std::size_t blanks = countLeading(text, isSpaceCharacter);
  const std::string_view date = text.substr(blanks);
  if (date.size() <= kShape.size()) {
    return std::nullopt;
  }
  for (std::size_t at = 0; at < kShape.size(); ++at) {
    const bool fits = kShape[at] == '0'   ? isDecimalDigit(date[at])
                      : kShape[at] == ' ' ? isSpaceCharacter(date[at])
                                          : date[at] == kShape[at];
    if (!fits) {
      return std::nullopt;
    }
  }
  const std::size_t seconds =
      countLeading(date.substr(kShape.size()), [](char c) { return isDecimalDigit(c) || c == '.'; });
  if (seconds == 0) {
    return std::nullopt;
  }
  return text.substr(0, blanks + kShape.size() + seconds);
}

// Letters with at most one comma after each. Between two commas the first letter alone counts.
std::optional<TrcColumnSet> matchColumns(std::string_view text) {
  TrcColumnSet columns = 0;
  bool startsPart = true;
  std::size_t at = 0;
  while (at < text.size() && trcColumnOfLetter(text[at]) != 0) {
    if (startsPart) {
      columns |= trcColumnOfLetter(text[at]);
    }
    ++at;
    startsPart = at < text.size() && text[at] == ',';
    at += startsPart ? 1 : 0;
  }
  return at > 0 ? std::optional(columns) : std::nullopt;
}

std::optional<std::string> matchName(std::string_view text) {
  if (text.empty() || !isSpaceCharacter(text.front())) {
    return std::nullopt;
  }
  return std::string(text.substr(1, countLeading(text.substr(1), isAlphanumeric)));
}

bool hasOldStyleMark(std::string_view line) {
  const auto afterNet = [](std::string_view text) {
    const bool matches = text.size() > 1 && isSpaceCharacter(text[0]) && isWordCharacter(text[1]);
    return matches ? std::optional(true) : std::nullopt;
  };
  return searchAfter(line, "BRIX-Net:", afterNet).has_value() || line.find("BRIX Scope") != std::string_view::npos;
}

}  // namespace

void TrcHeaderKeys::look(std::string_view line) {
  if (!fileVersion_) {
    fileVersion_ = searchAfter(line, "$FILEVERSION=", matchPointNumber);
  }
  hasOldStyleMark_ = hasOldStyleMark_ || hasOldStyleMark(line);
  if (!startNumber_) {
    startNumber_ = searchAfter(line, "$STARTTIME=", matchPointNumberText);
  }
  if (!startText_) {
    startText_ = searchAfter(line, "Start time:", matchDate);
  }
  if (!columnSet_) {
    columnSet_ = searchAfter(line, "$COLUMNS=", matchColumns);
  }
  if (!networkName_) {
    networkName_ = searchAfter(line, "BRIX-Net:", matchName);
  }
}

double TrcHeaderKeys::fileVersion() const {
  return fileVersion_.value_or(hasOldStyleMark_ ? 1.0 : 0.0);
}

double TrcHeaderKeys::startDays() const {
  if (startNumber_) {
    return parseRealPrefix(*startNumber_).value;
  }
  if (!startText_) {
    return 0.0;
  }
  // One character after the colon is dropped, whether it is a blank or, without one, a digit of the day.
  return DateTime::parseGerman(startText_->substr(1)).toOleDate();
}

}  // namespace xlatr
