#include "formats/asc/asc_mapping.hpp"

namespace xlatr {
namespace {

// What the longest CAN FD frame needs, with room for what error records have in front of their data.
constexpr std::size_t kReservedBytes = 70;

}  // namespace

void mapToAsc(const BrixMessage& source, AscMessage& target) {
  constexpr std::uint32_t kLowByte = 0xFF;
  target.reset();
  target.data.reserve(kReservedBytes);
  target.time = source.timeOffset / 1000.0;
  target.bus = source.bus == 0 ? 1 : source.bus;
  target.length = source.length & kLowByte;
  target.type = source.type;
  target.direction = source.direction;
  target.extended = source.extended;
  target.valid = source.valid;
  target.id = source.id;
  target.flags = ascFlagsOfMessageKind(source.kind);
  target.frameClass = (target.flags & asc_flag::kEdl) != 0 ? AscFrameClass::Fd : AscFrameClass::Classic;
  if (source.type == MessageType::Error && source.kind == MessageKind::EC) {
    target.lineKind = AscLineKind::Status;
  }
  if (source.type == MessageType::Unknown && source.valid) {
    target.type = source.direction == MessageDirection::Rx ? MessageType::Rx : MessageType::Tx;
  }
  if (!source.remote) {
    target.data.assign(source.data.begin(), source.data.end());
  }
  target.commentText.assign(source.comment);
}

void mapToAsc(const SessionMessage& source, AscMessage& target) {
  constexpr std::uint32_t kErrorLength = 4;
  const MsgEntry& entry = source.entry;
  target.reset();
  target.data.reserve(kReservedBytes);
  target.time = source.time / 1000.0;
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

}  // namespace xlatr
