// The types of error frames on a CAN bus: 0 bit error, 1 form error, 2 stuff error, 3 any other. The controllers' error
// code (ECC) and the hardware logger number them like this; TRC has one bit for each, as the frame's identifier.
#pragma once

#include <cstdint>
#include <optional>

namespace xlatr {

inline constexpr std::uint32_t kOtherError = 3;

// The identifier in a TRC trace of an error of this type, which is at most kOtherError.
[[nodiscard]] constexpr std::uint32_t trcIdOfErrorType(std::uint32_t type) {
  return 1U << type;
}

// Nothing for an identifier that does not stand for an error.
[[nodiscard]] constexpr std::optional<std::uint32_t> errorTypeOfTrcId(std::uint32_t id) {
  for (std::uint32_t type = 0; type <= kOtherError; ++type) {
    if (trcIdOfErrorType(type) == id) {
      return type;
    }
  }
  return std::nullopt;
}

}  // namespace xlatr
