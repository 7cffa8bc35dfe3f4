#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "formats/asc/asc_message.hpp"
#include "platform/thread.hpp"
#include "util/failures.hpp"

namespace xlatr {
namespace {

using Bytes = std::vector<std::uint8_t>;

AscMessage parsed(std::string_view line, double version, bool hexBase = true) {
  AscMessage message;
  message.reset();
  message.hexBase = hexBase;
  message.parseLine(line, version);
  return message;
}

// What a line is expected to become. Fields that a case does not name are those of a plain received data frame.
struct Frame {
  double time = 0.001;
  std::uint32_t bus = 1;
  MessageType type = MessageType::Rx;
  MessageDirection direction = MessageDirection::Rx;
  std::uint32_t id = 0x100;
  bool extended = false;
  std::uint32_t length = 2;
  Bytes data = {0x01, 0x02};
  std::uint32_t flags = 0;
  AscFrameClass frameClass = AscFrameClass::None;
  AscLineKind lineKind = AscLineKind::StandardFrame;
  std::string comment = {};
};

struct Case {
  const char* name;
  const char* line;
  double version;
  bool hexBase;
  Frame expected;
};

constexpr AscLineKind kExtended = AscLineKind::ExtendedFrame;
constexpr AscFrameClass kFd = AscFrameClass::Fd;
const Frame kRemote{.length = 0, .data = {}, .flags = 0x10};

const Case kFrames[] = {
    {"data frame of 7.0", "0.001000 1  100             Rx   d 2 01 02", 7.0, true, {}},
    {"decimal base", "0.001000 1  100             Rx   d 2 01 02", 7.0, false, {.id = 100}},
    {"decimal data", "0.001 1 100 Rx d 2 255 16", 7.0, false, {.id = 100, .data = {255, 16}}},
    {"decimal length",
     "0.001 1 100 Rx d 10 1 2 3 4 5 6 7 8 9 10",
     7.0,
     false,
     {.id = 100, .length = 10, .data = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}}},
    {"extended", "0.001 1 101x Rx d 2 01 02", 7.0, true, {.id = 0x101, .extended = true, .lineKind = kExtended}},
    {"extended of 29 bits",
     "0.001 1 1FFFFFFFx Rx d 2 01 02",
     7.0,
     true,
     {.id = 0x1FFFFFFF, .extended = true, .lineKind = kExtended}},
    {"sent", "0.001 1 100 Tx d 2 01 02", 7.0, true, {.type = MessageType::Tx, .direction = MessageDirection::Tx}},
    {"no data", "0.001 1 100 Rx d 0", 7.0, true, {.length = 0, .data = {}}},
    {"tabs between tokens", "0.001\t1\t 100\tRx\td\t2\t01\t02", 7.0, true, {}},
    {"lower-case digits", "0.001 1 ab Rx d 1 cd", 7.0, true, {.id = 0xAB, .length = 1, .data = {0xCD}}},
    {"length and bit count after the data",
     "0.001 1 100 Rx d 2 01 02 Length = 180000 BitCount = 93 ID = 256",
     7.0,
     true,
     {}},
    {"bus in hexadecimal", "0.001 0x1F 100 Rx d 2 01 02", 7.0, true, {.bus = 31}},
    {"time that is invalid", "time 1 100 Rx d 2 01 02", 7.0, true, {.time = 0.0}},
    {"time with a tail", "0.001s 1 100 Rx d 2 01 02", 7.0, true, {}},
    {"other kind word than d", "0.001 1 100 Rx x 2 01 02", 7.0, true, {}},
    {"version 0", "0.001 1 100 Rx d 2 01 02", 0.0, true, {}},
    {"version 0.9", "0.001 1 100 Rx d 2 01 02", 0.9, true, {}},
    {"version 7.9", "0.001 1 100 Rx d 2 01 02", 7.9, true, {}},
    {"type word Error", "0.001 1 100 Error d 2 01 02", 7.0, true, {.type = MessageType::Error}},
    {"remote frame of 7.0", "0.001 1 100 Rx r", 7.0, true, kRemote},
    {"remote frame of 7.0 with a length", "0.001 1 100 Rx r 8", 7.0, true, kRemote},
    {"remote frame of 7.0 with an ID item, which is not looked at", "0.001 1 100 Rx r ID = 101x", 7.0, true, kRemote},
    {"remote frame of 7.5 with an ID item, whose mark counts",
     "0.001 1 100 Rx r 8 Length = 0 ID = 257x",
     7.5,
     true,
     {.extended = true, .length = 0, .data = {}, .flags = 0x10, .lineKind = kExtended}},

