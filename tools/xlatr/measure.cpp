#include "measure.hpp"

#include <array>
#include <charconv>
#include <cstddef>
#include <string_view>

#include "output.hpp"

namespace xlatr::cli {

namespace {

struct MeasureUnit {
  std::string_view name;
  double factor;
};

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

void appendSeconds(std::string& out, std::int64_t timeNs) {
  constexpr std::uint64_t kSecond = 1'000'000'000;
  constexpr std::uint64_t kThousand = 1000;
  const std::uint64_t size = timeNs < 0 ? 0 - static_cast<std::uint64_t>(timeNs) : static_cast<std::uint64_t>(timeNs);
  std::uint64_t fraction = size % kSecond;
  const std::size_t places = fraction % kThousand == 0 ? 6 : 9;
  fraction = places == 6 ? fraction / kThousand : fraction;
  std::array<char, 32> text{};
  char* end = text.data();
  if (timeNs < 0) {
    *end++ = '-';
  }
  end = std::to_chars(end, text.data() + text.size(), size / kSecond).ptr;
  *end++ = '.';
  for (std::size_t at = places; at > 0; --at) {
    end[at - 1] = static_cast<char>('0' + fraction % 10);
    fraction /= 10;
  }
  out.append(text.data(), end + places);
}

std::string secondsText(std::int64_t timeNs) {
  std::string text;
  appendSeconds(text, timeNs);
  return text + " s";
}

std::string shortDuration(double ns) {
  static constexpr std::array kUnits = {MeasureUnit{" ns", 1.0}, MeasureUnit{" us", 1e3}, MeasureUnit{" ms", 1e6},
                                        MeasureUnit{" s", 1e9}};
  std::size_t unit = 0;
  // 999.9995 would be printed as 1000.
  while (unit + 1 < kUnits.size() && ns / kUnits[unit].factor >= 999.9995) {
    ++unit;
  }
  return withoutZerosAtItsEnd(fixedText(ns / kUnits[unit].factor, 3)) + std::string(kUnits[unit].name);
}

std::string millisecondsText(double ns) {
  constexpr double kMillisecond = 1e6;
  return fixedText(ns / kMillisecond, 3);
}

std::string countedFrames(std::uint64_t count, const char* one, const char* many) {
  return countText(count) + (count == 1 ? " frame" : " frames") + (count == 1 ? one : many);
}

std::string percentText(double part) {
  constexpr double kPercent = 100.0;
  return fixedText(part * kPercent, 1) + " %";
}

}  // namespace xlatr::cli
