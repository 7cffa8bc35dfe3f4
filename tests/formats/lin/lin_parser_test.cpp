#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "formats/lin/lin_message.hpp"

namespace xlatr {
namespace {

using Bytes = std::vector<std::uint8_t>;

KorlMessage parsed(const std::string& line, Way way = Way::compatible()) {
  KorlMessage message;
  message.parseLine(line, way);
  EXPECT_EQ(message.parsingText, line);
  return message;
}

TEST(LinParser, readsAFrame) {
  const KorlMessage message = parsed("5) 1000 Pub 2A 2 01 02 7C CL");
  EXPECT_TRUE(message.valid);
  EXPECT_EQ(message.timestamp, UnsignedMicroseconds(1000U));
  EXPECT_EQ(message.direction, DirectionType::Publisher);
  EXPECT_EQ(message.id, 0x2AU);
  EXPECT_EQ(message.length, 2U);
  EXPECT_EQ(message.data, (Bytes{1, 2}));
  EXPECT_EQ(message.checksum, 0x7CU);
  EXPECT_EQ(message.checksumType, ChecksumType::Classic);
  EXPECT_EQ(message.errorFlags, 0U);
  EXPECT_FALSE(message.busEvent);
}

TEST(LinParser, readsTheErrorCodesOfOneMoreToken) {
  const KorlMessage message = parsed("5) 1000 Sub 2A 2 -- -- 7C EH CK/TO");
  EXPECT_TRUE(message.valid);
  EXPECT_EQ(message.errorFlags, 0x81U);
  EXPECT_EQ(message.data, (Bytes{0, 0}));
}

TEST(LinParser, knowsEveryErrorCode) {
  const struct {
    const char* text;
    std::uint32_t flags;
  } cases[] = {{"CK", 0x01},
               {"GS", 0x02},
               {"P0", 0x04},
               {"P1", 0x08},
               {"IS", 0x10},
               {"SR", 0x20},
               {"SD", 0x40},
               {"TO", 0x80},
               {"VS", 0x100},
               {"NONE", 0},
               {"ck/gs/vs", 0x103},
               {"CK/CK", 0x01},
               {"TO/SD/SR/IS/P1/P0/GS/CK", 0xFF}};
  for (const auto& [text, flags] : cases) {
    const KorlMessage message = parsed(std::string("1) 1 Pub 01 0 FF CL ") + text);
    EXPECT_TRUE(message.valid) << text;
    EXPECT_EQ(message.errorFlags, flags) << text;
  }
}

TEST(LinParser, readsNoErrorCodesInFrontOfAnotherToken) {
  const KorlMessage message = parsed("1) 1 Pub 01 0 FF CL XX more");
  EXPECT_TRUE(message.valid);
  EXPECT_EQ(message.errorFlags, 0U);
}

TEST(LinParser, knowsEveryDirectionAndChecksumTypeInAnyCase) {
  EXPECT_EQ(parsed("1) 1 SUBAL 01 0 FF AU").direction, DirectionType::SubscriberAutoLength);
  EXPECT_EQ(parsed("1) 1 SubAL 01 0 FF AU").checksumType, ChecksumType::Auto);
  EXPECT_EQ(parsed("1) 1 sub 01 0 FF eh").direction, DirectionType::Subscriber);
  EXPECT_EQ(parsed("1) 1 sub 01 0 FF eh").checksumType, ChecksumType::Enhanced);
  const KorlMessage unknown = parsed("1) 1 Unknown 01 0 FF Unknown");
  EXPECT_TRUE(unknown.valid);
  EXPECT_EQ(unknown.direction, DirectionType::Unknown);
  EXPECT_EQ(unknown.checksumType, ChecksumType::Unknown);
}

TEST(LinParser, takesAnyRunOfBlanksForOne) {
  const KorlMessage message = parsed("     7)             74070   Pub   06  1  2F                      12  CL  ");
  EXPECT_TRUE(message.valid);
  EXPECT_EQ(message.timestamp, UnsignedMicroseconds(74070U));
  EXPECT_EQ(message.data, Bytes{0x2F});
}

TEST(LinParser, readsFramesThatAreTooLong) {
  const KorlMessage message = parsed("1) 1 Pub 01 10 00 01 02 03 04 05 06 07 08 09 FF CL");
  EXPECT_TRUE(message.valid);
  EXPECT_EQ(message.length, 10U);
  EXPECT_EQ(message.data.size(), 10U);
}

TEST(LinParser, readsTheLargestTime) {
  EXPECT_EQ(parsed("1) 18446744073709551615 Pub 01 0 FF CL").timestamp, UnsignedMicroseconds(18446744073709551615U));
}

TEST(LinParser, refusesWhatIsNoFrame) {
  for (const char* line : {"",
                           " ",
                           "1)",
                           "1) 1",
                           "1) 1 Pub",
                           "1) 1 Pub 01",
                           "1) 1 Pub 01 0",
                           "1) 1 Pub 01 0 FF",
                           "1) 1 Pub 01 1 FF CL",
                           "1) x Pub 01 0 FF CL",
                           "1) -1 Pub 01 0 FF CL",
                           "1) 1 Both 01 0 FF CL",
                           "1) 1 --- 01 0 FF CL",
                           "1) 1 Pub -- 0 FF CL",
                           "1) 1 Pub 0x1 0 FF CL",
                           "1) 1 Pub 01 A FF CL",
                           "1) 1 Pub 01 1 G0 FF CL",
                           "1) 1 Pub 01 1 1 FF CL",
                           "1) 1 Pub 01 1 - FF CL",
                           "1) 1 Pub 01 0 -- CL",
                           "1) 1 Pub 01 0 FF --",
                           "1) 1 Pub 01 0 FF CL CK/",
                           "1) 1 Pub 01 0 FF CL /CK",
                           "1) 1 Pub 01 0 FF CL CK//TO",
                           "1) 1 Pub 01 0 FF CL XX",
                           "1) 1 Pub 01 4294967295 00 FF CL",
                           "1) 1 Pub 01 99999999999 00 FF CL",
                           "     1)                1   ---   --  -  Bus Sleep                --  --"}) {
    EXPECT_FALSE(parsed(line).valid) << line;
  }
}

TEST(LinParser, keepsWhatItReadOfALineThatBreaksOff) {
  const KorlMessage message = parsed("1) 77 Sub 1F 3 01 02");
  EXPECT_FALSE(message.valid);
  EXPECT_EQ(message.timestamp, UnsignedMicroseconds(77U));
  EXPECT_EQ(message.id, 0x1FU);
  EXPECT_EQ(message.data, (Bytes{1, 2}));
}

TEST(LinParser, refusesBusEventsOnTheCompatibleWay) {
  const std::string line = "     3)             2500   ---   --  -  Bus Sleep                --  --";
  EXPECT_FALSE(parsed(line).valid);
  const KorlMessage message = parsed(line, Way::complete());
  EXPECT_TRUE(message.valid);
  EXPECT_TRUE(message.busEvent);
  EXPECT_EQ(message.timestamp, UnsignedMicroseconds(2500U));
  EXPECT_EQ(std::string(message.data.begin(), message.data.end()), "Bus Sleep");
}

TEST(LinParser, readsEventsOfAnyText) {
  const auto textOf = [](const std::string& line) {
    const KorlMessage message = parsed(line, Way::complete());
    EXPECT_TRUE(message.busEvent) << line;
    return std::string(message.data.begin(), message.data.end());
  };
  EXPECT_EQ(textOf("3) 2500 --- -- -                           --  --"), "");
  EXPECT_EQ(textOf("3) 2500 --- -- - Wake-up -- now --  --"), "Wake-up -- now");
  EXPECT_EQ(textOf("3) 2500 --- -- - Sleep"), "Sleep");
  EXPECT_EQ(textOf("3) 2500 --- -- -"), "");
}

TEST(LinParser, refusesDashesOnTheCompatibleWay) {
  for (const std::string line : {"5) 1000 --- 2A 2 01 02 7C CL", "5) 1000 Pub 2A 2 01 02 7C --"}) {
    EXPECT_FALSE(parsed(line).valid) << line;
    EXPECT_TRUE(parsed(line, Way::complete()).valid) << line;
  }
  const KorlMessage message = parsed("5) 1000 --- 2A 2 01 02 7C --", Way::complete());
  EXPECT_EQ(message.direction, DirectionType::Unknown);
  EXPECT_EQ(message.checksumType, ChecksumType::Unknown);
  EXPECT_EQ(message.data, (Bytes{1, 2}));
  EXPECT_FALSE(parsed("5) 1000 none 2A 2 01 02 7C CL", Way::complete()).valid);
  EXPECT_FALSE(parsed("5) 1000", Way::complete()).valid);
}

TEST(LinParser, readsHiddenBytesAsZeroOnTheCompatibleWay) {
  const std::string line = "5) 1000 Sub 15 2 -- -- 00 EH CK/TO";
  EXPECT_EQ(parsed(line).data, (Bytes{0, 0}));
  EXPECT_EQ(parsed(line, Way::complete()).data, Bytes());
  EXPECT_EQ(parsed(line, Way::complete()).length, 2U);
  const std::string mixed = "5) 1000 Sub 15 2 01 -- 00 EH CK";
  EXPECT_EQ(parsed(mixed).data, (Bytes{1, 0}));
  EXPECT_FALSE(parsed(mixed, Way::complete()).valid) << "neither a zero that is not there nor the 01 lost";
}

}  // namespace
}  // namespace xlatr
