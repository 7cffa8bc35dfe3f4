// Recorded traffic as BTRC and as a session, and back.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "formats/native/btr_frames.hpp"
#include "formats/native/btrc_frames.hpp"
#include "formats/trc/trc_frames.hpp"
#include "support/frame_text.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

namespace fs = std::filesystem;

struct NativeTarget {
  const char* name;
  std::span<const FrameCapacity> (*capacities)();
  std::unique_ptr<FrameSource> (*open)(const InputSource& input);
  std::unique_ptr<FrameSink> (*create)(const OutputTarget& target, const StreamHead& head,
                                       const SinkSettings& settings);
};

constexpr NativeTarget kTargets[] = {{"btrc", btrcCapacities, openBtrcFrames, createBtrcFrames},
                                     {"btr", btrCapacities, openBtrFrames, createBtrFrames}};

class NativeRecordings : public testing::TestWithParam<NativeTarget> {};

TEST_P(NativeRecordings, comeBackWhole) {
  const NativeTarget& target = GetParam();
  const test::TempFolder folder;
  for (const char* const name : {"vehicle-2.1.trc", "vehicle-1.3.trc", "vehicle-1.1.trc"}) {
    const fs::path recording = fs::path(XLATR_RECORDINGS_DIR) / "trc" / name;
    if (!fs::exists(recording)) {
      GTEST_SKIP() << "there is no " << recording;
    }
    const auto source = openTrcFrames(recording.string());
    const auto sink = target.create(folder.file("target"), source->head(), {});
    const FrameCapacity& capacity = target.capacities().back();
    FrameBatch batch;
    Account account;
    Account ignored;
    std::vector<std::string> expected;
    while (source->read(batch, account)) {
      for (std::size_t row = 0; row < batch.size(); ++row) {
        const Frame frame = batch.at(row);
        const bool held = !whyNotHeld(capacity, frame);
        if (held || capacity.comments) {
          expected.push_back(test::textOf(held ? reducedTo(capacity, frame, ignored) : frame));
        }
      }
      sink->write(batch, account);
      batch.clear();
    }
    sink->close();
    EXPECT_EQ(account.written(), expected.size()) << name;
    EXPECT_EQ(account.written() + account.dropped(), account.read()) << name;
    EXPECT_GE(expected.size(), 4'390U) << name;
    Account again;
    const auto back = target.open(folder.file("target"));
    EXPECT_EQ(test::textsOf(*back, again), expected) << name;
    EXPECT_TRUE(again.complete()) << name;
  }
}

// The trace that the examples convert. Its 2,000 messages have 170 CAN FD frames, 7 events and 4 statuses, which make
// the compatible way write 1,819.
TEST(NativeSample, isASessionButForWhatHasNoSlot) {
  const test::TempFolder folder;
  const auto source = openTrcFrames((fs::path(XLATR_PROJECT_DIR) / "samples" / "drive.trc").string());
  const auto sink = createBtrFrames(folder.file("target"), source->head(), {});
  FrameBatch batch;
  Account account;
  while (source->read(batch, account)) {
    sink->write(batch, account);
    batch.clear();
  }
  sink->close();
  const std::uint64_t comments = account.dropped(Remark::KindNotHeld).frames;
  EXPECT_EQ(account.read(), 2'000U + comments);
  EXPECT_EQ(account.written(), 1'823U);
  EXPECT_EQ(account.dropped(Remark::FdNotHeld).frames, 170U);
  EXPECT_EQ(account.dropped(Remark::TextNotHeld).frames, 7U);
  Account again;
  EXPECT_EQ(test::textsOf(*openBtrFrames(folder.file("target")), again).size(), 1'823U);
  EXPECT_TRUE(again.complete());
}

INSTANTIATE_TEST_SUITE_P(Native, NativeRecordings, testing::ValuesIn(kTargets),
                         [](const auto& target) { return std::string(target.param.name); });

}  // namespace
}  // namespace xlatr
