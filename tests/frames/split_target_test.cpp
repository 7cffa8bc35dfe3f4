#include "frames/split_target.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "frames/frame_failure.hpp"
#include "frames/frame_job.hpp"
#include "frames/trace_file.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

namespace fs = std::filesystem;

using Names = std::vector<std::string>;

constexpr std::int64_t kMs = 1'000'000;
constexpr std::int64_t kStartNs = 1'709'280'000'000'000'000;  // 2024-03-01 08:00:00

// Identifiers are the numbers of the frames.
struct Row {
  std::int64_t ms;
  std::uint16_t bus;
};

class SplitTargetTest : public testing::Test {
 protected:
  void split(const std::string& name, const std::vector<Row>& rows, const SplitSettings& settings,
             const TargetSettings& writing = {}) {
    SplitTarget target(folder_.file(name), writing, settings);
    target.create({.start = TraceStart{.sinceEpochNs = kStartNs}});
    FrameBatch batch;
    std::uint32_t id = 0;
    for (const Row& row : rows) {
      batch.append(Frame{.timeNs = row.ms * kMs, .bus = row.bus, .id = ++id});
    }
    account_ = {};
    target.write(batch, account_);
    target.writeRest(account_);
    target.finish();
    files_.clear();
    for (const WrittenFile& file : target.files()) {
      files_.push_back(fs::path(file.name).filename().string() + " " + std::to_string(file.frames));
      EXPECT_EQ(file.bytes, fs::file_size(file.name));
    }
    std::ranges::sort(files_);
  }

  // The identifiers and milliseconds of a file.
  std::string framesOf(const std::string& name) {
    const auto source = openTrace(folder_.file(name));
    FrameBatch batch;
    Account account;
    std::string text;
    while (source->read(batch, account)) {
      for (std::size_t row = 0; row < batch.size(); ++row) {
        text += std::to_string(batch.ids()[row]) + "@" + std::to_string(batch.times()[row] / kMs) + " ";
      }
      batch.clear();
    }
    return text;
  }

  test::TempFolder folder_;
  Account account_;
  Names files_;
};

TEST_F(SplitTargetTest, writesOneFileUnlessItIsAskedToSplit) {
  split("drive%n.trc", {{0, 1}, {1, 2}}, {});
  EXPECT_EQ(files_, (Names{"drive%n.trc 2"}));
}

// Each part has the frames of one multiple of the time; nothing stands for the ones without frames.
TEST_F(SplitTargetTest, splitsByTime) {
  split("drive.trc", {{-5, 1}, {0, 1}, {9, 1}, {10, 1}, {8, 1}, {45, 1}}, {.ns = 10 * kMs});
  EXPECT_EQ(files_, (Names{"drive_001.trc 1", "drive_002.trc 2", "drive_003.trc 2", "drive_004.trc 1"}));
  EXPECT_EQ(framesOf("drive_002.trc"), "2@0 3@9 ");
  EXPECT_EQ(framesOf("drive_003.trc"), "4@10 5@8 ");
  EXPECT_EQ(framesOf("drive_004.trc"), "6@45 ");
  EXPECT_EQ(account_.written(), 6U);
}

TEST_F(SplitTargetTest, splitsByBus) {
  split("drive.trc", {{0, 0}, {1, 2}, {2, 1}, {3, 0}, {4, 2}}, {.buses = true});
  EXPECT_EQ(files_, (Names{"drive_BUS1.trc 2", "drive_BUS2.trc 3"}));
  EXPECT_EQ(framesOf("drive_BUS1.trc"), "3@2 4@3 ");
  EXPECT_EQ(framesOf("drive_BUS2.trc"), "1@0 2@1 5@4 ");
  split("none.trc", {{0, 0}, {1, 0}}, {.buses = true});
  EXPECT_EQ(files_, (Names{"none_BUS0.trc 2"}));
  split("empty.trc", {}, {.buses = true});
  EXPECT_EQ(files_, Names());
}

