#include "formats/asc/asc_mapping.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace xlatr {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct Source {
  RealMilliseconds timeOffset{1.5};
  std::uint32_t bus = 3;
  MessageType type = MessageType::Rx;
  MessageKind kind = MessageKind::DT;
  MessageDirection direction = MessageDirection::Rx;
  std::uint32_t id = 0x123;
  bool extended = false;
  std::uint32_t length = 2;
  Bytes data = {0x0A, 0xB0};
  bool remote = false;
  bool valid = true;
};

BrixMessage brixMessage(const Source& source) {
  BrixMessage message;
  message.timeOffset = source.timeOffset;
  message.bus = source.bus;
  message.type = source.type;
  message.kind = source.kind;
  message.direction = source.direction;
  message.id = source.id;
  message.extended = source.extended;
  message.length = source.length;
  message.data = source.data;
  message.remote = source.remote;
  message.valid = source.valid;
  message.comment = "a comment";
  return message;
}

AscMessage mapped(const Source& source) {
  AscMessage message;
  message.errorCode = 5;  // of an earlier message
  message.symbolicId = true;
  mapToAsc(brixMessage(source), message);
  return message;
}

TEST(AscMapping, copiesWhatBothKnow) {
  const AscMessage message = mapped({.extended = true});
  EXPECT_EQ(message.time, RealSeconds(0.0015));
  EXPECT_EQ(message.bus, 3U);
  EXPECT_EQ(message.type, MessageType::Rx);
  EXPECT_EQ(message.direction, MessageDirection::Rx);
  EXPECT_EQ(message.id, 0x123U);
  EXPECT_TRUE(message.extended);
  EXPECT_TRUE(message.valid);
  EXPECT_EQ(message.length, 2U);
  EXPECT_EQ(message.data, (Bytes{0x0A, 0xB0}));
  EXPECT_EQ(message.commentText, "a comment");
  EXPECT_EQ(message.parsingText, "");
  EXPECT_EQ(message.errorCode, 0U);
  EXPECT_FALSE(message.symbolicId);
  EXPECT_FALSE(message.textVersion8);
  EXPECT_FALSE(mapped({.valid = false}).valid);
}

TEST(AscMapping, givesAMessageOnBus0Bus1) {
  EXPECT_EQ(mapped({.bus = 0}).bus, 1U);
  EXPECT_EQ(mapped({.bus = 255}).bus, 255U);
}

TEST(AscMapping, takesFlagsAndClassFromTheKind) {
  const struct {
    MessageKind kind;
    std::uint32_t flags;
    AscFrameClass frameClass;
  } cases[] = {
      {MessageKind::DT, 0x200000, AscFrameClass::Classic}, {MessageKind::FD, 0x1000, AscFrameClass::Fd},
      {MessageKind::FB, 0x3000, AscFrameClass::Fd},        {MessageKind::FE, 0x5000, AscFrameClass::Fd},
      {MessageKind::BI, 0x7000, AscFrameClass::Fd},        {MessageKind::RR, 0x10, AscFrameClass::Classic},
      {MessageKind::ST, 0, AscFrameClass::Classic},        {MessageKind::EC, 0, AscFrameClass::Classic},
      {MessageKind::ER, 0, AscFrameClass::Classic},        {MessageKind::EV, 0, AscFrameClass::Classic},
      {MessageKind::Unknown, 0, AscFrameClass::Classic},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(mapped({.kind = test.kind}).flags, test.flags) << messageKindToText(test.kind);
    EXPECT_EQ(mapped({.kind = test.kind}).frameClass, test.frameClass) << messageKindToText(test.kind);
  }
}

TEST(AscMapping, takesAMissingTypeFromTheDirection) {
  EXPECT_EQ(mapped({.type = MessageType::Unknown}).type, MessageType::Rx);
  EXPECT_EQ(mapped({.type = MessageType::Unknown, .direction = MessageDirection::Tx}).type, MessageType::Tx);
  EXPECT_EQ(mapped({.type = MessageType::Unknown, .direction = MessageDirection::None}).type, MessageType::Tx);
  EXPECT_EQ(mapped({.type = MessageType::Unknown, .valid = false}).type, MessageType::Unknown);
}

