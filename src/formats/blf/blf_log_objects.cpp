#include "formats/blf/blf_log_objects.hpp"

#include <cstddef>

#include "formats/blf/blf_log_layout.hpp"
#include "util/layout.hpp"
#include "util/little_endian.hpp"

namespace xlatr::blf_log {

namespace {

// Newer objects go on with fields that nobody here knows, but not for longer than this.
constexpr std::size_t kMostNewFields = 512;

}  // namespace

bool ObjectParser::next(ByteQueue& content, bool complete, Object& object) {
  BaseHeader header;
  while (scanner_.find(content, complete, header)) {
    const bool isWhole = header.size <= content.size();
    const std::size_t surplus = surplusOf(header);
    if (header.size > kLargestObject || (!isWhole && complete) || surplus > kMostNewFields) {
      scanner_.refuse(content);
      continue;
    }
    if (!isWhole) {
      return false;
    }
    const auto bytes = content.bytes().first(header.size);
    if (surplus > 0 && findText(bytes.last(surplus), kObjectSignature) < surplus) {
      scanner_.refuse(content);
      continue;
    }
    const std::uint64_t offset = scanner_.position();
    scanner_.take(content, header.size);
    if (header.type == kContainerType) {
      remarks_.note(Remark::NestedContainer, offset);
      continue;
    }
    // All of the header is there, or the scanner would not have taken it for one.
    const std::uint8_t* const at = bytes.data();
    object.type = header.type;
    object.flags = loadLittle<std::uint32_t>(at + layoutOffset<&ObjectHeader::flags>());
    object.version = loadLittle<std::uint16_t>(at + layoutOffset<&ObjectHeader::version>());
    object.timestamp = loadLittle<std::uint64_t>(at + layoutOffset<&ObjectHeader::timestamp>());
    object.body = bytes.subspan(header.headerSize);
    object.offset = offset;
    return true;
  }
  return false;
}

}  // namespace xlatr::blf_log
