// The groups, blocks and lists of files of frames.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <ios>
#include <iterator>
#include <memory>
#include <optional>
#include <random>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "formats/mf4/mdf_reader.hpp"
#include "formats/mf4/mf4_frames.hpp"
#include "support/frame_text.hpp"
#include "support/mf4_checker.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

std::string fileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

const std::array<std::uint8_t, 64> kPayload = [] {
  std::array<std::uint8_t, 64> bytes{};
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    // Nothing that zips well.
    bytes[at] = static_cast<std::uint8_t>(at * at * 167 + at * 13 + 7);
  }
  return bytes;
}();

Frame frameOfBus(FrameKind kind, std::uint16_t bus, std::int64_t timeNs) {
  Frame frame;
  frame.kind = kind;
  frame.timeNs = timeNs;
  frame.bus = bus;
  frame.flags = frame_flag::kReceived;
  return frame;
}

Frame classicFrame(std::uint16_t bus, std::int64_t timeNs) {
  Frame frame = frameOfBus(FrameKind::Data, bus, timeNs);
  frame.id = 0x10;
  frame.dlc = 2;
  frame.data = std::span(kPayload).first(2);
  return frame;
}

Frame fdFrame(std::uint16_t bus, std::int64_t timeNs, std::uint16_t dlc) {
  constexpr std::array<std::size_t, 16> kLengths = {0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64};
  Frame frame = frameOfBus(FrameKind::Data, bus, timeNs);
  frame.set(frame_flag::kFd);
  frame.dlc = dlc;
  frame.data = std::span(kPayload).first(kLengths[dlc]);
  return frame;
}

// Writes frames one by one, and remembers how they look.
class Writing {
 public:
  explicit Writing(const SinkSettings& settings, const StreamHead& head = {})
      : path_(folder_.file("target.mf4")), sink_(createMf4Frames(path_, head, settings)) {}

  void write(const Frame& frame) {
    batch_.append(frame);
    texts_.push_back(test::textOf(frame));
    if (batch_.full()) {
      flush();
    }
  }
  void flush() {
    sink_->write(batch_, account_);
    batch_.clear();
  }
  // The report on the closed file, which must be sound and have the frames.
  test::Mf4Report close() {
    flush();
    sink_->close();
    EXPECT_EQ(account_.written(), texts_.size());
    EXPECT_TRUE(readBack() == texts_);
    test::Mf4Report report = test::checkMf4(fileBytes(path_));
    EXPECT_EQ(test::faultsOf(report), "");
    return report;
  }

  [[nodiscard]] std::vector<std::string> readBack() const {
    Account account;
    std::vector<std::string> texts = test::textsOf(*openMf4Frames(path_), account);
    EXPECT_TRUE(account.complete());
    return texts;
  }
  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] std::size_t blocksNamed(const test::Mf4Report& report, const std::string& id) const {
    return static_cast<std::size_t>(std::ranges::count(report.blocks, id));
  }

 private:
  test::TempFolder folder_;
  std::string path_;
  std::unique_ptr<FrameSink> sink_;
  FrameBatch batch_;
  Account account_;
  std::vector<std::string> texts_;
};

using Names = std::vector<std::pair<std::string, std::string>>;

Names namesOf(const test::Mf4Report& report) {
  Names names;
  for (const test::Mf4Group& group : report.groups) {
    names.emplace_back(group.name, group.source);
  }
  return names;
}

TEST(MdfFrameOutput, writesAGroupForEachKindAndBus) {
  Writing writing({});
  writing.write(classicFrame(2, 1));
  writing.write(classicFrame(1, 2));
  writing.write(fdFrame(2, 3, 9));
  writing.write(classicFrame(0, 4));
  writing.write(frameOfBus(FrameKind::Error, 2, 5));
  writing.write(frameOfBus(FrameKind::Overload, 255, 6));
  const test::Mf4Report report = writing.close();
  EXPECT_EQ(namesOf(report), (Names{{"CAN_DataFrame", "CAN2"},
                                    {"CAN_DataFrame", "CAN1"},
                                    {"CAN_DataFrame", "CAN"},
                                    {"CAN_ErrorFrame", "CAN2"},
                                    {"CAN_OverloadFrame", "CAN255"}}));
  EXPECT_EQ(report.groups[0].cycleCount, 2U);
}

