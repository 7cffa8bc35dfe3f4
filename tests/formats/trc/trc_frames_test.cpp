#include "formats/trc/trc_frames.hpp"

#include <gtest/gtest.h>

#include <ios>
#include <string>
#include <vector>

#include "support/frame_text.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

using Texts = std::vector<std::string>;

class TrcFrames : public testing::Test {
 protected:
  // The frames of a file with this header and these lines.
  Texts read(const std::string& header, const std::string& lines) {
    source_ = openTrcFrames(folder_.write("source.trc", header + lines));
    account_ = {};
    return test::textsOf(*source_, account_);
  }
  Texts readVersion(const std::string& version, const std::string& lines) {
    return read(";$FILEVERSION=" + version + "\n", lines);
  }

  test::TempFolder folder_;
  std::unique_ptr<FrameSource> source_;
  Account account_;
};

TEST_F(TrcFrames, ofVersion10HaveNeitherBusNorDirection) {
  EXPECT_EQ(read(";BRIX-Net: Net\n",
                 "1)   1841  0001  8  00 01 02 03 04 05 06 07\n"
                 "2)   1842  1CFF00FE  2  AA BB\n"
                 "3)   1843  0123  3  RTR\n"
                 "4)   1844  FFFFFFFF  4  00 00 00 08 -- -- -- -- BUSHEAVY\n"),
            (Texts{"1841000000 data 0 1 dlc8 [0001020304050607]", "1842000000 data 0 1CFF00FE x dlc2 [AABB]",
                   "1843000000 remote 0 123 known dlc3", "1844000000 status 0 0 \"BUSHEAVY\" bus_state=8"}));
  EXPECT_EQ(source_->head().version, 1.0);
}

TEST_F(TrcFrames, ofVersion11HaveDirectionsAndErrors) {
  EXPECT_EQ(readVersion("1.1",
                        "1)  10.1  Rx  0123  2  01 02\n"
                        "2)  20.2  Tx  0123  1  03\n"
                        "3)  30.3  Error  0004  4  01 19 60 08\n"
                        "4)  40.4  Error  0000  2  60 08\n"
                        "5)  50.5  Error  0003  4  01 19 60 08\n"),
            (Texts{"10100000 data 0 123 Rx dlc2 [0102]", "20200000 data 0 123 Tx dlc1 [03]",
                   "30300000 error 0 0 Rx error_type=2 error_position=25 tx_errors=8 rx_errors=96",
                   "40400000 counters 0 0 tx_errors=8 rx_errors=96", "50500000 error 0 3 [01196008]"}));
  EXPECT_TRUE(account_.complete());
}

TEST_F(TrcFrames, keepTheWordAfterTheBytes) {
  EXPECT_EQ(readVersion("1.1", "1)  10.1  Rx  0123  1  01  noise\n2)  20.2  Error  0004  4  01 19 60 08 late\n"),
            (Texts{"10100000 data 0 123 Rx dlc1 [01] \"noise\"",
                   "20200000 error 0 0 Rx \"late\" error_type=2 error_position=25 tx_errors=8 rx_errors=96"}));
}

TEST_F(TrcFrames, ofVersions12And13HaveBuses) {
  EXPECT_EQ(readVersion("1.2", "1)  1.001  2  Rx  0123  1  07\n"), (Texts{"1001000 data 2 123 Rx dlc1 [07]"}));
  EXPECT_EQ(
      readVersion("1.3",
                  "1)  1.001 1  Rx  0123 -  1  07\n"
                  "2)  2.002 16 Tx  0123 A  2  RTR\n"
                  "3)  3.003 1  Error 0000 - 2  60 08\n"
                  "4)  4.004 1  Error 0001 - 4  00 05 00 00\n"
                  "5)  5.005 255 Rx 0123 - 0\n"),
      (Texts{"1001000 data 1 123 Rx dlc1 [07]", "2002000 remote 16 123 Tx known dlc2 reserved=10",
             "3003000 counters 1 0 tx_errors=8 rx_errors=96",
             "4004000 error 1 0 Tx error_type=0 error_position=5 tx_errors=0 rx_errors=0", "5005000 data 255 123 Rx"}));
}

