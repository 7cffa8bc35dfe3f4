// The tokens of a line of text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "util/hex.hpp"

namespace xlatr {

// Walks over the tokens of a line: what is between runs of separators. Tokens are looked at one by one and never
// collected, so a line of any length takes no memory of its own. The line must outlive the cursor and its tokens.
template <char... kSeparators>
class TokenCursor {
 public:
  explicit TokenCursor(std::string_view line)
      : next_(afterSeparators(line.data(), line.data() + line.size())), end_(line.data() + line.size()) {}

  [[nodiscard]] bool atEnd() const { return next_ == end_; }

  // The next token, or an empty text at the end of the line.
  [[nodiscard]] std::string_view peek() const {
    return {next_, static_cast<std::size_t>(afterToken(next_, end_) - next_)};
  }
  std::string_view take() {
    const std::string_view token = peek();
    next_ = afterSeparators(next_ + token.size(), end_);
    return token;
  }
  // Returns whether there were that many tokens.
  bool skip(std::size_t count) {
    while (count > 0 && !atEnd()) {
      take();
      --count;
    }
    return count == 0;
  }
  // Takes tokens as long as they are pairs of hexadecimal digits, as payloads are, and returns how many it took; at
  // most as many as `bytes` has room for.
  std::size_t takeHexPairs(std::span<std::uint8_t> bytes) {
    const char* next = next_;  // in a register: the bytes written could be anything's, this object's too
    const char* const end = end_;
    std::size_t taken = 0;
    for (; taken < bytes.size(); ++taken) {
      const std::ptrdiff_t left = end - next;
      if (left < 2 || (left > 2 && !isSeparator(next[2]))) {
        break;
      }
      const int both = hexDigitValue(next[0]) * 16 | hexDigitValue(next[1]);
      if (both < 0) {
        break;
      }
      bytes[taken] = static_cast<std::uint8_t>(both);
      next = afterSeparators(next + 2, end);
    }
    next_ = next;
    return taken;
  }
  // The rest of the line.
  [[nodiscard]] std::string_view rest() const { return {next_, static_cast<std::size_t>(end_ - next_)}; }

 private:
  [[nodiscard]] static constexpr bool isSeparator(char character) { return ((character == kSeparators) || ...); }

  static const char* afterSeparators(const char* next, const char* end) {
    while (next != end && isSeparator(*next)) {
      ++next;
    }
    return next;
  }
  static const char* afterToken(const char* next, const char* end) {
    while (next != end && !isSeparator(*next)) {
      ++next;
    }
    return next;
  }

  const char* next_;
  const char* end_;
};

}  // namespace xlatr
