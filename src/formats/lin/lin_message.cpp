#include "formats/lin/lin_message.hpp"

namespace xlatr {

void KorlMessage::reset() {
  resetCommonFields();
  direction = DirectionType::Unknown;
  checksum = 0;
  checksumType = ChecksumType::Unknown;
  timestamp = UnsignedMicroseconds::zero();
  errorFlags = 0;
  parsingText.clear();
  busEvent = false;
}

}  // namespace xlatr
