#include "formats/blf/blf_log_objects.hpp"

#include "formats/blf/blf_log_layout.hpp"

namespace xlatr::blf_log {

bool ObjectParser::next(ByteQueue& content, bool complete, Object& object) {
  BaseHeader header;
  while (scanner_.find(content, complete, header)) {
    const bool isWhole = header.size <= content.size();
    if (header.size > kLargestObject || (!isWhole && complete)) {
      scanner_.refuse(content);
      continue;
    }
    if (!isWhole) {
      return false;
    }
    const std::uint64_t offset = scanner_.position();
    const auto bytes = content.bytes().first(header.size);
    scanner_.take(content, header.size);
    if (header.type == kContainerType) {
      remarks_.note(Remark::NestedContainer, offset);
      continue;
    }
    ObjectHeader whole;
    readFieldsLeniently(bytes, whole);
    object = {.type = header.type,
              .flags = whole.flags,
              .version = whole.version,
              .timestamp = whole.timestamp,
              .body = bytes.subspan(header.headerSize),
              .offset = offset};
    return true;
  }
  return false;
}

}  // namespace xlatr::blf_log
