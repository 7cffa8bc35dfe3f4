// Every source into every target: through one job, with an account that adds up, for whole sources and for cut ones.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "frames/frame_capacity.hpp"
#include "frames/frame_job.hpp"
#include "frames/frame_sink.hpp"
#include "frames/trace_file.hpp"
#include "io/format.hpp"
#include "support/random_frames.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

namespace fs = std::filesystem;

struct PairTarget {
  const FormatDescriptor* format;
  double version;
};

std::vector<PairTarget> pairTargets() {
  std::vector<PairTarget> targets;
  for (const FormatDescriptor* const format : formatRegistry()) {
    if (format->createFrames != nullptr) {
      for (const FrameCapacity& capacity : format->frameCapacities()) {
        targets.push_back({format, capacity.version});
      }
    }
  }
  return targets;
}

std::string nameOf(const PairTarget& target) {
  return std::to_string(static_cast<int>(target.version * 100 + 0.5)) + std::string(target.format->extension);
}

class FramePairs : public testing::Test {
 protected:
  // A trace of random frames.
  std::string writeSource(const PairTarget& kind) {
    constexpr std::size_t kFrames = 2'000;
    test::RandomFrames random(3);
    StreamHead head;
    head.start = TraceStart{.sinceEpochNs = 1'600'000'000'000'000'000};
    const std::string path = folder_.file("source" + nameOf(kind));
    const auto sink = kind.format->createFrames(path, head, {.version = kind.version});
    FrameBatch batch;
    Account account;
    for (std::size_t at = 0; at < kFrames; ++at) {
      batch.append(random.next().view());
    }
    sink->write(batch, account);
    sink->close();
    return path;
  }

  // The account of a job from a file into a new target.
  Account convert(const std::string& source, const PairTarget& target) {
    const JobReport report = runJob({.sources = {{source}},
                                     .target = folder_.file("target" + nameOf(target)),
                                     .replacesTarget = true,
                                     .sink = {.version = target.version}});
    return report.account;
  }

  static std::uint64_t sumOf(const Account& account, const Account::Count& (Account::*counts)(Remark) const) {
    std::uint64_t sum = 0;
    for (const RemarkInfo& remark : remarkTable()) {
      sum += (account.*counts)(remark.remark).frames;
    }
    return sum;
  }

  // Read = written + dropped, and each of both has its reasons.
  void expectSums(const Account& account, const std::string& pair) {
    EXPECT_EQ(account.read(), account.written() + account.dropped()) << pair;
    EXPECT_EQ(sumOf(account, &Account::dropped), account.dropped()) << pair;
    EXPECT_EQ(sumOf(account, &Account::commented), account.commented()) << pair;
  }

  test::TempFolder folder_;
};

TEST_F(FramePairs, addUpForWholeSources) {
  for (const PairTarget& kind : pairTargets()) {
    const std::string source = writeSource(kind);
    EXPECT_EQ(formatOfTrace(source).format, kind.format->format) << source;
    for (const PairTarget& target : pairTargets()) {
      const Account account = convert(source, target);
      const std::string pair = nameOf(kind) + " to " + nameOf(target);
      EXPECT_GT(account.read(), 500U) << pair;
      expectSums(account, pair);
    }
  }
}

TEST_F(FramePairs, addUpForCutSources) {
  for (const PairTarget& kind : pairTargets()) {
    const std::string source = writeSource(kind);
    const auto size = fs::file_size(source);
    for (const std::uintmax_t kept : {size * 2 / 3 + 1, size / 2, std::uintmax_t{100}, std::uintmax_t{1}}) {
      fs::resize_file(source, kept);
      for (const FormatDescriptor* const target : formatRegistry()) {
        if (target->createFrames == nullptr) {
          continue;
        }
        const JobReport report = runJob({.sources = {{source, kind.format->format}},
                                         .target = folder_.file("target" + std::string(target->extension)),
                                         .replacesTarget = true});
        expectSums(report.account,
                   nameOf(kind) + " cut to " + std::to_string(kept) + " into " + std::string(target->extension));
      }
    }
  }
}

// What stands behind a trace's last frame, and where it has its kin, is told.
TEST_F(FramePairs, tellOfACut) {
  for (const PairTarget& kind : pairTargets()) {
    const std::string source = writeSource(kind);
    Account whole;
    Account cut;
    const auto count = [&](Account& account) {
      const auto opened = kind.format->openFrames(source);
      FrameBatch batch;
      while (opened->read(batch, account)) {
        batch.clear();
      }
    };
    count(whole);
    fs::resize_file(source, fs::file_size(source) * 2 / 3 + 3);
    count(cut);
    EXPECT_LT(cut.read(), whole.read()) << nameOf(kind);
    EXPECT_GT(cut.read(), whole.read() / 4) << nameOf(kind);
  }
}

}  // namespace
}  // namespace xlatr
