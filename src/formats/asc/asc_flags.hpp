// The flags field of a CAN FD line. Messages of ASC logs have it whatever line they came from.
#pragma once

#include <cstdint>

#include "messages/enumerations.hpp"
#include "messages/fd_kind.hpp"

namespace xlatr {

namespace asc_flag {
inline constexpr std::uint32_t kRemote = 0x10;
inline constexpr std::uint32_t kEdl = 0x1000;
inline constexpr std::uint32_t kBrs = 0x2000;
inline constexpr std::uint32_t kEsi = 0x4000;
// What a classic data frame has in a CANFD line written by a converter. It is outside the bits that a reader keeps.
inline constexpr std::uint32_t kClassicFrame = 0x200000;
// The bits that a reader keeps.
inline constexpr std::uint32_t kReadMask = 0xFFFFF;
}  // namespace asc_flag

[[nodiscard]] constexpr MessageKind messageKindOfAscFlags(std::uint32_t flags) {
  if ((flags & asc_flag::kRemote) != 0) {
    return MessageKind::RR;
  }
  if ((flags & asc_flag::kEdl) == 0) {
    return MessageKind::DT;
  }
  return fdKind((flags & asc_flag::kBrs) != 0, (flags & asc_flag::kEsi) != 0);
}

[[nodiscard]] constexpr std::uint32_t ascFlagsOfMessageKind(MessageKind kind) {
  if (isFd(kind)) {
    return asc_flag::kEdl | (hasBrs(kind) ? asc_flag::kBrs : 0) | (hasEsi(kind) ? asc_flag::kEsi : 0);
  }
  if (kind == MessageKind::DT) {
    return asc_flag::kClassicFrame;
  }
  return kind == MessageKind::RR ? asc_flag::kRemote : 0;
}

}  // namespace xlatr
