// The part of MdfFrameLayout that makes messages, one record after the other.
#include <array>
#include <cstddef>

#include "formats/mf4/mdf_can_message.hpp"
#include "formats/mf4/mdf_frame_layout.hpp"
#include "messages/fd_kind.hpp"
#include "util/failures.hpp"

namespace xlatr {
namespace {

constexpr char kUnsupportedBus[] = "Not implemented";

constexpr std::uint32_t bitOf(BusEventField field) {
  return static_cast<std::uint32_t>(field);
}

constexpr std::uint32_t kNeededByRemoteFrame =
    bitOf(BusEventField::BusChannel) | bitOf(BusEventField::ID) | bitOf(BusEventField::DLC);
constexpr std::uint32_t kNeededByDataFrame =
    kNeededByRemoteFrame | bitOf(BusEventField::DataLength) | bitOf(BusEventField::DataBytes);

void setFrameKind(FrameKind frame, MdfCanMessage& message) {
  message.type = frame == FrameKind::Error ? MessageType::Error : MessageType::Rx;
  message.kind = frame == FrameKind::Error    ? MessageKind::ER
                 : frame == FrameKind::Remote ? MessageKind::RR
                                              : MessageKind::DT;
  message.isRemote = message.isRemote || frame == FrameKind::Remote;
}

// Only the first identifier counts.
void setIdentifier(std::uint32_t rawId, MdfCanMessage& message) {
  constexpr std::uint32_t kExtended = 0x80000000;
  if (message.id == kNoIdentifier) {
    message.extended = message.extended || (rawId & kExtended) != 0;
    message.id = rawId & ~kExtended;
  }
}

// Bits that are not set say nothing, so that the order of their channels does not matter.
void setMember(MdfMember member, std::uint64_t value, MdfCanMessage& message) {
  const auto number = static_cast<std::uint32_t>(value);
  const bool isSet = value != 0;
  MessageKind& kind = message.kind;
  switch (member) {
    case MdfMember::BusChannel:
      message.bus = number;
      break;
    case MdfMember::Id:
      setIdentifier(number, message);
      break;
    case MdfMember::Ide:
      message.extended = isSet;
      break;
    case MdfMember::Dlc:
      message.dlc = number;
      break;
    case MdfMember::DataLength:
      message.length = number;
      break;
    case MdfMember::Dir:
      message.direction = isSet ? MessageDirection::Tx : MessageDirection::Rx;
      break;
    case MdfMember::Rtr:
      kind = isSet ? MessageKind::RR : kind;
      message.isRemote = message.isRemote || isSet;
      break;
    case MdfMember::Edl:
      kind = isSet ? fdKind(hasBrs(kind), hasEsi(kind)) : kind;
      break;
    case MdfMember::Brs:
      kind = isSet ? fdKind(true, hasEsi(kind)) : kind;
      break;
    case MdfMember::Esi:
      kind = isSet ? fdKind(hasBrs(kind), true) : kind;
      break;
    case MdfMember::BitPosition:
      message.bitPosition = static_cast<std::uint8_t>(value);
      break;
    case MdfMember::ErrorType:
      message.errorType = static_cast<std::uint8_t>(value);
      break;
    case MdfMember::DataBytes:
    case MdfMember::ReceivedDataByteCount:
    case MdfMember::Checksum:
    case MdfMember::ChecksumModel:
      break;
  }
}

}  // namespace

bool MdfFrameLayout::readMessage(const std::uint8_t* record, MdfCanMessage& message) const {
  if (message.busKind == 1 || message.busKind == 2) {
    throwProcessingFailure(kUnsupportedBus);
  }
  setFrameKind(name_->kind, message);
  message.foundFields |= alwaysFound_;
  for (const Field& field : fields_) {
    if (readPart(field, record, message)) {
      message.foundFields |= field.found;
    }
  }
  if (!message.isRemote && message.length > message.data.size()) {
    message.length = 0;
    message.foundFields &= ~bitOf(BusEventField::DataLength);
  }
  if (message.isRemote) {
    return (message.foundFields & kNeededByRemoteFrame) == kNeededByRemoteFrame;
  }
  return message.type == MessageType::Error || (message.foundFields & kNeededByDataFrame) == kNeededByDataFrame;
}

bool MdfFrameLayout::readPart(const Field& field, const std::uint8_t* record, MdfCanMessage& message) const {
  if (field.member == MdfMember::DataBytes) {
    return message.isRemote || readLoadedPayload(payloads_[field.payload], record, message.data);
  }
  std::uint64_t value = 0;
  if (!field.value.readRecord(record, value)) {
    return false;
  }
  setMember(field.member, value, message);
  return true;
}

bool MdfFrameLayout::readLoadedPayload(const Payload& payload, const std::uint8_t* record,
                                       std::vector<std::uint8_t>& bytes) const {
  if (!payload.position) {
    bytes.assign(record + payload.offset, record + payload.offset + payload.size);
    return true;
  }
  std::uint64_t offset = 0;
  static_cast<void>(payload.position->readRecord(record, offset));  // a plain number
  const auto found = payloadAt(loaded_, offset);
  if (found) {
    bytes.assign(found->begin(), found->end());
  }
  return found.has_value();
}

}  // namespace xlatr
