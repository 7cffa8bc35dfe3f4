#include "formats/csv/csv_mapping.hpp"
#include "formats/trc/trc_version.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace xlatr {
namespace {

using Bytes = std::vector<std::uint8_t>;

template <class Source>
CsvMessage mapped(const Source& source) {
  CsvMessage target(",");
  mapToCsv(source, target);
  return target;
}

BrixMessage parsed(std::string_view line) {
  BrixMessage message;
  message.parseLine(line, findTrcVersion(3.0), kTrcColumns30);
  return message;
}

TEST(CsvMapping, takesAllOfATrcMessage) {
  const BrixMessage source = parsed("1 10.5 XL 3 18FEF100 Tx 1F 0A 03 0000BEEF 1 0 1 AA BB");
  ASSERT_TRUE(source.valid);
  const CsvMessage row = mapped(source);
  EXPECT_TRUE(row.valid);
  EXPECT_EQ(row.time, RealMilliseconds(10.5));
  EXPECT_EQ(row.bus, 3U);
  EXPECT_EQ(row.id, 0x18FEF100U);
  EXPECT_TRUE(row.extended);
  EXPECT_EQ(row.type, source.type);
  EXPECT_EQ(row.kind, MessageKind::XL);
  EXPECT_EQ(row.direction, MessageDirection::Tx);
  EXPECT_EQ(row.length, 2U);
  EXPECT_EQ(row.data, (Bytes{0xAA, 0xBB}));
  EXPECT_FALSE(row.remote);
  EXPECT_EQ(row.reserved, 0x1F);
  EXPECT_TRUE(row.wideRow);
  EXPECT_EQ(row.vcid, 0x0A);
  EXPECT_EQ(row.sdt, 3);
  EXPECT_EQ(row.af, 0xBEEFU);
  EXPECT_EQ(row.rrs, 1);
  EXPECT_EQ(row.sec, 0);
  EXPECT_EQ(row.text, "");
  EXPECT_EQ(row.parsingText, "");
  EXPECT_EQ(row.separator, ",");
}

TEST(CsvMapping, leavesWhatATrcMessageDoesNotHaveAtItsStart) {
  const CsvMessage row = mapped(parsed("1 10.5 XL 3 100 Rx - - - - - - 0 AA"));
  EXPECT_TRUE(row.valid);
  EXPECT_EQ(row.reserved, CsvMessage::kNoReserved);
  EXPECT_EQ(row.vcid, 0xFF);
  EXPECT_EQ(row.sdt, 0xFF);
  EXPECT_EQ(row.af, 0xFFFFFFFFU);
  EXPECT_EQ(row.rrs, 0);
  EXPECT_EQ(row.sec, 0);
}

TEST(CsvMapping, givesARemoteFrameZeros) {
  BrixMessage source = parsed("1 10.5 RR 3 100 Rx - - - - - - 8");
  ASSERT_TRUE(source.remote);
  EXPECT_EQ(mapped(source).data, Bytes(8, 0));
  EXPECT_EQ(mapped(source).length, 8U);
  EXPECT_TRUE(mapped(source).remote);
  // No memory is taken for a length that no frame has.
  source.length = 0xFFFFFFFF;
  EXPECT_EQ(mapped(source).length, 0xFFFFFFFFU);
  EXPECT_EQ(mapped(source).data.size(), 2048U);
}

TEST(CsvMapping, takesTheTextOfAnEvent) {
  const CsvMessage row = mapped(parsed("1 10.5 EV 3 Door opened"));
  EXPECT_EQ(row.kind, MessageKind::EV);
  EXPECT_EQ(row.text, "Door opened");
}

TEST(CsvMapping, takesAMessageThatIsNotValid) {
  const CsvMessage row = mapped(parsed("1 10.5 DT 3 100 Rx - - - - - - 8 AA"));
  EXPECT_FALSE(row.valid);
  EXPECT_EQ(row.length, 8U);
  EXPECT_EQ(row.data, Bytes{0xAA});
}

TEST(CsvMapping, keepsNothingOfTheMessageBefore) {
  CsvMessage target(",");
  mapToCsv(parsed("1 10.5 XL 3 18FEF100 Tx 1F 0A 03 0000BEEF 1 1 1 AA BB"), target);
  mapToCsv(parsed("1 10.5 EV 3 Door opened"), target);
  mapToCsv(BrixMessage(), target);
  const CsvMessage fresh = mapped(BrixMessage());
  EXPECT_EQ(target.vcid, fresh.vcid);
  EXPECT_EQ(target.sec, fresh.sec);
  EXPECT_EQ(target.reserved, fresh.reserved);
  EXPECT_EQ(target.text, "");
  EXPECT_EQ(target.data, Bytes());
  EXPECT_EQ(target.bus, 1U);
}

AscMessage ascFrame() {
  AscMessage message;
  message.valid = true;
  message.time = RealSeconds(1.5);
  message.bus = 2;
  message.id = 0x18FEF100;
  message.extended = true;
  message.type = MessageType::Tx;
  message.direction = MessageDirection::Tx;
  message.length = 2;
  message.data = {0xAA, 0xBB};
  message.commentText = "a name";
  return message;
}

TEST(CsvMapping, takesAnAscMessage) {
  const CsvMessage row = mapped(ascFrame());
  EXPECT_TRUE(row.valid);
  EXPECT_EQ(row.time, RealMilliseconds(1500.0));
  EXPECT_EQ(row.bus, 2U);
  EXPECT_EQ(row.id, 0x18FEF100U);
  EXPECT_TRUE(row.extended);
  EXPECT_EQ(row.type, MessageType::Tx);
  EXPECT_EQ(row.kind, MessageKind::DT);
  EXPECT_EQ(row.direction, MessageDirection::Tx);
  EXPECT_EQ(row.length, 2U);
  EXPECT_EQ(row.data, (Bytes{0xAA, 0xBB}));
  EXPECT_FALSE(row.remote);
  EXPECT_EQ(row.text, "");
  EXPECT_EQ(row.reserved, CsvMessage::kNoReserved);
  EXPECT_FALSE(row.wideRow);
}

TEST(CsvMapping, findsTheKindOfAnAscMessage) {
  const struct {
    const char* name;
    std::uint32_t flags;
    MessageType type;
    MessageKind kind;
    bool remote;
  } cases[] = {
      {"data", 0, MessageType::Rx, MessageKind::DT, false},
      {"data of a converter", asc_flag::kClassicFrame, MessageType::Rx, MessageKind::DT, false},
      {"remote", 0x10, MessageType::Rx, MessageKind::RR, true},
      {"FD", 0x1000, MessageType::Rx, MessageKind::FD, false},
      {"FD with BRS", 0x3000, MessageType::Tx, MessageKind::FB, false},
      {"FD with ESI", 0x5000, MessageType::Rx, MessageKind::FE, false},
      {"FD with both", 0x7000, MessageType::Rx, MessageKind::BI, false},
      {"BRS without FD", 0x2000, MessageType::Rx, MessageKind::DT, false},
      {"error", 0, MessageType::Error, MessageKind::ER, false},
      {"FD error", 0x1000, MessageType::Error, MessageKind::ER, false},
      {"status", 0, MessageType::Warng, MessageKind::ST, false},
      {"remote before error", 0x10, MessageType::Error, MessageKind::RR, true},
      {"remote before status", 0x10, MessageType::Warng, MessageKind::RR, true},
      {"unknown type", 0, MessageType::Unknown, MessageKind::DT, false},
  };
  for (const auto& test : cases) {
    AscMessage source = ascFrame();
    source.flags = test.flags;
    source.type = test.type;
    EXPECT_EQ(mapped(source).kind, test.kind) << test.name;
    EXPECT_EQ(mapped(source).remote, test.remote) << test.name;
  }
}

TEST(CsvMapping, takesABinaryMessage) {
  ZelkBinaryMessage source;
  source.recordType = RecordType::CanTxFdMsg;
  source.valid = true;
  source.timestamp = UnsignedMicroseconds(1500250);
  source.bus = 2;
  source.id = 0x18FEF100;
  source.extended = true;
  source.length = 12;
  source.data = {0xAA, 0xBB};
  source.direction = MessageDirection::Tx;
  source.kind = MessageKind::FE;
  source.commentary = "a text";
  const CsvMessage row = mapped(source);
  EXPECT_TRUE(row.valid);
  EXPECT_EQ(row.time, RealMilliseconds(1500.25));
  EXPECT_EQ(row.bus, 3U);
  EXPECT_EQ(row.id, 0x18FEF100U);
  EXPECT_TRUE(row.extended);
  EXPECT_EQ(row.type, MessageType::Unknown);
  EXPECT_EQ(row.kind, MessageKind::FE);
  EXPECT_EQ(row.direction, MessageDirection::Tx);
  EXPECT_EQ(row.length, 12U);
  EXPECT_EQ(row.data, (Bytes{0xAA, 0xBB})) << "as many as there are";
  EXPECT_FALSE(row.remote);
  EXPECT_EQ(row.reserved, CsvMessage::kNoReserved);
  EXPECT_EQ(row.text, "a text");
  EXPECT_FALSE(row.wideRow);
}

TEST(CsvMapping, binaryRemoteFrameGetsZeros) {
  ZelkBinaryMessage source;
  source.recordType = RecordType::CanRxRtrMsg;
  source.valid = true;
  source.length = 3;
  source.kind = MessageKind::RR;
  source.remote = true;
  const CsvMessage row = mapped(source);
  EXPECT_TRUE(row.remote);
  EXPECT_EQ(row.data, (Bytes{0, 0, 0}));
}

}  // namespace
}  // namespace xlatr
