#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "formats/lin/lin_message.hpp"

namespace xlatr {
namespace {

std::string printed(const KorlMessage& message, double version = 1.2, std::uint64_t number = 1,
                    Way way = Way::compatible()) {
  TextBuffer out;
  message.appendText(out, version, number, way);
  return std::string(out.view());
}

std::string printedWhole(const KorlMessage& message) {
  return printed(message, 1.2, 1, Way::complete());
}

KorlMessage frame(std::uint32_t length) {
  KorlMessage message;
  message.valid = true;
  message.timestamp = UnsignedMicroseconds(1000);
  message.direction = DirectionType::Publisher;
  message.id = 0x2A;
  message.length = length;
  message.data.assign(length, 0xA5);
  message.checksum = 0x7C;
  message.checksumType = ChecksumType::Classic;
  return message;
}

KorlMessage event(std::string_view text) {
  KorlMessage message;
  message.valid = true;
  message.timestamp = UnsignedMicroseconds(12);
  message.busEvent = true;
  message.length = static_cast<std::uint32_t>(text.size());
  message.data.assign(text.begin(), text.end());
  return message;
}

TEST(LinPrinter, alignsAFrame) {
  EXPECT_EQ(printed(frame(2)), "     1)             1000   Pub   2A  2  A5 A5                   7C  CL  ");
  EXPECT_EQ(printed(frame(8)), "     1)             1000   Pub   2A  8  A5 A5 A5 A5 A5 A5 A5 A5  7C  CL  ");
}

TEST(LinPrinter, aFrameWithoutDataIsAColumnWider) {
  const auto columnOfChecksum = [](std::uint32_t length) { return printed(frame(length)).find("7C  CL"); };
  EXPECT_EQ(printed(frame(0)), "     1)             1000   Pub   2A  0                           7C  CL  ");
  for (std::uint32_t length = 1; length <= 7; ++length) {
    EXPECT_EQ(columnOfChecksum(length) + 1, columnOfChecksum(0)) << length;
  }
  EXPECT_EQ(columnOfChecksum(8), columnOfChecksum(0));
}

TEST(LinPrinter, longNumbersPushTheRest) {
  KorlMessage message = frame(0);
  message.timestamp = UnsignedMicroseconds(123456789);
  EXPECT_EQ(printed(message, 1.0, 12345678).substr(0, 36), "12345678)          123456789   Pub  ");
}

TEST(LinPrinter, joinsErrorCodesInTheirOwnOrderAndHidesTheData) {
  KorlMessage message = frame(2);
  message.errorFlags = 0xFF;
  EXPECT_EQ(printed(message),
            "     1)             1000   Pub   2A  2  -- --                   7C  CL  CK/GS/IS/P0/P1/SD/SR/TO");
  message.errorFlags = 0x100;
  EXPECT_EQ(printed(message), "     1)             1000   Pub   2A  2  -- --                   7C  CL  ");
}

TEST(LinPrinter, printsABusEvent) {
  EXPECT_EQ(printed(event("Bus Sleep"), 1.2, 3),
            "     3)               12   ---   --  -  Bus Sleep                --  --");
  EXPECT_EQ(printed(event("a text that is wider than its column"), 1.2, 3),
            "     3)               12   ---   --  -  a text that is wider than its column--  --");
}

TEST(LinPrinter, aBusEventIsACommentBelowVersion12) {
  EXPECT_EQ(printed(event("Bus Sleep"), 1.1, 3),
            ";     3)               12   ---   --  -  Bus Sleep                --  --");
  EXPECT_EQ(printed(event("Bus Sleep"), 1.0).front(), ';');
}

TEST(LinPrinter, printsBytesOfWhatIsWider) {
  KorlMessage message = frame(0);
  message.id = 0x1FF;
  message.checksum = 0xABCD;
  EXPECT_NE(printed(message).find("   FF  0"), std::string::npos);
  EXPECT_NE(printed(message).find("  CD  CL"), std::string::npos);
}

TEST(LinPrinter, aFrameThatIsTooLongHasNoPadding) {
  EXPECT_EQ(printed(frame(9)), "     1)             1000   Pub   2A  9  A5 A5 A5 A5 A5 A5 A5 A5 A5  7C  CL  ");
}

TEST(LinPrinter, printsNoMoreBytesThanThereAre) {
  KorlMessage message = frame(2);
  message.length = 8;
  EXPECT_EQ(printed(message), "     1)             1000   Pub   2A  8  A5 A5  7C  CL  ");
}

TEST(LinPrinter, hidesBytesOfErrorsOnTheCompatibleWay) {
  KorlMessage message = frame(2);
  message.errorFlags = 1;
  EXPECT_EQ(printed(message), "     1)             1000   Pub   2A  2  -- --                   7C  CL  CK");
  EXPECT_EQ(printedWhole(message), "     1)             1000   Pub   2A  2  A5 A5                   7C  CL  CK");
  message.data.clear();
  EXPECT_EQ(printedWhole(message), "     1)             1000   Pub   2A  2  -- --                   7C  CL  CK");
}

TEST(LinPrinter, showsNoVBatShortOnTheCompatibleWay) {
  KorlMessage message = frame(2);
  message.errorFlags = 0x101;
  EXPECT_EQ(printed(message), "     1)             1000   Pub   2A  2  -- --                   7C  CL  CK");
  EXPECT_EQ(printedWhole(message), "     1)             1000   Pub   2A  2  A5 A5                   7C  CL  CK/VS");
}

TEST(LinPrinter, runsLongEventsOnOnTheCompatibleWay) {
  const KorlMessage message = event("a text of 25 characters..");
  EXPECT_EQ(printed(message), "     1)               12   ---   --  -  a text of 25 characters..--  --");
  EXPECT_EQ(printedWhole(message), "     1)               12   ---   --  -  a text of 25 characters.. --  --");
}

TEST(LinPrinter, aMessageThatIsNotValidHasNoText) {
  KorlMessage message = frame(2);
  message.valid = false;
  EXPECT_EQ(printed(message), "");
}

}  // namespace
}  // namespace xlatr
