#include "formats/lin/lin_mapping.hpp"

namespace xlatr {

void mapToLin(const BlfLinMessage& source, KorlMessage& target) {
  target.reset();
  target.id = source.id;
  target.valid = source.valid;
  target.direction = source.linDirection;
  target.checksum = source.checksum;
  target.checksumType = source.checksumType;
  target.timestamp = clampedMicroseconds(source.microseconds());
  target.busEvent = source.kind == MessageKind::EV;
  if (target.busEvent) {
    target.data.assign(source.eventText.begin(), source.eventText.end());
    target.length = static_cast<std::uint32_t>(source.eventText.size());
    return;
  }
  target.length = source.length;
  target.data.assign(source.data.begin(), source.data.end());
  if (source.kind == MessageKind::ER) {
    target.errorFlags = source.errorFlags;
  }
}

}  // namespace xlatr
