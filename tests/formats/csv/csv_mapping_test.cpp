#include "formats/csv/csv_mapping.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "formats/trc/trc_message.hpp"

namespace xlatr {
namespace {

using Bytes = std::vector<std::uint8_t>;

CsvMessage mapped(const BrixMessage& source) {
  CsvMessage target(",");
  mapToCsv(source, target);
  return target;
}

BrixMessage parsed(std::string_view line) {
  BrixMessage message;
  message.parseLine(line, 3.0, kTrcColumns30);
  return message;
}

TEST(CsvMapping, takesAllOfATrcMessage) {
  const BrixMessage source = parsed("1 10.5 XL 3 18FEF100 Tx 1F 0A 03 0000BEEF 1 0 1 AA BB");
  ASSERT_TRUE(source.valid);
  const CsvMessage row = mapped(source);
  EXPECT_TRUE(row.valid);
  EXPECT_EQ(row.time, 10.5);
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
  // A length that no frame has gets no memory of that size.
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

}  // namespace
}  // namespace xlatr
