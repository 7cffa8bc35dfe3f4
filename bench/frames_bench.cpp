// What happens to frames in memory: choosing and counting them, compared with copying their columns.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <random>
#include <span>
#include <vector>

#include "frames/frame_batch.hpp"
#include "frames/frame_selection.hpp"

namespace {

using xlatr::Account;
using xlatr::Frame;
using xlatr::FrameBatch;
using xlatr::FrameSelection;

// Full data frames of eight buses and 256 identifiers, in an order that no branch can foresee.
FrameBatch mixedBatch() {
  constexpr std::array<std::uint8_t, 8> kBytes = {0x0A, 0xB0, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC};
  std::mt19937 random(1);
  FrameBatch batch;
  Frame frame;
  frame.data = kBytes;
  frame.dlc = kBytes.size();
  while (!batch.full()) {
    frame.timeNs += 500'000;
    frame.bus = static_cast<std::uint16_t>(1 + random() % 8);
    frame.id = static_cast<std::uint32_t>(random() % 256);
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

}  // namespace
