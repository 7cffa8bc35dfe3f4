// Numbers as text. None of these functions looks at a locale.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "util/text_buffer.hpp"

namespace xlatr {

// The value in fixed notation with exactly `precision` decimals.
[[nodiscard]] std::string formatFixed(double value, int precision);

// The value with up to `precision` significant digits, without trailing zeros, in scientific notation if its exponent
// is below -4 or not below the precision ("%.*g").
[[nodiscard]] std::string formatGeneral(double value, int precision);

// formatFixed into a buffer, exact to the last digit. At most 9 decimals.
void appendFixed(TextBuffer& out, double value, int decimals);

// The value rounded to `decimals` places first (half away from zero, so that 123.45 becomes 123.5), then in fixed
// notation, right-aligned in `width` columns. At most 9 decimals.
void appendRoundedFixed(TextBuffer& out, double value, int decimals, std::size_t width);

// A number of units of the last decimal place in fixed notation, exact, right-aligned in `width` columns: 1234 with
// three decimals is 1.234. At most 9 decimals.
void appendUnitsFixed(TextBuffer& out, std::int64_t units, int decimals, std::size_t width);

// Decimal digits; the padded forms fill up with blanks to `width` columns.
void appendDecimal(TextBuffer& out, std::uint64_t value);
void appendDecimalRight(TextBuffer& out, std::uint64_t value, std::size_t width);
void appendDecimalLeft(TextBuffer& out, std::uint64_t value, std::size_t width);

// Upper-case hexadecimal digits, filled with zeros to at least `digits`.
void appendHex(TextBuffer& out, std::uint32_t value, std::size_t digits);
// The digits without fill, right-aligned with blanks in `width` columns.
void appendHexRight(TextBuffer& out, std::uint32_t value, std::size_t width);

// Two upper-case hexadecimal digits for each byte, joined by the separator.
void appendHexBytes(TextBuffer& out, std::span<const std::uint8_t> bytes, std::string_view separator = " ");

// An identifier as TRC lines show it, right-aligned in eight columns: upper-case hexadecimal, filled with zeros to
// eight digits if extended, otherwise to `width` digits.
void appendTraceId(TextBuffer& out, std::uint32_t identifier, bool extended, std::size_t width);

// An identifier as ASC lines show it: upper-case hexadecimal without fill, "x" after an extended one, left-aligned in
// fifteen columns.
void appendAscId(TextBuffer& out, std::uint32_t identifier, bool extended);

}  // namespace xlatr
