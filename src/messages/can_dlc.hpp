// The data length code of CAN and CAN FD (ISO 11898-1: 8.4.2.4) and of CAN XL, which is a code, not a length.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace xlatr {

// Bytes of the codes 0 to 15.
inline constexpr std::array<std::uint32_t, 16> kDlcLengths = {0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64};

// The data length in bytes; nothing for a code that does not exist.
[[nodiscard]] constexpr std::optional<std::uint32_t> dlcToLength(std::uint32_t dlc) {
  return dlc < kDlcLengths.size() ? std::optional(kDlcLengths[dlc]) : std::nullopt;
}

// The smallest code whose length holds `length` bytes; 15 for more than 64.
[[nodiscard]] constexpr std::uint32_t lengthToDlc(std::uint32_t length) {
  std::uint32_t dlc = 0;
  while (dlc + 1 < kDlcLengths.size() && kDlcLengths[dlc] < length) {
    ++dlc;
  }
  return dlc;
}

// CAN XL counts from 0 for one byte to 2047 for 2048 bytes (CiA 610-1).
inline constexpr std::uint32_t kMaxXlDlc = 2047;

[[nodiscard]] constexpr std::optional<std::uint32_t> xlDlcToLength(std::uint32_t dlc) {
  return dlc <= kMaxXlDlc ? std::optional(dlc + 1) : std::nullopt;
}

[[nodiscard]] constexpr std::uint32_t lengthToXlDlc(std::uint32_t length) {
  return length > 0 ? length - 1 : 0;
}

}  // namespace xlatr