    {"data frame of 8.0", "0.001 1 100 Rx d 2 01 02", 8.0, true, {}},
    {"hexadecimal length of 8.0 in decimal base",
     "0.001 1 100 Rx d a 1 2 3 4 5 6 7 8 9 10",
     8.0,
     false,
     {.id = 100, .length = 10, .data = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}}},
    {"name with an ID item in 8.0",
     "0.001 1 EngineData Rx d 2 01 02 Length = 18 BitCount = 93 ID = 256",
     8.0,
     true,
     {.id = 256}},
    {"name with an extended ID item in 8.0",
     "0.001 1 EngineData Rx d 2 01 02 ID = 256x",
     8.0,
     true,
     {.id = 256, .extended = true, .lineKind = kExtended}},
    {"ID item that ends in X", "0.001 1 EngineData Rx d 2 01 02 ID = 256X", 8.0, true, {.id = 256}},
    {"ID item with a prefix, which is cut at its x",
     "0.001 1 100 Rx d 2 01 02 ID = 0x123",
     8.0,
     true,
     {.id = 0, .extended = true, .lineKind = kExtended}},
    {"number with an ID item, which wins", "0.001 1 100 Rx d 2 01 02 ID = 5", 8.0, true, {.id = 5}},
    {"ID item that holds no number", "0.001 1 100 Rx d 2 01 02 ID = none", 8.0, true, {}},
    {"remote frame below 8.5 has no length", "0.001 1 100 Rx r 8", 8.1, true, kRemote},
    {"remote frame of 8.5", "0.001 1 100 Rx r 8", 8.5, true, {.length = 8, .data = {}, .flags = 0x10}},
    {"remote frame of 15.0 in decimal base",
     "0.001 1 100 Rx r f",
     15.0,
     false,
     {.id = 100, .length = 15, .data = {}, .flags = 0x10}},

    {"CANFD line of a classic frame",
     "0.001 CANFD 1 Rx 100 0 0 2 2 01 02 0 0 200000 0 0 0 0 0",
     8.1,
     true,
     {.frameClass = kFd}},
    {"CANFD line with BRS and ESI",
     "0.001 CANFD 1 Tx 1ABCDx 1 1 2 2 01 02 130000 130 7000 0 0 0 0 0",
     8.1,
     true,
     {.type = MessageType::Tx,
      .direction = MessageDirection::Tx,
      .id = 0x1ABCD,
      .extended = true,
      .flags = 0x7000,
      .frameClass = kFd,
      .lineKind = kExtended}},
    {"CANFD line with a name",
     "0.001 CANFD 1 Rx 100 EngineData 1 0 2 2 01 02 0 0 3000 0 0 0 0 0",
     8.1,
     true,
     {.flags = 0x3000, .frameClass = kFd, .comment = "EngineData"}},
    {"flags beyond the mask",
     "0.001 CANFD 1 Rx 100 0 0 2 2 01 02 0 0 FFF01000 0 0 0 0 0",
     8.1,
     true,
     {.flags = 0x1000, .frameClass = kFd}},
    {"CANFD remote frame",
     "0.001 CANFD 1 Rx 100 0 0 8  0        0    0       16 0 0 0 0 0",
     8.1,
     true,
     {.length = 0, .data = {}, .flags = 0x16, .frameClass = kFd}},
    {"CANFD line in decimal base",
     "0.001 CANFD 1 Rx 100 0 0 2 2 200 02 0 0 1000 0 0 0 0 0",
     8.1,
     false,
     {.data = {200, 2}, .flags = 0x1000, .frameClass = kFd}},
    {"length in hexadecimal",
     "0.001 CANFD 1 Rx 100 0 0 2 0x2 01 02 0 0 1000 0 0 0 0 0",
     8.1,
     true,
     {.flags = 0x1000, .frameClass = kFd}},

