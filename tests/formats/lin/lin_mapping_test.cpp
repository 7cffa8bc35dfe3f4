#include "formats/lin/lin_mapping.hpp"

#include <gtest/gtest.h>

#include <string>

#include "formats/asc/asc_mapping.hpp"
#include "formats/csv/csv_mapping.hpp"
#include "support/blf_rows.hpp"

namespace xlatr {
namespace {

using test::blfRow;
using test::Bytes;

// A frame of a publisher, with an enhanced checksum.
CsvMessage linRow(std::uint32_t objectType) {
  CsvMessage row = blfRow(objectType);
  row.dir = 1;
  row.objectVersion = 1;
  row.checksumModel = 1;
  return row;
}

KorlMessage mapped(CsvMessage source) {
  const BlfLinMessage message(source);
  KorlMessage target;
  target.errorFlags = 0xFF;
  target.busEvent = true;
  mapToLin(message, target);
  return target;
}

TEST(LinMapping, takesOverAFrame) {
  const KorlMessage message = mapped(linRow(57));
  EXPECT_TRUE(message.valid);
  EXPECT_EQ(message.id, 0x123U);
  EXPECT_EQ(message.direction, DirectionType::Publisher);
  EXPECT_EQ(message.checksum, 0x7CU);
  EXPECT_EQ(message.checksumType, ChecksumType::Enhanced);
  EXPECT_EQ(message.length, 2U);
  EXPECT_EQ(message.data, (Bytes{0xAA, 0xBB}));
  EXPECT_EQ(message.errorFlags, 0U);
  EXPECT_FALSE(message.busEvent);
}

TEST(LinMapping, cutsTheTimeToMicroseconds) {
  EXPECT_EQ(mapped(linRow(57)).timestamp, UnsignedMicroseconds(1234U));
  CsvMessage tens = linRow(57);
  tens.objectFlags = 1;
  EXPECT_EQ(mapped(tens).timestamp, UnsignedMicroseconds(12345670U));
  tens.objectTicks = UINT64_MAX;
  EXPECT_EQ(mapped(tens).timestamp, UnsignedMicroseconds(UINT64_MAX));
}

TEST(LinMapping, takesOverErrors) {
  const KorlMessage message = mapped(linRow(60));
  EXPECT_EQ(message.errorFlags, 0x01U);
  EXPECT_EQ(message.data, (Bytes{0xAA, 0xBB}));
  const KorlMessage silent = mapped(linRow(58));
  EXPECT_EQ(silent.errorFlags, 0x20U);
  EXPECT_EQ(silent.length, 0U);
  EXPECT_TRUE(silent.data.empty());
}

TEST(LinMapping, aBusEventHasItsTextAsData) {
  const KorlMessage message = mapped(linRow(20));
  EXPECT_TRUE(message.busEvent);
  EXPECT_EQ(std::string(message.data.begin(), message.data.end()), "Bus Sleep");
  EXPECT_EQ(message.length, 9U);
  EXPECT_EQ(message.errorFlags, 0U);
}

TEST(LinMapping, onlyAnErrorHasErrorFlags) {
  for (const std::uint32_t objectType : {57U, 20U}) {
    CsvMessage source = linRow(objectType);
    BlfLinMessage message(source);
    ASSERT_NE(message.kind, MessageKind::ER);
    message.errorFlags = 1;
    KorlMessage target;
    mapToLin(message, target);
    EXPECT_EQ(target.errorFlags, 0U) << objectType;
  }
}

TEST(LinMapping, takesOverTheDataOfWhatHasNoKind) {
  CsvMessage source = linRow(57);
  BlfLinMessage message(source);
  message.kind = MessageKind::Unknown;
  KorlMessage target;
  mapToLin(message, target);
  EXPECT_TRUE(target.valid);
  EXPECT_FALSE(target.busEvent);
  EXPECT_EQ(target.length, 2U);
  EXPECT_EQ(target.data, (Bytes{0xAA, 0xBB}));
}

TEST(LinMapping, keepsAMessageNotValid) {
  CsvMessage source = linRow(57);
  source.valid = false;
  EXPECT_FALSE(mapped(source).valid);
}

KorlMessage frame(std::uint32_t length, DirectionType direction = DirectionType::Publisher) {
  KorlMessage message;
  message.valid = true;
  message.timestamp = UnsignedMicroseconds(1500);
  message.direction = direction;
  message.id = 0x2A;
  message.length = length;
  message.data.assign(length, 0xA5);
  message.parsingText = "a line";
  return message;
}

TEST(LinMapping, toAscOnBus1) {
  AscMessage target;
  target.flags = 0x10;
  mapToAsc(frame(2), target);
  EXPECT_TRUE(target.valid);
  EXPECT_EQ(target.time, RealSeconds(0.0015));
  EXPECT_EQ(target.bus, 1U);
  EXPECT_EQ(target.id, 0x2AU);
  EXPECT_FALSE(target.extended);
  EXPECT_EQ(target.type, MessageType::Rx);
  EXPECT_EQ(target.direction, MessageDirection::Tx);
  EXPECT_EQ(target.frameClass, AscFrameClass::Classic);
  EXPECT_EQ(target.flags, 0U);
  EXPECT_EQ(target.data, (Bytes{0xA5, 0xA5}));
  EXPECT_EQ(target.parsingText, "");
}

TEST(LinMapping, aPublisherSendsAndSubscribersReceive) {
  AscMessage log;
  CsvMessage table;
  const struct {
    DirectionType source;
    MessageDirection target;
  } cases[] = {{DirectionType::Publisher, MessageDirection::Tx},
               {DirectionType::Subscriber, MessageDirection::Rx},
               {DirectionType::SubscriberAutoLength, MessageDirection::Rx},
               {DirectionType::Unknown, MessageDirection::None}};
  for (const auto& [source, target] : cases) {
    mapToAsc(frame(1, source), log);
    mapToCsv(frame(1, source), table);
    EXPECT_EQ(log.direction, target);
    EXPECT_EQ(table.direction, target);
  }
}

TEST(LinMapping, aFrameOfMoreThan8BytesBecomesNothing) {
  AscMessage log;
  log.valid = true;
  mapToAsc(frame(9), log);
  EXPECT_FALSE(log.valid);
  EXPECT_EQ(log.bus, 0U);
  EXPECT_TRUE(log.data.empty());
  CsvMessage table;
  table.valid = true;
  mapToCsv(frame(9), table);
  EXPECT_FALSE(table.valid);
  EXPECT_EQ(table.bus, 255U);
  EXPECT_EQ(table.kind, MessageKind::Unknown);
  EXPECT_TRUE(table.data.empty());
  mapToAsc(frame(8), log);
  EXPECT_TRUE(log.valid);
}

TEST(LinMapping, toCsvWithAnErrorIsAnErrorFrame) {
  CsvMessage target;
  KorlMessage source = frame(2);
  mapToCsv(source, target);
  EXPECT_EQ(target.kind, MessageKind::DT);
  EXPECT_EQ(target.time, RealMilliseconds(1.5));
  EXPECT_EQ(target.bus, 1U);
  EXPECT_EQ(target.type, MessageType::Rx);
  EXPECT_EQ(target.length, 2U);
  source.errorFlags = 0x80;
  mapToCsv(source, target);
  EXPECT_EQ(target.kind, MessageKind::ER);
  EXPECT_EQ(target.data, (Bytes{0xA5, 0xA5}));
}

}  // namespace
}  // namespace xlatr
