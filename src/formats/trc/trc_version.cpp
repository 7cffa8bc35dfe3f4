#include "formats/trc/trc_version.hpp"

#include "util/render.hpp"

namespace xlatr {
namespace {

static_assert(std::ranges::is_sorted(kTrcVersionNumbers));

constexpr const TrcVersion& kFirstColumnBased =
    *std::ranges::find_if(kTrcVersions, [](const TrcVersion& version) { return version.isColumnBased(); });
static_assert(std::ranges::all_of(kTrcVersions, [](const TrcVersion& version) {
  return !version.isColumnBased() || version.busColumn == ((version.columns & trc_column::kBus) != 0);
}));

// The newest version before the bus column was invented.
constexpr double kLastWithoutBuses = std::prev(std::ranges::find(kTrcVersions, true, &TrcVersion::busColumn))->number;

}  // namespace

const TrcVersion* findTrcHeaderVersion(double targetVersion) {
  constexpr int kDecimals = 1;
  const std::string text = formatFixed(targetVersion, kDecimals);
  const auto* const found = std::ranges::find_if(
      kTrcVersions, [&text](const TrcVersion& version) { return formatFixed(version.number, kDecimals) == text; });
  return found == kTrcVersions.end() ? nullptr : found;
}

bool listsTrcColumns(double fileVersion) {
  return fileVersion >= kFirstColumnBased.number;
}

bool splitsTrcByBus(double targetVersion) {
  const TrcVersion* const known = findTrcVersion(targetVersion);
  return known != nullptr ? !known->busColumn : targetVersion <= kLastWithoutBuses;
}

bool canStandInTrc(const TrcVersion& version, std::uint32_t length, MessageType type, MessageKind kind,
                   bool columnBased) {
  if ((kind == MessageKind::XL && !version.limits.xl) || length > version.limits.length ||
      (kind == MessageKind::DT && length > version.limits.dataLength)) {
    return false;
  }
  const bool hasType = type != MessageType::Unknown;
  return version.isColumnBased() ? kind != MessageKind::Unknown && (hasType || columnBased) : hasType;
}

}  // namespace xlatr
