// Splitting, trimming and comparing narrow text. Only ASCII letters count as letters: the host program's locale never
// changes a result. Nothing here keeps state, so every function may be called from any thread.
#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace xlatr {

// The blank set. Vertical tab and form feed are not in it: a number next to one of them is malformed.
inline constexpr std::string_view kBlanks = "\n\t \r";

using KeyValues = std::map<std::string, std::string, std::less<>>;

// Cuts `text` at the characters of `separators` into `tokens`, which is cleared first. With `collapse` a run of
// separators is one cut and no token is empty. Without it each separator is a cut: a text that ends in a separator
// gives a last empty token, and an empty text gives one empty token. With `unique` a token equal to an earlier one is
// dropped, even an empty one. The views of the second form point into `text` and live as long as it does. `text` must
// not belong to `tokens`.
void splitText(std::string_view text, std::string_view separators, std::vector<std::string>& tokens, bool collapse,
               bool unique);
void splitText(std::string_view text, std::string_view separators, std::vector<std::string_view>& tokens, bool collapse,
               bool unique);

// Reads the "key = value" pairs of `text` into `values`, which is cleared first. A key is the last token before an
// equals sign, a value the first token after it, so "ID = 5 ms Length = 2" maps ID to 5 and Length to 2. The last of
// equal keys wins; a value without a key is dropped; a key without a value gets an empty one.
void parseKeyValues(std::string_view text, std::string_view separators, KeyValues& values);

// Removes the characters of the blank set, or of `characters`, from both ends.
void trimBlanks(std::string& text);
void trimCharacters(std::string& text, std::string_view characters);

// `text` without the characters of `characters` at its ends, as a view into it.
[[nodiscard]] constexpr std::string_view trimmed(std::string_view text, std::string_view characters = kBlanks) {
  text = text.substr(0, text.find_last_not_of(characters) + 1);
  return text.substr(std::min(text.find_first_not_of(characters), text.size()));
}

// Whether one of these few characters occurs. In long texts many times faster than looking at each character.
[[nodiscard]] inline bool containsAny(std::string_view text, std::string_view characters) {
  return std::ranges::any_of(characters, [text](char each) { return text.find(each) != std::string_view::npos; });
}

// The words of `text` joined by one blank each. Only the blank itself separates words; a tab stays as it is.
[[nodiscard]] std::string normalizeBlanks(std::string_view text);

[[nodiscard]] constexpr bool isDecimalDigit(char character) {
  return character >= '0' && character <= '9';
}

// The classes \s and \w of a regular expression in the C locale.
[[nodiscard]] constexpr bool isSpaceCharacter(char character) {
  return character == ' ' || (character >= '\t' && character <= '\r');
}

[[nodiscard]] constexpr bool isWordCharacter(char character) {
  const char lower = static_cast<char>(character | 0x20);
  return isDecimalDigit(character) || (lower >= 'a' && lower <= 'z') || character == '_';
}

// How many characters at the start of the text belong to the class.
template <class IsOfClass>
[[nodiscard]] constexpr std::size_t countLeading(std::string_view text, IsOfClass isOfClass) {
  return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isOfClass) - text.begin());
}

[[nodiscard]] constexpr char toUpperAscii(char character) {
  return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
}

[[nodiscard]] std::string toUpperAscii(std::string_view text);

// Whether the texts are equal if the case of ASCII letters is ignored.
[[nodiscard]] constexpr bool equalsIgnoreCase(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return toUpperAscii(a) == toUpperAscii(b); });
}

// Whether the text starts, or ends, with the other if the case of ASCII letters is ignored.
[[nodiscard]] constexpr bool startsWithIgnoreCase(std::string_view text, std::string_view start) {
  return text.size() >= start.size() && equalsIgnoreCase(text.substr(0, start.size()), start);
}

[[nodiscard]] constexpr bool endsWithIgnoreCase(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && equalsIgnoreCase(text.substr(text.size() - end.size()), end);
}

// Where `upperCase`, which has no lower-case letters, begins in the text if the case of ASCII letters is ignored; npos
// if it is not there.
[[nodiscard]] std::size_t findIgnoreCase(std::string_view text, std::string_view upperCase);

[[nodiscard]] inline bool containsIgnoreCase(std::string_view text, std::string_view upperCase) {
  return findIgnoreCase(text, upperCase) != std::string_view::npos;
}

}  // namespace xlatr
