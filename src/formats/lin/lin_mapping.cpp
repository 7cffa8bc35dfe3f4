#include "formats/lin/lin_mapping.hpp"

#include <limits>

namespace xlatr {
namespace {

// Cut and not rounded. What no counter holds becomes the largest one.
std::uint64_t clampedMicroseconds(double value) {
  constexpr double kBeyond = 0x1p64;
  return value < kBeyond ? static_cast<std::uint64_t>(value) : std::numeric_limits<std::uint64_t>::max();
}

}  // namespace

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
