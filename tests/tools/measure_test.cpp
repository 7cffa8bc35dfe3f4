#include "measure.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>

#include "hex_text.hpp"
#include "xlatr/frames.h"

namespace xlatr::cli {
namespace {

TEST(Measure, readsBitRates) {
  EXPECT_EQ(bitRateOf("500000"), 500'000U);
  EXPECT_EQ(bitRateOf("500k"), 500'000U);
  EXPECT_EQ(bitRateOf("2M"), 2'000'000U);
  EXPECT_EQ(bitRateOf("0.5M"), 500'000U);
  EXPECT_EQ(bitRateOf("1G"), 1'000'000'000U);
  for (const char* const wrong : {"", "k", "500K", "500 k", "0", "-5", "5G", "1e3", "nan", "inf", "500kk"}) {
    EXPECT_EQ(bitRateOf(wrong), std::nullopt) << wrong;
  }
}

TEST(Measure, readsPairsOfBitRates) {
  const std::optional<BitRatePair> one = bitRatesOf("500k");
  ASSERT_TRUE(one);
  EXPECT_EQ(one->nominal, 500'000U);
  EXPECT_EQ(one->data, 0U);
  const std::optional<BitRatePair> two = bitRatesOf("500k,2M");
  ASSERT_TRUE(two);
  EXPECT_EQ(two->nominal, 500'000U);
  EXPECT_EQ(two->data, 2'000'000U);
  for (const char* const wrong : {"", ",", "500k,", ",2M", "500k,2M,8M"}) {
    EXPECT_FALSE(bitRatesOf(wrong)) << wrong;
  }
}

TEST(Measure, readsDurations) {
  EXPECT_EQ(durationNsOf("0"), 0U);
  EXPECT_EQ(durationNsOf("1us"), 1'000U);
  EXPECT_EQ(durationNsOf("0.5ms"), 500'000U);
  EXPECT_EQ(durationNsOf("10ns"), 10U);
  EXPECT_EQ(durationNsOf("2s"), 2'000'000'000U);
  EXPECT_EQ(durationNsOf("0.001"), 1'000'000U);
  for (const char* const wrong : {"", "us", "-1us", "1 us", "1m", "10000000000"}) {
    EXPECT_EQ(durationNsOf(wrong), std::nullopt) << wrong;
  }
}

TEST(Measure, showsSeconds) {
  EXPECT_EQ(secondsText(0), "0.000000 s");
  EXPECT_EQ(secondsText(12'345'678'000), "12.345678 s");
  EXPECT_EQ(secondsText(12'345'678'001), "12.345678001 s");
  EXPECT_EQ(secondsText(-1), "-0.000000001 s");
  EXPECT_EQ(secondsText(std::numeric_limits<std::int64_t>::min()), "-9223372036.854775808 s");
}

TEST(Measure, showsDurations) {
  EXPECT_EQ(shortDuration(0), "0 ns");
  EXPECT_EQ(shortDuration(850), "850 ns");
  EXPECT_EQ(shortDuration(10'000), "10 us");
  EXPECT_EQ(shortDuration(12'500'000), "12.5 ms");
  EXPECT_EQ(shortDuration(999'999'600), "1 s");
  EXPECT_EQ(shortDuration(3.25e12), "3250 s");
  EXPECT_EQ(millisecondsText(9'998'000), "9.998");
  EXPECT_EQ(percentText(0.1234), "12.3 %");
}

TEST(HexText, showsIdentifiersAndData) {
  EXPECT_EQ(hexText(0, 1), "0");
  EXPECT_EQ(hexText(0xABC, 2), "ABC");
  EXPECT_EQ(identifierText(XLATR_KIND_DATA, 0x1F, false), "01F");
  EXPECT_EQ(identifierText(XLATR_KIND_REMOTE, 0x1F, true), "0000001Fx");
  EXPECT_EQ(identifierText(XLATR_KIND_LIN, 0x3C, false), "3C");
  constexpr std::uint8_t kBytes[] = {0, 0x1F, 0xAB};
  EXPECT_EQ(hexBytes(kBytes), "001fab");
  EXPECT_EQ(hexBytes(kBytes, " "), "00 1f ab");
  EXPECT_EQ(hexBytes({}), "");
}

}  // namespace
}  // namespace xlatr::cli
