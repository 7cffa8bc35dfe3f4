// Reading real numbers; apart from the strict parsers because they share nothing.
#include <array>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <system_error>

#include "util/hex.hpp"
#include "util/numbers.hpp"
#include "util/text.hpp"

namespace xlatr {

namespace {

// The powers of ten that a double holds exactly.
constexpr std::array<double, 23> kExactPowers = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                                 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr std::uint64_t kExactMantissaLimit = std::uint64_t{1} << DBL_MANT_DIG;

// A quotient of two exact doubles is correctly rounded, unless the processor keeps more digits and rounds twice.
constexpr bool kDivisionRoundsOnce = FLT_EVAL_METHOD == 0;

// Plain decimals of ordinary length, such as the times of messages: exact without further work, and in two thirds of
// the time that from_chars takes. Consumes nothing for any other form of number, which is then read in full.
RealPrefix readPlainDecimal(std::string_view text, std::optional<PlainDecimal>* plain = nullptr) {
  std::uint64_t mantissa = 0;
  std::size_t at = 0;
  const auto readDigits = [&] {
    const std::size_t start = at;
    while (at < text.size() && isDecimalDigit(text[at]) && mantissa < kExactMantissaLimit) {
      mantissa = mantissa * 10 + static_cast<std::uint64_t>(text[at] - '0');
      ++at;
    }
    return at - start;
  };
  std::size_t digits = readDigits();
  std::size_t decimals = 0;
  if (at < text.size() && text[at] == '.') {
    ++at;
    decimals = readDigits();
    digits += decimals;
  }
  const bool exact = mantissa < kExactMantissaLimit && decimals < kExactPowers.size();
  const char next = at < text.size() ? toUpperAscii(text[at]) : '\0';
  if (!kDivisionRoundsOnce || digits == 0 || !exact || next == 'E' || next == 'X') {
    return {};
  }
  if (plain != nullptr) {
    *plain = PlainDecimal{mantissa, decimals};
  }
  return {static_cast<double>(mantissa) / kExactPowers[decimals], at};
}

// Whether a number that no double can hold is too large, not too small. Such a number is so far from one that the
// position of its leading digit decides.
bool isTooLarge(std::string_view number, std::chars_format format) {
  const bool hex = format == std::chars_format::hex;
  // More than any text has digits, and far from an overflow of the sum below.
  constexpr std::int64_t kExponentLimit = 100'000'000'000'000'000;
  // Of the first digit that is not zero: 1 directly before the point, 0 directly after it.
  std::int64_t position = 0;
  bool leading = false;
  bool afterPoint = false;
  std::size_t at = 0;
  for (; at < number.size(); ++at) {
    const char character = number[at];
    if (character == '.') {
      afterPoint = true;
      continue;
    }
    if (hex ? hexDigitValue(character) < 0 : !isDecimalDigit(character)) {
      break;
    }
    leading = leading || character != '0';
    if (leading && !afterPoint) {
      ++position;
    } else if (!leading && afterPoint) {
      --position;
    }
  }
  ++at;  // the exponent letter
  const bool negative = at < number.size() && number[at] == '-';
  if (at < number.size() && !isDecimalDigit(number[at])) {
    ++at;
  }
  std::int64_t exponent = 0;
  for (; at < number.size() && exponent < kExponentLimit; ++at) {
    exponent = exponent * 10 + (number[at] - '0');
  }
  return position * (hex ? 4 : 1) + (negative ? -exponent : exponent) > 0;
}

// `text` starts with neither sign nor prefix.
RealPrefix readInFull(std::string_view text, std::chars_format format) {
  double value = 0.0;
  const char* const first = text.data();
  const auto [end, error] = std::from_chars(first, first + text.size(), value, format);
  if (error == std::errc::invalid_argument) {
    return {};
  }
  const auto consumed = static_cast<std::size_t>(end - first);
  if (error == std::errc::result_out_of_range) {
    value = isTooLarge(text.substr(0, consumed), format) ? HUGE_VAL : 0.0;
  }
  return {value, consumed};
}

// from_chars takes "p+-4" for an exponent, which is none: such a number ends with its digits.
std::string_view withoutDoubleSign(std::string_view hex) {
  const std::size_t exponent =
      countLeading(hex, [](char character) { return character == '.' || hexDigitValue(character) >= 0; });
  const std::string_view rest = hex.substr(exponent);
  return equalsIgnoreCase(rest.substr(0, 3), "p+-") ? hex.substr(0, exponent) : hex;
}

bool startsWithHexDigit(std::string_view text) {
  if (!text.empty() && text.front() == '.') {
    text.remove_prefix(1);
  }
  return !text.empty() && hexDigitValue(text.front()) >= 0;
}

RealPrefix readMagnitude(std::string_view text) {
  if (const RealPrefix plain = readPlainDecimal(text); plain.consumed != 0) {
    return plain;
  }
  constexpr std::size_t kPrefixSize = 2;
  if (equalsIgnoreCase(text.substr(0, kPrefixSize), "0x")) {
    // from_chars would accept "inf" after the prefix.
    if (!startsWithHexDigit(text.substr(kPrefixSize))) {
      return {0.0, 1};
    }
    const RealPrefix digits = readInFull(withoutDoubleSign(text.substr(kPrefixSize)), std::chars_format::hex);
    return {digits.value, digits.consumed + kPrefixSize};
  }
  // from_chars would accept a second sign.
  return !text.empty() && text.front() == '-' ? RealPrefix{} : readInFull(text, std::chars_format::general);
}

}  // namespace

RealPrefix parseRealPrefix(std::string_view text, std::optional<PlainDecimal>& plain) noexcept {
  plain.reset();
  const RealPrefix number = readPlainDecimal(text, &plain);
  return number.consumed != 0 ? number : parseRealPrefix(text);
}

RealPrefix parseRealPrefix(std::string_view text) noexcept {
  std::size_t start = countLeading(text, isSpaceCharacter);
  const char sign = start < text.size() ? text[start] : '\0';
  if (sign == '-' || sign == '+') {
    ++start;
  }
  const RealPrefix magnitude = readMagnitude(text.substr(start));
  if (magnitude.consumed == 0) {
    return {};
  }
  return {sign == '-' ? -magnitude.value : magnitude.value, start + magnitude.consumed};
}

}  // namespace xlatr
