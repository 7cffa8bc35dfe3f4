#include "formats/native/btr_slot_frame.hpp"

#include <algorithm>
#include <limits>
#include <optional>
#include <span>

#include "formats/native/error_bytes.hpp"
#include "messages/enumerations.hpp"
#include "messages/error_type.hpp"
#include "util/little_endian.hpp"

namespace xlatr {
namespace {

constexpr std::uint32_t kHighestSlotId = 0x1FFFFFFF;
constexpr std::uint32_t kTickId = 256;
constexpr std::uint8_t kCountersLength = 2;
constexpr std::uint8_t kStatusLength = 4;
constexpr std::uint8_t kUntypedErrorLength = 4;  // the identifier is the type then
constexpr std::uint8_t kErrorLength = 5;

// Offsets in SlotBytes.
constexpr std::size_t kUnusedAt = 4;
constexpr std::size_t kDataAt = 6;

std::uint32_t stateOf(const MsgEntry& slot) {
  return std::uint32_t{slot.data[0]} << 24U | std::uint32_t{slot.data[1]} << 16U | std::uint32_t{slot.data[2]} << 8U |
         slot.data[3];
}

// A status without the flag of one, as writers of sessions have always written it.
bool isUnmarkedStatus(const MsgEntry& slot) {
  constexpr auto kStates =
      static_cast<std::uint32_t>(WarningErrors::BusLight) | static_cast<std::uint32_t>(WarningErrors::BusWarning) |
      static_cast<std::uint32_t>(WarningErrors::BusOff) | static_cast<std::uint32_t>(WarningErrors::BusPassive);
  return slot.getLength() == kStatusLength && (slot.flags & ~MsgEntry::kExtended) == 0 && slot.unused == 0 &&
         (stateOf(slot) & ~kStates) == 0;
}

void takeStatus(const MsgEntry& slot, Frame& frame) {
  frame.kind = FrameKind::Status;
  frame.attributes.set(FrameAttribute::BusState, stateOf(slot));
}

// The type, one bit for each, then direction, position, and the error counters.
bool takeError(std::uint32_t typeBit, std::span<const std::uint8_t> bytes, Frame& frame) {
  constexpr std::uint8_t kWhileReceiving = 1;
  const auto type = errorTypeOfTrcId(typeBit);
  if (!type || bytes[0] > kWhileReceiving) {
    return false;
  }
  frame.kind = FrameKind::Error;
  frame.flags = bytes[0] == kWhileReceiving ? frame_flag::kReceived : frame_flag::kTransmitted;
  frame.attributes.set(FrameAttribute::ErrorType, *type);
  frame.attributes.set(FrameAttribute::ErrorPosition, bytes[1]);
  frame.attributes.set(FrameAttribute::RxErrors, bytes[2]);
  frame.attributes.set(FrameAttribute::TxErrors, bytes[3]);
  return true;
}

// Errors, error counters and statuses share a flag; their lengths tell them apart.
bool takeErrorSlot(const MsgEntry& slot, Frame& frame) {
  const std::span<const std::uint8_t> bytes = slot.data;
  const bool isUnnamed = slot.id == MsgEntry::kNoId;
  switch (slot.getLength()) {
    case kCountersLength:
      if (!isUnnamed && slot.id != 0) {
        return false;
      }
      frame.kind = FrameKind::Counters;
      frame.attributes.set(FrameAttribute::RxErrors, bytes[0]);
      frame.attributes.set(FrameAttribute::TxErrors, bytes[1]);
      return true;
    case kStatusLength:
      static_assert(kStatusLength == kUntypedErrorLength);
      if (!isUnnamed) {
        return takeError(slot.id, bytes, frame);
      }
      takeStatus(slot, frame);
      return true;
    case kErrorLength:
      return isUnnamed && takeError(bytes[0], bytes.subspan(1), frame);
    default:
      return false;
  }
}

void takeFrame(const MsgEntry& slot, Frame& frame) {
  frame.id = slot.id;
  frame.dlc = slot.getLength();
  frame.flags = slot.isExtended() ? frame_flag::kExtended : std::uint16_t{0};
  if (slot.isRemote()) {
    frame.kind = FrameKind::Remote;
    frame.set(frame_flag::kDlcKnown);
  } else {
    frame.data = slot.payload(frame.dlc);
  }
}

void takeBytes(const MsgEntry& slot, Frame& frame, SlotBytes& bytes) {
  storeLittle(bytes.data(), slot.id);
  storeLittle(bytes.data() + kUnusedAt, slot.unused);
  std::ranges::copy(slot.data, bytes.begin() + kDataAt);
  frame.kind = FrameKind::Event;
  frame.attributes.set(FrameAttribute::RecordType, std::uint32_t{slot.source} << 8U | slot.flags);
  frame.data = bytes;
}

// The slot of an event that takeBytes() made; nothing for another one.
std::optional<MsgEntry> slotOfBytes(const Frame& frame) {
  const std::uint32_t type = frame.attributes.get(FrameAttribute::RecordType).value_or(0);
  if (frame.data.size() != SlotBytes().size() || type > std::numeric_limits<std::uint16_t>::max()) {
    return std::nullopt;
  }
  MsgEntry slot;
  slot.flags = static_cast<std::uint8_t>(type);
  slot.source = static_cast<std::uint8_t>(type >> 8U);
  slot.id = loadLittle<std::uint32_t>(frame.data.data());
  slot.unused = loadLittle<std::uint16_t>(frame.data.data() + kUnusedAt);
  std::ranges::copy(frame.data.subspan(kDataAt), slot.data.begin());
  return slot;
}

bool isEventInASlot(const Frame& frame) {
  const auto slot = slotOfBytes(frame);
  Frame again;
  SlotBytes bytes;
  if (!slot) {
    return false;
  }
  const SlotContent content = takeSlot(*slot, again, bytes);
  return again.kind == FrameKind::Event && (content == SlotContent::Frame || content == SlotContent::Unexpected);
}

std::uint8_t byteOfError(const Frame& frame, FrameAttribute attribute) {
  return static_cast<std::uint8_t>(frame.attributes.get(attribute).value_or(0));
}

void giveError(const Frame& frame, MsgEntry& slot) {
  const std::uint32_t type = frame.attributes.get(FrameAttribute::ErrorType).value_or(kOtherError);
  slot.data[0] = static_cast<std::uint8_t>(trcIdOfErrorType(type));
  slot.data[1] = frame.has(frame_flag::kReceived) ? 1 : 0;
  slot.data[2] = byteOfError(frame, FrameAttribute::ErrorPosition);
  slot.data[3] = byteOfError(frame, FrameAttribute::RxErrors);
  slot.data[4] = byteOfError(frame, FrameAttribute::TxErrors);
}

void giveStatus(const Frame& frame, MsgEntry& slot) {
  const std::uint32_t state = frame.attributes.get(FrameAttribute::BusState).value_or(0);
  for (std::size_t at = 0; at < sizeof state; ++at) {
    slot.data[at] = static_cast<std::uint8_t>(state >> (8 * (sizeof state - 1 - at)));
  }
}

// Fills the slot but for its bus, and returns its length.
std::uint8_t giveFrame(const Frame& frame, MsgEntry& slot) {
  slot.flags = frame.kind == FrameKind::Data || frame.kind == FrameKind::Remote ? std::uint8_t{0} : MsgEntry::kError;
  switch (frame.kind) {
    case FrameKind::Counters:
      slot.id = 0;
      slot.data[0] = byteOfError(frame, FrameAttribute::RxErrors);
      slot.data[1] = byteOfError(frame, FrameAttribute::TxErrors);
      return kCountersLength;
    case FrameKind::Status:
      giveStatus(frame, slot);
      return kStatusLength;
    case FrameKind::Error:
      giveError(frame, slot);
      return kErrorLength;
    default:
      slot.id = frame.id;
      slot.flags = static_cast<std::uint8_t>((frame.kind == FrameKind::Remote ? MsgEntry::kRemote : 0U) |
                                             (frame.has(frame_flag::kExtended) ? MsgEntry::kExtended : 0U));
      std::copy_n(frame.data.begin(), std::min(frame.data.size(), slot.data.size()), slot.data.begin());
      return static_cast<std::uint8_t>(frame.dlc);
  }
}

}  // namespace

SlotContent takeSlot(const MsgEntry& slot, Frame& frame, SlotBytes& bytes) {
  const std::uint8_t source = slot.getSource();
  if (source == MsgEntry::kLoggerSource) {
    if (slot.id == kTickId) {
      return SlotContent::Tick;
    }
    if (slot.id == MsgEntry::kNoId && slot.flags == 0) {
      return SlotContent::Nothing;
    }
    takeBytes(slot, frame, bytes);
    return SlotContent::Frame;
  }
  frame.bus = static_cast<std::uint16_t>(source + 1);
  if (slot.isError() && takeErrorSlot(slot, frame)) {
    return SlotContent::Frame;
  }
  if (!slot.isError() && slot.id <= kHighestSlotId) {
    takeFrame(slot, frame);
    return SlotContent::Frame;
  }
  if (!slot.isError() && slot.id == MsgEntry::kNoId) {
    if (!isUnmarkedStatus(slot)) {
      return SlotContent::Nothing;
    }
    takeStatus(slot, frame);
    return SlotContent::Frame;
  }
  frame.reset();
  takeBytes(slot, frame, bytes);
  return SlotContent::Unexpected;
}

bool hasSlotFor(const Frame& frame) {
  switch (frame.kind) {
    case FrameKind::Error:
    case FrameKind::Counters:
      return isErrorOfBytes(frame);
    case FrameKind::Event:
      return isEventInASlot(frame);
    default:
      return true;
  }
}

std::size_t sourceOf(const Frame& frame) {
  if (frame.kind == FrameKind::Event) {
    return slotOfBytes(frame).value_or(MsgEntry()).getSource();
  }
  return frame.bus == 0 ? 0 : frame.bus - std::size_t{1};
}

MsgEntry slotOf(const Frame& frame) {
  if (frame.kind == FrameKind::Event) {
    return slotOfBytes(frame).value_or(MsgEntry());
  }
  MsgEntry slot;
  const std::uint8_t length = giveFrame(frame, slot);
  slot.source = static_cast<std::uint8_t>((frame.bus - 1U) << 4U | length);
  return slot;
}

MsgEntry slotOfTick(std::uint32_t stampUs) {
  MsgEntry slot;
  slot.id = kTickId;
  slot.source = MsgEntry::kLoggerSource << 4U;
  slot.timestampUs = stampUs;
  return slot;
}

}  // namespace xlatr