    {"error counters",
     "0.5 CAN 1 Status:error counter change (Zelkworks) - TxErr: 3 RxErr: 4",
     7.0,
     true,
     {.time = 0.5,
      .type = MessageType::Error,
      .direction = MessageDirection::None,
      .id = 0xFFFFFFFF,
      .length = 0,
      .data = {},
      .lineKind = AscLineKind::Status}},
    {"status",
     "0.5 CAN 2 Status:BusOff, BusPassive (Zelkworks)",
     5.0,
     true,
     {.time = 0.5,
      .bus = 2,
      .type = MessageType::Warng,
      .direction = MessageDirection::None,
      .id = 0xFFFFFFFF,
      .length = 0,
      .data = {},
      .lineKind = AscLineKind::Status,
      .comment = "BUSOFF, BUSPASSIVE (ZELKWORKS)"}},
    {"error frame with an ECC",
     "0.5 1 ErrorFrame ECC: 10100110",
     7.0,
     true,
     {.time = 0.5,
      .type = MessageType::Error,
      .id = 0xFFFFFFFF,
      .length = 0,
      .data = {},
      .lineKind = AscLineKind::ErrorFrame}},
};

TEST(AscParser, readsFramesOfAllForms) {
  for (const Case& test : kFrames) {
    SCOPED_TRACE(test.name);
    const AscMessage message = parsed(test.line, test.version, test.hexBase);
    EXPECT_TRUE(message.valid);
    EXPECT_FALSE(message.symbolicId);
    EXPECT_EQ(message.time, RealSeconds(test.expected.time));
    EXPECT_EQ(message.bus, test.expected.bus);
    EXPECT_EQ(message.type, test.expected.type);
    EXPECT_EQ(message.direction, test.expected.direction);
    EXPECT_EQ(message.id, test.expected.id);
    EXPECT_EQ(message.extended, test.expected.extended);
    EXPECT_EQ(message.length, test.expected.length);
    EXPECT_EQ(message.data, test.expected.data);
    EXPECT_EQ(message.flags, test.expected.flags);
    EXPECT_EQ(message.frameClass, test.expected.frameClass);
    EXPECT_EQ(message.lineKind, test.expected.lineKind);
    EXPECT_EQ(message.commentText, test.expected.comment);
    EXPECT_EQ(message.parsingText, test.line);
    EXPECT_EQ(message.fileVersion, test.version);
  }
}

struct MarkedLine {
  const char* line;
  AscLineKind kind;
};

const MarkedLine kMarkedLines[] = {
    {"0.5 1 Statistic: D 5 R 0 XD 0", AscLineKind::Statistic},
    {"0.5 1 OverloadFrame", AscLineKind::OverloadFrame},
    {"0.5 CANFD 1 Rx ErrorFrame Not Acknowledge error", AscLineKind::FdErrorFrame},
    {"0.5 log trigger event", AscLineKind::LogTriggerEvent},
    {"0.5 TriggerEvent: 1", AscLineKind::TriggerEvent},
    {"0.5 log direct start (0ms)", AscLineKind::LogDirectStart},
    {"0.5 log direct stop (0ms)", AscLineKind::LogDirectStop},
    {"Begin TriggerBlock Wed Mar 5 10:11:12.123 2025", AscLineKind::BlockBegin},
    {"End TriggerBlock", AscLineKind::BlockEnd},
    {"0.5 EnvVar := 1", AscLineKind::EnvironmentVariable},
    {"0.5 SV: 1 0 1 Speed = 5", AscLineKind::SystemVariable},
    {"0.5 Space::Name = 5", AscLineKind::Macro},
    {"0.5 GPS device 1", AscLineKind::GpsDevice},
    {"0.5 GPS-Device 1", AscLineKind::GpsDevice},
    {"0.5 Comment: 1 text", AscLineKind::Comment},
    {"0.5 GMGroup a", AscLineKind::Marker},
    {"0.5 GMMarker a", AscLineKind::Marker},
    {"0.5 GMDescription a", AscLineKind::Marker},
    {"0.5 TFS: [1] passed", AscLineKind::TestFeatureSet},
};