// There are fewer record ids than kinds and buses.
TEST(MdfFrameOutput, putsTheBusesForWhichThereIsNoIdIntoOneGroup) {
  Writing writing({});
  std::int64_t timeNs = 0;
  for (int round = 0; round < 2; ++round) {
    for (std::uint16_t bus = 0; bus <= 255; ++bus) {
      writing.write(classicFrame(bus, ++timeNs));
      writing.write(frameOfBus(FrameKind::Error, bus, ++timeNs));
      writing.write(frameOfBus(FrameKind::Overload, bus, ++timeNs));
    }
  }
  const test::Mf4Report report = writing.close();
  // 248 for one bus each, and one more of each kind.
  ASSERT_EQ(report.groups.size(), 251U);
  EXPECT_EQ(report.groups[247].source, "CAN82");
  EXPECT_EQ(report.groups[248].name, "CAN_OverloadFrame");
  EXPECT_EQ(report.groups[248].source, "CAN");
  EXPECT_EQ(report.groups[248].cycleCount, 2U * (256 - 82));
  EXPECT_EQ(report.groups[250].recordId, 250U);
}

TEST(MdfFrameOutput, writesALogOfABusWhereThereIsNoFrame) {
  Writing writing({.compact = true});
  const test::Mf4Report report = writing.close();
  EXPECT_EQ(namesOf(report), (Names{{"CAN_DataFrame", "CAN"}}));
  MdfReader reader{MdfInfo(writing.path())};
  std::string reason;
  EXPECT_TRUE(reader.ValidateFile(reason)) << reason;
}

TEST(MdfFrameOutput, storesShortPayloadsOfFdFramesApart) {
  for (const bool zipped : {false, true}) {
    Writing writing({.zipped = zipped, .compact = true});
    std::int64_t timeNs = 0;
    for (int at = 0; at < 6'000; ++at) {
      writing.write(classicFrame(1, ++timeNs));
      writing.write(fdFrame(2, ++timeNs, 0));
      writing.write(fdFrame(3, ++timeNs, 14));
    }
    const test::Mf4Report report = writing.close();
    // Those of bus 3 outgrow a block, those of bus 2 are only lengths; zipped, long records are shorter.
    EXPECT_EQ(writing.blocksNamed(report, "SD"), zipped ? 0U : 4U);
    EXPECT_EQ(writing.blocksNamed(report, "DL"), zipped ? 0U : 3U);
    ASSERT_EQ(report.groups.size(), 3U);
    EXPECT_EQ(report.groups[1].records.size() / report.groups[1].cycleCount, zipped ? 80U : 24U);
  }
}

