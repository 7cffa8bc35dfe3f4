#include "measure.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "hex_text.hpp"
#include "xlatr/frames.h"

namespace xlatr::cli {
namespace {

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