TEST(AscParser, tellsLinesThatAreNoFramesApart) {
  for (const MarkedLine& test : kMarkedLines) {
    for (const double version : {0.0, 5.0, 7.0, 8.1}) {
      SCOPED_TRACE(test.line);
      const AscMessage message = parsed(test.line, version);
      EXPECT_FALSE(message.valid);
      EXPECT_EQ(message.lineKind, test.kind);
      EXPECT_EQ(message.parsingText, test.line);
    }
  }
}

TEST(AscParser, takesTheFirstMarkThatALineHolds) {
  EXPECT_EQ(parsed("TriggerEvent log trigger event", 7.0).lineKind, AscLineKind::LogTriggerEvent);
  EXPECT_EQ(parsed("Statistic: sv: ::", 7.0).lineKind, AscLineKind::SystemVariable);
  EXPECT_EQ(parsed("a :: b := c", 7.0).lineKind, AscLineKind::EnvironmentVariable);
  EXPECT_EQ(parsed("OverloadFrame Statistic: 1", 7.0).lineKind, AscLineKind::Statistic);
  EXPECT_EQ(parsed("x CANFD ErrorFrame OverloadFrame", 7.0).lineKind, AscLineKind::OverloadFrame);
}

struct BadLine {
  const char* name;
  const char* line;
  double version;
};

