#include "util/decimal.hpp"

#include <array>
#include <cstddef>
#include <limits>

#include "util/text.hpp"

namespace xlatr {
namespace {

constexpr std::uint64_t kLargest = std::numeric_limits<std::int64_t>::max();

// A power of ten, and the largest number whose product with it fits: a division for each time would be what takes
// longest.
struct Power {
  std::uint64_t value;
  std::uint64_t largestFactor;
};

constexpr std::array<Power, 19> kPowers = [] {
  std::array<Power, 19> powers{};
  std::uint64_t value = 1;
  for (Power& power : powers) {
    power = {value, kLargest / value};
    value *= 10;
  }
  return powers;
}();

// Appends a digit; false when the number outgrows 64 bits with a sign.
bool appendDigit(std::uint64_t& number, unsigned digit) {
  if (number >= kLargest / 10 && number > (kLargest - digit) / 10) {
    return false;
  }
  number = number * 10 + digit;
  return true;
}

unsigned digitValue(char character) {
  return static_cast<unsigned>(character - '0');
}

}  // namespace

std::optional<std::int64_t> scaledDecimal(std::string_view text, unsigned exponent) noexcept {
  std::size_t at = countLeading(text, isSpaceCharacter);
  const bool negative = at < text.size() && text[at] == '-';
  if (negative || (at < text.size() && text[at] == '+')) {
    ++at;
  }

  std::uint64_t number = 0;
  bool any = false;
  for (; at < text.size() && isDecimalDigit(text[at]); ++at) {
    any = true;
    if (!appendDigit(number, digitValue(text[at]))) {
      return std::nullopt;
    }
  }
  unsigned decimals = 0;
  bool rounded = false;  // by the first digit that is too many
  bool roundUp = false;
  if (at < text.size() && text[at] == '.') {
    for (++at; at < text.size() && isDecimalDigit(text[at]); ++at) {
      any = true;
      if (decimals < exponent) {
        ++decimals;
        if (!appendDigit(number, digitValue(text[at]))) {
          return std::nullopt;
        }
      } else if (!rounded) {
        rounded = true;
        roundUp = text[at] >= '5';
      }
    }
  }
  const bool hasExponent = at < text.size() && toUpperAscii(text[at]) == 'E';
  if (!any || hasExponent) {
    return std::nullopt;
  }
  for (; decimals < exponent; ++decimals) {
    if (!appendDigit(number, 0)) {
      return std::nullopt;
    }
  }
  if (roundUp && number == kLargest) {
    return std::nullopt;
  }
  number += roundUp ? 1 : 0;
  return negative ? -static_cast<std::int64_t>(number) : static_cast<std::int64_t>(number);
}

std::optional<std::int64_t> scaledDecimal(const PlainDecimal& number, unsigned exponent) noexcept {
  constexpr std::size_t kMostDigits = 18;  // of any number of 64 bits
  const bool grows = number.decimals <= exponent;
  const std::size_t shift = grows ? exponent - number.decimals : number.decimals - exponent;
  if (shift > kMostDigits) {
    return grows && number.digits != 0 ? std::nullopt : std::optional<std::int64_t>(0);
  }
  const auto [power, largestFactor] = kPowers[shift];
  if (grows) {
    return number.digits > largestFactor ? std::nullopt
                                         : std::optional(static_cast<std::int64_t>(number.digits * power));
  }
  const std::uint64_t rest = number.digits % power;
  return static_cast<std::int64_t>(number.digits / power + (rest >= power - rest ? 1 : 0));
}

}  // namespace xlatr
