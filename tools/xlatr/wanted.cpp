#include "wanted.hpp"

#include <limits>
#include <string>
#include <string_view>

#include "values.hpp"

namespace xlatr::cli {
namespace {

constexpr std::uint32_t kLargestBus = std::numeric_limits<std::uint16_t>::max();
constexpr std::uint32_t kLargestId = 0x1FFFFFFF;
constexpr std::uint32_t kExtendedLength = 29;

// A list of which every piece, or none, has a "!" before it. True if they have, and it is cut off.
bool takeNegation(std::string_view option, std::vector<std::string>& pieces) {
  std::size_t count = 0;
  const bool first = !pieces.empty() && pieces.front().starts_with('!');
  for (std::string& piece : pieces) {
    if (piece.starts_with('!')) {
      piece.erase(0, 1);
      ++count;
    }
  }
  // "!1,2" means "all but 1 and 2".
  if (count != 0 && count != pieces.size() && (count != 1 || !first)) {
    failValue(option, pieces.front(), "put one ! before the list, or one before each of it");
  }
  return count != 0;
}

struct Range {
  std::uint32_t first;
  std::uint32_t last;
};

Range rangeValue(std::string_view option, std::string_view piece, std::uint32_t largest) {
  const std::size_t dash = piece.find('-', 1);
  const std::uint32_t first = numberValue(option, piece.substr(0, dash), largest);
  const std::uint32_t last =
      dash == std::string_view::npos ? first : numberValue(option, piece.substr(dash + 1), largest);
  if (last < first) {
    failValue(option, piece, "the range ends before it begins");
  }
  return {first, last};
}

xlatr_id_rule idRule(std::string_view option, std::string piece) {
  xlatr_id_rule rule{};
  // "0x123x": but the x of "0x" is none of this.
  if (piece.size() > 2 && (piece.ends_with('x') || piece.ends_with('X'))) {
    rule.length = kExtendedLength;
    piece.pop_back();
  }
  if (const std::size_t slash = piece.find('/'); slash != std::string::npos) {
    rule.first = numberValue(option, std::string_view(piece).substr(0, slash), kLargestId);
    rule.last = rule.first;
    rule.mask = numberValue(option, std::string_view(piece).substr(slash + 1), kLargestId);
    if (rule.mask == 0) {
      rule.first = 0;
      rule.last = kLargestId;
    }
    return rule;
  }
  const Range range = rangeValue(option, piece, kLargestId);
  rule.first = range.first;
  rule.last = range.last;
  return rule;
}

}  // namespace

Wanted::Wanted(const Arguments& arguments) {
  selection_.size = sizeof selection_;
  changes_.size = sizeof changes_;
  readTimes(arguments);
  readBuses(arguments);
  readIdentifiers(arguments);
  readKinds(arguments);
  readDirections(arguments);
  readChanges(arguments);
}

void Wanted::readTimes(const Arguments& arguments) {
  if (arguments.fromTime.empty() && arguments.untilTime.empty()) {
    return;
  }
  constexpr std::int64_t kFarthest = 9'000'000'000'000'000'000;
  TimeValue from{-kFarthest, false};
  TimeValue until{kFarthest, false};
  if (!arguments.fromTime.empty()) {
    from = timeValue("--from-time", arguments.fromTime);
    until.absolute = from.absolute;
  }
  if (!arguments.untilTime.empty()) {
    until = timeValue("--until-time", arguments.untilTime);
    from.absolute = arguments.fromTime.empty() ? until.absolute : from.absolute;
  }
  if (from.absolute != until.absolute) {
    failValue("--until-time", arguments.untilTime, "give both times in seconds, or both as dates");
  }
  if (until.ns <= from.ns) {
    failValue("--until-time", arguments.untilTime, "this is not after --from-time " + arguments.fromTime);
  }
  selection_.from_ns = from.ns;
  selection_.until_ns = until.ns;
  selection_.absolute_times = from.absolute ? 1 : 0;
}

void Wanted::readBuses(const Arguments& arguments) {
  std::vector<std::string> pieces = listValue("--bus", arguments.buses);
  selection_.other_buses = takeNegation("--bus", pieces) ? 1 : 0;
  for (const std::string& piece : pieces) {
    const Range range = rangeValue("--bus", piece, kLargestBus);
    buses_.push_back({static_cast<std::uint16_t>(range.first), static_cast<std::uint16_t>(range.last)});
  }
}

void Wanted::readIdentifiers(const Arguments& arguments) {
  std::vector<std::string> pieces = listValue("--id", arguments.ids);
  selection_.other_ids = takeNegation("--id", pieces) ? 1 : 0;
  for (const std::string& piece : pieces) {
    ids_.push_back(idRule("--id", piece));
  }
}

void Wanted::readKinds(const Arguments& arguments) {
  std::vector<std::string> pieces = listValue("--kind", arguments.kinds);
  const bool others = takeNegation("--kind", pieces);
  std::vector<std::string_view> names;
  for (std::uint32_t kind = 0; kind < XLATR_KIND_COUNT; ++kind) {
    names.emplace_back(xlatr_kind_name(kind));
  }
  std::uint32_t kinds = 0;
  for (const std::string& piece : pieces) {
    kinds |= std::uint32_t{1} << choiceValue("--kind", piece, names);
  }
  constexpr std::uint32_t kAll = (1U << XLATR_KIND_COUNT) - 1;
  selection_.kinds = others ? kAll & ~kinds : kinds;
  if (others && selection_.kinds == 0) {
    failValue("--kind", "", "no kind is left");
  }
}

void Wanted::readDirections(const Arguments& arguments) {
  std::vector<std::string> pieces = listValue("--direction", arguments.directions);
  const bool other = takeNegation("--direction", pieces);
  for (const std::string& piece : pieces) {
    const bool transmits = choiceValue("--direction", piece, {"rx", "tx"}) == 1;
    selection_.directions |= transmits != other ? XLATR_FLAG_TRANSMITTED : XLATR_FLAG_RECEIVED;
  }
}

void Wanted::readChanges(const Arguments& arguments) {
  if (!arguments.shiftTime.empty()) {
    changes_.shift_ns = secondsValue("--shift-time", arguments.shiftTime);
  }
  changes_.rebase = arguments.rebase ? 1 : 0;
  for (const std::string& piece : listValue("--map-bus", arguments.busMap)) {
    const std::size_t sign = piece.find('=');
    if (sign == std::string::npos) {
      failValue("--map-bus", piece, "write it as 1=2");
    }
    for (const std::string_view side :
         {std::string_view(piece).substr(0, sign), std::string_view(piece).substr(sign + 1)}) {
      busMap_.push_back(static_cast<std::uint16_t>(numberValue("--map-bus", side, kLargestBus)));
    }
  }
  if (!arguments.zone.empty()) {
    changes_.zone_known = 1;
    changes_.zone_minutes = zoneValue("--tz", arguments.zone);
  }
}

xlatr_selection Wanted::selection() const {
  xlatr_selection selection = selection_;
  selection.buses = buses_.data();
  selection.bus_count = static_cast<std::uint32_t>(buses_.size());
  selection.ids = ids_.data();
  selection.id_count = static_cast<std::uint32_t>(ids_.size());
  return selection;
}

xlatr_changes Wanted::changes() const {
  xlatr_changes changes = changes_;
  changes.buses = busMap_.data();
  changes.bus_pair_count = static_cast<std::uint32_t>(busMap_.size() / 2);
  return changes;
}

}  // namespace xlatr::cli
