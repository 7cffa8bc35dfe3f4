// Which frames of a trace are wanted.
#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "frames/account.hpp"
#include "frames/frame_batch.hpp"

namespace xlatr {

// Identifiers from `first` to `last`, of both lengths or of one; if a mask is given, those of which the bits in the
// mask are those of `first`.
struct IdentifierRule {
  std::uint32_t first = 0;
  std::uint32_t last = 0;
  std::optional<std::uint32_t> mask = {};
  std::optional<bool> extended = {};
};

// Buses from `first` to `last`.
struct BusRule {
  std::uint16_t first = 0;
  std::uint16_t last = 0;
};

// The kinds of frames, a bit each.
using FrameKindSet = std::uint16_t;
[[nodiscard]] constexpr FrameKindSet kindBit(FrameKind kind) {
  return static_cast<FrameKindSet>(1U << static_cast<unsigned>(kind));
}
inline constexpr FrameKindSet kAllFrameKinds = (1U << kFrameKindCount) - 1;

// A frame is wanted if everything that is set here says so. A rule of identifiers wants no frame without an identifier,
// a rule of buses none without a bus, and one of directions none without a direction; turned round, it wants those too.
struct FrameSelection {
  std::optional<std::int64_t> fromNs = {};   // since the start of the trace
  std::optional<std::int64_t> untilNs = {};  // this time is not wanted any more
  bool absolute = false;                     // both count from 1970 on the clock of the trace
  std::vector<BusRule> buses = {};
  bool otherBuses = false;  // those that no rule names are wanted
  std::vector<IdentifierRule> identifiers = {};
  bool otherIdentifiers = false;
  FrameKindSet kinds = kAllFrameKinds;
  std::uint16_t directions = 0;  // kReceived, kTransmitted; 0 for all

  [[nodiscard]] bool wantsAll() const;
};

// Removes the other frames from batches, and counts them as dropped. Works column by column.
class FrameSelector {
 public:
  explicit FrameSelector(FrameSelection selection) : selection_(std::move(selection)) {}

  void select(FrameBatch& batch, Account& account);

 private:
  void selectTimes(const FrameBatch& batch);
  void selectBuses(const FrameBatch& batch);
  void selectIdentifiers(const FrameBatch& batch);
  void selectKinds(const FrameBatch& batch);
  void selectDirections(const FrameBatch& batch);

  FrameSelection selection_;
  std::vector<std::uint8_t> wanted_;  // one for each row: 0 or 1
  std::vector<std::uint8_t> named_;
};

}  // namespace xlatr
