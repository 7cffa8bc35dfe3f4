// What happens to frames in memory: choosing, counting, analysing and comparing them, beside copying their columns.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <random>
#include <span>
#include <vector>

#include "frames/account.hpp"
#include "frames/analysis/analysis.hpp"
#include "frames/comparison.hpp"
#include "frames/frame_batch.hpp"
#include "frames/frame_selection.hpp"
#include "frames/frame_stream.hpp"

namespace {

using xlatr::Account;
using xlatr::Frame;
using xlatr::FrameBatch;
using xlatr::FrameSelection;

// Full data frames of eight buses and so many identifiers, in an order that no branch can foresee.
FrameBatch mixedBatch(std::uint32_t identifiers = 256) {
  constexpr std::array<std::uint8_t, 8> kBytes = {0x0A, 0xB0, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC};
  std::mt19937 random(1);
  FrameBatch batch;
  Frame frame;
  frame.data = kBytes;
  frame.dlc = kBytes.size();
  while (!batch.full()) {
    frame.timeNs += 500'000;
    frame.bus = static_cast<std::uint16_t>(1 + random() % 8);
    frame.id = static_cast<std::uint32_t>(random() % identifiers);
    frame.flags = random() % 2 != 0 ? xlatr::frame_flag::kReceived : xlatr::frame_flag::kTransmitted;
    batch.append(frame);
  }
  return batch;
}

void countFrames(benchmark::State& state, std::size_t bytesOfFrame) {
  const auto frames = state.iterations() * static_cast<std::int64_t>(FrameBatch::kCapacity);
  state.SetItemsProcessed(frames);
  state.SetBytesProcessed(frames * static_cast<std::int64_t>(bytesOfFrame));
}

constexpr std::size_t kIdBytes = sizeof(std::uint32_t);

// The measure: identifiers as fast as memory moves them.
void copyIdentifiers(benchmark::State& state) {
  const FrameBatch batch = mixedBatch();
  std::vector<std::uint32_t> copy(batch.size());
  for ([[maybe_unused]] auto step : state) {
    std::memcpy(copy.data(), batch.ids().data(), batch.size() * kIdBytes);
    benchmark::DoNotOptimize(copy.data());
    benchmark::ClobberMemory();
  }
  countFrames(state, kIdBytes);
}
BENCHMARK(copyIdentifiers);

// How often each identifier occurs.
void countIdentifiers(benchmark::State& state) {
  const FrameBatch batch = mixedBatch();
  std::vector<std::uint64_t> counts(2048);
  for ([[maybe_unused]] auto step : state) {
    for (const std::uint32_t id : batch.ids()) {
      ++counts[id & 0x7FF];
    }
    benchmark::DoNotOptimize(counts.data());
  }
  countFrames(state, kIdBytes);
}
BENCHMARK(countIdentifiers);

FrameSelection identifiersBelow(std::uint32_t limit) {
  FrameSelection selection;
  selection.identifiers.push_back({.first = 0, .last = limit - 1});
  return selection;
}

// The whole batch is copied first, since what is not wanted is removed. The argument is how many of 256 identifiers are
// wanted; with -1 there is no selection, and the copy is all.
void selectIdentifiers(benchmark::State& state) {
  const FrameBatch batch = mixedBatch();
  const bool selects = state.range(0) >= 0;
  xlatr::FrameSelector selector(selects ? identifiersBelow(static_cast<std::uint32_t>(state.range(0) + 1))
                                        : FrameSelection());
  FrameBatch chosen;
  Account account;
  for ([[maybe_unused]] auto step : state) {
    chosen = batch;
    selector.select(chosen, account);
    benchmark::DoNotOptimize(chosen.times().data());
  }
  constexpr std::size_t kFixedBytes = 8 + 1 + 2 + 4 + 2 + 2 + 4 + 4 + 8;
  countFrames(state, kFixedBytes + 8);
}
BENCHMARK(selectIdentifiers)->ArgName("wanted")->Arg(-1)->Arg(255)->Arg(127)->Arg(0);

// The argument is how many identifiers each of the eight buses has.
void analyseFrames(benchmark::State& state) {
  const FrameBatch batch = mixedBatch(static_cast<std::uint32_t>(state.range(0)));
  xlatr::AnalysisSettings settings;
  settings.rates.nominal = 500'000;
  xlatr::Analysis analysis(settings);
  for ([[maybe_unused]] auto step : state) {
    analysis.add(batch);
  }
  benchmark::DoNotOptimize(analysis.summary());
  countFrames(state, kIdBytes);
}
BENCHMARK(analyseFrames)->ArgName("ids")->Arg(8)->Arg(32)->Arg(256)->Arg(2048);

// Hands the same batch out, some times, the first time without some of its frames.
class RepeatedBatch final : public xlatr::FrameSource {
 public:
  RepeatedBatch(const FrameBatch& batch, std::int64_t lacking) : batch_(batch), lacking_(lacking) {}

  [[nodiscard]] const xlatr::StreamHead& head() const override { return head_; }
  [[nodiscard]] bool read(FrameBatch& batch, Account& account) override {
    constexpr int kTimes = 8;
    if (times_ == kTimes) {
      return false;
    }
    batch = batch_;
    if (times_ == 0) {
      std::vector<std::uint8_t> wanted(batch.size(), 1);
      std::fill_n(wanted.begin() + 100, lacking_, std::uint8_t{0});
      batch.keep(wanted);
    }
    batch.shiftTimes(times_ * (batch_.times().back() + 1));
    ++times_;
    account.addRead(batch.size());
    return true;
  }
  [[nodiscard]] std::uint64_t bytesRead() const override { return 0; }

 private:
  xlatr::StreamHead head_;
  const FrameBatch& batch_;
  std::int64_t lacking_;
  std::int64_t times_ = 0;
};

// The arguments: how many frames the second trace lacks, and by how many nanoseconds its clock is late, which is more
// than the tolerance where it is not 0.
void compareFrames(benchmark::State& state) {
  const FrameBatch batch = mixedBatch();
  FrameBatch late = batch;
  late.shiftTimes(state.range(1));
  std::uint64_t frames = 0;
  for ([[maybe_unused]] auto step : state) {
    RepeatedBatch first(batch, 0);
    RepeatedBatch second(late, state.range(0));
    Account account;
    frames += xlatr::compareFrames(first, account, second, account, {}).frames[0];
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(frames));
}
BENCHMARK(compareFrames)->ArgNames({"lacking", "late"})->Args({0, 0})->Args({1000, 0})->Args({0, 100'000});

}  // namespace