TEST_F(TrcFrames, ofVersion20AreOnNoBus) {
  EXPECT_EQ(readVersion("2.0\n;$COLUMNS=N,O,T,I,d,l,D",
                        "1  1.5 DT 0123 Rx 2 01 02\n"
                        "2  2.5 FB 00000123 Tx 12 00 01 02 03 04 05 06 07 08 09 0A 0B\n"
                        "3  3.5 ST Rx 00 00 00 04\n"
                        "4  4.5 EC Rx 08 09\n"
                        "5  5.5 EV  two   words\n"),
            (Texts{"1500000 data 0 123 Rx dlc2 [0102]",
                   "2500000 data 0 123 x Tx FD BRS dlc9 [000102030405060708090A0B]", "3500000 status 0 0 bus_state=4",
                   "4500000 counters 0 0 tx_errors=9 rx_errors=8", "5500000 event 0 0 \"two words\""}));
}

TEST_F(TrcFrames, ofVersion21HaveEveryKind) {
  EXPECT_EQ(readVersion("2.1\n;$COLUMNS=N,O,T,B,I,d,R,L,D",
                        "1  1.5 DT 1 0123 Rx - 2 01 02\n"
                        "2  2.5 BI 3 0123 Rx - 0\n"
                        "3  3.5 FE - 0123 Rx 5 1 FF\n"
                        "4  4.5 RR 1 0123 Rx - 9\n"
                        "5  5.5 ER 2 - Rx - 5 08 00 1D 00 08\n"
                        "6  6.5 ER 2 - Rx - 5 05 00 1D 00 08\n"
                        "7  7.5 ST 1 - Rx - 4 00 04 00 00\n"),
            (Texts{"1500000 data 1 123 Rx dlc2 [0102]", "2500000 data 3 123 Rx FD BRS ESI",
                   "3500000 data 0 123 Rx FD ESI dlc1 [FF] reserved=5", "4500000 remote 1 123 Rx known dlc9",
                   "5500000 error 2 0 Tx error_type=3 error_position=29 tx_errors=8 rx_errors=0",
                   "6500000 error 2 0 [05001D0008]", "7500000 status 1 0 bus_state=262144"}));
}

TEST_F(TrcFrames, ofVersion30HaveXl) {
  EXPECT_EQ(readVersion("3.0\n;$COLUMNS=N,O,T,B,I,d,R,V,S,A,r,s,L,D",
                        "1  1.5 XL 1 123 Tx - 0A 01 12345678 1 0 2 01 02 03\n"
                        "2  2.5 XL 1 123 Tx - - - - - - 0 01\n"),
            (Texts{"1500000 data 1 123 Tx XL dlc2 [010203] vcid=10 sdt=1 acceptance_field=305419896 rrs=1 sec=0",
                   "2500000 data 1 123 Tx XL [01]"}));
}

TEST_F(TrcFrames, keepBytesThatSayNothingOfTheirKind) {
  EXPECT_EQ(readVersion("1.3",
                        "1)  1.001 1  Error 0000 - 3  01 02 03\n"
                        "2)  2.002 1  Warng FFFFFFFF - 2  00 04\n"),
            (Texts{"1001000 counters 1 0 [010203]", "2002000 status 1 0 [0004]"}));
  EXPECT_EQ(read(";BRIX-Net: Net\n", "1)   1841  FFFFFFFF  2  00 04 LOST\n"),
            (Texts{"1841000000 status 0 0 [0004] \"LOST\""}));
  EXPECT_TRUE(account_.complete());
}

TEST_F(TrcFrames, keepEveryDigitOfATime) {
  EXPECT_EQ(readVersion("1.2",
                        "1) 9007199254.740993 1 Rx 0001 0\n"
                        "2) -0.001 1 Rx 0001 0\n"
                        "3) 7776000000.0005 1 Rx 0001 0\n"
                        "4) 1e3 1 Rx 0001 0\n"),
            (Texts{"9007199254740993 data 1 1 Rx", "-1000 data 1 1 Rx", "7776000000000500 data 1 1 Rx",
                   "1000000000 data 1 1 Rx"}));
}

TEST_F(TrcFrames, haveCommentsForAllElse) {
  EXPECT_EQ(readVersion("1.2",
                        "1) 1.000 1 Rx 0001 0\n"
                        "\n"
                        "; lunch\n"
                        "what is this\n"
                        "2) 1e300 1 Rx 0001 0\n"
                        "3) 2.000 70000 Rx 0001 0\n"
                        "4) 3.000 1 Rx 0001 0\n"
                        "5) -9000000000001.000 1 Rx 0001 0\n"),
            (Texts{"1000000 data 1 1 Rx", "1000000 comment 0 0 \" lunch\"", "1000000 comment 0 0 \"what is this\"",
                   "1000000 comment 0 0 \"2) 1e300 1 Rx 0001 0\"", "1000000 comment 0 0 \"3) 2.000 70000 Rx 0001 0\"",
                   "3000000 data 1 1 Rx", "3000000 comment 0 0 \"5) -9000000000001.000 1 Rx 0001 0\""}));
  EXPECT_EQ(account_.read(), 7U);
  EXPECT_EQ(account_.noted(Remark::LineNotUnderstood), (Account::Count{4, 5}));
}