TEST_F(SplitTargetTest, splitsBySize) {
  constexpr std::uint64_t kSize = 8192;
  std::vector<Row> rows;
  for (std::int64_t at = 0; at < 1000; ++at) {
    rows.push_back({at, 1});
  }
  split("drive.trc", rows, {.bytes = kSize});
  ASSERT_GT(files_.size(), 5U);
  std::string all;
  for (std::uint32_t part = 1; part <= files_.size(); ++part) {
    const std::string name = TargetName("drive.trc", false, true).of({.number = part}, std::nullopt);
    EXPECT_LE(fs::file_size(folder_.file(name)), kSize);
    EXPECT_TRUE(part == files_.size() || fs::file_size(folder_.file(name)) > kSize - 1024) << name;
    all += framesOf(name);
  }
  EXPECT_TRUE(all.starts_with("1@0 2@1 "));
  EXPECT_TRUE(all.ends_with(" 1000@999 "));
  EXPECT_EQ(std::ranges::count(all, '@'), 1000);
}

TEST_F(SplitTargetTest, fillsInNames) {
  split("%t %%_%2n.b%b.trc", {{0, 1}, {90'061'000, 2}}, {.ns = 1000 * kMs, .buses = true});
  EXPECT_EQ(files_, (Names{"20240301-080000 %_01.b1.trc 1", "20240302-090101 %_01.b2.trc 1"}));
  const PartOfTrace part{.bus = 300, .number = 12345, .timeNs = 61'999'000'000};
  EXPECT_EQ(TargetName("a%4n-%t.trc", false, true).of(part, std::nullopt), "a12345-61.trc");
  EXPECT_EQ(TargetName("dir.d/a", true, true).of(part, std::nullopt), "dir.d/a_BUS300_12345");
  EXPECT_EQ(TargetName("dir.d/.trc", true, false).of(part, std::nullopt), "dir.d/.trc_BUS300");
}

TEST_F(SplitTargetTest, refusesWhatCantBeSplit) {
  const auto refusalOf = [](const std::function<void()>& action) -> std::string {
    try {
      action();
    } catch (const FrameFailure& failure) {
      return failure.what();
    }
    return "";
  };
  EXPECT_NE(refusalOf([&] { split("a%x.trc", {}, {.buses = true}); }).find("a percent sign stands before"),
            std::string::npos);
  EXPECT_NE(refusalOf([&] { split("a%", {}, {.buses = true}); }).find("a percent sign"), std::string::npos);
  EXPECT_NE(refusalOf([&] { split("a%n.trc", {}, {.ns = 1, .buses = true}); }).find("put %b into it"),
            std::string::npos);
  EXPECT_NE(refusalOf([&] { split("a%b.trc", {}, {.bytes = 1, .buses = true}); }).find("put %n into it"),
            std::string::npos);
  std::vector<Row> buses;
  for (std::uint16_t bus = 1; bus <= SplitTarget::kMostBuses + 1; ++bus) {
    buses.push_back({0, bus});
  }
  EXPECT_NE(refusalOf([&] { split("a.trc", buses, {.buses = true}); }).find("more than 64 buses"), std::string::npos);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path()), {}), 0);
  static_cast<void>(folder_.write("b_002.trc", "old"));
  EXPECT_NE(refusalOf([&] {
              split("b.trc", {{0, 1}, {2, 1}}, {.ns = kMs});
            }).find("b_002.trc: the file exists"),
            std::string::npos);
  EXPECT_EQ(framesOf("b_001.trc"), "1@0 ");
}

// A part that would replace a source, and one that was written before a strict job failed.
TEST_F(SplitTargetTest, leavesNoHarmInJobs) {
  split("a_001.trc", {{0, 1}, {2, 1}, {4, 1}}, {});
  JobSettings settings{.sources = {{folder_.file("a_001.trc")}},
                       .target = folder_.file("a.trc"),
                       .writing = {.replaces = true},
                       .split = {.ns = 2 * kMs}};
  JobReport report;
  EXPECT_THROW(runJob(settings, report), FrameFailure);
  EXPECT_EQ(framesOf("a_001.trc"), "1@0 2@2 3@4 ");
  settings.target = folder_.file("c.mf4");
  settings.writing.sink.version = 0.0;
  settings.strict = true;
  report = {};
  runJob(settings, report);
  EXPECT_EQ(report.files.size(), 3U);
  const std::string noise = folder_.write("noise.trc", folder_.read("a_001.trc") + "noise\r\n");
  settings.sources = {{noise}};
  settings.target = folder_.file("d.mf4");
  report = {};
  EXPECT_THROW(runJob(settings, report), FrameFailure);
  EXPECT_TRUE(report.files.empty());
  EXPECT_FALSE(fs::exists(folder_.file("d_001.mf4")));
}

}  // namespace
}  // namespace xlatr
