// The flags in records of errors and of the state of a bus, and what they stand for.
#pragma once

#include <array>
#include <cstdint>

#include "messages/enumerations.hpp"

namespace xlatr {

namespace error_flag {
inline constexpr std::uint8_t kDirection = 0x80;
inline constexpr std::uint8_t kClass = 0x70;     // the type of the error (messages/error_type.hpp), or the next one
inline constexpr std::uint8_t kCounters = 0x40;  // the class of a change of counters
inline constexpr unsigned kClassShift = 4;
}  // namespace error_flag

struct StatusFlag {
  std::uint8_t flag;
  WarningErrors status;
};

inline constexpr std::array kStatusFlags = {StatusFlag{0x80, WarningErrors::BusOff},
                                            StatusFlag{0x40, WarningErrors::BusWarning},
                                            StatusFlag{0x20, WarningErrors::BusPassive}};

}  // namespace xlatr
