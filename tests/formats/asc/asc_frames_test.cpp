#include "formats/asc/asc_frames.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <ios>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "formats/asc/asc_message.hpp"
#include "formats/asc/asc_reader.hpp"
#include "support/frame_text.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

using Texts = std::vector<std::string>;

// A head without a version.
constexpr const char* kFramesHead = "date Mon Jul 26 05:19:59.721 2021\nbase hex  timestamps absolute\n";

class AscFrames : public testing::Test {
 protected:
  Texts read(const std::string& head, const std::string& lines) {
    source_ = openAscFrames(folder_.write("source.asc", head + lines));
    account_ = {};
    return test::textsOf(*source_, account_);
  }
  Texts read(const std::string& lines) { return read(kFramesHead, lines); }
  Texts readVersion(const std::string& version, const std::string& lines) {
    return read(kFramesHead + ("// version " + version + "\n"), lines);
  }
  std::uint64_t damagedLines() const { return account_.noted(Remark::LineNotUnderstood).frames; }

  // What the compatible way reads of the file that was read last: how many messages are valid.
  std::size_t validOnTheCompatibleWay() const {
    AscReader reader{AscInfo(TraceFileInfo(folder_.file("source.asc")))};
    reader.setActive(true);
    AscMessage message;
    std::size_t valid = 0;
    while (reader.readInto(message)) {
      valid += message.getValid() ? 1U : 0U;
    }
    return valid;
  }

  test::TempFolder folder_;
  std::unique_ptr<FrameSource> source_;
  Account account_;
};

AscMessage compatible(std::string_view line, double version) {
  AscMessage message;
  message.reset();
  message.parseLine(line, version);
  return message;
}

TEST(AscLines, areNoFramesForAnyWordThatIsNone) {
  for (const char* const line :
       {"0.1 1 123 Xx d 0", "0.1 1 wheel Rx d 1 01 IDX = 3", "0.1 x ErrorFrame ECC Flags = 1 Code = 3",
        "0.1 CAN x Status:error counter change (Zelkworks) - TxErr: 8 RxErr: 1"}) {
    EXPECT_FALSE(compatible(line, 8.1).valid) << line;
  }
}

TEST_F(AscFrames, haveBusIdentifierAndDirection) {
  EXPECT_EQ(readVersion("7.0.0",
                        "   0.000001 1  123             Rx   d 2 0A FF\n"
                        "   1.5      2  18ABCDEFx       Tx   d 0\n"
                        "2 255 7FF Rx d 1 00\n"),
            (Texts{"1000 data 1 123 Rx dlc2 [0AFF]", "1500000000 data 2 18ABCDEF x Tx",
                   "2000000000 data 255 7FF Rx dlc1 [00]"}));
  EXPECT_TRUE(account_.complete());
  EXPECT_EQ(source_->head().version, 7.0);
  EXPECT_EQ(source_->head().format, XLATR_FORMAT_ASC);
}

