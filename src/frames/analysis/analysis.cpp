#include "frames/analysis/analysis.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <tuple>

#include "messages/enumerations.hpp"

namespace xlatr {
namespace {

// What is promised of memory, and that what is fetched early is what frames touch.
static_assert(sizeof(IdentifierStatistics) <= 2048);
static_assert(offsetof(IdentifierStatistics, framesOverTime) <= IdentifierStatistics::kOften);

constexpr std::int64_t kSecondNs = 1'000'000'000;
constexpr std::uint16_t kNoRow = 0xFFFF;

constexpr bool isTraffic(FrameKind kind) {
  return kind != FrameKind::Event && kind != FrameKind::Comment;
}

constexpr bool hasIdentifier(FrameKind kind) {
  return kind == FrameKind::Data || kind == FrameKind::Remote || kind == FrameKind::Lin;
}

// From an earlier time to a later one, which may be farther away than a signed number can say.
constexpr std::uint64_t distance(std::int64_t earlierNs, std::int64_t laterNs) {
  return static_cast<std::uint64_t>(laterNs) - static_cast<std::uint64_t>(earlierNs);
}

// The whole second that the time is in.
constexpr std::int64_t secondOf(std::int64_t timeNs) {
  const std::int64_t rest = timeNs % kSecondNs;
  return timeNs - (rest < 0 ? rest + kSecondNs : rest);
}

void noteHighest(std::uint32_t& highest, const FrameColumns::Attribute& attribute, std::size_t row) {
  if (attribute.has(row)) {
    highest = std::max(highest, attribute.values[row]);
  }
}

// Notes the bits that differ from those of the payload before.
void noteChanges(IdentifierStatistics& identifier, const std::uint8_t* data, std::size_t length) {
  constexpr std::size_t kWord = 8;
  const std::size_t shown = std::min(length, IdentifierStatistics::kShownBytes);
  if (identifier.frames > 0) {
    const std::size_t common = std::min<std::size_t>(shown, identifier.lastLength);
    std::size_t at = 0;
    for (; at + kWord <= common; at += kWord) {
      std::uint64_t before = 0;
      std::uint64_t now = 0;
      std::uint64_t changed = 0;
      std::memcpy(&before, identifier.lastData.data() + at, kWord);
      std::memcpy(&now, data + at, kWord);
      std::memcpy(&changed, identifier.changed.data() + at, kWord);
      changed |= before ^ now;
      std::memcpy(identifier.changed.data() + at, &changed, kWord);
    }
    for (; at < common; ++at) {
      identifier.changed[at] = static_cast<std::uint8_t>(identifier.changed[at] | (identifier.lastData[at] ^ data[at]));
    }
  }
  if (shown > 0) {
    std::memcpy(identifier.lastData.data(), data, shown);
  }
}

}  // namespace

struct Analysis::Row {
  const FrameColumns& frames;
  std::size_t at;
  FrameKind kind;
  std::int64_t timeNs;
  std::uint64_t place;
  std::uint32_t known;  // the row of its identifier, if there was one

