// The part of MdfFramePlan that runs once per record.
#include <array>
#include <bit>
#include <optional>

#include "formats/mf4/mdf_frame_plan.hpp"
#include "messages/fd_kind.hpp"
#include "util/failures.hpp"
#include "util/little_endian.hpp"

namespace xlatr {
namespace {

using Source = MdfFrameField::Source;
using Target = MdfFrameField::Target;

constexpr char kUnsupportedBus[] = "Not implemented";

constexpr std::uint32_t kLengthPrefix = 4;  // bytes before each payload in signal data

constexpr std::uint32_t kNeededByRemoteFrame =
    bitOf(BusEventField::BusChannel) | bitOf(BusEventField::ID) | bitOf(BusEventField::DLC);
constexpr std::uint32_t kNeededByDataFrame =
    kNeededByRemoteFrame | bitOf(BusEventField::DataLength) | bitOf(BusEventField::DataBytes);

// What a frame's name says of its messages.
struct FrameTraits {
  MessageType type;
  MessageKind kind;
};
constexpr std::array<FrameTraits, 4> kFrameTraits = {{
    {MessageType::Rx, MessageKind::DT},
    {MessageType::Rx, MessageKind::RR},
    {MessageType::Error, MessageKind::ER},
    {MessageType::Warng, MessageKind::Unknown},
}};

bool readValue(const MdfFrameField& field, const std::uint8_t* record, std::uint64_t& value) {
  switch (field.source) {
    case Source::Number:
      value = field.number.read(record);
      return true;
    case Source::Constant:
      value = field.constant;
      return true;
    case Source::ConvertedNumber: {
      const auto converted = toInteger(field.conversion->evaluate(static_cast<double>(field.number.read(record))));
      value = converted.value_or(0);
      return converted.has_value();
    }
    case Source::TableByte: {
      const std::vector<double>& table = field.conversion->data.ccVal;
      const std::uint64_t index = field.number.read(record);
      if (index >= table.size()) {
        return false;
      }
      value = std::bit_cast<std::uint64_t>(table[index]) & 0xFFU;
      return true;
    }
    case Source::Payload:
      break;
  }
  return false;
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
void setField(Target target, std::uint64_t value, MdfCanMessage& message) {
  const auto number = static_cast<std::uint32_t>(value);
  const bool isSet = value != 0;
  MessageKind& kind = message.kind;
  switch (target) {
    case Target::Bus:
      message.bus = number;
      break;
    case Target::Extended:
      message.extended = isSet;
      break;
    case Target::Dlc:
      message.dlc = number;
      break;
    case Target::Length:
      message.length = number;
      break;
    case Target::Direction:
      message.direction = isSet ? MessageDirection::Tx : MessageDirection::Rx;
      break;
    case Target::Remote:
      kind = isSet ? MessageKind::RR : kind;
      message.isRemote = message.isRemote || isSet;
      break;
    case Target::FdFormat:
      kind = isSet ? fdKind(hasBrs(kind), hasEsi(kind)) : kind;
      break;
    case Target::BitRateSwitch:
      kind = isSet ? fdKind(true, hasEsi(kind)) : kind;
      break;
    case Target::ErrorState:
      kind = isSet ? fdKind(hasBrs(kind), true) : kind;
      break;
    case Target::BitPosition:
      message.bitPosition = static_cast<std::uint8_t>(value);
      break;
    case Target::ErrorType:
      message.errorType = static_cast<std::uint8_t>(value);
      break;
    case Target::Id:
    case Target::FixedPayload:
    case Target::StoredPayload:
      break;
  }
}

// In signal data each payload has its length before it.
bool readStoredPayload(const RecordBytes& stored, std::uint64_t offset, std::vector<std::uint8_t>& payload) {
  if (offset > stored.size() || stored.size() - offset < kLengthPrefix) {
    return false;
  }
  const std::uint8_t* const begin = stored.data() + offset;
  const auto length = loadLittle<std::uint32_t>(begin);
  if (length > MdfFramePlan::kLongestPayload || length > stored.size() - offset - kLengthPrefix) {
    return false;
  }
  payload.assign(begin + kLengthPrefix, begin + kLengthPrefix + length);
  return true;
}

}  // namespace

bool MdfFramePlan::read(const std::uint8_t* record, MdfCanMessage& message) const {
  if (message.busKind == 1 || message.busKind == 2) {
    throwProcessingFailure(kUnsupportedBus);
  }
  const FrameTraits& traits = kFrameTraits[static_cast<std::size_t>(type_)];
  message.type = traits.type;
  message.kind = traits.kind;
  message.isRemote = message.isRemote || type_ == BusEventFrameType::RemoteFrame;
  message.foundFields |= alwaysFound_;
  for (const MdfFrameField& field : fields_) {
    if (readField(field, record, message)) {
      message.foundFields |= bitOf(field.found);
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

bool MdfFramePlan::readField(const MdfFrameField& field, const std::uint8_t* record, MdfCanMessage& message) const {
  if (field.source == Source::Payload) {
    return message.isRemote || readPayload(field, record, message.data);
  }
  std::uint64_t value = 0;
  if (!readValue(field, record, value)) {
    return false;
  }
  if (field.target == Target::Id) {
    setIdentifier(static_cast<std::uint32_t>(value), message);
  } else {
    setField(field.target, value, message);
  }
  return true;
}

bool MdfFramePlan::readPayload(const MdfFrameField& field, const std::uint8_t* record,
                               std::vector<std::uint8_t>& payload) const {
  if (field.target == Target::StoredPayload) {
    return readStoredPayload(storedPayloads_, field.number.read(record), payload);
  }
  const std::uint8_t* const begin = record + field.number.offset;
  payload.assign(begin, begin + field.byteCount);
  return true;
}

}  // namespace xlatr
