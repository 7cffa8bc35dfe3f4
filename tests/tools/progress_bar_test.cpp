#include "progress_bar.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace xlatr::cli {
namespace {

TEST(ProgressText, fillsFromTheLeft) {
  EXPECT_EQ(progressText(0.0), "[........................................]   0 %");
  EXPECT_EQ(progressText(50.0), "[####################....................]  50 %");
  EXPECT_EQ(progressText(100.0), "[########################################] 100 %");
}

TEST(ProgressText, showsTheEndOnlyAtTheEnd) {
  EXPECT_EQ(progressText(99.99), "[" + std::string(39, '#') + ".]  99 %");
}

TEST(ProgressText, takesWhatIsNotAPercentageToTheNearerEnd) {
  EXPECT_EQ(progressText(std::numeric_limits<double>::quiet_NaN()), progressText(0.0));
  EXPECT_EQ(progressText(-1.0), progressText(0.0));
  EXPECT_EQ(progressText(101.0), progressText(100.0));
}

}  // namespace
}  // namespace xlatr::cli
