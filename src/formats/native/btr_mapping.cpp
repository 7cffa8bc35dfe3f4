#include "formats/native/btr_mapping.hpp"

#include <algorithm>
#include <cmath>

namespace xlatr {
namespace {

constexpr std::uint32_t kMaxDataLength = 8;

// A slot has the low 32 bits of a count. A time that no count of microseconds reaches becomes 0.
std::uint32_t lowMicroseconds(double milliseconds) {
  constexpr double kLimit = 9223372036854775808.0;  // 2 to the 63rd
  const double microseconds = std::round(milliseconds * 1000.0);
  return std::abs(microseconds) < kLimit ? static_cast<std::uint32_t>(static_cast<std::int64_t>(microseconds)) : 0;
}

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
  entry.timestamp = lowMicroseconds(source.timeOffset);
  return entry;
}

}  // namespace xlatr
