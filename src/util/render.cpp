#include "util/render.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>

#include "util/hex.hpp"

namespace xlatr {
namespace {

constexpr std::array<double, 10> kPowersOfTen = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};

constexpr std::size_t kMostPlaces = kPowersOfTen.size() - 1;
constexpr std::size_t kMostDigits = 20;  // what the largest number has

// The decimal digits of a number in a buffer of its own.
class Digits {
 public:
  explicit Digits(std::uint64_t value) : end_(std::to_chars(text_.data(), text_.data() + text_.size(), value).ptr) {}
  // It points into itself.
  Digits(const Digits&) = delete;
  Digits& operator=(const Digits&) = delete;
  ~Digits() = default;

  [[nodiscard]] std::string_view view() const { return {text_.data(), end_}; }

 private:
  std::array<char, kMostDigits> text_;
  const char* end_;
};

std::string_view hexDigits(std::array<char, 8>& text, std::uint32_t value, std::size_t digits) {
  std::size_t begin = text.size();
  do {
    text[--begin] = kHexDigits[value & 15];
    value >>= 4;
  } while (value != 0);
  while (text.size() - begin < digits && begin > 0) {
    text[--begin] = '0';
  }
  return {text.data() + begin, text.size() - begin};
}

// 308 digits before the point, the decimals, a sign and a point are the longest fixed notation of a double.
std::string formatted(double value, std::chars_format format, int precision) {
  std::array<char, 512> text;
  const auto result = std::to_chars(text.data(), text.data() + text.size(), value, format, precision);
  return {text.data(), result.ptr};
}

// `units` is the value in units of its last decimal place.
void appendUnits(TextBuffer& out, std::uint64_t units, int decimals, std::size_t width) {
  const auto places = static_cast<std::size_t>(decimals);
  // Zeros come before the digits, because a value below 1 has fewer digits than places.
  std::array<char, kMostPlaces + kMostDigits + kMostDigits> text;
  std::memset(text.data(), '0', kMostPlaces);
  char* const printed = text.data() + kMostPlaces;
  const char* const end = std::to_chars(printed, printed + kMostDigits, units).ptr;
  const char* const begin = std::min<const char*>(printed, end - places - 1);
  const auto whole = static_cast<std::size_t>(end - begin) - places;
  const std::size_t length = whole + (places > 0 ? places + 1 : 0);
  const std::size_t blanks = length < width ? width - length : 0;
  char* const to = out.reserve(blanks + kMostDigits + kMostPlaces + 1);
  std::memset(to, ' ', blanks);
  // Both copies are longer than their part, because a copy of fixed size is not a call. The rest is overwritten or left
  // beyond the end.
  std::memcpy(to + blanks, begin, kMostDigits);
  to[blanks + whole] = '.';
  std::memcpy(to + blanks + whole + 1, begin + whole, kMostPlaces);
  out.extendTo(to + blanks + length);
}

}  // namespace

std::string formatFixed(double value, int precision) {
  return formatted(value, std::chars_format::fixed, precision);
}

std::string formatGeneral(double value, int precision) {
  return formatted(value, std::chars_format::general, precision);
}

void appendRoundedFixed(TextBuffer& out, double value, int decimals, std::size_t width) {
  const double scale = kPowersOfTen[static_cast<std::size_t>(decimals)];
  const double scaled = std::round(value * scale);
  // Up to here the quotient scaled / scale prints as the very digits of scaled, so the division can be left out.
  constexpr double kExactLimit = 1e15;
  if (!(scaled < kExactLimit) || std::signbit(scaled)) {
    out.appendRight(formatFixed(scaled / scale, decimals), width);
    return;
  }
  appendUnits(out, static_cast<std::uint64_t>(scaled), decimals, width);
}

void appendFixed(TextBuffer& out, double value, int decimals) {
  const double scaled = value * kPowersOfTen[static_cast<std::size_t>(decimals)];
  // Up to the limit the product is off by less than kDoubt. So if it is further than that from the middle between two
  // units, it rounds as the exact value does.
  constexpr double kLimit = 1e12;
  constexpr double kDoubt = 1e-3;
  if (scaled >= 0.0 && scaled < kLimit && !std::signbit(scaled)) {
    const auto units = static_cast<std::uint64_t>(scaled);
    const double rest = scaled - static_cast<double>(units);
    if (std::fabs(rest - 0.5) > kDoubt) {
      appendUnits(out, units + (rest > 0.5 ? 1 : 0), decimals, 0);
      return;
    }
  }
  out.append(formatFixed(value, decimals));
}

void appendUnitsFixed(TextBuffer& out, std::int64_t units, int decimals, std::size_t width) {
  if (units >= 0) {
    appendUnits(out, static_cast<std::uint64_t>(units), decimals, width);
    return;
  }
  TextBuffer digits;
  digits.append('-');
  appendUnits(digits, 0 - static_cast<std::uint64_t>(units), decimals, 0);
  out.appendRight(digits.view(), width);
}

void appendDecimal(TextBuffer& out, std::uint64_t value) {
  char* const begin = out.reserve(kMostDigits);
  out.extendTo(std::to_chars(begin, begin + kMostDigits, value).ptr);
}

void appendDecimalRight(TextBuffer& out, std::uint64_t value, std::size_t width) {
  out.appendRight(Digits(value).view(), width);
}

void appendDecimalLeft(TextBuffer& out, std::uint64_t value, std::size_t width) {
  out.appendLeft(Digits(value).view(), width);
}

void appendHex(TextBuffer& out, std::uint32_t value, std::size_t digits) {
  std::array<char, 8> text;
  out.append(hexDigits(text, value, digits));
}

void appendHexRight(TextBuffer& out, std::uint32_t value, std::size_t width) {
  std::array<char, 8> text;
  out.appendRight(hexDigits(text, value, 1), width);
}

void appendHexBytes(TextBuffer& out, std::span<const std::uint8_t> bytes, std::string_view separator) {
  if (bytes.empty()) {
    return;
  }
  char* end = out.extend(bytes.size() * 2 + (bytes.size() - 1) * separator.size());
  const auto put = [&end](std::uint8_t byte) {
    std::memcpy(end, kHexPairs[byte].data(), 2);
    end += 2;
  };
  put(bytes.front());
  if (separator.size() == 1) {
    // The case of nearly all lines: a byte is stored, whereas the general form would call a function.
    for (const std::uint8_t byte : bytes.subspan(1)) {
      *end++ = separator.front();
      put(byte);
    }
    return;
  }
  for (const std::uint8_t byte : bytes.subspan(1)) {
    end = std::copy(separator.begin(), separator.end(), end);
    put(byte);
  }
}

void appendTraceId(TextBuffer& out, std::uint32_t identifier, bool extended, std::size_t width) {
  constexpr std::size_t kColumns = 8;
  std::array<char, 8> text;
  out.appendRight(hexDigits(text, identifier, extended ? kColumns : width), kColumns);
}

void appendAscId(TextBuffer& out, std::uint32_t identifier, bool extended) {
  constexpr std::size_t kColumns = 15;
  const std::size_t begin = out.size();
  appendHex(out, identifier, 1);
  if (extended) {
    out.append('x');
  }
  out.appendBlanks(begin + kColumns - out.size());
}

}  // namespace xlatr
