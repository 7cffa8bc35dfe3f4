// The tokens of an ASC line and the start of all kinds of lines.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string_view>

#include "formats/asc/asc_message.hpp"
#include "util/numbers.hpp"
#include "util/token_cursor.hpp"

namespace xlatr {

// The tokens of a line, taken one after the other. A missing one ends the whole conversion; the text of that failure is
// what users of such logs know: endsAtALineThatIsTooShort.
class AscTokens : public TokenCursor<' ', '\t'> {
 public:
  using TokenCursor::TokenCursor;

  std::string_view require() {
    if (atEnd()) {
      throw std::out_of_range("invalid vector subscript");
    }
    return take();
  }
};

inline void parseAscTime(AscTokens& tokens, AscMessage& message) {
  message.time = RealSeconds(parseRealPrefix(tokens.require()).value);
}

// Each of these returns false for a token that is not such a number, and leaves `value` alone.
[[nodiscard]] bool parseByteOfBase(std::string_view token, std::uint32_t& value, int base);
// A byte may be hexadecimal after "0x", but not binary after "0b".
[[nodiscard]] bool parseByteWithPrefix(std::string_view token, std::uint32_t& value);

}  // namespace xlatr
