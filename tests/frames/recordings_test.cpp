// Recorded traffic, whose frames are also listed one by one.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "formats/asc/asc_frames.hpp"
#include "formats/trc/trc_frames.hpp"
#include "frames/analysis/analysis.hpp"
#include "frames/comparison.hpp"
#include "messages/can_dlc.hpp"
#include "support/frame_text.hpp"

namespace xlatr {
namespace {

namespace fs = std::filesystem;

const fs::path kRecordings = XLATR_RECORDINGS_DIR;

struct ListedFrame {
  std::int64_t timeNs;
  std::uint16_t bus;
  std::string text;
};

std::vector<std::string> cellsOf(const std::string& line) {
  std::vector<std::string> cells;
  std::istringstream in(line);
  for (std::string cell; std::getline(in, cell, ',');) {
    cells.push_back(cell);
  }
  cells.resize(10);
  return cells;
}

// Columns: time_us,bus,id,extended,remote,fd,brs,esi,length,data. The text is that of a frame at time 0 on bus 0.
std::vector<ListedFrame> readList(const std::string& name) {
  std::vector<ListedFrame> frames;
  std::ifstream in(kRecordings / name);
  std::string line;
  std::getline(in, line);
  while (std::getline(in, line)) {
    const std::vector<std::string> cells = cellsOf(line);
    const bool remote = cells[4] == "1";
    const auto isSet = [&cells](std::size_t column) { return cells[column] == "1"; };
    Frame frame;
    frame.kind = remote ? FrameKind::Remote : FrameKind::Data;
    frame.id = static_cast<std::uint32_t>(std::stoul(cells[2], nullptr, 16));
    frame.flags = static_cast<std::uint16_t>(frame_flag::kReceived | (isSet(3) ? frame_flag::kExtended : 0) |
                                             (remote ? frame_flag::kDlcKnown : 0) | (isSet(5) ? frame_flag::kFd : 0) |
                                             (isSet(6) ? frame_flag::kBrs : 0) | (isSet(7) ? frame_flag::kEsi : 0));
    frame.dlc = static_cast<std::uint16_t>(lengthToDlc(static_cast<std::uint32_t>(std::stoul(cells[8]))));
    std::vector<std::uint8_t> bytes;
    for (std::size_t at = 0; !remote && at + 1 < cells[9].size(); at += 2) {
      bytes.push_back(static_cast<std::uint8_t>(std::stoul(cells[9].substr(at, 2), nullptr, 16)));
    }
    frame.data = bytes;
    frames.push_back(
        {std::stoll(cells[0]) * 1'000, static_cast<std::uint16_t>(std::stoul(cells[1])), test::textOf(frame)});
  }
  return frames;
}

struct Recording {
  std::unique_ptr<FrameSource> (*open)(const InputSource& input);
  const char* trace;
  const char* list;
  std::uint16_t onlyBus;  // 0 for all
  std::int64_t resolutionNs;
};

class RecordedFrames : public testing::TestWithParam<Recording> {};

TEST_P(RecordedFrames, isReadWhole) {
  const Recording& recording = GetParam();
  if (!fs::exists(kRecordings / recording.trace)) {
    GTEST_SKIP() << "there is no " << kRecordings / recording.trace;
  }
  std::vector<ListedFrame> expected = readList(recording.list);
  std::erase_if(expected, [&](const ListedFrame& f) { return recording.onlyBus != 0 && f.bus != recording.onlyBus; });
  const auto source = recording.open((kRecordings / recording.trace).string());
  FrameBatch batch;
  Account account;
  std::size_t at = 0;
  while (source->read(batch, account)) {
    for (std::size_t row = 0; row < batch.size(); ++row, ++at) {
      ASSERT_LT(at, expected.size());
      Frame frame = batch.at(row);
      ASSERT_LT(std::abs(frame.timeNs - expected[at].timeNs), recording.resolutionNs) << "frame " << at + 1;
      ASSERT_EQ(frame.bus, recording.onlyBus != 0 ? 0 : expected[at].bus) << "frame " << at + 1;
      frame.timeNs = 0;
      frame.bus = 0;
      ASSERT_EQ(test::textOf(frame), expected[at].text) << "frame " << at + 1;
    }
    batch.clear();
  }
  EXPECT_EQ(at, expected.size());
  EXPECT_EQ(account.read(), expected.size());
  EXPECT_TRUE(account.complete());
}

INSTANTIATE_TEST_SUITE_P(Trc, RecordedFrames,
                         testing::Values(Recording{openTrcFrames, "trc/vehicle-2.1.trc", "frames-fd.csv", 0, 1},
                                         Recording{openTrcFrames, "trc/vehicle-1.3.trc", "frames.csv", 0, 1},
                                         Recording{openTrcFrames, "trc/vehicle-1.1.trc", "frames.csv", 2, 100'000}));

INSTANTIATE_TEST_SUITE_P(Asc, RecordedFrames,
                         testing::Values(Recording{openAscFrames, "asc/vehicle.asc", "frames.csv", 0, 1},
                                         Recording{openAscFrames, "asc/vehicle-v7.asc", "frames.csv", 0, 1},
                                         Recording{openAscFrames, "asc/vehicle-crlf-v7.asc", "frames.csv", 0, 1},
                                         Recording{openAscFrames, "asc/vehicle-fd-v8.asc", "frames-fd.csv", 0, 1},
                                         Recording{openAscFrames, "asc/vehicle-fd-canfd-lines-v8.asc", "frames-fd.csv",
                                                   0, 1}));

// The same traffic, in two formats.
TEST(RecordedTraffic, isTheSameInBothFormats) {
  if (!fs::exists(kRecordings / "asc/vehicle.asc")) {
    GTEST_SKIP() << "there is no " << kRecordings / "asc/vehicle.asc";
  }
  const auto first = openAscFrames((kRecordings / "asc/vehicle.asc").string());
  const auto second = openTrcFrames((kRecordings / "trc/vehicle-1.3.trc").string());
  Account account;
  const ComparisonResult result = compareFrames(*first, account, *second, account, {});
  EXPECT_TRUE(result.same()) << result.equal << " equal, " << result.different << " different, " << result.onlyIn[0]
                             << " and " << result.onlyIn[1] << " only in one";
  EXPECT_EQ(result.equal, readList("frames.csv").size());
}

TEST(RecordedTraffic, isAnalysedWhole) {
  if (!fs::exists(kRecordings / "asc/vehicle.asc")) {
    GTEST_SKIP() << "there is no " << kRecordings / "asc/vehicle.asc";
  }
  const auto source = openAscFrames((kRecordings / "asc/vehicle.asc").string());
  AnalysisSettings settings;
  settings.rates.nominal = 500'000;
  Analysis analysis(settings);
  FrameBatch batch;
  Account account;
  while (source->read(batch, account)) {
    analysis.add(batch);
    batch.clear();
  }
  std::map<std::uint16_t, std::uint64_t> buses;
  for (const ListedFrame& frame : readList("frames.csv")) {
    ++buses[frame.bus];
  }
  ASSERT_EQ(analysis.buses().size(), buses.size());
  for (const BusStatistics* const bus : analysis.buses()) {
    EXPECT_EQ(bus->traffic, buses[bus->bus]);
    EXPECT_LT(analysis.highestLoad(*bus).value_or(0.0), 1.0) << bus->bus;
  }
  std::uint64_t frames = 0;
  for (const IdentifierStatistics* const identifier : analysis.identifiers()) {
    frames += identifier->frames;
  }
  EXPECT_EQ(frames, readList("frames.csv").size());
}

}  // namespace
}  // namespace xlatr
