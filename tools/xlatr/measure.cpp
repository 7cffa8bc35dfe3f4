#include "measure.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <span>
#include <system_error>

#include "output.hpp"

namespace xlatr::cli {

namespace {

struct MeasureUnit {
  std::string_view name;
  double factor;
};

// A number that is not negative, with one of the units after it.
std::optional<double> quantityOf(std::string_view text, std::span<const MeasureUnit> units) {
  double number = 0.0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
  if (error != std::errc() || !(number >= 0.0)) {
    return std::nullopt;
  }
  const std::string_view name(end, static_cast<std::size_t>(text.data() + text.size() - end));
  for (const MeasureUnit& unit : units) {
    if (unit.name == name) {
      return number * unit.factor;
    }
  }
  return std::nullopt;
}

std::string fixed(double value, int places) {
  std::array<char, 400> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, places);
  return {buffer.data(), end.ptr};
}

std::string withoutZerosAtItsEnd(std::string text) {
  if (text.find('.') != std::string::npos) {
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') {
      text.pop_back();
    }
  }
  return text;
}

}  // namespace

std::optional<std::uint32_t> bitRateOf(std::string_view text) {
  static constexpr std::array kUnits = {MeasureUnit{"", 1.0}, MeasureUnit{"k", 1e3}, MeasureUnit{"M", 1e6},
                                        MeasureUnit{"G", 1e9}};
  constexpr double kHighest = 4e9;
  const std::optional<double> rate = quantityOf(text, kUnits);
  if (!rate || *rate < 1.0 || *rate > kHighest) {
    return std::nullopt;
  }
  return static_cast<std::uint32_t>(std::llround(*rate));
}

std::optional<BitRatePair> bitRatesOf(std::string_view text) {
  const std::size_t comma = text.find(',');
  const std::optional<std::uint32_t> nominal = bitRateOf(text.substr(0, comma));
  if (!nominal) {
    return std::nullopt;
  }
  if (comma == std::string_view::npos) {
    return BitRatePair{*nominal, 0};
  }
  const std::optional<std::uint32_t> data = bitRateOf(text.substr(comma + 1));
  return data ? std::optional(BitRatePair{*nominal, *data}) : std::nullopt;
}

std::optional<std::uint64_t> durationNsOf(std::string_view text) {
  static constexpr std::array kUnits = {MeasureUnit{"", 1e9}, MeasureUnit{"s", 1e9}, MeasureUnit{"ms", 1e6},
                                        MeasureUnit{"us", 1e3}, MeasureUnit{"ns", 1.0}};
  constexpr double kLongest = 9e18;
  const std::optional<double> ns = quantityOf(text, kUnits);
  return ns && *ns <= kLongest ? std::optional(static_cast<std::uint64_t>(std::llround(*ns))) : std::nullopt;
}

std::string secondsText(std::int64_t timeNs) {
  constexpr std::uint64_t kSecond = 1'000'000'000;
  constexpr std::size_t kPlaces = 9;
  constexpr std::size_t kLeastPlaces = 6;
  const std::uint64_t size = timeNs < 0 ? 0 - static_cast<std::uint64_t>(timeNs) : static_cast<std::uint64_t>(timeNs);
  std::string fraction = std::to_string(size % kSecond);
  fraction.insert(0, kPlaces - fraction.size(), '0');
  if (fraction.find_first_not_of('0', kLeastPlaces) == std::string::npos) {
    fraction.resize(kLeastPlaces);
  }
  return (timeNs < 0 ? "-" : "") + std::to_string(size / kSecond) + "." + fraction + " s";
}

std::string shortDuration(double ns) {
  static constexpr std::array kUnits = {MeasureUnit{" ns", 1.0}, MeasureUnit{" us", 1e3}, MeasureUnit{" ms", 1e6},
                                        MeasureUnit{" s", 1e9}};
  std::size_t unit = 0;
  // 999.9995 would be printed as 1000.
  while (unit + 1 < kUnits.size() && ns / kUnits[unit].factor >= 999.9995) {
    ++unit;
  }
  return withoutZerosAtItsEnd(fixed(ns / kUnits[unit].factor, 3)) + std::string(kUnits[unit].name);
}

std::string millisecondsText(double ns) {
  constexpr double kMillisecond = 1e6;
  return fixed(ns / kMillisecond, 3);
}

std::string countedFrames(std::uint64_t count, const char* one, const char* many) {
  return countText(count) + (count == 1 ? " frame" : " frames") + (count == 1 ? one : many);
}

std::string percentText(double part) {
  constexpr double kPercent = 100.0;
  return fixed(part * kPercent, 1) + " %";
}

}  // namespace xlatr::cli
