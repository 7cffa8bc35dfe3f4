// Quantities as a user reads them.
#pragma once

#include <cstdint>
#include <string>

namespace xlatr::cli {

// "12.345678": six places, and all nine if the others are not 0.
void appendSeconds(std::string& out, std::int64_t timeNs);

// The same with its unit: "12.345678 s".
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
