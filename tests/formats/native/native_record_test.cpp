// Every record against its bytes, written out by hand.
#include "formats/native/native_record.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <numeric>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "formats/native/native_frame_record.hpp"
#include "formats/native/record_content.hpp"

namespace xlatr {
namespace {

using ::testing::ElementsAreArray;

Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

Bytes counting(std::size_t count) {
  Bytes bytes(count);
  std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
  return bytes;
}

template <class Record>
Bytes bytesOfRecord(const Record& record) {
  Bytes image;
  appendFields(image, record);
  return image;
}

template <class FrameHeader>
Bytes frameImage(const FrameHeader& frame, const Bytes& data) {
  Bytes image;
  appendFrame(image, frame, data);
  return image;
}

// The record that the bytes are.
template <class Record>
Record recordOf(const Bytes& image) {
  Record record;
  EXPECT_TRUE(tryReadFields(image, record));
  return record;
}

// Whether the bytes give a record that gives the bytes, and fewer bytes give none.
template <class Record>
void expectRoundTrip(const Bytes& image) {
  EXPECT_EQ(bytesOfRecord(recordOf<Record>(image)), image);
  for (std::size_t size = 0; size < image.size(); ++size) {
    Record record;
    EXPECT_FALSE(tryReadFields(std::span(image).first(size), record)) << size << " bytes";
  }
}

// The same of a frame with its data.
template <class FrameHeader>
void expectFrameRoundTrip(const Bytes& image) {
  for (std::size_t size = 0; size <= image.size(); ++size) {
    const auto bytes = std::span(image).first(size);
    FrameHeader frame;
    const auto data = tryReadFields(bytes, frame) ? dataOfFrame(bytes, frame) : std::nullopt;
    ASSERT_EQ(data.has_value(), size == image.size()) << size << " bytes";
    if (data) {
      EXPECT_EQ(frameImage(frame, Bytes(data->begin(), data->end())), image);
    }
  }
}

using Received = Internal_ReceivedDataFrameHeader;
using Sent = Internal_SentDataFrameHeader;

constexpr std::uint64_t kTime = 0x1122334455667788;
constexpr std::uint64_t kSentTime = 0x99AABBCCDDEEFF00;

TEST(NativeRecord, headerIsSizeAndType) {
  const Bytes image = {0x34, 0x12, 0x02, 0x80};
  EXPECT_EQ(bytesOfRecord(Native_RecordHeader(0x1234, RecordType::TextMsg)), image);
  const auto read = recordOf<Native_RecordHeader>(image);
  EXPECT_EQ(read.size, 0x1234);
  EXPECT_EQ(read.type, RecordType::TextMsg);
  expectRoundTrip<Native_RecordHeader>(image);
}

TEST(NativeRecord, frameInfoKeepsTheDlcsLowBitsAndTheKnownFlags) {
  const Bytes image = {0x02, 0x0F, 0x73, 0x00, 0x78, 0x56, 0x34, 0x12};
  EXPECT_EQ(bytesOfRecord(Internal_DataFrameInfo(2, 0xFF, 0xFFFF, 0x12345678)), image);
  expectRoundTrip<Internal_DataFrameInfo>(image);
}

const Bytes kReceivedHead = {0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11};
const Bytes kSentHead = kReceivedHead + Bytes{0x00, 0xFF, 0xEE, 0xDD, 0xCC, 0xBB, 0xAA, 0x99};

TEST(NativeRecord, headersOfFramesHoldTimeAndInfo) {
  const Bytes received = Bytes{0x1C, 0x00, 0x01, 0x00} + kReceivedHead + Bytes{1, 5, 2, 0, 0xEF, 0xCD, 0xAB, 0x09};
  EXPECT_EQ(bytesOfRecord(Received(RecordType::CanRxMsg, {1, 5, 2, 0x09ABCDEF}, kTime)), received);
  expectRoundTrip<Received>(received);
  const Bytes sent = Bytes{0x24, 0x00, 0x04, 0x00} + kSentHead + Bytes{1, 5, 2, 0, 0xEF, 0xCD, 0xAB, 0x09};
  EXPECT_EQ(bytesOfRecord(Sent(RecordType::CanTxMsg, {1, 5, 2, 0x09ABCDEF}, kTime, kSentTime)), sent);
  expectRoundTrip<Sent>(sent);
}

TEST(NativeRecord, receivedFrameOfThreeBytesIsPaddedWithAZero) {
  const Bytes image =
      Bytes{0x18, 0x00, 0x01, 0x00} + kReceivedHead + Bytes{1, 3, 2, 0, 0xEF, 0xCD, 0xAB, 0x09, 1, 2, 3, 0};
  const Received frame(RecordType::CanRxMsg, {1, 3, record_flag::kExtended, 0x09ABCDEF}, kTime);
  EXPECT_EQ(frameImage(frame, counting(3)), image);
  expectFrameRoundTrip<Received>(image);
}

TEST(NativeRecord, receivedFrameTakesAtMostEightBytes) {
  EXPECT_EQ(frameImage(Received(RecordType::CanRxMsg, {0, 9, 0, 0x100}, kTime), counting(12)),
            (Bytes{0x20, 0x00, 0x01, 0x00} + kReceivedHead + Bytes{0, 9, 0, 0, 0, 1, 0, 0} + counting(8) + Bytes(4)));
}

TEST(NativeRecord, receivedFdFrameOfCode15Has64Bytes) {
  const Bytes image =
      Bytes{0x54, 0x00, 0x03, 0x00} + kReceivedHead + Bytes{0, 15, 0x70, 0, 0x23, 1, 0, 0} + counting(64);
  const Received frame(RecordType::CanRxFdMsg, {0, 15, record_flag::kFd | record_flag::kBrs | record_flag::kEsi, 0x123},
                       kTime);
  EXPECT_EQ(frameImage(frame, counting(70)), image);
  expectFrameRoundTrip<Received>(image);
}

TEST(NativeRecord, sizesOfReceivedFramesComeFromTheTableOfLengths) {
  const std::uint16_t sizes[] = {20, 24, 24, 24, 24, 28, 28, 28, 28, 32, 36, 40, 44, 52, 68, 84};
  for (std::uint8_t dlc = 0; dlc < 16; ++dlc) {
    const Internal_DataFrameInfo info(0, dlc, 0, 1);
    EXPECT_EQ(Received(RecordType::CanRxMsg, info, 0).header.size, sizes[dlc]) << int{dlc};
    EXPECT_EQ(Received(RecordType::CanRxRtrMsg, info, 0).header.size, sizes[dlc]) << int{dlc};
    EXPECT_EQ(Received(RecordType::CanRxFdMsg, info, 0).header.size, sizes[dlc]) << int{dlc};
    EXPECT_EQ(frameImage(Received(RecordType::CanRxFdMsg, info, 0), {}).size(), sizes[dlc]) << int{dlc};
  }
}

TEST(NativeRecord, sizesOfSentFramesComeFromTheCodeItself) {
  const std::uint16_t sizes[] = {28, 32, 32, 32, 32, 36, 36, 36, 36, 40, 40, 40, 40, 44, 44, 44};
  for (std::uint8_t dlc = 0; dlc < 16; ++dlc) {
    const Internal_DataFrameInfo info(0, dlc, 0, 1);
    EXPECT_EQ(Sent(RecordType::CanTxMsg, info, 0, 0).header.size, sizes[dlc]) << int{dlc};
    EXPECT_EQ(Sent(RecordType::CanTxFdMsg, info, 0, 0).header.size, sizes[dlc]) << int{dlc};
    EXPECT_EQ(frameImage(Sent(RecordType::CanTxFdMsg, info, 0, 0), {}).size(), sizes[dlc]) << int{dlc};
    EXPECT_EQ(Sent(RecordType::CanTxRtrMsg, info, 0, 0).header.size, 28) << int{dlc};
  }
}

TEST(NativeRecord, receivedRemoteFrameDeclaresRoomThatItDoesNotTake) {
  const Bytes image = Bytes{0x18, 0x00, 0x02, 0x00} + kReceivedHead + Bytes{0, 3, 1, 0, 0x23, 1, 0, 0};
  EXPECT_EQ(frameImage(Received(RecordType::CanRxRtrMsg, {0, 3, record_flag::kRemote, 0x123}, kTime), counting(3)),
            image);
  expectRoundTrip<Received>(image);
  const Bytes empty = Bytes{0x14, 0x00, 0x02, 0x00} + kReceivedHead + Bytes{0, 0, 1, 0, 0x23, 1, 0, 0};
  EXPECT_EQ(frameImage(Received(RecordType::CanRxRtrMsg, {0, 0, record_flag::kRemote, 0x123}, kTime), {}), empty);
}

TEST(NativeRecord, sentFrameHasBothTimes) {
  const Bytes image = Bytes{0x20, 0x00, 0x04, 0x00} + kSentHead + Bytes{7, 2, 0, 0, 0xFF, 7, 0, 0} + Bytes{1, 2, 0, 0};
  EXPECT_EQ(frameImage(Sent(RecordType::CanTxMsg, {7, 2, 0, 0x7FF}, kTime, kSentTime), counting(2)), image);
  expectFrameRoundTrip<Sent>(image);
}

TEST(NativeRecord, sentFrameTakesAtMostEightBytes) {
  EXPECT_EQ(frameImage(Sent(RecordType::CanTxMsg, {7, 12, 0, 0x7FF}, kTime, kSentTime), counting(12)),
            (Bytes{0x28, 0x00, 0x04, 0x00} + kSentHead + Bytes{7, 12, 0, 0, 0xFF, 7, 0, 0} + counting(8) + Bytes(4)));
}

TEST(NativeRecord, sentFdFrameOfCode15HasTheFirst16Bytes) {
  const Bytes image = Bytes{0x2C, 0x00, 0x06, 0x00} + kSentHead + Bytes{0, 15, 0x50, 0, 0, 1, 0, 0} + counting(16);
  const Sent frame(RecordType::CanTxFdMsg, {0, 15, record_flag::kFd | record_flag::kEsi, 0x100}, kTime, kSentTime);
  EXPECT_EQ(frameImage(frame, counting(64)), image);
  expectFrameRoundTrip<Sent>(image);
}

TEST(NativeRecord, sentRemoteFrameIsItsHeader) {
  const Bytes image = Bytes{0x1C, 0x00, 0x05, 0x00} + kSentHead + Bytes{0, 8, 1, 0, 0, 1, 0, 0};
  const Sent frame(RecordType::CanTxRtrMsg, {0, 8, record_flag::kRemote, 0x100}, kTime, kSentTime);
  EXPECT_EQ(frameImage(frame, counting(8)), image);
  expectRoundTrip<Sent>(image);
}

TEST(NativeRecord, dataOfAReadFrameAreWhatItsSizeSays) {
  const Bytes image = Bytes{0xE8, 0x03, 0x01, 0x00} + kReceivedHead + Bytes{0, 1, 0, 0, 0, 1, 0, 0} + counting(980);
  const Bytes more = image + counting(7);
  const auto data = dataOfFrame(more, recordOf<Received>(image));
  ASSERT_TRUE(data.has_value());
  EXPECT_THAT(*data, ElementsAreArray(counting(980)));
}

TEST(NativeRecord, sizeBelowTheHeaderGivesNoFrame) {
  const Bytes image = Bytes{0x13, 0x00, 0x01, 0x00} + kReceivedHead + Bytes{0, 0, 0, 0, 0, 1, 0, 0} + Bytes(20);
  EXPECT_FALSE(dataOfFrame(image, recordOf<Received>(image)).has_value());
  EXPECT_FALSE(dataOfFrame(image, recordOf<Sent>(image)).has_value());
}

Bytes filler(std::size_t size) {
  Bytes image;
  appendFiller(image, size);
  return image;
}

TEST(NativeRecord, fillerIsZeros) {
  EXPECT_EQ(filler(7), (Bytes{0x07, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}));
}

TEST(NativeRecord, fillerOfLessThanAHeaderIsAHeader) {
  EXPECT_EQ(filler(0), (Bytes{4, 0, 0, 0}));
  EXPECT_EQ(filler(4), (Bytes{4, 0, 0, 0}));
}

TEST(NativeRecord, fillerOfMoreThanAHeaderCanSayIsWhatTheHeaderSays) {
  EXPECT_EQ(filler(65536), (Bytes{4, 0, 0, 0}));
  EXPECT_EQ(filler(65536 + 5), (Bytes{5, 0, 0, 0, 0}));
  EXPECT_EQ(filler(65535).size(), 65535U);
}

TEST(NativeRecord, infoIdentifiesTheFile) {
  Native_RecordInfo record;
  record.version = 1;
  record.timeScalingExponent = -6;
  const Bytes image = {0x08, 0x00, 0x00, 0x80, 0x08, 0x00, 0x01, 0xFA};
  EXPECT_EQ(bytesOfRecord(record), image);
  expectRoundTrip<Native_RecordInfo>(image);
  EXPECT_EQ(recordOf<Native_RecordInfo>(image).timeScalingExponent, -6);
}

TEST(NativeRecord, timeCalibrationIsACalendarDate) {
  Native_RecordTimeCalibration record;
  record.systemTimeTicks = kTime;
  record.year = 2026;
  record.month = 11;
  record.day = 21;
  record.hour = 13;
  record.minute = 14;
  record.second = 15;
  record.microseconds = 987654;
  const Bytes image =
      Bytes{0x18, 0x00, 0x03, 0x80} + kReceivedHead + Bytes{0xEA, 7, 11, 21, 13, 14, 15, 0, 0x06, 0x12, 0x0F, 0x00};
  EXPECT_EQ(bytesOfRecord(record), image);
  expectRoundTrip<Native_RecordTimeCalibration>(image);
}

TEST(NativeRecord, counterHoldsTheTotals) {
  const Bytes image =
      Bytes{0x1C, 0x00, 0x01, 0x80} + kReceivedHead + Bytes{5, 1, 0, 0, 0, 0, 0, 0} + Bytes{4, 0, 0, 0, 0, 0, 0, 1};
  Native_RecordCounter record;
  record.timestampTicks = kTime;
  record.totalRecords = 0x105;
  record.totalMessages = 0x0100000000000004;
  EXPECT_EQ(bytesOfRecord(record), image);
  expectRoundTrip<Native_RecordCounter>(image);
}

Bytes comment(std::string_view text) {
  Bytes image;
  appendComment(image, text);
  return image;
}

TEST(NativeRecord, textIsPaddedWithBlanksToFourBytes) {
  EXPECT_EQ(comment(""), (Bytes{4, 0, 0x02, 0x80}));
  EXPECT_EQ(comment("abcd"), (Bytes{8, 0, 0x02, 0x80, 'a', 'b', 'c', 'd'}));
  EXPECT_EQ(comment("abcde"), (Bytes{12, 0, 0x02, 0x80, 'a', 'b', 'c', 'd', 'e', ' ', ' ', ' '}));
}

TEST(NativeRecord, textIsReadUpToAZeroByteOrTheEnd) {
  EXPECT_EQ(commentOf(Bytes{12, 0, 2, 0x80, 'a', 'b', 0, 'd', 'e'}), "ab");
  EXPECT_EQ(commentOf(Bytes{12, 0, 2, 0x80, 'a', 'b', ' ', ' '}), "ab  ");
  EXPECT_EQ(commentOf(Bytes{4, 0, 2, 0x80}), "");
  EXPECT_EQ(commentOf(Bytes{4, 0, 2}), "");
}

TEST(NativeRecord, textLongerThanARecordIsCut) {
  const Bytes image = comment(std::string(70000, 'x'));
  EXPECT_EQ(recordOf<Native_RecordHeader>(image).size, 65532);
  EXPECT_EQ(image.size(), 65532U);
}

TEST(NativeRecord, errorHasPositionAndCounters) {
  Native_RecordCanError record;
  record.timestampTicks = kTime;
  record.bus = 3;
  record.flags = 0xC0;
  record.errorPosition = 0x0B;
  record.txErrorCounter = 96;
  record.rxErrorCounter = 8;
  const Bytes image = Bytes{0x14, 0x00, 0x07, 0x00} + kReceivedHead + Bytes{3, 0xC0, 0x0B, 96, 8, 0, 0, 0};
  EXPECT_EQ(bytesOfRecord(record), image);
  expectRoundTrip<Native_RecordCanError>(image);
}

TEST(NativeRecord, statusHasFlags) {
  Native_RecordCanStatus record;
  record.timestampTicks = kTime;
  record.bus = 2;
  record.flags = 0xE0;
  const Bytes image = Bytes{0x10, 0x00, 0x08, 0x00} + kReceivedHead + Bytes{2, 0xE0, 0, 0};
  EXPECT_EQ(bytesOfRecord(record), image);
  expectRoundTrip<Native_RecordCanStatus>(image);
}

TEST(NativeRecord, busLoadIsPerCent) {
  const Bytes image = Bytes{0x10, 0x00, 0x09, 0x00} + kReceivedHead + Bytes{2, 55, 0xAA, 0xBB};
  expectRoundTrip<Native_RecordCanBusLoad>(image);
  const auto record = recordOf<Native_RecordCanBusLoad>(image);
  EXPECT_EQ(record.timestampTicks, kTime);
  EXPECT_EQ(record.bus, 2);
  EXPECT_EQ(record.load, 55);
  EXPECT_EQ(bytesOfRecord(Native_RecordCanBusLoad()), (Bytes{0x10, 0, 9, 0} + Bytes(12)));
}

TEST(NativeRecord, bitrateHasTheArbitrationTiming) {
  const Bytes image = {0x10, 0, 0x0A, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  expectRoundTrip<Native_RecordCanBitrate>(image);
  const auto record = recordOf<Native_RecordCanBitrate>(image);
  EXPECT_EQ(record.bus, 1);
  EXPECT_EQ(record.warningLimit, 2);
  EXPECT_EQ(record.prescaler, 0x0403);
  EXPECT_EQ(record.tseg1, 0x0605);
  EXPECT_EQ(record.tseg2, 7);
  EXPECT_EQ(record.sjw, 8);
  EXPECT_EQ(record.frequency, 0x0C0B0A09U);
  EXPECT_EQ(bytesOfRecord(Native_RecordCanBitrate()), (Bytes{0x10, 0, 10, 0} + Bytes(12)));
}

TEST(NativeRecord, bitrateFdHasTheTimingOfBothPhases) {
  const Bytes image = {0x18, 0, 0x0B, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20};
  expectRoundTrip<Native_RecordCanBitrateFd>(image);
  const auto record = recordOf<Native_RecordCanBitrateFd>(image);
  EXPECT_EQ(record.bus, 1);
  EXPECT_EQ(record.reserved1, 2);
  EXPECT_EQ(record.warningLimit, 3);
  EXPECT_EQ(record.nominalSjw, 4);
  EXPECT_EQ(record.nominalTseg1, 0x0605);
  EXPECT_EQ(record.nominalTseg2, 7);
  EXPECT_EQ(record.dataSjw, 8);
  EXPECT_EQ(record.dataTseg1, 9);
  EXPECT_EQ(record.dataTseg2, 10);
  EXPECT_EQ(record.nominalPrescaler, 0x0C0B);
  EXPECT_EQ(record.dataPrescaler, 0x0E0D);
  EXPECT_EQ(record.reserved2, 0x100F);
  EXPECT_EQ(record.frequency, 0x14131211U);
  EXPECT_EQ(bytesOfRecord(Native_RecordCanBitrateFd()), (Bytes{0x18, 0, 11, 0} + Bytes(20)));
}

TEST(NativeRecord, overrunsAreCounted) {
  const Bytes image = Bytes{0x14, 0x00, 0x10, 0x00} + kReceivedHead + Bytes{4, 0, 0, 0, 0x78, 0x56, 0x34, 0x12};
  expectRoundTrip<Native_RecordCanOverrun>(image);
  EXPECT_EQ(recordOf<Native_RecordCanOverrun>(image).overruns, 0x12345678U);
  EXPECT_EQ(recordOf<Native_RecordCanOverrun>(image).bus, 4);
  EXPECT_EQ(bytesOfRecord(Native_RecordCanOverrun()), (Bytes{0x14, 0, 0x10, 0} + Bytes(16)));
  const Bytes critical = Bytes{0x14, 0x00, 0x11, 0x00} + kReceivedHead + Bytes{4, 0, 0, 0, 0x78, 0x56, 0x34, 0x12};
  expectRoundTrip<Native_RecordCanOverrun>(critical);
}

template <class Record>
Record movedBy(std::uint64_t delta, const Record& record) {
  Bytes image = bytesOfRecord(record);
  moveTimes(record.header.type, image, delta);
  return recordOf<Record>(image);
}

TEST(NativeRecord, movingMovesEveryTimeOfARecord) {
  constexpr std::uint64_t kLast = std::numeric_limits<std::uint64_t>::max();
  const Internal_DataFrameInfo info(0, 0, 0, 1);
  for (const RecordType type : {RecordType::CanRxMsg, RecordType::CanRxRtrMsg, RecordType::CanRxFdMsg}) {
    EXPECT_EQ(movedBy(5, Received(type, info, kLast)).timestampTicks, 4U) << "modulo 2^64";
  }
  for (const RecordType type : {RecordType::CanTxMsg, RecordType::CanTxRtrMsg, RecordType::CanTxFdMsg}) {
    const Sent moved = movedBy(5, Sent(type, info, kLast, 100));
    EXPECT_EQ(moved.timestampTicks, 4U) << "modulo 2^64";
    EXPECT_EQ(moved.timestampSentTicks, 105U);
  }
  EXPECT_EQ(movedBy(7, Native_RecordCanError()).timestampTicks, 7U);
  EXPECT_EQ(movedBy(7, Native_RecordCanStatus()).timestampTicks, 7U);
}

}  // namespace
}  // namespace xlatr
