#include "formats/native/zelk_message.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/btrc_image.hpp"
#include "util/failures.hpp"

namespace xlatr {
namespace {

using namespace test::btrc;
using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(std::string_view text) {
  return {text.begin(), text.end()};
}

// The message of a record, which is of the type that its bytes say.
ZelkBinaryMessage read(const std::string& record, std::int8_t exponent = -6) {
  const Bytes bytes = bytesOf(record);
  const auto type = static_cast<RecordType>(bytes[2] | bytes[3] << 8);
  ZelkBinaryMessage message;
  message.readRecord(type, bytes, TimeScale(exponent));
  return message;
}

TEST(ZelkMessage, isEmptyAtFirst) {
  const ZelkBinaryMessage message;
  EXPECT_EQ(message.id, 0xFFFFFFFF);
  EXPECT_EQ(message.length, 0U);
  EXPECT_EQ(message.type, MessageType::Unknown);
  EXPECT_EQ(message.kind, MessageKind::Unknown);
  EXPECT_EQ(message.bus, 1U);
  EXPECT_FALSE(message.valid);
  EXPECT_EQ(message.GetRecordType(), RecordType::Invalid);
  EXPECT_EQ(message.getParsingBytesString(), "");
}

TEST(ZelkMessage, takesAReceivedFrame) {
  const ZelkBinaryMessage message =
      read(received(1, 5000, frameInfo(3, 2, 2, 0x18FEF100), std::string("\xAA\xBB\0\0", 4)));
  EXPECT_TRUE(message.getValid());
  EXPECT_EQ(message.GetRecordType(), RecordType::CanRxMsg);
  EXPECT_EQ(message.type, MessageType::Rx);
  EXPECT_EQ(message.direction, MessageDirection::Rx);
  EXPECT_EQ(message.kind, MessageKind::DT);
  EXPECT_EQ(message.id, 0x18FEF100U);
  EXPECT_TRUE(message.extended);
  EXPECT_FALSE(message.remote);
  EXPECT_EQ(message.length, 2U);
  EXPECT_EQ(message.data, (Bytes{0xAA, 0xBB, 0, 0})) << "all that the record holds, padding included";
  EXPECT_EQ(message.bus, 3U) << "counted from 0";
  EXPECT_EQ(message.timestamp, UnsignedMicroseconds(5000U));
  EXPECT_EQ(message.commentary, "");
}

TEST(ZelkMessage, takesASentFrame) {
  const ZelkBinaryMessage message = read(sent(4, 7000, frameInfo(0, 8, 0, 0x7FF), "12345678"));
  EXPECT_TRUE(message.getValid());
  EXPECT_EQ(message.type, MessageType::Tx);
  EXPECT_EQ(message.direction, MessageDirection::Tx);
  EXPECT_EQ(message.kind, MessageKind::DT);
  EXPECT_EQ(message.id, 0x7FFU);
  EXPECT_FALSE(message.extended);
  EXPECT_EQ(message.length, 8U);
  EXPECT_EQ(message.data, bytesOf("12345678"));
  EXPECT_EQ(message.timestamp, UnsignedMicroseconds(7000U));
}

TEST(ZelkMessage, takesRemoteFramesWithoutData) {
  const ZelkBinaryMessage rx = read(record(2, number(9, 8) + frameInfo(1, 8, 3, 0x100) + "swallowed"));
  EXPECT_TRUE(rx.getValid());
  EXPECT_EQ(rx.type, MessageType::Rx);
  EXPECT_EQ(rx.direction, MessageDirection::Rx);
  EXPECT_EQ(rx.kind, MessageKind::RR);
  EXPECT_TRUE(rx.remote);
  EXPECT_TRUE(rx.extended);
  EXPECT_EQ(rx.length, 8U);
  EXPECT_EQ(rx.data, Bytes());
  const ZelkBinaryMessage tx = read(sent(5, 9, frameInfo(1, 0xF5, 1, 0x100), ""));
  EXPECT_TRUE(tx.getValid());
  EXPECT_EQ(tx.type, MessageType::Tx);
  EXPECT_EQ(tx.direction, MessageDirection::Tx);
  EXPECT_EQ(tx.kind, MessageKind::RR);
  EXPECT_TRUE(tx.remote);
  EXPECT_EQ(tx.length, 5U) << "the low four bits of the field";
}

TEST(ZelkMessage, takesFdFramesByTheirFlags) {
  const struct {
    unsigned flags;
    MessageKind kind;
  } cases[] = {{0x10, MessageKind::FD}, {0x30, MessageKind::FB}, {0x50, MessageKind::FE},
               {0x70, MessageKind::BI}, {0x00, MessageKind::FD}, {0x22, MessageKind::FB}};
  for (const auto& test : cases) {
    const ZelkBinaryMessage rx = read(received(3, 9, frameInfo(0, 9, test.flags, 0x100), "123456789012"));
    EXPECT_TRUE(rx.getValid()) << test.flags;
    EXPECT_EQ(rx.kind, test.kind) << test.flags;
    EXPECT_EQ(rx.type, MessageType::Unknown);
    EXPECT_EQ(rx.direction, MessageDirection::Rx);
    EXPECT_EQ(rx.length, 12U);
    EXPECT_EQ(rx.data, bytesOf("123456789012"));
    EXPECT_EQ(rx.extended, (test.flags & 2) != 0);
    const ZelkBinaryMessage tx = read(sent(6, 9, frameInfo(0, 15, test.flags, 0x100), "1234567890123456"));
    EXPECT_EQ(tx.kind, test.kind) << test.flags;
    EXPECT_EQ(tx.type, MessageType::Unknown);
    EXPECT_EQ(tx.direction, MessageDirection::Tx);
    EXPECT_EQ(tx.length, 64U);
    EXPECT_EQ(tx.data.size(), 16U) << "nothing is made up for what the record lost";
  }
}

TEST(ZelkMessage, ignoresFlagsThatItDoesNotKnow) {
  const ZelkBinaryMessage classic = read(received(1, 9, frameInfo(0, 4, 0xFF8C, 0x100), "1234"));
  EXPECT_TRUE(classic.getValid());
  EXPECT_EQ(classic.kind, MessageKind::DT);
  EXPECT_FALSE(classic.extended);
  EXPECT_FALSE(classic.remote);
  const ZelkBinaryMessage fd = read(received(3, 9, frameInfo(0, 4, 0xFF9C, 0x100), "1234"));
  EXPECT_TRUE(fd.getValid());
  EXPECT_EQ(fd.kind, MessageKind::FD);
  EXPECT_FALSE(fd.extended);
  EXPECT_FALSE(fd.remote);
}

TEST(ZelkMessage, lengthOfAClassicFrameIsItsDlcAlsoAbove8) {
  EXPECT_EQ(read(received(1, 9, frameInfo(0, 12, 0, 1), "12345678")).length, 12U);
  EXPECT_EQ(read(received(1, 9, frameInfo(0, 0xF2, 0, 1), "1234")).length, 2U);
}

std::string errorRecord(unsigned flags) {
  return record(7, number(9, 8) + number(2, 1) + number(flags, 1) + number(0x0B, 1) + number(96, 1) + number(7, 1) +
                       number(0, 3));
}

TEST(ZelkMessage, takesErrorCounters) {
  for (const unsigned flags : {0x40U, 0xC0U}) {
    const ZelkBinaryMessage message = read(errorRecord(flags));
    EXPECT_TRUE(message.getValid());
    EXPECT_EQ(message.type, MessageType::Error);
    EXPECT_EQ(message.direction, MessageDirection::Rx);
    EXPECT_EQ(message.kind, MessageKind::EC);
    EXPECT_EQ(message.id, 0xFFFFFFFF);
    EXPECT_EQ(message.length, 2U);
    EXPECT_EQ(message.data, (Bytes{7, 96}));
    EXPECT_EQ(message.bus, 2U);
    EXPECT_EQ(message.timestamp, UnsignedMicroseconds(9U));
  }
}

TEST(ZelkMessage, takesErrorFramesByTheirClass) {
  const struct {
    unsigned flags;
    std::uint32_t id;
  } cases[] = {{0x00, 1}, {0x10, 2}, {0x20, 4}, {0x30, 8}, {0x50, 0}, {0x60, 0}, {0x70, 0}, {0x0F, 1}};
  for (const auto& test : cases) {
    const ZelkBinaryMessage message = read(errorRecord(test.flags));
    EXPECT_TRUE(message.getValid());
    EXPECT_EQ(message.type, MessageType::Error);
    EXPECT_EQ(message.direction, MessageDirection::Rx);
    EXPECT_EQ(message.kind, MessageKind::ER);
    EXPECT_EQ(message.id, test.id) << test.flags;
    EXPECT_EQ(message.length, 4U);
    EXPECT_EQ(message.data, (Bytes{0, 0x0B, 7, 96}));
    EXPECT_EQ(read(errorRecord(test.flags | 0x80)).data, (Bytes{1, 0x0B, 7, 96}));
  }
}

TEST(ZelkMessage, takesTheStatusOfABus) {
  const struct {
    unsigned flags;
    Bytes data;
  } cases[] = {{0x00, {0, 0, 0, 0}},    {0x20, {0, 4, 0, 0}},    {0x80, {0, 0, 0, 0x10}},
               {0x40, {0, 0, 0, 0x08}}, {0xFF, {0, 4, 0, 0x18}}, {0x1F, {0, 0, 0, 0}}};
  for (const auto& test : cases) {
    const ZelkBinaryMessage message =
        read(record(8, number(9, 8) + number(2, 1) + number(test.flags, 1) + number(0, 2)));
    EXPECT_TRUE(message.getValid());
    EXPECT_EQ(message.type, MessageType::Warng);
    EXPECT_EQ(message.direction, MessageDirection::Rx);
    EXPECT_EQ(message.kind, MessageKind::ST);
    EXPECT_EQ(message.id, 0xFFFFFFFF);
    EXPECT_TRUE(message.extended);
    EXPECT_EQ(message.length, 4U);
    EXPECT_EQ(message.data, test.data) << test.flags;
    EXPECT_EQ(message.bus, 2U);
  }
}

TEST(ZelkMessage, recordsThatAreNoFramesBecomeACommentary) {
  const std::string time = number(1234567, 8);
  const struct {
    std::string record;
    const char* commentary;
    std::uint32_t bus;
  } cases[] = {
      {record(9, time + number(2, 1) + number(55, 1) + number(0, 2)),
       "Bus-Load information (1234.567) --> Bus: 3 - Load: 55 %", 2},
      {record(10, number(0, 1) + number(96, 1) + number(4, 2) + number(15, 2) + number(3, 1) + number(2, 1) +
                      number(80000000, 4)),
       "Arbitration bit-rate information --> Bus: 1 - Warning-Limit: 96 - Frequency: 80000000 - Prescaler: 4 - TSEG1: "
       "15 - TSEG2: 3 - SWJ: 2",
       0},
      {record(11, number(1, 1) + number(0, 1) + number(97, 1) + number(5, 1) + number(600, 2) + number(7, 1) +
                      number(8, 1) + number(9, 1) + number(10, 1) + number(11, 2) + number(12, 2) + number(0, 2) +
                      number(40000000, 4)),
       "FD bit-rate information --> Bus: 2 - Warning-Limit: 97 - Frequency: 40000000 - Nominal-Prescaler: 11 - "
       "Nominal-TSEG1: 600 - Nominal-TSEG2: 7 - Nominal-SWJ: 5 - Data-Prescaler: 12 - Data-TSEG1: 9 - Data-TSEG2: 10 - "
       "Data-SWJ: 8",
       1},
      {record(0x10, time + number(255, 1) + number(0, 3) + number(4000000000, 4)),
       "Overrun notification (1234.567) --> Bus: 256 - Overruns: 4000000000", 255},
      {record(0x11, time + number(4, 1) + number(0, 3) + number(17, 4)),
       "Critical overrun notification from FPGA (1234.567) --> Bus: 5", 4},
      {counter(1234567, 300, 299), "Records counter --> Total records: 300 - Total messages: 299", 1},
  };
  for (const auto& test : cases) {
    const ZelkBinaryMessage message = read(test.record);
    EXPECT_EQ(message.commentary, test.commentary);
    EXPECT_FALSE(message.valid);
    EXPECT_FALSE(message.getValid());
    EXPECT_EQ(message.bus, test.bus);
    EXPECT_EQ(message.timestamp, UnsignedMicroseconds(0U)) << "not kept";
  }
}

TEST(ZelkMessage, timeOfACommentaryIsScaled) {
  EXPECT_EQ(read(record(0x11, number(2, 8) + number(0, 8)), 0).commentary,
            "Critical overrun notification from FPGA (2000.000) --> Bus: 1");
}

TEST(ZelkMessage, textIsACommentaryThatIsNotToBeWritten) {
  const ZelkBinaryMessage message = read(record(0x8002, "a text  "));
  EXPECT_EQ(message.commentary, "a text  ");
  EXPECT_TRUE(message.valid);
  EXPECT_FALSE(message.getValid());
}

TEST(ZelkMessage, otherRecordsHaveNoContent) {
  constexpr std::uint16_t kTypes[] = {0x0000, 0x8000, 0x8003, 0x000C, 0x000F, 0x0012, 0x7FFF, 0x8004, 0xFFFF};
  for (const std::uint16_t type : kTypes) {
    const ZelkBinaryMessage message = read(record(type, "01234567890123456789012345678901"));
    EXPECT_FALSE(message.valid) << type;
    EXPECT_FALSE(message.getValid()) << type;
    EXPECT_EQ(message.commentary, "") << type;
    EXPECT_EQ(message.id, 0xFFFFFFFF) << type;
    EXPECT_EQ(message.rawBytes.size(), 36U) << type;
  }
}

TEST(ZelkMessage, recordThatSaysItIsOfAnotherTypeIsNotValid) {
  ZelkBinaryMessage message;
  message.readRecord(RecordType::CanTxMsg, bytesOf(plainFrame(9)), TimeScale());
  EXPECT_FALSE(message.valid);
  EXPECT_EQ(message.id, 0xFFFFFFFF);
  EXPECT_EQ(message.commentary, "");
  EXPECT_EQ(message.rawBytes.size(), 24U);
}

TEST(ZelkMessage, shortRecordSaysSoWithItsBytes) {
  const struct {
    std::uint16_t type;
    const char* label;
  } cases[] = {{1, "Native_RecordCanRxMsg raw data: "},        {3, "Native_RecordCanRxFdMsg raw data: "},
               {4, "Native_RecordCanTxMsg raw data: "},        {6, "Native_RecordCanTxFdMsg raw data: "},
               {7, "Native_RecordCanError raw data(EF) : "},   {8, "Native_RecordCanStatus raw data : "},
               {9, "Native_RecordCanBusLoad raw data : "},     {10, "Native_RecordCanBitrate raw data : "},
               {11, "Native_RecordCanBitrate raw data : "},    {0x10, "Native_RecordCanCritical raw data : "},
               {0x11, "Native_RecordCanCritical raw data : "}, {0x8001, "Native_RecordCounter raw data: "}};
  for (const auto& test : cases) {
    const std::string bytes = record(test.type, "ab");
    const ZelkBinaryMessage message = read(bytes);
    EXPECT_FALSE(message.valid);
    EXPECT_EQ(message.commentary,
              "Parsing exception: Record of 6 bytes is too short for its fields.\n" + std::string(test.label) + bytes);
  }
  const std::string counters = record(7, number(9, 8) + number(2, 1) + number(0x40, 1) + number(0, 1));
  EXPECT_EQ(read(counters).commentary,
            "Parsing exception: Record of 15 bytes is too short for its fields.\n"
            "Native_RecordCanError raw data(EC) : " +
                counters);
  EXPECT_EQ(read(record(2, "ab")).commentary, "");
  EXPECT_EQ(read(record(5, "ab")).commentary, "");
}

TEST(ZelkMessage, everyCutRecordIsNotValid) {
  const std::string records[] = {plainFrame(9),
                                 received(3, 9, frameInfo(0, 15, 0x10, 1), std::string(64, 'x')),
                                 sent(4, 9, frameInfo(0, 1, 0, 1), "1234"),
                                 sent(5, 9, frameInfo(0, 1, 1, 1), ""),
                                 sent(6, 9, frameInfo(0, 9, 0x10, 1), "123456789012"),
                                 errorRecord(0),
                                 record(8, std::string(12, 'x')),
                                 counter(1, 2, 3)};
  for (const std::string& whole : records) {
    for (std::size_t size = 4; size < whole.size(); ++size) {
      EXPECT_FALSE(read(whole.substr(0, size)).valid) << size << " of " << whole.size();
    }
  }
}

TEST(ZelkMessage, timesAreScaledToMicroseconds) {
  constexpr std::uint64_t kTime = 12345678901;
  const struct {
    int exponent;
    std::uint64_t microseconds;
  } cases[] = {{-6, kTime},
               {-3, kTime * 1000},
               {0, kTime * 1000000},
               {-9, kTime / 1000},
               {-7, 1234567890},
               {-8, 123456789},
               {-5, kTime * 10},
               {-16, 1},
               {-17, 0},
               {-25, 0},
               {-26, 0},
               {-128, 0},
               {14, kTime * 7766279631452241920U},  // 10 to the 20th, modulo 2 to the 64th
               {127, 0}};
  for (const auto& test : cases) {
    EXPECT_EQ(read(plainFrame(kTime), static_cast<std::int8_t>(test.exponent)).timestamp,
              UnsignedMicroseconds(test.microseconds))
        << test.exponent;
  }
}

TEST(ZelkMessage, showsItsBytes) {
  EXPECT_EQ(read(record(0x8002, "az~ ")).getParsingBytesString(), "08 00 02 80 61 7A 7E 20");
}

TEST(ZelkMessage, tellsWhetherItFitsATrcVersion) {
  const ZelkBinaryMessage classic = read(plainFrame(9));
  const ZelkBinaryMessage fd = read(received(3, 9, frameInfo(0, 9, 0x10, 1), "123456789012"));
  const ZelkBinaryMessage text = read(record(0x8002, "text"));
  const ZelkBinaryMessage longClassic = read(received(1, 9, frameInfo(0, 12, 0, 1), "123456789012"));
  for (const double version : {1.0, 1.1, 1.2, 1.3, 2.0, 2.1, 3.0}) {
    EXPECT_TRUE(classic.ValidateForTargetVersion(version)) << version;
    EXPECT_EQ(fd.ValidateForTargetVersion(version), version >= 2.0) << version;
    EXPECT_EQ(longClassic.ValidateForTargetVersion(version), version == 1.3 || version > 2.0) << version;
    EXPECT_FALSE(text.ValidateForTargetVersion(version)) << version;
  }
  EXPECT_FALSE(classic.ValidateForTargetVersion(2.5));
}

TEST(ZelkMessage, recordThatWasReadHasNoTimeToAdjust) {
  ZelkBinaryMessage message = read(plainFrame(9));
  try {
    message.AdjustTimestamp(UnsignedMicroseconds(5));
    FAIL() << "no failure";
  } catch (const ConverterProcessingException& failure) {
    EXPECT_STREQ(failure.what(), "Failed to adjust timestamp of parsing record 1: it was not made from a message");
  }
  ZelkBinaryMessage text = read(record(0x8002, "text"));
  EXPECT_NO_THROW(text.AdjustTimestamp(UnsignedMicroseconds(5)));
}

}  // namespace
}  // namespace xlatr
