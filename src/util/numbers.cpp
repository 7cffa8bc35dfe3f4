#include "util/numbers.hpp"

#include <charconv>
#include <limits>
#include <optional>
#include <string>
#include <system_error>
#include <type_traits>

#include "util/failures.hpp"
#include "util/hex.hpp"
#include "util/text.hpp"

namespace xlatr {

namespace {

constexpr std::uint64_t kMaxUInt64 = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t kMaxInt32 = std::numeric_limits<std::int32_t>::max();

// What differs between the strict parsers.
struct NumberForm {
  int base;
  std::uint64_t maximum;
  std::string_view word;
};

constexpr NumberForm kByteForm = {10, 0xFF, "String is not a byte"};
constexpr NumberForm kHexByteForm = {16, 0xFF, "String is not a hexa byte"};
constexpr NumberForm kUInt16Form = {10, 0xFFFF, "String is not a uint16"};
constexpr NumberForm kInt16HexForm = {16, 0x7FFF, "String is not a int16 hexa"};
constexpr NumberForm kUInt32Form = {10, 0xFFFFFFFF, "String is not a uint32"};
constexpr NumberForm kHexUInt32Form = {16, 0xFFFFFFFF, "String is not a hexa uint32"};
constexpr NumberForm kBinaryUInt32Form = {2, 0xFFFFFFFF, "String is not a binary uint32"};
constexpr NumberForm kUInt64Form = {10, kMaxUInt64, "String is not a uint64"};
constexpr std::string_view kInt32Word = "String is not a int32";
constexpr std::string_view kBaseWord = "Base not supported";

// The value of a text of digits: 0 if it is empty, the largest value if there are too many digits. Nothing if there is
// any other character, even a sign.
std::optional<std::uint64_t> readDigits(std::string_view digits, int base) {
  std::uint64_t value = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, value, base);
  if (stop != end) {
    return std::nullopt;
  }
  return error == std::errc::result_out_of_range ? kMaxUInt64 : value;
}

bool isAllZeros(std::string_view text) {
  return text.find_first_not_of('0') == std::string_view::npos;
}

// A zero is checked against the text with its blanks, any other number without: that is how " 0" and a text of blanks
// fail.
std::optional<std::uint64_t> readUnsigned(std::string_view text, const NumberForm& form) {
  const auto value = readDigits(trimmed(text), form.base);
  if (!value || *value > form.maximum || (*value == 0 && !isAllZeros(text))) {
    return std::nullopt;
  }
  return value;
}

// Nearly every number in a trace is digits and nothing else, and none of the oddities concerns it. The form is a
// template argument, so that from_chars gets a loop of its own for each base.
template <const NumberForm& kForm, typename Number>
bool tryParseUnsigned(std::string_view text, Number& out) {
  std::make_unsigned_t<Number> plain = 0;
  const char* const end = text.data() + text.size();
  if (const auto [stop, error] = std::from_chars(text.data(), end, plain, kForm.base);
      stop == end && error == std::errc() && plain <= kForm.maximum) {
    out = static_cast<Number>(plain);
    return true;
  }
  const auto value = readUnsigned(text, kForm);
  if (value) {
    out = static_cast<Number>(*value);
  }
  return value.has_value();
}

template <const NumberForm& kForm, typename Number>
Number parseUnsigned(std::string_view text) {
  Number value = 0;
  if (!tryParseUnsigned<kForm>(text, value)) {
    throwParsingFailure(kForm.word, text);
  }
  return value;
}

bool startsWithSign(std::string_view text) {
  return !text.empty() && (text.front() == '+' || text.front() == '-');
}

// Trims only after a sign, so that a text without one keeps the blanks that make " 0" fail.
std::string_view stripSign(std::string_view text) {
  return startsWithSign(text) ? trimmed(text.substr(1)) : text;
}

std::optional<std::int32_t> readInt32(std::string_view text) {
  const std::string_view body = trimmed(text);
  auto magnitude = readDigits(stripSign(body), 10);
  if (!magnitude) {
    return std::nullopt;
  }
  const bool negative = !body.empty() && body.front() == '-';
  if (startsWithSign(body) && body.size() > 1 && !isDecimalDigit(body[1])) {
    magnitude = 0;  // a sign binds only to a digit right after it; "- 5" then fails the test for zeros
  }
  if (*magnitude > kMaxInt32 + (negative ? 1 : 0) || (*magnitude == 0 && !isAllZeros(stripSign(text)))) {
    return std::nullopt;
  }
  const auto value = static_cast<std::int64_t>(*magnitude);
  return static_cast<std::int32_t>(negative ? -value : value);
}

struct PrefixedNumber {
  std::string_view digits;
  int base;
  bool hasSuffix;
};

PrefixedNumber readPrefix(std::string_view text) {
  const std::string_view body = trimmed(text);
  if (body.size() > 1 && toUpperAscii(body.back()) == 'H') {
    return {body, 16, true};
  }
  // The marker is looked for in the text with its blanks, hence no prefix after a blank.
  if (body.size() > 2 && body.front() == '0') {
    const char marker = toUpperAscii(text[1]);
    if (marker == 'X' || marker == 'B') {
      return {body.substr(2), marker == 'X' ? 16 : 2, false};
    }
  }
  return {body, 10, false};
}

// Passes the text without prefix to `parse`. An "h" at the end becomes a zero character, which no base takes for a
// digit.
template <typename Parse>
auto parseAuto(std::string_view text, Parse parse) {
  const PrefixedNumber number = readPrefix(text);
  if (!number.hasSuffix) {
    return parse(number.digits, number.base);
  }
  std::string refused(number.digits);
  refused.back() = '\0';
  return parse(std::string_view(refused), number.base);
}

}  // namespace

