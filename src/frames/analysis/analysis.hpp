// What the traffic of a trace is like.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "frames/analysis/cycle_sketch.hpp"
#include "frames/analysis/frame_columns.hpp"
#include "frames/analysis/frame_times.hpp"
#include "frames/analysis/identifier_index.hpp"
#include "frames/analysis/time_bins.hpp"
#include "frames/frame.hpp"
#include "frames/frame_batch.hpp"

namespace xlatr {

struct AnalysisSettings {
  BitRates rates = {};
  // Of a bus: a silence of at least this length is a gap.
  std::uint64_t gapNs = 1'000'000'000;
  // Error frames of a bus that follow each other within this time are a burst.
  std::uint64_t burstNs = 10'000'000;
  // Frames of identifiers beyond this number are counted together. An identifier takes 2 kB.
  std::size_t mostIdentifiers = 32768;

  static constexpr std::size_t kMostIdentifiers = std::size_t{1} << 20;
};

// Data, remote, error, overload and LIN frames, statuses, counters and LIN events are traffic: what has a bus and a
// time of its own. First and last times are the earliest and the latest, unless said otherwise.
struct AnalysisSummary {
  std::array<std::uint64_t, kFrameKindCount> frames{};
  std::uint64_t traffic = 0;
  std::int64_t firstNs = 0;  // of the traffic; 0 if there is none
  std::int64_t lastNs = 0;
  std::uint64_t stepsBack = 0;              // frames of the traffic that are before the one before them
  std::uint64_t otherIdentifierFrames = 0;  // of identifiers beyond the limit
  std::uint64_t otherBusFrames = 0;         // of buses beyond the limit, which count for no bus and no identifier

  [[nodiscard]] std::uint64_t durationNs() const {
    return static_cast<std::uint64_t>(lastNs) - static_cast<std::uint64_t>(firstNs);
  }
};

inline constexpr std::size_t kBusBins = 256;
inline constexpr std::size_t kIdentifierBins = 64;

struct BusStatistics {
  std::uint16_t bus = 0;
  std::array<std::uint64_t, kFrameKindCount> frames{};
  std::uint64_t traffic = 0;
  std::uint64_t dataBytes = 0;
  std::uint32_t identifiers = 0;
  double busyNs = 0.0;         // 0 if the bit rate is unknown
  double busiestSecond = 0.0;  // ns on the bus in the busiest second, counted from whole seconds of the trace's time

  std::int64_t firstNs = 0;
  std::int64_t lastNs = 0;
  std::uint64_t stepsBack = 0;

  std::uint64_t gaps = 0;
  std::uint64_t longestGapNs = 0;  // the longest time without traffic, a gap or not
  std::int64_t longestGapBeginNs = 0;
  std::uint64_t longestGapPlace = 0;  // of the frame that ended it

  std::uint64_t errorBursts = 0;  // of at least two error frames
  std::uint64_t longestBurst = 0;
  std::int64_t longestBurstBeginNs = 0;

  std::uint64_t busOffs = 0;  // statuses that say so
  std::uint32_t highestTxErrors = 0;
  std::uint32_t highestRxErrors = 0;

  std::array<std::uint64_t, kBusBins> framesOverTime{};
  std::array<double, kBusBins> busyOverTime{};  // ns

  [[nodiscard]] std::uint64_t framesOf(FrameKind kind) const { return frames[static_cast<std::size_t>(kind)]; }

 private:
  friend class Analysis;

  std::int64_t previousNs = 0;
  std::int64_t secondBeginNs = 0;
  double busyInSecond = 0.0;
  std::int64_t burstBeginNs = 0;
  std::int64_t errorNs = 0;
  std::uint64_t burst = 0;
};

// Of the data, remote or LIN frames of an identifier on a bus. What each frame touches stands first.
struct alignas(64) IdentifierStatistics {
  static constexpr std::size_t kShownBytes = 64;
  static constexpr std::size_t kOften = 384;  // bytes from the beginning, up to the end of `changed`

  std::uint32_t id = 0;
  std::uint16_t bus = 0;
  FrameKind kind = FrameKind::Data;
  bool extended = false;

