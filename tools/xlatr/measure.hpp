// Quantities as a user types and reads them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace xlatr::cli {

// Bits per second: "500k", "2M", "500000", "0.5M". Nothing for what is none, or is below one bit or above 4 Gbit/s.
[[nodiscard]] std::optional<std::uint32_t> bitRateOf(std::string_view text);

// "500k,2M": the nominal rate of CAN and that of the data of CAN FD, which is 0 if it is not stated.
struct BitRatePair {
  std::uint32_t nominal = 0;
  std::uint32_t data = 0;
};
[[nodiscard]] std::optional<BitRatePair> bitRatesOf(std::string_view text);

// Nanoseconds: "1us", "0.5ms", "10ns", "2s"; seconds without a unit. Nothing for what is none, is negative or longer
// than 285 years.
[[nodiscard]] std::optional<std::uint64_t> durationNsOf(std::string_view text);

// "12.345678 s": six places, and all nine if the others are not 0.
[[nodiscard]] std::string secondsText(std::int64_t timeNs);

// "850 ns", "10 us", "12.5 ms", "3.25 s": three places at most.
[[nodiscard]] std::string shortDuration(double ns);

// "9.998": milliseconds with three places.
[[nodiscard]] std::string millisecondsText(double ns);

// "1 frame is", "1,234 frames are", and without a verb.
[[nodiscard]] std::string countedFrames(std::uint64_t count, const char* one = "", const char* many = "");

// "12.3 %".
[[nodiscard]] std::string percentText(double part);

}  // namespace xlatr::cli
