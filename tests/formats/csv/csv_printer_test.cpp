#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>

#include "formats/csv/csv_message.hpp"

namespace xlatr {
namespace {

CsvMessage frame() {
  CsvMessage message(";");
  message.valid = true;
  message.time = RealMilliseconds(1.5);
  message.bus = 1;
  message.direction = MessageDirection::Rx;
  message.kind = MessageKind::DT;
  message.id = 0x100;
  message.length = 2;
  message.data = {0xAA, 0xBB};
  return message;
}

std::string row(const CsvMessage& message, std::uint64_t number = 7) {
  TextBuffer out;
  message.toRow(out, number);
  return std::string(out.view());
}

struct Case {
  const char* name;
  std::function<void(CsvMessage&)> change;
  const char* expected;
};

void expectRows(const std::vector<Case>& cases) {
  for (const Case& test : cases) {
    CsvMessage message = frame();
    test.change(message);
    EXPECT_EQ(row(message), test.expected) << test.name;
  }
}

TEST(CsvPrinter, printsAFrame) {
  EXPECT_EQ(row(frame()), "7;1.500;1;Rx;DT;0100;-;2;AA;BB");
}

TEST(CsvPrinter, leavesTextsOutOnTheCompatibleWay) {
  CsvMessage message = frame();
  message.hasText = true;
  message.text = "late";
  EXPECT_EQ(row(message), "7;1.500;1;Rx;DT;0100;-;2;AA;BB");
  TextBuffer out;
  message.toRow(out, 7, Way::complete());
  EXPECT_EQ(out.view(), "7;1.500;1;Rx;DT;0100;-;2;AA;BB;late");
}

TEST(CsvPrinter, printsEachColumn) {
  expectRows({
      {"time is rounded", [](CsvMessage& m) { m.time = RealMilliseconds(12345678.90149); },
       "7;12345678.901;1;Rx;DT;0100;-;2;AA;BB"},
      {"negative time", [](CsvMessage& m) { m.time = RealMilliseconds(-0.5); }, "7;-0.500;1;Rx;DT;0100;-;2;AA;BB"},
      {"bus", [](CsvMessage& m) { m.bus = 4294967295; }, "7;1.500;4294967295;Rx;DT;0100;-;2;AA;BB"},
      {"sent", [](CsvMessage& m) { m.direction = MessageDirection::Tx; }, "7;1.500;1;Tx;DT;0100;-;2;AA;BB"},
      {"no direction", [](CsvMessage& m) { m.direction = MessageDirection::None; }, "7;1.500;1;None;DT;0100;-;2;AA;BB"},
      {"an unknown direction", [](CsvMessage& m) { m.direction = static_cast<MessageDirection>(3); },
       "7;1.500;1;Unknown;DT;0100;-;2;AA;BB"},
      {"extended", [](CsvMessage& m) { m.extended = true; }, "7;1.500;1;Rx;DT;00000100;-;2;AA;BB"},
      {"base identifier of eight digits", [](CsvMessage& m) { m.id = 0xFFFFFFFF; },
       "7;1.500;1;Rx;DT;FFFFFFFF;-;2;AA;BB"},
      {"reserved", [](CsvMessage& m) { m.reserved = 0x1F; }, "7;1.500;1;Rx;DT;0100;1F;2;AA;BB"},
      {"reserved of 0", [](CsvMessage& m) { m.reserved = 0; }, "7;1.500;1;Rx;DT;0100;0;2;AA;BB"},
      {"highest reserved", [](CsvMessage& m) { m.reserved = 0xFFFE; }, "7;1.500;1;Rx;DT;0100;FFFE;2;AA;BB"},
      {"no data",
       [](CsvMessage& m) {
         m.length = 0;
         m.data.clear();
       },
       "7;1.500;1;Rx;DT;0100;-;0;"},
      {"more data than its length", [](CsvMessage& m) { m.length = 1; }, "7;1.500;1;Rx;DT;0100;-;1;AA"},
      {"less data than its length", [](CsvMessage& m) { m.length = 3; }, "7;1.500;1;Rx;DT;0100;-;3;AA;BB"},
      {"text is left out", [](CsvMessage& m) { m.text = "text"; }, "7;1.500;1;Rx;DT;0100;-;2;AA;BB"},
      {"not valid", [](CsvMessage& m) { m.valid = false; }, "7;1.500;1;Rx;DT;0100;-;2;AA;BB"},
      {"tab", [](CsvMessage& m) { m.separator = "\t"; }, "7\t1.500\t1\tRx\tDT\t0100\t-\t2\tAA\tBB"},
      {"several characters", [](CsvMessage& m) { m.separator = " | "; },
       "7 | 1.500 | 1 | Rx | DT | 0100 | - | 2 | AA | BB"},
      {"no separator", [](CsvMessage& m) { m.separator = ""; }, "71.5001RxDT0100-2AABB"},
  });
  EXPECT_EQ(row(CsvMessage(";"), 0), "0;0.000;255;None;Unknown;FFFFFFFF;-;0;");
  EXPECT_EQ(row(frame(), 18446744073709551615U).substr(0, 21), "18446744073709551615;");
}

TEST(CsvPrinter, printsEachKind) {
  const struct {
    MessageKind kind;
    const char* expected;
  } cases[] = {{MessageKind::DT, "DT"},
               {MessageKind::FD, "FD"},
               {MessageKind::FB, "FB"},
               {MessageKind::FE, "FE"},
               {MessageKind::BI, "BI"},
               {MessageKind::RR, "RR"},
               {MessageKind::ST, "ST"},
               {MessageKind::EC, "EC"},
               {MessageKind::ER, "ER"},
               {MessageKind::EV, "EV"},
               {MessageKind::XL, "XL"},
               {MessageKind::Unknown, "Unknown"},
               {static_cast<MessageKind>(12), "Unknown"}};
  for (const auto& test : cases) {
    CsvMessage message = frame();
    message.kind = test.kind;
    EXPECT_EQ(row(message), "7;1.500;1;Rx;" + std::string(test.expected) + ";0100;-;2;AA;BB");
  }
}

TEST(CsvPrinter, endsARemoteFrameWithASeparator) {
  CsvMessage message = frame();
  message.kind = MessageKind::RR;
  message.remote = true;
  message.length = 8;
  message.data.assign(8, 0);
  const std::string printed = row(message);
  EXPECT_EQ(printed, "7;1.500;1;Rx;RR;0100;-;8;");

  CsvMessage again(";");
  again.columns = parseCsvColumnLine("Number;Time (ms);Bus;Direction;Type;ID (hex);Reserved;Length;D0;D1").columns;
  again.parseRow(printed, false);
  EXPECT_TRUE(again.valid);
  EXPECT_TRUE(again.remote);
  EXPECT_EQ(again.data, std::vector<std::uint8_t>(8, 0));
}

TEST(CsvPrinter, printsTheColumnsOfCanXl) {
  expectRows({
      {"no XL frame",
       [](CsvMessage& m) {
         m.wideRow = true;
         m.vcid = 1;
       },
       "7;1.500;1;Rx;DT;0100;-;-;-;-;-;-;2;AA;BB"},
      {"XL frame",
       [](CsvMessage& m) {
         m.wideRow = true;
         m.kind = MessageKind::XL;
         m.reserved = 2;
         m.vcid = 0x0A;
         m.sdt = 3;
         m.af = 0xBEEF;
         m.rrs = 1;
         m.sec = 0;
       },
       "7;1.500;1;Rx;XL;0100;2;0A;03;0000BEEF;1;0;2;AA;BB"},
      {"XL frame without values",
       [](CsvMessage& m) {
         m.wideRow = true;
         m.kind = MessageKind::XL;
       },
       "7;1.500;1;Rx;XL;0100;-;FF;FF;FFFFFFFF;0;0;2;AA;BB"},
      {"XL frame in a narrow row", [](CsvMessage& m) { m.kind = MessageKind::XL; }, "7;1.500;1;Rx;XL;0100;-;2;AA;BB"},
  });
}

}  // namespace
}  // namespace xlatr
