#include "formats/trc/trc_mapping.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "platform/thread.hpp"
#include "util/failures.hpp"

namespace xlatr {
namespace {

using Bytes = std::vector<std::uint8_t>;

BrixMessage mapped(std::string_view line, double version = 7.0) {
  AscMessage source;
  source.parseLine(line, version);
  EXPECT_TRUE(source.valid) << line;
  BrixMessage message;
  message.comment = "of an earlier message";
  message.reserved = 5;
  mapToTrc(source, message);
  return message;
}

TEST(TrcMapping, copiesWhatBothKnow) {
  const BrixMessage message = mapped("1.5 3 123x Tx d 2 0A B0");
  EXPECT_EQ(message.timeOffset, RealMilliseconds(1500.0));
  EXPECT_EQ(message.bus, 3U);
  EXPECT_EQ(message.type, MessageType::Tx);
  EXPECT_EQ(message.kind, MessageKind::DT);
  EXPECT_EQ(message.direction, MessageDirection::Tx);
  EXPECT_EQ(message.id, 0x123U);
  EXPECT_TRUE(message.extended);
  EXPECT_EQ(message.length, 2U);
  EXPECT_EQ(message.data, (Bytes{0x0A, 0xB0}));
  EXPECT_EQ(message.comment, "");
  EXPECT_EQ(message.parsingText, "");
  EXPECT_EQ(message.reserved, -1);
  EXPECT_TRUE(message.columnBased);
  EXPECT_TRUE(message.valid);
  EXPECT_FALSE(message.remote);
}

TEST(TrcMapping, takesTheKindFromTheFlags) {
  const struct {
    const char* flags;
    MessageKind kind;
  } cases[] = {{"0", MessageKind::DT},    {"200000", MessageKind::DT}, {"2000", MessageKind::DT},
               {"1000", MessageKind::FD}, {"3000", MessageKind::FB},   {"5000", MessageKind::FE},
               {"7000", MessageKind::BI}, {"10", MessageKind::RR},     {"7010", MessageKind::RR}};
  for (const auto& test : cases) {
    const BrixMessage message =
        mapped("1.5 CANFD 3 Rx 123 0 0 2 2 0A B0 0 0 " + std::string(test.flags) + " 0 0 0 0 0", 8.1);
    EXPECT_EQ(message.kind, test.kind) << test.flags;
    EXPECT_EQ(message.remote, test.kind == MessageKind::RR) << test.flags;
    EXPECT_EQ(message.data.size(), test.kind == MessageKind::RR ? 0U : 2U) << test.flags;
    EXPECT_EQ(message.length, 2U) << test.flags;
  }
}

TEST(TrcMapping, makesErrorCountersOfTwoBytes) {
  const BrixMessage message = mapped("0.5 CAN 1 Status:error counter change (Zelkworks) - TxErr: 3 RxErr: 260");
  EXPECT_EQ(message.kind, MessageKind::EC);
  EXPECT_EQ(message.type, MessageType::Error);
  EXPECT_EQ(message.direction, MessageDirection::Rx);
  EXPECT_EQ(message.length, 2U);
  EXPECT_EQ(message.data, (Bytes{4, 3}));
  EXPECT_EQ(message.id, 0xFFFFFFFFU);
}

TEST(TrcMapping, takesErrorsApart) {
  const struct {
    const char* bits;
    std::uint32_t id;
    Bytes data;
  } cases[] = {
      {"00000000", 1, {0, 0, 0, 0}},  {"00100110", 1, {1, 6, 0, 0}},  {"01000110", 2, {0, 6, 0, 0}},
      {"10111111", 4, {1, 31, 0, 0}}, {"11011111", 8, {0, 31, 0, 0}}, {"111011111", 8, {0, 31, 0, 0}},
  };
  for (const auto& test : cases) {
    const BrixMessage message = mapped("0.5 1 ErrorFrame ECC: " + std::string(test.bits));
    EXPECT_EQ(message.kind, MessageKind::ER) << test.bits;
    EXPECT_EQ(message.type, MessageType::Error) << test.bits;
    EXPECT_EQ(message.id, test.id) << test.bits;
    EXPECT_EQ(message.length, 4U) << test.bits;
    EXPECT_EQ(message.data, test.data) << test.bits;
  }
}

TEST(TrcMapping, keepsTheBitsOfAStatus) {
  const std::string before = lastErrorText(platform::currentThreadId());
  const struct {
    const char* text;
    Bytes data;
  } cases[] = {{"BusOff (Zelkworks)", {0, 0, 0, 16}},
               {"BusHeavy, BusPassive (Zelkworks)", {0, 4, 0, 8}},
               {"(Zelkworks)", {0, 0, 0, 0}},
               {"BusOff and an unknown word (Zelkworks)", {0, 0, 0, 0}}};
  for (const auto& test : cases) {
    const BrixMessage message = mapped("0.5 CAN 1 Status:" + std::string(test.text));
    EXPECT_EQ(message.kind, MessageKind::ST) << test.text;
    EXPECT_EQ(message.type, MessageType::Warng) << test.text;
    EXPECT_EQ(message.direction, MessageDirection::Rx) << test.text;
    EXPECT_EQ(message.length, 4U) << test.text;
    EXPECT_EQ(message.data, test.data) << test.text;
    EXPECT_EQ(message.comment, "") << test.text;
  }
  EXPECT_EQ(lastErrorText(platform::currentThreadId()), before);
}

TEST(TrcMapping, knowsNoKindOfAnUnknownType) {
  EXPECT_EQ(mapped("1.5 3 123 Unknown d 2 0A B0").kind, MessageKind::Unknown);
}

TEST(TrcMapping, copiesWhatAnMdfMessageKnows) {
  MdfCanMessage source;
  source.time = RealMicroseconds(1234567.5);
  source.bus = 3;
  source.id = 0x1ABCDEF0;
  source.extended = true;
  source.valid = true;
  source.type = MessageType::Tx;
  source.direction = MessageDirection::Tx;
  source.kind = MessageKind::BI;
  source.length = 3;
  source.data = {1, 2, 3, 0, 0, 0, 0, 0};
  BrixMessage message;
  message.comment = "of an earlier message";
  message.reserved = 5;
  mapToTrc(source, message);
  EXPECT_EQ(message.timeOffset, RealMilliseconds(1234.5675));
  EXPECT_EQ(message.bus, 3U);
  EXPECT_EQ(message.id, 0x1ABCDEF0U);
  EXPECT_TRUE(message.extended);
  EXPECT_TRUE(message.valid);
  EXPECT_EQ(message.type, MessageType::Tx);
  EXPECT_EQ(message.direction, MessageDirection::Tx);
  EXPECT_EQ(message.kind, MessageKind::BI);
  EXPECT_EQ(message.length, 3U);
  EXPECT_EQ(message.data, source.data);
  EXPECT_EQ(message.comment, "");
  EXPECT_EQ(message.reserved, -1);
  EXPECT_TRUE(message.columnBased);
  EXPECT_FALSE(message.remote);
  source.valid = false;
  mapToTrc(source, message);
  EXPECT_FALSE(message.valid);
}

TEST(TrcMapping, leavesOutTheDataOfARemoteMdfFrame) {
  MdfCanMessage source;
  source.kind = MessageKind::RR;
  source.isRemote = true;
  source.length = 8;
  source.data = {1, 2};
  BrixMessage message;
  mapToTrc(source, message);
  EXPECT_TRUE(message.remote);
  EXPECT_EQ(message.kind, MessageKind::RR);
  EXPECT_EQ(message.length, 8U);
  EXPECT_TRUE(message.data.empty());
}

TEST(TrcMapping, makesIdentifierAndDataOfAnMdfError) {
  const struct {
    std::uint8_t errorType;
    std::uint32_t id;
  } cases[] = {{0, 8}, {1, 1}, {2, 2}, {3, 4}, {4, 8}, {255, 8}};
  for (const auto& test : cases) {
    MdfCanMessage source;
    source.type = MessageType::Error;
    source.kind = MessageKind::ER;
    source.errorType = test.errorType;
    source.bitPosition = 29;
    source.data = {9, 9, 9, 9, 9, 9};
    source.length = 6;
    BrixMessage message;
    mapToTrc(source, message);
    EXPECT_EQ(message.id, test.id);
    EXPECT_EQ(message.kind, MessageKind::ER);
    EXPECT_EQ(message.length, 4U);
    EXPECT_EQ(message.data, (Bytes{0, 32, 0, 0}));
    source.bitPosition = 254;
    mapToTrc(source, message);
    EXPECT_EQ(message.data, (Bytes{0, 1, 0, 0}));
  }
}

// A record of a binary trace, whose buses count from 0.
ZelkBinaryMessage zelkMessage() {
  ZelkBinaryMessage source;
  source.recordType = RecordType::CanRxMsg;
  source.valid = true;
  source.timestamp = UnsignedMicroseconds(1500250);
  source.bus = 2;
  source.id = 0x123;
  source.extended = true;
  source.length = 2;
  source.data = {0x0A, 0xB0};
  source.type = MessageType::Rx;
  source.direction = MessageDirection::Rx;
  source.kind = MessageKind::DT;
  source.commentary = "a text";
  return source;
}

BrixMessage mapped(const ZelkBinaryMessage& source) {
  BrixMessage message;
  message.comment = "of an earlier message";
  message.reserved = 5;
  mapToTrc(source, message);
  return message;
}

TEST(TrcMapping, takesABinaryMessage) {
  const BrixMessage message = mapped(zelkMessage());
  EXPECT_EQ(message.timeOffset, RealMilliseconds(1500.25));
  EXPECT_EQ(message.bus, 3U);
  EXPECT_EQ(message.type, MessageType::Rx);
  EXPECT_EQ(message.kind, MessageKind::DT);
  EXPECT_EQ(message.direction, MessageDirection::Rx);
  EXPECT_EQ(message.id, 0x123U);
  EXPECT_TRUE(message.extended);
  EXPECT_EQ(message.length, 2U);
  EXPECT_EQ(message.data, (Bytes{0x0A, 0xB0}));
  EXPECT_EQ(message.comment, "");
  EXPECT_EQ(message.parsingText, "a text");
  EXPECT_EQ(message.reserved, -1);
  EXPECT_TRUE(message.columnBased);
  EXPECT_TRUE(message.valid);
  EXPECT_FALSE(message.remote);
}

TEST(TrcMapping, binaryMessageOnBus0GetsBus1) {
  ZelkBinaryMessage source = zelkMessage();
  source.bus = 0;
  EXPECT_EQ(mapped(source).bus, 1U);
}

TEST(TrcMapping, remoteFrameOfABinaryTraceHasNoData) {
  ZelkBinaryMessage source = zelkMessage();
  source.recordType = RecordType::CanRxRtrMsg;
  source.kind = MessageKind::RR;
  source.remote = true;
  const BrixMessage message = mapped(source);
  EXPECT_TRUE(message.remote);
  EXPECT_EQ(message.length, 2U);
  EXPECT_EQ(message.data, Bytes());
}

TEST(TrcMapping, errorBytesOfABinaryTraceAreKept) {
  ZelkBinaryMessage source = zelkMessage();
  source.recordType = RecordType::CanError;
  source.type = MessageType::Error;
  source.kind = MessageKind::ER;
  EXPECT_EQ(mapped(source).data, (Bytes{0x0A, 0xB0}));
}

TEST(TrcMapping, textOfABinaryTraceIsNotValid) {
  ZelkBinaryMessage source = zelkMessage();
  source.recordType = RecordType::TextMsg;
  EXPECT_FALSE(mapped(source).valid);
}

}  // namespace
}  // namespace xlatr
