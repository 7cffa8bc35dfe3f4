#include "sparkline.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

namespace xlatr::cli {
namespace {

TEST(Sparkline, isAsHighAsTheCounts) {
  constexpr std::array<std::uint32_t, 8> kBins = {1, 2, 3, 4, 5, 6, 7, 8};
  EXPECT_EQ(sparkline(kBins, 8, 8, false), ".:-=+*#@");
  EXPECT_EQ(sparkline(kBins, 8, 4, false), ":=*@");
  EXPECT_EQ(sparkline(kBins, 8, 8, true), "\u2581\u2582\u2583\u2584\u2585\u2586\u2587\u2588");
}

TEST(Sparkline, isBlankWhereNothingIs) {
  constexpr std::array<std::uint32_t, 4> kBins = {1, 0, 0, 1};
  EXPECT_EQ(sparkline(kBins, 4, 4, false), "@  @");
  EXPECT_EQ(sparkline(std::array<std::uint32_t, 4>{}, 4, 4, false), "    ");
  EXPECT_EQ(sparkline(kBins, 4, 0, false), "");
}

// The rate is the same up to the end, though the last bin is only half over.
TEST(Sparkline, knowsThatTheLastBinIsShort) {
  constexpr std::array<std::uint32_t, 4> kBins = {8, 8, 8, 4};
  EXPECT_EQ(sparkline(kBins, 3.5, 7, false), "@@@@@@@");
}

TEST(Sparkline, showsAMoment) {
  constexpr std::array<std::uint32_t, 4> kBins = {3, 0, 0, 0};
  EXPECT_EQ(sparkline(kBins, 0.0, 4, false), "   @");
}

class Utf8Terminal : public testing::Test {
 protected:
  void SetUp() override {
    for (std::size_t at = 0; at < kNames.size(); ++at) {
      const char* const value = std::getenv(kNames[at]);
      before_[at] = value == nullptr ? std::nullopt : std::optional<std::string>(value);
      ::unsetenv(kNames[at]);
    }
  }
  void TearDown() override {
    for (std::size_t at = 0; at < kNames.size(); ++at) {
      before_[at] ? ::setenv(kNames[at], before_[at]->c_str(), 1) : ::unsetenv(kNames[at]);
    }
  }

 private:
  static constexpr std::array<const char*, 3> kNames = {"LC_ALL", "LC_CTYPE", "LANG"};
  std::array<std::optional<std::string>, 3> before_;
};

TEST_F(Utf8Terminal, isWhatTheFirstOfTheVariablesSays) {
  EXPECT_FALSE(showsUtf8());
  ::setenv("LANG", "en_US.UTF-8", 1);
  EXPECT_TRUE(showsUtf8());
  ::setenv("LC_CTYPE", "C", 1);
  EXPECT_FALSE(showsUtf8());
  ::setenv("LC_ALL", "", 1);
  EXPECT_FALSE(showsUtf8());
  ::setenv("LC_ALL", "de_DE.utf8", 1);
  EXPECT_TRUE(showsUtf8());
}

}  // namespace
}  // namespace xlatr::cli
