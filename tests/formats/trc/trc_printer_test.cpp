#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "formats/trc/trc_message.hpp"
#include "formats/trc/trc_version.hpp"

namespace xlatr {
namespace {

BrixMessage frame() {
  BrixMessage message;
  message.valid = true;
  message.timeOffset = RealMilliseconds(1234.5678);
  message.bus = 3;
  message.type = MessageType::Rx;
  message.kind = MessageKind::DT;
  message.direction = MessageDirection::Rx;
  message.id = 0x1A3;
  message.length = 2;
  message.data = {0x0A, 0xB0};
  return message;
}

BrixMessage extendedSent() {
  BrixMessage message = frame();
  message.id = 0x18ABCDEF;
  message.extended = true;
  message.type = MessageType::Tx;
  message.direction = MessageDirection::Tx;
  message.reserved = 0x1F;
  return message;
}

BrixMessage remote() {
  BrixMessage message = frame();
  message.kind = MessageKind::RR;
  message.remote = true;
  message.length = 8;
  message.data.clear();
  return message;
}

BrixMessage status() {
  BrixMessage message = frame();
  message.id = kNoIdentifier;
  message.type = MessageType::Warng;
  message.kind = MessageKind::ST;
  message.length = 4;
  message.data = {0, 0, 0, 16};
  message.comment = "BUSOFF";
  return message;
}

BrixMessage counters() {
  BrixMessage message = frame();
  message.id = 0;
  message.type = MessageType::Error;
  message.kind = MessageKind::EC;
  return message;
}

BrixMessage error() {
  BrixMessage message = frame();
  message.id = kNoIdentifier;
  message.type = MessageType::Error;
  message.kind = MessageKind::ER;
  message.length = 5;
  message.data = {8, 1, 2, 3, 4};
  return message;
}

BrixMessage event() {
  BrixMessage message = frame();
  message.kind = MessageKind::EV;
  message.type = MessageType::Unknown;
  message.comment = "a note";
  return message;
}

BrixMessage xl() {
  BrixMessage message = frame();
  message.kind = MessageKind::XL;
  message.type = MessageType::Unknown;
  message.xl = {.vcid = 0x0A, .sdt = 3, .acceptance = 0xBEEF, .rrs = 0, .sec = 1};
  return message;
}

std::string text(const BrixMessage& message, double version, TrcColumnSet columns) {
  TextBuffer out;
  message.appendText(out, findTrcVersion(version), 42, columns);
  return std::string(out.view());
}

struct Case {
  const char* name;
  BrixMessage message;
  double version;
  TrcColumnSet columns;
  const char* expected;
};

TEST(TrcPrinter, printsEveryVersion) {
  const Case cases[] = {
      {"1.0", frame(), 1.0, 0, "    42)      1234      01A3  2  0A B0"},
      {"1.0 extended", extendedSent(), 1.0, 0, "    42)      1234  18ABCDEF  2  0A B0"},
      {"1.0 remote", remote(), 1.0, 0, "    42)      1234      01A3  8  RTR"},
      {"1.0 status", status(), 1.0, 0, "    42)      1234  FFFFFFFF  4  00 00 00 10 -- -- -- -- BUSOFF"},
      {"1.0 error", error(), 1.0, 0, "    42)      1234      0008  4  01 02 03 04"},

      {"1.1", frame(), 1.1, 0, "    42)      1234.6  Rx         01A3  2  0A B0"},
      {"1.1 extended", extendedSent(), 1.1, 0, "    42)      1234.6  Tx     18ABCDEF  2  0A B0"},
      {"1.1 remote", remote(), 1.1, 0, "    42)      1234.6  Rx         01A3  8  RTR"},
      {"1.1 status", status(), 1.1, 0, "    42)      1234.6  Warng  FFFFFFFF  4  00 00 00 10 BUSOFF"},
      {"1.1 counters", counters(), 1.1, 0, "    42)      1234.6  Error      0000  2  0A B0"},
      {"1.1 error", error(), 1.1, 0, "    42)      1234.6  Error      0008  4  01 02 03 04"},

      {"1.2", frame(), 1.2, 0, "    42)     1234.568  3  Rx         01A3  2  0A B0"},
      {"1.2 status", status(), 1.2, 0, "    42)     1234.568  3  Warng  FFFFFFFF  4  00 00 00 10"},

      {"1.3", frame(), 1.3, 0, "     42)     1234.568 3  Rx        01A3 -  2    0A B0"},
      {"1.3 extended", extendedSent(), 1.3, 0, "     42)     1234.568 3  Tx    18ABCDEF 1F 2    0A B0"},
      {"1.3 remote", remote(), 1.3, 0, "     42)     1234.568 3  Rx        01A3 -  8    RTR"},

      {"2.0", frame(), 2.0, kTrcColumns20, "     42      1234.568 DT     01A3 Rx 2  0A B0"},
      {"2.0 remote", remote(), 2.0, kTrcColumns20, "     42      1234.568 RR     01A3 Rx 8  "},
      {"2.0 status", status(), 2.0, kTrcColumns20, "     42      1234.568 ST          Rx    00 00 00 10"},
      {"2.0 error", error(), 2.0, kTrcColumns20, "     42      1234.568 ER          Rx    08 01 02 03 04"},
      {"2.0 event", event(), 2.0, kTrcColumns20, "     42      1234.568 EV a note"},
      {"2.0 without number", frame(), 2.0, kTrcColumns20 & ~trc_column::kNumber,
       "     1234.568 DT     01A3 Rx 2  0A B0"},

      {"2.1", frame(), 2.1, kTrcColumns21, "     42      1234.568 DT 3      01A3 Rx -  2    0A B0"},
      {"2.1 extended", extendedSent(), 2.1, kTrcColumns21, "     42      1234.568 DT 3  18ABCDEF Tx 1F 2    0A B0"},
      {"2.1 remote", remote(), 2.1, kTrcColumns21, "     42      1234.568 RR 3      01A3 Rx -  8    "},
      {"2.1 status", status(), 2.1, kTrcColumns21, "     42      1234.568 ST 3         - Rx -  4    00 00 00 10"},
      {"2.1 counters", counters(), 2.1, kTrcColumns21, "     42      1234.568 EC 3         - Rx -  2    0A B0"},
      {"2.1 error", error(), 2.1, kTrcColumns21, "     42      1234.568 ER 3         - Rx -  5    08 01 02 03 04"},
      {"2.1 event", event(), 2.1, kTrcColumns21, "     42      1234.568 EV 3  a note"},

      {"3.0", frame(), 3.0, kTrcColumns30, "     42      1234.568 DT 3       1A3 Rx -  -  -  -        - - 2    0A B0"},
      {"3.0 XL", xl(), 3.0, kTrcColumns30, "     42      1234.568 XL 3       1A3 Rx -  0A 03 0000BEEF 0 1 1    0A B0"},
      {"3.0 counters", counters(), 3.0, kTrcColumns30,
       "     42      1234.568 EC 3         - Rx -  -  -  -        - - 2    0A B0"},
      {"3.0 event", event(), 3.0, kTrcColumns30, "     42      1234.568 EV 3  a note"},
  };
  for (const Case& test : cases) {
    EXPECT_EQ(text(test.message, test.version, test.columns), test.expected) << test.name;
  }
}

TEST(TrcPrinter, printsTheCodeInADlcColumnAndTheLengthOtherwise) {
  BrixMessage message = frame();
  message.kind = MessageKind::FD;
  message.length = 12;
  message.data.assign(12, 0);
  const std::string zeros = " 00 00 00 00 00 00 00 00 00 00 00 00";
  EXPECT_EQ(text(message, 2.1, kTrcColumns21), "     42      1234.568 FD 3      01A3 Rx -  9   " + zeros);
  EXPECT_EQ(text(message, 2.1, (kTrcColumns21 & ~trc_column::kDlc) | trc_column::kLength),
            "     42      1234.568 FD 3      01A3 Rx -  12  " + zeros);
}

TEST(TrcPrinter, printsABusWithoutNumberAsADash) {
  BrixMessage message = frame();
  message.bus = 255;
  EXPECT_EQ(text(message, 2.1, kTrcColumns21), "     42      1234.568 DT -      01A3 Rx -  2    0A B0");
}

std::string frameText(const BrixMessage& message, std::int64_t timeNs, double version) {
  TextBuffer out;
  appendTrcFrameLine(out, message, timeNs, *findTrcVersion(version), 42);
  return std::string(out.view());
}

TEST(TrcPrinter, writesBus255AsADash) {
  BrixMessage message = frame();
  message.bus = 255;
  EXPECT_EQ(text(message, 2.1, kTrcColumns21), "     42      1234.568 DT -      01A3 Rx -  2    0A B0");
  EXPECT_EQ(frameText(message, 1'234'568'000, 2.1), "     42      1234.568 DT 255     01A3 Rx -  2    0A B0");
  message.bus = 0;
  EXPECT_EQ(text(message, 2.1, kTrcColumns21), "     42      1234.568 DT 0      01A3 Rx -  2    0A B0");
  EXPECT_EQ(frameText(message, 1'234'568'000, 2.1), "     42      1234.568 DT -      01A3 Rx -  2    0A B0");
}

TEST(TrcPrinter, printsEveryDigitOfAFramesTime) {
  struct TimeCase {
    std::int64_t timeNs;
    double version;
    const char* expected;
  };
  static constexpr TimeCase kCases[] = {
      {-1'000, 1.2, "    42)       -0.001  3  Rx         01A3  2  0A B0"},
      {9'007'199'254'740'993'000, 1.2, "    42)   9007199254740.993  3  Rx         01A3  2  0A B0"},
      {7'776'000'000'000'100'000, 1.1, "    42)   7776000000000.1  Rx         01A3  2  0A B0"},
      {1'841'000'000, 1.0, "    42)      1841      01A3  2  0A B0"},
  };
  for (const TimeCase& test : kCases) {
    EXPECT_EQ(frameText(frame(), test.timeNs, test.version), test.expected);
  }
}

TEST(TrcPrinter, usesTheMessagesOwnColumnsWhenThereAreNoOthers) {
  BrixMessage message = frame();
  message.columnSet = trc_column::kDirection | trc_column::kLength | trc_column::kData;
  EXPECT_EQ(text(message, 2.1, 0), "     1234.568 DT Rx 2    0A B0");
}

TEST(TrcPrinter, roundsTheTimeBeforeItIsPrinted) {
  BrixMessage message = frame();
  message.timeOffset = RealMilliseconds(123.45);
  EXPECT_EQ(text(message, 1.1, 0), "    42)       123.5  Rx         01A3  2  0A B0");
  EXPECT_EQ(text(message, 1.2, 0), "    42)      123.450  3  Rx         01A3  2  0A B0");
}

TEST(TrcPrinter, truncatesTheTimeOf10) {
  BrixMessage message = frame();
  message.timeOffset = RealMilliseconds(9.999);
  EXPECT_EQ(text(message, 1.0, 0), "    42)         9      01A3  2  0A B0");
  message.timeOffset = RealMilliseconds(-0.5);
  EXPECT_EQ(text(message, 1.0, 0), "    42)         0      01A3  2  0A B0");
}

TEST(TrcPrinter, printsAtMostTheBytesItHoldsAndAtMostItsLength) {
  BrixMessage message = frame();
  message.length = 8;
  EXPECT_EQ(text(message, 1.2, 0), "    42)     1234.568  3  Rx         01A3  8  0A B0");
  message.length = 1;
  EXPECT_EQ(text(message, 1.2, 0), "    42)     1234.568  3  Rx         01A3  1  0A");
}

TEST(TrcPrinter, keepsAnErrorOfFourBytesAsItIs) {
  BrixMessage message = error();
  message.id = 4;
  message.length = 4;
  message.data = {1, 2, 3, 4};
  EXPECT_EQ(text(message, 1.2, 0), "    42)     1234.568  3  Error      0004  4  01 02 03 04");
}

TEST(TrcPrinter, printsNothingForAMessageThatIsNotValidOrAnUnknownVersion) {
  BrixMessage message = frame();
  EXPECT_EQ(text(message, 2.2, kTrcColumns21), "");
  EXPECT_EQ(text(message, 0.0, kTrcColumns21), "");
  message.valid = false;
  EXPECT_EQ(text(message, 2.1, kTrcColumns21), "");
}

TEST(TrcPrinter, printsTimesOfAnySize) {
  BrixMessage message = frame();
  message.timeOffset = RealMilliseconds(1e300);
  EXPECT_NE(text(message, 2.1, kTrcColumns21).find(".000 DT "), std::string::npos);
  message.timeOffset = RealMilliseconds(-1.5);
  EXPECT_EQ(text(message, 2.1, kTrcColumns21), "     42        -1.500 DT 3      01A3 Rx -  2    0A B0");
  message.timeOffset = RealMilliseconds(std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(text(message, 2.1, kTrcColumns21), "     42           nan DT 3      01A3 Rx -  2    0A B0");
  EXPECT_EQ(text(message, 1.0, 0), "    42)       nan      01A3  2  0A B0");
}

}  // namespace
}  // namespace xlatr
