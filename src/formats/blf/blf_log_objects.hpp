// From the joined content of the containers to its objects.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "formats/blf/blf_log_layout.hpp"
#include "formats/blf/blf_log_queue.hpp"
#include "formats/blf/blf_log_remarks.hpp"
#include "formats/blf/blf_log_scanner.hpp"

namespace xlatr::blf_log {

// One object as it stands in the content.
struct Object {
  std::uint32_t type = 0;
  std::uint32_t flags = 0;  // the unit of the time stamp
  std::uint16_t version = 0;
  std::uint64_t timestamp = 0;  // since the start of the log
  std::span<const std::uint8_t> body;
  std::uint64_t offset = 0;  // in the content
};

// How many bytes the bodies of a type have at most, as far as is known; 0 for those of any size. In the order of the
// types.
using LongestBodies = std::span<const std::uint16_t>;

// Cuts content into objects. One thread at a time.
class ObjectParser {
 public:
  // `remarks` must outlive the parser, and so must the table. With it, a size that has swallowed other objects costs
  // only the object that states it; without it every size is believed that the content can hold.
  explicit ObjectParser(Remarks& remarks, LongestBodies longest = {})
      : remarks_(remarks), scanner_(remarks, Remark::StrayBytes, 0), longest_(longest) {}

  // Takes the next whole object from the front of `content`; false when more content is needed. With `complete`, when
  // the content breaks off after these bytes, all of them are used up. At most kLargestObject bytes ever wait for
  // their end. The body is valid until content is added.
  [[nodiscard]] bool next(ByteQueue& content, bool complete, Object& object);

 private:
  // How much of the body is more than the type is known to have.
  [[nodiscard]] std::size_t surplusOf(const BaseHeader& header) const {
    const std::size_t longest = header.type < longest_.size() ? longest_[header.type] : 0;
    const std::size_t size = header.size - header.headerSize;
    return longest > 0 && size > longest ? size - longest : 0;
  }

  Remarks& remarks_;
  ObjectScanner scanner_;
  LongestBodies longest_;
};

}  // namespace xlatr::blf_log
