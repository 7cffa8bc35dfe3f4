#include "torture/torture_cases.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <numeric>
#include <string>
#include <utility>

#include "frames/account.hpp"
#include "frames/frame_batch.hpp"
#include "frames/frame_sink.hpp"
#include "frames/frame_stream.hpp"
#include "support/frame_targets.hpp"
#include "support/random_frames.hpp"

namespace xlatr::test {
namespace {

constexpr std::size_t kFrames = 40;
constexpr std::uint64_t kUsualCalls = 12;

std::string contentOf(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

void writeFrames(const std::string& path, const FormatDescriptor& format, const SinkSettings& settings) {
  RandomFrames random(7);
  StreamHead head;
  head.start = TraceStart{.sinceEpochNs = 1'600'000'000'000'000'000};
  const auto sink = format.createFrames(path, head, settings);
  FrameBatch batch;
  Account account;
  for (std::size_t at = 0; at < kFrames; ++at) {
    batch.append(random.next().view());
  }
  sink->write(batch, account);
  sink->close();
}

bool isSameBytes(const std::string& name, const std::string& one, const std::string& other) {
  if (one == other) {
    return true;
  }
  constexpr std::ptrdiff_t kBytesOfTimes = 32;
  const bool tellsTimes = name.ends_with(".mf4");
  return tellsTimes && one.size() == other.size() &&
         std::inner_product(one.begin(), one.end(), other.begin(), std::ptrdiff_t{0}, std::plus<>(),
                            std::not_equal_to<>()) <= kBytesOfTimes;
}

// The first calls, where most differs, and then a selection of the others.
std::uint64_t after(std::uint64_t nth, std::uint64_t calls) {
  return isThorough() || nth < kUsualCalls / 2 ? nth + 1 : nth + std::max<std::uint64_t>(calls * 2 / kUsualCalls, 1);
}

struct Result {
  Outcome outcome;
  Files files;
  std::uint64_t calls = 0;
};

// In the same folder each time, since some targets name their own path. The faults are over before the files are looked
// at.
Result tryOnce(const FaultPlan& plan, const Attempt& attempt, const TempFolder& folder) {
  for (const auto& left : std::filesystem::directory_iterator(folder.path())) {
    std::filesystem::remove(left.path());
  }
  Result result;
  {
    const Faults armed(plan);
    result.outcome = attempt(folder);
    result.calls = armed.calls();
  }
  result.files = filesIn(folder);
  return result;
}

void expectNoLoss(const Torture& fault, const Result& result, const Files& whole, bool safe) {
  if (result.outcome.succeeded) {
    EXPECT_TRUE(isSameOutput(result.files, whole)) << "success with loss";
    return;
  }
  EXPECT_FALSE(fault.harmless) << result.outcome.text;
  EXPECT_NE(result.outcome.text, "");
  if (safe) {
    EXPECT_TRUE(result.files.empty()) << "left behind: " << result.files.begin()->first;
  }
}

}  // namespace

bool isThorough() {
  return std::getenv("XLATR_TORTURE") != nullptr;
}

Files filesIn(const TempFolder& folder) {
  Files files;
  for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
    files.emplace(entry.path().filename().string(), contentOf(entry.path()));
  }
  return files;
}

bool isSameOutput(const Files& one, const Files& other) {
  return std::ranges::equal(one, other, [](const auto& mine, const auto& theirs) {
    return mine.first == theirs.first && isSameBytes(mine.first, mine.second, theirs.second);
  });
}

std::vector<TraceToRead> smallTraces(const TempFolder& folder) {
  std::vector<TraceToRead> traces;
  for (const FrameTarget& kind : frameTargets()) {
    const bool lastVersion = kind.capacity == &kind.format->frameCapacities().back();
    if (lastVersion || kind.format->format == XLATR_FORMAT_TRC) {
      std::string path = folder.file(kind.name() + std::string(kind.format->extension));
      writeFrames(path, *kind.format, kind.settings());
      traces.push_back({std::move(path), kind.format});
    }
  }
  traces.push_back({folder.write("log.blf", contentOf(XLATR_SEEDS_DIR "/blf_log/fd")), &formatOf(XLATR_FORMAT_BLF)});
  return traces;
}

std::vector<Torture> readFaults(std::string_view source) {
  const unsigned opening = faultBits(FaultKind::Open, FaultKind::Status);
  const unsigned reading = faultBits(FaultKind::Read, FaultKind::Seek);
  return {
      {"one call to read fails", {.kinds = opening | reading, .error = EIO, .pathEnd = source}},
      {"the medium is gone", {.kinds = opening | reading, .forGood = true, .error = EIO, .pathEnd = source}},
      {"no memory in the system", {.kinds = opening | reading, .error = ENOMEM, .pathEnd = source}},
      {"no descriptor is left", {.kinds = faultBit(FaultKind::Open), .error = EMFILE, .pathEnd = source}},
      {"interrupted", {.kinds = faultBit(FaultKind::Read), .error = EINTR, .pathEnd = source}, true},
      {"half a block", {.kinds = faultBit(FaultKind::Read), .forGood = true, .pathEnd = source}, true},
  };
}

std::vector<Torture> writeFaults() {
  const unsigned writing = faultBits(FaultKind::Write, FaultKind::Close);
  const unsigned naming = faultBits(FaultKind::Open, FaultKind::Rename) | faultBit(FaultKind::Seek);
  return {
      {"the disk is full", {.kinds = writing | naming, .forGood = true, .error = ENOSPC}},
      {"the disk is full for a moment", {.kinds = writing | naming, .error = ENOSPC}},
      {"one call to write fails", {.kinds = writing | naming, .error = EIO}},
      {"interrupted", {.kinds = faultBit(FaultKind::Write), .error = EINTR}, true},
      {"half a block", {.kinds = faultBit(FaultKind::Write), .forGood = true}, true},
  };
}

std::vector<Torture> memoryFaults() {
  return {
      {"no memory for one thing", {.kinds = faultBit(FaultKind::Memory), .error = ENOMEM}},
      {"no memory any more", {.kinds = faultBit(FaultKind::Memory), .forGood = true, .error = ENOMEM}},
  };
}

void torture(const std::string& what, const std::vector<Torture>& faults, const Attempt& attempt, bool safe) {
  const TempFolder folder;
  const Result whole = tryOnce({}, attempt, folder);
  ASSERT_TRUE(whole.outcome.succeeded) << what << ": " << whole.outcome.text;
  for (const Torture& fault : faults) {
    FaultPlan plan = fault.plan;
    const std::uint64_t calls = tryOnce(plan, attempt, folder).calls;
    for (plan.nth = 1; plan.nth <= calls; plan.nth = after(plan.nth, calls)) {
      SCOPED_TRACE(what + ", " + std::string(fault.name) + ", " + faultText(plan) + " of " + std::to_string(calls));
      expectNoLoss(fault, tryOnce(plan, attempt, folder), whole.files, safe);
    }
  }
}

}  // namespace xlatr::test
