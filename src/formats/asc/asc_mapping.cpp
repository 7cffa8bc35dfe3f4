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

void mapToAsc(const KorlMessage& source, AscMessage& target) {
  constexpr double kMicrosecondsPerSecond = 1e6;
  target.reset();
  if (source.getLength() > kMaxLinLength) {
    return;
  }
  target.data.reserve(kReservedBytes);
  target.time = static_cast<double>(source.timestamp) / kMicrosecondsPerSecond;
  target.bus = 1;
  target.type = MessageType::Rx;
  target.direction = messageDirectionOf(source.direction);
  target.frameClass = AscFrameClass::Classic;
  target.id = source.getIdentifier();
  target.valid = source.getValid();
  target.length = source.getLength();
  target.data.assign(source.data.begin(), source.data.end());
}

}  // namespace xlatr
