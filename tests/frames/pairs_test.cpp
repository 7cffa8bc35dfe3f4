// Every source into every target: through one job, with an account that adds up, for whole sources and for damaged
// ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "frames/frame_capacity.hpp"
#include "frames/frame_job.hpp"
#include "frames/frame_sink.hpp"
#include "frames/trace_file.hpp"
#include "io/format.hpp"
#include "support/frame_count.hpp"
#include "support/frame_targets.hpp"
#include "support/random_frames.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

namespace fs = std::filesystem;

using test::FrameTarget;

// Reads a file to its end.
Account countFrames(const std::string& path, const FormatDescriptor& format) {
  Account account;
  const auto source = format.openFrames(path);
  FrameBatch batch;
  while (source->read(batch, account)) {
    batch.clear();
  }
  return account;
}

class FramePairs : public testing::Test {
 protected:
  // A trace of random frames.
  std::string writeSource(const FrameTarget& kind, std::size_t frames) {
    test::RandomFrames random(3);
    StreamHead head;
    head.start = TraceStart{.sinceEpochNs = 1'600'000'000'000'000'000};
    std::string path = folder_.file("source" + std::string(kind.format->extension));
    const auto sink = kind.format->createFrames(path, head, kind.settings());
    FrameBatch batch;
    Account account;
    for (std::size_t at = 0; at < frames; ++at) {
      if (batch.full()) {
        sink->write(batch, account);
        batch.clear();
      }
      batch.append(random.next().view());
    }
    sink->write(batch, account);
    sink->close();
    return path;
  }

  // A job from a file into a new target. Every frame that counts as read or written is one in the files.
  void expectSums(const FrameTarget& kind, const std::string& source, std::uint64_t frames, const FrameTarget& target) {
    SCOPED_TRACE(kind.name() + " to " + target.name());
    const std::string path = folder_.file("target" + std::string(target.format->extension));
    JobReport report;
    runJob({.sources = {{source, kind.format->format}},
            .target = path,
            .writing = {.replaces = true, .sink = target.settings()}},
           report);
    EXPECT_EQ(report.account.read(), frames);
    expectSums(report.account);
    EXPECT_EQ(countFrames(path, *target.format).read(), report.account.written());
  }

  // Read = written + dropped; each of both has its reasons, and each reason its first place.
  static void expectSums(const Account& account) {
    using Counts = const Account::Count& (Account::*)(Remark) const;
    EXPECT_EQ(account.read(), account.written() + account.dropped());
    for (const auto& [counts, sum] : {std::pair<Counts, std::uint64_t>{&Account::dropped, account.dropped()},
                                      std::pair<Counts, std::uint64_t>{&Account::commented, account.commented()}}) {
      std::uint64_t left = sum;
      for (const RemarkInfo& remark : remarkTable()) {
        const Account::Count& count = (account.*counts)(remark.remark);
        left -= count.frames;
        EXPECT_EQ(count.frames > 0, count.first > 0) << remark.name;
      }
      EXPECT_EQ(left, 0U);
    }
  }

  // The newest version of every target, of what was made of each source.
  template <class Damage>
  void expectSumsOfDamaged(const Damage& damage) {
    for (const FrameTarget& kind : test::frameTargets()) {
      const std::string source = writeSource(kind, test::framesToTest(5'000, 200));
      damage(source);
      const std::uint64_t frames = countFrames(source, *kind.format).read();
      for (const FrameTarget& target : test::frameTargets()) {
        if (target.capacity == &target.format->frameCapacities().back()) {
          expectSums(kind, source, frames, target);
        }
      }
    }
  }

  test::TempFolder folder_;
};

TEST_F(FramePairs, addUpForWholeSources) {
  const std::size_t frames = test::framesToTest(100'000, 1'000);
  for (const FrameTarget& kind : test::frameTargets()) {
    const std::string source = writeSource(kind, frames);
    EXPECT_EQ(formatOfTrace(source).format, kind.format->format) << source;
    const std::uint64_t read = countFrames(source, *kind.format).read();
    EXPECT_GT(read, frames / 4) << kind.name();
    for (const FrameTarget& target : test::frameTargets()) {
      expectSums(kind, source, read, target);
    }
  }
}

TEST_F(FramePairs, addUpForCutSources) {
  expectSumsOfDamaged([](const std::string& source) { fs::resize_file(source, fs::file_size(source) * 2 / 3 + 1); });
}

TEST_F(FramePairs, addUpForSourcesWithOtherBytes) {
  expectSumsOfDamaged([this](const std::string& source) {
    const std::string name = fs::path(source).filename().string();
    std::string bytes = folder_.read(name);
    std::mt19937 random(5);
    for (std::size_t count = bytes.size() / 200; count > 0; --count) {
      bytes[random() % bytes.size()] = static_cast<char>(random() % 256);
    }
    static_cast<void>(folder_.write(name, bytes));
  });
}

// The lines of a text, and pieces of what is none.
TEST_F(FramePairs, addUpForSourcesInDisorder) {
  expectSumsOfDamaged([this](const std::string& source) {
    const std::string name = fs::path(source).filename().string();
    const std::string bytes = folder_.read(name);
    std::vector<std::string_view> pieces;
    for (std::string_view left = bytes; !left.empty(); left.remove_prefix(pieces.back().size())) {
      constexpr std::size_t kLongest = 200;
      const std::string_view piece = left.substr(0, kLongest);
      const std::size_t end = piece.find('\n');
      pieces.push_back(piece.substr(0, end == std::string_view::npos ? end : end + 1));
    }
    std::mt19937 random(7);
    for (std::size_t at = 0; at < pieces.size(); ++at) {
      std::swap(pieces[at], pieces[std::min(at + random() % 4, pieces.size() - 1)]);
    }
    std::string mixed;
    for (const std::string_view piece : pieces) {
      mixed += piece;
    }
    static_cast<void>(folder_.write(name, mixed));
  });
}

TEST_F(FramePairs, areRecognisedWithoutAStart) {
  FrameBatch batch;
  batch.append(Frame{.bus = 1, .flags = frame_flag::kReceived, .place = 1});
  for (const FrameTarget& kind : test::frameTargets()) {
    const std::string path = folder_.file("source");
    const auto sink = kind.format->createFrames(path, {}, kind.settings());
    Account account;
    sink->write(batch, account);
    sink->close();
    EXPECT_EQ(formatOfTrace(path).format, kind.format->format) << kind.name();
  }
}

// What stands behind a trace's last frame, and where it has its kin, is told.
TEST_F(FramePairs, tellOfACut) {
  for (const FrameTarget& kind : test::frameTargets()) {
    const std::string source = writeSource(kind, 2'000);
    const Account whole = countFrames(source, *kind.format);
    const auto size = fs::file_size(source);
    fs::resize_file(source, size * 2 / 3 + 3);
    const Account cut = countFrames(source, *kind.format);
    EXPECT_LT(cut.read(), whole.read()) << kind.name();
    EXPECT_GT(cut.read(), whole.read() / 4) << kind.name();
    for (const std::uintmax_t kept : {size / 2, std::uintmax_t{100}, std::uintmax_t{1}}) {
      fs::resize_file(source, kept);
      EXPECT_LE(countFrames(source, *kind.format).read(), cut.read()) << kind.name() << " of " << kept;
    }
  }
}

}  // namespace
}  // namespace xlatr
