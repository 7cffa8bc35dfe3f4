// The tokens of an ASC line and the start of all kinds of lines.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "formats/asc/asc_message.hpp"
#include "io/quirk.hpp"
#include "util/numbers.hpp"
#include "util/token_cursor.hpp"

namespace xlatr {

// What a line says beyond its message.
struct AscLineRemains {
  std::string_view time;                   // in seconds, with all of its digits; a part of the line
  std::optional<PlainDecimal> timeDigits;  // the same, if it is a plain number
  bool timeIsNumber = false;               // from its first to its last character
  std::optional<std::uint32_t> dlc;        // as the line has it; a remote frame may lack it
};

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

  AscLineRemains remains;

 private:
  Way way_;
  bool short_ = false;
};

inline void parseAscTime(AscTokens& tokens, AscMessage& message) {
  AscLineRemains& remains = tokens.remains;
  remains.time = tokens.require();
  const RealPrefix time = parseRealPrefix(remains.time, remains.timeDigits);
  remains.timeIsNumber = time.consumed > 0 && time.consumed == remains.time.size();
  message.time = RealSeconds(time.value);
}

// Each of these returns false for a token that is not such a number, and leaves `value` alone.
[[nodiscard]] bool parseByteOfBase(std::string_view token, std::uint32_t& value, int base);
// A byte may be hexadecimal after "0x", but not binary after "0b".
[[nodiscard]] bool parseByteWithPrefix(std::string_view token, std::uint32_t& value);

}  // namespace xlatr
