#include "hex_text.hpp"

#include <algorithm>
#include <bit>
#include <string_view>

#include "xlatr/frames.h"

namespace xlatr::cli {

namespace {

constexpr std::string_view kCapitalDigits = "0123456789ABCDEF";
constexpr std::string_view kSmallDigits = "0123456789abcdef";
constexpr unsigned kBitsOfDigit = 4;
constexpr unsigned kDigitMask = 0xF;

}  // namespace

void appendHex(std::string& out, std::uint32_t value, std::size_t digits) {
  const auto needed = static_cast<std::size_t>(std::bit_width(value) + 3) / kBitsOfDigit;
  for (std::size_t left = std::max(digits, needed); left > 0; --left) {
    const std::size_t shift = (left - 1) * kBitsOfDigit;
    out += shift < 32 ? kCapitalDigits[value >> shift & kDigitMask] : '0';
  }
}

std::string hexText(std::uint32_t value, std::size_t digits) {
  std::string text;
  appendHex(text, value, digits);
  return text;
}

std::size_t identifierDigits(std::uint32_t kind, bool extended) {
  constexpr std::size_t kBaseDigits = 3;
  constexpr std::size_t kExtendedDigits = 8;
  constexpr std::size_t kLinDigits = 2;
  if (kind == XLATR_KIND_LIN || kind == XLATR_KIND_LIN_EVENT) {
    return kLinDigits;
  }
  return extended ? kExtendedDigits : kBaseDigits;
}

std::string identifierText(std::uint32_t kind, std::uint32_t id, bool extended) {
  const bool isCan = kind != XLATR_KIND_LIN && kind != XLATR_KIND_LIN_EVENT;
  return hexText(id, identifierDigits(kind, extended)) + (extended && isCan ? "x" : "");
}

void appendHexBytes(std::string& out, std::span<const std::uint8_t> bytes, std::string_view separator) {
  std::string_view before;
  for (const std::uint8_t byte : bytes) {
    out.append(before);
    out += kSmallDigits[byte >> kBitsOfDigit];
    out += kSmallDigits[byte & kDigitMask];
    before = separator;
  }
}

std::string hexBytes(std::span<const std::uint8_t> bytes, std::string_view separator) {
  std::string text;
  appendHexBytes(text, bytes, separator);
  return text;
}

}  // namespace xlatr::cli
