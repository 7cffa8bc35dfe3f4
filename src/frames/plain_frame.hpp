// What the lines of data frames have in common in all text formats, in their plain form.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string_view>

#include "frames/frame.hpp"

namespace xlatr {

inline constexpr std::uint32_t kLongestPlainFrame = 64;
inline constexpr std::uint32_t kLongestPlainClassic = 8;

using PlainFrameBytes = std::array<std::uint8_t, kLongestPlainFrame>;

// What a plain line tells of a frame, while it is not known whether all of the line is plain.
struct PlainFrame {
  std::int64_t timeNs = 0;
  std::uint32_t bus = 0;
  std::uint32_t id = 0;
  std::uint32_t length = 0;  // of the data, in bytes
  std::uint16_t flags = 0;
  std::uint16_t dlc = 0;

  void setIf(bool condition, std::uint16_t flag) {
    flags = static_cast<std::uint16_t>(flags | (condition ? flag : std::uint16_t{0}));
  }

  // All but the time. The frame is like a new one, and refers to the bytes.
  void give(const PlainFrameBytes& bytes, Frame& frame) const {
    frame.bus = static_cast<std::uint16_t>(bus);
    frame.id = id;
    frame.flags = flags;
    frame.dlc = dlc;
    frame.data = std::span(bytes).first(length);
  }
};

// The functions take fields (util/plain_fields.hpp) and return false for those that are not plain.

template <class Fields>
[[nodiscard]] bool takePlainDirection(Fields& fields, PlainFrame& plain) {
  if (fields.take("Rx")) {
    plain.flags |= frame_flag::kReceived;
    return true;
  }
  plain.flags |= frame_flag::kTransmitted;
  return fields.take("Tx");
}

template <class Fields>
[[nodiscard]] bool takePlainBus(Fields& fields, PlainFrame& plain,
                                std::uint32_t highest = std::numeric_limits<std::uint16_t>::max()) {
  return fields.takeDecimal(plain.bus) && plain.bus <= highest;
}

// An identifier in so many digits that their number says whether it is extended: from five on.
template <class Fields>
[[nodiscard]] bool takePlainWideId(Fields& fields, PlainFrame& plain) {
  constexpr std::size_t kLongestBaseId = 4;
  std::size_t digits = 0;
  bool marked = false;
  const bool taken = fields.takeHex(plain.id, digits, marked) && !marked;
  plain.setIf(digits > kLongestBaseId, frame_flag::kExtended);
  return taken;
}

// 0 or 1.
template <class Fields>
[[nodiscard]] bool takePlainBit(Fields& fields, bool& bit) {
  char digit = 0;
  const bool taken = fields.takeCharacter(digit);
  bit = digit == '1';
  return taken && (bit || digit == '0');
}

struct PlainKindWord {
  std::string_view word;
  std::uint16_t flags;
};
inline constexpr std::array kPlainKindWords = {
    PlainKindWord{"DT", 0},
    PlainKindWord{"FB", frame_flag::kFd | frame_flag::kBrs},
    PlainKindWord{"FD", frame_flag::kFd},
    PlainKindWord{"BI", frame_flag::kFd | frame_flag::kBrs | frame_flag::kEsi},
    PlainKindWord{"FE", frame_flag::kFd | frame_flag::kEsi},
};

// The word for a kind of data frames.
template <class Fields>
[[nodiscard]] bool takePlainKindWord(Fields& fields, PlainFrame& plain) {
  for (const PlainKindWord& kind : kPlainKindWords) {
    if (fields.take(kind.word)) {
      plain.flags |= kind.flags;
      return true;
    }
  }
  return false;
}

}  // namespace xlatr
