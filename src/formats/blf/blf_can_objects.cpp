// CAN and CAN FD frames, and what a bus or its controller says about errors.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "formats/blf/blf_log_bodies.hpp"
#include "formats/blf/blf_object_frames.hpp"
#include "messages/can_dlc.hpp"
#include "messages/error_type.hpp"
#include "util/layout.hpp"
#include "util/render.hpp"

namespace xlatr {
namespace {

using blf_log::BusEvent;
using blf_log::CanErrorCounters;
using blf_log::CanErrorFrame;
using blf_log::CanFdErrorFrame64;
using blf_log::CanFdFrame;
using blf_log::CanFdFrame64;
using blf_log::CanFrame;
using blf_log::Object;

constexpr std::uint32_t kIdMask = 0x1FFFFFFF;
constexpr std::uint32_t kHighestBaseId = 0x7FF;
constexpr std::uint32_t kExtendedId = 0x80000000;
constexpr std::uint8_t kDlcMask = 0x0F;
constexpr std::size_t kLongestClassic = 8;
constexpr std::size_t kLongestFd = 64;

// Some recorders leave the bit away of an identifier that is too large for a base frame anyway.
constexpr bool isExtended(std::uint32_t rawId) {
  return (rawId & kExtendedId) != 0 || (rawId & kIdMask) > kHighestBaseId;
}

void takeIdentifier(std::uint32_t rawId, Frame& frame) {
  frame.id = rawId & kIdMask;
  frame.set(isExtended(rawId) ? frame_flag::kExtended : std::uint16_t{0});
}

void takeDirection(bool transmitted, Frame& frame) {
  frame.set(transmitted ? frame_flag::kTransmitted : frame_flag::kReceived);
}

void takeRemote(std::uint8_t dlc, Frame& frame) {
  frame.kind = FrameKind::Remote;
  frame.set(frame_flag::kDlcKnown);
  frame.dlc = dlc & kDlcMask;
}

// `there` is all that follows in the object. The bytes count that the log says are valid, as far as the frame can have
// them and the object does; where the DLC says another length, one of the two is wrong.
void takePayload(std::uint8_t dlc, std::size_t stated, std::span<const std::uint8_t> there, Frame& frame,
                 const BlfReading& reading) {
  const bool isFd = frame.has(frame_flag::kFd);
  const std::size_t length = std::min(stated, isFd ? kLongestFd : kLongestClassic);
  frame.dlc = dlc & kDlcMask;
  frame.data = there.first(std::min(length, there.size()));
  const std::size_t lengthOfDlc = kDlcLengths[frame.dlc];
  if (frame.data.size() < length) {
    reading.account->note(Remark::SourceCut, frame.place);
  } else if (length != (isFd ? lengthOfDlc : std::min(lengthOfDlc, kLongestClassic))) {
    reading.account->note(Remark::LengthGuessed, frame.place);
  }
}

// The frame's fields stand before its data, which may be fewer than in the layout.
template <class Body>
[[nodiscard]] bool load(const Object& object, Body& body) {
  return tryReadFields(object.body, body);
}

bool readCanFrame(const Object& object, Frame& frame, BlfReading& reading) {
  constexpr std::uint8_t kTransmitted = 0x01;
  constexpr std::uint8_t kRemote = 0x80;
  CanFrame body;
  if (!load(object, body)) {
    return false;
  }
  frame.bus = body.channel;
  takeIdentifier(body.id, frame);
  takeDirection((body.flags & kTransmitted) != 0, frame);
  if ((body.flags & kRemote) != 0) {
    takeRemote(body.dlc, frame);
    return true;
  }
  const std::size_t length = std::min<std::size_t>(body.dlc & kDlcMask, kLongestClassic);
  takePayload(body.dlc, length, object.body.subspan(layoutOffset<&CanFrame::data>()), frame, reading);
  return true;
}

void takeFd(bool fd, bool brs, bool esi, Frame& frame) {
  if (fd) {
    frame.set(frame_flag::kFd);
    frame.set(brs ? frame_flag::kBrs : std::uint16_t{0});
    frame.set(esi ? frame_flag::kEsi : std::uint16_t{0});
  }
}

bool readCanFdFrame(const Object& object, Frame& frame, BlfReading& reading) {
  constexpr std::uint8_t kTransmitted = 0x01;
  constexpr std::uint8_t kRemote = 0x80;
  CanFdFrame body;
  if (!load(object, body)) {
    return false;
  }
  frame.bus = body.channel;
  takeIdentifier(body.id, frame);
  takeDirection((body.flags & kTransmitted) != 0, frame);
  takeFd((body.canFdFlags & 0x01U) != 0, (body.canFdFlags & 0x02U) != 0, (body.canFdFlags & 0x04U) != 0, frame);
  if ((body.flags & kRemote) != 0 && !frame.has(frame_flag::kFd)) {
    takeRemote(body.dlc, frame);
    return true;
  }
  takePayload(body.dlc, body.length, object.body.subspan(kLayoutSize<CanFdFrame>), frame, reading);
  return true;
}

bool readCanFdFrame64(const Object& object, Frame& frame, BlfReading& reading) {
  constexpr std::uint32_t kRemote = 0x0010;
  CanFdFrame64 body;
  if (!load(object, body)) {
    return false;
  }
  frame.bus = body.channel;
  takeIdentifier(body.id, frame);
  takeDirection(body.dir != 0, frame);
  takeFd((body.flags & 0x1000U) != 0, (body.flags & 0x2000U) != 0, (body.flags & 0x4000U) != 0, frame);
  if ((body.flags & kRemote) != 0 && !frame.has(frame_flag::kFd)) {
    takeRemote(body.dlc, frame);
    return true;
  }
  takePayload(body.dlc, body.length, object.body.subspan(kLayoutSize<CanFdFrame64>), frame, reading);
  return true;
}

bool readPlainError(const Object& object, Frame& frame, BlfReading& /*reading*/) {
  frame.kind = FrameKind::Error;
  BusEvent body;
  const bool isWhole = load(object, body);
  frame.bus = body.channel;
  return isWhole;
}

bool readOverload(const Object& object, Frame& frame, BlfReading& reading) {
  const bool isWhole = readPlainError(object, frame, reading);
  frame.kind = FrameKind::Overload;
  return isWhole;
}

// What both error frames with detail say, in the same words. `flags` says which fields hold something; recorders that
// set neither of the first two bits do fill the error code register.
namespace valid_field {
constexpr std::uint32_t kErrorCode = 0x1;
constexpr std::uint32_t kCodeOfOtherCore = 0x2;
constexpr std::uint32_t kPosition = 0x4;
}  // namespace valid_field

// Bits 6 and 7 are the type of the error, bit 5 is set while receiving, bits 0 to 4 say in which part of the frame.
void takeErrorCode(std::uint8_t ecc, Frame& frame) {
  takeDirection((ecc & 0x20U) == 0, frame);
  frame.attributes.set(FrameAttribute::ErrorType, ecc >> 6);
  frame.attributes.set(FrameAttribute::ErrorPosition, ecc & 0x1FU);
}

// The code in the extended flags, which tells more types apart. The words are for those that are just another error
// elsewhere.
void takeExtendedFlags(std::uint16_t flagsExt, Frame& frame) {
  frame.unset(frame_flag::kReceived | frame_flag::kTransmitted);
  takeDirection((flagsExt & 0x20U) == 0, frame);
  if (!frame.attributes.has(FrameAttribute::ErrorType)) {
    frame.attributes.set(FrameAttribute::ErrorType, std::min<std::uint32_t>(flagsExt >> 6 & 0x3FU, kOtherError));
  }
}

void appendWords(TextBuffer& text, std::string_view part) {
  text.append(text.empty() ? "" : ", ");
  text.append(part);
}

// What else is known of the frame that was disturbed. An error frame has no identifier of its own.
void takeErrorWords(std::uint16_t flagsExt, std::uint32_t rawId, std::uint32_t position, Frame& frame,
                    TextBuffer& text) {
  constexpr std::uint32_t kCrc = 4;
  constexpr std::uint32_t kAcknowledge = 5;
  constexpr std::uint32_t kNoIdentifier = 0xFFFFFFFF;
  text.clear();
  const std::uint32_t code = flagsExt >> 6 & 0x3FU;
  if (code == kCrc || code == kAcknowledge) {
    appendWords(text, code == kCrc ? "CRC error" : "acknowledgement error");
  }
  if (rawId != 0 && rawId != kNoIdentifier) {
    appendWords(text, "id ");
    appendHex(text, rawId & kIdMask, 1);
    text.append(isExtended(rawId) ? "x" : "");
  }
  if (position != 0) {
    appendWords(text, "bit ");
    appendDecimal(text, position);
  }
  if (!text.empty()) {
    frame.text = text.view();
  }
}

template <class Body>
void takeErrorDetail(const Body& body, std::uint32_t position, Frame& frame, BlfReading& reading) {
  frame.kind = FrameKind::Error;
  frame.bus = body.channel;
  const bool isOfOtherCore = (body.flags & valid_field::kCodeOfOtherCore) != 0;
  if ((body.flags & valid_field::kErrorCode) != 0 || (body.ecc != 0 && !isOfOtherCore)) {
    takeErrorCode(body.ecc, frame);
  }
  if (body.flagsExt != 0) {
    takeExtendedFlags(body.flagsExt, frame);
  }
  takeErrorWords(body.flagsExt, body.id, (body.flags & valid_field::kPosition) != 0 ? position : 0, frame,
                 reading.text);
}

bool readErrorFrame(const Object& object, Frame& frame, BlfReading& reading) {
  CanErrorFrame body;
  if (!load(object, body)) {
    return false;
  }
  takeErrorDetail(body, body.position, frame, reading);
  return true;
}

bool readFdErrorFrame(const Object& object, Frame& frame, BlfReading& reading) {
  CanFdErrorFrame64 body;
  if (!load(object, body)) {
    return false;
  }
  takeErrorDetail(body, body.position, frame, reading);
  takeFd((body.fdBits & 0x80U) != 0, (body.fdBits & 0x40U) != 0, (body.fdBits & 0x20U) != 0, frame);
  return true;
}

bool readErrorCounters(const Object& object, Frame& frame, BlfReading& reading) {
  CanErrorCounters body;
  if (!load(object, body)) {
    return false;
  }
  frame.kind = FrameKind::Counters;
  frame.bus = body.channel;
  frame.attributes.set(FrameAttribute::TxErrors, body.txErrors);
  frame.attributes.set(FrameAttribute::RxErrors, body.rxErrors);
  if (body.code != 0) {
    reading.text.clear();
    reading.text.append("driver error code ");
    appendDecimal(reading.text, body.code);
    frame.text = reading.text.view();
  }
  return true;
}

// Those that are as long as their data may go on with two words of bit timing.
constexpr std::array kCanObjects = {
    BlfObjectType{1, readCanFrame, 16},
    BlfObjectType{2, readPlainError, 8},
    BlfObjectType{3, readOverload, 8},
    BlfObjectType{31, readErrorCounters, 8},
    BlfObjectType{73, readErrorFrame, 32},
    BlfObjectType{74, readErrorCounters, 32},
    BlfObjectType{86, readCanFrame, 24},
    BlfObjectType{100, readCanFdFrame, 88},
    BlfObjectType{101, readCanFdFrame64, 40 + 64 + 8},
    BlfObjectType{104, readFdErrorFrame, 44 + 64 + 8},
};

}  // namespace

std::span<const BlfObjectType> blfCanObjects() {
  return kCanObjects;
}

}  // namespace xlatr
