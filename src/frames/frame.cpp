#include "frames/frame.hpp"

#include <algorithm>

namespace xlatr {
namespace {

constexpr std::array<std::string_view, kFrameKindCount> kKindNames = {
    "data", "remote", "error", "overload", "status", "counters", "lin", "lin_event", "event", "comment"};

constexpr std::array<std::string_view, kFrameAttributeCount> kAttributeNames = {
    "error_type",    "error_position",   "tx_errors",  "rx_errors", "bus_state", "bus_load",       "vcid",
    "sdt",           "acceptance_field", "rrs",        "sec",       "checksum",  "checksum_model", "lin_errors",
    "lin_direction", "reserved",         "record_type"};

}  // namespace

std::string_view frameKindName(FrameKind kind) {
  return kKindNames.at(static_cast<std::size_t>(kind));
}

std::string_view frameAttributeName(FrameAttribute attribute) {
  return kAttributeNames.at(static_cast<std::size_t>(attribute));
}

bool FrameAttributes::operator==(const FrameAttributes& other) const {
  for (std::size_t at = 0; at < kFrameAttributeCount; ++at) {
    const auto attribute = static_cast<FrameAttribute>(at);
    if (get(attribute) != other.get(attribute)) {
      return false;
    }
  }
  return true;
}

FrameAttributes FrameAttributes::only(std::uint32_t bits) const {
  FrameAttributes kept;
  for (std::size_t at = 0; at < kFrameAttributeCount; ++at) {
    if ((present_ & bits) >> at & 1U) {
      kept.set(static_cast<FrameAttribute>(at), values_[at]);
    }
  }
  return kept;
}

bool sameFrame(const Frame& one, const Frame& other) {
  return one.timeNs == other.timeNs && one.kind == other.kind && one.bus == other.bus && one.flags == other.flags &&
         one.dlc == other.dlc && one.id == other.id && std::ranges::equal(one.data, other.data) &&
         one.text == other.text && one.attributes == other.attributes;
}

}  // namespace xlatr
