#include "formats/asc/asc_tokens.hpp"

#include <limits>

#include "util/text.hpp"

namespace xlatr {
namespace {

bool storeByte(std::uint32_t number, std::uint32_t& value) {
  if (number > std::numeric_limits<std::uint8_t>::max()) {
    return false;
  }
  value = number;
  return true;
}

}  // namespace

bool parseByteOfBase(std::string_view token, std::uint32_t& value, int base) {
  std::uint32_t number = 0;
  return tryParseUInt32(token, number, base) && storeByte(number, value);
}

bool parseByteWithPrefix(std::string_view token, std::uint32_t& value) {
  const bool binary = token.size() > 2 && token[0] == '0' && toUpperAscii(token[1]) == 'B';
  std::uint32_t number = 0;
  return !binary && tryParseUInt32Auto(token, number) && storeByte(number, value);
}

}  // namespace xlatr
