#include "formats/native/btr_mapping.hpp"

#include <algorithm>

#include "util/time_units.hpp"

namespace xlatr {
namespace {

constexpr std::uint32_t kMaxDataLength = 8;

}  // namespace

bool fitsBtrEntry(const BrixMessage& source) {
  return source.length <= kMaxDataLength && source.type != MessageType::Unknown && source.kind != MessageKind::XL;
}

MsgEntry mapToBtrEntry(const BrixMessage& source) {
  MsgEntry entry;
  entry.id = source.id;
  entry.flags = static_cast<std::uint8_t>((source.remote ? MsgEntry::kRemote : 0U) |
                                          (source.extended ? MsgEntry::kExtended : 0U) |
                                          (source.type == MessageType::Error ? MsgEntry::kError : 0U));
  entry.source = static_cast<std::uint8_t>((source.bus - 1) << 4U | (source.length & 0xFU));
  if (!source.remote) {
    std::copy_n(source.data.begin(), std::min(source.data.size(), entry.data.size()), entry.data.begin());
  }
  entry.timestampUs = lowMicroseconds(source.timeOffset);
  return entry;
}

}  // namespace xlatr