TEST_F(TrcFrames, haveTextsInUtf8) {
  EXPECT_EQ(readVersion("1.2", "K\xFChler\n;K\xC3\xBChler\n"),
            (Texts{"0 comment 0 0 \"K\xC3\xBChler\"", "0 comment 0 0 \"K\xC3\xBChler\""}));
}

TEST_F(TrcFrames, cutTextsThatNoTraceHas) {
  const std::string longest(FrameBatch::kLongestText, 'x');
  EXPECT_EQ(readVersion("1.2", longest + "\n" + longest + "y\n"),
            (Texts{"0 comment 0 0 \"" + longest + "\"", "0 comment 0 0 \"" + longest + "\""}));
  EXPECT_EQ(account_.noted(Remark::TextCut), (Account::Count{1, 3}));
}

TEST_F(TrcFrames, refuseMoreBytesThanAFrameHas) {
  std::string line = "1 1.5 DT 1 0123 Rx 2049";
  for (int byte = 0; byte < 2049; ++byte) {
    line += " 00";
  }
  EXPECT_EQ(readVersion("2.1\n;$COLUMNS=N,O,T,B,I,d,l,D", line + "\n"), (Texts{"0 comment 0 0 \"" + line + "\""}));
}

TEST_F(TrcFrames, sayWhenTheTraceStarted) {
  readVersion("2.1\n;$STARTTIME=44403.3333333333\n;   Start time: 26.07.2021 08:00:00.000.001", "");
  EXPECT_EQ(source_->head().start, (TraceStart{1'627'286'400'000'001'000, std::nullopt}));
  readVersion("1.1\n;   Start time: 26.07.2021 07:59:59.1000", "");
  EXPECT_EQ(source_->head().start, (TraceStart{1'627'286'400'000'000'000, std::nullopt}));
  readVersion("1.1", "");
  EXPECT_EQ(source_->head().start, std::nullopt);
}

TEST_F(TrcFrames, ofAnUnknownVersionAreComments) {
  EXPECT_EQ(readVersion("9.0", "1) 1.000 1 Rx 0001 0\n"), (Texts{"0 comment 0 0 \"1) 1.000 1 Rx 0001 0\""}));
  EXPECT_EQ(source_->head().version, 9.0);
  EXPECT_EQ(account_.noted(Remark::LineNotUnderstood), (Account::Count{1, 2}));
}

TEST_F(TrcFrames, comeInBatches) {
  std::string lines;
  constexpr std::size_t kFrames = FrameBatch::kCapacity * 2 + 5;
  for (std::size_t number = 0; number < kFrames; ++number) {
    lines += "1) 1.000 1 Rx 0001 0\n";
  }
  source_ = openTrcFrames(folder_.write("long.trc", ";$FILEVERSION=1.2\n" + lines));
  FrameBatch batch;
  std::vector<std::size_t> sizes;
  while (source_->read(batch, account_)) {
    sizes.push_back(batch.size());
    batch.clear();
  }
  EXPECT_EQ(sizes, (std::vector<std::size_t>{FrameBatch::kCapacity, FrameBatch::kCapacity, 5}));
  EXPECT_EQ(account_.read(), kFrames);
  EXPECT_EQ(source_->bytesRead(), std::filesystem::file_size(folder_.file("long.trc")));
}

TEST_F(TrcFrames, ofAMissingFileAreAFailureOfTheSystem) {
  EXPECT_THROW(static_cast<void>(openTrcFrames(folder_.file("missing.trc"))), std::ios_base::failure);
}

TEST(TrcCapacities, standInTheOrderOfTheVersions) {
  const auto capacities = trcCapacities();
  ASSERT_EQ(capacities.size(), 7U);
  EXPECT_EQ(capacities.front().version, 1.0);
  EXPECT_FALSE(capacities.front().of(FrameKind::Data).direction);
  EXPECT_FALSE(capacities.front().holds(FrameKind::Error));
  EXPECT_EQ(capacities[1].resolutionNs, 100'000);
  EXPECT_FALSE(capacities[3].fd);
  EXPECT_TRUE(capacities[4].fd);
  EXPECT_FALSE(capacities[4].namesBuses());
  EXPECT_EQ(capacities.back().version, 3.0);
  EXPECT_TRUE(capacities.back().xl);
}

}  // namespace
}  // namespace xlatr
