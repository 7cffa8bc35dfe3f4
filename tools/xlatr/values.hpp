// Numbers, times and lists as the user types them. All raise a CommandFailure with ExitCode::WrongUsage that begins
// with the name of the option.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace xlatr::cli {

// "option value: reason".
[[noreturn]] void failValue(std::string_view option, std::string_view value, std::string_view reason);

// Nanoseconds of a decimal number of seconds: "12.5", "-3".
[[nodiscard]] std::int64_t secondsValue(std::string_view option, std::string_view value);

// A point in time: seconds since the start of a trace, or a date and a time of day on its clock.
struct TimeValue {
  std::int64_t ns = 0;    // since the start, or since 1970
  bool absolute = false;  // since 1970
};
[[nodiscard]] TimeValue timeValue(std::string_view option, std::string_view value);

// Nanoseconds of "90", "30s", "10m", "1.5h", "250ms"; more than 0.
[[nodiscard]] std::int64_t durationValue(std::string_view option, std::string_view value);

// Nanoseconds of "0", "1us", "0.5ms", "10ns", "2s"; seconds without a unit.
[[nodiscard]] std::uint64_t toleranceValue(std::string_view option, std::string_view value);

// Bits per second: "500k", "2M", "500000", "0.5M"; from one bit to 4 Gbit.
[[nodiscard]] std::uint32_t bitRateValue(std::string_view option, std::string_view value);

// "500k,2M": the nominal rate of CAN and that of the data of CAN FD, which is 0 if it is not stated.
struct BitRatePair {
  std::uint32_t nominal = 0;
  std::uint32_t data = 0;
};
[[nodiscard]] BitRatePair bitRatesValue(std::string_view option, std::string_view value);

// Bytes of "1000", "100k", "2.5M", "1G"; "Ki", "Mi" and "Gi" are units of 1,024. More than 0.
[[nodiscard]] std::uint64_t sizeValue(std::string_view option, std::string_view value);

// Decimal, or hexadecimal with "0x".
[[nodiscard]] std::uint32_t numberValue(std::string_view option, std::string_view value, std::uint32_t largest);

// Minutes ahead of UTC: "UTC", "+01:00", "-0330", "+2".
[[nodiscard]] std::int32_t zoneValue(std::string_view option, std::string_view value);

// The pieces between commas of all values; no piece is empty.
[[nodiscard]] std::vector<std::string> listValue(std::string_view option, const std::vector<std::string>& values);

// Which of the words it is.
[[nodiscard]] std::size_t choiceValue(std::string_view option, std::string_view value,
                                      const std::vector<std::string_view>& words);

}  // namespace xlatr::cli
