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

constexpr std::array kFlagNames = {
    FrameFlagName{frame_flag::kExtended, "extended"},
    FrameFlagName{frame_flag::kReceived, "received"},
    FrameFlagName{frame_flag::kTransmitted, "transmitted"},
    FrameFlagName{frame_flag::kFd, "fd"},
    FrameFlagName{frame_flag::kBrs, "brs"},
    FrameFlagName{frame_flag::kEsi, "esi"},
    FrameFlagName{frame_flag::kXl, "xl"},
    FrameFlagName{frame_flag::kDlcKnown, "dlc_known"},
    FrameFlagName{frame_flag::kEnhancedChecksum, "enhanced_checksum"},
};

// The value that has this name in a table of names in the order of an enumeration.
template <typename Value, std::size_t kCount>
std::optional<Value> valueOfName(const std::array<std::string_view, kCount>& names, std::string_view name) {
  const auto* const found = std::ranges::find(names, name);
  return found == names.end() ? std::nullopt : std::optional(static_cast<Value>(found - names.begin()));
}

}  // namespace

std::span<const FrameFlagName> frameFlagNames() {
  return kFlagNames;
}

std::optional<std::uint16_t> frameFlagOfName(std::string_view name) {
  const auto* const found = std::ranges::find(kFlagNames, name, &FrameFlagName::name);
  return found == kFlagNames.end() ? std::nullopt : std::optional(found->flag);
}

std::optional<FrameKind> frameKindOfName(std::string_view name) {
  return valueOfName<FrameKind>(kKindNames, name);
}

std::optional<FrameAttribute> frameAttributeOfName(std::string_view name) {
  return valueOfName<FrameAttribute>(kAttributeNames, name);
}

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
