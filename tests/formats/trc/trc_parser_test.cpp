#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "formats/trc/trc_message.hpp"
#include "formats/trc/trc_version.hpp"
#include "platform/thread.hpp"
#include "util/failures.hpp"

namespace xlatr {
namespace {

using Bytes = std::vector<std::uint8_t>;

BrixMessage parsed(std::string_view line, double version, TrcColumnSet columns = 0) {
  BrixMessage message;
  message.parseLine(line, findTrcVersion(version), columns);
  return message;
}

// What a line is expected to become. Fields that a case does not name are those of a plain received data frame.
struct Frame {
  double time = 10.5;
  std::uint32_t bus = 1;
  MessageType type = MessageType::Rx;
  MessageKind kind = MessageKind::DT;
  MessageDirection direction = MessageDirection::Rx;
  std::uint32_t id = 0x123;
  bool extended = false;
  std::uint32_t length = 2;
  Bytes data = {0x0A, 0xB0};
  std::string comment = {};
  std::int16_t reserved = -1;
  bool remote = false;
  CanXlFields xl = {};
};

struct Case {
  const char* name;
  const char* line;
  double version;
  TrcColumnSet columns;
  Frame expected;
};

void expectFrame(const Case& test) {
  SCOPED_TRACE(test.name);
  const BrixMessage message = parsed(test.line, test.version, test.columns);
  EXPECT_TRUE(message.valid);
  EXPECT_EQ(message.timeOffset, RealMilliseconds(test.expected.time));
  EXPECT_EQ(message.bus, test.expected.bus);
  EXPECT_EQ(message.type, test.expected.type);
  EXPECT_EQ(message.kind, test.expected.kind);
  EXPECT_EQ(message.direction, test.expected.direction);
  EXPECT_EQ(message.id, test.expected.id);
  EXPECT_EQ(message.extended, test.expected.extended);
  EXPECT_EQ(message.length, test.expected.length);
  EXPECT_EQ(message.data, test.expected.data);
  EXPECT_EQ(message.comment, test.expected.comment);
  EXPECT_EQ(message.reserved, test.expected.reserved);
  EXPECT_EQ(message.remote, test.expected.remote);
  EXPECT_TRUE(message.xl == test.expected.xl);
  EXPECT_EQ(message.columnBased, test.version >= 2.0);
  EXPECT_EQ(message.parsingText, test.line);
}

Bytes countingBytes(std::size_t count) {
  Bytes bytes(count);
  for (std::size_t index = 0; index < count; ++index) {
    bytes[index] = static_cast<std::uint8_t>(index + 1);
  }
  return bytes;
}

std::string hexText(const Bytes& bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += ' ';
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

TEST(TrcParser, readsLinesOfVersion10) {
  const Case cases[] = {
      {"data", "     1)        10.5  0123  2  0A B0", 1.0, 0, {}},
      {"lower-case digits and a single one", "1) 10.5 0123 2 a b0", 1.0, 0, {}},
      {"extended", "1) 10.5 00000123 2 0A B0", 1.0, 0, {.extended = true}},
      {"five digits are extended", "1) 10.5 00123 2 0A B0", 1.0, 0, {.extended = true}},
      {"four digits are a base frame whatever their value", "1) 10.5 FFFF 2 0A B0", 1.0, 0, {.id = 0xFFFF}},
      {"no data", "1) 10.5 0123 0", 1.0, 0, {.length = 0, .data = {}}},
      {"remote", "1) 10.5 0123 8 RTR", 1.0, 0, {.kind = MessageKind::RR, .length = 8, .data = {}, .remote = true}},
      {"remote in another case",
       "1) 10.5 0123 8 rtr",
       1.0,
       0,
       {.kind = MessageKind::RR, .length = 8, .data = {}, .remote = true}},
      {"error", "1) 10.5 0004 2 Error 0A B0", 1.0, 0, {.type = MessageType::Error, .kind = MessageKind::ER, .id = 4}},
      {"error without data",
       "1) 10.5 0004 2 ERROR RTR",
       1.0,
       0,
       {.type = MessageType::Error, .kind = MessageKind::RR, .id = 4, .data = {}, .remote = true}},
      {"status, named by its bits",
       "1) 10.5 FFFFFFFF 4 00 04 00 18",
       1.0,
       0,
       {.type = MessageType::Warng,
        .kind = MessageKind::ST,
        .id = 0xFFFFFFFF,
        .extended = true,
        .length = 4,
        .data = {0, 4, 0, 0x18},
        .comment = "BUSWARNING, BUSOFF, BUSPASSIVE"}},
      {"status, named by the line",
       "1) 10.5 FFFFFFFF 4 00 00 00 08 -- -- -- -- BUSHEAVY ",
       1.0,
       0,
       {.type = MessageType::Warng,
        .kind = MessageKind::ST,
        .id = 0xFFFFFFFF,
        .extended = true,
        .length = 4,
        .data = {0, 0, 0, 8},
        .comment = "BUSHEAVY"}},
      {"the last word after the data is the comment", "1) 10.5 0123 2 0A B0 two words", 1.0, 0, {.comment = "words"}},
  };
  for (const Case& test : cases) {
    expectFrame(test);
  }
}

TEST(TrcParser, readsLinesOfVersion11) {
  const Case cases[] = {
      {"received", "1) 10.5 Rx 0123 2 0A B0", 1.1, 0, {}},
      {"sent", "1) 10.5 Tx 0123 2 0A B0", 1.1, 0, {.type = MessageType::Tx, .direction = MessageDirection::Tx}},
      {"status",
       "1) 10.5 Warng FFFFFFFF 4 00 00 00 10 BUSOFF",
       1.1,
       0,
       {.type = MessageType::Warng,
        .kind = MessageKind::ST,
        .id = 0xFFFFFFFF,
        .extended = true,
        .length = 4,
        .data = {0, 0, 0, 16},
        .comment = "BUSOFF"}},
      {"status by its identifier",
       "1) 10.5 Rx FFFFFFFF 4 00 00 00 10",
       1.1,
       0,
       {.type = MessageType::Warng,
        .kind = MessageKind::ST,
        .id = 0xFFFFFFFF,
        .extended = true,
        .length = 4,
        .data = {0, 0, 0, 16},
        .comment = "BUSOFF"}},
      {"error", "1) 10.5 Error 0001 2 0A B0", 1.1, 0, {.type = MessageType::Error, .kind = MessageKind::ER, .id = 1}},
      {"error by its word in front of the data",
       "1) 10.5 Rx 0001 2 ERROR 0A B0",
       1.1,
       0,
       {.type = MessageType::Error, .kind = MessageKind::ER, .id = 1}},
      {"a type word that says it is unknown", "1) 10.5 Unknown 0123 2 0A B0", 1.1, 0, {.type = MessageType::Unknown}},
      {"sent remote",
       "1) 10.5 Tx 0123 3 RTR",
       1.1,
       0,
       {.type = MessageType::Tx,
        .kind = MessageKind::RR,
        .direction = MessageDirection::Tx,
        .length = 3,
        .data = {},
        .remote = true}},
  };
  for (const Case& test : cases) {
    expectFrame(test);
  }
}

TEST(TrcParser, readsLinesOfVersion12) {
  expectFrame({"bus", "1) 10.5 7 Rx 0123 2 0A B0", 1.2, 0, {.bus = 7}});
  expectFrame({"status by its identifier",
               "1) 10.5 7 Rx FFFFFFFF 4 00 00 00 10",
               1.2,
               0,
               {.bus = 7,
                .type = MessageType::Warng,
                .kind = MessageKind::ST,
                .id = 0xFFFFFFFF,
                .extended = true,
                .length = 4,
                .data = {0, 0, 0, 16},
                .comment = "BUSOFF"}});
}

TEST(TrcParser, cutsALengthOf12To8) {
  expectFrame({"the rest of the bytes is after the data",
               "1) 10.5 1 Rx 0123 12 01 02 03 04 05 06 07 08 09 0A 0B 0C",
               1.2,
               0,
               {.length = 8, .data = countingBytes(8), .comment = "0C"}});
}

TEST(TrcParser, readsLinesOfVersion13) {
  const Case cases[] = {
      {"data", "1) 10.5 7 Rx 0123 - 2 0A B0", 1.3, 0, {.bus = 7}},
      {"reserved", "1) 10.5 7 Rx 0123 1F 2 0A B0", 1.3, 0, {.bus = 7, .reserved = 0x1F}},
      {"sent",
       "1) 10.5 7 Tx 0123 - 2 0A B0",
       1.3,
       0,
       {.bus = 7, .type = MessageType::Tx, .direction = MessageDirection::Tx}},
      {"remote",
       "1) 10.5 7 Rx 0123 - 5 RTR",
       1.3,
       0,
       {.bus = 7, .kind = MessageKind::RR, .length = 5, .data = {}, .remote = true}},
      {"error counters",
       "1) 10.5 7 Error 0000 - 2 0A B0",
       1.3,
       0,
       {.bus = 7, .type = MessageType::Error, .kind = MessageKind::EC, .id = 0}},
      {"error",
       "1) 10.5 7 Error 0008 - 2 0A B0",
       1.3,
       0,
       {.bus = 7, .type = MessageType::Error, .kind = MessageKind::ER, .id = 8}},
      {"no identifier makes a status",
       "1) 10.5 7 Rx FFFFFFFF - 2 0A B0",
       1.3,
       0,
       {.bus = 7, .id = 0xFFFFFFFF, .extended = true}},
      {"words after the data are skipped", "1) 10.5 7 Rx 0123 - 2 0A B0 words", 1.3, 0, {.bus = 7}},
  };
  for (const Case& test : cases) {
    expectFrame(test);
  }
}

TEST(TrcParser, readsLinesOfVersion20) {
  const Case cases[] = {
      {"data", "1 10.5 DT 0123 Rx 2 0A B0", 2.0, kTrcColumns20, {.bus = 0}},
      {"sent",
       "1 10.5 DT 0123 Tx 2 0A B0",
       2.0,
       kTrcColumns20,
       {.bus = 0, .type = MessageType::Tx, .direction = MessageDirection::Tx}},
      {"FD length",
       "1 10.5 FD 0123 Rx 12 01 02 03 04 05 06 07 08 09 0A 0B 0C",
       2.0,
       kTrcColumns20,
       {.bus = 0, .type = MessageType::Unknown, .kind = MessageKind::FD, .length = 12, .data = countingBytes(12)}},
      {"remote",
       "1 10.5 RR 0123 Rx 8",
       2.0,
       kTrcColumns20,
       {.bus = 0, .kind = MessageKind::RR, .length = 8, .data = {}, .remote = true}},
      {"error counters right after the direction",
       "1 10.5 EC          Rx    0A B0",
       2.0,
       kTrcColumns20,
       {.bus = 0, .type = MessageType::Error, .kind = MessageKind::EC, .id = 0}},
      {"error after three columns",
       "1 10.5 ER - Tx 5 01 02 03 04 05",
       2.0,
       kTrcColumns20,
       {.bus = 0,
        .type = MessageType::Error,
        .kind = MessageKind::ER,
        .id = 0xFFFFFFFF,
        .length = 5,
        .data = countingBytes(5)}},
      {"event",
       "1 10.5 EV  a  user's   note",
       2.0,
       kTrcColumns20,
       {.bus = 0,
        .type = MessageType::Unknown,
        .kind = MessageKind::EV,
        .direction = MessageDirection::None,
        .id = 0xFFFFFFFF,
        .length = 0,
        .data = {},
        .comment = "a user's note"}},
      {"without a $COLUMNS key there is no number", "10.5 DT 0123 Rx 2 0A B0", 2.0, 0, {.bus = 0}},
      {"a kind that says it is unknown",
       "1 10.5 Unknown 0123 Rx 2 0A B0",
       2.0,
       kTrcColumns20,
       {.bus = 0, .type = MessageType::Unknown, .kind = MessageKind::Unknown}},
  };
  for (const Case& test : cases) {
    expectFrame(test);
  }
}

TEST(TrcParser, readsLinesOfVersion21) {
  const Case cases[] = {
      {"data", "1 10.5 DT 3 0123 Rx - 2 0A B0", 2.1, kTrcColumns21, {.bus = 3}},
      {"reserved", "1 10.5 DT 3 0123 Rx 7F 2 0A B0", 2.1, kTrcColumns21, {.bus = 3, .reserved = 0x7F}},
      {"no bus", "1 10.5 DT - 0123 Rx - 2 0A B0", 2.1, kTrcColumns21, {.bus = 255}},
      {"a bus that is no number", "1 10.5 DT x 0123 Rx - 2 0A B0", 2.1, kTrcColumns21, {.bus = 255}},
      {"status",
       "1 10.5 ST 3 - Rx - 4 00 00 00 04",
       2.1,
       kTrcColumns21,
       {.bus = 3,
        .type = MessageType::Warng,
        .kind = MessageKind::ST,
        .id = 0xFFFFFFFF,
        .length = 4,
        .data = {0, 0, 0, 4},
        .comment = "BUSLIGHT"}},
      {"error",
       "1 10.5 ER 3 - Rx - 5 01 02 03 04 05",
       2.1,
       kTrcColumns21,
       {.bus = 3,
        .type = MessageType::Error,
        .kind = MessageKind::ER,
        .id = 0xFFFFFFFF,
        .length = 5,
        .data = countingBytes(5)}},
      {"without N the first token is the time",
       "10.5 DT 3 0123 Rx - 2 0A B0",
       2.1,
       kTrcColumns21 & ~trc_column::kNumber,
       {.bus = 3}},
      {"l is a length",
       "1 10.5 FD 3 0123 Rx - 9 01 02 03 04 05 06 07 08 09",
       2.1,
       (kTrcColumns21 & ~trc_column::kDlc) | trc_column::kLength,
       {.bus = 3, .type = MessageType::Unknown, .kind = MessageKind::FD, .length = 9, .data = countingBytes(9)}},
  };
  for (const Case& test : cases) {
    expectFrame(test);
  }
}

TEST(TrcParser, readsEveryDlcOfEveryFdKind) {
  constexpr std::uint32_t kLengths[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64};
  const struct {
    const char* word;
    MessageKind kind;
  } kinds[] = {{"FD", MessageKind::FD}, {"FB", MessageKind::FB}, {"FE", MessageKind::FE}, {"BI", MessageKind::BI}};
  for (const auto& kind : kinds) {
    for (std::uint32_t dlc = 0; dlc < 16; ++dlc) {
      const Bytes data = countingBytes(kLengths[dlc]);
      const std::string line =
          std::string("1 10.5 ") + kind.word + " 1 0123 Rx - " + std::to_string(dlc) + hexText(data);
      expectFrame({line.c_str(),
                   line.c_str(),
                   2.1,
                   kTrcColumns21,
                   {.type = MessageType::Unknown, .kind = kind.kind, .length = kLengths[dlc], .data = data}});
    }
  }
}

TEST(TrcParser, readsLinesOfVersion30) {
  const Case cases[] = {
      {"data", "1 10.5 DT 3 123 Rx - - - - - - 2 0A B0", 3.0, kTrcColumns30, {.bus = 3}},
      {"the CAN XL columns of other frames are skipped",
       "1 10.5 DT 3 123 Rx - zz 1 2 3 4 2 0A B0",
       3.0,
       kTrcColumns30,
       {.bus = 3}},
      {"CAN XL",
       "1 10.5 XL 3 123 Rx - 0A 0B DEADBEEF 1 0 1 0A B0",
       3.0,
       kTrcColumns30,
       {.bus = 3,
        .type = MessageType::Unknown,
        .kind = MessageKind::XL,
        .xl = {.vcid = 0x0A, .sdt = 0x0B, .acceptance = 0xDEADBEEF, .rrs = 1, .sec = 0}}},
      {"CAN XL without its fields",
       "1 10.5 XL 3 123 Rx - - - - - - 1 0A B0",
       3.0,
       kTrcColumns30,
       {.bus = 3, .type = MessageType::Unknown, .kind = MessageKind::XL}},
      {"error counters after all columns",
       "1 10.5 EC 3 - Rx - - - - - - 2 0A B0",
       3.0,
       kTrcColumns30,
       {.bus = 3, .type = MessageType::Error, .kind = MessageKind::EC, .id = 0}},
      {"error counters with fewer columns",
       "1 10.5 EC 3 - Rx - - 2 0A B0",
       3.0,
       kTrcColumns21 | trc_column::kSec,
       {.bus = 3, .type = MessageType::Error, .kind = MessageKind::EC, .id = 0}},
  };
  for (const Case& test : cases) {
    expectFrame(test);
  }
}

TEST(TrcParser, refusesWhatItCannotUnderstand) {
  const struct {
    const char* name;
    const char* line;
    double version;
    TrcColumnSet columns;
  } cases[] = {
      {"1.0: nothing but a number", "1)", 1.0, 0},
      {"1.0: no identifier", "1) 10.5", 1.0, 0},
      {"1.0: no length", "1) 10.5 0123", 1.0, 0},
      {"1.0: a byte too few", "1) 10.5 0123 2 0A", 1.0, 0},
      {"1.0: no hexadecimal byte", "1) 10.5 0123 2 0A G1", 1.0, 0},
      {"1.0: a byte above FF", "1) 10.5 0123 2 0A 100", 1.0, 0},
      {"1.0: no hexadecimal identifier", "1) 10.5 012G 2 0A B0", 1.0, 0},
      {"1.0: an identifier of more than 32 bits", "1) 10.5 100000000 2 0A B0", 1.0, 0},
      {"1.0: a length that is no number", "1) 10.5 0123 x 0A B0", 1.0, 0},
      {"1.0: a negative length", "1) 10.5 0123 -1 0A B0", 1.0, 0},
      {"1.0: a time that holds no number", "1) abc 0123 2 0A B0", 1.0, 0},
      {"1.0: a tab is no blank", "1)\t10.5\t0123\t2\t0A\tB0", 1.0, 0},
      {"1.1: a word that is no type", "1) 10.5 rx 0123 2 0A B0", 1.1, 0},
      {"1.1: Warning is not the word", "1) 10.5 Warning FFFFFFFF 4 00 00 00 04", 1.1, 0},
      {"1.2: a bus that is no number", "1) 10.5 - Rx 0123 2 0A B0", 1.2, 0},
      {"1.3: no reserved column", "1) 10.5 1 Rx 0123 2 0A B0", 1.3, 0},
      {"1.3: reserved out of range", "1) 10.5 1 Rx 0123 8000 2 0A B0", 1.3, 0},
      {"2.0: no kind", "1 10.5", 2.0, kTrcColumns20},
      {"2.0: a word that is no kind", "1 10.5 dt 0123 Rx 2 0A B0", 2.0, kTrcColumns20},
      {"2.0: a word that is no direction", "1 10.5 DT 0123 RX 2 0A B0", 2.0, kTrcColumns20},
      {"2.0: error counters of one byte", "1 10.5 EC Rx 0A", 2.0, kTrcColumns20},
      {"2.0: bytes of an error are pairs", "1 10.5 ER Rx 1 02 03 04 05", 2.0, kTrcColumns20},
      {"2.1: no bus", "1 10.5 EV", 2.1, kTrcColumns21},
      {"2.1: fewer bytes than the code says", "1 10.5 FD 1 0123 Rx - 9 01 02 03 04 05 06 07 08", 2.1, kTrcColumns21},
      {"2.1: a code that there is not", "1 10.5 RR 1 0123 Rx - 16", 2.1, kTrcColumns21},
      {"2.1: a status of three bytes", "1 10.5 ST 1 - Rx - 4 00 00 00", 2.1, kTrcColumns21},
      {"3.0: a CAN XL field that is no number", "1 10.5 XL 1 123 Rx - x - - - - 0 0A", 3.0, kTrcColumns30},
      {"3.0: a virtual network above FF", "1 10.5 XL 1 123 Rx - 100 - - - - 0 0A", 3.0, kTrcColumns30},
      {"3.0: a CAN XL code above 2047", "1 10.5 XL 1 123 Rx - - - - - - 2048 0A", 3.0, kTrcColumns30},
      {"blanks", "    ", 2.1, kTrcColumns21},
  };
  for (const auto& test : cases) {
    const BrixMessage message = parsed(test.line, test.version, test.columns);
    EXPECT_FALSE(message.valid) << test.name;
    EXPECT_EQ(message.parsingText, test.line) << test.name;
  }
}

TEST(TrcParser, raisesNothingForABadLine) {
  const std::string before = lastErrorText(platform::currentThreadId());
  EXPECT_FALSE(parsed("1 10.5 DT 1 012G Rx - 2 0A B0", 2.1, kTrcColumns21).valid);
  EXPECT_EQ(lastErrorText(platform::currentThreadId()), before);
}

TEST(TrcParser, keepsTheBusOfALineThatIsBadAfterIt) {
  EXPECT_EQ(parsed("1 10.5 DT 3 0123 Rx - 2 0A", 2.1, kTrcColumns21).bus, 3U);
}

TEST(TrcParser, readsNoLineOfAnUnknownVersion) {
  for (const double version : {0.0, 0.9, 1.4, 2.2, 2.5, 3.1}) {
    EXPECT_FALSE(parsed("1) 10.5 0123 2 0A B0", version).valid) << version;
  }
}

TEST(TrcParser, readsTimesAsTheStandardConversionDoes) {
  EXPECT_EQ(parsed("1) 12.5x 0123 0", 1.0).timeOffset, RealMilliseconds(12.5));
  EXPECT_EQ(parsed("1) 1e3 0123 0", 1.0).timeOffset, RealMilliseconds(1000.0));
  EXPECT_EQ(parsed("1) -3 0123 0", 1.0).timeOffset, RealMilliseconds(-3.0));
}

TEST(TrcMessage, freshMessageHoldsItsDefaults) {
  const BrixMessage message;
  EXPECT_EQ(message.id, 0xFFFFFFFFU);
  EXPECT_EQ(message.length, 0U);
  EXPECT_EQ(message.type, MessageType::Unknown);
  EXPECT_EQ(message.kind, MessageKind::Unknown);
  EXPECT_EQ(message.bus, 1U);
  EXPECT_EQ(message.reserved, -1);
  EXPECT_EQ(message.columnSet, 734U);
  EXPECT_FALSE(message.valid);
}

TEST(TrcMessage, resetGivesAFreshMessage) {
  BrixMessage message = parsed("1 10.5 XL 3 12345 Tx 1 0A 0B DEADBEEF 1 0 1 0A B0", 3.0, kTrcColumns30);
  message.comment = "x";
  message.remote = true;
  message.reset();
  const BrixMessage fresh;
  EXPECT_EQ(message.id, fresh.id);
  EXPECT_EQ(message.valid, fresh.valid);
  EXPECT_EQ(message.length, fresh.length);
  EXPECT_EQ(message.data, fresh.data);
  EXPECT_EQ(message.bus, fresh.bus);
  EXPECT_EQ(message.type, fresh.type);
  EXPECT_EQ(message.kind, fresh.kind);
  EXPECT_EQ(message.direction, fresh.direction);
  EXPECT_EQ(message.extended, fresh.extended);
  EXPECT_EQ(message.timeOffset, fresh.timeOffset);
  EXPECT_EQ(message.comment, fresh.comment);
  EXPECT_EQ(message.parsingText, fresh.parsingText);
  EXPECT_EQ(message.reserved, fresh.reserved);
  EXPECT_EQ(message.columnBased, fresh.columnBased);
  EXPECT_EQ(message.columnSet, fresh.columnSet);
  EXPECT_EQ(message.remote, fresh.remote);
  EXPECT_TRUE(message.xl == fresh.xl);
}

TEST(TrcMessage, validatesForATargetVersion) {
  const struct {
    const char* name;
    const char* line;
    double version;
    TrcColumnSet columns;
    bool fits[7];  // 1.0, 1.1, 1.2, 1.3, 2.0, 2.1, 3.0
  } cases[] = {
      {"data", "1) 1 1 Rx 0123 0", 1.2, 0, {true, true, true, true, true, true, true}},
      {"no type", "1) 1 1 Unknown 0123 0", 1.2, 0, {false, false, false, false, false, false, false}},
      {"FD", "1 1 FD 1 0123 Rx - 1 00", 2.1, kTrcColumns21, {false, false, false, false, true, true, true}},
      {"a long data frame",
       "1 1 DT 0123 Rx 12 01 02 03 04 05 06 07 08 09 0A 0B 0C",
       2.0,
       kTrcColumns20,
       {false, false, false, true, false, true, true}},
      {"a long FD frame",
       "1 1 FD 0123 Rx 12 01 02 03 04 05 06 07 08 09 0A 0B 0C",
       2.0,
       kTrcColumns20,
       {false, false, false, false, true, true, true}},
      {"XL", "1 1 XL 1 123 Rx - - - - - - 0 00", 3.0, kTrcColumns30, {false, false, false, false, false, false, true}},
      {"event", "1 1 EV 1 text", 2.1, kTrcColumns21, {false, false, false, false, true, true, true}},
      {"an unknown kind",
       "1 1 Unknown 1 0123 Rx - 0",
       2.1,
       kTrcColumns21,
       {false, false, false, false, false, false, false}},
      {"not valid", "1 1 DT 1 0123", 2.1, kTrcColumns21, {false, false, false, false, false, false, false}},
  };
  constexpr double kVersions[] = {1.0, 1.1, 1.2, 1.3, 2.0, 2.1, 3.0};
  for (const auto& test : cases) {
    const BrixMessage message = parsed(test.line, test.version, test.columns);
    for (std::size_t index = 0; index < std::size(kVersions); ++index) {
      EXPECT_EQ(message.ValidateForTargetVersion(kVersions[index]), test.fits[index])
          << test.name << " in " << kVersions[index];
    }
    for (const double unknown : {0.0, 1.05, 2.5, 3.1}) {
      EXPECT_FALSE(message.ValidateForTargetVersion(unknown)) << test.name << " in " << unknown;
    }
  }
}

}  // namespace
}  // namespace xlatr
