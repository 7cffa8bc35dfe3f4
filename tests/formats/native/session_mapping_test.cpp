// What becomes of a session's messages in the three formats that they can be converted into.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "formats/asc/asc_mapping.hpp"
#include "formats/asc/asc_writer.hpp"
#include "formats/csv/csv_mapping.hpp"
#include "formats/csv/csv_writer.hpp"
#include "formats/trc/trc_mapping.hpp"
#include "formats/trc/trc_writer.hpp"
#include "support/temp_folder.hpp"
#include "support/writer_stubs.hpp"

namespace xlatr {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kRemote = 0x01;
constexpr std::uint8_t kExtended = 0x02;
constexpr std::uint8_t kError = 0x10;

SessionMessage message(std::uint32_t id, std::uint8_t flags, std::uint8_t source) {
  MsgEntry entry;
  entry.id = id;
  entry.flags = flags;
  entry.source = source;
  entry.data = {1, 6, 3, 4, 5, 6, 7, 8};
  return {entry, RealMilliseconds(1500.25)};
}

template <class Target, class Map>
Target mapped(const Map& map, const SessionMessage& source) {
  Target target;
  target.length = 99;  // from the message before
  target.data.assign(99, 99);
  map(source, target);
  return target;
}

BrixMessage toTrc(const SessionMessage& source) {
  return mapped<BrixMessage>([](const auto& from, auto& to) { mapToTrc(from, to); }, source);
}
AscMessage toAsc(const SessionMessage& source) {
  return mapped<AscMessage>([](const auto& from, auto& to) { mapToAsc(from, to); }, source);
}
CsvMessage toCsv(const SessionMessage& source) {
  return mapped<CsvMessage>([](const auto& from, auto& to) { mapToCsv(from, to); }, source);
}

TEST(SessionMapping, copiesAFrame) {
  const SessionMessage source = message(0x123, 0, 0x23);
  const BrixMessage trc = toTrc(source);
  EXPECT_EQ(trc.timeOffset, RealMilliseconds(1500.25));
  EXPECT_EQ(trc.kind, MessageKind::DT);
  EXPECT_EQ(trc.reserved, -1);
  EXPECT_EQ(trc.comment, "");
  EXPECT_TRUE(trc.columnBased);
  const AscMessage asc = toAsc(source);
  EXPECT_EQ(asc.time, RealSeconds(1.50025));
  EXPECT_EQ(asc.flags, 0U);
  EXPECT_EQ(asc.frameClass, AscFrameClass::Classic);
  EXPECT_EQ(asc.lineKind, AscLineKind::StandardFrame);
  const CsvMessage csv = toCsv(source);
  EXPECT_EQ(csv.time, RealMilliseconds(1500.25));
  EXPECT_EQ(csv.kind, MessageKind::DT);
  EXPECT_EQ(csv.reserved, CsvMessage::kNoReserved);
  EXPECT_FALSE(csv.wideRow);
  for (const MessageStyleCan* target : std::initializer_list<const MessageStyleCan*>{&trc, &asc, &csv}) {
    EXPECT_EQ(target->id, 0x123U);
    EXPECT_EQ(target->bus, 3U);
    EXPECT_EQ(target->length, 3U);
    EXPECT_EQ(target->data, (Bytes{1, 6, 3}));
    EXPECT_EQ(target->type, MessageType::Rx);
    EXPECT_EQ(target->direction, MessageDirection::Rx);
    EXPECT_FALSE(target->extended);
    EXPECT_TRUE(target->valid);
  }
}

TEST(SessionMapping, marksAnExtendedIdentifier) {
  const SessionMessage source = message(0x123, kExtended, 0x08);
  EXPECT_TRUE(toTrc(source).extended);
  EXPECT_TRUE(toAsc(source).extended);
  EXPECT_EQ(toAsc(source).lineKind, AscLineKind::ExtendedFrame);
  EXPECT_TRUE(toCsv(source).extended);
}

TEST(SessionMapping, marksARemoteFrame) {
  const SessionMessage source = message(0x123, kRemote, 0x08);
  EXPECT_EQ(toTrc(source).kind, MessageKind::RR);
  EXPECT_TRUE(toTrc(source).remote);
  EXPECT_EQ(toTrc(source).data, Bytes());
  EXPECT_EQ(toTrc(source).length, 8U);
  EXPECT_EQ(toAsc(source).flags, asc_flag::kRemote);
  EXPECT_EQ(toAsc(source).lineKind, AscLineKind::SessionRemoteFrame);
  EXPECT_EQ(toCsv(source).kind, MessageKind::RR);
  EXPECT_TRUE(toCsv(source).remote);
  EXPECT_EQ(toCsv(source).length, 8U);
  EXPECT_EQ(toCsv(source).data, Bytes(8, 0));
}

TEST(SessionMapping, keepsTheBytesOfAnError) {
  const SessionMessage source = message(2, kError, 0x05);
  const BrixMessage trc = toTrc(source);
  EXPECT_EQ(trc.type, MessageType::Error);
  EXPECT_EQ(trc.kind, MessageKind::ER);
  EXPECT_EQ(trc.length, 5U);
  EXPECT_EQ(trc.data, (Bytes{1, 6, 3, 4, 5}));
  const AscMessage asc = toAsc(source);
  EXPECT_EQ(asc.type, MessageType::Error);
  EXPECT_EQ(asc.length, 4U);
  EXPECT_EQ(asc.data, (Bytes{1, 6, 3, 4}));
  EXPECT_EQ(asc.getErrorCounterBits(), "01100110");
  const CsvMessage csv = toCsv(source);
  EXPECT_EQ(csv.type, MessageType::Error);
  EXPECT_EQ(csv.kind, MessageKind::ER);
  EXPECT_EQ(csv.length, 4U);
  EXPECT_EQ(csv.data, (Bytes{1, 6, 3, 4}));
}

TEST(SessionMapping, takesTwoBytesOfAnErrorForItsCounters) {
  EXPECT_EQ(toTrc(message(0, kError, 0x02)).kind, MessageKind::EC);
  EXPECT_EQ(toTrc(message(0, kError, 0x02)).data, (Bytes{1, 6}));
  EXPECT_EQ(toCsv(message(0, kError, 0x02)).kind, MessageKind::ER);
}

TEST(SessionMapping, anErrorIsNoRemoteFrame) {
  EXPECT_EQ(toTrc(message(0, kError | kRemote, 0x04)).kind, MessageKind::ER);
  EXPECT_EQ(toTrc(message(0, kError | kRemote, 0x04)).data, (Bytes{1, 6, 3, 4}));
  EXPECT_EQ(toCsv(message(0, kError | kRemote, 0x04)).kind, MessageKind::ER);
  EXPECT_EQ(toCsv(message(0, kError | kRemote, 0x04)).data, (Bytes{1, 6, 3, 4}));
}

TEST(SessionMapping, makesNothingUpForALengthBeyondEightBytes) {
  const SessionMessage source = message(0x123, 0, 0x0F);
  const Bytes all{1, 6, 3, 4, 5, 6, 7, 8};
  EXPECT_EQ(toTrc(source).length, 15U);
  EXPECT_EQ(toTrc(source).data, all);
  EXPECT_EQ(toAsc(source).data, all);
  EXPECT_EQ(toCsv(source).data, all);
}

TEST(SessionMapping, isValidByTheLoggersBus) {
  EXPECT_FALSE(toTrc(message(0xFFFFFFFF, kError, 0xF4)).valid);
  EXPECT_TRUE(toTrc(message(0xFFFFFFFF, kError, 0x04)).valid);
  EXPECT_FALSE(toAsc(message(0xFFFFFFFF, kError, 0xF4)).valid);
  EXPECT_FALSE(toCsv(message(0xFFFFFFFF, kError, 0xF4)).valid);
}

// What each writer makes of the same messages.
template <class Writer>
std::string written(double version) {
  const test::TempFolder folder;
  Writer writer(folder.file("x"), false, version);
  writer.setActive(true);
  writer.WriteHeader(test::StubInfo("x.btr"));
  writer.flush();
  const std::size_t header = folder.read("x").size();
  for (const SessionMessage& source :
       {message(0x123, 0, 0x02), message(0x1ABCDEF0, kExtended, 0x48), message(0x7FF, kRemote, 0x08),
        message(0xFFFFFFFF, kError, 0x15), message(0, kError, 0x02), message(0xFFFFFFFF, kError, 0xF4)}) {
    writer.WriteMessage(source);
  }
  writer.setActive(false);
  return folder.read("x").substr(header);
}

TEST(SessionMapping, becomesLinesOfATrcFile) {
  EXPECT_EQ(written<TrcWriter>(2.1),
            "      1      1500.250 DT 1      0123 Rx -  2    01 06\r\n"
            "      2      1500.250 DT 5  1ABCDEF0 Rx -  8    01 06 03 04 05 06 07 08\r\n"
            "      3      1500.250 RR 1      07FF Rx -  8    \r\n"
            "      4      1500.250 ER 2         - Rx -  5    01 06 03 04 05\r\n"
            "      5      1500.250 EC 1         - Rx -  2    01 06\r\n");
}

TEST(SessionMapping, becomesRowsOfATable) {
  EXPECT_EQ(written<CsvWriter>(1.0),
            "1;1500.250;1;Rx;DT;0123;-;2;01;06\r\n"
            "2;1500.250;5;Rx;DT;1ABCDEF0;-;8;01;06;03;04;05;06;07;08\r\n"
            "3;1500.250;1;Rx;RR;07FF;-;8;\r\n"
            "4;1500.250;2;Rx;ER;FFFFFFFF;-;4;01;06;03;04\r\n"
            "5;1500.250;1;Rx;ER;0000;-;4;01;06;03;04\r\n"
            "6;1500.250;16;Rx;ER;FFFFFFFF;-;4;01;06;03;04\r\n");
}

// The logger's frames have the old form in a file of any version.
TEST(SessionMapping, becomesLinesOfAnAscLog) {
  const std::string lines =
      "   1.500250 1  123             Rx   d 2 01 06\r\n"
      "   1.500250 5  1ABCDEF0x       Rx   d 8 01 06 03 04 05 06 07 08\r\n"
      "   1.500250 1  7FF             Rx   r 8\r\n"
      "   1.500250 2  ErrorFrame ECC: 00100110\r\n"
      "   1.500250 1  ErrorFrame ECC: 00100110\r\n"
      "   1.500250 16 ErrorFrame ECC: 00100110\r\n";
  EXPECT_EQ(written<AscWriter>(7.0), lines);
  EXPECT_EQ(written<AscWriter>(8.1), lines);
}

}  // namespace
}  // namespace xlatr
