// The slots of a session as frames, and frames as slots. Times are not theirs: session_clock.hpp.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "formats/native/btr_layout.hpp"
#include "frames/frame.hpp"

namespace xlatr {

enum class SlotContent : std::uint8_t {
  Nothing,
  Tick,        // of the logger's clock
  Frame,       // also a note of the logger, which is an event
  Unexpected,  // an event, since nobody knows what else
};

// The bytes of a slot that is an event: the identifier, the two unused bytes and the data.
using SlotBytes = std::array<std::uint8_t, 14>;

// Fills a frame, which must be like a new one, from a slot that is neither empty nor a tick. What has no other home is
// an event with its bytes, in `bytes`, and as FrameAttribute::RecordType the flags in the low byte and the source in
// the high one. The frame refers to the slot and to `bytes`.
[[nodiscard]] SlotContent takeSlot(const MsgEntry& slot, Frame& frame, SlotBytes& bytes);

// Whether there is a slot for the details of the frame, which is of a kind that has one.
[[nodiscard]] bool hasSlotFor(const Frame& frame);

// The number of the clock that counts for such a frame.
[[nodiscard]] std::size_t sourceOf(const Frame& frame);

// The slot of a frame that has one, but for its time stamp.
[[nodiscard]] MsgEntry slotOf(const Frame& frame);

// A tick of the logger's clock.
[[nodiscard]] MsgEntry slotOfTick(std::uint32_t stampUs);

}  // namespace xlatr