const BadLine kBadLines[] = {
    {"version 5", "0.001 1 100 Rx d 2 01 02", 5.0},
    {"version 1", "0.001 1 100 Rx d 2 01 02", 1.0},
    {"version 6.9", "0.001 1 100 Rx d 2 01 02", 6.9},
    {"negative version", "0.001 1 100 Rx d 2 01 02", -1.0},
    {"bus that is invalid", "0.001 a 100 Rx d 2 01 02", 7.0},
    {"bus above 255", "0.001 256 100 Rx d 2 01 02", 7.0},
    {"binary bus", "0.001 0b1 100 Rx d 2 01 02", 7.0},
    {"bus that ends in h", "0.001 10h 100 Rx d 2 01 02", 7.0},
    {"hexadecimal bus in 8.0", "0.001 0x1 100 Rx d 2 01 02", 8.0},
    {"type word in lower case", "0.001 1 100 rx d 2 01 02", 7.0},
    {"type word Warning", "0.001 1 100 Warning d 2 01 02", 7.0},
    {"identifier that is a name", "0.001 1 EngineData Rx d 2 01 02", 7.0},
    {"identifier above 32 bits", "0.001 1 100000000 Rx d 2 01 02", 7.0},
    {"identifier that is invalid", "0.001 1 FFFFFFFF Rx r ID = 5", 7.5},
    {"length that is invalid", "0.001 1 100 Rx d g 01 02", 7.0},
    {"length above 255", "0.001 1 100 Rx d 100 01 02", 7.0},
    {"byte of one digit", "0.001 1 100 Rx d 2 01 2", 7.0},
    {"byte of three digits", "0.001 1 100 Rx d 2 01 002", 7.0},
    {"byte that is invalid", "0.001 1 100 Rx d 2 01 0G", 7.0},
    {"remote length that is invalid", "0.001 1 100 Rx r x", 8.5},
    {"comment", "// a comment of a conversion", 7.0},
    {"comment in 8", "// a comment", 8.0},
    {"CANFD line in 7.0", "0.001 CANFD 1 Rx 100 0 0 2 2 01 02 0 0 1000 0 0 0 0 0", 7.0},
    {"CANFD in another place", "0.001 x CANFD 1 Rx 100 0 0 2 2 01 02 0 0 1000 0 0 0 0 0", 8.1},
    {"CANFD bus", "0.001 CANFD a Rx 100 0 0 2 2 01 02 0 0 1000 0 0 0 0 0", 8.1},
    {"CANFD type", "0.001 CANFD 1 RX 100 0 0 2 2 01 02 0 0 1000 0 0 0 0 0", 8.1},
    {"CANFD identifier", "0.001 CANFD 1 Rx Name 0 0 2 2 01 02 0 0 1000 0 0 0 0 0", 8.1},
    {"CANFD length", "0.001 CANFD 1 Rx 100 0 0 2 x 01 02 0 0 1000 0 0 0 0 0", 8.1},
    {"CANFD data", "0.001 CANFD 1 Rx 100 0 0 2 2 01 0 0 0 1000 0 0 0 0 0", 8.1},
    {"CANFD flags", "0.001 CANFD 1 Rx 100 0 0 2 2 01 02 0 0 flags 0 0 0 0 0", 8.1},
    {"status of another maker", "0.5 CAN 1 Status:chip status", 7.0},
    {"status with two colons", "0.5 CAN 1 Status:a:b (Zelkworks)", 7.0},
    {"status without a bus", "0.5 CAN x Status:BusOff (Zelkworks)", 7.0},
    {"error counters that are none", "0.5 CAN 1 Status:error counter change (Zelkworks) - TxErr: x RxErr: 4", 7.0},
    {"error counters with a third", "0.5 CAN 1 Status:error counter change (Zelkworks) - TxErr: 3 RxErr: 4 x: 5", 7.0},
    {"error counters without a word between", "0.5 CAN 1 Status:error counter change (Zelkworks) - TxErr: 3 : 4", 7.0},
    {"error frame without a pattern", "0.5 1 ErrorFrame", 7.0},
    {"error frame of a CANFD line without blanks", "0.5 1 xCANFD ErrorFrame ECC: 10100110 x x", 7.0},
    {"error frame with a bad pattern", "0.5 1 ErrorFrame ECC: 10100112", 7.0},
    {"error frame with a bad bus", "0.5 x ErrorFrame ECC: 10100110", 7.0},
    {"error frame with the pattern elsewhere", "0.5 1 ECC: ErrorFrame 10100110", 7.0},
    {"error frame with flags whose bit 0 is clear", "0.5 1 ErrorFrame ECC: 1 Flags = 0x2 Code = 0x82", 7.0},
    {"error frame without the flags item", "0.5 1 ErrorFrame ECC: 1 Flags 1 Code = 0x82", 7.0},
    {"error frame with flags but no code", "0.5 1 ErrorFrame ECC: 1 Flags = 0x3", 7.0},
    {"error frame with bad flags", "0.5 1 ErrorFrame ECC: 1 Flags = y Code = 0x82", 7.0},
    {"error frame with a bad code", "0.5 1 ErrorFrame ECC: 1 Flags = 1 Code = y", 7.0},
};

TEST(AscParser, keepsTheTextOfALineThatItDoesNotUnderstand) {
  const std::string before = lastErrorText(platform::currentThreadId());
  for (const BadLine& test : kBadLines) {
    SCOPED_TRACE(test.name);
    const AscMessage message = parsed(test.line, test.version);
    EXPECT_FALSE(message.valid);
    EXPECT_EQ(message.parsingText, test.line);
  }
  EXPECT_EQ(lastErrorText(platform::currentThreadId()), before);
}

TEST(AscParser, leavesAnEmptyLineAsReset) {
  const AscMessage message = parsed("", 7.0);
  EXPECT_FALSE(message.valid);
  EXPECT_EQ(message.parsingText, "");
  EXPECT_EQ(message.fileVersion, 0.0);
  EXPECT_EQ(message.bus, 0U);
  EXPECT_EQ(message.id, 0xFFFFFFFFU);
  EXPECT_EQ(message.type, MessageType::Unknown);
}

