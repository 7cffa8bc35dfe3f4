// Whether two traces hold the same frames, and where not.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frames/account.hpp"
#include "frames/frame.hpp"
#include "frames/frame_batch.hpp"
#include "frames/frame_selection.hpp"
#include "frames/frame_stream.hpp"

namespace xlatr {

// What two frames that belong together can differ in.
enum class FrameField : std::uint8_t { Time, Bus, Id, Flags, Dlc, Data, Text, Attributes };
inline constexpr std::size_t kFrameFieldCount = 8;
// One bit a field.
using FrameFieldSet = std::uint32_t;
[[nodiscard]] constexpr FrameFieldSet fieldBit(FrameField field) {
  return 1U << static_cast<unsigned>(field);
}
// As shown to users: "time", "data".
[[nodiscard]] std::string_view frameFieldName(FrameField field);

struct ComparisonSettings {
  // Times that are no farther from each other are equal. Not set: the coarser resolution of both traces' formats.
  std::optional<std::uint64_t> toleranceNs = {};
  bool texts = false;       // compares them too
  bool attributes = false;  // compares those that both frames have
  // Frames of other kinds are passed over. Comments are what formats say of themselves.
  FrameKindSet kinds = static_cast<FrameKindSet>(kAllFrameKinds & ~kindBit(FrameKind::Comment));
  // How many frames of the other trace are searched for the one that belongs to a frame; up to kMostAhead.
  std::size_t ahead = 1024;
  std::size_t mostDifferences = 100;  // are told one by one; up to kMostDifferences

  static constexpr std::size_t kMostAhead = FrameBatch::kCapacity;
  static constexpr std::size_t kMostDifferences = 100'000;
};

enum class DifferenceKind : std::uint8_t { Both, OnlyFirst, OnlySecond };

// A frame with its data and, of a long text, the beginning.
struct KeptFrame {
  Frame frame;  // refers to nothing
  std::vector<std::uint8_t> data;
  std::string text;
};

struct FrameDifference {
  DifferenceKind kind = DifferenceKind::Both;
  FrameFieldSet fields = 0;  // of a frame that both have
  KeptFrame first;           // empty if only the other has it
  KeptFrame second;
};

struct ComparisonResult {
  std::uint64_t toleranceNs = 0;
  std::array<std::uint64_t, 2> frames{};  // that were compared, of each trace
  std::uint64_t equal = 0;
  std::uint64_t reordered = 0;  // of the equal ones: those that stand in another order
  std::uint64_t different = 0;  // frames that both have
  std::array<std::uint64_t, 2> onlyIn{};
  std::array<std::uint64_t, kFrameFieldCount> byField{};
  std::uint64_t farthestNs = 0;  // the greatest distance of times that were taken as equal
  std::vector<FrameDifference> differences;

  [[nodiscard]] bool same() const { return different == 0 && onlyIn[0] == 0 && onlyIn[1] == 0; }
};

// The coarser one of the resolutions that the tables of their formats state.
[[nodiscard]] std::uint64_t toleranceOf(const StreamHead& first, const StreamHead& second);

// Reads both to their ends. Two frames are equal if kind, identifier, flags, DLC, data and bus are, and the times
// within the tolerance. What one of them does not state, a bus, a direction or the DLC of a remote frame, is no
// difference.
//
// A frame without an equal one in the next frames of the other trace belongs to the one there that differs least: at
// its time and of its identifier, or of its content and at another time, or at its time with its data under another
// identifier or bus; as long as nothing else is equal to that one. So a frame that only one trace has makes no others
// differ. Holds two batches of each trace.
[[nodiscard]] ComparisonResult compareFrames(FrameSource& first, Account& firstAccount, FrameSource& second,
                                             Account& secondAccount, const ComparisonSettings& settings);

}  // namespace xlatr
