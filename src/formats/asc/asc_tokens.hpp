// The tokens of an ASC line and the start of all kinds of lines.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "formats/asc/asc_message.hpp"
#include "io/quirk.hpp"
#include "util/hex.hpp"
#include "util/numbers.hpp"
#include "util/token_cursor.hpp"

namespace xlatr {

// The tokens of a line, taken one after the other. On the compatible way a missing one ends the whole conversion; the
// text of that failure is what users of such logs know: endsAtALineThatIsTooShort. On the complete way it is an empty
// text, and the line is short.
class AscTokens : public TokenCursor<' ', '\t'> {
 public:
  explicit AscTokens(std::string_view line, Way way = Way::compatible()) : TokenCursor(line), way_(way) {}

  std::string_view require() {
    if (atEnd()) {
      if (has(Quirk::AscShortLineEnds)) {
        throw std::out_of_range("invalid vector subscript");
      }
      short_ = true;
    }
    return take();
  }

  [[nodiscard]] bool has(Quirk quirk) const { return way_.has(quirk); }
  // Whether a token was missing.
  [[nodiscard]] bool isShort() const { return short_; }

  // What a line says beyond its message: the DLC, which a remote frame may lack.
  std::optional<std::uint32_t> dlc;

 private:
  Way way_;
  bool short_ = false;
};

inline void parseAscTime(AscTokens& tokens, AscMessage& message) {
  message.time = RealSeconds(parseRealPrefix(tokens.require()).value);
}

// A number that is nothing but digits of the base, 10 or 16, and not many. On the complete way tokens are nothing else,
// and this takes a fraction of the time of the parsers in util/numbers.hpp.
[[nodiscard]] inline bool parseDigits(std::string_view token, int base, std::uint32_t& value) {
  constexpr std::size_t kMostDigits = 8;  // of any number of 32 bits, in base 16
  std::uint32_t number = 0;
  for (const char character : token) {
    const int digit = hexDigitValue(character);
    if (digit < 0 || digit >= base) {
      return false;
    }
    number = number * static_cast<std::uint32_t>(base) + static_cast<std::uint32_t>(digit);
  }
  value = number;
  return !token.empty() && token.size() <= kMostDigits;
}

// Each of these returns false for a token that is not such a number, and leaves `value` alone.
[[nodiscard]] bool parseByteOfBase(std::string_view token, std::uint32_t& value, int base);
// A byte may be hexadecimal after "0x", but not binary after "0b".
[[nodiscard]] bool parseByteWithPrefix(std::string_view token, std::uint32_t& value);

}  // namespace xlatr
