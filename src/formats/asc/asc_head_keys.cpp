#include "formats/asc/asc_head_keys.hpp"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "util/date_time.hpp"
#include "util/numbers.hpp"
#include "util/text.hpp"
#include "util/token_cursor.hpp"

namespace xlatr {
namespace {

bool isClockCharacter(char character) {
  return isDecimalDigit(character) || isSpaceCharacter(character) ||
         std::string_view(":apmAPM").find(character) != std::string_view::npos;
}

// Takes characters of the class off the start of the text; returns whether there were any.
template <class IsOfClass>
bool takeLeading(std::string_view& text, IsOfClass isOfClass) {
  const std::size_t count = countLeading(text, isOfClass);
  text.remove_prefix(count);
  return count > 0;
}

// A space, perhaps "am" or "pm" and a space, and the digits of the year.
bool takeYear(std::string_view& text) {
  if (text.empty() || !isSpaceCharacter(text.front())) {
    return false;
  }
  text.remove_prefix(1);
  if (text.size() > 2 && (text.starts_with("am") || text.starts_with("pm")) && isSpaceCharacter(text[2])) {
    text.remove_prefix(3);
  }
  return takeLeading(text, isDecimalDigit);
}

// Any character and three digits.
bool startsWithFraction(std::string_view text) {
  return text.size() >= 4 && text.front() != '\r' && countLeading(text.substr(1, 3), isDecimalDigit) == 3;
}

// The clock's time takes as many characters as it can with a year after it, and a fraction if there can be one.
bool takeClockAndYear(std::string_view& text) {
  for (std::size_t clock = countLeading(text, isClockCharacter); clock > 0; --clock) {
    const std::string_view afterClock = text.substr(clock);
    std::string_view rest = startsWithFraction(afterClock) ? afterClock.substr(4) : afterClock;
    if (takeYear(rest) || takeYear(rest = afterClock)) {
      text = rest;
      return true;
    }
  }
  return false;
}

// Weekday, month, day, clock and year at the start of the text; returns all of it.
std::optional<std::string_view> matchDate(std::string_view text) {
  std::string_view rest = text;
  if (!takeLeading(rest, isWordCharacter) || !takeLeading(rest, isSpaceCharacter) ||
      !takeLeading(rest, isWordCharacter) || !takeLeading(rest, isSpaceCharacter) ||
      !takeLeading(rest, isDecimalDigit) || rest.empty() || !isSpaceCharacter(rest.front())) {
    return std::nullopt;
  }
  rest.remove_prefix(1);
  if (!takeClockAndYear(rest)) {
    return std::nullopt;
  }
  return text.substr(0, text.size() - rest.size());
}

// Tries every word of the line.
std::optional<std::string_view> findDate(std::string_view line) {
  while (!line.empty()) {
    takeLeading(line, [](char character) { return !isWordCharacter(character); });
    if (const auto date = matchDate(line)) {
      return date;
    }
    takeLeading(line, isWordCharacter);
  }
  return std::nullopt;
}

// The digits and at most one point that a version begins with.
std::string_view versionNumber(std::string_view text) {
  const std::size_t whole = countLeading(text, isDecimalDigit);
  if (whole == 0 || whole == text.size() || text[whole] != '.') {
    return text.substr(0, whole);
  }
  const std::size_t fraction = countLeading(text.substr(whole + 1), isDecimalDigit);
  return text.substr(0, fraction > 0 ? whole + 1 + fraction : whole);
}

// Two slashes, "version" and a number, with nothing but signs and blanks between them.
std::optional<double> findVersion(std::string_view line) {
  constexpr std::string_view kWord = "version";
  const auto isSign = [](char character) { return !isWordCharacter(character); };
  for (auto at = line.find(kWord); at != std::string_view::npos; at = line.find(kWord, at + 1)) {
    const std::string_view before = line.substr(0, at);
    const auto signs =
        static_cast<std::size_t>(std::find_if_not(before.rbegin(), before.rend(), isSign) - before.rbegin());
    const std::size_t slashes = before.find("//", at - signs);
    std::string_view after = line.substr(at + kWord.size());
    if (slashes != std::string_view::npos && slashes + 2 < at && takeLeading(after, isSign) &&
        !versionNumber(after).empty()) {
      return parseRealPrefix(versionNumber(after)).value;
    }
  }
  return std::nullopt;
}

}  // namespace

void AscHeadKeys::look(std::string_view line) {
  for (TokenCursor<'$'> pieces(line); !pieces.atEnd();) {
    const std::string_view piece = pieces.take();
    if (dateText_.empty()) {
      dateText_ = normalizeBlanks(findDate(piece).value_or(std::string_view()));
    }
    lookForBaseAndTimestamps(piece);
    if (const auto version = versionFound_ ? std::nullopt : findVersion(piece)) {
      fileVersion_ = *version;
      versionFound_ = true;
    }
  }
}

// Words are separated by single blanks: "base" and two blanks are followed by an empty word, which is not "hex".
void AscHeadKeys::lookForBaseAndTimestamps(std::string_view line) {
  const auto wordAt = [line](std::size_t at) {
    return line.substr(at, std::min(line.find(' ', at), line.size()) - at);
  };
  for (std::size_t at = 0; at <= line.size();) {
    const std::string_view word = wordAt(at);
    at += word.size() + 1;
    if (at > line.size()) {
      return;  // nothing follows the last word
    }
    if (equalsIgnoreCase(word, "base")) {
      hexBase_ = equalsIgnoreCase(wordAt(at), "hex");
    } else if (equalsIgnoreCase(word, "timestamps")) {
      relativeTimestamps_ = !equalsIgnoreCase(wordAt(at), "absolute");
    }
  }
}

double AscHeadKeys::startDays() const {
  return dateText_.empty() ? 0.0 : DateTime::parseLocalized(dateText_).toOleDateFractionFirst();
}

}  // namespace xlatr
