#include "frames/analysis/analysis.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <span>
#include <string>
#include <tuple>
#include <vector>

#include "frames/analysis/cycle_sketch.hpp"
#include "frames/analysis/frame_times.hpp"
#include "messages/enumerations.hpp"
#include "support/random_frames.hpp"

namespace xlatr {
namespace {

constexpr std::int64_t kAnalysedMs = 1'000'000;
constexpr std::int64_t kAnalysedSecond = 1'000 * kAnalysedMs;

Frame analysedFrame(std::int64_t timeNs, std::uint32_t id, std::span<const std::uint8_t> data, std::uint16_t bus = 1) {
  Frame frame;
  frame.timeNs = timeNs;
  frame.bus = bus;
  frame.id = id;
  frame.data = data;
  frame.dlc = static_cast<std::uint16_t>(data.size());
  frame.flags = frame_flag::kReceived;
  return frame;
}

Frame analysedKind(std::int64_t timeNs, FrameKind kind, std::uint16_t bus = 1) {
  Frame frame;
  frame.timeNs = timeNs;
  frame.kind = kind;
  frame.bus = bus;
  return frame;
}

// Frames are added one at a time, so that what a batch ends with does not matter.
Analysis analysisOf(const std::vector<Frame>& frames, const AnalysisSettings& settings = {}) {
  Analysis analysis(settings);
  FrameBatch batch;
  std::uint64_t place = 0;
  for (Frame frame : frames) {
    frame.place = ++place;
    batch.clear();
    batch.append(frame);
    analysis.add(batch);
  }
  return analysis;
}

constexpr std::array<std::uint8_t, 8> kEightZeros{};

TEST(Analysis, ofNothingIsEmpty) {
  const Analysis analysis;
  EXPECT_EQ(analysis.summary().traffic, 0U);
  EXPECT_EQ(analysis.summary().durationNs(), 0U);
  EXPECT_TRUE(analysis.buses().empty());
  EXPECT_TRUE(analysis.identifiers().empty());
}

TEST(Analysis, countsKindsAndTimes) {
  const Analysis analysis = analysisOf(
      {analysedKind(-99 * kAnalysedSecond, FrameKind::Comment), analysedFrame(5 * kAnalysedMs, 1, kEightZeros),
       analysedFrame(-2 * kAnalysedMs, 1, kEightZeros), analysedKind(9 * kAnalysedMs, FrameKind::Error, 2),
       analysedKind(9 * kAnalysedSecond, FrameKind::Event)});
  const AnalysisSummary& summary = analysis.summary();
  EXPECT_EQ(summary.frames[static_cast<std::size_t>(FrameKind::Data)], 2U);
  EXPECT_EQ(summary.frames[static_cast<std::size_t>(FrameKind::Error)], 1U);
  EXPECT_EQ(summary.frames[static_cast<std::size_t>(FrameKind::Comment)], 1U);
  EXPECT_EQ(summary.frames[static_cast<std::size_t>(FrameKind::Event)], 1U);
  EXPECT_EQ(summary.traffic, 3U);
  EXPECT_EQ(summary.firstNs, -2 * kAnalysedMs);
  EXPECT_EQ(summary.lastNs, 9 * kAnalysedMs);
  EXPECT_EQ(summary.durationNs(), 11U * kAnalysedMs);
  EXPECT_EQ(summary.stepsBack, 1U);
  ASSERT_EQ(analysis.buses().size(), 2U);
  const BusStatistics& bus = *analysis.buses()[0];
  EXPECT_EQ(bus.bus, 1U);
  EXPECT_EQ(bus.framesOf(FrameKind::Data), 2U);
  EXPECT_EQ(bus.dataBytes, 16U);
  EXPECT_EQ(bus.identifiers, 1U);
  EXPECT_EQ(bus.stepsBack, 1U);
  EXPECT_EQ(bus.firstNs, -2 * kAnalysedMs);
  EXPECT_EQ(bus.lastNs, 5 * kAnalysedMs);
  EXPECT_EQ(analysis.buses()[1]->framesOf(FrameKind::Error), 1U);
}

TEST(Analysis, measuresCyclesOfAnIdentifier) {
  // Cycles of 10, 20 and 30 ms, and one step back.
  const Analysis analysis = analysisOf(
      {analysedFrame(0, 0x123, kEightZeros), analysedFrame(10 * kAnalysedMs, 0x123, kEightZeros),
       analysedFrame(30 * kAnalysedMs, 0x123, kEightZeros), analysedFrame(20 * kAnalysedMs, 0x123, kEightZeros),
       analysedFrame(50 * kAnalysedMs, 0x123, kEightZeros)});
  ASSERT_EQ(analysis.identifiers().size(), 1U);
  const IdentifierStatistics& identifier = *analysis.identifiers()[0];
  EXPECT_EQ(identifier.id, 0x123U);
  EXPECT_EQ(identifier.bus, 1U);
  EXPECT_EQ(identifier.kind, FrameKind::Data);
  EXPECT_FALSE(identifier.extended);
  EXPECT_EQ(identifier.flags, frame_flag::kReceived);
  EXPECT_EQ(identifier.frames, 5U);
  EXPECT_EQ(identifier.cycles, 3U);
  EXPECT_EQ(identifier.stepsBack, 1U);
  EXPECT_EQ(identifier.shortestCycleNs, 10U * kAnalysedMs);
  EXPECT_EQ(identifier.longestCycleNs, 30U * kAnalysedMs);
  EXPECT_EQ(identifier.longestCycleBeginNs, 20 * kAnalysedMs);
  EXPECT_EQ(identifier.longestCyclePlace, 5U);
  EXPECT_DOUBLE_EQ(identifier.meanCycleNs, 20e6);
  EXPECT_NEAR(identifier.cycleDeviationNs(), std::sqrt(200.0 / 3.0) * 1e6, 1.0);
  EXPECT_EQ(identifier.firstNs, 0);
  EXPECT_EQ(identifier.lastNs, 50 * kAnalysedMs);
  EXPECT_EQ(identifier.firstPlace, 1U);
  EXPECT_EQ(identifier.lastPlace, 5U);
}

TEST(Analysis, hasNoCycleOfOneFrame) {
  const Analysis analysis = analysisOf({analysedFrame(0, 1, kEightZeros)});
  EXPECT_EQ(analysis.identifiers()[0]->cycleDeviationNs(), 0.0);
  EXPECT_EQ(analysis.identifiers()[0]->slowCycleNs(), 0U);
}

TEST(Analysis, showsWhichBitsChange) {
  const std::array<std::uint8_t, 10> first = {1, 2, 3, 4, 5, 6, 7, 8, 0xF0, 1};
  const std::array<std::uint8_t, 10> second = {1, 2, 3, 4, 5, 6, 0xF7, 8, 0x0F, 1};
  const std::array<std::uint8_t, 2> third = {3, 2};
  const Analysis analysis = analysisOf({analysedFrame(0, 1, first), analysedFrame(1, 1, second),
                                        analysedFrame(2, 1, third), analysedFrame(3, 1, second)});
  const IdentifierStatistics& identifier = *analysis.identifiers()[0];
  std::array<std::uint8_t, 64> expected{};
  expected[0] = 2;
  expected[6] = 0xF0;
  expected[8] = 0xFF;
  EXPECT_EQ(identifier.changed, expected);
  EXPECT_EQ(identifier.shortest, 2U);
  EXPECT_EQ(identifier.longest, 10U);
  EXPECT_EQ(identifier.lastLength, 10U);
  EXPECT_EQ(identifier.lastDlc, 10U);
  EXPECT_EQ(identifier.dataBytes, 32U);
  EXPECT_TRUE(std::ranges::equal(std::span(identifier.lastData).first(10), second));
}

TEST(Analysis, showsTheFirstBytesOfLongData) {
  std::vector<std::uint8_t> data(2048, 0xAB);
  Frame frame = analysedFrame(0, 1, data);
  frame.set(frame_flag::kXl);
  const Analysis analysis = analysisOf({frame, frame});
  const IdentifierStatistics& identifier = *analysis.identifiers()[0];
  EXPECT_EQ(identifier.lastLength, 2048U);
  EXPECT_EQ(identifier.lastData.back(), 0xAB);
  EXPECT_EQ(identifier.changed.back(), 0);
}

TEST(Analysis, tellsIdentifiersApart) {
  Frame extended = analysedFrame(0, 1, kEightZeros);
  extended.set(frame_flag::kExtended);
  Frame remote = analysedFrame(0, 1, {});
  remote.kind = FrameKind::Remote;
  Frame lin = analysedFrame(0, 1, kEightZeros);
  lin.kind = FrameKind::Lin;
  const Analysis analysis = analysisOf({lin, remote, extended, analysedFrame(0, 1, kEightZeros, 2),
                                        analysedFrame(0, 2, kEightZeros), analysedFrame(0, 1, kEightZeros), extended});
  std::string order;
  for (const IdentifierStatistics* const each : analysis.identifiers()) {
    order += std::to_string(each->bus) + ":" + std::string(frameKindName(each->kind)) + ":" + std::to_string(each->id) +
             (each->extended ? "x" : "") + "*" + std::to_string(each->frames) + " ";
  }
  EXPECT_EQ(order, "1:data:1*1 1:data:2*1 1:data:1x*2 1:remote:1*1 1:lin:1*1 2:data:1*1 ");
  EXPECT_EQ(analysis.buses()[0]->identifiers, 5U);
}

TEST(Analysis, findsTheLongestGap) {
  AnalysisSettings settings;
  settings.gapNs = static_cast<std::uint64_t>(2 * kAnalysedSecond);
  const Analysis analysis = analysisOf(
      {analysedFrame(0, 1, kEightZeros), analysedFrame(2 * kAnalysedSecond, 2, kEightZeros),
       analysedFrame(3 * kAnalysedSecond, 1, kEightZeros, 2), analysedKind(8 * kAnalysedSecond, FrameKind::LinEvent),
       analysedFrame(9 * kAnalysedSecond, 1, kEightZeros)},
      settings);
  const BusStatistics& bus = *analysis.buses()[0];
  EXPECT_EQ(bus.gaps, 2U);
  EXPECT_EQ(bus.longestGapNs, 6U * kAnalysedSecond);
  EXPECT_EQ(bus.longestGapBeginNs, 2 * kAnalysedSecond);
  EXPECT_EQ(bus.longestGapPlace, 4U);
  EXPECT_EQ(analysis.buses()[1]->gaps, 0U);
}

TEST(Analysis, findsBurstsOfErrors) {
  AnalysisSettings settings;
  settings.burstNs = static_cast<std::uint64_t>(10 * kAnalysedMs);
  std::vector<Frame> frames;
  for (const std::int64_t at : {0, 5, 100, 110, 120, 131, 120}) {
    frames.push_back(analysedKind(at * kAnalysedMs, FrameKind::Error));
  }
  const BusStatistics bus = *analysisOf(frames, settings).buses()[0];
  EXPECT_EQ(bus.framesOf(FrameKind::Error), 7U);
  EXPECT_EQ(bus.errorBursts, 2U);
  EXPECT_EQ(bus.longestBurst, 3U);
  EXPECT_EQ(bus.longestBurstBeginNs, 100 * kAnalysedMs);
}

TEST(Analysis, notesTheStateOfTheController) {
  Frame counters = analysedKind(0, FrameKind::Counters);
  counters.attributes.set(FrameAttribute::TxErrors, 130);
  counters.attributes.set(FrameAttribute::RxErrors, 7);
  Frame off = analysedKind(1, FrameKind::Status);
  off.attributes.set(FrameAttribute::BusState, static_cast<std::uint32_t>(WarningErrors::BusOff) | 1U);
  Frame light = analysedKind(2, FrameKind::Status);
  light.attributes.set(FrameAttribute::BusState, static_cast<std::uint32_t>(WarningErrors::BusLight));
  Frame fewer = counters;
  fewer.attributes.set(FrameAttribute::TxErrors, 3);
  const BusStatistics bus = *analysisOf({counters, off, light, fewer}).buses()[0];
  EXPECT_EQ(bus.busOffs, 1U);
  EXPECT_EQ(bus.highestTxErrors, 130U);
  EXPECT_EQ(bus.highestRxErrors, 7U);
}

TEST(Analysis, countsOverTime) {
  const Analysis short_ = analysisOf({analysedFrame(kAnalysedSecond, 1, kEightZeros),
                                      analysedFrame(kAnalysedSecond + (1 << 20), 1, kEightZeros),
                                      analysedFrame(kAnalysedSecond - 1, 1, kEightZeros),
                                      analysedFrame(kAnalysedSecond + (63 << 20), 1, kEightZeros)});
  EXPECT_EQ(short_.identifierClock().originNs(), kAnalysedSecond);
  EXPECT_EQ(short_.identifierClock().widthNs(), 1U << 20);
  EXPECT_EQ(short_.identifiers()[0]->framesOverTime[0], 2U);
  EXPECT_EQ(short_.identifiers()[0]->framesOverTime[1], 1U);
  EXPECT_EQ(short_.identifiers()[0]->framesOverTime[63], 1U);

  // A later frame makes the bins wider, and those of all identifiers.
  const Analysis wide = analysisOf(
      {analysedFrame(0, 1, kEightZeros), analysedFrame(1 << 20, 1, kEightZeros), analysedFrame(2 << 20, 1, kEightZeros),
       analysedFrame(std::int64_t{128} << 20, 2, kEightZeros), analysedFrame(3 << 20, 1, kEightZeros)});
  EXPECT_EQ(wide.identifierClock().widthNs(), 4U << 20);
  EXPECT_EQ(wide.identifiers()[0]->framesOverTime[0], 4U);
  EXPECT_EQ(wide.identifiers()[1]->framesOverTime[32], 1U);
  EXPECT_EQ(wide.busClock().widthNs(), 1U << 20);
  EXPECT_EQ(wide.buses()[0]->framesOverTime[3], 1U);
  EXPECT_EQ(wide.buses()[0]->framesOverTime[128], 1U);
}

TEST(Analysis, bearsTheFarthestTimes) {
  const Analysis analysis =
      analysisOf({analysedFrame(-kFarthestNs, 1, kEightZeros), analysedFrame(kFarthestNs, 1, kEightZeros),
                  analysedFrame(-kFarthestNs, 1, kEightZeros)});
  EXPECT_EQ(analysis.summary().durationNs(), 18'000'000'000'000'000'000U);
  const IdentifierStatistics& identifier = *analysis.identifiers()[0];
  EXPECT_EQ(identifier.longestCycleNs, 18'000'000'000'000'000'000U);
  EXPECT_EQ(identifier.framesOverTime[0], 2U);
  EXPECT_EQ(analysis.buses()[0]->longestGapNs, 18'000'000'000'000'000'000U);
  EXPECT_EQ(identifier.slowCycleNs(), 18'000'000'000'000'000'000U);
}

TEST(Analysis, boundsIdentifiersAndBuses) {
  AnalysisSettings settings;
  settings.mostIdentifiers = 2;
  std::vector<Frame> frames;
  for (std::uint32_t id = 0; id < 5; ++id) {
    frames.push_back(analysedFrame(id, id % 4, kEightZeros));
  }
  const Analysis few = analysisOf(frames, settings);
  EXPECT_EQ(few.identifiers().size(), 2U);
  EXPECT_EQ(few.summary().otherIdentifierFrames, 2U);
  EXPECT_EQ(few.buses()[0]->framesOf(FrameKind::Data), 5U);

  frames.clear();
  for (std::size_t bus = 0; bus <= Analysis::kMostBuses; ++bus) {
    frames.push_back(analysedFrame(0, 1, kEightZeros, static_cast<std::uint16_t>(bus)));
  }
  const Analysis many = analysisOf(frames);
  EXPECT_EQ(many.buses().size(), Analysis::kMostBuses);
  EXPECT_EQ(many.summary().otherBusFrames, 1U);
}

TEST(Analysis, countsPlacesOfWhatHasNone) {
  FrameBatch batch;
  batch.append(analysedKind(0, FrameKind::Comment));
  batch.append(analysedFrame(0, 1, kEightZeros));
  FrameColumns columns = columnsOf(batch);
  columns.places = nullptr;
  Analysis analysis;
  analysis.add(columns);
  analysis.add(columns);
  EXPECT_EQ(analysis.identifiers()[0]->firstPlace, 2U);
  EXPECT_EQ(analysis.identifiers()[0]->lastPlace, 4U);
}

TEST(Analysis, measuresTheLoadOfABus) {
  AnalysisSettings settings;
  settings.rates = {.nominal = 500'000, .stuffing = Stuffing::None};
  // 111 bits of 2 us in each frame: ten in the first second, one in the third and at the end.
  std::vector<Frame> frames;
  for (std::int64_t at = 0; at < 10; ++at) {
    frames.push_back(analysedFrame(at * 10 * kAnalysedMs, 1, kEightZeros));
  }
  frames.push_back(analysedFrame(2 * kAnalysedSecond, 1, kEightZeros));
  frames.push_back(analysedFrame(4 * kAnalysedSecond, 1, kEightZeros));
  const Analysis analysis = analysisOf(frames, settings);
  const BusStatistics& bus = *analysis.buses()[0];
  EXPECT_NEAR(bus.busyNs, 12 * 111 * 2'000.0, 1e-3);
  EXPECT_NEAR(analysis.load(bus).value_or(0), 12 * 111 * 2e-6 / 4, 1e-9);
  EXPECT_NEAR(analysis.highestLoad(bus).value_or(0), 10 * 111 * 2e-6, 1e-9);
  EXPECT_NEAR(bus.busyOverTime[0], 111 * 2'000.0 * 2, 222'001.0);
}

TEST(Analysis, hasNoLoadWithoutRateOrTime) {
  const Analysis noRate =
      analysisOf({analysedFrame(0, 1, kEightZeros), analysedFrame(kAnalysedSecond, 1, kEightZeros)});
  EXPECT_FALSE(noRate.load(*noRate.buses()[0]));
  EXPECT_FALSE(noRate.highestLoad(*noRate.buses()[0]));
  AnalysisSettings settings;
  settings.rates.nominal = 500'000;
  const Analysis noTime = analysisOf({analysedFrame(0, 1, kEightZeros)}, settings);
  EXPECT_FALSE(noTime.load(*noTime.buses()[0]));
}

TEST(Analysis, hasAHighestLoadNoLowerThanTheMean) {
  AnalysisSettings settings;
  settings.rates = {.nominal = 500'000, .stuffing = Stuffing::None};
  const Analysis analysis =
      analysisOf({analysedFrame(0, 1, kEightZeros), analysedFrame(kAnalysedMs, 1, kEightZeros)}, settings);
  const BusStatistics& bus = *analysis.buses()[0];
  EXPECT_NEAR(analysis.load(bus).value_or(0), 0.444, 1e-9);
  EXPECT_EQ(analysis.highestLoad(bus), analysis.load(bus));
}

struct BitsCase {
  const char* name;
  std::uint16_t flags;
  std::size_t length;
  Stuffing stuffing;
  double nominal;
  double data;
};

TEST(FrameTimes, countsTheBitsOfFrames) {
  constexpr std::uint16_t kExt = frame_flag::kExtended;
  constexpr std::uint16_t kFd = frame_flag::kFd;
  constexpr std::uint16_t kBrs = frame_flag::kBrs | frame_flag::kFd;
  const std::array cases = {
      // 44 bits and the data, and 3 of intermission; up to 135 bits with 8 bytes, which is well known.
      BitsCase{"base, empty", 0, 0, Stuffing::None, 47, 0},
      BitsCase{"base", 0, 8, Stuffing::None, 111, 0},
      BitsCase{"base, worst", 0, 8, Stuffing::Worst, 135, 0},
      BitsCase{"extended", kExt, 8, Stuffing::None, 131, 0},
      BitsCase{"extended, worst", kExt, 8, Stuffing::Worst, 160, 0},
      BitsCase{"base, mean", 0, 8, Stuffing::Mean, 111 + 97 / 30.0, 0},
      BitsCase{"fd", kFd, 8, Stuffing::None, 17 + 12 + 5 + 64 + 28, 0},
      BitsCase{"fd with bit rate switch", kBrs, 16, Stuffing::None, 29, 5 + 128 + 28},
      BitsCase{"fd with a long checksum", kBrs, 20, Stuffing::None, 29, 5 + 160 + 33},
      BitsCase{"fd, extended", static_cast<std::uint16_t>(kBrs | kExt), 64, Stuffing::None, 36 + 12, 5 + 512 + 33},
      BitsCase{"fd, worst", kBrs, 8, Stuffing::Worst, 29 + 4, 5 + 64 + 28 + 17},
      BitsCase{"xl", frame_flag::kXl, 1, Stuffing::None, 17 + 1 + 4 + 12, 3 + 116 + 11 + 4},
  };
  for (const BitsCase& each : cases) {
    const FrameBits bits = frameBits(each.flags, each.length, each.stuffing);
    EXPECT_DOUBLE_EQ(bits.nominal, each.nominal) << each.name;
    EXPECT_DOUBLE_EQ(bits.data, each.data) << each.name;
  }
}

TEST(FrameTimes, dependOnTheRates) {
  const FrameTimes times({.nominal = 500'000, .data = 2'000'000, .lin = 20'000, .stuffing = Stuffing::None});
  EXPECT_DOUBLE_EQ(times.of(FrameKind::Data, 0, 8), 111 * 2'000.0);
  EXPECT_DOUBLE_EQ(times.of(FrameKind::Data, frame_flag::kExtended, 8), 131 * 2'000.0);
  EXPECT_DOUBLE_EQ(times.of(FrameKind::Data, frame_flag::kFd, 8), 126 * 2'000.0);
  EXPECT_DOUBLE_EQ(times.of(FrameKind::Data, frame_flag::kFd | frame_flag::kBrs, 8), 29 * 2'000.0 + 97 * 500.0);
  EXPECT_DOUBLE_EQ(times.of(FrameKind::Data, frame_flag::kXl, 1), 34 * 2'000.0 + 134 * 500.0);
  EXPECT_DOUBLE_EQ(times.of(FrameKind::Remote, 0, 8), 47 * 2'000.0);
  EXPECT_DOUBLE_EQ(times.of(FrameKind::Error, 0, 0), 17 * 2'000.0);
  EXPECT_DOUBLE_EQ(times.of(FrameKind::Overload, 0, 0), 17 * 2'000.0);
  EXPECT_DOUBLE_EQ(times.of(FrameKind::Lin, 0, 8), 124 * 50'000.0);
  EXPECT_DOUBLE_EQ(times.of(FrameKind::Lin, 0, 0), 34 * 50'000.0);
  EXPECT_DOUBLE_EQ(times.of(FrameKind::Status, 0, 0), 0.0);
  // No longer classic or FD frame there is.
  EXPECT_DOUBLE_EQ(times.of(FrameKind::Data, 0, 100), times.of(FrameKind::Data, 0, 64));
  const FrameTimes oneRate({.nominal = 500'000, .stuffing = Stuffing::None});
  EXPECT_DOUBLE_EQ(oneRate.of(FrameKind::Data, frame_flag::kFd | frame_flag::kBrs, 8), 126 * 2'000.0);
  EXPECT_DOUBLE_EQ(oneRate.of(FrameKind::Lin, 0, 8), 0.0);
}

TEST(CycleSketch, isExactToAPartOfTheTime) {
  for (const std::uint64_t scale : {20'000U, 1'000'000U, 50'000'000U}) {
    std::mt19937 random(7);
    std::vector<std::uint64_t> times;
    CycleSketch sketch;
    for (int count = 0; count < 5000; ++count) {
      times.push_back(scale + random() % (scale * 20));
      sketch.add(times.back());
    }
    std::ranges::sort(times);
    for (const double part : {0.5, 0.9, 0.99}) {
      const auto exact = static_cast<double>(times[static_cast<std::size_t>(std::ceil(part * 5000)) - 1]);
      const auto told = static_cast<double>(sketch.quantile(part, times.front(), times.back()));
      EXPECT_NEAR(told, exact, exact / 32) << scale << " " << part;
    }
  }
}

TEST(CycleSketch, staysWithinTheBounds) {
  CycleSketch sketch;
  sketch.add(10'000'000);
  EXPECT_EQ(sketch.quantile(0.99, 10'000'000, 10'000'000), 10'000'000U);
  CycleSketch tiny;
  tiny.add(3);
  EXPECT_EQ(tiny.quantile(0.99, 3, 3), 3U);
  CycleSketch huge;
  huge.add(std::uint64_t{1} << 40);
  EXPECT_EQ(huge.quantile(0.5, 1, std::uint64_t{1} << 40), std::uint64_t{1} << 40);
  EXPECT_EQ(CycleSketch().quantile(0.5, 0, 0), 0U);
}

TEST(CycleSketch, knowsTheBoundsOfItsBuckets) {
  EXPECT_EQ(CycleSketch::lowerBound(0), 0U);
  EXPECT_EQ(CycleSketch::lowerBound(1), 1U << 14);
  EXPECT_EQ(CycleSketch::lowerBound(2), 17U << 10);
  EXPECT_EQ(CycleSketch::lowerBound(17), 1U << 15);
  EXPECT_EQ(CycleSketch::lowerBound(CycleSketch::kBuckets - 1), std::uint64_t{1} << 36);
  for (std::size_t bucket = 0; bucket < CycleSketch::kBuckets; ++bucket) {
    CycleSketch sketch;
    sketch.add(CycleSketch::lowerBound(bucket));
    EXPECT_EQ(sketch.counts()[bucket], 1U) << bucket;
  }
}

// ---- the same, the simple way

// Some random times are farther from each other than a signed number can say.
std::uint64_t distance(std::int64_t earlier, std::int64_t later) {
  return static_cast<std::uint64_t>(later) - static_cast<std::uint64_t>(earlier);
}

struct NaiveIdentifier {
  std::vector<std::int64_t> times;
  std::vector<std::vector<std::uint8_t>> data;
};
using NaiveKey = std::tuple<std::uint16_t, FrameKind, bool, std::uint32_t>;

void expectSame(const IdentifierStatistics& found, const NaiveIdentifier& naive) {
  EXPECT_EQ(found.frames, naive.times.size());
  std::vector<double> cycles;
  for (std::size_t at = 1; at < naive.times.size(); ++at) {
    if (naive.times[at] >= naive.times[at - 1]) {
      cycles.push_back(static_cast<double>(distance(naive.times[at - 1], naive.times[at])));
    }
  }
  EXPECT_EQ(found.cycles, cycles.size());
  EXPECT_EQ(found.stepsBack, naive.times.size() - 1 - cycles.size());
  std::array<std::uint8_t, 64> changed{};
  std::size_t bytes = 0;
  std::size_t shortest = naive.data[0].size();
  std::size_t longest = 0;
  for (std::size_t at = 0; at < naive.data.size(); ++at) {
    bytes += naive.data[at].size();
    shortest = std::min(shortest, naive.data[at].size());
    longest = std::max(longest, naive.data[at].size());
    for (std::size_t byte = 0; at > 0 && byte < 64 && byte < naive.data[at].size(); ++byte) {
      if (byte < naive.data[at - 1].size()) {
        changed[byte] = static_cast<std::uint8_t>(changed[byte] | (naive.data[at][byte] ^ naive.data[at - 1][byte]));
      }
    }
  }
  EXPECT_EQ(found.changed, changed);
  EXPECT_EQ(found.dataBytes, bytes);
  EXPECT_EQ(found.shortest, shortest);
  EXPECT_EQ(found.longest, longest);
  std::uint64_t inBins = 0;
  for (const std::uint32_t count : found.framesOverTime) {
    inBins += count;
  }
  EXPECT_EQ(inBins, naive.times.size());
  if (cycles.empty()) {
    return;
  }
  double sum = 0;
  for (const double cycle : cycles) {
    sum += cycle;
  }
  const double mean = sum / static_cast<double>(cycles.size());
  double squares = 0;
  for (const double cycle : cycles) {
    squares += (cycle - mean) * (cycle - mean);
  }
  const double deviation = std::sqrt(squares / static_cast<double>(cycles.size()));
  EXPECT_NEAR(found.meanCycleNs, mean, mean * 1e-9 + 1e-6);
  EXPECT_NEAR(found.cycleDeviationNs(), deviation, deviation * 1e-6 + 1e-3);
  EXPECT_EQ(static_cast<double>(found.shortestCycleNs), *std::ranges::min_element(cycles));
  EXPECT_EQ(static_cast<double>(found.longestCycleNs), *std::ranges::max_element(cycles));
}

struct NaiveBus {
  std::array<std::uint64_t, kFrameKindCount> kinds{};
  std::vector<std::int64_t> times;
  std::vector<double> busy;  // of the frames
  std::vector<std::int64_t> errors;
};

void expectSame(const BusStatistics& found, const NaiveBus& naive, const AnalysisSettings& settings) {
  EXPECT_EQ(found.frames, naive.kinds);
  EXPECT_EQ(found.traffic, naive.times.size());
  EXPECT_EQ(found.firstNs, *std::ranges::min_element(naive.times));
  EXPECT_EQ(found.lastNs, *std::ranges::max_element(naive.times));
  std::uint64_t longest = 0;
  std::uint64_t gaps = 0;
  std::uint64_t back = 0;
  double busy = naive.busy[0];
  double busyInSecond = busy;
  double busiest = busy;
  const auto second = [](std::int64_t at) { return std::floor(static_cast<double>(at) / 1e9); };
  for (std::size_t at = 1; at < naive.times.size(); ++at) {
    const bool goesBack = naive.times[at] < naive.times[at - 1];
    const std::uint64_t silence = goesBack ? 0 : distance(naive.times[at - 1], naive.times[at]);
    back += goesBack ? 1 : 0;
    longest = std::max(longest, silence);
    gaps += silence >= settings.gapNs ? 1 : 0;
    busy += naive.busy[at];
    busyInSecond =
        second(naive.times[at]) == second(naive.times[at - 1]) ? busyInSecond + naive.busy[at] : naive.busy[at];
    busiest = std::max(busiest, busyInSecond);
  }
  EXPECT_EQ(found.stepsBack, back);
  EXPECT_EQ(found.longestGapNs, longest);
  EXPECT_EQ(found.gaps, gaps);
  EXPECT_NEAR(found.busyNs, busy, busy * 1e-9);
  EXPECT_NEAR(found.busiestSecond, busiest, busiest * 1e-9);
  std::uint64_t bursts = 0;
  std::uint64_t longestBurst = 0;
  for (std::size_t at = 0; at < naive.errors.size();) {
    std::size_t end = at + 1;
    while (end < naive.errors.size() && naive.errors[end] >= naive.errors[end - 1] &&
           distance(naive.errors[end - 1], naive.errors[end]) <= settings.burstNs) {
      ++end;
    }
    bursts += end - at > 1 ? 1 : 0;
    longestBurst = std::max<std::uint64_t>(longestBurst, end - at > 1 ? end - at : 0);
    at = end;
  }
  EXPECT_EQ(found.errorBursts, bursts);
  EXPECT_EQ(found.longestBurst, longestBurst);
  std::uint64_t inBins = 0;
  for (const std::uint64_t count : found.framesOverTime) {
    inBins += count;
  }
  EXPECT_EQ(inBins, naive.times.size());
}

TEST(Analysis, findsWhatASimpleOneFinds) {
  test::RandomFrames random(11);
  std::map<NaiveKey, NaiveIdentifier> naive;
  std::map<std::uint16_t, NaiveBus> buses;
  AnalysisSettings settings;
  settings.rates = {.nominal = 500'000, .data = 2'000'000, .lin = 19'200};
  settings.gapNs = static_cast<std::uint64_t>(100 * kAnalysedMs);
  settings.burstNs = static_cast<std::uint64_t>(200 * kAnalysedMs);
  const FrameTimes times(settings.rates);
  std::array<std::uint64_t, kFrameKindCount> kinds{};
  Analysis analysis(settings);
  FrameBatch batch;
  for (int count = 0; count < 40'000; ++count) {
    const test::OwnedFrame owned = random.next();
    Frame frame = owned.view();
    frame.id %= 16;
    frame.timeNs -= count % 97 == 0 ? 40 * kAnalysedMs : 0;
    if (batch.full()) {
      analysis.add(batch);
      batch.clear();
    }
    batch.append(frame);
    ++kinds[static_cast<std::size_t>(frame.kind)];
    if (frame.kind != FrameKind::Comment && frame.kind != FrameKind::Event) {
      NaiveBus& bus = buses[frame.bus];
      ++bus.kinds[static_cast<std::size_t>(frame.kind)];
      bus.times.push_back(frame.timeNs);
      bus.busy.push_back(times.of(frame.kind, frame.flags, frame.data.size()));
      if (frame.kind == FrameKind::Error) {
        bus.errors.push_back(frame.timeNs);
      }
    }
    if (frame.kind == FrameKind::Data || frame.kind == FrameKind::Remote || frame.kind == FrameKind::Lin) {
      NaiveIdentifier& one = naive[{frame.bus, frame.kind, frame.has(frame_flag::kExtended), frame.id}];
      one.times.push_back(frame.timeNs);
      one.data.emplace_back(frame.data.begin(), frame.data.end());
    }
  }
  analysis.add(batch);
  EXPECT_EQ(analysis.summary().frames, kinds);
  const auto foundBuses = analysis.buses();
  ASSERT_EQ(foundBuses.size(), buses.size());
  std::size_t at = 0;
  for (const auto& [bus, one] : buses) {
    EXPECT_EQ(foundBuses[at]->bus, bus);
    expectSame(*foundBuses[at++], one, settings);
  }
  const auto found = analysis.identifiers();
  ASSERT_EQ(found.size(), naive.size());
  at = 0;
  for (const auto& [key, one] : naive) {
    EXPECT_EQ((NaiveKey{found[at]->bus, found[at]->kind, found[at]->extended, found[at]->id}), key);
    expectSame(*found[at++], one);
  }
}

}  // namespace
}  // namespace xlatr