bool parseBool(std::string_view text) {
  bool value = false;
  if (!tryParseBool(text, value)) {
    throwParsingFailure("Bool is not 0 nor 1", text);
  }
  return value;
}

bool tryParseBool(std::string_view text, bool& out) noexcept {
  const std::string_view body = trimmed(text);
  if (body != "0" && body != "1") {
    return false;
  }
  out = body == "1";
  return true;
}

std::uint8_t parseHexPair(std::string_view text) {
  if (text.size() != 2) {
    throwParsingFailure("String is not a 2 digits hexa 00..FF", text);
  }
  int value = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const int digit = hexDigitValue(text[i]);
    if (digit < 0) {
      throwParsingFailure("Digit is not 0..F nor 0..f", text.substr(i, 1));
    }
    value = value * 16 + digit;
  }
  return static_cast<std::uint8_t>(value);
}

std::uint8_t parseByte(std::string_view text, int base) {
  switch (base) {
    case 10:
      return parseUnsigned<kByteForm, std::uint8_t>(text);
    case 16:
      return parseUnsigned<kHexByteForm, std::uint8_t>(text);
    default:
      throwParsingFailure(kBaseWord, std::to_string(base));
  }
}

bool tryParseByte(std::string_view text, std::uint8_t& out) noexcept {
  return tryParseUnsigned<kByteForm>(text, out);
}

std::uint16_t parseUInt16(std::string_view text) {
  return parseUnsigned<kUInt16Form, std::uint16_t>(text);
}

bool tryParseUInt16(std::string_view text, std::uint16_t& out) noexcept {
  return tryParseUnsigned<kUInt16Form>(text, out);
}

std::int16_t parseInt16Hex(std::string_view text) {
  return parseUnsigned<kInt16HexForm, std::int16_t>(text);
}

bool tryParseInt16Hex(std::string_view text, std::int16_t& out) noexcept {
  return tryParseUnsigned<kInt16HexForm>(text, out);
}

std::uint32_t parseUInt32(std::string_view text, int base) {
  switch (base) {
    case 10:
      return parseUnsigned<kUInt32Form, std::uint32_t>(text);
    case 16:
      return parseUnsigned<kHexUInt32Form, std::uint32_t>(text);
    case 2:
      return parseUnsigned<kBinaryUInt32Form, std::uint32_t>(text);
    default:
      throwParsingFailure(kBaseWord, text);
  }
}

bool tryParseUInt32(std::string_view text, std::uint32_t& out, int base) noexcept {
  switch (base) {
    case 10:
      return tryParseUnsigned<kUInt32Form>(text, out);
    case 16:
      return tryParseUnsigned<kHexUInt32Form>(text, out);
    case 2:
      return tryParseUnsigned<kBinaryUInt32Form>(text, out);
    default:
      return false;
  }
}

std::uint64_t parseUInt64(std::string_view text) {
  return parseUnsigned<kUInt64Form, std::uint64_t>(text);
}

bool tryParseUInt64(std::string_view text, std::uint64_t& out) noexcept {
  return tryParseUnsigned<kUInt64Form>(text, out);
}

std::int32_t parseInt32(std::string_view text) {
  const auto value = readInt32(text);
  if (!value) {
    throwParsingFailure(kInt32Word, text);
  }
  return *value;
}

std::uint8_t parseByteAuto(std::string_view text) {
  return parseAuto(text, parseByte);
}

bool tryParseByteAuto(std::string_view text, std::uint8_t& out) noexcept {
  const PrefixedNumber number = readPrefix(text);
  switch (number.hasSuffix ? 0 : number.base) {
    case 10:
      return tryParseUnsigned<kByteForm>(number.digits, out);
    case 16:
      return tryParseUnsigned<kHexByteForm>(number.digits, out);
    default:
      return false;
  }
}

std::uint32_t parseUInt32Auto(std::string_view text) {
  return parseAuto(text, parseUInt32);
}

bool tryParseUInt32Auto(std::string_view text, std::uint32_t& out) noexcept {
  const PrefixedNumber number = readPrefix(text);
  return !number.hasSuffix && tryParseUInt32(number.digits, out, number.base);
}

}  // namespace xlatr
