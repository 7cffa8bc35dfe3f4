// Strict numbers and real numbers from text. No function keeps state or looks at the locale, so each may be called from
// any thread.
//
// All strict parsers read a number the same way: blanks (kBlanks) may be at both ends and everything between must be
// a digit of the base. Three oddities must stay, because existing files rely on them:
// - An empty text is 0, but a text of only blanks is not a number.
// - A zero must be the whole text: " 7" and "7 " are 7, while " 0" and "0 " are not numbers.
// - parseUInt64 alone has no overflow: a number that is too large becomes the largest value.
//
// The throwing forms raise a ConverterParsingException that names the text. The try forms return false instead and
// leave `out` alone; they allocate nothing and never throw, because they run on tokens that may rightly be something
// else.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace xlatr {

// "0" or "1" with blanks around; unlike for numbers, an empty text is refused.
[[nodiscard]] bool parseBool(std::string_view text);
[[nodiscard]] bool tryParseBool(std::string_view text, bool& out) noexcept;

// Exactly two hexadecimal digits, without blanks.
[[nodiscard]] std::uint8_t parseHexPair(std::string_view text);

// Base 10 or 16.
[[nodiscard]] std::uint8_t parseByte(std::string_view text, int base);
[[nodiscard]] bool tryParseByte(std::string_view text, std::uint8_t& out) noexcept;

[[nodiscard]] std::uint16_t parseUInt16(std::string_view text);
[[nodiscard]] bool tryParseUInt16(std::string_view text, std::uint16_t& out) noexcept;

// A signed 16-bit number in hexadecimal without a sign: 0 to 7FFF. A number with the top bit set is out of range, not
// negative.
[[nodiscard]] std::int16_t parseInt16Hex(std::string_view text);
[[nodiscard]] bool tryParseInt16Hex(std::string_view text, std::int16_t& out) noexcept;

// Base 10, 16 or 2.
[[nodiscard]] std::uint32_t parseUInt32(std::string_view text, int base);
[[nodiscard]] bool tryParseUInt32(std::string_view text, std::uint32_t& out, int base) noexcept;

[[nodiscard]] std::uint64_t parseUInt64(std::string_view text);
[[nodiscard]] bool tryParseUInt64(std::string_view text, std::uint64_t& out) noexcept;

// With an optional sign. Blanks may follow the sign only in front of a zero: "- 0" is 0, but "- 5" is not a number. A
// sign alone is 0.
[[nodiscard]] std::int32_t parseInt32(std::string_view text);

// The base follows from the text: "0x" in front means 16, "0b" means 2, otherwise it is 10. The prefix counts only at
// the very start, not after blanks, and only if at least one character follows. The failure names the text without
// blanks and prefix. A binary byte fails with "Base not supported". A text that ends in "h" is always refused as a bad
// hexadecimal number, even "10h": readers take a refused token as a name, and files have always been read that way. The
// failure shows a zero character in place of the "h".
[[nodiscard]] std::uint8_t parseByteAuto(std::string_view text);
[[nodiscard]] bool tryParseByteAuto(std::string_view text, std::uint8_t& out) noexcept;
[[nodiscard]] std::uint32_t parseUInt32Auto(std::string_view text);
[[nodiscard]] bool tryParseUInt32Auto(std::string_view text, std::uint32_t& out) noexcept;

// A real number and the number of characters that it took, leading blanks included.
struct RealPrefix {
  double value = 0.0;
  std::size_t consumed = 0;
};

// Reads the number at the start of `text` and ignores what follows. After leading white space (vertical tab and form
// feed too) and an optional sign comes a decimal number with an optional exponent, a hexadecimal one after "0x" with an
// optional binary exponent, "inf", "infinity", "nan" or "nan(...)", in letters of any case. Out of range gives infinity
// or zero with the sign. Without a number the result is 0.0 with 0 consumed. The value is correctly rounded; never
// throws.
[[nodiscard]] RealPrefix parseRealPrefix(std::string_view text) noexcept;

// The digits of a plain decimal number without its point, and how many of them stand after that.
struct PlainDecimal {
  std::uint64_t digits = 0;
  std::size_t decimals = 0;
};

// The same. Fills `plain` too if the number has neither a sign nor an exponent and its digits are exact in a double;
// otherwise leaves it empty.
[[nodiscard]] RealPrefix parseRealPrefix(std::string_view text, std::optional<PlainDecimal>& plain) noexcept;

}  // namespace xlatr
