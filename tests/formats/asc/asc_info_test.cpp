#include "formats/asc/asc_info.hpp"

#include <gtest/gtest.h>

#include <string>

#include "support/temp_folder.hpp"
#include "util/time_zone.hpp"

namespace xlatr {
namespace {

constexpr char kHead[] =
    "date Wed Mar 5 10:11:12.123 2025\n"
    "base hex  timestamps absolute\n"
    "no internal events logged\n"
    "// version 8.1.0\n";
constexpr char kData[] = "   0.001000 1  100             Rx   d 2 01 02\n";

class AscInfoTest : public testing::Test {
 protected:
  [[nodiscard]] AscInfo infoOf(const std::string& content) const {
    return AscInfo(TraceFileInfo(folder_.write("x.asc", content)));
  }

  test::TempFolder folder_;
};

TEST_F(AscInfoTest, readsAHeadOfFourLines) {
  const AscInfo info = infoOf(std::string(kHead) + kData);
  EXPECT_TRUE(info.getValid());
  EXPECT_EQ(info.dateText(), "Wed Mar 5 10:11:12.123 2025");
  EXPECT_NEAR(info.getStartTime(), 45721.0 + (10 * 3600 + 11 * 60 + 12.123) / 86400, 1e-9);
  EXPECT_TRUE(info.hexBase());
  EXPECT_EQ(info.timestampsMode(), AscTimestamps::Absolute);
  EXPECT_EQ(info.getVersion(), 8.1);
  EXPECT_EQ(info.getVersionText(), "8.1");
  EXPECT_EQ(info.getHeaderLength(), std::string(kHead).size());
  EXPECT_EQ(info.lineBreakSize(), 1);
  EXPECT_EQ(info.getLowestVersion(), 7.0);
  EXPECT_EQ(info.getCurrentVersion(), 15.0);
}

// The terms of the sum are added in this order, which shows in the last digit of a header.
TEST_F(AscInfoTest, addsTheFractionOfTheStartToTheSecondsFirst) {
  const ScopedTimeZone zone("UTC0");
  const AscInfo info = infoOf(std::string("date Sat Mar 30 17:56:39.912 2019\nbase hex  timestamps absolute\n") +
                              "no internal events logged\n// version 8.1.0\n" + kData);
  EXPECT_EQ(info.getStartTime(), (912 / 1000.0 + 1553968599.0 + 2209161600.0) / 86400.0);
  EXPECT_NE(info.getStartTime(), (1553968599.0 + 2209161600.0 + 912 / 1000.0) / 86400.0);
}

TEST_F(AscInfoTest, endsTheHeadInFrontOfATriggerBlock) {
  const std::string first = "base dec  timestamps relative\n";
  const AscInfo info = infoOf(first + "BEGIN Triggerblock Wed Mar 5 10:11:12 2025\n" + kData);
  EXPECT_EQ(info.getHeaderLength(), first.size());
  EXPECT_FALSE(info.hexBase());
  EXPECT_EQ(info.timestampsMode(), AscTimestamps::Relative);
  EXPECT_EQ(info.dateText(), "");
  EXPECT_EQ(info.getVersion(), 0.0);
}

TEST_F(AscInfoTest, endsTheHeadAfterTheLineWithTheVersion) {
  const std::string first = "Version 3\n";
  const AscInfo info = infoOf(first + "// version 7.0.0\n" + kData);
  EXPECT_EQ(info.getVersion(), 0.0);
  EXPECT_EQ(info.getHeaderLength(), first.size());
}

TEST_F(AscInfoTest, endsTheHeadAfterTenLines) {
  std::string head = "date Wed Mar 5 10:11:12.123 2025\n";
  for (int line = 2; line <= 10; ++line) {
    head += "line\n";
  }
  const AscInfo info = infoOf(head + kData);
  EXPECT_EQ(info.getHeaderLength(), head.size());
  EXPECT_EQ(info.dateText(), "Wed Mar 5 10:11:12.123 2025");
  EXPECT_EQ(infoOf(head).getHeaderLength(), head.size());
}

TEST_F(AscInfoTest, hasNoHeadWhenTheFileEndsBeforeOneIsKnown) {
  const std::string content = "date Wed Mar 5 10:11:12.123 2025\nbase dec  timestamps relative\nthird\n";
  const AscInfo info = infoOf(content);
  EXPECT_TRUE(info.getValid());
  EXPECT_EQ(info.dateText(), "");
  EXPECT_EQ(info.getStartTime(), 0.0);
  EXPECT_EQ(info.getVersion(), 0.0);
  EXPECT_TRUE(info.hexBase());
  EXPECT_EQ(info.timestampsMode(), AscTimestamps::Absolute);
  EXPECT_EQ(info.getHeaderLength(), content.size());
  EXPECT_EQ(infoOf(kHead).getVersion(), 0.0);
}

TEST_F(AscInfoTest, countsNoBytesOfEmptyLines) {
  const AscInfo info = infoOf(std::string("\n\n") + kHead + "\n" + kData);
  EXPECT_EQ(info.getVersion(), 8.1);
  EXPECT_EQ(info.getHeaderLength(), std::string(kHead).size());
  EXPECT_EQ(infoOf("a\n\nb\n").getHeaderLength(), 4U);
}

TEST_F(AscInfoTest, goesOnAfterAnEmptyTenthLine) {
  const std::string nine = "1\n2\n3\n4\n5\n6\n7\n8\n9\n";
  const std::string more = "10\n11\n12\n13\n";
  EXPECT_EQ(infoOf(nine + more).getHeaderLength(), nine.size() + 3);
  EXPECT_EQ(infoOf(nine + "\n\n" + more).getHeaderLength(), nine.size() + more.size());
  const AscInfo stopped = infoOf(nine + "\n\n" + more + "// version 7.0.0\n" + kData);
  EXPECT_EQ(stopped.getVersion(), 7.0);
  EXPECT_EQ(stopped.getHeaderLength(), nine.size() + more.size() + 17);
}

TEST_F(AscInfoTest, countsAnEmptyLineAmongTheTen) {
  const std::string head = "1\n2\n3\n4\n5\n6\n7\n8\n9\n";
  EXPECT_EQ(infoOf("\n" + head + "10\n").getHeaderLength(), head.size());
}

TEST_F(AscInfoTest, countsCrLfAsTwoBytes) {
  const std::string head = "date Wed Mar 5 10:11:12.123 2025\r\nbase dec  timestamps relative\r\n// version 7.0.0\r\n";
  const AscInfo info = infoOf(head + "0.1 1 100 Rx d 0\r\n");
  EXPECT_EQ(info.getHeaderLength(), head.size());
  EXPECT_EQ(info.lineBreakSize(), 2);
  EXPECT_FALSE(info.hexBase());
  EXPECT_EQ(info.timestampsMode(), AscTimestamps::Relative);
  EXPECT_EQ(info.getVersion(), 7.0);
}

// The mixture is no logger's, but losing a line over it would be.
TEST_F(AscInfoTest, findsTheEndOfAHeadWithBothLineEnds) {
  const std::string head = "base hex  timestamps absolute\r\nsecond\n// version 7.0.0\r\n";
  EXPECT_EQ(infoOf(head + kData).getHeaderLength(), head.size());
}

TEST_F(AscInfoTest, isValidByItsExtensionAlone) {
  const AscInfo binary = infoOf(std::string("\0\1\2\xFF$\n\n\0", 8));
  EXPECT_TRUE(binary.getValid());
  EXPECT_EQ(binary.getVersion(), 0.0);
  EXPECT_TRUE(infoOf("").getValid());
  EXPECT_TRUE(AscInfo(TraceFileInfo(folder_.write("x.ASC", kHead))).getValid());
  const AscInfo other(TraceFileInfo(folder_.write("x.trc", std::string(kHead) + kData)));
  EXPECT_FALSE(other.getValid());
  EXPECT_FALSE(other.hexBase());
  EXPECT_EQ(other.getHeaderLength(), 0U);
  EXPECT_FALSE(AscInfo(TraceFileInfo(folder_.file("none.asc"))).getValid());
}

TEST_F(AscInfoTest, ignoresADateOutOfRange) {
  const AscInfo info = infoOf("date Wed Mar 5 10:11:12 1000\n// version 7.0.0\n" + std::string(kData));
  EXPECT_EQ(info.dateText(), "Wed Mar 5 10:11:12 1000");
  EXPECT_EQ(info.getStartTime(), 0.0);
}

}  // namespace
}  // namespace xlatr
