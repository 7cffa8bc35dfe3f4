// What the files of a format and version can hold.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "frames/account.hpp"
#include "frames/frame.hpp"

namespace xlatr {

// 285 years: every rounding of such a time fits into 64 bits.
inline constexpr std::int64_t kFarthestNs = 9'000'000'000'000'000'000;

// One row: a version of a format. Sinks, documents and tests read it; what it doesn't say is held, a version can't
// hold.
struct FrameCapacity {
  double version = 0.0;
  FrameKindSet kinds = 0;
  bool comments = false;  // what can't stand in the file becomes a comment

  // Of data and remote frames.
  bool fd = false;
  bool bitsOfFd = false;  // BRS and ESI
  bool xl = false;
  std::uint16_t longestData = 8;
  bool remoteDlc = false;
  bool direction = false;

  std::uint16_t lowestBus = 0;  // both 0: the files name no bus
  std::uint16_t highestBus = 0;
  std::uint32_t attributes = 0;  // one bit for each that comes back

  std::int64_t resolutionNs = 1;
  std::int64_t earliestNs = -kFarthestNs;
  std::int64_t latestNs = kFarthestNs;
  std::int64_t startResolutionNs = 1;
  bool zone = false;  // the start says in which zone it is

  [[nodiscard]] bool holds(FrameKind kind) const { return (kinds & kindBit(kind)) != 0; }
  [[nodiscard]] bool namesBuses() const { return highestBus != 0; }
};

// The bits of attributes, for a table.
template <typename... Attributes>
[[nodiscard]] consteval std::uint32_t attributeBits(Attributes... attributes) {
  return (0U | ... | (1U << static_cast<unsigned>(attributes)));
}

// Why a frame can't stand in such a file; nothing if it can, reduced or not.
[[nodiscard]] std::optional<Remark> whyNotHeld(const FrameCapacity& capacity, const Frame& frame);

// The frame as it comes back from such a file, which must be able to hold it. What is lost on the way is noted in the
// account. Times are rounded to the nearest one, halves away from zero.
[[nodiscard]] Frame reducedTo(const FrameCapacity& capacity, const Frame& frame, Account& account);

}  // namespace xlatr
