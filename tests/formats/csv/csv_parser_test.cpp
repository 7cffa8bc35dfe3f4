#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "formats/csv/csv_message.hpp"
#include "io/quirk.hpp"
#include "platform/thread.hpp"
#include "util/failures.hpp"

namespace xlatr {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr char kNarrow[] = "Number;Time (ms);Bus;Direction;Type;ID (hex);Reserved;Length;D0;D1;D2;D3;;D...";
constexpr char kWide[] =
    "Number;Time (ms);Bus;Direction;Type;ID/PID (hex);Reserved;VCID;SDT;AF;RRS;SEC;Length;D0;D1;D2;D3;;D...";
constexpr char kConverter[] =
    "Number;ObjectType;ObjectTimestamp;ObjectFlags;Valid;Comment;Id;Channel;Flags;FlagsExt;Ecc;CanFdFLags;Dir;Crc;"
    "ObjectVersion;ChecksumModel;Length;D0;D1;;D...";

CsvMessage parsed(std::string_view row, std::string_view columnLine = kNarrow, bool blfRow = false) {
  CsvColumnLine line = parseCsvColumnLine(columnLine);
  CsvMessage message(line.separator);
  message.columns = line.columns;
  message.parseRow(row, blfRow);
  return message;
}

// What a row is expected to become. Fields that a case does not name are those of a plain received data frame.
struct Frame {
  double time = 10.5;
  std::uint32_t bus = 1;
  MessageDirection direction = MessageDirection::Rx;
  MessageKind kind = MessageKind::DT;
  std::uint32_t id = 0x123;
  bool extended = false;
  std::uint32_t length = 2;
  Bytes data = {0x0A, 0xB0};
  std::string text = {};
  bool remote = false;
};

void expectFrame(const CsvMessage& message, const Frame& expected) {
  EXPECT_EQ(message.time, RealMilliseconds(expected.time));
  EXPECT_EQ(message.bus, expected.bus);
  EXPECT_EQ(message.direction, expected.direction);
  EXPECT_EQ(message.kind, expected.kind);
  EXPECT_EQ(message.id, expected.id);
  EXPECT_EQ(message.extended, expected.extended);
  EXPECT_EQ(message.length, expected.length);
  EXPECT_EQ(message.data, expected.data);
  EXPECT_EQ(message.text, expected.text);
  EXPECT_EQ(message.remote, expected.remote);
  // What is not read from our rows.
  EXPECT_EQ(message.type, MessageType::Unknown);
  EXPECT_EQ(message.reserved, CsvMessage::kNoReserved);
  EXPECT_EQ(message.vcid, 0xFF);
  EXPECT_EQ(message.af, 0xFFFFFFFF);
}

TEST(CsvParser, readsRowsOfOurTable) {
  const struct {
    const char* name;
    const char* row;
    Frame expected;
    const char* columns = kNarrow;
  } cases[] = {
      {"data frame", "1;10.500;1;Rx;DT;0123;-;2;0A;B0", {}},
      {"sent", "1;10.500;1;Tx;DT;0123;-;2;0A;B0", {.direction = MessageDirection::Tx}},
      {"no direction", "1;10.500;1;None;DT;0123;-;2;0A;B0", {.direction = MessageDirection::None}},
      {"other bus", "1;10.500;255;Rx;DT;0123;-;2;0A;B0", {.bus = 255}},
      {"bus in hexadecimal", "1;10.500;0x1F;Rx;DT;0123;-;2;0A;B0", {.bus = 0x1F}},
      {"lower case", "1;10.500;1;Rx;DT;1ab;-;2;0a;b0", {.id = 0x1AB}},
      {"reserved", "1;10.500;1;Rx;DT;0123;1F;2;0A;B0", {}},
      {"number that is invalid", "x;10.500;1;Rx;DT;0123;-;2;0A;B0", {}},
      {"time that is invalid", "1;soon;1;Rx;DT;0123;-;2;0A;B0", {.time = 0.0}},
      {"time with something after it", "1;10.5ms;1;Rx;DT;0123;-;2;0A;B0", {}},
      {"negative time", "1;-10.5;1;Rx;DT;0123;-;2;0A;B0", {.time = -10.5}},
      {"extended frame", "1;10.500;1;Rx;DT;18FEF100;-;2;0A;B0", {.id = 0x18FEF100, .extended = true}},
      {"no data", "1;10.500;1;Rx;DT;0123;-;0;", {.length = 0, .data = {}}},
      {"no data and no separator", "1;10.500;1;Rx;DT;0123;-;0", {.length = 0, .data = {}}},
      {"length in hexadecimal", "1;10.500;1;Rx;DT;0123;-;0x2;0A;B0", {}},
      {"remote frame", "1;10.500;1;Rx;RR;0123;-;2;", {.kind = MessageKind::RR, .data = {0, 0}, .remote = true}},
      {"remote frame with data",
       "1;10.500;1;Rx;RR;0123;-;2;0A;B0",
       {.kind = MessageKind::RR, .data = {0, 0}, .remote = true}},
      {"CAN FD frame",
       "1;10.500;1;Rx;FB;0123;-;9;01;02;03;04;05;06;07;08;09",
       {.kind = MessageKind::FB, .length = 9, .data = {1, 2, 3, 4, 5, 6, 7, 8, 9}}},
      {"error frame",
       "1;10.500;1;Rx;ER;FFFFFFFF;-;2;0A;B0",
       {.kind = MessageKind::ER, .id = 0xFFFFFFFF, .extended = true}},
      {"kind that is not known to be one", "1;10.500;1;Rx;Unknown;0123;-;2;0A;B0", {.kind = MessageKind::Unknown}},
      {"text after the data", "1;10.500;1;Rx;DT;0123;-;2;0A;B0;a text;more", {.text = "a text"}},
      {"text without data",
       "1;10.500;1;Rx;EV;0123;-;0;;a text",
       {.kind = MessageKind::EV, .length = 0, .data = {}, .text = "a text"}},
      {"wide table", "1;10.500;1;Rx;DT;0123;-;-;-;-;-;-;2;0A;B0", {}, kWide},
      {"CAN XL frame", "1;10.500;1;Rx;XL;0123;-;12;03;0000ABCD;1;0;2;0A;B0", {.kind = MessageKind::XL}, kWide},
      {"columns in another order",
       "2;Rx;B0;0123;10.5;1;DT;0A;B0",
       {},
       "Length;Direction;x;ID (hex);Time (ms);Bus;Type;D0;D1;Number;"},
      {"columns after many others",
       "a;b;c;d;e;f;g;h;i;j;k;l;m;n;o;p;q;r;s;t;u;v;w;x;y;z;a;b;c;d;e;f;g;h;"
       "10.5;1;Rx;DT;0123;2;0A;B0",
       {},
       "a;b;c;d;e;f;g;h;i;j;k;l;m;n;o;p;q;r;s;t;u;v;w;x;y;z;a;b;c;d;e;f;g;Number;"
       "Time (ms);Bus;Direction;Type;ID (hex);Length;D0;D1"},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    const CsvMessage message = parsed(test.row, test.columns);
    EXPECT_TRUE(message.valid);
    expectFrame(message, test.expected);
  }
}

TEST(CsvParser, tellsAnExtendedFrameByTheWidthOfItsIdentifier) {
  const struct {
    const char* identifier;
    std::uint32_t id;
    bool extended;
  } cases[] = {{"00000100", 0x100, true}, {"00100", 0x100, true}, {"0100", 0x100, false}, {"FFFF", 0xFFFF, false}};
  for (const auto& test : cases) {
    const CsvMessage message = parsed("1;10.5;1;Rx;DT;" + std::string(test.identifier) + ";-;0;");
    EXPECT_TRUE(message.valid) << test.identifier;
    EXPECT_EQ(message.id, test.id) << test.identifier;
    EXPECT_EQ(message.extended, test.extended) << test.identifier;
  }
}

TEST(CsvParser, keepsWhatItReadOfARowUpToTheFirstBadCell) {
  constexpr auto kNone = MessageDirection::None;
  constexpr auto kRx = MessageDirection::Rx;
  constexpr auto kUnset = MessageKind::Unknown;
  constexpr auto kDt = MessageKind::DT;
  const struct {
    const char* name;
    const char* row;
    double time;
    std::uint32_t bus;
    MessageDirection direction;
    MessageKind kind;
    std::uint32_t id;
    std::uint32_t length;
    Bytes data;
  } cases[] = {
      {"no cell", ";;", 0.0, 255, kNone, kUnset, kNoIdentifier, 0, {}},
      {"number alone", "1;", 0.0, 255, kNone, kUnset, kNoIdentifier, 0, {}},
      {"time alone", "1;10.5;", 10.5, 255, kNone, kUnset, kNoIdentifier, 0, {}},
      {"bus too large", "1;10.5;256;Rx;DT;0123;-;2;0A;B0", 10.5, 255, kNone, kUnset, kNoIdentifier, 0, {}},
      {"bus in binary", "1;10.5;0b1;Rx;DT;0123;-;2;0A;B0", 10.5, 255, kNone, kUnset, kNoIdentifier, 0, {}},
      {"direction", "1;10.5;1;rx;DT;0123;-;2;0A;B0", 10.5, 1, kNone, kUnset, kNoIdentifier, 0, {}},
      {"identifier", "1;10.5;1;Rx;DT;ZZ;-;2;0A;B0", 10.5, 1, kRx, kUnset, kNoIdentifier, 0, {}},
      {"identifier too large", "1;10.5;1;Rx;DT;123456789;-;2;0A;B0", 10.5, 1, kRx, kUnset, kNoIdentifier, 0, {}},
      {"kind", "1;10.5;1;Rx;dt;0123;-;2;0A;B0", 10.5, 1, kRx, kUnset, kNoIdentifier, 0, {}},
      {"length", "1;10.5;1;Rx;DT;0123;-;two;0A;B0", 10.5, 1, kRx, kDt, 0x123, 0, {}},
      {"length too large", "1;10.5;1;Rx;DT;0123;-;256;0A;B0", 10.5, 1, kRx, kDt, 0x123, 0, {}},
      {"no length", "1;10.5;1;Rx;DT;0123;-", 10.5, 1, kRx, kDt, 0x123, 0, {}},
      {"three of eight bytes", "1;10.5;1;Rx;DT;0123;-;8;01;02;03", 10.5, 1, kRx, kDt, 0x123, 8, {1, 2, 3}},
      {"byte of one digit", "1;10.5;1;Rx;DT;0123;-;2;01;2", 10.5, 1, kRx, kDt, 0x123, 2, {1}},
      {"byte of three digits", "1;10.5;1;Rx;DT;0123;-;2;01;002", 10.5, 1, kRx, kDt, 0x123, 2, {1}},
      {"no byte", "1;10.5;1;Rx;DT;0123;-;2;01;0G", 10.5, 1, kRx, kDt, 0x123, 2, {1}},
      {"an empty cell moves all others up", "1;10.5;1;Rx;DT;0123;;2;0A;B0;", 10.5, 1, kRx, kDt, 0x123, 0, {}},
      {"a comment", "the gate; it opened", 0.0, 255, kNone, kUnset, kNoIdentifier, 0, {}},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    const CsvMessage message = parsed(test.row);
    EXPECT_FALSE(message.valid);
    EXPECT_EQ(message.time, RealMilliseconds(test.time));
    EXPECT_EQ(message.bus, test.bus);
    EXPECT_EQ(message.direction, test.direction);
    EXPECT_EQ(message.kind, test.kind);
    EXPECT_EQ(message.id, test.id);
    EXPECT_EQ(message.length, test.length);
    EXPECT_EQ(message.data, test.data);
  }
}

TEST(CsvParser, refusesANumberThatEndsInH) {
  EXPECT_FALSE(parsed("1;10.5;10h;Rx;DT;0123;-;2;0A;B0").valid);
  EXPECT_FALSE(parsed("1;10.5;1;Rx;DT;0123;-;2H;0A;B0").valid);
  EXPECT_TRUE(parsed("1;10.5;0x10;Rx;DT;0123;-;2;0A;B0").valid);
  EXPECT_FALSE(parsed("1;1h;7;2;1;note;0x1F;2;3;4;5;6;7;8;9;10;2;AA;BB", kConverter, true).valid);
}

TEST(CsvParser, aMissingColumnReadsTheFirstCell) {
  const CsvMessage message = parsed("7;1;Rx;DT;0123;-;0", "Number;Bus;Direction;Type;ID (hex);Reserved;Length;D0");
  EXPECT_TRUE(message.valid);
  EXPECT_EQ(message.time, RealMilliseconds(7.0));
}

TEST(CsvParser, cutsAtEachCharacterOfASeparator) {
  CsvMessage message(" ;");
  message.columns = parseCsvColumnLine(kNarrow).columns;
  message.parseRow("1; 10.5; 1; Rx;DT 0123 - 2 0A ;B0", false);
  EXPECT_TRUE(message.valid);
  expectFrame(message, {});
}

TEST(CsvParser, takesARowWithoutSeparatorForOneCell) {
  CsvMessage message("");
  message.parseRow("1;2", false);
  EXPECT_FALSE(message.valid);
  EXPECT_EQ(message.time, RealMilliseconds(1.0));
}

// A digit is a separator like any other character.
TEST(CsvParser, cutsBytesAtADigit) {
  const auto parsedAtC = [](std::string_view row) {
    CsvMessage message("C");
    message.columns = parseCsvColumnLine(kNarrow).columns;
    message.parseRow(row, false);
    return message;
  };
  EXPECT_TRUE(parsedAtC("1C5C1CRxCDTC12C-C1CAB").valid);
  EXPECT_FALSE(parsedAtC("1C5C1CRxCDTC12C-C1CACB").valid);
  EXPECT_FALSE(parsedAtC("1C5C1CRxCDTC12C-C1CA").valid);
}

TEST(CsvParser, readsRowsOfTheConverter) {
  const CsvMessage message =
      parsed("7;100;123456789012345;2;1;a note;0x18FEF100;65535;4294967295;4096;255;3;1;65534;9;2;2;0A;B0;text",
             kConverter, true);
  EXPECT_TRUE(message.valid);
  EXPECT_EQ(message.objectType, 100U);
  EXPECT_EQ(message.objectTicks, 123456789012345U);
  EXPECT_EQ(message.objectFlags, 2U);
  EXPECT_EQ(message.comment, "a note");
  EXPECT_EQ(message.blfId, 0x18FEF100U);
  EXPECT_EQ(message.channel, 65535);
  EXPECT_EQ(message.flags, 4294967295U);
  EXPECT_EQ(message.flagsExt, 4096);
  EXPECT_EQ(message.ecc, 255);
  EXPECT_EQ(message.canFdFlags, 3);
  EXPECT_EQ(message.dir, 1);
  EXPECT_EQ(message.crc, 65534);
  EXPECT_EQ(message.objectVersion, 9);
  EXPECT_EQ(message.checksumModel, 2);
  EXPECT_EQ(message.length, 2U);
  EXPECT_EQ(message.data, (Bytes{0x0A, 0xB0}));
  EXPECT_EQ(message.text, "");
  EXPECT_EQ(message.id, kNoIdentifier);  // which identifier that is depends on the object's type
  EXPECT_EQ(message.bus, 255U);
}

TEST(CsvParser, readsNoMoreOfAnObjectThatTheConverterDidNotUnderstand) {
  const CsvMessage message = parsed("7;0x64;5;x;0;unknown object;6;2;x", kConverter, true);
  EXPECT_FALSE(message.valid);
  EXPECT_EQ(message.objectType, 100U);
  EXPECT_EQ(message.objectTicks, 5U);
  EXPECT_EQ(message.comment, "unknown object");
  EXPECT_EQ(message.blfId, 6U);
  EXPECT_EQ(message.channel, 2);
  EXPECT_EQ(message.objectFlags, 0U);
}

TEST(CsvParser, refusesBadRowsOfTheConverter) {
  const std::string good[] = {"7", "100", "5", "2", "1", "note", "6", "2",  "3", "4",
                              "5", "6",   "7", "8", "9", "10",   "2", "0A", "B0"};
  const auto joined = [&](std::size_t count, std::size_t changed, const std::string& cell) {
    std::string row;
    for (std::size_t place = 0; place < count; ++place) {
      row += (place == changed ? cell : good[place]) + ";";
    }
    return row;
  };
  const std::size_t count = std::size(good);
  constexpr std::size_t kNothing = 99;
  EXPECT_TRUE(parsed(joined(count, kNothing, ""), kConverter, true).valid);
  for (std::size_t place = 0; place < count; ++place) {
    SCOPED_TRACE(place);
    const bool isRead = place != 0 && place != 5;
    EXPECT_EQ(parsed(joined(count, place, "?"), kConverter, true).valid, !isRead);
    EXPECT_FALSE(parsed(joined(place, kNothing, ""), kConverter, true).valid) << "cut";
  }
  for (const std::size_t place : {7U, 9U, 13U, 14U}) {
    EXPECT_FALSE(parsed(joined(count, place, "65536"), kConverter, true).valid) << place;
  }
  for (const std::size_t place : {10U, 11U, 12U, 15U}) {
    EXPECT_FALSE(parsed(joined(count, place, "256"), kConverter, true).valid) << place;
  }
  EXPECT_FALSE(parsed(joined(count, 4, "2"), kConverter, true).valid);
  const CsvMessage endless = parsed(joined(count, 16, "4294967295"), kConverter, true);
  EXPECT_FALSE(endless.valid);
  EXPECT_EQ(endless.data, (Bytes{0x0A, 0xB0}));
}

TEST(CsvParser, raisesNothingForABadRow) {
  const std::uint32_t thread = platform::currentThreadId();
  const std::string before = lastErrorText(thread);
  EXPECT_FALSE(parsed("1;10.5;10h;Rx;DT;0123;-;2;0A;B0").valid);
  EXPECT_FALSE(parsed("1;1h;7", kConverter, true).valid);
  EXPECT_EQ(lastErrorText(thread), before);
}

TEST(CsvMessage, resetLeavesTheSeparatorAndTheColumns) {
  CsvMessage message = parsed("1;10.500;1;Rx;RR;00000123;-;2;", kNarrow);
  message.parsingText = "x";
  message.comment = "x";
  message.wideRow = true;
  message.reset();
  const CsvMessage fresh;
  EXPECT_EQ(message.separator, ";");
  EXPECT_EQ(message.columns.place(CsvColumn::Bus), 2U);
  EXPECT_FALSE(message.valid);
  expectFrame(message, {.time = 0.0,
                        .bus = 255,
                        .direction = MessageDirection::None,
                        .kind = MessageKind::Unknown,
                        .id = kNoIdentifier,
                        .length = 0,
                        .data = {}});
  EXPECT_EQ(message.parsingText, "");
  EXPECT_EQ(message.comment, "");
  EXPECT_EQ(message.wideRow, fresh.wideRow);
}

// The cells of a row by their places, without those that may be anything.
std::vector<std::size_t> neededCells(Way way) {
  const std::vector<std::string> cells = {"1",  "10.5",     "1", "Rx", "XL", "0123", "0", "0A",
                                          "01", "12345678", "1", "0",  "2",  "0A",   "B0"};
  std::vector<std::size_t> needed;
  for (std::size_t bad = 0; bad < cells.size(); ++bad) {
    std::string row;
    for (std::size_t at = 0; at < cells.size(); ++at) {
      row += (at == 0 ? "" : ";") + (at == bad ? "?" : cells[at]);
    }
    const CsvColumnLine line = parseCsvColumnLine(kWide);
    CsvMessage message(line.separator);
    message.columns = line.columns;
    message.parseRow(row, false, way);
    if (!message.valid) {
      needed.push_back(bad);
    }
  }
  return needed;
}

TEST(CsvParser, refusesARowForAnyCellThatCounts) {
  EXPECT_EQ(neededCells(Way::compatible()), (std::vector<std::size_t>{2, 3, 4, 5, 12, 13, 14}));
  EXPECT_EQ(neededCells(Way::complete()), (std::vector<std::size_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}));
}

}  // namespace
}  // namespace xlatr
