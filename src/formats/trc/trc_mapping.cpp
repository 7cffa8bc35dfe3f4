#include "formats/trc/trc_mapping.hpp"

#include "messages/error_type.hpp"

namespace xlatr {
namespace {

constexpr std::size_t kReservedBytes = 70;  // more than the longest CAN FD frame

// A message as in a file with columns, whatever its source.
void prepare(BrixMessage& target) {
  target.reset();
  target.columnBased = true;
  target.data.reserve(kReservedBytes);
}

// The same for a message of a CAN bus, with what all of these have in common.
void prepare(const MessageStyleCan& source, BrixMessage& target) {
  prepare(target);
  target.bus = source.bus;
  target.id = source.id;
  target.extended = source.extended;
  target.valid = source.getValid();
  target.length = source.length;
  target.type = source.type;
  target.direction = source.direction;
}

void setErrorCounters(const AscMessage& source, BrixMessage& target) {
  target.kind = MessageKind::EC;
  target.direction = MessageDirection::Rx;
  target.length = 2;
  target.data = {static_cast<std::uint8_t>(source.rxErrors), static_cast<std::uint8_t>(source.txErrors)};
}

// Bits 6 and 7 of an ECC are the type of the error, bit 5 its direction, bits 0 to 4 its position.
void setError(std::uint32_t errorCode, BrixMessage& target) {
  target.kind = MessageKind::ER;
  target.id = trcIdOfErrorType(errorCode >> 6 & 3U);
  target.length = 4;
  target.data = {static_cast<std::uint8_t>(errorCode >> 5 & 1U), static_cast<std::uint8_t>(errorCode & 0x1FU), 0, 0};
}

void setStatus(std::string_view text, BrixMessage& target) {
  const std::uint32_t mask = tryWarningErrorsFromText(text).value_or(0);
  target.kind = MessageKind::ST;
  target.direction = MessageDirection::Rx;
  target.length = 4;
  target.data = {static_cast<std::uint8_t>(mask >> 24), static_cast<std::uint8_t>(mask >> 16),
                 static_cast<std::uint8_t>(mask >> 8), static_cast<std::uint8_t>(mask)};
}

// MF4 counts error types from 1 and has no number for others. Positions count from the start of the frame,
// those of a TRC line from three bits before it.
void setMdfError(const MdfCanMessage& source, BrixMessage& target) {
  const bool known = source.errorType >= 1 && source.errorType <= kOtherError;
  target.id = trcIdOfErrorType(known ? source.errorType - 1U : kOtherError);
  target.length = 4;
  target.data = {0, static_cast<std::uint8_t>(source.bitPosition + 3), 0, 0};
}

}  // namespace

void mapToTrc(const AscMessage& source, BrixMessage& target) {
  prepare(source, target);
  target.timeOffset = source.time;
  target.remote = source.isRemote();
  switch (source.type) {
    case MessageType::Rx:
    case MessageType::Tx:
      target.kind = messageKindOfAscFlags(source.flags);
      break;
    case MessageType::Error:
      if (source.lineKind == AscLineKind::Status) {
        setErrorCounters(source, target);
      } else {
        setError(source.errorCode, target);
      }
      return;
    case MessageType::Warng:
      setStatus(source.commentText, target);
      return;
    default:
      break;
  }
  if (!target.remote) {
    target.data.assign(source.data.begin(), source.data.end());
  }
}

void mapToTrc(const MdfCanMessage& source, BrixMessage& target) {
  prepare(source, target);
  target.timeOffset = source.time;
  target.kind = source.kind;
  target.remote = source.isRemote;
  if (source.type == MessageType::Error) {
    setMdfError(source, target);
  } else if (!source.isRemote) {
    target.data.assign(source.data.begin(), source.data.end());
  }
}

void mapToTrc(const SessionMessage& source, BrixMessage& target) {
  constexpr std::uint32_t kErrorCountersLength = 2;
  const MsgEntry& entry = source.entry;
  prepare(target);
  target.timeOffset = source.time;
  target.bus = entry.getSource() + 1U;
  target.id = source.getIdentifier();
  target.extended = entry.isExtended();
  target.valid = source.getValid();
  target.length = source.getLength();
  target.direction = MessageDirection::Rx;
  if (entry.isError()) {
    target.type = MessageType::Error;
    target.kind = target.length == kErrorCountersLength ? MessageKind::EC : MessageKind::ER;
  } else {
    target.type = MessageType::Rx;
    target.remote = entry.isRemote();
    target.kind = target.remote ? MessageKind::RR : MessageKind::DT;
  }
  if (!target.remote) {
    const auto bytes = entry.payload(target.length);
    target.data.assign(bytes.begin(), bytes.end());
  }
}

void mapToTrc(const ZelkBinaryMessage& source, BrixMessage& target) {
  prepare(source, target);
  target.timeOffset = source.timestamp;
  target.bus = source.bus + 1;
  target.kind = source.kind;
  target.remote = source.remote;
  target.parsingText = source.commentary;
  if (!target.remote) {
    target.data.assign(source.data.begin(), source.data.end());
  }
}

void mapToTrc(const BlfCanMessage& source, BrixMessage& target) {
  prepare(source, target);
  target.timeOffset = source.milliseconds();
  target.kind = source.kind();
  target.remote = source.remote;
  if (source.type == MessageType::Error) {
    setError(source.errorByte, target);
  } else if (source.remote) {
    target.length = 0;
  } else {
    target.data.assign(source.data.begin(), source.data.end());
  }
}

}  // namespace xlatr
