// The kinds of CAN FD data frames: their two bits spelt out.
#pragma once

#include "messages/enumerations.hpp"

namespace xlatr {

// The kind of a CAN FD data frame with these bits.
[[nodiscard]] constexpr MessageKind fdKind(bool brs, bool esi) {
  if (esi) {
    return brs ? MessageKind::BI : MessageKind::FE;
  }
  return brs ? MessageKind::FB : MessageKind::FD;
}

[[nodiscard]] constexpr bool hasBrs(MessageKind kind) {
  return kind == MessageKind::FB || kind == MessageKind::BI;
}

[[nodiscard]] constexpr bool hasEsi(MessageKind kind) {
  return kind == MessageKind::FE || kind == MessageKind::BI;
}

[[nodiscard]] constexpr bool isFd(MessageKind kind) {
  return kind == MessageKind::FD || hasBrs(kind) || hasEsi(kind);
}

}  // namespace xlatr