TEST(AscParser, endsAtALineThatIsTooShort) {
  const struct {
    const char* name;
    const char* line;
    double version;
  } cases[] = {
      {"blanks alone", "  ", 7.0},
      {"one word", "word", 7.0},
      {"no identifier", "0.001 1", 7.0},
      {"no type", "0.001 1 100", 7.0},
      {"no kind", "0.001 1 100 Rx", 7.0},
      {"no length", "0.001 1 100 Rx d", 7.0},
      {"a byte missing", "0.001 1 100 Rx d 2 01", 7.0},
      {"a decimal byte missing", "0.001 1 100 Rx d 2 01", 0.0},
      {"ID item without a value", "0.001 1 100 Rx r ID =", 7.5},
      {"one word in 8", "word", 8.0},
      {"no identifier in 8", "0.001 1", 8.0},
      {"no remote length in 8.5", "0.001 1 100 Rx r", 8.5},
      {"a byte missing in 8", "0.001 1 100 Rx d 2 01", 8.0},
      {"ID item without a value in 8", "0.001 1 100 Rx d 2 ID =", 8.0},
      {"CANFD without anything", "0.001 CANFD ", 8.0},
      {"CANFD without BRS", "0.001 CANFD 1 Rx 100", 8.0},
      {"CANFD without a length", "0.001 CANFD 1 Rx 100 0 0 2", 8.0},
      {"CANFD without flags", "0.001 CANFD 1 Rx 100 0 0 2 2 01 02 0 0", 8.0},
      {"one word with an error frame", "ErrorFrameECC", 7.0},
      {"status without a bus", " CAN Status:x(Zelkworks)", 7.0},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    try {
      static_cast<void>(parsed(test.line, test.version, test.version > 0.0));
      ADD_FAILURE() << "raised nothing";
    } catch (const std::out_of_range& failure) {
      EXPECT_STREQ(failure.what(), "invalid vector subscript");
    }
  }
}

TEST(AscParser, refusesACanFdLineWithSixOrEightFieldsAfterTheFlags) {
  const std::string upToFlags = "0.001 CANFD 1 Rx 100 0 0 2 2 01 02 0 0 1000";
  const struct {
    const char* tail;
    bool valid;
  } cases[] = {
      {"", false}, {" 0 0 0 0", false}, {" 0 0 0 0 0", true}, {" 0 0 0 0 0 0", false}, {" 0 0 0 0 0 0 0 0", false},
  };
  for (const auto& test : cases) {
    const AscMessage message = parsed(upToFlags + test.tail, 8.1);
    EXPECT_EQ(message.valid, test.valid) << test.tail;
    EXPECT_EQ(message.data, (Bytes{1, 2})) << test.tail;
    EXPECT_EQ(message.flags, 0x1000U) << test.tail;
  }
}

TEST(AscParser, readsErrorCounters) {
  const AscMessage message = parsed("0.5 CAN 1 Status:error counter change (Zelkworks) - TxErr: 3 RxErr: 4", 7.0);
  EXPECT_EQ(message.txErrors, 3U);
  EXPECT_EQ(message.rxErrors, 4U);
}

// "0" is a number, " 0" is not, and the count of receive errors includes its blank.
TEST(AscParser, readsNoErrorCountersWithAReceiveCountOf0) {
  EXPECT_FALSE(parsed("0.5 CAN 1 Status:error counter change (Zelkworks) - TxErr: 3 RxErr: 0", 7.0).valid);
  EXPECT_TRUE(parsed("0.5 CAN 1 Status:error counter change (Zelkworks) - TxErr: 0 RxErr: 3", 7.0).valid);
}

