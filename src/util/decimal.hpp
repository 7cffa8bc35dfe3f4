// Decimal texts as whole numbers of a smaller unit, without a rounding to binary in between.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "util/numbers.hpp"

namespace xlatr {

// The number at the start of `text`, times ten to the power of `exponent` (0 to 18): "12.5" with exponent 6 is
// 12'500'000. Digits beyond that are rounded, halves away from zero. What follows the number is ignored, but for an
// exponent of its own, which this function does not read. Nothing for a text that starts with no decimal number, and
// for one that 64 bits don't hold.
[[nodiscard]] std::optional<std::int64_t> scaledDecimal(std::string_view text, unsigned exponent) noexcept;

// The same of a number that is taken apart already.
[[nodiscard]] std::optional<std::int64_t> scaledDecimal(const PlainDecimal& number, unsigned exponent) noexcept;

}  // namespace xlatr