TEST(AscMapping, marksErrorCounters) {
  EXPECT_EQ(mapped({.type = MessageType::Error, .kind = MessageKind::EC}).lineKind, AscLineKind::Status);
  EXPECT_EQ(mapped({.type = MessageType::Error, .kind = MessageKind::ER}).lineKind, AscLineKind::Unclassified);
  EXPECT_EQ(mapped({.kind = MessageKind::EC}).lineKind, AscLineKind::Unclassified);
}

TEST(AscMapping, copiesNoDataOfARemoteFrame) {
  const AscMessage message = mapped({.kind = MessageKind::RR, .length = 8, .data = {1, 2}, .remote = true});
  EXPECT_TRUE(message.data.empty());
  EXPECT_EQ(message.length, 8U);
}

TEST(AscMapping, keepsTheLowByteOfALength) {
  EXPECT_EQ(mapped({.length = 0x1FF}).length, 0xFFU);
}

// A record of a binary trace, whose buses count from 0.
ZelkBinaryMessage zelkMessage(const Source& source, RecordType recordType = RecordType::CanRxMsg) {
  ZelkBinaryMessage message;
  message.recordType = recordType;
  message.timestamp = UnsignedMicroseconds(1500250);
  message.bus = source.bus;
  message.type = source.type;
  message.kind = source.kind;
  message.direction = source.direction;
  message.id = source.id;
  message.extended = source.extended;
  message.length = source.length;
  message.data = source.data;
  message.remote = source.remote;
  message.valid = source.valid;
  message.commentary = "a comment";
  return message;
}

AscMessage mappedFromBinary(const Source& source, RecordType recordType = RecordType::CanRxMsg) {
  AscMessage message;
  message.errorCode = 5;  // of an earlier message
  mapToAsc(zelkMessage(source, recordType), message);
  return message;
}

TEST(AscMapping, takesABinaryMessage) {
  const AscMessage message = mappedFromBinary({.extended = true});
  EXPECT_EQ(message.time, RealSeconds(1.50025));
  EXPECT_EQ(message.bus, 4U);
  EXPECT_EQ(message.type, MessageType::Rx);
  EXPECT_EQ(message.direction, MessageDirection::Rx);
  EXPECT_EQ(message.id, 0x123U);
  EXPECT_TRUE(message.extended);
  EXPECT_TRUE(message.valid);
  EXPECT_EQ(message.length, 2U);
  EXPECT_EQ(message.data, (Bytes{0x0A, 0xB0}));
  EXPECT_EQ(message.flags, 0x200000U);
  EXPECT_EQ(message.frameClass, AscFrameClass::Classic);
  EXPECT_EQ(message.commentText, "a comment");
  EXPECT_EQ(message.errorCode, 0U);
  EXPECT_EQ(mappedFromBinary({.bus = 0}).bus, 1U);
  EXPECT_FALSE(mappedFromBinary({}, RecordType::TextMsg).valid) << "a text is nothing to be written";
}

TEST(AscMapping, typeOfABinaryFdFrameIsItsDirection) {
  const AscMessage rx = mappedFromBinary({.type = MessageType::Unknown, .kind = MessageKind::FB});
  EXPECT_EQ(rx.type, MessageType::Rx);
  EXPECT_EQ(rx.flags, 0x3000U);
  EXPECT_EQ(rx.frameClass, AscFrameClass::Fd);
  EXPECT_EQ(
      mappedFromBinary({.type = MessageType::Unknown, .kind = MessageKind::FD, .direction = MessageDirection::Tx}).type,
      MessageType::Tx);
}

TEST(AscMapping, countersOfABinaryErrorFollowTwoZeros) {
  const AscMessage message = mappedFromBinary({.type = MessageType::Error, .kind = MessageKind::EC});
  EXPECT_EQ(message.lineKind, AscLineKind::Status);
  EXPECT_EQ(message.length, 2U);
  EXPECT_EQ(message.data, (Bytes{0, 0, 0x0A, 0xB0}));
  EXPECT_EQ(mappedFromBinary({.type = MessageType::Error, .kind = MessageKind::ER}).data, (Bytes{0x0A, 0xB0}));
}

TEST(AscMapping, binaryRemoteFrameHasNoData) {
  const AscMessage message = mappedFromBinary({.kind = MessageKind::RR, .remote = true});
  EXPECT_TRUE(message.isRemote());
  EXPECT_EQ(message.data, Bytes());
}

}  // namespace
}  // namespace xlatr
