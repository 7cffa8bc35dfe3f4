// Finding objects in a run of bytes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "formats/blf/blf_log_layout.hpp"
#include "formats/blf/blf_log_queue.hpp"
#include "formats/blf/blf_log_remarks.hpp"

namespace xlatr::blf_log {

// Walks over a run of bytes that come in pieces, from object to object. Between two there may be a little padding;
// anything else is told as a stretch of stray bytes, however it came about. One thread at a time.
class ObjectScanner {
 public:
  // `stray` is the remark for such a stretch, `position` the offset of the first byte for it.
  ObjectScanner(Remarks& remarks, Remark stray, std::uint64_t position)
      : remarks_(remarks), stray_(stray), position_(position) {}

  // Drops what stands before the next header. True if one is now at the front, which `header` then is; its size is
  // never less than that of the header. False if there is none in these bytes; with `complete`, when no more will come,
  // they are then all gone.
  [[nodiscard]] bool find(ByteQueue& bytes, bool complete, BaseHeader& header);

  // The header at the front turned out to be none: it is passed over.
  void refuse(ByteQueue& bytes);
  // The header at the front is one: takes the first `count` bytes of its object, or of what belongs to it.
  void take(ByteQueue& bytes, std::size_t count);
  // Stray bytes that come next have been told of already.
  void forgiveNext() { gapIsTold_ = true; }

  // The offset of the byte at the front.
  [[nodiscard]] std::uint64_t position() const { return position_; }

 private:
  void passOver(ByteQueue& bytes, std::size_t count);
  void endGap();

  Remarks& remarks_;
  Remark stray_;
  std::uint64_t position_;
  std::uint64_t gap_ = 0;  // bytes passed over since the last object
  bool gapIsZero_ = true;
  bool gapIsTold_ = false;
};

}  // namespace xlatr::blf_log
