#include "formats/blf/blf_message.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "support/blf_rows.hpp"

namespace xlatr {
namespace {

using test::blfRow;
using test::Bytes;

BlfCanMessage can(CsvMessage source) {
  return BlfCanMessage(source);
}

BlfLinMessage lin(CsvMessage source) {
  return BlfLinMessage(source);
}

TEST(BlfMessage, takesTheNumbersOfARow) {
  CsvMessage source = blfRow(4);
  source.flags = 1;
  source.flagsExt = 2;
  source.canFdFlags = 3;
  source.dir = 4;
  source.objectVersion = 5;
  source.checksumModel = 6;
  const BlfCanMessage message = can(source);
  EXPECT_TRUE(message.valid);
  EXPECT_EQ(message.objectType, 4U);
  EXPECT_EQ(message.objectTicks, 1234567U);
  EXPECT_EQ(message.objectFlags, 2U);
  EXPECT_EQ(message.comment, "why");
  EXPECT_EQ(message.blfId, 0x123U);
  EXPECT_EQ(message.channel, 7U);
  EXPECT_EQ(message.bus, 7U);
  EXPECT_EQ(message.flags, 1U);
  EXPECT_EQ(message.flagsExt, 2U);
  EXPECT_EQ(message.ecc, 0x59U);
  EXPECT_EQ(message.canFdFlags, 3U);
  EXPECT_EQ(message.dir, 4U);
  EXPECT_EQ(message.crc, 0x7CU);
  EXPECT_EQ(message.objectVersion, 5U);
  EXPECT_EQ(message.checksumModel, 6U);
}

TEST(BlfMessage, countsThirteenTypesAsCan) {
  const std::vector<std::uint32_t> canTypes = {1, 2, 3, 4, 31, 44, 73, 74, 86, 100, 101, 104, 129};
  for (std::uint32_t type = 0; type < 200; ++type) {
    const bool expected = std::find(canTypes.begin(), canTypes.end(), type) != canTypes.end();
    EXPECT_EQ(BlfMessage::isCanType(type), expected) << type;
    CsvMessage source = blfRow(type);
    const auto message = makeBlfMessage(source);
    EXPECT_EQ(dynamic_cast<const BlfCanMessage*>(message.get()) != nullptr, expected) << type;
    EXPECT_EQ(dynamic_cast<const BlfLinMessage*>(message.get()) != nullptr, !expected) << type;
    EXPECT_EQ(message->isBlfCANType(), expected) << type;
  }
}

TEST(BlfMessage, tellsItsTypeAndWhyItIsNotValid) {
  BlfCanMessage message = can(blfRow(86));
  EXPECT_EQ(message.getAsCommentary(), "BLF Object Type 86");
  message.valid = false;
  EXPECT_EQ(message.getAsCommentary(), "BLF Object Type 86 why");
}

TEST(BlfMessage, countsTimeInTwoUnits) {
  BlfCanMessage message = can(blfRow(1));
  EXPECT_EQ(message.microseconds(), RealMicroseconds(1234.567));
  EXPECT_EQ(message.milliseconds(), RealMilliseconds(1.234567));
  message.objectFlags = 1;
  EXPECT_EQ(message.microseconds(), RealMicroseconds(12345670.0));
  EXPECT_EQ(message.milliseconds(), RealMilliseconds(12345.67));
  message.objectFlags = 3;
  EXPECT_EQ(message.milliseconds(), RealMilliseconds(1.234567));
}

TEST(BlfCanMessage, isExtendedByTheWidthOfItsIdentifier) {
  const struct {
    std::uint32_t blfId;
    std::uint32_t id;
    bool extended;
  } cases[] = {{0x7FF, 0x7FF, false},
               {0x800, 0x800, true},
               {0x80000123, 0x123, false},
               {0x9FFFFFFF, 0x1FFFFFFF, true},
               {0xE0000000, 0, false}};
  for (const auto& [blfId, id, extended] : cases) {
    CsvMessage source = blfRow(1);
    source.blfId = blfId;
    const BlfCanMessage message = can(source);
    EXPECT_EQ(message.id, id) << blfId;
    EXPECT_EQ(message.extended, extended) << blfId;
  }
}

TEST(BlfCanMessage, hasSideAndRemoteOfAClassicFrame) {
  for (const std::uint32_t type : {1U, 86U}) {
    CsvMessage source = blfRow(type);
    const BlfCanMessage received = can(source);
    EXPECT_EQ(received.type, MessageType::Rx);
    EXPECT_EQ(received.direction, MessageDirection::Rx);
    EXPECT_FALSE(received.remote);
    EXPECT_FALSE(received.isFd);
    EXPECT_EQ(received.kind(), MessageKind::DT);
    EXPECT_EQ(received.length, 2U);
    EXPECT_EQ(received.data, (Bytes{0xAA, 0xBB}));
    source = blfRow(type);
    source.flags = 0x81;
    const BlfCanMessage sent = can(source);
    EXPECT_EQ(sent.type, MessageType::Tx);
    EXPECT_EQ(sent.direction, MessageDirection::Tx);
    EXPECT_TRUE(sent.remote);
    EXPECT_EQ(sent.kind(), MessageKind::RR);
  }
}

TEST(BlfCanMessage, anErrorFrameHasDataAndIsSentUnlessABitSaysOtherwise) {
  CsvMessage source = blfRow(73);
  const BlfCanMessage sent = can(source);
  EXPECT_EQ(sent.type, MessageType::Error);
  EXPECT_EQ(sent.direction, MessageDirection::Tx);
  EXPECT_EQ(sent.errorByte, 0x59);
  EXPECT_EQ(sent.length, 2U);
  EXPECT_EQ(sent.data, (Bytes{0xAA, 0xBB}));
  EXPECT_EQ(sent.kind(), MessageKind::ER);
  source = blfRow(73);
  source.flagsExt = 0x20;
  EXPECT_EQ(can(source).direction, MessageDirection::Rx);
  source.flagsExt = 0xFFDF;
  EXPECT_EQ(can(source).direction, MessageDirection::Tx);
}

TEST(BlfCanMessage, hasTheFlagsOfAnFdFrame) {
  const struct {
    std::uint32_t flags;
    std::uint8_t canFdFlags;
    MessageKind kind;
  } cases[] = {{0, 0, MessageKind::DT}, {0, 6, MessageKind::DT}, {0, 1, MessageKind::FD},   {0, 3, MessageKind::FB},
               {0, 5, MessageKind::FE}, {0, 7, MessageKind::BI}, {0x80, 7, MessageKind::RR}};
  for (const auto& [flags, canFdFlags, kind] : cases) {
    CsvMessage source = blfRow(100);
    source.flags = flags | 1U;
    source.canFdFlags = canFdFlags;
    const BlfCanMessage message = can(source);
    EXPECT_TRUE(message.isFd);
    EXPECT_EQ(message.type, MessageType::Tx);
    EXPECT_EQ(message.direction, MessageDirection::Tx);
    EXPECT_EQ(message.kind(), kind) << int{canFdFlags};
  }
}

TEST(BlfCanMessage, hasTheFlagsOfALongFdFrame) {
  const struct {
    std::uint32_t flags;
    MessageKind kind;
  } cases[] = {{0, MessageKind::DT},      {0x6000, MessageKind::DT}, {0x1000, MessageKind::FD},
               {0x3000, MessageKind::FB}, {0x5000, MessageKind::FE}, {0x7000, MessageKind::BI},
               {0x7010, MessageKind::RR}, {0x81, MessageKind::DT}};
  for (const auto& [flags, kind] : cases) {
    CsvMessage source = blfRow(101);
    source.flags = flags;
    const BlfCanMessage received = can(source);
    EXPECT_TRUE(received.isFd);
    EXPECT_EQ(received.type, MessageType::Rx);
    EXPECT_EQ(received.direction, MessageDirection::Rx);
    EXPECT_EQ(received.kind(), kind) << flags;
    source.dir = 2;
    const BlfCanMessage sent = can(source);
    EXPECT_EQ(sent.type, MessageType::Tx);
    EXPECT_EQ(sent.direction, MessageDirection::Tx);
  }
}

TEST(BlfCanMessage, anFdErrorFrameHasNoDirection) {
  const BlfCanMessage message = can(blfRow(104));
  EXPECT_EQ(message.type, MessageType::Error);
  EXPECT_EQ(message.direction, MessageDirection::None);
  EXPECT_EQ(message.errorByte, 0x59);
  EXPECT_TRUE(message.isFd);
  EXPECT_EQ(message.kind(), MessageKind::ER);
}

TEST(BlfCanMessage, otherTypesStayUnknown) {
  for (const std::uint32_t type : {2U, 3U, 4U, 31U, 44U, 74U, 129U}) {
    CsvMessage source = blfRow(type);
    source.flags = 0xFFFFFFFF;
    const BlfCanMessage message = can(source);
    EXPECT_EQ(message.type, MessageType::Unknown) << type;
    EXPECT_EQ(message.direction, MessageDirection::None) << type;
    EXPECT_EQ(message.kind(), MessageKind::Unknown) << type;
  }
}

TEST(BlfCanMessage, aMessageThatIsNotValidHasNoKind) {
  CsvMessage source = blfRow(1);
  source.valid = false;
  EXPECT_EQ(can(source).kind(), MessageKind::Unknown);
  source.objectType = 73;
  EXPECT_EQ(can(source).kind(), MessageKind::Unknown);
}

TEST(BlfCanMessage, isNothingOfTheRowBefore) {
  BlfCanMessage message;
  CsvMessage source = blfRow(100);
  source.flags = 0x81;
  source.canFdFlags = 7;
  message.assign(source);
  source = blfRow(2);
  source.data.clear();
  message.assign(source);
  EXPECT_FALSE(message.remote);
  EXPECT_FALSE(message.isFd);
  EXPECT_FALSE(message.fdFormat);
  EXPECT_FALSE(message.bitRateSwitch);
  EXPECT_FALSE(message.errorStateIndicator);
  EXPECT_EQ(message.type, MessageType::Unknown);
  EXPECT_EQ(message.direction, MessageDirection::None);
  EXPECT_TRUE(message.data.empty());
}

struct LinCase {
  std::uint32_t objectType;
  MessageKind kind;
  std::uint32_t errorFlags;
  bool hasIdentifier;
  bool hasData;
  ChecksumType checksumType;
  const char* eventText;
};

TEST(BlfLinMessage, isWhatItsTypeSays) {
  const LinCase cases[] = {
      {11, MessageKind::DT, 0, true, true, ChecksumType::Unknown, ""},
      {12, MessageKind::ER, 1, true, true, ChecksumType::Unknown, ""},
      {15, MessageKind::ER, 32, true, false, ChecksumType::Unknown, ""},
      {20, MessageKind::EV, 0, false, false, ChecksumType::Unknown, "Bus Sleep"},
      {21, MessageKind::EV, 0, false, false, ChecksumType::Unknown, "Bus Wake Up"},
      {57, MessageKind::DT, 0, true, true, ChecksumType::Enhanced, ""},
      {58, MessageKind::ER, 32, true, false, ChecksumType::Enhanced, ""},
      {60, MessageKind::ER, 1, true, true, ChecksumType::Enhanced, ""},
      {62, MessageKind::EV, 0, false, false, ChecksumType::Unknown, "Bus Wake Up"},
      {0, MessageKind::Unknown, 0, false, false, ChecksumType::Unknown, ""},
      {65, MessageKind::Unknown, 0, false, false, ChecksumType::Unknown, ""},
  };
  for (const LinCase& test : cases) {
    CsvMessage source = blfRow(test.objectType);
    source.dir = 1;
    source.objectVersion = 1;
    source.checksumModel = 1;
    const BlfLinMessage message = lin(source);
    EXPECT_TRUE(message.valid) << test.objectType;
    EXPECT_EQ(message.kind, test.kind) << test.objectType;
    EXPECT_EQ(message.errorFlags, test.errorFlags) << test.objectType;
    EXPECT_EQ(message.eventText, test.eventText) << test.objectType;
    EXPECT_EQ(message.id, test.hasIdentifier ? 0x123 : kNoIdentifier) << test.objectType;
    EXPECT_EQ(message.checksumType, test.checksumType) << test.objectType;
    EXPECT_EQ(message.linDirection, test.hasData ? DirectionType::Publisher : DirectionType::Unknown)
        << test.objectType;
    EXPECT_EQ(message.checksum, test.hasData ? 0x7CU : 0U) << test.objectType;
    EXPECT_EQ(message.length, test.hasData ? 2U : 0U) << test.objectType;
    EXPECT_EQ(message.data, test.hasData ? (Bytes{0xAA, 0xBB}) : Bytes()) << test.objectType;
  }
}

TEST(BlfLinMessage, isOfTheBusOfItsChannel) {
  EXPECT_EQ(lin(blfRow(57)).bus, 7U);
}

TEST(BlfLinMessage, mapsItsDirection) {
  const DirectionType expected[] = {DirectionType::Subscriber, DirectionType::Publisher, DirectionType::Publisher,
                                    DirectionType::Unknown};
  for (std::uint8_t dir = 0; dir < 4; ++dir) {
    CsvMessage source = blfRow(11);
    source.dir = dir;
    EXPECT_EQ(lin(source).linDirection, expected[dir]) << int{dir};
  }
}

TEST(BlfLinMessage, hasAChecksumModelFromVersion1OfItsObject) {
  const struct {
    std::uint16_t version;
    std::uint8_t model;
    ChecksumType expected;
  } cases[] = {{0, 0, ChecksumType::Unknown},
               {0, 1, ChecksumType::Unknown},
               {1, 0, ChecksumType::Classic},
               {2, 1, ChecksumType::Enhanced},
               {1, 2, ChecksumType::Unknown}};
  for (const auto& [version, model, expected] : cases) {
    CsvMessage source = blfRow(57);
    source.objectVersion = version;
    source.checksumModel = model;
    EXPECT_EQ(lin(source).checksumType, expected) << version << " " << int{model};
  }
}

TEST(BlfLinMessage, isNothingOfTheRowBefore) {
  BlfLinMessage message;
  CsvMessage source = blfRow(60);
  message.assign(source);
  source = blfRow(99);
  message.assign(source);
  EXPECT_EQ(message.kind, MessageKind::Unknown);
  EXPECT_EQ(message.id, kNoIdentifier);
  EXPECT_EQ(message.errorFlags, 0U);
  EXPECT_EQ(message.checksum, 0U);
  EXPECT_EQ(message.length, 0U);
  EXPECT_TRUE(message.data.empty());
}

}  // namespace
}  // namespace xlatr