  std::uint16_t flags = 0;  // those that any of the frames has
  std::uint16_t lastDlc = 0;
  std::uint32_t shortest = 0;  // bytes of data
  std::uint32_t longest = 0;
  std::uint32_t lastLength = 0;
  std::uint64_t frames = 0;
  std::uint64_t dataBytes = 0;
  // Of the first and the last frame in the order of the trace.
  std::int64_t firstNs = 0;
  std::int64_t lastNs = 0;
  std::uint64_t firstPlace = 0;
  std::uint64_t lastPlace = 0;

  // Times between a frame and the next one that is not before it.
  std::uint64_t cycles = 0;
  std::uint64_t shortestCycleNs = 0;
  std::uint64_t longestCycleNs = 0;
  std::int64_t longestCycleBeginNs = 0;
  std::uint64_t longestCyclePlace = 0;  // of the frame at its end
  double meanCycleNs = 0.0;
  std::uint64_t stepsBack = 0;  // the other frames but the first

  double cycleSquares = 0.0;  // of the distances from the mean

  std::array<std::uint8_t, kShownBytes> lastData{};  // the first bytes of it
  std::array<std::uint8_t, kShownBytes> changed{};   // bits that were different in two frames, one after the other

  std::array<std::uint32_t, kIdentifierBins> framesOverTime{};
  CycleSketch cycleSketch;

  [[nodiscard]] double cycleDeviationNs() const;
  // That 99 % of the cycles do not exceed.
  [[nodiscard]] std::uint64_t slowCycleNs() const {
    constexpr double kPart = 0.99;
    return cycleSketch.quantile(kPart, shortestCycleNs, longestCycleNs);
  }
};

// Gathers all of this in one pass, in memory that is bounded whatever is added: 64 MB with 32,768 identifiers and 5 MB
// with 1,024 buses. Nothing is allocated per frame. One thread at a time.
class Analysis {
 public:
  static constexpr std::size_t kMostBuses = 1024;

  explicit Analysis(const AnalysisSettings& settings = {});

  void add(const FrameColumns& frames);
  void add(const FrameBatch& batch) { add(columnsOf(batch)); }

  [[nodiscard]] const AnalysisSummary& summary() const { return summary_; }
  [[nodiscard]] std::size_t busCount() const { return buses_.size(); }
  [[nodiscard]] std::size_t identifierCount() const { return identifiers_.size(); }
  // By number.
  [[nodiscard]] std::vector<const BusStatistics*> buses() const;
  // By bus, kind, length of the identifier, identifier.
  [[nodiscard]] std::vector<const IdentifierStatistics*> identifiers() const;

  [[nodiscard]] const BinClock& busClock() const { return busClock_; }
  [[nodiscard]] const BinClock& identifierClock() const { return identifierClock_; }
  [[nodiscard]] const AnalysisSettings& settings() const { return settings_; }

  // The part of the time, from 0 to 1, in which a bus was busy, over all of the trace and in the busiest second;
  // nothing if no rate is known or no time passes.
  [[nodiscard]] std::optional<double> load(const BusStatistics& bus) const;
  [[nodiscard]] std::optional<double> highestLoad(const BusStatistics& bus) const;

 private:
  struct Row;

  [[nodiscard]] static std::uint64_t keyOf(const FrameColumns& frames, std::size_t at);
  [[nodiscard]] std::uint32_t fetchIdentifier(const FrameColumns& frames, std::size_t at) const;
  void addFrame(const FrameColumns& frames, std::size_t at, std::uint32_t known);
  void addTraffic(const Row& row);
  [[nodiscard]] BusStatistics* busOf(std::uint16_t number);
  void widenBins(std::int64_t timeNs);
  void countBus(BusStatistics& bus, const Row& row, double busyNs);
  void countError(BusStatistics& bus, std::int64_t timeNs) const;
  [[nodiscard]] IdentifierStatistics* identifierOf(BusStatistics& bus, const Row& row);
  void countIdentifier(IdentifierStatistics& identifier, const Row& row);

  AnalysisSettings settings_;
  FrameTimes frameTimes_;
  AnalysisSummary summary_;
  std::int64_t previousNs_ = 0;
  std::uint64_t added_ = 0;
  std::vector<std::uint16_t> busRows_;  // by number
  std::deque<BusStatistics> buses_;
  IdentifierIndex index_;
  std::deque<IdentifierStatistics> identifiers_;
  BinClock busClock_{kBusBins};
  BinClock identifierClock_{kIdentifierBins};
};

}  // namespace xlatr
