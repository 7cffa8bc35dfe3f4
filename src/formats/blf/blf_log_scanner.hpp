// Finding objects in a run of bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "formats/blf/blf_log_layout.hpp"
#include "formats/blf/blf_log_queue.hpp"
#include "formats/blf/blf_log_remarks.hpp"
#include "util/layout.hpp"
#include "util/little_endian.hpp"

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
  [[nodiscard]] bool find(ByteQueue& bytes, bool complete, BaseHeader& header) {
    // Nearly always the next object is where the last one ended.
    return isAtObject(bytes.bytes(), header) || search(bytes, complete, header);
  }

  // The header at the front turned out to be none: it is passed over.
  void refuse(ByteQueue& bytes);
  // The header at the front is one: takes the first `count` bytes of its object, or of what belongs to it.
  void take(ByteQueue& bytes, std::size_t count) {
    if (gap_ > 0) {
      endGap();
    }
    gapIsTold_ = false;
    bytes.drop(count);
    position_ += count;
  }
  // Stray bytes that come next have been told of already.
  void forgiveNext() { gapIsTold_ = true; }

  // The offset of the byte at the front.
  [[nodiscard]] std::uint64_t position() const { return position_; }

 private:
  // Whether an object begins with the bytes, which may be too few to tell. Field by field, since this runs once or
  // twice per object.
  static bool isAtObject(std::span<const std::uint8_t> bytes, BaseHeader& header) {
    if (bytes.size() < kLayoutSize<BaseHeader> || !startsWith(bytes, kObjectSignature)) {
      return false;
    }
    header.headerSize = loadLittle<std::uint16_t>(bytes.data() + layoutOffset<&BaseHeader::headerSize>());
    header.size = loadLittle<std::uint32_t>(bytes.data() + layoutOffset<&BaseHeader::size>());
    header.type = loadLittle<std::uint32_t>(bytes.data() + layoutOffset<&BaseHeader::type>());
    constexpr std::size_t kLeast = kLayoutSize<ObjectHeader>;
    constexpr std::size_t kLeastOfContainer = kLayoutSize<BaseHeader>;
    return header.headerSize >= (header.type == kContainerType ? kLeastOfContainer : kLeast) &&
           header.size >= header.headerSize;
  }

  [[nodiscard]] bool search(ByteQueue& bytes, bool complete, BaseHeader& header);
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
