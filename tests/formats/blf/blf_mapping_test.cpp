// What the messages of BLF logs become in TRC traces and tables.
#include <gtest/gtest.h>

#include <string>

#include "formats/csv/csv_mapping.hpp"
#include "formats/csv/csv_writer.hpp"
#include "formats/trc/trc_mapping.hpp"
#include "formats/trc/trc_writer.hpp"
#include "support/blf_rows.hpp"
#include "support/temp_folder.hpp"
#include "support/writer_stubs.hpp"

namespace xlatr {
namespace {

using test::blfRow;
using test::Bytes;

BlfCanMessage can(std::uint32_t objectType, std::uint32_t flags = 0, std::uint8_t ecc = 0) {
  CsvMessage source = blfRow(objectType);
  source.flags = flags;
  source.ecc = ecc;
  return BlfCanMessage(source);
}

BlfLinMessage lin(std::uint32_t objectType) {
  CsvMessage source = blfRow(objectType);
  source.dir = 1;
  return BlfLinMessage(source);
}

TEST(BlfToTrc, takesOverAFrame) {
  BrixMessage target;
  mapToTrc(can(86, 1), target);
  EXPECT_TRUE(target.valid);
  EXPECT_TRUE(target.columnBased);
  EXPECT_EQ(target.timeOffset, RealMilliseconds(1.234567));
  EXPECT_EQ(target.bus, 7U);
  EXPECT_EQ(target.id, 0x123U);
  EXPECT_EQ(target.kind, MessageKind::DT);
  EXPECT_EQ(target.type, MessageType::Tx);
  EXPECT_EQ(target.direction, MessageDirection::Tx);
  EXPECT_EQ(target.length, 2U);
  EXPECT_EQ(target.data, (Bytes{0xAA, 0xBB}));
  EXPECT_EQ(target.reserved, -1);
  EXPECT_EQ(target.comment, "");
}

TEST(BlfToTrc, aRemoteFrameLosesItsLength) {
  BrixMessage target;
  mapToTrc(can(1, 0x80), target);
  EXPECT_EQ(target.kind, MessageKind::RR);
  EXPECT_TRUE(target.remote);
  EXPECT_EQ(target.length, 0U);
  EXPECT_TRUE(target.data.empty());
}

TEST(BlfToTrc, anErrorFrameIsToldByItsEcc) {
  const struct {
    std::uint8_t ecc;
    std::uint32_t id;
    Bytes data;
  } cases[] = {{0x00, 1, {0, 0, 0, 0}}, {0x59, 2, {0, 25, 0, 0}}, {0xBF, 4, {1, 31, 0, 0}}, {0xE1, 8, {1, 1, 0, 0}}};
  for (const auto& test : cases) {
    for (const std::uint32_t type : {73U, 104U}) {
      BrixMessage target;
      mapToTrc(can(type, 0, test.ecc), target);
      EXPECT_EQ(target.kind, MessageKind::ER);
      EXPECT_EQ(target.type, MessageType::Error);
      EXPECT_EQ(target.id, test.id);
      EXPECT_EQ(target.length, 4U);
      EXPECT_EQ(target.data, test.data);
    }
  }
}

TEST(BlfToCsv, takesOverAFrame) {
  CsvMessage target(";");
  mapToCsv(can(101, 0x3000), target);
  EXPECT_TRUE(target.valid);
  EXPECT_EQ(target.time, RealMilliseconds(1.234567));
  EXPECT_EQ(target.bus, 7U);
  EXPECT_EQ(target.kind, MessageKind::FB);
  EXPECT_EQ(target.direction, MessageDirection::Rx);
  EXPECT_EQ(target.reserved, CsvMessage::kNoReserved);
  EXPECT_FALSE(target.wideRow);
  EXPECT_EQ(target.objectType, 0U);
  TextBuffer out;
  target.toRow(out, 1);
  EXPECT_EQ(out.view(), "1;1.235;7;Rx;FB;0123;-;2;AA;BB");
}

TEST(BlfToCsv, aRemoteFrameHasItsLengthAndNoData) {
  CsvMessage target(";");
  mapToCsv(can(1, 0x80), target);
  TextBuffer out;
  target.toRow(out, 1);
  EXPECT_EQ(out.view(), "1;1.235;7;Rx;RR;0123;-;2;");
}

TEST(BlfToCsv, aLinFrameIsOnBus1) {
  CsvMessage target(";");
  mapToCsv(lin(57), target);
  TextBuffer out;
  target.toRow(out, 1);
  EXPECT_EQ(out.view(), "1;1.235;1;Tx;DT;0123;-;2;AA;BB");
  mapToCsv(lin(60), target);
  EXPECT_EQ(target.kind, MessageKind::ER);
}

TEST(BlfToCsv, aLinFrameMayHaveAnyLength) {
  CsvMessage source = blfRow(57);
  source.length = 9;
  source.data.assign(9, 1);
  CsvMessage target(";");
  mapToCsv(BlfLinMessage(source), target);
  EXPECT_TRUE(target.valid);
  EXPECT_EQ(target.length, 9U);
  EXPECT_EQ(target.data.size(), 9U);
}

class BlfWritersTest : public testing::Test {
 protected:
  template <class Writer, class... Messages>
  [[nodiscard]] std::string written(const Messages&... messages) const {
    Writer writer(folder_.file("out"), true, formatOf(Writer().getTargetFormat()).currentVersion);
    writer.setActive(true);
    (writer.WriteMessage(messages), ...);
    writer.setActive(false);
    return folder_.read("out");
  }

  test::TempFolder folder_;
};

TEST_F(BlfWritersTest, aLinFrameIsACommentInATrcFile) {
  CsvMessage broken = blfRow(58);
  broken.valid = false;
  broken.comment = "damaged";
  EXPECT_EQ(written<TrcWriter>(lin(57), BlfLinMessage(broken)),
            ";BLF Object Type 57 (LIN)\r\n;BLF Object Type 58 damaged (LIN)\r\n");
}

TEST_F(BlfWritersTest, framesOfBothBusesAreRowsOfATable) {
  EXPECT_EQ(written<CsvWriter>(can(1), lin(57)),
            "1;1.235;7;Rx;DT;0123;-;2;AA;BB\r\n2;1.235;1;Tx;DT;0123;-;2;AA;BB\r\n");
}

TEST_F(BlfWritersTest, aFrameWithoutATextTakesANumber) {
  CsvMessage broken = blfRow(86);
  broken.valid = false;
  const std::string text = written<TrcWriter>(BlfCanMessage(broken), can(86));
  EXPECT_EQ(text.find("      2 "), 0U) << text;
}

}  // namespace
}  // namespace xlatr
