// What the table says that a version holds comes back from a file of it: frames of every kind, likely ones and odd
// ones, are written and read back.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "frames/frame_capacity.hpp"
#include "frames/frame_sink.hpp"
#include "frames/frame_stream.hpp"
#include "io/format.hpp"
#include "support/frame_count.hpp"
#include "support/frame_targets.hpp"
#include "support/frame_text.hpp"
#include "support/random_frames.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

using test::FrameTarget;
using test::OwnedFrame;

// What comes back of a frame. A comment has the time of what stands before it.
std::optional<Frame> expectedOf(const FrameTarget& target, const Frame& frame, Account& account) {
  if (whyNotHeld(*target.capacity, frame)) {
    return target.capacity->comments ? std::optional(frame) : std::nullopt;
  }
  return frame.kind == FrameKind::Comment ? frame : reducedTo(*target.capacity, frame, account);
}

Frame withoutTimeOfComment(Frame frame) {
  frame.timeNs = frame.kind == FrameKind::Comment ? 0 : frame.timeNs;
  return frame;
}

class RoundTrip : public testing::TestWithParam<FrameTarget> {
 protected:
  using Frames = std::vector<OwnedFrame>;

  // The first difference between what the table says and what comes back, or nothing.
  std::optional<std::string> difference(const Frames& frames) {
    const FrameTarget& target = GetParam();
    const std::string path = folder_.file("target" + std::string(target.format->extension));
    const Account written = write(path, frames);
    std::vector<Frame> expected;
    expected.reserve(frames.size());
    Account reduced;
    std::size_t notHeld = 0;
    for (const OwnedFrame& owned : frames) {
      const Frame frame = owned.view();
      notHeld += whyNotHeld(*target.capacity, frame).has_value() ? 1U : 0U;
      if (const auto kept = expectedOf(target, frame, reduced)) {
        expected.push_back(withoutTimeOfComment(*kept));
      }
    }
    if (written.written() + written.dropped() != frames.size()) {
      return "the account does not add up";
    }
    if (written.commented() + written.dropped() != notHeld) {
      return "the account tells of " + std::to_string(written.commented() + written.dropped()) +
             " frames that are not held, the table of " + std::to_string(notHeld);
    }
    for (const RemarkInfo& remark : remarkTable()) {
      if (written.noted(remark.remark) != reduced.noted(remark.remark)) {
        return "the account and the table differ in " + std::string(remark.name);
      }
    }
    return compare(path, expected);
  }

  Account write(const std::string& path, const Frames& frames) {
    StreamHead head;
    head.start = TraceStart{.sinceEpochNs = 1'600'000'000'123'456'000};
    const auto sink = GetParam().format->createFrames(path, head, GetParam().settings());
    Account account;
    FrameBatch batch;
    for (const OwnedFrame& owned : frames) {
      if (batch.full()) {
        sink->write(batch, account);
        batch.clear();
      }
      batch.append(owned.view());
    }
    sink->write(batch, account);
    sink->close();
    return account;
  }

  std::optional<std::string> compare(const std::string& path, const std::vector<Frame>& expected) {
    const auto source = GetParam().format->openFrames(path);
    FrameBatch batch;
    Account account;
    std::size_t at = 0;
    while (source->read(batch, account)) {
      for (std::size_t row = 0; row < batch.size(); ++row, ++at) {
        const Frame frame = withoutTimeOfComment(batch.at(row));
        if (at >= expected.size() || !sameFrame(frame, expected[at])) {
          return "expected: " + (at < expected.size() ? test::textOf(expected[at]) : "nothing") +
                 "\n     got: " + test::textOf(frame);
        }
      }
      batch.clear();
    }
    if (at != expected.size()) {
      return "missing: " + test::textOf(expected[at]);
    }
    return std::nullopt;
  }

  // The smallest of the frames that still shows a difference.
  std::string shrunk(const Frames& frames) {
    Frames left = frames;
    for (std::size_t part = left.size() / 2; part > 0; part /= 2) {
      for (std::size_t at = 0; at + part <= left.size();) {
        Frames fewer(left);
        fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(at),
                    fewer.begin() + static_cast<std::ptrdiff_t>(at + part));
        if (!fewer.empty() && difference(fewer)) {
          left = std::move(fewer);
        } else {
          at += part;
        }
      }
    }
    for (OwnedFrame& frame : left) {
      simplify(left, frame);
    }
    std::string text = difference(left).value_or("nothing when it is tried again");
    for (const OwnedFrame& frame : left) {
      text += "\n   frame: " + test::textOf(frame.view());
    }
    return text;
  }

  void simplify(const Frames& frames, OwnedFrame& frame) {
    static const std::vector<std::function<void(OwnedFrame&)>> kSteps = {
        [](OwnedFrame& f) { f.frame.timeNs = 0; },
        [](OwnedFrame& f) { f.frame.bus = 1; },
        [](OwnedFrame& f) { f.frame.id = 1; },
        [](OwnedFrame& f) { f.frame.id = 0; },
        [](OwnedFrame& f) { f.frame.flags = frame_flag::kReceived; },
        [](OwnedFrame& f) { f.frame.flags = 0; },
        [](OwnedFrame& f) { f.frame.dlc = 0; },
        [](OwnedFrame& f) { f.data.clear(); },
        [](OwnedFrame& f) { f.frame.text.reset(); },
        [](OwnedFrame& f) { f.text = f.text.substr(0, 1); },
        [](OwnedFrame& f) { f.frame.attributes.clear(); },
    };
    for (const auto& step : kSteps) {
      const OwnedFrame before = frame;
      step(frame);
      if (!difference(frames)) {
        frame = before;
      }
    }
  }

  test::TempFolder folder_;
};

TEST_P(RoundTrip, keepsWhatTheTableSays) {
  constexpr std::size_t kPart = 5'000;
  const std::size_t wanted = test::framesToTest(100'000, 10'000);
  for (std::uint32_t seed = 0; seed * kPart < wanted; ++seed) {
    test::RandomFrames random(seed);
    Frames frames;
    for (std::size_t at = 0; at < kPart; ++at) {
      frames.push_back(random.next());
    }
    if (difference(frames)) {
      FAIL() << "seed " << seed << ": " << shrunk(frames);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, RoundTrip, testing::ValuesIn(test::frameTargets()),
                         [](const auto& test) { return test.param.name(); });

}  // namespace
}  // namespace xlatr
