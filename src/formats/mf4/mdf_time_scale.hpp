// From the times of a file to nanoseconds.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace xlatr {

// Times are offset plus count times factor, in seconds or what the unit says. A factor as 1e-7 stands for the decimal
// number that it is the nearest double of, so that counts of 64 bits become nanoseconds without a rounding in between;
// what ends between two nanoseconds is rounded to the nearest one. One that is farther than kFarthestNs is no time.
class MdfTimeScale {
 public:
  MdfTimeScale() = default;
  // `unitExponent` is that of ten to the power of which a second has units: 9 for nanoseconds.
  MdfTimeScale(double offset, double factor, int unitExponent);

  // The exponent of a unit's name: "s", "ms", "us", "ns"; nothing for any other text.
  [[nodiscard]] static std::optional<int> unitExponentOf(std::string_view unit);

  [[nodiscard]] std::optional<std::int64_t> ofCount(std::uint64_t count) const;
  [[nodiscard]] std::optional<std::int64_t> ofCount(std::int64_t count) const;
  [[nodiscard]] std::optional<std::int64_t> ofReal(double count) const;

 private:
  [[nodiscard]] std::optional<std::int64_t> ofMagnitude(std::uint64_t magnitude, bool negative) const;

  // Nanoseconds are the count times numerator, divided by denominator, plus the offset, where these are exact.
  bool exact_ = false;
  bool negative_ = false;  // the factor
  std::uint64_t numerator_ = 1;
  std::uint64_t denominator_ = 1;
  std::uint64_t mostWhole_ = 0;  // of the counts that the numerator alone makes times of
  std::int64_t offsetNs_ = 0;
  // In nanoseconds, as near as real numbers come.
  double factor_ = 1.0;
  double offset_ = 0.0;
};

}  // namespace xlatr
