// What the files of a format and version can hold.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>

#include "frames/account.hpp"
#include "frames/frame.hpp"
#include "messages/error_type.hpp"

namespace xlatr {

// The texts that can stand in a line of a version.
enum class TextCapacity : std::uint8_t {
  None,
  Word,   // without blanks
  Words,  // words with one blank between each two
  Line,   // without line ends
  Any,
};

// When a line gets what it must have and the frame lacks: its `filled` attributes, and a direction.
enum class FillRule : std::uint8_t {
  Always,
  WithDirection,  // only if the frame has a direction or one of those attributes
  WithAttribute,  // only if the frame has one of those attributes
};

// What a version keeps of the frames of a kind, besides time and, for those with a payload, identifier and bytes.
struct KindCapacity {
  bool held = false;
  bool direction = false;
  bool needsDirection = false;  // a frame without one is taken as received
  bool bus = true;              // if the files name buses at all
  bool noBus = false;           // a frame may name none, though one is guessed for other kinds
  TextCapacity text = TextCapacity::None;
  bool bytes = false;            // those of a kind that has no payload
  std::uint32_t attributes = 0;  // one bit for each that comes back
  std::uint32_t needed = 0;      // those of them without which there is no such line
  std::uint32_t filled = 0;      // those of them that a frame gets which lacks them, as filledAttribute() says
  FillRule fill = FillRule::Always;
};

// One row: a version of a format. Sinks, documents and tests read it; what it doesn't say is held, a version can't
// hold.
struct FrameCapacity {
  double version = 0.0;
  std::array<KindCapacity, kFrameKindCount> kinds = {};
  bool comments = false;  // what can't stand in the file becomes a comment
  // The frames of the kinds that are held come back in every field, odd ones too; but for their times, which are those
  // of the resolution. Only `kinds[...].held` counts then, and not what is said below of single properties.
  bool whole = false;

  // Of data and remote frames.
  bool fd = false;
  bool bitsOfFd = false;  // BRS and ESI
  bool xl = false;
  std::uint16_t longestData = 8;  // of what is not CAN XL
  bool longDlc = false;           // the DLCs 9 to 15 of classic data frames, which have 8 bytes
  bool remoteDlc = false;
  bool longRemoteDlc = false;     // 9 to 15 too
  bool needsRemoteDlc = false;    // a remote frame without one is taken to have DLC 0
  bool enhancedChecksum = false;  // of LIN frames
  bool hiddenLinData = false;     // LIN frames with a length and without bytes
  // Of error frames: those before and after it are lost.
  std::uint32_t lowestErrorPosition = 0;
  std::uint32_t highestErrorPosition = std::numeric_limits<std::uint32_t>::max();

  // Whether there is room for all that the frame's attributes and text say, where that is more than the rows of kinds
  // tell. Null if it is not.
  bool (*hasRoomFor)(const Frame& frame) = nullptr;

  std::uint16_t lowestBus = 0;  // both 0: the files name no bus
  std::uint16_t highestBus = 0;
  std::uint16_t guessedBus = 0;  // of a frame whose source names none; 0: the bus stays unnamed, or is not held

  std::int64_t resolutionNs = 1;
  std::int64_t earliestNs = -kFarthestNs;
  std::int64_t latestNs = kFarthestNs;
  // How far before an earlier frame of its bus a frame can be. One that is farther is dropped: TimeNotHeld.
  std::int64_t stepBackNs = std::numeric_limits<std::int64_t>::max();
  std::int64_t startResolutionNs = 1;
  bool zone = false;  // the start says in which zone it is

  [[nodiscard]] constexpr KindCapacity& of(FrameKind kind) { return kinds[static_cast<std::size_t>(kind)]; }
  [[nodiscard]] constexpr const KindCapacity& of(FrameKind kind) const { return kinds[static_cast<std::size_t>(kind)]; }
  [[nodiscard]] constexpr bool holds(FrameKind kind) const { return of(kind).held; }
  [[nodiscard]] constexpr bool namesBuses() const { return highestBus != 0; }
};

// The bits of attributes, for a table.
template <typename... Attributes>
[[nodiscard]] consteval std::uint32_t attributeBits(Attributes... attributes) {
  return (0U | ... | (1U << static_cast<unsigned>(attributes)));
}

// What stands where a line must have an attribute that the frame lacks: an error of some other type, otherwise 0.
[[nodiscard]] constexpr std::uint32_t filledAttribute(FrameAttribute attribute) {
  return attribute == FrameAttribute::ErrorType ? kOtherError : 0;
}

// The row of a version, or of the newest one for a version that there is not.
[[nodiscard]] inline const FrameCapacity& capacityOfVersion(std::span<const FrameCapacity> rows, double version) {
  const auto found = std::ranges::find(rows, version, &FrameCapacity::version);
  return found == rows.end() ? rows.back() : *found;
}

// Why a frame can't stand in such a file; nothing if it can, reduced or not.
[[nodiscard]] std::optional<Remark> whyNotHeld(const FrameCapacity& capacity, const Frame& frame);

// Makes the frame what comes back from such a file, which must be able to hold it. What is lost on the way is noted in
// the account. Times are rounded to the nearest one, halves away from zero.
void reduceTo(const FrameCapacity& capacity, Frame& frame, Account& account);
[[nodiscard]] Frame reducedTo(const FrameCapacity& capacity, const Frame& frame, Account& account);

}  // namespace xlatr
