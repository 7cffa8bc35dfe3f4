#include "formats/asc/asc_mapping.hpp"

namespace xlatr {
namespace {

// What the longest CAN FD frame needs, with room for what error records have before their data.
constexpr std::size_t kReservedBytes = 70;

// What is the same for all messages of a CAN bus that have a kind.
void takeFrame(const MessageStyleCan& source, MessageKind kind, AscMessage& target) {
  constexpr std::uint32_t kLowByte = 0xFF;
  target.reset();
  target.data.reserve(kReservedBytes);
  target.length = source.length & kLowByte;
  target.type = source.type;
  target.direction = source.direction;
  target.extended = source.extended;
  target.valid = source.getValid();
  target.id = source.id;
  target.flags = ascFlagsOfMessageKind(kind);
  target.frameClass = (target.flags & asc_flag::kEdl) != 0 ? AscFrameClass::Fd : AscFrameClass::Classic;
  if (source.type == MessageType::Error && kind == MessageKind::EC) {
    target.lineKind = AscLineKind::Status;
  }
  if (source.type == MessageType::Unknown && target.valid) {
    target.type = source.direction == MessageDirection::Rx ? MessageType::Rx : MessageType::Tx;
  }
}

}  // namespace

void mapToAsc(const BrixMessage& source, AscMessage& target) {
  takeFrame(source, source.kind, target);
  target.time = source.timeOffset;
  target.bus = source.bus == 0 ? 1 : source.bus;
  if (!source.remote) {
    target.data.assign(source.data.begin(), source.data.end());
  }
  target.commentText.assign(source.comment);
}

void mapToAsc(const KorlMessage& source, AscMessage& target) {
  target.reset();
  if (source.getLength() > kMaxLinLength) {
    return;
  }
  target.data.reserve(kReservedBytes);
  target.time = source.timestamp;
  target.bus = 1;
  target.type = MessageType::Rx;
  target.direction = messageDirectionOf(source.direction);
  target.frameClass = AscFrameClass::Classic;
  target.id = source.getIdentifier();
  target.valid = source.getValid();
  target.length = source.getLength();
  target.data.assign(source.data.begin(), source.data.end());
}

void mapToAsc(const SessionMessage& source, AscMessage& target) {
  constexpr std::uint32_t kErrorLength = 4;
  const MsgEntry& entry = source.entry;
  target.reset();
  target.data.reserve(kReservedBytes);
  target.time = source.time;
  target.bus = entry.getSource() + 1U;
  target.id = source.getIdentifier();
  target.valid = source.getValid();
  target.type = entry.isError() ? MessageType::Error : MessageType::Rx;
  target.direction = MessageDirection::Rx;
  target.extended = entry.isExtended();
  target.frameClass = AscFrameClass::Classic;
  target.length = entry.isError() ? kErrorLength : source.getLength();
  target.lineKind = entry.isExtended() ? AscLineKind::ExtendedFrame : AscLineKind::StandardFrame;
  if (entry.isRemote()) {
    target.flags = asc_flag::kRemote;
    target.lineKind = AscLineKind::SessionRemoteFrame;
  }
  const auto bytes = entry.payload(target.length);
  target.data.assign(bytes.begin(), bytes.end());
}

void mapToAsc(const ZelkBinaryMessage& source, AscMessage& target) {
  constexpr std::size_t kZerosBeforeCounters = 2;
  takeFrame(source, source.kind, target);
  target.time = source.timestamp;
  target.bus = source.bus + 1;
  if (!source.remote) {
    target.data.assign(source.kind == MessageKind::EC ? kZerosBeforeCounters : 0, 0);
    target.data.insert(target.data.end(), source.data.begin(), source.data.end());
  }
  target.commentText.assign(source.commentary);
}

}  // namespace xlatr
