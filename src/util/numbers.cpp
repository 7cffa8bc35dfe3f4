#include "util/numbers.hpp"

#include <array>
#include <limits>
#include <optional>
#include <string>

#include "util/failures.hpp"
#include "util/hex.hpp"
#include "util/text.hpp"

namespace xlatr {

namespace {

// What tells one strict parser from another.
struct NumberForm {
  int base;
  std::uint64_t maximum;
  std::string_view word;
};

constexpr std::uint64_t kMaxUInt64 = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t kMaxInt32 = std::numeric_limits<std::int32_t>::max();

constexpr NumberForm kUInt16Form = {10, 0xFFFF, "String is not a uint16"};
constexpr NumberForm kInt16HexForm = {16, 0x7FFF, "String is not a int16 hexa"};
constexpr NumberForm kUInt64Form = {10, kMaxUInt64, "String is not a uint64"};
constexpr std::string_view kInt32Word = "String is not a int32";
constexpr std::string_view kBaseWord = "Base not supported";

constexpr std::array<NumberForm, 2> kByteForms = {{
    {10, 0xFF, "String is not a byte"},
    {16, 0xFF, "String is not a hexa byte"},
}};

constexpr std::array<NumberForm, 3> kUInt32Forms = {{
    {10, 0xFFFFFFFF, "String is not a uint32"},
    {16, 0xFFFFFFFF, "String is not a hexa uint32"},
    {2, 0xFFFFFFFF, "String is not a binary uint32"},
}};

template <std::size_t Size>
const NumberForm* findForm(const std::array<NumberForm, Size>& forms, int base) {
  for (const NumberForm& form : forms) {
    if (form.base == base) {
      return &form;
    }
  }
  return nullptr;
}

// The value of digits alone, none of which is 0 and too many the largest value; nothing if another character is there.
std::optional<std::uint64_t> readDigits(std::string_view digits, int base) {
  const auto factor = static_cast<std::uint64_t>(base);
  std::uint64_t value = 0;
  bool overflow = false;
  for (const char character : digits) {
    const int digit = hexDigitValue(character);
    if (digit < 0 || digit >= base) {
      return std::nullopt;
    }
    const auto addend = static_cast<std::uint64_t>(digit);
    // The first test spares ordinary numbers the division.
    overflow = overflow || (value > kMaxUInt64 / 16 && value > (kMaxUInt64 - addend) / factor);
    value = value * factor + addend;
  }
  return overflow ? kMaxUInt64 : value;
}

bool isAllZeros(std::string_view text) {
  return text.find_first_not_of('0') == std::string_view::npos;
}

// Nearly every number in a trace: a few digits and nothing else, which none of the oddities concerns and which can't
// overflow. Nothing for every other text, which is then read in full.
std::optional<std::uint64_t> readFewDigits(std::string_view text, int base) {
  constexpr std::size_t kMostDigits = 8;
  if (text.empty() || text.size() > kMostDigits) {
    return std::nullopt;
  }
  std::uint64_t value = 0;
  for (const char character : text) {
    const int digit = hexDigitValue(character);
    if (digit < 0 || digit >= base) {
      return std::nullopt;
    }
    value = value * static_cast<std::uint64_t>(base) + static_cast<std::uint64_t>(digit);
  }
  return value;
}

// A zero is checked against the text with its blanks, all others without: that is how " 0" and a text of blanks fail.
std::optional<std::uint64_t> readUnsigned(std::string_view text, const NumberForm& form) {
  if (const auto value = readFewDigits(text, form.base)) {
    return *value <= form.maximum ? value : std::nullopt;
  }
  const auto value = readDigits(trimmed(text), form.base);
  if (!value || *value > form.maximum || (*value == 0 && !isAllZeros(text))) {
    return std::nullopt;
  }
  return value;
}

template <typename Number>
Number parseUnsigned(std::string_view text, const NumberForm& form) {
  const auto value = readUnsigned(text, form);
  if (!value) {
    throwParsingFailure(form.word, text);
  }
  return static_cast<Number>(*value);
}

template <typename Number>
bool tryParseUnsigned(std::string_view text, Number& out, const NumberForm& form) {
  const auto value = readUnsigned(text, form);
  if (value) {
    out = static_cast<Number>(*value);
  }
  return value.has_value();
}

bool startsWithSign(std::string_view text) {
  return !text.empty() && (text.front() == '+' || text.front() == '-');
}

// Trims behind a sign only, so that a text without one keeps the blanks that make " 0" fail.
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
    magnitude = 0;  // a sign binds only to a digit right behind it; "- 5" then fails the test for zeros
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
  // The marker is looked for in the text with its blanks, hence no prefix behind a blank.
  if (body.size() > 2 && body.front() == '0') {
    const char marker = toUpperAscii(text[1]);
    if (marker == 'X' || marker == 'B') {
      return {body.substr(2), marker == 'X' ? 16 : 2, false};
    }
  }
  return {body, 10, false};
}

// Hands `parse` the text without prefix. An "h" at the end becomes a zero character, which no base takes for a digit.
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
  const NumberForm* form = findForm(kByteForms, base);
  if (form == nullptr) {
    throwParsingFailure(kBaseWord, std::to_string(base));
  }
  return parseUnsigned<std::uint8_t>(text, *form);
}

bool tryParseByte(std::string_view text, std::uint8_t& out) noexcept {
  return tryParseUnsigned(text, out, kByteForms.front());
}

std::uint16_t parseUInt16(std::string_view text) {
  return parseUnsigned<std::uint16_t>(text, kUInt16Form);
}

bool tryParseUInt16(std::string_view text, std::uint16_t& out) noexcept {
  return tryParseUnsigned(text, out, kUInt16Form);
}

std::int16_t parseInt16Hex(std::string_view text) {
  return parseUnsigned<std::int16_t>(text, kInt16HexForm);
}

bool tryParseInt16Hex(std::string_view text, std::int16_t& out) noexcept {
  return tryParseUnsigned(text, out, kInt16HexForm);
}

std::uint32_t parseUInt32(std::string_view text, int base) {
  const NumberForm* form = findForm(kUInt32Forms, base);
  if (form == nullptr) {
    throwParsingFailure(kBaseWord, text);
  }
  return parseUnsigned<std::uint32_t>(text, *form);
}

bool tryParseUInt32(std::string_view text, std::uint32_t& out, int base) noexcept {
  const NumberForm* form = findForm(kUInt32Forms, base);
  return form != nullptr && tryParseUnsigned(text, out, *form);
}

std::uint64_t parseUInt64(std::string_view text) {
  return parseUnsigned<std::uint64_t>(text, kUInt64Form);
}

bool tryParseUInt64(std::string_view text, std::uint64_t& out) noexcept {
  return tryParseUnsigned(text, out, kUInt64Form);
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
  const NumberForm* form = findForm(kByteForms, number.base);
  return !number.hasSuffix && form != nullptr && tryParseUnsigned(number.digits, out, *form);
}

std::uint32_t parseUInt32Auto(std::string_view text) {
  return parseAuto(text, parseUInt32);
}

bool tryParseUInt32Auto(std::string_view text, std::uint32_t& out) noexcept {
  const PrefixedNumber number = readPrefix(text);
  return !number.hasSuffix && tryParseUInt32(number.digits, out, number.base);
}

}  // namespace xlatr
