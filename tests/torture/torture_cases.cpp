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
#include "support/watchdog.hpp"

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
Result tryOnce(const FaultPlan& plan, const Attempt& attempt, const TempFolder& folder, const Files& before) {
  for (const auto& left : std::filesystem::directory_iterator(folder.path())) {
    std::filesystem::remove(left.path());
  }
  for (const auto& [name, content] : before) {
    static_cast<void>(folder.write(name, content));
  }
  Result result;
  {
    const Watchdog watchdog(faultText(plan));
    const Faults armed(plan);
    result.outcome = attempt(folder);
    result.calls = armed.calls();
  }
  result.files = filesIn(folder);
  return result;
}

void expectSafe(const Result& result, const Files& whole, const Files& before) {
  for (const auto& [name, content] : result.files) {
    const auto old = before.find(name);
    const auto made = whole.find(name);
    EXPECT_TRUE((old != before.end() && old->second == content) ||
                (made != whole.end() && isSameBytes(name, made->second, content)))
        << "left behind: " << name;
  }
  for (const auto& [name, content] : before) {
    EXPECT_TRUE(result.files.contains(name)) << "lost: " << name;
  }
}

void expectNoLoss(const Torture& fault, const Result& result, const Result& whole, Promise promise,
                  const Files& before) {
  if (result.outcome.succeeded) {
    Files files = result.files;
    if (!fault.removes) {
      std::erase_if(files, [](const auto& file) { return file.first.starts_with('.'); });
    }
    EXPECT_TRUE(isSameOutput(files, whole.files)) << "success with loss";
    return;
  }
  EXPECT_FALSE(fault.harmless) << result.outcome.text;
  EXPECT_TRUE(fault.mute || !result.outcome.text.empty());
  if (promise == Promise::Safe && fault.removes) {
    expectSafe(result, whole.files, before);
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
  constexpr unsigned kCalls = faultBits(FaultKind::Open, FaultKind::Status, FaultKind::Read, FaultKind::Seek);
  return {
      {"one call to read fails", {.kinds = kCalls, .error = EIO, .pathEnd = source}},
      {"the medium is gone", {.kinds = kCalls, .forGood = true, .error = EIO, .pathEnd = source}},
      {"no memory in the system", {.kinds = kCalls, .error = ENOMEM, .pathEnd = source}},
      {"no descriptor is left", {.kinds = faultBit(FaultKind::Open), .error = EMFILE, .pathEnd = source}},
      {"not now", {.kinds = faultBit(FaultKind::Read), .error = EAGAIN, .pathEnd = source}},
      {"interrupted", {.kinds = faultBits(FaultKind::Read, FaultKind::Close), .error = EINTR, .pathEnd = source}, true},
      {"half a block", {.kinds = faultBit(FaultKind::Read), .forGood = true, .pathEnd = source}, true},
  };
}

std::vector<Torture> writeFaults() {
  constexpr unsigned kBytes = faultBits(FaultKind::Write, FaultKind::Close, FaultKind::Truncate);
  constexpr unsigned kNames = faultBits(FaultKind::Open, FaultKind::Rename, FaultKind::Seek);
  constexpr unsigned kOthers = faultBits(FaultKind::Status, FaultKind::Lock);
  constexpr unsigned kRemoval = faultBit(FaultKind::Unlink);
  return {
      {"the disk is full", {.kinds = kBytes | kNames, .forGood = true, .error = ENOSPC}},
      {"the disk is full for a moment", {.kinds = kBytes | kNames, .error = ENOSPC}},
      {"one call to write fails", {.kinds = kBytes | kNames | kOthers, .error = EIO}},
      {"the disk is gone",
       {.kinds = kBytes | kNames | kOthers | kRemoval, .forGood = true, .error = EIO},
       false,
       false},
      {"somebody else has the lock",
       {.kinds = faultBit(FaultKind::Lock), .forGood = true, .error = EWOULDBLOCK},
       false,
       false},
      {"there are no locks", {.kinds = faultBit(FaultKind::Lock), .forGood = true, .error = ENOLCK}, true},
      {"nothing can be removed", {.kinds = kRemoval, .forGood = true, .error = EPERM}, true, false},
      {"not now", {.kinds = faultBit(FaultKind::Write), .error = EAGAIN}},
      {"interrupted", {.kinds = faultBits(FaultKind::Write, FaultKind::Close), .error = EINTR}, true},
      {"half a block", {.kinds = faultBit(FaultKind::Write), .forGood = true}, true},
  };
}

std::vector<Torture> memoryFaults() {
  return {
      {"no memory for one thing", {.kinds = faultBit(FaultKind::Memory), .error = ENOMEM}},
      {"no memory any more",
       {.kinds = faultBit(FaultKind::Memory), .forGood = true, .error = ENOMEM},
       false,
       true,
       true},
  };
}

void torture(const std::string& what, const std::vector<Torture>& faults, const Attempt& attempt, Promise promise,
             const Files& before) {
  const TempFolder folder;
  const Result whole = tryOnce({}, attempt, folder, before);
  ASSERT_TRUE(whole.outcome.succeeded) << what << ": " << whole.outcome.text;
  for (const Torture& fault : faults) {
    FaultPlan plan = fault.plan;
    const std::uint64_t calls = tryOnce(plan, attempt, folder, before).calls;
    for (plan.nth = 1; plan.nth <= calls; plan.nth = after(plan.nth, calls)) {
      SCOPED_TRACE(what + ", " + std::string(fault.name) + ", " + faultText(plan) + " of " + std::to_string(calls));
      expectNoLoss(fault, tryOnce(plan, attempt, folder, before), whole, promise, before);
    }
  }
}

}  // namespace xlatr::test
