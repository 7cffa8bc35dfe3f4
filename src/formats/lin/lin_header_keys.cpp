#include "formats/lin/lin_header_keys.hpp"

#include "util/date_time.hpp"
#include "util/key_search.hpp"

namespace xlatr {
namespace {

bool isClockCharacter(char character) {
  return isDecimalDigit(character) || isSpaceCharacter(character) ||
         std::string_view(":apmAPM").find(character) != std::string_view::npos;
}

// Runs of digits, each followed by at most one point.
std::size_t countDateCharacters(std::string_view text) {
  std::size_t count = 0;
  while (count < text.size() &&
         (isDecimalDigit(text[count]) || (text[count] == '.' && count > 0 && isDecimalDigit(text[count - 1])))) {
    ++count;
  }
  return count;
}

// A space, a date of digits and points, a space, and a clock's time; returns date and time.
std::optional<std::string> matchDate(std::string_view text) {
  if (text.empty() || !isSpaceCharacter(text.front())) {
    return std::nullopt;
  }
  text.remove_prefix(1);
  const std::size_t date = countDateCharacters(text);
  if (date == 0 || date == text.size() || !isSpaceCharacter(text[date])) {
    return std::nullopt;
  }
  const std::size_t clock = countLeading(text.substr(date + 1), isClockCharacter);
  return clock > 0 ? std::optional<std::string>(text.substr(0, date + 1 + clock)) : std::nullopt;
}

}  // namespace

void LinHeaderKeys::look(std::string_view line) {
  if (!fileVersion_) {
    fileVersion_ = searchAfter(line, "$FILEVERSION=", matchPointNumber);
  }
  if (!startNumber_) {
    startNumber_ = searchAfter(line, "$STARTTIME=", matchPointNumberText);
  }
  if (!startText_) {
    startText_ = searchAfter(line, "Start time:", matchDate);
  }
}

double LinHeaderKeys::startDays() const {
  if (startNumber_) {
    return parseRealPrefix(*startNumber_).value;
  }
  return startText_ ? DateTime::parseGermanNoFraction(*startText_).toOleDate() : 0.0;
}

}  // namespace xlatr
