#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "stats_report.hpp"
#include "tools/program.hpp"
#include "xlatr/frames.h"
#include "xlatr/frames.hpp"

namespace xlatr::cli {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

const std::string kStatsHead = ";$FILEVERSION=2.1\r\n;$STARTTIME=43894.5\r\n;$COLUMNS=N,O,T,B,I,d,R,L,D\r\n";

// Two identifiers on a bus, one of them every 10 ms with a step of 20 ms at the end.
const std::string kStatsTrace = kStatsHead +
                                "1 0.0 DT 1 0123 Rx - 2 01 02\r\n"
                                "2 5.0 FB 1 18FF0102 Tx - 9 01 02 03 04 05 06 07 08 09 0A 0B 0C\r\n"
                                "3 10.0 DT 1 0123 Rx - 2 01 03\r\n"
                                "4 30.0 DT 1 0123 Rx - 2 01 07\r\n";

TEST(StatsCommand, showsBusesAndIdentifiers) {
  const Workspace here;
  here.write("drive.trc", kStatsTrace);
  const Ended run = here.run({"stats", "drive.trc"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.errors, "");
  EXPECT_THAT(run.output, HasSubstr("drive.trc: 4 data\nfrom 0.000000 s to 0.030000 s: 30 ms\n"));
  EXPECT_THAT(run.output, HasSubstr("BUS  FRAMES     /S  IDS  BYTES  ERRORS  BURSTS  GAPS  LONGEST SILENCE\n"
                                    "  1       4  133.3    2     18       0       0     0  20 ms at 0.010000 s\n"));
  EXPECT_THAT(run.output, HasSubstr("  1        123  data       3  66.7  10.000   15.000  20.000  20.000    2  01 07"));
  EXPECT_THAT(run.output,
              HasSubstr("  1  18FF0102x  data       1     -       -        -       -       -   12  01 02 03 "
                        "04 05 06 07 08 ..."));
}

TEST(StatsCommand, showsTheLoadIfItKnowsTheBitRate) {
  const Workspace here;
  here.write("drive.trc", kStatsTrace);
  // Three frames of 63 bits, and one that takes 48 bits at 2 us and 134 at 0.5 us.
  const Ended run = here.run({"stats", "drive.trc", "--bitrate", "500k,2M", "--stuffing", "none"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.output, HasSubstr("  LOAD  HIGHEST  LONGEST SILENCE\n"));
  EXPECT_THAT(run.output, HasSubstr("  1.8 %    1.8 %  20 ms at"));
  EXPECT_EQ(here.run({"stats", "drive.trc", "--bitrate", "fast"}).exitCode, 2);
  EXPECT_EQ(here.run({"stats", "drive.trc", "--lin-bitrate", "fast"}).exitCode, 2);
  EXPECT_EQ(here.run({"stats", "drive.trc", "--stuffing", "some"}).exitCode, 2);
  EXPECT_EQ(here.run({"stats", "drive.trc", "--lin-bitrate", "19200"}).exitCode, 0);
}

TEST(StatsCommand, printsJson) {
  const Workspace here;
  here.write("drive.trc", kStatsTrace);
  const Ended run = here.run({"stats", "--json", "drive.trc", "--bitrate", "500k"});
  EXPECT_EQ(run.exitCode, 0);
  const json traces = json::parse(run.output);
  ASSERT_EQ(traces.size(), 1U);
  const json& trace = traces[0];
  EXPECT_EQ(trace["file"], "drive.trc");
  EXPECT_EQ(trace["frames"], (json{{"data", 4}}));
  EXPECT_EQ(trace["last_ns"], 30'000'000);
  EXPECT_EQ(trace["buses"][0]["bus"], 1);
  EXPECT_GT(trace["buses"][0]["load"], 0.0);
  ASSERT_EQ(trace["ids"].size(), 2U);
  EXPECT_EQ(trace["ids"][0]["id"], "123");
  EXPECT_EQ(trace["ids"][0]["cycle_mean_ns"], 15e6);
  EXPECT_EQ(trace["ids"][0]["changed"], "0005");
  EXPECT_EQ(trace["ids"][0]["last_data"], "0107");
  EXPECT_EQ(trace["ids"][1]["extended"], true);
  EXPECT_EQ(trace["ids"][1]["fd"], true);
  EXPECT_EQ(json::parse(here.run({"stats", "--json", "drive.trc"}).output)[0]["buses"][0]["load"], nullptr);
}

TEST(StatsCommand, showsWhatIsSelected) {
  const Workspace here;
  here.write("drive.trc", kStatsTrace);
  const Ended run = here.run({"stats", "drive.trc", "--id", "0x123", "--from-time", "0.005"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.output, HasSubstr("drive.trc: 2 data\n"));
  EXPECT_THAT(run.output, Not(HasSubstr("18FF0102")));
}

TEST(StatsCommand, goesOnAfterAFileThatIsNoTrace) {
  const Workspace here;
  here.write("a.trc", kStatsTrace);
  here.write("letter.txt", "hello\n");
  here.write("b.trc", kStatsTrace + "noise\r\n");
  const Ended run = here.run({"stats", "a.trc", "letter.txt", "b.trc"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.output, HasSubstr("a.trc: 4 data\n"));
  EXPECT_THAT(run.output, HasSubstr("\n\nb.trc: 4 data, 1 comment\n"));
  EXPECT_THAT(run.errors, HasSubstr("letter.txt"));
  EXPECT_THAT(run.errors, HasSubstr("b.trc: "));
  EXPECT_EQ(here.run({"stats", "b.trc"}).exitCode, 3);
}

// Frames of so many buses, of which each is a nanosecond before the one before it.
std::string textOfBuses(std::uint16_t count, const xlatr_analysis_options& options) {
  const std::vector<std::int32_t> offsets(std::size_t{count} + 1);
  const std::vector<std::uint8_t> kinds(count, XLATR_KIND_LIN);
  const std::vector<std::uint16_t> zeros(count);
  std::vector<std::int64_t> times;
  std::vector<std::uint16_t> buses;
  std::vector<std::uint32_t> ids;
  for (std::uint16_t at = 0; at < count; ++at) {
    times.push_back(-at);
    buses.push_back(at);
    ids.push_back(at % 64U);
  }
  xlatr_batch batch{};
  batch.size = sizeof batch;
  batch.rows = count;
  batch.time_ns = times.data();
  batch.kind = kinds.data();
  batch.bus = buses.data();
  batch.id = ids.data();
  batch.flags = zeros.data();
  batch.dlc = zeros.data();
  batch.data_offsets = offsets.data();
  batch.text_offsets = offsets.data();
  Analysis analysis(&options);
  analysis.add(BatchView(batch));
  return statsText("odd.mf4", analysis, false, 0);
}

std::size_t longestLineOf(const std::string& text) {
  std::size_t longest = 0;
  for (std::size_t begin = 0, end = 0; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1) {
    longest = std::max(longest, end - begin);
  }
  return longest;
}

// The columns go that are missed least, until the rest fits.
TEST(StatsReport, fitsANarrowTerminal) {
  const Workspace here;
  here.write("drive.trc", kStatsTrace);
  Stream stream((here / "drive.trc").string());
  Analysis analysis;
  analysis.run(stream);
  const std::string all = statsText("drive.trc", analysis, false, 0);
  const std::size_t whole = longestLineOf(all);
  constexpr std::size_t kWithoutP99 = 8;
  constexpr std::size_t kWithoutTime = 18;
  struct Case {
    std::size_t width;
    const char* columns;
  };
  for (const auto& [width, columns] : std::initializer_list<Case>{
           {whole, "MIN ms  MEAN ms  MAX ms  P99 ms  LEN  LAST DATA                    OVER TIME\n"},
           {whole - 1, "MIN ms  MEAN ms  MAX ms  LEN  LAST DATA                    OVER TIME\n"},
           {whole - kWithoutP99 - 1, "MIN ms  MEAN ms  MAX ms  LEN  LAST DATA\n"},
           {whole - kWithoutP99 - kWithoutTime - 1, "MIN ms  MEAN ms  MAX ms  LEN\n"},
           {1, "MIN ms  MEAN ms  MAX ms  LEN\n"},
       }) {
    EXPECT_THAT(statsText("drive.trc", analysis, false, width), HasSubstr(columns)) << width;
  }
  // A bar of the line over time is one character, however many bytes it takes.
  EXPECT_THAT(statsText("drive.trc", analysis, true, whole), HasSubstr("P99 ms"));
}

TEST(StatsReport, saysWhatIsBeyondItsLimits) {
  xlatr_analysis_options options{};
  options.size = sizeof options;
  options.most_ids = 2;
  EXPECT_THAT(textOfBuses(1030, options),
              testing::StartsWith("odd.mf4: 1,030 lin\n"
                                  "from -0.000001029 s to 0.000000 s: 1.029 us\n"
                                  "1,029 frames are earlier than the one before\n"
                                  "1,022 frames have identifiers beyond the first 2, which are not shown\n"
                                  "6 frames are of buses beyond the first 1,024, which are not shown\n"));
}

TEST(StatsReport, countsOneFrame) {
  xlatr_analysis_options options{};
  options.size = sizeof options;
  EXPECT_THAT(textOfBuses(2, options), HasSubstr("\n1 frame is earlier than the one before\n"));
}

TEST(StatsCommand, showsALoadOnlyWhereItIsKnown) {
  const Workspace here;
  here.write("drive.trc", kStatsTrace + "5 31.0 ST 2 Rx 00 00 00 08\r\n");
  const Ended run = here.run({"stats", "drive.trc", "--bitrate", "500k"});
  EXPECT_THAT(run.output, HasSubstr("  2       1   32.3    0      0       0       0     0      -        -  -\n"));
}

TEST(StatsCommand, showsATraceWithoutFrames) {
  const Workspace here;
  here.write("empty.trc", kStatsHead);
  const Ended run = here.run({"stats", "empty.trc"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.output, "empty.trc: no frames\n");
}

}  // namespace
}  // namespace xlatr::cli
