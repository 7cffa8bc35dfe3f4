#include "formats/native/btrc_mapping.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "formats/trc/trc_mapping.hpp"
#include "support/btrc_image.hpp"

namespace xlatr {
namespace {

using namespace test::btrc;
using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(std::string_view text) {
  return {text.begin(), text.end()};
}

struct Source {
  MessageKind kind = MessageKind::DT;
  MessageDirection direction = MessageDirection::Rx;
  std::uint32_t id = 0x123;
  bool extended = false;
  std::uint32_t length = 2;
  Bytes data = {0x0A, 0xB0};
  bool valid = true;
  std::string comment = {};
};

BrixMessage brixMessage(const Source& source) {
  BrixMessage message;
  message.timeOffset = RealMilliseconds(2.5);
  message.bus = 3;
  message.type = MessageType::Rx;
  message.kind = source.kind;
  message.direction = source.direction;
  message.id = source.id;
  message.extended = source.extended;
  message.length = source.length;
  message.data = source.data;
  message.valid = source.valid;
  message.comment = source.comment;
  message.remote = source.kind == MessageKind::RR;
  return message;
}

ZelkBinaryMessage mapped(const BrixMessage& source) {
  ZelkBinaryMessage message;
  mapToBtrc(source, message);
  return message;
}

// The message, with its record.
ZelkBinaryMessage made(const Source& source) {
  return mapped(brixMessage(source));
}

std::string imageOf(const Source& source) {
  const ZelkBinaryMessage message = made(source);
  return {message.rawBytes.begin(), message.rawBytes.end()};
}

constexpr auto kTx = MessageDirection::Tx;
constexpr auto kNone = MessageDirection::None;

TEST(BtrcMapping, takesTheFieldsOfAMessage) {
  BrixMessage source = brixMessage({.extended = true, .comment = "a comment"});
  source.type = MessageType::Tx;
  const ZelkBinaryMessage message = mapped(source);
  EXPECT_TRUE(message.getValid());
  EXPECT_EQ(message.id, 0x123U);
  EXPECT_EQ(message.length, 2U);
  EXPECT_EQ(message.data, (Bytes{0x0A, 0xB0}));
  EXPECT_EQ(message.type, MessageType::Tx);
  EXPECT_EQ(message.direction, MessageDirection::Rx);
  EXPECT_TRUE(message.extended);
  EXPECT_EQ(message.kind, MessageKind::DT);
  EXPECT_EQ(message.bus, 2U) << "counted from 0";
  EXPECT_EQ(message.timestamp, UnsignedMicroseconds(2500U));
  EXPECT_EQ(message.commentary, "a comment");
  EXPECT_EQ(message.GetRecordType(), RecordType::CanRxMsg);
}

// A source without a bus, which has no form of its own in a record.
TEST(BtrcMapping, bus0IsTheLastOneThatARecordHolds) {
  BrixMessage source = brixMessage({});
  source.bus = 0;
  const ZelkBinaryMessage message = mapped(source);
  EXPECT_EQ(message.rawBytes, bytesOf(received(1, 2500, frameInfo(0xFF, 2, 0, 0x123), std::string("\x0A\xB0\0\0", 4))));
  BrixMessage back;
  ZelkBinaryMessage read;
  read.readRecord(RecordType::CanRxMsg, message.rawBytes, TimeScale());
  mapToTrc(read, back);
  EXPECT_EQ(back.bus, 256U);
}

TEST(BtrcMapping, makesDataFrames) {
  EXPECT_EQ(imageOf({}), received(1, 2500, frameInfo(2, 2, 0, 0x123), std::string("\x0A\xB0\0\0", 4)));
  EXPECT_EQ(imageOf({.direction = kTx, .extended = true}),
            sent(4, 2500, frameInfo(2, 2, 2, 0x123), std::string("\x0A\xB0\0\0", 4)));
  EXPECT_EQ(imageOf({.direction = kNone}), sent(4, 2500, frameInfo(2, 2, 0, 0x123), std::string("\x0A\xB0\0\0", 4)));
  EXPECT_EQ(imageOf({.length = 0, .data = {}}), received(1, 2500, frameInfo(2, 0, 0, 0x123), ""));
}

TEST(BtrcMapping, dlcOfADataFrameIsTheLowByteOfItsLength) {
  EXPECT_EQ(imageOf({.length = 0x20C}),
            received(1, 2500, frameInfo(2, 12, 0, 0x123), std::string("\x0A\xB0", 2) + std::string(22, '\0')));
  EXPECT_EQ(imageOf({.length = 0x14}), received(1, 2500, frameInfo(2, 4, 0, 0x123), std::string("\x0A\xB0\0\0", 4)))
      << "of which a record has four bits";
}

TEST(BtrcMapping, makesFdFrames) {
  const struct {
    MessageKind kind;
    unsigned flags;
  } cases[] = {{MessageKind::FD, 0x10}, {MessageKind::FB, 0x30}, {MessageKind::FE, 0x50}, {MessageKind::BI, 0x70}};
  const std::string padded("\x0A\xB0\0\0", 4);
  for (const auto& test : cases) {
    EXPECT_EQ(imageOf({.kind = test.kind}), received(3, 2500, frameInfo(2, 2, test.flags, 0x123), padded));
    EXPECT_EQ(imageOf({.kind = test.kind, .direction = kTx, .extended = true}),
              sent(6, 2500, frameInfo(2, 2, test.flags | 2, 0x123), padded));
  }
  EXPECT_EQ(made({.kind = MessageKind::FE, .direction = kTx}).GetRecordType(), RecordType::CanTxFdMsg);
}

TEST(BtrcMapping, lengthsOfFdFramesBecomeTheCodeThatHoldsThem) {
  const struct {
    std::uint32_t length;
    unsigned dlc;
  } cases[] = {{0, 0},   {8, 8},   {9, 9},   {12, 9},  {13, 10}, {16, 10}, {17, 11}, {20, 11},  {21, 12},
               {24, 12}, {25, 13}, {32, 13}, {33, 14}, {48, 14}, {49, 15}, {64, 15}, {1000, 15}};
  for (const auto& test : cases) {
    const ZelkBinaryMessage message = made({.kind = MessageKind::FD, .length = test.length, .data = Bytes(64, 7)});
    EXPECT_EQ(message.rawBytes[13], test.dlc) << test.length;
  }
}

TEST(BtrcMapping, sentFdFrameOf64BytesKeeps16) {
  const Bytes data(64, 0x55);
  EXPECT_EQ(imageOf({.kind = MessageKind::FD, .direction = kTx, .length = 64, .data = data}),
            sent(6, 2500, frameInfo(2, 15, 0x10, 0x123), std::string(16, 0x55)));
}

TEST(BtrcMapping, makesRemoteFramesWithoutData) {
  const std::string rx = number(24, 2) + number(2, 2) + number(2500, 8) + frameInfo(2, 2, 3, 0x123);
  EXPECT_EQ(imageOf({.kind = MessageKind::RR, .extended = true}), rx) << "declares 24 bytes and has 20";
  const std::string longRx = number(32, 2) + number(2, 2) + number(2500, 8) + frameInfo(2, 9, 1, 0x123);
  EXPECT_EQ(imageOf({.kind = MessageKind::RR, .length = 12}), longRx) << "declares 32 bytes and has 20";
  EXPECT_EQ(imageOf({.kind = MessageKind::RR, .direction = kTx}), sent(5, 2500, frameInfo(2, 2, 1, 0x123), ""));
}

TEST(BtrcMapping, makesStatusRecordsFromTheirBytes) {
  const struct {
    Bytes data;
    unsigned flags;
  } cases[] = {{{0, 4, 0, 0}, 0x20},
               {{0, 0, 0, 0x10}, 0x80},
               {{0, 0, 0, 0x08}, 0x40},
               {{0, 4, 0, 0x18}, 0xE0},
               {{0, 4, 0, 0x18, 9}, 0xE0},
               {{0, 0x18}, 0xC0},
               {{0, 4, 0x18}, 0},
               {{0x18}, 0},
               {{}, 0},
               {{0xFF, 0xFB, 0xFF, 0xE7}, 0}};
  for (const auto& test : cases) {
    EXPECT_EQ(imageOf({.kind = MessageKind::ST, .data = test.data}),
              record(8, number(2500, 8) + number(2, 1) + number(test.flags, 1) + number(0, 2)));
  }
}

std::string errorImage(unsigned flags, unsigned position, unsigned rx, unsigned tx) {
  return record(7, number(2500, 8) + number(2, 1) + number(flags, 1) + number(position, 1) + number(tx, 1) +
                       number(rx, 1) + number(0, 3));
}

TEST(BtrcMapping, makesErrorCounters) {
  EXPECT_EQ(imageOf({.kind = MessageKind::EC, .data = {7, 96}}), errorImage(0xC0, 0, 7, 96));
  EXPECT_EQ(imageOf({.kind = MessageKind::EC, .direction = kTx, .data = {7, 96, 3}}), errorImage(0x40, 0, 7, 96));
  EXPECT_EQ(imageOf({.kind = MessageKind::EC, .data = {7}}), errorImage(0xC0, 0, 0, 0));
}

TEST(BtrcMapping, makesErrorFrames) {
  const struct {
    std::uint32_t type;
    unsigned flags;
  } cases[] = {{1, 0x00}, {2, 0x10}, {4, 0x20}, {8, 0x30}, {0, 0x30}, {3, 0x30}};
  for (const auto& test : cases) {
    EXPECT_EQ(imageOf({.kind = MessageKind::ER, .id = test.type, .data = {0, 11, 7, 96}}),
              errorImage(test.flags, 11, 7, 96));
    const Bytes withType = {static_cast<std::uint8_t>(test.type), 2, 11, 7, 96};
    EXPECT_EQ(imageOf({.kind = MessageKind::ER, .id = 1, .data = withType}), errorImage(test.flags | 0x80, 11, 7, 96));
  }
  EXPECT_EQ(imageOf({.kind = MessageKind::ER, .id = 1, .data = {1, 11, 7}}), errorImage(0x30, 0, 0, 0));
}

TEST(BtrcMapping, makesATextOfAnEvent) {
  const ZelkBinaryMessage message = made({.kind = MessageKind::EV, .comment = "start"});
  EXPECT_EQ(message.GetRecordType(), RecordType::TextMsg);
  EXPECT_TRUE(message.valid);
  EXPECT_EQ(imageOf({.kind = MessageKind::EV, .comment = "start"}), record(0x8002, "TODO 'Event Framer (EV)': start "));
}

TEST(BtrcMapping, makesATextOfAnythingElse) {
  EXPECT_EQ(imageOf({.kind = MessageKind::XL, .comment = "abc"}), record(0x8002, "Unknown record ': abc   "));
  EXPECT_FALSE(made({.kind = MessageKind::XL}).valid);
  EXPECT_EQ(made({.kind = MessageKind::XL}).GetRecordType(), RecordType::TextMsg);
}

TEST(BtrcMapping, makesATextOfTheCommentOfWhatIsNotValidOrOfNoKind) {
  EXPECT_EQ(imageOf({.kind = MessageKind::Unknown, .comment = "hello"}), record(0x8002, "hello   "));
  EXPECT_EQ(imageOf({.valid = false, .comment = "word"}), record(0x8002, "word"));
  EXPECT_EQ(imageOf({.valid = false}), record(0x8002, ""));
  EXPECT_EQ(made({.valid = false}).GetRecordType(), RecordType::Invalid);
  EXPECT_FALSE(made({.valid = false}).valid);
}

TEST(BtrcMapping, adjustsTheTimesOfItsRecord) {
  ZelkBinaryMessage rx = made({});
  rx.AdjustTimestamp(UnsignedMicroseconds(1000000));
  EXPECT_EQ(std::string(rx.rawBytes.begin(), rx.rawBytes.end()),
            received(1, 1002500, frameInfo(2, 2, 0, 0x123), std::string("\x0A\xB0\0\0", 4)));
  EXPECT_EQ(rx.timestamp, UnsignedMicroseconds(2500U)) << "its own time stays";
  ZelkBinaryMessage tx = made({.kind = MessageKind::RR, .direction = kTx});
  tx.AdjustTimestamp(UnsignedMicroseconds(1000000));
  EXPECT_EQ(std::string(tx.rawBytes.begin(), tx.rawBytes.end()), sent(5, 1002500, frameInfo(2, 2, 1, 0x123), ""));
  ZelkBinaryMessage text = made({.valid = false, .comment = "word"});
  text.AdjustTimestamp(UnsignedMicroseconds(1000000));
  EXPECT_EQ(text.rawBytes, bytesOf(record(0x8002, "word")));
}

TEST(BtrcMapping, isUsedAgainWithoutTraces) {
  ZelkBinaryMessage message = made({.kind = MessageKind::RR, .extended = true, .comment = "a comment"});
  const Bytes bytes = bytesOf(record(0x8002, "text"));
  message.readRecord(RecordType::TextMsg, bytes, TimeScale());
  EXPECT_EQ(message.id, 0xFFFFFFFF);
  EXPECT_EQ(message.length, 0U);
  EXPECT_EQ(message.data, Bytes());
  EXPECT_EQ(message.bus, 1U);
  EXPECT_EQ(message.type, MessageType::Unknown);
  EXPECT_EQ(message.direction, MessageDirection::None);
  EXPECT_FALSE(message.extended);
  EXPECT_FALSE(message.remote);
  EXPECT_EQ(message.timestamp, UnsignedMicroseconds(0U));
  EXPECT_EQ(message.kind, MessageKind::Unknown);
  EXPECT_EQ(message.commentary, "text");
  EXPECT_EQ(message.rawBytes, bytes);
}

}  // namespace
}  // namespace xlatr
