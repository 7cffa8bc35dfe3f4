#include "formats/blf/blf_log_scanner.hpp"

#include <algorithm>

namespace xlatr::blf_log {

bool ObjectScanner::search(ByteQueue& bytes, bool complete, BaseHeader& header) {
  while (bytes.size() >= kLayoutSize<BaseHeader>) {
    if (!startsWith(bytes.bytes(), kObjectSignature)) {
      // A signature of which only the beginning is here must stay.
      const std::size_t next = findText(bytes.bytes(), kObjectSignature);
      passOver(bytes, next < bytes.size() ? next : bytes.size() - (kObjectSignature.size() - 1));
      continue;
    }
    if (isAtObject(bytes.bytes(), header)) {
      return true;
    }
    refuse(bytes);
  }
  if (complete) {
    passOver(bytes, bytes.size());
    endGap();
  }
  return false;
}

void ObjectScanner::refuse(ByteQueue& bytes) {
  passOver(bytes, kObjectSignature.size());
}

void ObjectScanner::passOver(ByteQueue& bytes, std::size_t count) {
  const auto passed = bytes.bytes().first(count);
  gapIsZero_ = gapIsZero_ && std::all_of(passed.begin(), passed.end(), [](std::uint8_t byte) { return byte == 0; });
  bytes.drop(count);
  position_ += count;
  gap_ += count;
}

void ObjectScanner::endGap() {
  const bool isPadding = gapIsZero_ && gap_ <= kMostPadding;
  if (!isPadding && !gapIsTold_) {
    remarks_.note(stray_, position_ - gap_);
  }
  gap_ = 0;
  gapIsZero_ = true;
  gapIsTold_ = false;
}

}  // namespace xlatr::blf_log
