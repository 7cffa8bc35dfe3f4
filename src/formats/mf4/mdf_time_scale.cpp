#include "formats/mf4/mdf_time_scale.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

#include "frames/frame.hpp"

namespace xlatr {
namespace {

constexpr int kNanosecondExponent = 9;

// digits times ten to the power of the exponent.
struct DecimalParts {
  bool negative = false;
  std::uint64_t digits = 0;
  int exponent = 0;
};

// The shortest decimal number whose nearest double this is.
std::optional<DecimalParts> shortestDecimal(double value) {
  std::array<char, 40> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::scientific);
  if (end.ec != std::errc() || !std::isfinite(value)) {
    return std::nullopt;
  }
  DecimalParts parts;
  bool afterPoint = false;
  const char* at = text.data();
  for (; at != end.ptr && *at != 'e'; ++at) {
    if (*at == '-') {
      parts.negative = true;
    } else if (*at == '.') {
      afterPoint = true;
    } else {
      parts.digits = parts.digits * 10 + static_cast<std::uint64_t>(*at - '0');
      parts.exponent -= afterPoint ? 1 : 0;
    }
  }
  int exponent = 0;
  if (at != end.ptr) {
    at += at[1] == '+' ? 2 : 1;
    static_cast<void>(std::from_chars(at, end.ptr, exponent));
  }
  parts.exponent += exponent;
  return parts;
}

// Ten to the power of the exponent; nothing for what 63 bits don't hold.
std::optional<std::uint64_t> powerOfTen(int exponent) {
  constexpr int kHighest = 18;
  if (exponent < 0 || exponent > kHighest) {
    return std::nullopt;
  }
  std::uint64_t power = 1;
  for (int at = 0; at < exponent; ++at) {
    power *= 10;
  }
  return power;
}

std::optional<std::uint64_t> product(std::uint64_t left, std::uint64_t right) {
  constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  if (right != 0 && left > kMost / right) {
    return std::nullopt;
  }
  return left * right;
}

std::optional<std::int64_t> wholeNanoseconds(double ns) {
  if (!(std::fabs(ns) <= static_cast<double>(kFarthestNs))) {
    return std::nullopt;
  }
  return static_cast<std::int64_t>(std::round(ns));
}

// The sum, if it is a time.
std::optional<std::int64_t> timeOf(std::int64_t ns, std::int64_t offsetNs) {
  if (ns > kFarthestNs || ns < -kFarthestNs || (offsetNs > 0 && ns > kFarthestNs - offsetNs) ||
      (offsetNs < 0 && ns < -kFarthestNs - offsetNs)) {
    return std::nullopt;
  }
  return ns + offsetNs;
}

}  // namespace

MdfTimeScale::MdfTimeScale(double offset, double factor, int unitExponent) {
  const double nsPerUnit = std::pow(10.0, kNanosecondExponent - unitExponent);
  factor_ = factor * nsPerUnit;
  offset_ = offset * nsPerUnit;
  const auto factorParts = shortestDecimal(factor);
  const auto offsetParts = shortestDecimal(offset);
  if (!factorParts || !offsetParts) {
    return;
  }
  const int shift = kNanosecondExponent - unitExponent;
  const auto offsetPower = powerOfTen(offsetParts->digits == 0 ? 0 : offsetParts->exponent + shift);
  const auto offsetNs = offsetPower ? product(offsetParts->digits, *offsetPower) : std::nullopt;
  const int exponent = factorParts->exponent + shift;
  const auto power = powerOfTen(exponent < 0 ? -exponent : exponent);
  if (!offsetNs || *offsetNs > static_cast<std::uint64_t>(kFarthestNs) || !power) {
    return;
  }
  const auto numerator = exponent < 0 ? std::optional(factorParts->digits) : product(factorParts->digits, *power);
  const std::uint64_t denominator = exponent < 0 ? *power : 1;
  // What is left over by the division, times the numerator, must have room, twice for its rounding.
  if (!numerator || !product(*numerator, 2 * denominator)) {
    return;
  }
  exact_ = true;
  negative_ = factorParts->negative;
  numerator_ = *numerator;
  denominator_ = denominator;
  mostWhole_ = static_cast<std::uint64_t>(kFarthestNs) / std::max<std::uint64_t>(numerator_, 1);
  offsetNs_ = offsetParts->negative ? -static_cast<std::int64_t>(*offsetNs) : static_cast<std::int64_t>(*offsetNs);
  if (denominator_ == 1 && !negative_) {
    const std::int64_t room = kFarthestNs - std::max<std::int64_t>(offsetNs_, 0);
    endOfSimple_ = static_cast<std::uint64_t>(room) / std::max<std::uint64_t>(numerator_, 1);
  }
}

std::optional<int> MdfTimeScale::unitExponentOf(std::string_view unit) {
  struct Unit {
    std::string_view name;
    int exponent;
  };
  static constexpr std::array kUnits = {
      Unit{"s", 0},  Unit{"sec", 0}, Unit{"ms", 3},        Unit{"us", 6},
      Unit{"ns", 9}, Unit{"ps", 12}, Unit{"\xC2\xB5s", 6}, Unit{"\xCE\xBCs", 6},
  };
  for (const Unit& known : kUnits) {
    if (known.name == unit) {
      return known.exponent;
    }
  }
  return std::nullopt;
}

std::optional<std::int64_t> MdfTimeScale::ofMagnitude(std::uint64_t magnitude, bool negative) const {
  if (!exact_) {
    const auto real = static_cast<double>(magnitude);
    return wholeNanoseconds((negative ? -real : real) * factor_ + offset_);
  }
  // Most scales are whole nanoseconds, and a division takes longer than all the rest.
  const bool isWhole = denominator_ == 1;
  const std::uint64_t whole = isWhole ? magnitude : magnitude / denominator_;
  if (whole > mostWhole_) {
    return std::nullopt;
  }
  std::uint64_t sum = whole * numerator_;
  if (!isWhole) {
    sum += (magnitude % denominator_ * numerator_ * 2 + denominator_) / (2 * denominator_);
  }
  if (sum > static_cast<std::uint64_t>(kFarthestNs)) {
    return std::nullopt;
  }
  const auto ns = static_cast<std::int64_t>(sum);
  return timeOf(negative != negative_ ? -ns : ns, offsetNs_);
}

std::optional<std::int64_t> MdfTimeScale::ofAnyReal(double count) const {
  constexpr double kMostWhole = 9.0e18;
  if (!exact_ || denominator_ != 1 || !(std::fabs(count) < kMostWhole)) {
    return wholeNanoseconds(count * factor_ + offset_);
  }
  const auto whole = static_cast<std::int64_t>(count);
  const double rest = count - static_cast<double>(whole);
  const auto wholeNs = ofCount(whole);
  if (rest == 0.0) {
    return wholeNs;
  }
  const double factor = negative_ ? -static_cast<double>(numerator_) : static_cast<double>(numerator_);
  const auto restNs = wholeNanoseconds(rest * factor);
  return wholeNs && restNs ? timeOf(*wholeNs, *restNs) : std::nullopt;
}

}  // namespace xlatr
