#include "progress.hpp"

#include <gmock/gmock.h>

#include <cstddef>
#include <string>

namespace xlatr::cli {
namespace {

using testing::StartsWith;

ProgressState half() {
  ProgressState state;
  state.bytesRead = 500'000'000;
  state.bytesTotal = 1'000'000'000;
  state.frames = 12'000'000;
  state.seconds = 4.0;
  return state;
}

TEST(ProgressBar, saysHowFarItIsAndHowFast) {
  EXPECT_EQ(progressBar(half(), 120),
            "[" + std::string(20, '#') + std::string(20, '.') + "]   50 %  0:04 left  3,000,000 frames/s  125.0 MB/s");
  ProgressState state = half();
  state.files = 10;
  state.filesDone = 3;
  state.seconds = 4000;
  EXPECT_THAT(progressBar(state, 200), testing::HasSubstr("  50 %  file 4 of 10  1:06:40 left  3,000 frames/s"));
}

TEST(ProgressBar, isNeverWiderThanTheTerminal) {
  ProgressState state = half();
  state.files = 1000;
  for (std::size_t width = 0; width < 130; ++width) {
    EXPECT_LE(progressBar(state, width).size(), width);
  }
  EXPECT_EQ(progressBar(state, 6), " 50 %");
  EXPECT_THAT(progressBar(state, 40), StartsWith("["));
}

TEST(ProgressBar, showsTheEndOnlyAtTheEnd) {
  ProgressState state = half();
  state.bytesRead = state.bytesTotal;
  EXPECT_THAT(progressBar(state, 20), testing::EndsWith(" 99 %"));
  state.filesDone = 1;
  EXPECT_THAT(progressBar(state, 20), testing::EndsWith("100 %"));
}

TEST(ProgressBar, hasNoBarWhereNobodyKnowsTheEnd) {
  ProgressState state = half();
  state.bytesTotal = 0;
  EXPECT_EQ(progressBar(state, 80), "3,000,000 frames/s  125.0 MB/s");
  state.seconds = 0.0;
  EXPECT_EQ(progressBar(state, 80), "0 frames/s  0 bytes/s");
}

TEST(ProgressJson, isOneObject) {
  EXPECT_EQ(progressJson(half()),
            R"({"bytes_read":500000000,"bytes_total":1000000000,"frames_read":12000000,"files_done":0,"files":1,)"
            R"("seconds":4.0})");
}

}  // namespace
}  // namespace xlatr::cli