TEST_F(AscFrames, loseNoneToTheHead) {
  std::string lines;
  Texts expected;
  for (int second = 0; second < 12; ++second) {
    lines += std::to_string(second) + ".0 1 123 Rx d 0\n";
    expected.push_back(std::to_string(second * 1'000'000'000LL) + " data 1 123 Rx");
  }
  EXPECT_EQ(read(lines), expected);
  EXPECT_EQ(validOnTheCompatibleWay(), 4U);  // the head took eight of them
  EXPECT_EQ(read("", lines), expected);
  EXPECT_EQ(read("0.5 1 123 Rx d 0\n"), (Texts{"500000000 data 1 123 Rx"}));
  EXPECT_EQ(validOnTheCompatibleWay(), 0U);  // a file that ends within its head has no messages
}

TEST_F(AscFrames, haveHeadsOfAnyLength) {
  EXPECT_EQ(read("\xEF\xBB\xBF"
                 "Date Mon Jul 26 05:19:59 2021\r\n"
                 "Base\tDEC\tTimestamps\tAbsolute\n"
                 "\n"
                 "internal events logged\r\n"
                 "// Version 8.5\n"
                 "// Measurement UUID: 7\n"
                 "Begin Triggerblock Mon Jul 26 05:19:59 2021\n",
                 "0.0 1 100 Rx d 1 255\r\n"
                 "End TriggerBlock\n"),
            (Texts{"0 comment 0 0 \" Measurement UUID: 7\"", "0 data 1 64 Rx dlc1 [FF]",
                   "0 event 0 0 \"End TriggerBlock\""}));
  EXPECT_EQ(source_->head().version, 8.5);
  EXPECT_EQ(source_->head().start, (TraceStart{1'627'276'799'000'000'000, std::nullopt}));
  EXPECT_TRUE(account_.complete());
}

TEST_F(AscFrames, keepWhatIsNoHead) {
  EXPECT_EQ(read("what is this\ndate Mon Jul 26 05:19:59 2021\nbase dec timestamps absolute\n", "0.5 1 16 Rx d 0\n"),
            (Texts{"0 comment 0 0 \"what is this\"", "500000000 data 1 10 Rx"}));
  EXPECT_EQ(account_.noted(Remark::LineNotUnderstood), (Account::Count{1, 1}));
  EXPECT_TRUE(source_->head().start.has_value());
}

TEST_F(AscFrames, keepCommentsInHeadsThatAreNoVersion) {
  EXPECT_EQ(read("date Mon Jul 26 05:19:59 2021\n// a version 3 of lunch\n// version 8.0\n", "0.5 1 16 Rx d 0\n"),
            (Texts{"0 comment 0 0 \" a version 3 of lunch\"", "500000000 data 1 16 Rx"}));
  EXPECT_EQ(source_->head().version, 8.0);
}

TEST_F(AscFrames, haveHeadsThatTakeNoMemory) {
  std::string garbage;
  for (int line = 0; line < 3000; ++line) {
    garbage += "garbage\n";
  }
  EXPECT_EQ(read(garbage + "base dec timestamps absolute\n", "0.5 1 16 Rx d 0\n").size(), 3002U);
  EXPECT_EQ(damagedLines(), 3000U);
  EXPECT_EQ(account_.noted(Remark::LineNotUnderstood).first, 1U);
}

TEST_F(AscFrames, goOnAfterAShortLine) {
  EXPECT_EQ(
      readVersion("7.0.0",
                  "0.1 1 123 Rx d 2 01 02\n"
                  "0.2 1 123 Rx d 2 01\n"
                  "0.3\n"
                  "0.4 1\n"
                  "0.5 1 123\n"
                  "0.6 1 123 Rx\n"
                  "0.7 1 123 Rx d\n"
                  "0.8 CANFD 1 Rx\n"
                  "0.9 CANFD 1 Rx 123 0 0 8 8 01\n"
                  "1.0 CAN 1\n"
                  "1.1 L1\n"
                  "1.2 L1 2d Rx 8 00\n"
                  "1.3 1 123 Rx d 0\n"),
      (Texts{"100000000 data 1 123 Rx dlc2 [0102]", "100000000 comment 0 0 \"0.2 1 123 Rx d 2 01\"",
             "100000000 comment 0 0 \"0.3\"", "100000000 comment 0 0 \"0.4 1\"", "100000000 comment 0 0 \"0.5 1 123\"",
             "100000000 comment 0 0 \"0.6 1 123 Rx\"", "100000000 comment 0 0 \"0.7 1 123 Rx d\"",
             "100000000 comment 0 0 \"0.8 CANFD 1 Rx\"", "100000000 comment 0 0 \"0.9 CANFD 1 Rx 123 0 0 8 8 01\"",
             "100000000 comment 0 0 \"1.0 CAN 1\"", "100000000 comment 0 0 \"1.1 L1\"",
             "100000000 comment 0 0 \"1.2 L1 2d Rx 8 00\"", "1300000000 data 1 123 Rx"}));
  EXPECT_EQ(account_.noted(Remark::LineNotUnderstood), (Account::Count{11, 5}));
  EXPECT_THROW(compatible("0.2 1 123 Rx d 2 01", 7.0), std::out_of_range);
}

TEST_F(AscFrames, areReadInLogsOfAnyVersion) {
  const std::string lines =
      "0.1 1 123 Rx d 0\n"
      "0.2 CANFD 1 Rx 123 1 0 1 1 FF 0 0 3000 0 0 0 0 0\n";
  const Texts expected = {"100000000 data 1 123 Rx", "200000000 data 1 123 Rx FD BRS dlc1 [FF]"};
  for (const char* const version : {"0.9", "5.0", "7.2.1", "8.0.0", "13.0"}) {
    EXPECT_EQ(readVersion(version, lines), expected) << version;
  }
  readVersion("5.0", lines);
  EXPECT_EQ(validOnTheCompatibleWay(), 0U);
}

TEST_F(AscFrames, haveTheIdentifierOfANamedOne) {
  const std::string lines =
      "0.1 1 Axle Rx d 1 01 Length = 230000 BitCount = 118 ID = 291\n"
      "0.2 1 DEAD Tx r Length = 0 BitCount = 51 ID = 291x\n"
      "0.3 1 123 Rx d 1 01 Length = 230000 BitCount = 118 ID = 291\n"
      "0.4 1 Axle Rx d 0\n"
      "0.5 CANFD 1 Rx 123 AxleSpeed 0 0 1 1 01 0 0 1000 0 0 0 0 0\n";
  for (const char* const version : {"7.0.0", "8.1.0"}) {
    EXPECT_EQ(readVersion(version, lines),
              (Texts{"100000000 data 1 123 Rx dlc1 [01] \"Axle\"", "200000000 remote 1 123 x Tx \"DEAD\"",
                     "300000000 data 1 123 Rx dlc1 [01]", "300000000 comment 0 0 \"0.4 1 Axle Rx d 0\"",
                     "500000000 data 1 123 Rx FD dlc1 [01] \"AxleSpeed\""}))
        << version;
  }
  EXPECT_EQ(compatible("0.1 1 Axle Rx d 1 01", 7.0).id, 0xAU);
  EXPECT_FALSE(compatible("0.1 1 Speed Rx d 1 01 ID = 291", 7.0).valid);
}

TEST_F(AscFrames, keepLongDlcs) {
  EXPECT_EQ(
      readVersion("8.1.0",
                  "0.1 1 123 Rx d F 01 02 03 04 05 06 07 08\n"
                  "0.2 1 123 Rx d 12 01 02 03 04 05 06 07 08\n"
                  "0.3 CANFD 1 Rx 123 0 0 b 8 01 02 03 04 05 06 07 08 0 0 200000\n"
                  "0.4 1 123 Rx d 16 01 02 03 04 05 06 07 08\n"),
      (Texts{"100000000 data 1 123 Rx dlc15 [0102030405060708]", "200000000 data 1 123 Rx dlc12 [0102030405060708]",
             "300000000 data 1 123 Rx dlc11 [0102030405060708]",
             "300000000 comment 0 0 \"0.4 1 123 Rx d 16 01 02 03 04 05 06 07 08\""}));
  EXPECT_THROW(compatible("0.1 1 123 Rx d F 01 02 03 04 05 06 07 08", 8.1), std::out_of_range);
}

TEST_F(AscFrames, keepTheLengthOfRemoteOnes) {
  EXPECT_EQ(readVersion("8.1.0",
                        "0.1 1 123 Rx r\n"
                        "0.2 1 123x Tx r 8\n"
                        "0.3 1 123 Rx r c Length = 0 BitCount = 51 ID = 291\n"
                        "0.4 1 123 Rx r Length = 0 BitCount = 51 ID = 291\n"
                        "0.5 CANFD 1 Rx 123 0 0 5 0 0 0 16 0 0 0 0 0\n"),
            (Texts{"100000000 remote 1 123 Rx", "200000000 remote 1 123 x Tx known dlc8",
                   "300000000 remote 1 123 Rx known dlc12", "400000000 remote 1 123 Rx",
                   "500000000 remote 1 123 Rx known dlc5"}));
  EXPECT_EQ(readVersion("7.0.0", "0.2 1 123 Rx r 8\n"), (Texts{"200000000 remote 1 123 Rx known dlc8"}));
  EXPECT_EQ(compatible("0.2 1 123 Rx r 8", 8.1).length, 0U);
}

TEST_F(AscFrames, haveAnyTailInCanFdLines) {
  const std::string line = "0.5 CANFD 1 Tx 123x 1 1 9 12 01 02 03 04 05 06 07 08 09 0A 0B 0C";
  for (const char* const tail : {"", " 130000", " 130000 130", " 130000 130 7000", " 130000 130 7000 1 2 3 4",
                                 " 130000 130 7000 1 2 3 4 5", " 130000 130 307000 1 2 3 4 5 6 7 8 9"}) {
    EXPECT_EQ(readVersion("8.1.0", line + tail + "\n"),
              (Texts{"500000000 data 1 123 x Tx FD BRS ESI dlc9 [0102030405060708090A0B0C]"}))
        << tail;
  }
  EXPECT_FALSE(compatible(line + " 130000 130 7000 1 2 3 4", 8.1).valid);
  EXPECT_TRUE(compatible(line + " 130000 130 7000 1 2 3 4 5", 8.1).valid);
  EXPECT_FALSE(compatible(line + " 130000 130 7000 1 2 3 4 5 6", 8.1).valid);
}

TEST_F(AscFrames, areErrorsInEveryForm) {
  const std::string lines =
      "0.1 1 ErrorFrame\n"
      "0.2 1 errorframe ECC: 10000010\n"
      "0.3 2 ErrorFrame ECC: 10100010 Flags = 0xe Length = 5\n"
      "0.4 1 ErrorFrame Flags = 0x2 CodeExt = 0x20a2 Code = 0x82\n"
      "0.5 1 ErrorFrame Flags = 0x3 CodeExt = 0x20a2 Code = 0x82\n"
      "0.6 CANFD 1 Tx ErrorFrame Stuff error  fffe c7\n"
      "0.7 CANFD 3 ErrorFrame\n"
      "0.8 2 OverloadFrame\n";
  EXPECT_EQ(
      readVersion("8.1.0", lines),
      (Texts{"100000000 error 1 0", "200000000 error 1 0 Tx error_type=2 error_position=2",
             "300000000 error 2 0 Rx \"Flags = 0xe Length = 5\" error_type=2 error_position=2",
             "400000000 error 1 0 \"Flags = 0x2 CodeExt = 0x20a2 Code = 0x82\"",
             "500000000 error 1 0 Tx \"Flags = 0x3 CodeExt = 0x20a2 Code = 0x82\" error_type=2 error_position=2",
             "600000000 error 1 0 Tx \"Stuff error  fffe c7\"", "700000000 error 3 0", "800000000 overload 2 0"}));
  EXPECT_TRUE(account_.complete());
  EXPECT_EQ(validOnTheCompatibleWay(), 1U);
  EXPECT_EQ(compatible("0.2 1 ErrorFrame ECC: 10000010", 8.1).direction, MessageDirection::Rx);
}

TEST_F(AscFrames, areStatusesOfAnyMaker) {
  const std::string lines =
      "0.1 CAN 1 Status:chip status error active\n"
      "0.2 CAN 1 Status:chip status warning level - TxErr: 96 RxErr: 0\n"
      "0.3 CAN 2  Status: bus off\n"
      "0.4 CAN 2 Status:BusOff (Zelkworks)\n"
      "0.5 CAN 2 Status:BUSHEAVY (Zelkworks)\n"
      "0.6 CAN 2 Status:BusWarning, BusPassive (Zelkworks)\n"
      "0.7 CAN 2 Status:error counter change (Zelkworks) - TxErr: 8 RxErr: 0\n"
      "0.8 CAN 2 Status:error counter change - TxErr: 8 RxErr: 127\n"
      "0.9 CAN 2 Status:fell asleep\n"
      "1.0 CAN 2 Status:\n";
  EXPECT_EQ(readVersion("7.0.0", lines),
            (Texts{"100000000 status 1 0 \"chip status error active\" bus_state=0",
                   "200000000 status 1 0 \"chip status warning level\" tx_errors=96 rx_errors=0 bus_state=8",
                   "300000000 status 2 0 \"bus off\" bus_state=16", "400000000 status 2 0 bus_state=16",
                   "500000000 status 2 0 \"BUSHEAVY\" bus_state=8", "600000000 status 2 0 bus_state=262152",
                   "700000000 counters 2 0 tx_errors=8 rx_errors=0", "800000000 counters 2 0 tx_errors=8 rx_errors=127",
                   "900000000 status 2 0 \"fell asleep\"", "1000000000 status 2 0 bus_state=0"}));
  EXPECT_TRUE(account_.complete());
  EXPECT_EQ(validOnTheCompatibleWay(), 3U);
}

TEST_F(AscFrames, areEventsOfManyKinds) {
  const std::string lines =
      "0.1 Start of measurement\n"
      "0.2 1  Statistic: D 1 R 2 XD 3 XR 4 E 5 O 6 B 7.89%\n"
      "0.3 log trigger event\n"
      "0.4 EnvSpeed := 7\n"
      "0.5 SV: 2 0 1 ::Body::Door = 1\n"
      "0.6 Comment: 0 lunch,  really\n"
      "0.7 Comment: 2 lunch\n"
      "0.8 GMMarker: lunch\n"
      "0.9 1 123 TxRq d 2 01 02\n"
      "1.0 Fr RMSG 0 0 1 1\n"
      "1.1 // later\n"
      "Begin TriggerBlock\n"
      "// a comment\n";
  EXPECT_EQ(readVersion("8.1.0", "0.0 1 1 Rx d 0\n" + lines),
            (Texts{"0 data 1 1 Rx", "100000000 event 0 0 \"Start of measurement\"",
                   "200000000 event 0 0 \"1  Statistic: D 1 R 2 XD 3 XR 4 E 5 O 6 B 7.89%\"",
                   "300000000 event 0 0 \"log trigger event\"", "400000000 event 0 0 \"EnvSpeed := 7\"",
                   "500000000 event 0 0 \"SV: 2 0 1 ::Body::Door = 1\"", "600000000 event 0 0 \"lunch,  really\"",
                   "700000000 event 0 0 \"Comment: 2 lunch\"", "800000000 event 0 0 \"GMMarker: lunch\"",
                   "900000000 event 0 0 \"1 123 TxRq d 2 01 02\"", "1000000000 event 0 0 \"Fr RMSG 0 0 1 1\"",
                   "1100000000 event 0 0 \"// later\"", "1100000000 event 0 0 \"Begin TriggerBlock\"",
                   "1100000000 comment 0 0 \" a comment\""}));
  EXPECT_TRUE(account_.complete());
  EXPECT_FALSE(compatible("0.4 EnvSpeed := 7", 8.1).valid);
  EXPECT_FALSE(compatible("0.2 1  Statistic: D 1 R 2 XD 3 XR 4 E 5 O 6 B 7.89%", 8.1).valid);
}

TEST_F(AscFrames, areThoseOfLinBuses) {
  const std::string lines =
      "0.1 Li 2d              Rx     8 00 f0 f0 ff ff ff ff ff  checksum = 70   header time =  40, full time = 130  "
      "SOF =    0.061440 BR = 19230  CSM = enhanced\n"
      "0.2 L2 3f Tx 0 checksum = 0A CSM = classic\n"
      "0.3 L1 1 Rx 1 FF\n"
      "0.4 L2 2d CSErr Rx 8 00 f0 f0 ff ff ff ff ff  checksum = 70\n"
      "0.5 Li WakeupFrame 80\n"
      "0.6 L3 SleepModeEvent  go to sleep \n"
      "0.7 L1 2d TransmErr\n";
  EXPECT_EQ(
      readVersion("8.1.0", lines),
      (Texts{"100000000 lin 1 2D Rx enhanced dlc8 [00F0F0FFFFFFFFFF] checksum=112 checksum_model=2",
             "200000000 lin 2 3F Tx checksum=10 checksum_model=1", "300000000 lin 1 1 Rx dlc1 [FF]",
             "400000000 lin_event 2 0 \"2d CSErr Rx 8 00 f0 f0 ff ff ff ff ff  checksum = 70\"",
             "500000000 lin_event 1 0 \"WakeupFrame 80\"", "600000000 lin_event 3 0 \"SleepModeEvent  go to sleep\"",
             "700000000 lin_event 1 0 \"2d TransmErr\""}));
  EXPECT_TRUE(account_.complete());
  EXPECT_EQ(validOnTheCompatibleWay(), 0U);
  EXPECT_EQ(read("base dec timestamps absolute\n", "0.1 Li 45 Rx 2 16 255\n"),
            (Texts{"100000000 lin 1 2D Rx dlc2 [10FF]"}));
}

TEST_F(AscFrames, sumRelativeTimesExactly) {
  const std::string head = "base hex  timestamps relative\n// version 7.0.0\n";
  EXPECT_EQ(
      read(head,
           "0.1 1 123 Rx d 0\n"
           "0.2 CAN 1 Status:chip status error active\n"
           "0.3 1 123 Rx d 2 01\n"
           "0.000000001 1 123 Rx d 0\n"
           "-0.5 1 123 Rx d 0\n"),
      (Texts{"100000000 data 1 123 Rx", "300000000 status 1 0 \"chip status error active\" bus_state=0",
             "300000000 comment 0 0 \"0.3 1 123 Rx d 2 01\"", "600000001 data 1 123 Rx", "100000001 data 1 123 Rx"}));
  std::string lines;
  constexpr int kTenths = 10'000;
  for (int count = 0; count < kTenths; ++count) {
    lines += "0.1 1 123 Rx d 0\n";
  }
  EXPECT_EQ(read(head, lines).back(), "1000000000000 data 1 123 Rx");

  // On the compatible way a caller sums the times of valid messages, as binary numbers.
  AscMessage message = compatible("0.2 CAN 1 Status:chip status error active", 7.0);
  EXPECT_FALSE(message.getValid());
}

TEST_F(AscFrames, keepEveryDigitOfATime) {
  EXPECT_EQ(
      read("8007199254.740993001 1 1 Rx d 0\n"
           "-0.000001 1 1 Rx d 0\n"
           "0.0000000005 1 1 Rx d 0\n"
           ".5 1 1 Rx d 0\n"
           "5. 1 1 Rx d 0\n"
           "123456789.123456789 1 1 Rx d 0\n"
           "1e3 1 1 Rx d 0\n"
           "1.5.2 1 1 Rx d 0\n"
           ". 1 1 Rx d 0\n"
           "9000000000.5 1 1 Rx d 0\n"
           "99999999999999999999 1 1 Rx d 0\n"),
      (Texts{"8007199254740993001 data 1 1 Rx", "-1000 data 1 1 Rx", "1 data 1 1 Rx", "500000000 data 1 1 Rx",
             "5000000000 data 1 1 Rx", "123456789123456789 data 1 1 Rx",
             "123456789123456789 comment 0 0 \"1e3 1 1 Rx d 0\"", "123456789123456789 comment 0 0 \"1.5.2 1 1 Rx d 0\"",
             "123456789123456789 comment 0 0 \". 1 1 Rx d 0\"",
             "123456789123456789 comment 0 0 \"9000000000.5 1 1 Rx d 0\"",
             "123456789123456789 comment 0 0 \"99999999999999999999 1 1 Rx d 0\""}));
}

TEST_F(AscFrames, refuseWhatNoFrameHas) {
  const Texts lines = {
      "0.1 1 800 Rx d 0",
      "0.1 1 20000000x Rx d 0",
      "0.1 256 1 Rx d 0",
      "0.1 1 1 Rx d G",
      "0.1 1 1 Up d 0",
      "0.1 1 1 Rx x 0",
      "0.1 1 1 Rx d 1 0",
      "0.1 1 1 Rx d 1 100",
      "0.1 1 1 Rx r 99",
      "0.1 CANFD 1 Rx 1 0 0 f 65 00",
      "0.1 CANFD 1 Rx 1 2 0 0 0",
      "0.1 CANFD 1 Rx 1 0 0 0 0 0 0 flags",
      "0.1 something else",
      "0.1 L1 2d Rx 9 00",
      "words",
      "x",
  };
  std::string text;
  for (const std::string& line : lines) {
    text += line + "\n";
  }
  EXPECT_EQ(readVersion("8.1.0", text).size(), lines.size());
  EXPECT_EQ(damagedLines(), lines.size());
}

TEST_F(AscFrames, areSeparatedByBlanksOrTabsAndLineEndsOfAnyKind) {
  EXPECT_EQ(read("0.1\t1\t123\tRx\td\t1\tFF\r\n\n   \n \t\r\n0.2 1 123 Rx d 0\n0.3 1 123 Rx d 0"),
            (Texts{"100000000 data 1 123 Rx dlc1 [FF]", "200000000 data 1 123 Rx", "300000000 data 1 123 Rx"}));
  EXPECT_TRUE(account_.complete());
}

TEST_F(AscFrames, haveTextsInUtf8) {
  EXPECT_EQ(read("0.1 Comment: 0 K\xFChler\n//K\xFChler\n"),
            (Texts{"100000000 event 0 0 \"K\xC3\xBChler\"", "100000000 comment 0 0 \"K\xC3\xBChler\""}));
}

struct DateCase {
  const char* line;
  std::int64_t seconds;
  std::int64_t milliseconds;
};

constexpr std::int64_t kTenTwenty = 1'351'765'230;  // 2012-11-01 10:20:30
constexpr std::int64_t kMarch = 1'741'169'472;      // 2025-03-05 10:11:12
constexpr std::int64_t kHalfDay = 43'200;

TEST_F(AscFrames, startAtDatesOfAllLanguages) {
  static constexpr DateCase kCases[] = {
      {"date Thu Nov 01 10:20:30.123 2012", kTenTwenty, 123},
      {"date Thu Nov 01 10:20:30 2012", kTenTwenty, 0},
      {"date Thu Nov 01 10:20:30.123 am 2012", kTenTwenty, 123},
      {"date Thu Nov 01 10:20:30.123 PM 2012", kTenTwenty + kHalfDay, 123},
      {"date Thu Nov 01 12:20:30 AM 2012", kTenTwenty - 10 * 3600, 0},
      {"date Thu Nov 01 10:20:30.1000 2012", kTenTwenty + 1, 0},
      {"date Thu Nov 01 10:20:30.123456 2012", kTenTwenty, 123},
      {"date Nov 1 10:20:30 2012", kTenTwenty, 0},
      {"date Thu\tNov  1\t10:20:30 2012", kTenTwenty, 0},
      {"date Mi M\xC3\xA4rz 5 10:11:12.5 2025", kMarch, 5},
      {"date Mi M\xE4r 5 10:11:12 2025", kMarch, 0},
      {"date mer. mars 5 10:11:12 2025", kMarch, 0},
      {"date wo mrt 5 10:11:12 2025", kMarch, 0},
      {"date mi\xC3\xA9 mar 5 10:11:12 p. m. 2025", kMarch + kHalfDay, 0},
      {"date mer mar 05 10:11:12 2025", kMarch, 0},
      {"date mar mar 05 10:11:12 2025", kMarch, 0},
  };
  for (const DateCase& dateCase : kCases) {
    read(std::string(dateCase.line) + "\n", "");
    ASSERT_TRUE(source_->head().start.has_value()) << dateCase.line;
    const std::int64_t start = source_->head().start->sinceEpochNs;
    EXPECT_EQ(start / 1'000'000'000, dateCase.seconds) << dateCase.line;
    EXPECT_EQ(start / 1'000'000 % 1000, dateCase.milliseconds) << dateCase.line;
    EXPECT_EQ(source_->head().start->zoneMinutes, std::nullopt);
  }
}

TEST_F(AscFrames, startNeverAtWhatIsNoDate) {
  for (const char* const line : {"date", "date Thu Nov 31 10:20:30 2012", "date Thu Foo 01 10:20:30 2012",
                                 "date Thu Nov 01 25:20:30 2012", "date Thu Nov 01 2012", "date 10:20:30",
                                 "date Sat Dec 30 00:00:00.000 1899", "base hex  timestamps absolute"}) {
    read(std::string(line) + "\n", "");
    EXPECT_EQ(source_->head().start, std::nullopt) << line;
  }
}

TEST_F(AscFrames, startWithTheirFirstBlockIfNothingElseSaysWhen) {
  read("base hex  timestamps absolute\nBegin Triggerblock Thu Nov 01 10:20:30 2012\n", "");
  ASSERT_TRUE(source_->head().start.has_value());
  EXPECT_EQ(source_->head().start->sinceEpochNs, kTenTwenty * 1'000'000'000);
}

TEST_F(AscFrames, areRecognisedByContent) {
  for (const char* const start : {"date Mon Jul 26 05:19:59 2021\n", "\r\nbase hex  timestamps absolute\r\n",
                                  "Begin Triggerblock\n", "0.5 1 123 Rx d 0\n", "// note\n0.5 1 123 Rx d 0\n"}) {
    EXPECT_TRUE(looksLikeAsc(start)) << start;
  }
  for (const char* const start : {"", ";$FILEVERSION=2.1\n1 0.001 DT 1 0123 Rx - 2 01 02\n", "date of birth\n",
                                  "1)  10.1  Rx  0123  2  01 02\n", "Time;Bus;ID\n0.5;1;123\n", "MDF     4.11"}) {
    EXPECT_FALSE(looksLikeAsc(start)) << start;
  }
}

TEST_F(AscFrames, comeInBatches) {
  std::string lines;
  constexpr std::size_t kFrames = FrameBatch::kCapacity * 2 + 5;
  for (std::size_t number = 0; number < kFrames; ++number) {
    lines += "1.0 1 123 Rx d 0\n";
  }
  source_ = openAscFrames(folder_.write("long.asc", kFramesHead + lines));
  FrameBatch batch;
  std::vector<std::size_t> sizes;
  while (source_->read(batch, account_)) {
    sizes.push_back(batch.size());
    batch.clear();
  }
  EXPECT_EQ(sizes, (std::vector<std::size_t>{FrameBatch::kCapacity, FrameBatch::kCapacity, 5}));
  EXPECT_EQ(account_.read(), kFrames);
  EXPECT_EQ(source_->bytesRead(), std::filesystem::file_size(folder_.file("long.asc")));
}

TEST_F(AscFrames, ofAMissingFileAreAFailureOfTheSystem) {
  EXPECT_THROW(static_cast<void>(openAscFrames(folder_.file("missing.asc"))), std::ios_base::failure);
}

}  // namespace
}  // namespace xlatr