// By the frames of the first batch, also when it is not full.
TEST(MdfFrameOutput, decidesByTheFirstFrames) {
  struct Case {
    std::uint16_t first;  // DLC
    std::uint16_t later;
    bool stored;
  };
  for (const Case& item : {Case{14, 15, true}, Case{15, 1, false}}) {
    Writing writing({.compact = true});
    writing.write(classicFrame(1, 0));
    for (std::int64_t at = 0; at < 17'000; ++at) {
      writing.write(at % 3 == 0 ? classicFrame(1, at) : fdFrame(1, at, at < 16'384 ? item.first : item.later));
    }
    EXPECT_EQ(writing.blocksNamed(writing.close(), "SD") > 0, item.stored);
  }
  // One frame: the signal data need a block of their own.
  for (const auto& [dlc, stored] : {std::pair<std::uint16_t, bool>{13, false}, {12, true}, {11, true}}) {
    Writing writing({.compact = true});
    writing.write(fdFrame(1, 0, dlc));
    EXPECT_EQ(writing.blocksNamed(writing.close(), "SD") > 0, stored) << dlc;
  }
}

// What fills up long records is next to nothing when it is zipped; but payloads that come again after a while are found
// again only where they lie closer together.
TEST(MdfFrameOutput, squeezesBothFormsOfAZippedFile) {
  constexpr std::size_t kLength = 20;
  constexpr std::uint16_t kDlc = 11;
  for (const bool comesAgain : {false, true}) {
    Writing writing({.zipped = true, .compact = true});
    std::mt19937 random(1);
    std::vector<std::uint8_t> bytes(kLength * 12'000);
    std::ranges::generate(bytes, [&random] { return static_cast<std::uint8_t>(random()); });
    for (std::size_t at = 0; at < 12'000; ++at) {
      Frame frame = fdFrame(1, static_cast<std::int64_t>(at), kDlc);
      frame.data = std::span(bytes).subspan(kLength * (comesAgain ? at % 1'000 : at), kLength);
      writing.write(frame);
    }
    const test::Mf4Report report = writing.close();
    EXPECT_EQ(report.groups[0].records.size(), 12'000U * (comesAgain ? 24 : 80));
    EXPECT_EQ(writing.blocksNamed(report, "HL"), comesAgain ? 1U : 0U);
  }
}

// Whoever is stopped leaves whole frames behind.
TEST(MdfFrameOutput, writesPayloadsBeforeTheRecordsThatReferToThem) {
  constexpr std::int64_t kCount = 180'000;  // more than a block of records
  const test::TempFolder folder;
  const std::string path = folder.file("target.mf4");
  const auto sink = createMf4Frames(path, {}, {.compact = true});
  Account account;
  FrameBatch batch;
  for (std::int64_t at = 0; at < kCount; ++at) {
    batch.append(fdFrame(at % 2 == 0 ? 1 : 2, at, 1));
    if (batch.full() || at + 1 == kCount) {
      sink->write(batch, account);
      batch.clear();
    }
  }
  const auto source = openMf4Frames(path);
  EXPECT_TRUE(source->head().unfinished);
  Account found;
  for (std::int64_t at = 0; source->read(batch, found); batch.clear()) {
    for (std::size_t row = 0; row < batch.size(); ++row, ++at) {
      const Frame frame = batch.at(row);
      ASSERT_TRUE(frame.timeNs == at && frame.data.size() == 1 && frame.data[0] == kPayload[0]) << at;
    }
  }
  EXPECT_GT(found.read(), 100'000U);
  EXPECT_LT(found.read(), std::uint64_t{kCount});
  EXPECT_TRUE(found.complete());
}

TEST(MdfFrameOutput, writesStartsWithAndWithoutAZone) {
  struct Case {
    std::optional<TraceStart> start;
    std::optional<TraceStart> read;
  };
  const Case cases[] = {
      {std::nullopt, std::nullopt},
      {TraceStart{.sinceEpochNs = 1'234'567'890'123'456'789}, TraceStart{.sinceEpochNs = 1'234'567'890'123'456'789}},
      {TraceStart{.sinceEpochNs = 7'200'000'000'001, .zoneMinutes = 120},
       TraceStart{.sinceEpochNs = 7'200'000'000'001, .zoneMinutes = 120}},
      {TraceStart{.sinceEpochNs = 5, .zoneMinutes = -840}, TraceStart{.sinceEpochNs = 5, .zoneMinutes = -840}},
      // Files can't say that it was before 1970.
      {TraceStart{.sinceEpochNs = -5}, std::nullopt},
  };
  for (const Case& item : cases) {
    StreamHead head;
    head.start = item.start;
    Writing writing({}, head);
    static_cast<void>(writing.close());
    EXPECT_EQ(openMf4Frames(writing.path())->head().start, item.read);
  }
}

TEST(MdfFrameOutput, failsWhereNothingCanBeWritten) {
  const test::TempFolder folder;
  EXPECT_THROW(static_cast<void>(createMf4Frames(folder.file("no/such/target.mf4"), {}, {})), std::ios_base::failure);
  if (!std::filesystem::exists("/dev/full")) {
    GTEST_SKIP() << "no /dev/full on this machine";
  }
  for (const bool compact : {false, true}) {
    const auto sink = createMf4Frames(std::string("/dev/full"), {}, {.compact = compact});
    FrameBatch batch;
    batch.append(fdFrame(1, 0, 1));
    Account account;
    EXPECT_THROW(
        {
          sink->write(batch, account);
          sink->close();
        },
        std::ios_base::failure);
  }
}

}  // namespace
}  // namespace xlatr
