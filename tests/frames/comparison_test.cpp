#include "frames/comparison.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/random_frames.hpp"

namespace xlatr {
namespace {

constexpr std::int64_t kComparedMs = 1'000'000;

// Hands frames out, some at a time.
class OwnedFrameSource final : public FrameSource {
 public:
  explicit OwnedFrameSource(std::vector<test::OwnedFrame> frames, std::size_t atOnce = FrameBatch::kCapacity)
      : frames_(std::move(frames)), atOnce_(atOnce) {}

  [[nodiscard]] const StreamHead& head() const override { return head_; }
  [[nodiscard]] bool read(FrameBatch& batch, Account& account) override {
    while (at_ < frames_.size() && batch.size() < atOnce_ && !batch.full()) {
      Frame frame = frames_[at_++].view();
      frame.place = at_;
      batch.append(frame);
    }
    account.addRead(batch.size());
    return !batch.empty();
  }
  [[nodiscard]] std::uint64_t bytesRead() const override { return 0; }

  StreamHead head_;

 private:
  std::vector<test::OwnedFrame> frames_;
  std::size_t atOnce_;
  std::size_t at_ = 0;
};

using Frames = std::vector<test::OwnedFrame>;

test::OwnedFrame ownedFrameAt(std::int64_t timeNs, std::uint32_t id, std::vector<std::uint8_t> data) {
  test::OwnedFrame made;
  made.frame.timeNs = timeNs;
  made.frame.bus = 1;
  made.frame.id = id;
  made.frame.dlc = static_cast<std::uint16_t>(data.size());
  made.data = std::move(data);
  return made;
}

// Three identifiers, each every 10 ms, with a counter.
Frames cyclicTraffic(std::size_t count) {
  Frames frames;
  for (std::size_t at = 0; at < count; ++at) {
    const auto time =
        static_cast<std::int64_t>(at / 3) * 10 * kComparedMs + static_cast<std::int64_t>(at % 3) * kComparedMs / 4;
    frames.push_back(
        ownedFrameAt(time, static_cast<std::uint32_t>(0x100 + at % 3), {1, static_cast<std::uint8_t>(at / 3)}));
  }
  return frames;
}

ComparisonResult compared(Frames first, Frames second, const ComparisonSettings& settings = {},
                          std::size_t atOnce = 500) {
  OwnedFrameSource one(std::move(first));
  OwnedFrameSource other(std::move(second), atOnce);
  Account account;
  return compareFrames(one, account, other, account, settings);
}

// "equal 5, different 1 (data 1), only 1/0"
std::string textOf(const ComparisonResult& result) {
  std::string fields;
  for (std::size_t at = 0; at < kFrameFieldCount; ++at) {
    if (result.byField[at] > 0) {
      fields += (fields.empty() ? "" : ", ") + std::string(frameFieldName(static_cast<FrameField>(at))) + " " +
                std::to_string(result.byField[at]);
    }
  }
  return "equal " + std::to_string(result.equal) + ", different " + std::to_string(result.different) +
         (fields.empty() ? "" : " (" + fields + ")") + ", only " + std::to_string(result.onlyIn[0]) + "/" +
         std::to_string(result.onlyIn[1]);
}

TEST(Comparison, findsEqualTracesEqual) {
  const ComparisonResult result = compared(cyclicTraffic(3'000), cyclicTraffic(3'000));
  EXPECT_EQ(textOf(result), "equal 3000, different 0, only 0/0");
  EXPECT_TRUE(result.same());
  EXPECT_EQ(result.frames, (std::array<std::uint64_t, 2>{3'000, 3'000}));
  EXPECT_EQ(result.toleranceNs, 1U);
  EXPECT_EQ(result.farthestNs, 0U);
  EXPECT_TRUE(compared({}, {}).same());
}

TEST(Comparison, goesOnAfterAMissingFrame) {
  Frames second = cyclicTraffic(300);
  second.erase(second.begin() + 100);
  const ComparisonResult result = compared(cyclicTraffic(300), second);
  EXPECT_EQ(textOf(result), "equal 299, different 0, only 1/0");
  ASSERT_EQ(result.differences.size(), 1U);
  EXPECT_EQ(result.differences[0].kind, DifferenceKind::OnlyFirst);
  EXPECT_EQ(result.differences[0].first.frame.place, 101U);
  EXPECT_EQ(result.reordered, 0U);
  EXPECT_EQ(textOf(compared(second, cyclicTraffic(300))), "equal 299, different 0, only 0/1");
}

TEST(Comparison, goesOnAfterManyMissingFrames) {
  Frames second = cyclicTraffic(9'000);
  second.erase(second.begin() + 2'000, second.begin() + 7'000);
  EXPECT_EQ(textOf(compared(cyclicTraffic(9'000), second)), "equal 4000, different 0, only 5000/0");
  EXPECT_EQ(textOf(compared(cyclicTraffic(9'000), cyclicTraffic(20))), "equal 20, different 0, only 8980/0");
}

TEST(Comparison, saysWhatDiffers) {
  struct Case {
    const char* name;
    void (*change)(test::OwnedFrame& frame);
    const char* expected;
  };
  const std::array cases = {
      Case{"data", [](test::OwnedFrame& f) { f.data[0] = 9; }, "equal 29, different 1 (data 1), only 0/0"},
      Case{"length", [](test::OwnedFrame& f) { f.data.push_back(1), f.frame.dlc = 3; },
           "equal 29, different 1 (dlc 1, data 1), only 0/0"},
      Case{"identifier", [](test::OwnedFrame& f) { f.frame.id = 1; }, "equal 29, different 1 (id 1), only 0/0"},
      Case{"bus", [](test::OwnedFrame& f) { f.frame.bus = 2; }, "equal 29, different 1 (bus 1), only 0/0"},
      Case{"time", [](test::OwnedFrame& f) { f.frame.timeNs += 2; }, "equal 29, different 1 (time 1), only 0/0"},
      Case{"later", [](test::OwnedFrame& f) { f.frame.timeNs += 50 * kComparedMs; },
           "equal 29, different 1 (time 1), only 0/0"},
      Case{"flag", [](test::OwnedFrame& f) { f.frame.set(frame_flag::kFd); },
           "equal 29, different 1 (flags 1), only 0/0"},
      Case{"extended", [](test::OwnedFrame& f) { f.frame.set(frame_flag::kExtended); },
           "equal 29, different 1 (flags 1), only 0/0"},
      Case{"kind", [](test::OwnedFrame& f) { f.frame.kind = FrameKind::Lin; }, "equal 29, different 0, only 1/1"},
      Case{"all", [](test::OwnedFrame& f) { f.frame.id = 5, f.data[1] = 77; }, "equal 29, different 0, only 1/1"},
      Case{"a bus that is not named", [](test::OwnedFrame& f) { f.frame.bus = 0; }, "equal 30, different 0, only 0/0"},
      Case{"a direction", [](test::OwnedFrame& f) { f.frame.set(frame_flag::kReceived); },
           "equal 30, different 0, only 0/0"},
      Case{"within the tolerance", [](test::OwnedFrame& f) { ++f.frame.timeNs; }, "equal 30, different 0, only 0/0"},
  };
  for (const Case& each : cases) {
    Frames second = cyclicTraffic(30);
    each.change(second[10]);
    EXPECT_EQ(textOf(compared(cyclicTraffic(30), second)), each.expected) << each.name;
    EXPECT_EQ(textOf(compared(second, cyclicTraffic(30))), each.expected) << each.name;
  }
}

TEST(Comparison, comparesWhatBothState) {
  test::OwnedFrame received = ownedFrameAt(0, 1, {});
  received.frame.kind = FrameKind::Remote;
  received.frame.set(frame_flag::kReceived | frame_flag::kDlcKnown);
  received.frame.dlc = 4;
  test::OwnedFrame transmitted = received;
  transmitted.frame.unset(frame_flag::kReceived);
  transmitted.frame.set(frame_flag::kTransmitted);
  EXPECT_EQ(textOf(compared({received}, {transmitted})), "equal 0, different 1 (flags 1), only 0/0");
  test::OwnedFrame longer = received;
  longer.frame.dlc = 5;
  EXPECT_EQ(textOf(compared({received}, {longer})), "equal 0, different 1 (dlc 1), only 0/0");
  longer.frame.unset(frame_flag::kDlcKnown);
  EXPECT_EQ(textOf(compared({received}, {longer})), "equal 1, different 0, only 0/0");
}

TEST(Comparison, comparesTextsAndAttributesIfAsked) {
  test::OwnedFrame one;
  one.frame.kind = FrameKind::Error;
  one.frame.text = "";
  one.text = "stuff";
  one.frame.attributes.set(FrameAttribute::ErrorType, 2);
  one.frame.attributes.set(FrameAttribute::TxErrors, 2);
  test::OwnedFrame other = one;
  other.text = "form";
  other.frame.attributes.set(FrameAttribute::ErrorType, 1);
  EXPECT_EQ(textOf(compared({one}, {other})), "equal 1, different 0, only 0/0");
  EXPECT_EQ(textOf(compared({one}, {other}, {.texts = true})), "equal 0, different 1 (text 1), only 0/0");
  EXPECT_EQ(textOf(compared({one}, {other}, {.attributes = true})), "equal 0, different 1 (attributes 1), only 0/0");
  EXPECT_EQ(textOf(compared({one}, {one}, {.texts = true, .attributes = true})), "equal 1, different 0, only 0/0");
  test::OwnedFrame without = one;
  without.frame.attributes.clear();
  EXPECT_EQ(textOf(compared({one}, {without}, {.attributes = true})), "equal 1, different 0, only 0/0");
}

TEST(Comparison, passesOverKindsThatNobodyAskedFor) {
  test::OwnedFrame comment;
  comment.frame.kind = FrameKind::Comment;
  Frames first = cyclicTraffic(10);
  first.insert(first.begin() + 3, 20, comment);
  const ComparisonResult result = compared(first, cyclicTraffic(10));
  EXPECT_EQ(textOf(result), "equal 10, different 0, only 0/0");
  EXPECT_EQ(result.frames, (std::array<std::uint64_t, 2>{10, 10}));
  EXPECT_EQ(textOf(compared(first, cyclicTraffic(10), {.kinds = kAllFrameKinds})), "equal 10, different 0, only 20/0");
  EXPECT_EQ(textOf(compared({comment, comment}, {})), "equal 0, different 0, only 0/0");
}

TEST(Comparison, findsFramesInAnotherOrder) {
  Frames first;
  for (std::uint32_t id = 0; id < 8; ++id) {
    first.push_back(ownedFrameAt(0, id, {1}));
  }
  Frames second(first.rbegin(), first.rend());
  const ComparisonResult result = compared(first, second);
  EXPECT_EQ(textOf(result), "equal 8, different 0, only 0/0");
  EXPECT_GT(result.reordered, 0U);
}

TEST(Comparison, pairsTracesOfAnotherClock) {
  Frames second = cyclicTraffic(3'000);
  for (test::OwnedFrame& frame : second) {
    frame.frame.timeNs += 3 * kComparedMs;
  }
  EXPECT_EQ(textOf(compared(cyclicTraffic(3'000), second)), "equal 0, different 3000 (time 3000), only 0/0");
  EXPECT_EQ(textOf(compared(cyclicTraffic(3'000), second, {.toleranceNs = 3 * kComparedMs})),
            "equal 3000, different 0, only 0/0");
  EXPECT_EQ(compared(cyclicTraffic(3'000), second, {.toleranceNs = 4 * kComparedMs}).farthestNs, 3U * kComparedMs);
}

TEST(Comparison, tellsABoundedNumberOfDifferences) {
  const ComparisonResult result = compared(cyclicTraffic(90), {}, {.mostDifferences = 5});
  EXPECT_EQ(result.onlyIn[0], 90U);
  EXPECT_EQ(result.differences.size(), 5U);
  EXPECT_EQ(result.differences[4].first.frame.place, 5U);
  EXPECT_TRUE(compared(cyclicTraffic(90), {}, {.mostDifferences = 0}).differences.empty());
}

TEST(Comparison, keepsTheBeginningOfLongTexts) {
  test::OwnedFrame event;
  event.frame.kind = FrameKind::Event;
  event.frame.text = "";
  event.text = "a" + std::string(150, 'b');
  for (int count = 0; count < 100; ++count) {
    event.text += "\xC3\xA4";
  }
  const ComparisonResult result = compared({event}, {});
  ASSERT_EQ(result.differences.size(), 1U);
  EXPECT_EQ(result.differences[0].first.text.size(), 199U);
}

TEST(Comparison, searchesNoFartherThanAsked) {
  Frames first;
  Frames second;
  for (std::uint32_t id = 0; id < 40; ++id) {
    first.push_back(ownedFrameAt(0, id, {1}));
    second.push_back(ownedFrameAt(0, 39 - id, {2}));
  }
  second.push_back(ownedFrameAt(0, 0, {1}));
  EXPECT_EQ(compared(first, second, {.ahead = 41}).equal, 1U);
  EXPECT_EQ(compared(first, second, {.ahead = 10}).equal, 0U);
  EXPECT_EQ(compared(first, second, {.ahead = 0}).equal, 0U);
}

TEST(Comparison, takesTheCoarserResolution) {
  StreamHead fine;
  fine.format = XLATR_FORMAT_ASC;
  fine.version = 8.1;
  StreamHead coarse;
  coarse.format = XLATR_FORMAT_CSV;
  coarse.version = 1.0;
  EXPECT_EQ(toleranceOf(fine, coarse), 1'000U);
  EXPECT_EQ(toleranceOf(coarse, coarse), 1'000U);
  StreamHead logged;
  logged.format = XLATR_FORMAT_BLF;
  EXPECT_EQ(toleranceOf(logged, StreamHead()), 1U);
}

// What is removed of one trace is found again, whatever the frames, in bounded look-ahead.
TEST(Comparison, findsWhatWasRemoved) {
  test::RandomFrames random(5);
  Frames first;
  std::int64_t time = 0;
  for (int count = 0; count < 20'000; ++count) {
    first.push_back(random.next());
    time += 3;  // all times differ by more than the tolerance
    first.back().frame.timeNs = time;
    first.back().frame.bus = static_cast<std::uint16_t>(1 + first.back().frame.bus % 4);
  }
  std::erase_if(first, [](const test::OwnedFrame& each) { return each.frame.kind == FrameKind::Comment; });
  std::mt19937 numbers(3);
  Frames kept[2];
  std::array<std::uint64_t, 2> removed{};
  for (const test::OwnedFrame& each : first) {
    const std::uint32_t number = static_cast<std::uint32_t>(numbers()) % 40;
    for (std::uint32_t side = 0; side < 2; ++side) {
      if (number == side) {
        ++removed[1 - side];
      } else {
        kept[side].push_back(each);
      }
    }
  }
  const ComparisonResult result = compared(kept[0], kept[1], {.toleranceNs = 1, .texts = true, .attributes = true});
  EXPECT_EQ(result.equal, first.size() - removed[0] - removed[1]);
  EXPECT_EQ(result.different + result.onlyIn[0], removed[0]);
  EXPECT_EQ(result.different + result.onlyIn[1], removed[1]);
  EXPECT_EQ(result.frames[0], kept[0].size());
  EXPECT_EQ(result.frames[1], kept[1].size());
}

}  // namespace
}  // namespace xlatr
