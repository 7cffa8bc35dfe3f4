#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "formats/asc/asc_message.hpp"

namespace xlatr {
namespace {

using Bytes = std::vector<std::uint8_t>;

AscMessage frame(Bytes data = {0x01, 0xAB}) {
  AscMessage message;
  message.time = RealSeconds(0.001);
  message.bus = 1;
  message.type = MessageType::Rx;
  message.id = 0x100;
  message.length = static_cast<std::uint32_t>(data.size());
  message.data = std::move(data);
  message.frameClass = AscFrameClass::Classic;
  message.flags = asc_flag::kClassicFrame;
  message.valid = true;
  return message;
}

std::string text7(const AscMessage& message) {
  TextBuffer out;
  message.toText7(out);
  return std::string(out.view());
}

std::string text8(const AscMessage& message) {
  TextBuffer out;
  message.toText8(out);
  return std::string(out.view());
}

AscMessage with(void (*change)(AscMessage&)) {
  AscMessage message = frame();
  change(message);
  return message;
}

const std::string kTail = "        0        0        0        0        0";
const std::string kGap(32, ' ');

TEST(AscPrinter, printsFramesInTheFormOf7) {
  const struct {
    const char* name;
    AscMessage message;
    std::string text;
  } cases[] = {
      {"received", frame(), "   0.001000 1  100             Rx   d 2 01 AB"},
      {"sent", with([](AscMessage& m) { m.type = MessageType::Tx; }), "   0.001000 1  100             Tx   d 2 01 AB"},
      {"extended", with([](AscMessage& m) {
         m.id = 0x18FEF1AB;
         m.extended = true;
       }),
       "   0.001000 1  18FEF1ABx       Rx   d 2 01 AB"},
      {"bus of two digits", with([](AscMessage& m) { m.bus = 12; }), "   0.001000 12 100             Rx   d 2 01 AB"},
      {"bus of three digits", with([](AscMessage& m) { m.bus = 255; }),
       "   0.001000 255 100             Rx   d 2 01 AB"},
      {"no data", frame({}), "   0.001000 1  100             Rx   d 0 "},
      {"eight bytes", frame({1, 2, 3, 4, 5, 6, 7, 8}),
       "   0.001000 1  100             Rx   d 8 01 02 03 04 05 06 07 08"},
      {"nine bytes", frame({1, 2, 3, 4, 5, 6, 7, 8, 9}), ""},
      {"FD", with([](AscMessage& m) { m.frameClass = AscFrameClass::Fd; }), ""},
      {"no class", with([](AscMessage& m) { m.frameClass = AscFrameClass::None; }), ""},
      {"remote", with([](AscMessage& m) {
         m.flags = asc_flag::kRemote;
         m.length = 8;
       }),
       "   0.001000 1  100             Rx   r 8"},
      {"remote of unknown type", with([](AscMessage& m) {
         m.flags = asc_flag::kRemote;
         m.type = MessageType::Unknown;
       }),
       "   0.001000 1  100             Rx   r 2"},
      {"remote and sent", with([](AscMessage& m) {
         m.flags = asc_flag::kRemote;
         m.type = MessageType::Tx;
       }),
       "   0.001000 1  100             Tx   r 2"},
      {"unknown type", with([](AscMessage& m) { m.type = MessageType::Unknown; }), ""},
      {"fewer bytes than its length", with([](AscMessage& m) { m.length = 4; }),
       "   0.001000 1  100             Rx   d 4 01 AB"},
      {"more bytes than its length", with([](AscMessage& m) { m.length = 1; }),
       "   0.001000 1  100             Rx   d 1 01"},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(text7(test.message), test.text) << test.name;
  }
}

TEST(AscPrinter, printsFramesInTheFormOf8) {
  const struct {
    const char* name;
    AscMessage message;
    std::string text;
  } cases[] = {
      {"classic", frame(),
       "   0.001000 CANFD   1 Rx        100  " + kGap + " 0 0 2  2 01 AB        0    0   200000" + kTail},
      {"sent", with([](AscMessage& m) { m.type = MessageType::Tx; }),
       "   0.001000 CANFD   1 Tx        100  " + kGap + " 0 0 2  2 01 AB        0    0   200000" + kTail},
      {"extended", with([](AscMessage& m) {
         m.id = 0x18FEF1AB;
         m.extended = true;
       }),
       "   0.001000 CANFD   1 Rx   18FEF1ABx " + kGap + " 0 0 2  2 01 AB        0    0   200000" + kTail},
      {"identifier 0", with([](AscMessage& m) { m.id = 0; }),
       "   0.001000 CANFD   1 Rx          0  " + kGap + " 0 0 2  2 01 AB        0    0   200000" + kTail},
      {"BRS", with([](AscMessage& m) { m.flags = 0x3000; }),
       "   0.001000 CANFD   1 Rx        100  " + kGap + " 1 0 2  2 01 AB        0    0     3000" + kTail},
      {"ESI", with([](AscMessage& m) { m.flags = 0x5000; }),
       "   0.001000 CANFD   1 Rx        100  " + kGap + " 0 1 2  2 01 AB        0    0     5000" + kTail},
      {"no data", frame({}),
       "   0.001000 CANFD   1 Rx        100  " + kGap + " 0 0 0  0         0    0   200000" + kTail},
      {"bus of three digits", with([](AscMessage& m) { m.bus = 255; }),
       "   0.001000 CANFD 255 Rx        100  " + kGap + " 0 0 2  2 01 AB        0    0   200000" + kTail},
      {"unknown type", with([](AscMessage& m) { m.type = MessageType::Unknown; }), ""},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(text8(test.message), test.text) << test.name;
  }
}

TEST(AscPrinter, printsTheFlagsOfARemoteFrameInDecimal) {
  const AscMessage message = with([](AscMessage& m) {
    m.flags = asc_flag::kRemote;
    m.length = 8;
    m.data.clear();
  });
  EXPECT_EQ(text8(message),
            "   0.001000 CANFD   1 Rx        100  " + kGap + " 0 0 8  0        0    0       16" + kTail);
}

TEST(AscPrinter, codesTheLengthOfAnFdFrame) {
  const struct {
    std::uint32_t length;
    char code;
  } cases[] = {{0, '0'},  {8, '8'},  {9, '9'},  {12, '9'}, {13, 'A'}, {16, 'A'}, {17, 'B'}, {20, 'B'}, {21, 'C'},
               {24, 'C'}, {25, 'D'}, {32, 'D'}, {33, 'E'}, {48, 'E'}, {49, 'F'}, {64, 'F'}, {65, 'F'}, {255, 'F'}};
  for (const auto& test : cases) {
    const std::string text = text8(frame(Bytes(test.length, 0x55)));
    const std::string length = std::to_string(test.length);
    const std::string field = std::string(length.size() < 2 ? 1 : 0, ' ') + length;
    EXPECT_EQ(text.substr(74, 3 + field.size()), std::string(1, test.code) + " " + field + " ");
  }
}

TEST(AscPrinter, roundsTheTimeToMicroseconds) {
  const struct {
    double time;
    const char* text;
  } cases[] = {{0.0000005, "   0.000001"}, {0.0000004, "   0.000000"},  {1234.5, "1234.500000"},
               {0.1234565, "   0.123457"}, {123456.7, "123456.700000"}, {-0.5, "  -0.500000"}};
  for (const auto& test : cases) {
    AscMessage message = frame();
    message.time = RealSeconds(test.time);
    const std::string text = text7(message);
    EXPECT_EQ(text.substr(0, text.find(" 1  100")), test.text) << test.time;
  }
}

// A fresh buffer has no storage yet, and a time this wide needs no blank before it.
TEST(AscPrinter, printsATimeThatFillsItsColumnsIntoAFreshBuffer) {
  AscMessage message = frame();
  message.time = RealSeconds(1e300);
  EXPECT_EQ(text7(message).substr(0, 3), "100");
}

TEST(AscPrinter, printsStatusAndErrorsTheSameInBothForms) {
  const struct {
    const char* name;
    AscMessage message;
    const char* text;
  } cases[] = {
      {"status", with([](AscMessage& m) {
         m.type = MessageType::Warng;
         m.commentText = "BUSOFF";
       }),
       "   0.001000 CAN 1  Status:BUSOFF (Zelkworks)"},
      {"status without text", with([](AscMessage& m) { m.type = MessageType::Warng; }), "   0.001000 CAN 1  Status:"},
      {"error counters", with([](AscMessage& m) {
         m.type = MessageType::Error;
         m.lineKind = AscLineKind::Status;
         m.bus = 12;
       }),
       "   0.001000 CAN 12 Status:error counter change (Zelkworks) - TxErr: 171 RxErr: 1"},
      {"error frame", with([](AscMessage& m) {
         m.type = MessageType::Error;
         m.id = 2;
         m.data = {1, 6, 0, 0};
         m.length = 4;
       }),
       "   0.001000 1  ErrorFrame ECC: 01100110"},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(text7(test.message), test.text) << test.name;
    EXPECT_EQ(text8(test.message), test.text) << test.name;
  }
}

TEST(AscPrinter, printsErrorBitsFromTheIdentifierOrTheFirstByte) {
  const struct {
    const char* name;
    std::uint32_t id;
    Bytes data;
    std::uint32_t length;
    const char* bits;
  } cases[] = {
      {"bit error", 1, {0, 6, 0, 0}, 4, "00000110"},
      {"form error", 2, {0, 6, 0, 0}, 4, "01000110"},
      {"stuff error", 4, {1, 6, 0, 0}, 4, "10100110"},
      {"other error", 8, {1, 31, 0, 0}, 4, "11111111"},
      {"unknown type", 3, {1, 31, 0, 0}, 4, "00111111"},
      {"five bytes, type in the first", 1, {8, 1, 31, 0, 0}, 5, "11111111"},
      {"five bytes, identifier without effect", 8, {1, 0, 6, 0, 0}, 5, "00000110"},
      {"direction of eight bits", 1, {0xFF, 0, 0, 0}, 4, "11100000"},
      {"no data", 2, {}, 4, "01000000"},
      {"one byte", 2, {1}, 1, "01100000"},
  };
  for (const auto& test : cases) {
    AscMessage message = frame(test.data);
    message.type = MessageType::Error;
    message.id = test.id;
    message.length = test.length;
    EXPECT_EQ(message.getErrorCounterBits(), test.bits) << test.name;
  }
}

TEST(AscPrinter, putsTheMakersMarkAfterAStatus) {
  AscMessage message = frame();
  EXPECT_EQ(message.getStatusText(), "");
  message.commentText = "BUSOFF";
  EXPECT_EQ(message.getStatusText(), "BUSOFF (Zelkworks)");
}

}  // namespace
}  // namespace xlatr
