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

  [[nodiscard]] std::optional<std::int64_t> ofCount(std::uint64_t count) const {
    return count < endOfSimple_ ? std::optional(simple(count)) : ofMagnitude(count, false);
  }
  [[nodiscard]] std::optional<std::int64_t> ofCount(std::int64_t count) const {
    return count >= 0 ? ofCount(static_cast<std::uint64_t>(count))
                      : ofMagnitude(~static_cast<std::uint64_t>(count) + 1, true);
  }
  // The part before the point is a count; that after it is small, so that nothing is lost of it.
  [[nodiscard]] std::optional<std::int64_t> ofReal(double count) const {
    constexpr double kMostWhole = 9.0e18;
    const auto whole = count >= 0.0 && count < kMostWhole ? static_cast<std::int64_t>(count) : -1;
    if (whole < 0 || static_cast<std::uint64_t>(whole) + 1 >= endOfSimple_) {
      return ofAnyReal(count);
    }
    const double rest =
        (count - static_cast<double>(whole)) * static_cast<double>(static_cast<std::int64_t>(numerator_));
    const auto restNs = static_cast<std::int64_t>(rest);
    return simple(static_cast<std::uint64_t>(whole)) + restNs + (rest - static_cast<double>(restNs) >= 0.5 ? 1 : 0);
  }

 private:
  [[nodiscard]] std::int64_t simple(std::uint64_t count) const {
    return static_cast<std::int64_t>(count * numerator_) + offsetNs_;
  }
  [[nodiscard]] std::optional<std::int64_t> ofAnyReal(double count) const;
  [[nodiscard]] std::optional<std::int64_t> ofMagnitude(std::uint64_t magnitude, bool negative) const;

  // Nanoseconds are the count times numerator, divided by denominator, plus the offset, where these are exact.
  bool exact_ = false;
  bool negative_ = false;  // the factor
  std::uint64_t numerator_ = 1;
  std::uint64_t denominator_ = 1;
  std::uint64_t mostWhole_ = 0;    // of the counts that the numerator alone makes times of
  std::uint64_t endOfSimple_ = 0;  // counts below it need neither a division nor a check
  std::int64_t offsetNs_ = 0;
  // In nanoseconds, as near as real numbers come.
  double factor_ = 1.0;
  double offset_ = 0.0;
};

}  // namespace xlatr
