// From the joined content of the containers to its objects.
#pragma once

#include <cstdint>
#include <span>

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

// Cuts content into objects. One thread at a time.
class ObjectParser {
 public:
  // `remarks` must outlive the parser.
  explicit ObjectParser(Remarks& remarks) : remarks_(remarks), scanner_(remarks, Remark::StrayBytes, 0) {}

  // Takes the next whole object from the front of `content`; false when more content is needed. With `complete`, when
  // the content breaks off after these bytes, all of them are used up. At most kLargestObject bytes ever wait for
  // their end. The body is valid until content is added.
  [[nodiscard]] bool next(ByteQueue& content, bool complete, Object& object);

 private:
  Remarks& remarks_;
  ObjectScanner scanner_;
};

}  // namespace xlatr::blf_log
