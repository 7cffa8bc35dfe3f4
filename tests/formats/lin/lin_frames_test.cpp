#include "formats/lin/lin_frames.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "support/frame_text.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

using Texts = std::vector<std::string>;

class LinFrames : public testing::Test {
 protected:
  Texts read(const std::string& content) {
    source_ = openLinFrames(folder_.write("source.ltrc", content));
    account_ = {};
    return test::textsOf(*source_, account_);
  }

  test::TempFolder folder_;
  std::unique_ptr<FrameSource> source_;
  Account account_;
};

TEST_F(LinFrames, haveAllThatALineHas) {
  EXPECT_EQ(
      read(";$FILEVERSION=1.2\n"
           "     1)             1000   Pub   2A  2  01 02                   7C  CL\n"
           "     2)             2000   Sub   15  4  -- -- -- --             00  EH  CK/TO\n"
           "     3)             2500   ---   --  -  Bus Sleep                --  --\n"
           "     4)             3000  SubAL  3F  0                         FF  AU\n"
           "     5)             4000   ---   01  1  AA                      55  --\n"),
      (Texts{"1000000 lin 0 2A Tx dlc2 [0102] checksum=124 checksum_model=1",
             "2000000 lin 0 15 Rx enhanced dlc4 checksum=0 checksum_model=2 lin_errors=129",
             "2500000 lin_event 0 0 \"Bus Sleep\"", "3000000 lin 0 3F Rx checksum=255 checksum_model=3 lin_direction=3",
             "4000000 lin 0 1 dlc1 [AA] checksum=85"}));
  EXPECT_EQ(source_->head().format, XLATR_FORMAT_LIN);
  EXPECT_EQ(source_->head().version, 1.2);
  EXPECT_EQ(account_.read(), 5U);
  EXPECT_TRUE(account_.complete());
}

TEST_F(LinFrames, haveCommentsForAllElse) {
  EXPECT_EQ(read(";$FILEVERSION=1.1\n"
                 "\n"
                 "1) 1000 Pub 2A 1 07 7C CL\n"
                 "; lunch\n"
                 "2) 1000 Pub 2A 2 07\n"
                 "3) 9000000000000001 Pub 2A 0 7C CL\n"),
            (Texts{"1000000 lin 0 2A Tx dlc1 [07] checksum=124 checksum_model=1", "1000000 comment 0 0 \" lunch\"",
                   "1000000 comment 0 0 \"2) 1000 Pub 2A 2 07\"",
                   "1000000 comment 0 0 \"3) 9000000000000001 Pub 2A 0 7C CL\""}));
  EXPECT_EQ(account_.noted(Remark::LineNotUnderstood), (Account::Count{2, 5}));
}

TEST_F(LinFrames, refuseMoreBytesThanAnyFrameHas) {
  std::string line = "1) 1000 Pub 2A 256";
  for (int byte = 0; byte < 256; ++byte) {
    line += " 00";
  }
  line += " 7C CL";
  EXPECT_EQ(read(";\n" + line + "\n"), (Texts{"0 comment 0 0 \"" + line + "\""}));
}

TEST_F(LinFrames, sayWhenTheTraceStarted) {
  read(";$FILEVERSION=1.1\n;$STARTTIME=44403.25\n");
  EXPECT_EQ(source_->head().start, (TraceStart{1'627'279'200'000'000'000, std::nullopt}));
  read(";   Start time: 26.07.2021 06:00:00\n");
  EXPECT_EQ(source_->head().start, (TraceStart{1'627'279'200'000'000'000, std::nullopt}));
}

TEST(LinContent, isToldFromThatOfOtherTracesOfTheSameVersions) {
  const std::string head = ";$FILEVERSION=1.1\n;$STARTTIME=44403.25\n";
  EXPECT_TRUE(looksLikeLin(head + "; ID Len Data Checksum Type\n")) << "named columns";
  EXPECT_TRUE(looksLikeLin(head + "no frame\r\n\r\n; a comment\r\n1) 1000 Pub 2A 2 01 02 7C CL\r\n2) 20")) << "a frame";
  EXPECT_TRUE(looksLikeLin(head + "; nothing\n")) << "its name tells";
  EXPECT_FALSE(looksLikeLin(head + "     1)        10.0  Rx         0123  2  0A B0\n"));
  EXPECT_FALSE(looksLikeLin(";$FILEVERSION=2.1\n1) 1000 Pub 2A 2 01 02 7C CL\n"));
  EXPECT_FALSE(looksLikeLin("1) 1000 Pub 2A 2 01 02 7C CL\n"));
}

TEST(LinCapacities, knowWhichVersionHasEvents) {
  const auto capacities = linCapacities();
  ASSERT_EQ(capacities.size(), 3U);
  EXPECT_FALSE(capacities[1].holds(FrameKind::LinEvent));
  EXPECT_TRUE(capacities[2].holds(FrameKind::LinEvent));
  EXPECT_FALSE(capacities[2].holds(FrameKind::Data));
}

}  // namespace
}  // namespace xlatr