TEST(AscParser, takesTheErrorCodeFromTheEccOrTheCodeItem) {
  const struct {
    const char* line;
    std::uint32_t code;
  } cases[] = {
      {"0.5 1 ErrorFrame ECC: 10100110", 0xA6},
      {"0.5 1 ErrorFrame ECC: 11111111111", 0x7FF},
      {"0.5 1 ErrorFrame ECC: 1 Flags = 0x3 CodeExt = 0x20 Code = 0x82 ID = 0", 0x82},
      {"0.5 1 ErrorFrame ECC: 1 Flags = 0X3 Code = 0X82", 0x82},
      {"0.5 1 ErrorFrame ECC: 1 Flags = 1 Code = 82", 82},
  };
  for (const auto& test : cases) {
    const AscMessage message = parsed(test.line, 7.0);
    EXPECT_TRUE(message.valid) << test.line;
    EXPECT_EQ(message.errorCode, test.code) << test.line;
    EXPECT_EQ(message.type, MessageType::Error) << test.line;
    EXPECT_EQ(message.direction, MessageDirection::Rx) << test.line;
    EXPECT_EQ(message.lineKind, AscLineKind::ErrorFrame) << test.line;
  }
}

TEST(AscParser, saysWhenTheIdentifierFieldHoldsAName) {
  const AscMessage named = parsed("0.001 1 EngineData Rx d 2 01 02", 7.0);
  EXPECT_FALSE(named.valid);
  EXPECT_TRUE(named.symbolicId);
  EXPECT_EQ(named.id, 0xFFFFFFFFU);
  EXPECT_FALSE(parsed("0.001 1 EngineData Rx d 2 01 0G", 7.0).symbolicId);
}

// From 7.5 on an ID item clears the mark of a name, but the identifier is read from the name once more.
TEST(AscParser, readsTheIdentifierFieldOfARemoteFrameFrom75On) {
  const AscMessage named = parsed("0.001 1 EngineData Rx r ID = 256", 7.5);
  EXPECT_FALSE(named.valid);
  EXPECT_FALSE(named.symbolicId);
  EXPECT_EQ(named.id, 0xFFFFFFFFU);
  const AscMessage numbered = parsed("0.001 1 100 Rx r ID = 257", 7.5);
  EXPECT_TRUE(numbered.valid);
  EXPECT_EQ(numbered.id, 0x100U);
  EXPECT_FALSE(parsed("0.001 1 EngineData Rx r ID = 256", 7.4).valid);
  EXPECT_TRUE(parsed("0.001 1 EngineData Rx r ID = 256", 7.4).symbolicId);
}

TEST(AscParser, looksForTheIdItemFromTheSeventhTokenOn) {
  const AscMessage sixth = parsed("0.001 1 100 Rx r ID = 5", 8.0);
  EXPECT_TRUE(sixth.valid);
  EXPECT_EQ(sixth.id, 0x100U);
  EXPECT_EQ(parsed("0.001 1 100 Rx r 0 ID = 5", 8.0).id, 5U);
}

TEST(AscParser, refusesANumberThatEndsInH) {
  EXPECT_FALSE(parsed("0.001 10h 100 Rx d 2 01 02", 7.0).valid);
  EXPECT_EQ(parsed("0.001 1 100 Rx d 2 01 02 ID = 10h", 8.0).id, 0x100U);
}

TEST(AscMessage, sumsRelativeTimes) {
  AscMessage message;
  message.timestampsMode = AscTimestamps::Relative;
  RealSeconds reference{};
  message.time = RealSeconds(0.1);
  EXPECT_TRUE(message.AdjustTime(reference));
  EXPECT_EQ(message.time, RealSeconds(0.1));
  message.time = RealSeconds(0.2);
  EXPECT_TRUE(message.AdjustTime(reference));
  EXPECT_DOUBLE_EQ(message.time.count(), 0.3);
  EXPECT_EQ(reference, message.time);
  message.timestampsMode = AscTimestamps::Absolute;
  EXPECT_FALSE(message.AdjustTime(reference));
  EXPECT_DOUBLE_EQ(message.time.count(), 0.3);
  EXPECT_DOUBLE_EQ(reference.count(), 0.3);
}

}  // namespace
}  // namespace xlatr
