// The tokens of a line of text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "util/hex.hpp"

namespace xlatr {

// Walks over the tokens of a line, which are what stands between runs of separators. Tokens are looked at one by one
// and never gathered, so that a line of any length takes no memory of its own. The line must outlive the cursor and its
// tokens.
template <char... kSeparators>
class TokenCursor {
 public:
  explicit TokenCursor(std::string_view line) : next_(line.data()), end_(line.data() + line.size()) {
    skipSeparators();
  }

  [[nodiscard]] bool atEnd() const { return next_ == end_; }

  // The next token, or an empty text at the end of the line.
  [[nodiscard]] std::string_view peek() const {
    const char* behind = next_;
    while (behind != end_ && !isSeparator(*behind)) {
      ++behind;
    }
    return {next_, static_cast<std::size_t>(behind - next_)};
  }
  std::string_view take() {
    const std::string_view token = peek();
    next_ += token.size();
    skipSeparators();
    return token;
  }
  // Answers whether there were as many tokens.
  bool skip(std::size_t count) {
    while (count > 0 && !atEnd()) {
      take();
      --count;
    }
    return count == 0;
  }
  // The common shape of payloads, one pair of hexadecimal digits and a separator or the end, without looking for a
  // token's end first. Answers whether there was a pair.
  bool takeHexPair(std::uint8_t& value) {
    if (end_ - next_ < 2 || (end_ - next_ > 2 && !isSeparator(next_[2]))) {
      return false;
    }
    const int both = hexDigitValue(next_[0]) * 16 | hexDigitValue(next_[1]);
    if (both < 0) {
      return false;
    }
    value = static_cast<std::uint8_t>(both);
    next_ += 2;
    skipSeparators();
    return true;
  }
  // What is left of the line.
  [[nodiscard]] std::string_view rest() const { return {next_, static_cast<std::size_t>(end_ - next_)}; }

 private:
  [[nodiscard]] static constexpr bool isSeparator(char character) { return ((character == kSeparators) || ...); }

  void skipSeparators() {
    while (next_ != end_ && isSeparator(*next_)) {
      ++next_;
    }
  }

  const char* next_;
  const char* end_;
};

}  // namespace xlatr