  [[nodiscard]] std::uint16_t flags() const { return frames.flags[at]; }
  [[nodiscard]] bool isExtended() const { return (flags() & frame_flag::kExtended) != 0; }
  [[nodiscard]] std::size_t length() const {
    return static_cast<std::size_t>(frames.dataOffsets[at + 1] - frames.dataOffsets[at]);
  }
  [[nodiscard]] const std::uint8_t* data() const { return frames.data + frames.dataOffsets[at]; }
};

double IdentifierStatistics::cycleDeviationNs() const {
  return cycles == 0 ? 0.0 : std::sqrt(cycleSquares / static_cast<double>(cycles));
}

Analysis::Analysis(const AnalysisSettings& settings)
    : settings_(settings), frameTimes_(settings.rates), busRows_(std::size_t{1} << 16U, kNoRow) {
  settings_.mostIdentifiers = std::min(settings_.mostIdentifiers, AnalysisSettings::kMostIdentifiers);
}

void Analysis::add(const FrameColumns& frames) {
  constexpr std::size_t kAtOnce = 16;
  std::array<std::uint32_t, kAtOnce> known{};
  for (std::size_t from = 0; from < frames.rows; from += kAtOnce) {
    const std::size_t count = std::min(kAtOnce, frames.rows - from);
    // The rows of many identifiers don't fit into the fast memory: all of them are fetched before one is needed.
    for (std::size_t at = 0; at < count; ++at) {
      known[at] = fetchIdentifier(frames, from + at);
    }
    for (std::size_t at = 0; at < count; ++at) {
      addFrame(frames, from + at, known[at]);
    }
  }
}

std::uint32_t Analysis::fetchIdentifier(const FrameColumns& frames, std::size_t at) const {
  if (!hasIdentifier(static_cast<FrameKind>(frames.kinds[at]))) {
    return IdentifierIndex::kNone;
  }
  const std::uint32_t number = index_.find(keyOf(frames, at));
  if (number != IdentifierIndex::kNone) {
    constexpr std::size_t kLine = 64;
    const auto* const row = reinterpret_cast<const char*>(&identifiers_[number]);
    for (std::size_t line = 0; line < IdentifierStatistics::kOften; line += kLine) {
      __builtin_prefetch(row + line, 1);
    }
  }
  return number;
}

void Analysis::addFrame(const FrameColumns& frames, std::size_t at, std::uint32_t known) {
  const auto kind = static_cast<FrameKind>(frames.kinds[at]);
  ++summary_.frames[static_cast<std::size_t>(kind)];
  ++added_;
  if (isTraffic(kind)) {
    const std::uint64_t place = frames.places == nullptr ? added_ : frames.places[at];
    addTraffic({frames, at, kind, frames.times[at], place, known});
  }
}

void Analysis::addTraffic(const Row& row) {
  const std::int64_t timeNs = row.timeNs;
  if (summary_.traffic++ == 0) {
    summary_.firstNs = timeNs;
    summary_.lastNs = timeNs;
    busClock_.start(timeNs);
    identifierClock_.start(timeNs);
  } else if (timeNs < previousNs_) {
    ++summary_.stepsBack;
  }
  previousNs_ = timeNs;
  summary_.firstNs = std::min(summary_.firstNs, timeNs);
  summary_.lastNs = std::max(summary_.lastNs, timeNs);
  BusStatistics* const bus = busOf(row.frames.buses[row.at]);
  if (bus == nullptr) {
    ++summary_.otherBusFrames;
    return;
  }
  widenBins(timeNs);
  countBus(*bus, row, frameTimes_.of(row.kind, row.flags(), row.length()));
  if (hasIdentifier(row.kind)) {
    if (IdentifierStatistics* const identifier = identifierOf(*bus, row); identifier != nullptr) {
      countIdentifier(*identifier, row);
    } else {
      ++summary_.otherIdentifierFrames;
    }
  }
}

BusStatistics* Analysis::busOf(std::uint16_t number) {
  std::uint16_t& row = busRows_[number];
  if (row == kNoRow) {
    if (buses_.size() == kMostBuses) {
      return nullptr;
    }
    row = static_cast<std::uint16_t>(buses_.size());
    buses_.emplace_back().bus = number;
  }
  return &buses_[row];
}

void Analysis::widenBins(std::int64_t timeNs) {
  if (!busClock_.holds(timeNs)) {
    const unsigned doublings = busClock_.doublingsFor(timeNs);
    for (BusStatistics& bus : buses_) {
      foldBins(bus.framesOverTime, doublings);
      foldBins(bus.busyOverTime, doublings);
    }
    busClock_.widen(doublings);
  }
  if (!identifierClock_.holds(timeNs)) {
    const unsigned doublings = identifierClock_.doublingsFor(timeNs);
    for (IdentifierStatistics& identifier : identifiers_) {
      foldBins(identifier.framesOverTime, doublings);
    }
    identifierClock_.widen(doublings);
  }
}

void Analysis::countBus(BusStatistics& bus, const Row& row, double busyNs) {
  const std::int64_t timeNs = row.timeNs;
  if (bus.traffic++ == 0) {
    bus.firstNs = timeNs;
    bus.lastNs = timeNs;
    bus.secondBeginNs = secondOf(timeNs);
  } else if (timeNs < bus.previousNs) {
    ++bus.stepsBack;
  } else {
    const std::uint64_t silence = distance(bus.previousNs, timeNs);
    bus.gaps += silence >= settings_.gapNs ? 1U : 0U;
    if (silence > bus.longestGapNs) {
      bus.longestGapNs = silence;
      bus.longestGapBeginNs = bus.previousNs;
      bus.longestGapPlace = row.place;
    }
  }
  bus.previousNs = timeNs;
  bus.firstNs = std::min(bus.firstNs, timeNs);
  bus.lastNs = std::max(bus.lastNs, timeNs);

  ++bus.frames[static_cast<std::size_t>(row.kind)];
  bus.busyNs += busyNs;
  // A second ends with the first frame of another one, so that times which go back can't fill one twice.
  if (distance(bus.secondBeginNs, timeNs) >= static_cast<std::uint64_t>(kSecondNs)) {
    bus.secondBeginNs = secondOf(timeNs);
    bus.busyInSecond = 0.0;
  }
  bus.busyInSecond += busyNs;
  bus.busiestSecond = std::max(bus.busiestSecond, bus.busyInSecond);

  const std::size_t bin = busClock_.binOf(timeNs);
  ++bus.framesOverTime[bin];
  bus.busyOverTime[bin] += busyNs;

  if (hasIdentifier(row.kind)) {
    bus.dataBytes += row.length();
    return;
  }
  if (row.kind == FrameKind::Error) {
    countError(bus, timeNs);
  }
  const auto off = static_cast<std::uint32_t>(WarningErrors::BusOff);
  if (row.frames.busState.has(row.at) && (row.frames.busState.values[row.at] & off) != 0) {
    ++bus.busOffs;
  }
  noteHighest(bus.highestTxErrors, row.frames.txErrors, row.at);
  noteHighest(bus.highestRxErrors, row.frames.rxErrors, row.at);
}

void Analysis::countError(BusStatistics& bus, std::int64_t timeNs) const {
  const bool follows = bus.burst > 0 && timeNs >= bus.errorNs && distance(bus.errorNs, timeNs) <= settings_.burstNs;
  bus.errorNs = timeNs;
  if (!follows) {
    bus.burst = 1;
    bus.burstBeginNs = timeNs;
    return;
  }
  bus.errorBursts += ++bus.burst == 2 ? 1U : 0U;
  if (bus.burst > bus.longestBurst) {
    bus.longestBurst = bus.burst;
    bus.longestBurstBeginNs = bus.burstBeginNs;
  }
}

std::uint64_t Analysis::keyOf(const FrameColumns& frames, std::size_t at) {
  constexpr unsigned kBusShift = 32;
  constexpr unsigned kKindShift = 48;
  constexpr unsigned kLengthShift = 56;
  return frames.ids[at] | std::uint64_t{frames.buses[at]} << kBusShift | std::uint64_t{frames.kinds[at]} << kKindShift |
         std::uint64_t{(frames.flags[at] & frame_flag::kExtended) != 0} << kLengthShift;
}

IdentifierStatistics* Analysis::identifierOf(BusStatistics& bus, const Row& row) {
  if (row.known != IdentifierIndex::kNone) {
    return &identifiers_[row.known];
  }
  const std::uint64_t key = keyOf(row.frames, row.at);
  std::uint32_t number = index_.find(key);  // it may have been added since
  if (number == IdentifierIndex::kNone) {
    if (identifiers_.size() >= settings_.mostIdentifiers) {
      return nullptr;
    }
    number = index_.add(key);
    IdentifierStatistics& made = identifiers_.emplace_back();
    made.id = row.frames.ids[row.at];
    made.bus = bus.bus;
    made.kind = row.kind;
    made.extended = row.isExtended();
    ++bus.identifiers;
  }
  return &identifiers_[number];
}

void Analysis::countIdentifier(IdentifierStatistics& identifier, const Row& row) {
  const auto length = static_cast<std::uint32_t>(row.length());
  const std::int64_t timeNs = row.timeNs;
  if (identifier.frames == 0) {
    identifier.firstNs = timeNs;
    identifier.firstPlace = row.place;
    identifier.shortest = length;
  } else if (timeNs < identifier.lastNs) {
    ++identifier.stepsBack;
  } else {
    const std::uint64_t cycle = distance(identifier.lastNs, timeNs);
    identifier.shortestCycleNs = identifier.cycles == 0 ? cycle : std::min(identifier.shortestCycleNs, cycle);
    if (cycle > identifier.longestCycleNs || identifier.cycles == 0) {
      identifier.longestCycleNs = cycle;
      identifier.longestCycleBeginNs = identifier.lastNs;
      identifier.longestCyclePlace = row.place;
    }
    ++identifier.cycles;
    identifier.cycleSketch.add(cycle);
    // Welford's way: the sum of squares stays exact for long cycles that hardly differ.
    const double off = static_cast<double>(cycle) - identifier.meanCycleNs;
    identifier.meanCycleNs += off / static_cast<double>(identifier.cycles);
    identifier.cycleSquares += off * (static_cast<double>(cycle) - identifier.meanCycleNs);
  }
  noteChanges(identifier, row.data(), length);
  identifier.lastNs = timeNs;
  identifier.lastPlace = row.place;
  identifier.flags = static_cast<std::uint16_t>(identifier.flags | row.flags());
  identifier.lastDlc = row.frames.dlcs[row.at];
  identifier.shortest = std::min(identifier.shortest, length);
  identifier.longest = std::max(identifier.longest, length);
  identifier.lastLength = length;
  identifier.dataBytes += length;
  ++identifier.frames;
  std::uint32_t& inBin = identifier.framesOverTime[identifierClock_.binOf(timeNs)];
  inBin += inBin < std::numeric_limits<std::uint32_t>::max() ? 1U : 0U;
}

std::vector<const BusStatistics*> Analysis::buses() const {
  std::vector<const BusStatistics*> sorted;
  sorted.reserve(buses_.size());
  for (const BusStatistics& bus : buses_) {
    sorted.push_back(&bus);
  }
  std::ranges::sort(sorted, {}, [](const BusStatistics* bus) { return bus->bus; });
  return sorted;
}

std::vector<const IdentifierStatistics*> Analysis::identifiers() const {
  std::vector<const IdentifierStatistics*> sorted;
  sorted.reserve(identifiers_.size());
  for (const IdentifierStatistics& identifier : identifiers_) {
    sorted.push_back(&identifier);
  }
  std::ranges::sort(sorted, {}, [](const IdentifierStatistics* each) {
    return std::tuple(each->bus, each->kind, each->extended, each->id);
  });
  return sorted;
}

std::optional<double> Analysis::load(const BusStatistics& bus) const {
  const std::uint64_t duration = summary_.durationNs();
  if (bus.busyNs == 0.0 || duration == 0) {
    return std::nullopt;
  }
  return bus.busyNs / static_cast<double>(duration);
}

std::optional<double> Analysis::highestLoad(const BusStatistics& bus) const {
  const std::optional<double> mean = load(bus);
  if (!mean) {
    return std::nullopt;
  }
  // A trace that is shorter than a second has no whole one.
  return std::max(*mean, bus.busiestSecond / static_cast<double>(kSecondNs));
}

}  // namespace xlatr
