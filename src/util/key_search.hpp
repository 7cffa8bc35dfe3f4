// Looking for keys in the header lines of text formats.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "util/numbers.hpp"
#include "util/text.hpp"

namespace xlatr {

// Looks for `key` and passes the text after it to `match`, one occurrence after the other, until that returns
// something.
template <class Match>
auto searchAfter(std::string_view line, std::string_view key, Match match) -> decltype(match(line)) {
  for (auto at = line.find(key); at != std::string_view::npos; at = line.find(key, at + 1)) {
    if (auto found = match(line.substr(at + key.size()))) {
      return found;
    }
  }
  return std::nullopt;
}

// The number at the start of the text if it is digits, a point and digits, as versions and start times are written.
inline std::optional<std::string_view> matchPointNumberText(std::string_view text) {
  const std::size_t whole = countLeading(text, isDecimalDigit);
  if (whole == 0 || whole == text.size() || text[whole] != '.') {
    return std::nullopt;
  }
  const std::size_t fraction = countLeading(text.substr(whole + 1), isDecimalDigit);
  if (fraction == 0) {
    return std::nullopt;
  }
  return text.substr(0, whole + 1 + fraction);
}

// The same as a number.
inline std::optional<double> matchPointNumber(std::string_view text) {
  const auto number = matchPointNumberText(text);
  return number ? std::optional(parseRealPrefix(*number).value) : std::nullopt;
}

}  // namespace xlatr
