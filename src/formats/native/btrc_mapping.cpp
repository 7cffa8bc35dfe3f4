#include "formats/native/btrc_mapping.hpp"

#include <algorithm>
#include <array>

#include "formats/native/native_frame_record.hpp"
#include "messages/can_dlc.hpp"
#include "messages/error_type.hpp"
#include "messages/fd_kind.hpp"

namespace xlatr {
namespace {

std::uint16_t fdFlagsOfKind(MessageKind kind) {
  const int brs = hasBrs(kind) ? record_flag::kBrs : 0;
  const int esi = hasEsi(kind) ? record_flag::kEsi : 0;
  return static_cast<std::uint16_t>(record_flag::kFd | brs | esi);
}

// What is no known type counts as another error.
std::uint8_t flagsOfErrorId(std::uint32_t id) {
  return static_cast<std::uint8_t>(errorTypeOfTrcId(id).value_or(kOtherError) << error_flag::kClassShift);
}

// `received` and `sent` are the types of the record in the two directions.
void makeFrame(ZelkBinaryMessage& message, RecordType received, RecordType sent, std::uint8_t dlc,
               std::uint16_t flags) {
  const auto allFlags = static_cast<std::uint16_t>(flags | (message.extended ? record_flag::kExtended : 0));
  const Internal_DataFrameInfo info(static_cast<std::uint8_t>(message.bus), dlc, allFlags, message.id);
  const std::uint64_t time = message.timestamp.count();
  if (message.direction == MessageDirection::Rx) {
    appendFrame(message.rawBytes, Internal_ReceivedDataFrameHeader(received, info, time), message.data);
  } else {
    appendFrame(message.rawBytes, Internal_SentDataFrameHeader(sent, info, time, time), message.data);
  }
}

void makeStatus(ZelkBinaryMessage& message) {
  const auto& data = message.data;
  std::uint32_t status = 0;
  if (data.size() >= 4 || data.size() == 2) {
    for (std::size_t index = 0; index < data.size() && index < 4; ++index) {
      status = status << 8 | data[index];
    }
  }
  Native_RecordCanStatus record;
  record.timestampTicks = message.timestamp.count();
  record.bus = static_cast<std::uint8_t>(message.bus);
  for (const StatusFlag& known : kStatusFlags) {
    const bool set = (status & static_cast<std::uint32_t>(known.status)) != 0;
    record.flags = static_cast<std::uint8_t>(record.flags | (set ? known.flag : 0));
  }
  appendFields(message.rawBytes, record);
}

void makeErrorCounters(ZelkBinaryMessage& message) {
  Native_RecordCanError record;
  record.timestampTicks = message.timestamp.count();
  record.bus = static_cast<std::uint8_t>(message.bus);
  record.flags = message.direction == MessageDirection::Tx ? error_flag::kCounters
                                                           : error_flag::kCounters | error_flag::kDirection;
  if (message.data.size() >= 2) {
    record.rxErrorCounter = message.data[0];
    record.txErrorCounter = message.data[1];
  }
  appendFields(message.rawBytes, record);
}

void makeError(ZelkBinaryMessage& message) {
  constexpr std::size_t kBytesWithType = 5;
  constexpr std::size_t kBytesWithoutType = 4;
  const auto& data = message.data;
  std::uint32_t errorType = 0;
  std::array<std::uint8_t, kBytesWithoutType> rest{};  // direction, position, rx, tx
  if (data.size() >= kBytesWithType) {
    errorType = data[0];
    std::copy_n(data.begin() + 1, rest.size(), rest.begin());
  } else if (data.size() == kBytesWithoutType) {
    errorType = message.id;
    std::copy_n(data.begin(), rest.size(), rest.begin());
  }
  Native_RecordCanError record;
  record.timestampTicks = message.timestamp.count();
  record.bus = static_cast<std::uint8_t>(message.bus);
  record.flags = static_cast<std::uint8_t>(flagsOfErrorId(errorType) | (rest[0] != 0 ? error_flag::kDirection : 0));
  record.errorPosition = rest[1];
  record.rxErrorCounter = rest[2];
  record.txErrorCounter = rest[3];
  appendFields(message.rawBytes, record);
}

void makeText(ZelkBinaryMessage& message, const std::string& text) {
  appendComment(message.rawBytes, text);
}

void makeRecord(ZelkBinaryMessage& message) {
  const auto dlc = static_cast<std::uint8_t>(lengthToDlc(message.length));
  switch (message.kind) {
    case MessageKind::DT:
      return makeFrame(message, RecordType::CanRxMsg, RecordType::CanTxMsg, static_cast<std::uint8_t>(message.length),
                       0);
    case MessageKind::FD:
    case MessageKind::FB:
    case MessageKind::FE:
    case MessageKind::BI:
      return makeFrame(message, RecordType::CanRxFdMsg, RecordType::CanTxFdMsg, dlc, fdFlagsOfKind(message.kind));
    case MessageKind::RR:
      return makeFrame(message, RecordType::CanRxRtrMsg, RecordType::CanTxRtrMsg, dlc, record_flag::kRemote);
    case MessageKind::ST:
      return makeStatus(message);
    case MessageKind::EC:
      return makeErrorCounters(message);
    case MessageKind::ER:
      return makeError(message);
    case MessageKind::EV:
      return makeText(message, "TODO 'Event Framer (EV)': " + message.commentary);
    default:
      return makeText(message, "Unknown record ': " + message.commentary);
  }
}

}  // namespace

void mapToBtrc(const BrixMessage& source, ZelkBinaryMessage& target) {
  target.reset();
  target.id = source.id;
  target.length = source.length;
  target.data.assign(source.data.begin(), source.data.end());
  target.type = source.type;
  target.direction = source.direction;
  target.extended = source.extended;
  target.remote = source.remote;
  target.kind = source.kind;
  target.bus = source.bus - 1;
  target.timestamp = wrappedMicroseconds(source.timeOffset);
  target.commentary.assign(source.comment);
  if (source.valid && source.kind != MessageKind::Unknown) {
    makeRecord(target);
    target.takeMadeRecord();
    target.valid = source.kind <= MessageKind::EV;
  } else {
    makeText(target, target.commentary);
    target.takeMadeRecord();
    target.recordType = RecordType::Invalid;
  }
}

}  // namespace xlatr
