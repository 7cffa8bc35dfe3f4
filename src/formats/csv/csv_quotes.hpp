// Quoted cells (RFC 4180): quotes inside are doubled, and a cell may hold separators and line ends.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "util/text_buffer.hpp"

namespace xlatr {

inline constexpr char kCsvQuote = '"';

inline void appendQuoted(TextBuffer& out, std::string_view text) {
  out.append(kCsvQuote);
  for (std::size_t quote = text.find(kCsvQuote); quote != std::string_view::npos; quote = text.find(kCsvQuote)) {
    out.append(text.substr(0, quote + 1));
    out.append(kCsvQuote);
    text.remove_prefix(quote + 1);
  }
  out.append(text);
  out.append(kCsvQuote);
}

// Takes a quoted text, at whose opening quote `rest` begins, with its closing quote off the front. False if there is
// none.
[[nodiscard]] inline bool takeQuoted(std::string_view& rest, std::string& text) {
  text.clear();
  for (rest.remove_prefix(1);;) {
    const std::size_t quote = rest.find(kCsvQuote);
    if (quote == std::string_view::npos) {
      return false;
    }
    text += rest.substr(0, quote);
    rest.remove_prefix(quote + 1);
    if (!rest.starts_with(kCsvQuote)) {
      return true;
    }
    text += kCsvQuote;
    rest.remove_prefix(1);
  }
}

}  // namespace xlatr
