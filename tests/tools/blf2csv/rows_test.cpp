#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/blf_builder.hpp"
#include "tools/blf2csv/table.hpp"

// The row of every object type, from bodies in which each field has different bytes and everything without a column is
// filled with leftovers.
namespace blf2csv {
namespace {

using xlatr::test::blf::Bytes;
using xlatr::test::blf::Date;
using xlatr::test::blf::file;
using xlatr::test::blf::Header;
using xlatr::test::blf::kTenMicroseconds;
using xlatr::test::blf::object;
using xlatr::test::blf::stored;

struct Case {
  std::string name;
  std::uint32_t type;
  std::string body;
  std::string cells;  // after the comment: Id;Channel;Flags;FlagsExt;Ecc;CanFdFLags;Dir;Crc;ObjectVersion;...
  std::string comment = "-";

  [[nodiscard]] std::string row(const std::string& timestamp) const {
    return "1;" + std::to_string(type) + ";" + timestamp + ";2;" + (comment == "-" ? "1;" : "0;") + comment + ";" +
           cells + "\n";
  }
};

std::string classic(std::uint16_t channel, unsigned flags, unsigned dlc, std::uint32_t id) {
  return Bytes().u16(channel).u8(flags).u8(dlc).u32(id).counting(8, 0xA1).str();
}

std::string timedClassic(unsigned flags, unsigned dlc) {
  return classic(2, flags, dlc, 0x7FF) + Bytes().leftovers(8).str();
}

std::string array100(unsigned flags, unsigned dlc, std::uint32_t id, unsigned fdFlags, unsigned valid) {
  return Bytes()
      .u16(1)
      .u8(flags)
      .u8(dlc)
      .u32(id)
      .leftovers(5)
      .u8(fdFlags)
      .u8(valid)
      .leftovers(5)
      .counting(64)
      .leftovers(4)
      .str();
}

std::string variable101(unsigned dlc, unsigned valid, std::uint32_t flags, unsigned direction,
                        const std::string& data) {
  return Bytes()
      .u8(3)
      .u8(dlc)
      .u8(valid)
      .u8(0xEE)
      .u32(0x98765432)
      .leftovers(4)
      .u32(flags)
      .leftovers(18)
      .u8(direction)
      .leftovers(5)
      .text(data)
      .leftovers(8)
      .str();
}

std::string linFrame(unsigned length, unsigned direction) {
  return Bytes().u16(2).u8(0x3C).u8(length).counting(8, 0x21).leftovers(4).u16(0x9A).u8(direction).leftovers(5).str();
}

// The common beginning of the newer LIN types, up to the byte times.
Bytes linHead(std::uint16_t channel, unsigned id, unsigned length, unsigned checksumModel) {
  return Bytes().u64(67195000).u32(19200).u16(channel).leftovers(2).leftovers(21).u8(id).u8(length).u8(checksumModel);
}

std::string timedLinFrame(unsigned length, unsigned direction) {
  return linHead(2, 0x21, length, 1).leftovers(72).counting(8, 0x31).u16(0xC5).u8(direction).leftovers(29).str();
}

std::string counted(std::size_t count) {
  std::string cells;
  constexpr char kDigits[] = "0123456789ABCDEF";
  for (std::size_t value = 1; value <= count; ++value) {
    cells += {';', kDigits[value / 16], kDigits[value % 16]};
  }
  return cells;
}

const std::string kClassicData = "8;A1;A2;A3;A4;A5;A6;A7;A8";

std::vector<Case> cases() {
  return {
      {"classic received", 1, classic(1, 0x00, 8, 0x123), "291;1;0;0;0;0;0;0;7;0;" + kClassicData},
      {"classic sent", 1, classic(3, 0x01, 2, 0x7FF), "2047;3;1;0;0;0;0;0;7;0;2;A1;A2"},
      {"classic with all flags", 1, classic(1, 0x61, 1, 0), "0;1;97;0;0;0;0;0;7;0;1;A1"},
      {"classic extended", 1, classic(1, 0, 0, 0x9FFFFFFF), "2684354559;1;0;0;0;0;0;0;7;0;0"},
      {"classic extended with a small identifier", 1, classic(1, 0, 0, 0x80000012), "2147483666;1;0;0;0;0;0;0;7;0;0"},
      {"classic on channel 0", 1, classic(0, 0, 0, 1), "1;0;0;0;0;0;0;0;7;0;0"},
      {"classic on channel 65535", 1, classic(65535, 0, 0, 1), "1;65535;0;0;0;0;0;0;7;0;0"},
      {"classic with a DLC above 8", 1, classic(1, 0, 15, 1), "1;1;0;0;0;0;0;0;7;0;" + kClassicData},
      {"a remote frame has the length it asks for", 1, classic(1, 0x80, 3, 0x10), "16;1;128;0;0;0;0;0;7;0;3;00;00;00"},
      {"a remote frame asks for at most eight", 1, classic(1, 0x81, 12, 0x10),
       "16;1;129;0;0;0;0;0;7;0;8;00;00;00;00;00;00;00;00"},
      {"classic with duration", 86, timedClassic(0x01, 8), "2047;2;1;0;0;0;0;0;7;0;" + kClassicData},
      {"remote with duration", 86, timedClassic(0x80, 0), "2047;2;128;0;0;0;0;0;7;0;0"},
      {"error frame", 2, Bytes().u16(2).u16(0).leftovers(4).str(), "0;2;0;0;0;0;0;0;7;0;0", "error frame"},
      {"error frame of four bytes", 2, Bytes().u16(2).u16(0).str(), "0;2;0;0;0;0;0;0;7;0;0", "error frame"},
      {"overload frame", 3, Bytes().u16(1).leftovers(6).str(), "0;1;0;0;0;0;0;0;7;0;0", "overload frame"},
      {"bus statistics", 4, Bytes().u16(4).leftovers(30).str(), "0;4;0;0;0;0;0;0;7;0;0", "bus statistics"},
      {"error counters", 31, Bytes().u16(1).leftovers(6).str(), "0;1;0;0;0;0;0;0;7;0;0", "error counters"},
      {"synchronization pulse", 44, Bytes().u16(1).leftovers(6).str(), "0;1;0;0;0;0;0;0;7;0;0",
       "synchronization pulse"},
      {"error counters with detail", 74, Bytes().u16(1).leftovers(30).str(), "0;1;0;0;0;0;0;0;7;0;0", "error counters"},
      {"changed settings", 129, Bytes().u16(1).leftovers(9).str(), "0;1;0;0;0;0;0;0;7;0;0", "bus settings changed"},
      {"error frame with detail", 73,
       Bytes()
           .u16(1)
           .leftovers(2)
           .u32(0x0F)
           .u8(0x5A)
           .u8(0xEE)
           .u8(0xF2)
           .leftovers(5)
           .u32(0x456)
           .u16(0x2120)
           .leftovers(2)
           .counting(8)
           .str(),
       "1110;1;15;8480;90;0;0;0;7;0;2;01;02"},
      {"error frame with an unknown identifier", 73,
       Bytes().u16(1).zeros(8).u8(0).zeros(5).u32(0xFFFFFFFF).zeros(4).counting(8).str(), "0;1;0;0;0;0;0;0;7;0;0"},
      {"FD array", 100, array100(0, 9, 0x80000100, 0x01, 12), "2147483904;1;0;0;0;1;0;0;7;0;12" + counted(12)},
      {"FD array with all bits and all data", 100, array100(1, 15, 0x100, 0x07, 64),
       "256;1;1;0;0;7;0;0;7;0;64" + counted(64)},
      {"classic frame in an array", 100, array100(0, 8, 0x100, 0x00, 8), "256;1;0;0;0;0;0;0;7;0;8" + counted(8)},
      {"remote frame in an array", 100, array100(0x80, 4, 0x100, 0x00, 0), "256;1;128;0;0;0;0;0;7;0;4;00;00;00;00"},
      {"FD of any length", 101, variable101(13, 32, 0x3000, 0, Bytes().counting(32).str()),
       "2557891634;3;12288;0;0;0;0;0;7;0;32" + counted(32)},
      {"FD sent", 101, variable101(15, 64, 0x7000, 1, Bytes().counting(64).str()),
       "2557891634;3;28672;0;0;0;1;0;7;0;64" + counted(64)},
      {"classic frame of any length", 101, variable101(1, 1, 0x0040, 1, Bytes().counting(1).str()),
       "2557891634;3;64;0;0;0;1;0;7;0;1;01"},
      {"remote frame of any length", 101, variable101(5, 0, 0x0010, 0, ""),
       "2557891634;3;16;0;0;0;0;0;7;0;5;00;00;00;00;00"},
      {"FD error frame", 104,
       Bytes()
           .u8(2)
           .u8(9)
           .u8(3)
           .u8(0x77)
           .u16(0x0123)
           .u16(0x4567)
           .leftovers(4)
           .u32(0x321)
           .leftovers(28)
           .counting(3)
           .leftovers(8)
           .str(),
       "801;2;291;17767;119;0;0;0;7;0;3;01;02;03"},
      {"LIN frame", 11, linFrame(8, 0), "60;2;0;0;0;0;0;154;7;0;8;21;22;23;24;25;26;27;28"},
      {"LIN frame without the last field", 11, linFrame(2, 1).substr(0, 20), "60;2;0;0;0;0;1;154;7;0;2;21;22"},
      {"LIN frame with a wrong checksum", 12, linFrame(0, 2), "60;2;0;0;0;0;2;154;7;0;0"},
      {"LIN without response", 15, Bytes().u16(3).u8(0x11).u8(4).leftovers(4).str(), "17;3;0;0;0;0;0;0;7;0;0"},
      {"LIN sleep", 20, Bytes().u16(3).leftovers(6).str(), "0;3;0;0;0;0;0;0;7;0;0"},
      {"LIN wake-up", 21, Bytes().u16(3).leftovers(6).str(), "0;3;0;0;0;0;0;0;7;0;0"},
      {"timed LIN frame", 57, timedLinFrame(8, 1), "33;2;0;0;0;0;1;197;7;1;8;31;32;33;34;35;36;37;38"},
      {"timed LIN frame of the first version", 57, timedLinFrame(3, 0).substr(0, 132),
       "33;2;0;0;0;0;0;197;7;1;3;31;32;33"},
      {"timed LIN frame with a wrong checksum", 60, timedLinFrame(1, 2), "33;2;0;0;0;0;2;197;7;1;1;31"},
      {"timed LIN without response", 58, linHead(4, 0x3D, 8, 0xFF).leftovers(32).str(), "61;4;0;0;0;0;0;0;7;255;0"},
      {"timed LIN wake-up", 62, Bytes().u64(1).u32(19200).u16(5).leftovers(10).str(), "0;5;0;0;0;0;0;0;7;0;0"},
  };
}

TEST(Blf2CsvRows, eachTypeHasItsRow) {
  for (const Case& example : cases()) {
    SCOPED_TRACE(example.name);
    const std::string log =
        file(stored(object({.type = example.type, .timestamp = 1234567890123, .version = 7}, example.body)));
    const Converted converted = convertLog(log);
    EXPECT_EQ(converted.rows(), example.row("1234567890123"));
    EXPECT_TRUE(converted.remarks.lines().empty()) << converted.remarks.lines().front();
  }
}

TEST(Blf2CsvRows, theLongHeaderChangesNothing) {
  for (const Case& example : cases()) {
    SCOPED_TRACE(example.name);
    const Header header{.type = example.type, .timestamp = 5, .version = 7, .headerVersion = 2};
    EXPECT_EQ(convertLog(file(stored(object(header, example.body)))).rows(), example.row("5"));
  }
}

// A body that is a byte too short for its type gives a row that only says so, and nothing of the next object gets into
// it.
TEST(Blf2CsvRows, aShortBodyIsAnInvalidRow) {
  struct Short {
    std::uint32_t type;
    std::size_t least;
    std::string comment = "-";  // of a body that is just long enough
  };
  for (const Short& example : std::vector<Short>{{1, 16},
                                                 {2, 2, "error frame"},
                                                 {3, 2, "overload frame"},
                                                 {4, 2, "bus statistics"},
                                                 {11, 19},
                                                 {12, 19},
                                                 {15, 3},
                                                 {20, 2},
                                                 {21, 2},
                                                 {57, 123},
                                                 {58, 40},
                                                 {60, 123},
                                                 {62, 14},
                                                 {73, 24},
                                                 {86, 16},
                                                 {100, 20},
                                                 {101, 40},
                                                 {104, 44},
                                                 {31, 2, "error counters"},
                                                 {44, 2, "synchronization pulse"},
                                                 {74, 2, "error counters"},
                                                 {129, 2, "bus settings changed"}}) {
    SCOPED_TRACE(example.type);
    for (const std::size_t size : {example.least - 1, example.least}) {
      const bool whole = size == example.least;
      const std::string body(size, '\0');
      const std::string log =
          file(stored(object({.type = example.type}, body) + object({.type = 21}, std::string(8, '\xFF'))));
      const Converted converted = convertLog(log);
      const Case expected{"", example.type, "", "0;0;0;0;0;0;0;0;0;0;0", whole ? example.comment : "cut short"};
      EXPECT_EQ(converted.rows(), expected.row("0") + "2;21;0;2;1;-;0;65535;0;0;0;0;0;0;0;0;0\n");
      EXPECT_EQ(converted.remarks.times(Remark::CutObject), whole ? 0U : 1U);
    }
  }
}

TEST(Blf2CsvRows, dataEndWithTheObject) {
  const std::string body = variable101(15, 64, 0x1000, 0, Bytes().counting(5).str());
  const Converted converted = convertLog(file(stored(object({.type = 101}, body.substr(0, 45)))));
  EXPECT_EQ(converted.rows(), "1;101;0;2;1;-;2557891634;3;4096;0;0;0;0;0;0;0;5" + counted(5) + "\n");
  EXPECT_EQ(converted.remarks.times(Remark::CutData), 1U);
}

TEST(Blf2CsvRows, noFrameHasMoreDataThanItsKindCan) {
  struct Long {
    std::uint32_t type;
    std::string body;
    std::string end;  // of the row
  };
  const std::string many = Bytes().counting(255).str();
  for (const Long& example : {Long{100, array100(0, 15, 1, 0x01, 65), ";64" + counted(64)},
                              Long{100, array100(0, 8, 1, 0x00, 9), ";8" + counted(8)},
                              Long{101, variable101(15, 255, 0x1000, 0, many), ";64" + counted(64)},
                              Long{101, variable101(15, 12, 0x0000, 0, many), ";8" + counted(8)},
                              Long{11, linFrame(9, 0), ";8;21;22;23;24;25;26;27;28"},
                              Long{57, timedLinFrame(255, 0), ";8;31;32;33;34;35;36;37;38"}}) {
    const Converted converted = convertLog(file(stored(object({.type = example.type}, example.body))));
    EXPECT_TRUE(converted.rows().ends_with(example.end + "\n")) << converted.rows();
    EXPECT_EQ(converted.remarks.times(Remark::CutData), 1U);
  }
}

TEST(Blf2CsvRows, timesAreHandedOnUnchanged) {
  const auto frame = [](std::uint64_t timestamp, std::uint32_t flags) {
    return object({.type = 21, .timestamp = timestamp, .flags = flags}, std::string(8, '\0'));
  };
  const Converted converted =
      convertLog(file(stored(frame(7, kTenMicroseconds) + frame(UINT64_MAX, 2) + frame(1, 0) + frame(2, 0x80000001))));
  EXPECT_EQ(converted.rows(),
            "1;21;7;1;1;-;0;0;0;0;0;0;0;0;0;0;0\n"
            "2;21;18446744073709551615;2;1;-;0;0;0;0;0;0;0;0;0;0;0\n"
            "3;21;1;0;1;-;0;0;0;0;0;0;0;0;0;0;0\n"
            "4;21;2;2147483649;1;-;0;0;0;0;0;0;0;0;0;0;0\n");
  EXPECT_EQ(converted.remarks.times(Remark::UnknownTimeUnit), 2U);
}

TEST(Blf2CsvRows, otherTypesAreSkippedAndCounted) {
  std::string content;
  for (const std::uint32_t type : {5U, 92U, 92U, 130U, 0U, 0xFFFFFFFFU, 13U, 59U, 115U, 92U}) {
    content += object({.type = type}, std::string(type % 7, 'x'));
  }
  content += object({.type = 21}, std::string(8, '\0'));
  const Converted converted = convertLog(file(stored(content)));
  EXPECT_EQ(converted.rows(), "1;21;0;2;1;-;0;0;0;0;0;0;0;0;0;0;0\n");
  ASSERT_EQ(converted.remarks.lines().size(), 1U);
  EXPECT_EQ(converted.remarks.lines().front(),
            "objects of types without a row, skipped: 9 (1 of type 0, 1 of type 5, 1 of type 13, 1 of type 59, "
            "3 of type 92, 1 of type 130, 1 of type 4294967295)");
}

TEST(Blf2CsvRows, manyTypesTakeLittleMemory) {
  std::string content;
  for (std::uint32_t type = 1000; type < 3000; ++type) {
    content += object({.type = type}, "");
  }
  const Remarks remarks = convertLog(file(stored(content))).remarks;
  EXPECT_EQ(remarks.passedOver(), 2000U);
  EXPECT_TRUE(remarks.lines().front().ends_with("1 of type 1199, 1800 of other types)"));
}

TEST(Blf2CsvHead, theDateIsThatOfTheLog) {
  struct Start {
    const char* name;
    Date date;
    const char* line;
  };
  constexpr const char* kNone = "$BLFSTARTTIME=00/00/0000 00:00:00.000\n";
  for (const Start& example : {
           Start{"one digit each", {2021, 7, 1, 6, 6, 5, 4, 3}, "$BLFSTARTTIME=06/07/2021 06:05:04.003\n"},
           Start{"none", {}, kNone},
           Start{"month 13", {2021, 13, 1, 6, 6, 5, 4, 3}, kNone},
           Start{"month 0", {2021, 0, 1, 6, 6, 5, 4, 3}, kNone},
           Start{"day 32", {2021, 1, 1, 32, 6, 5, 4, 3}, kNone},
           Start{"hour 24", {2021, 1, 1, 1, 24, 5, 4, 3}, kNone},
           Start{"minute 60", {2021, 1, 1, 1, 6, 60, 4, 3}, kNone},
           Start{"second 60", {2021, 1, 1, 1, 6, 5, 60, 3}, kNone},
           Start{"millisecond 1000", {2021, 1, 1, 1, 6, 5, 4, 1000}, kNone},
           Start{"year 10000", {10000, 1, 1, 1, 6, 5, 4, 3}, kNone},
           Start{"any weekday", {2021, 1, 99, 1, 6, 5, 4, 3}, "$BLFSTARTTIME=01/01/2021 06:05:04.003\n"},
       }) {
    SCOPED_TRACE(example.name);
    const std::string table = convertLog(file({.start = example.date}, "")).table;
    EXPECT_EQ(table, example.line + std::string(kHead.substr(kHead.find('\n') + 1)));
  }
}

}  // namespace
}  // namespace blf2csv
