// Every record against its bytes, written out by hand.
#include "formats/native/native_record.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <numeric>
#include <string>
#include <vector>

namespace xlatr {
namespace {

using ::testing::ElementsAreArray;

using Bytes = std::vector<std::uint8_t>;

Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

Bytes counting(std::size_t count) {
  Bytes bytes(count);
  std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
  return bytes;
}

// Whether the bytes give a record that gives the bytes, and fewer bytes give none.
template <class Record>
void expectRoundTrip(const Bytes& image) {
  const auto record = Record::FromBytes(image);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->Serialize(), image);
  for (std::size_t size = 0; size < image.size(); ++size) {
    EXPECT_EQ(Record::FromBytes(std::span(image).first(size)), nullptr) << size << " bytes";
  }
}

constexpr std::uint64_t kTime = 0x1122334455667788;
constexpr std::uint64_t kSentTime = 0x99AABBCCDDEEFF00;

TEST(NativeRecord, headerIsSizeAndType) {
  const Bytes image = {0x34, 0x12, 0x02, 0x80};
  EXPECT_EQ(Native_RecordHeader(0x1234, RecordType::TextMsg).Serialize(), image);
  const auto read = Native_RecordHeader::FromBytes(image);
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(read->size, 0x1234);
  EXPECT_EQ(read->type, RecordType::TextMsg);
  expectRoundTrip<Native_RecordHeader>(image);
}

TEST(NativeRecord, frameInfoKeepsTheDlcsLowBitsAndTheKnownFlags) {
  const Bytes image = {0x02, 0x0F, 0x73, 0x00, 0x78, 0x56, 0x34, 0x12};
  EXPECT_EQ(Internal_DataFrameInfo(2, 0xFF, 0xFFFF, 0x12345678).Serialize(), image);
  expectRoundTrip<Internal_DataFrameInfo>(image);
}

const Bytes kReceivedHead = {0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11};
const Bytes kSentHead = kReceivedHead + Bytes{0x00, 0xFF, 0xEE, 0xDD, 0xCC, 0xBB, 0xAA, 0x99};

TEST(NativeRecord, headersOfFramesHoldTimeAndInfo) {
  const Bytes received = Bytes{0x1C, 0x00, 0x01, 0x00} + kReceivedHead + Bytes{1, 5, 2, 0, 0xEF, 0xCD, 0xAB, 0x09};
  EXPECT_EQ(Internal_ReceivedDataFrameHeader(RecordType::CanRxMsg, {1, 5, 2, 0x09ABCDEF}, kTime).Serialize(), received);
  expectRoundTrip<Internal_ReceivedDataFrameHeader>(received);
  const Bytes sent = Bytes{0x24, 0x00, 0x04, 0x00} + kSentHead + Bytes{1, 5, 2, 0, 0xEF, 0xCD, 0xAB, 0x09};
  EXPECT_EQ(Internal_SentDataFrameHeader(RecordType::CanTxMsg, {1, 5, 2, 0x09ABCDEF}, kTime, kSentTime).Serialize(),
            sent);
  expectRoundTrip<Internal_SentDataFrameHeader>(sent);
}

TEST(NativeRecord, receivedFrameOfThreeBytesIsPaddedWithAZero) {
  const Bytes image =
      Bytes{0x18, 0x00, 0x01, 0x00} + kReceivedHead + Bytes{1, 3, 2, 0, 0xEF, 0xCD, 0xAB, 0x09, 1, 2, 3, 0};
  const Native_RecordCanRxMsg record(counting(3), kTime, {1, 3, frame_flag::kExtended, 0x09ABCDEF});
  EXPECT_EQ(record.Serialize(), image);
  expectRoundTrip<Native_RecordCanRxMsg>(image);
}

TEST(NativeRecord, receivedFrameTakesAtMostEightBytes) {
  const Native_RecordCanRxMsg record(counting(12), kTime, {0, 9, 0, 0x100});
  EXPECT_EQ(record.Serialize(),
            (Bytes{0x20, 0x00, 0x01, 0x00} + kReceivedHead + Bytes{0, 9, 0, 0, 0, 1, 0, 0} + counting(8) + Bytes(4)));
}

TEST(NativeRecord, receivedFdFrameOfCode15Has64Bytes) {
  const Bytes image =
      Bytes{0x54, 0x00, 0x03, 0x00} + kReceivedHead + Bytes{0, 15, 0x70, 0, 0x23, 1, 0, 0} + counting(64);
  const Native_RecordCanRxFdMsg record(counting(70), kTime,
                                       {0, 15, frame_flag::kFd | frame_flag::kBrs | frame_flag::kEsi, 0x123});
  EXPECT_EQ(record.Serialize(), image);
  EXPECT_EQ(record.data().size(), 64U);
  expectRoundTrip<Native_RecordCanRxFdMsg>(image);
}

TEST(NativeRecord, sizesOfReceivedFramesComeFromTheTableOfLengths) {
  const std::uint16_t sizes[] = {20, 24, 24, 24, 24, 28, 28, 28, 28, 32, 36, 40, 44, 52, 68, 84};
  for (std::uint8_t dlc = 0; dlc < 16; ++dlc) {
    const Internal_DataFrameInfo info(0, dlc, 0, 1);
    EXPECT_EQ(Native_RecordCanRxMsg({}, 0, info).frame.header.size, sizes[dlc]) << int{dlc};
    EXPECT_EQ(Native_RecordCanRxRtrMsg(0, info).frame.header.size, sizes[dlc]) << int{dlc};
    EXPECT_EQ(Native_RecordCanRxFdMsg({}, 0, info).frame.header.size, sizes[dlc]) << int{dlc};
    EXPECT_EQ(Native_RecordCanRxFdMsg({}, 0, info).Serialize().size(), sizes[dlc]) << int{dlc};
  }
}

TEST(NativeRecord, sizesOfSentFramesComeFromTheCodeItself) {
  const std::uint16_t sizes[] = {28, 32, 32, 32, 32, 36, 36, 36, 36, 40, 40, 40, 40, 44, 44, 44};
  for (std::uint8_t dlc = 0; dlc < 16; ++dlc) {
    const Internal_DataFrameInfo info(0, dlc, 0, 1);
    EXPECT_EQ(Native_RecordCanTxMsg({}, 0, 0, info).frame.header.size, sizes[dlc]) << int{dlc};
    EXPECT_EQ(Native_RecordCanTxFdMsg({}, 0, 0, info).frame.header.size, sizes[dlc]) << int{dlc};
    EXPECT_EQ(Native_RecordCanTxFdMsg({}, 0, 0, info).Serialize().size(), sizes[dlc]) << int{dlc};
    EXPECT_EQ(Native_RecordCanTxRtrMsg(0, 0, info).frame.header.size, 28) << int{dlc};
  }
}

TEST(NativeRecord, receivedRemoteFrameDeclaresRoomThatItDoesNotTake) {
  const Bytes image = Bytes{0x18, 0x00, 0x02, 0x00} + kReceivedHead + Bytes{0, 3, 1, 0, 0x23, 1, 0, 0};
  EXPECT_EQ(Native_RecordCanRxRtrMsg(kTime, {0, 3, frame_flag::kRemote, 0x123}).Serialize(), image);
  expectRoundTrip<Native_RecordCanRxRtrMsg>(image);
  const Bytes empty = Bytes{0x14, 0x00, 0x02, 0x00} + kReceivedHead + Bytes{0, 0, 1, 0, 0x23, 1, 0, 0};
  EXPECT_EQ(Native_RecordCanRxRtrMsg(kTime, {0, 0, frame_flag::kRemote, 0x123}).Serialize(), empty);
}

TEST(NativeRecord, sentFrameHasBothTimes) {
  const Bytes image = Bytes{0x20, 0x00, 0x04, 0x00} + kSentHead + Bytes{7, 2, 0, 0, 0xFF, 7, 0, 0} + Bytes{1, 2, 0, 0};
  EXPECT_EQ(Native_RecordCanTxMsg(counting(2), kTime, kSentTime, {7, 2, 0, 0x7FF}).Serialize(), image);
  expectRoundTrip<Native_RecordCanTxMsg>(image);
}

TEST(NativeRecord, sentFrameTakesAtMostEightBytes) {
  EXPECT_EQ(Native_RecordCanTxMsg(counting(12), kTime, kSentTime, {7, 12, 0, 0x7FF}).Serialize(),
            (Bytes{0x28, 0x00, 0x04, 0x00} + kSentHead + Bytes{7, 12, 0, 0, 0xFF, 7, 0, 0} + counting(8) + Bytes(4)));
}

TEST(NativeRecord, sentFdFrameOfCode15HasTheFirst16Bytes) {
  const Bytes image = Bytes{0x2C, 0x00, 0x06, 0x00} + kSentHead + Bytes{0, 15, 0x50, 0, 0, 1, 0, 0} + counting(16);
  const Native_RecordCanTxFdMsg record(counting(64), kTime, kSentTime,
                                       {0, 15, frame_flag::kFd | frame_flag::kEsi, 0x100});
  EXPECT_EQ(record.Serialize(), image);
  expectRoundTrip<Native_RecordCanTxFdMsg>(image);
}

TEST(NativeRecord, sentRemoteFrameIsItsHeader) {
  const Bytes image = Bytes{0x1C, 0x00, 0x05, 0x00} + kSentHead + Bytes{0, 8, 1, 0, 0, 1, 0, 0};
  EXPECT_EQ(Native_RecordCanTxRtrMsg(kTime, kSentTime, {0, 8, frame_flag::kRemote, 0x100}).Serialize(), image);
  expectRoundTrip<Native_RecordCanTxRtrMsg>(image);
}

TEST(NativeRecord, dataOfAReadFrameAreWhatItsSizeSays) {
  Bytes image = Bytes{0xE8, 0x03, 0x01, 0x00} + kReceivedHead + Bytes{0, 1, 0, 0, 0, 1, 0, 0} + counting(980);
  const auto record = Native_RecordCanRxMsg::FromBytes(image + counting(7));
  ASSERT_NE(record, nullptr);
  EXPECT_THAT(record->data(), ElementsAreArray(counting(980)));
  EXPECT_EQ(record->Serialize(), image);
}

TEST(NativeRecord, sizeBelowTheHeaderGivesNoFrame) {
  Bytes image = Bytes{0x13, 0x00, 0x01, 0x00} + kReceivedHead + Bytes{0, 0, 0, 0, 0, 1, 0, 0} + Bytes(20);
  EXPECT_EQ(Native_RecordCanRxMsg::FromBytes(image), nullptr);
  EXPECT_EQ(Native_RecordCanTxFdMsg::FromBytes(image), nullptr);
}

TEST(NativeRecord, remoteFramesReadNothingBehindTheHeader) {
  const Bytes image = Bytes{0x1C, 0x00, 0x02, 0x00} + kReceivedHead + Bytes{0, 8, 1, 0, 0x23, 1, 0, 0};
  EXPECT_EQ(Native_RecordCanRxRtrMsg::FromBytes(image + counting(8))->Serialize(), image);
}

TEST(NativeRecord, fillerIsZeros) {
  const Bytes image = {0x07, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
  EXPECT_EQ(Native_RecordInvalid(7).Serialize(), image);
  expectRoundTrip<Native_RecordInvalid>(image);
  EXPECT_EQ(Native_RecordInvalid::FromBytes(Bytes{5, 0, 0, 0, 0xAB})->Serialize(), (Bytes{5, 0, 0, 0, 0xAB}));
}

TEST(NativeRecord, fillerOfLessThanAHeaderIsAHeader) {
  EXPECT_EQ(Native_RecordInvalid(0).Serialize(), (Bytes{4, 0, 0, 0}));
  EXPECT_EQ(Native_RecordInvalid(4).Serialize(), (Bytes{4, 0, 0, 0}));
  EXPECT_EQ(Native_RecordInvalid::FromBytes(Bytes{3, 0, 0, 0}), nullptr);
}

TEST(NativeRecord, fillerOfMoreThanAHeaderCanSayIsWhatTheHeaderSays) {
  EXPECT_EQ(Native_RecordInvalid(65536).Serialize(), (Bytes{4, 0, 0, 0}));
  EXPECT_EQ(Native_RecordInvalid(65536 + 5).Serialize(), (Bytes{5, 0, 0, 0, 0}));
  EXPECT_EQ(Native_RecordInvalid(65535).Serialize().size(), 65535U);
}

TEST(NativeRecord, infoIdentifiesTheFile) {
  Native_RecordInfo record;
  record.version = 1;
  record.timeScalingExponent = -6;
  const Bytes image = {0x08, 0x00, 0x00, 0x80, 0x08, 0x00, 0x01, 0xFA};
  EXPECT_EQ(record.Serialize(), image);
  expectRoundTrip<Native_RecordInfo>(image);
  EXPECT_EQ(Native_RecordInfo::FromBytes(image)->timeScalingExponent, -6);
}

TEST(NativeRecord, timeCalibrationIsACalendarDate) {
  Native_RecordTimeCalibration record;
  record.systemTime = kTime;
  record.year = 2026;
  record.month = 11;
  record.day = 21;
  record.hour = 13;
  record.minute = 14;
  record.second = 15;
  record.microseconds = 987654;
  const Bytes image =
      Bytes{0x18, 0x00, 0x03, 0x80} + kReceivedHead + Bytes{0xEA, 7, 11, 21, 13, 14, 15, 0, 0x06, 0x12, 0x0F, 0x00};
  EXPECT_EQ(record.Serialize(), image);
  expectRoundTrip<Native_RecordTimeCalibration>(image);
}

TEST(NativeRecord, counterHoldsTheTotals) {
  const Bytes image =
      Bytes{0x1C, 0x00, 0x01, 0x80} + kReceivedHead + Bytes{5, 1, 0, 0, 0, 0, 0, 0} + Bytes{4, 0, 0, 0, 0, 0, 0, 1};
  EXPECT_EQ(Native_RecordCounter(kTime, 0x105, 0x0100000000000004).Serialize(), image);
  expectRoundTrip<Native_RecordCounter>(image);
}

TEST(NativeRecord, textIsPaddedWithBlanksToFourBytes) {
  EXPECT_EQ(Native_RecordTextMsg("").Serialize(), (Bytes{4, 0, 0x02, 0x80}));
  EXPECT_EQ(Native_RecordTextMsg("abcd").Serialize(), (Bytes{8, 0, 0x02, 0x80, 'a', 'b', 'c', 'd'}));
  EXPECT_EQ(Native_RecordTextMsg("abcde").Serialize(),
            (Bytes{12, 0, 0x02, 0x80, 'a', 'b', 'c', 'd', 'e', ' ', ' ', ' '}));
}

TEST(NativeRecord, textIsReadUpToAZeroByteOrTheEnd) {
  EXPECT_EQ(Native_RecordTextMsg::FromBytes(Bytes{12, 0, 2, 0x80, 'a', 'b', 0, 'd', 'e'})->text, "ab");
  EXPECT_EQ(Native_RecordTextMsg::FromBytes(Bytes{12, 0, 2, 0x80, 'a', 'b', ' ', ' '})->text, "ab  ");
  EXPECT_EQ(Native_RecordTextMsg::FromBytes(Bytes{4, 0, 2, 0x80})->text, "");
  EXPECT_EQ(Native_RecordTextMsg::FromBytes(Bytes{4, 0, 2}), nullptr);
}

TEST(NativeRecord, textLongerThanARecordIsCut) {
  const Native_RecordTextMsg record(std::string(70000, 'x'));
  EXPECT_EQ(record.header.size, 65532);
  EXPECT_EQ(record.Serialize().size(), 65532U);
}

TEST(NativeRecord, errorHasPositionAndCounters) {
  Native_RecordCanError record;
  record.timestamp = kTime;
  record.bus = 3;
  record.flags = 0xC0;
  record.errorPosition = 0x0B;
  record.txErrorCounter = 96;
  record.rxErrorCounter = 8;
  const Bytes image = Bytes{0x14, 0x00, 0x07, 0x00} + kReceivedHead + Bytes{3, 0xC0, 0x0B, 96, 8, 0, 0, 0};
  EXPECT_EQ(record.Serialize(), image);
  expectRoundTrip<Native_RecordCanError>(image);
}

TEST(NativeRecord, statusHasFlags) {
  Native_RecordCanStatus record;
  record.timestamp = kTime;
  record.bus = 2;
  record.flags = 0xE0;
  const Bytes image = Bytes{0x10, 0x00, 0x08, 0x00} + kReceivedHead + Bytes{2, 0xE0, 0, 0};
  EXPECT_EQ(record.Serialize(), image);
  expectRoundTrip<Native_RecordCanStatus>(image);
}

TEST(NativeRecord, busLoadIsPerCent) {
  const Bytes image = Bytes{0x10, 0x00, 0x09, 0x00} + kReceivedHead + Bytes{2, 55, 0xAA, 0xBB};
  expectRoundTrip<Native_RecordCanBusLoad>(image);
  const auto record = Native_RecordCanBusLoad::FromBytes(image);
  EXPECT_EQ(record->timestamp, kTime);
  EXPECT_EQ(record->bus, 2);
  EXPECT_EQ(record->load, 55);
  EXPECT_EQ(Native_RecordCanBusLoad().Serialize(), (Bytes{0x10, 0, 9, 0} + Bytes(12)));
}

TEST(NativeRecord, bitrateHasTheArbitrationTiming) {
  const Bytes image = {0x10, 0, 0x0A, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  expectRoundTrip<Native_RecordCanBitrate>(image);
  const auto record = Native_RecordCanBitrate::FromBytes(image);
  EXPECT_EQ(record->bus, 1);
  EXPECT_EQ(record->warningLimit, 2);
  EXPECT_EQ(record->prescaler, 0x0403);
  EXPECT_EQ(record->tseg1, 0x0605);
  EXPECT_EQ(record->tseg2, 7);
  EXPECT_EQ(record->sjw, 8);
  EXPECT_EQ(record->frequency, 0x0C0B0A09U);
  EXPECT_EQ(Native_RecordCanBitrate().Serialize(), (Bytes{0x10, 0, 10, 0} + Bytes(12)));
}

TEST(NativeRecord, bitrateFdHasTheTimingOfBothPhases) {
  const Bytes image = {0x18, 0, 0x0B, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20};
  expectRoundTrip<Native_RecordCanBitrateFd>(image);
  const auto record = Native_RecordCanBitrateFd::FromBytes(image);
  EXPECT_EQ(record->bus, 1);
  EXPECT_EQ(record->reserved1, 2);
  EXPECT_EQ(record->warningLimit, 3);
  EXPECT_EQ(record->nominalSjw, 4);
  EXPECT_EQ(record->nominalTseg1, 0x0605);
  EXPECT_EQ(record->nominalTseg2, 7);
  EXPECT_EQ(record->dataSjw, 8);
  EXPECT_EQ(record->dataTseg1, 9);
  EXPECT_EQ(record->dataTseg2, 10);
  EXPECT_EQ(record->nominalPrescaler, 0x0C0B);
  EXPECT_EQ(record->dataPrescaler, 0x0E0D);
  EXPECT_EQ(record->reserved2, 0x100F);
  EXPECT_EQ(record->frequency, 0x14131211U);
  EXPECT_EQ(Native_RecordCanBitrateFd().Serialize(), (Bytes{0x18, 0, 11, 0} + Bytes(20)));
}

TEST(NativeRecord, overrunsAreCounted) {
  const Bytes image = Bytes{0x14, 0x00, 0x10, 0x00} + kReceivedHead + Bytes{4, 0, 0, 0, 0x78, 0x56, 0x34, 0x12};
  expectRoundTrip<Native_RecordCanOverrun>(image);
  EXPECT_EQ(Native_RecordCanOverrun::FromBytes(image)->overruns, 0x12345678U);
  EXPECT_EQ(Native_RecordCanOverrun::FromBytes(image)->bus, 4);
  EXPECT_EQ(Native_RecordCanOverrun().Serialize(), (Bytes{0x14, 0, 0x10, 0} + Bytes(16)));
  const Bytes critical = Bytes{0x14, 0x00, 0x11, 0x00} + kReceivedHead + Bytes{4, 0, 0, 0, 0x78, 0x56, 0x34, 0x12};
  expectRoundTrip<Native_RecordCanCritical>(critical);
  EXPECT_EQ(Native_RecordCanCritical().Serialize(), (Bytes{0x14, 0, 0x11, 0} + Bytes(16)));
}

template <class Record>
void expectReceivedTimeMoves(Record record) {
  ITimestampAdjustable& adjustable = record;
  adjustable.AdjustTimestamp(5);
  EXPECT_EQ(record.frame.timestamp, 4U) << "modulo 2^64";
}

template <class Record>
void expectBothTimesMove(Record record) {
  ITimestampAdjustable& adjustable = record;
  adjustable.AdjustTimestamp(5);
  EXPECT_EQ(record.frame.timestamp, 4U) << "modulo 2^64";
  EXPECT_EQ(record.frame.timestampSent, 105U);
}

TEST(NativeRecord, adjustingMovesEveryTimeOfARecord) {
  constexpr std::uint64_t kLast = std::numeric_limits<std::uint64_t>::max();
  const Internal_DataFrameInfo info(0, 0, 0, 1);
  expectReceivedTimeMoves(Native_RecordCanRxMsg({}, kLast, info));
  expectReceivedTimeMoves(Native_RecordCanRxRtrMsg(kLast, info));
  expectReceivedTimeMoves(Native_RecordCanRxFdMsg({}, kLast, info));
  expectBothTimesMove(Native_RecordCanTxMsg({}, kLast, 100, info));
  expectBothTimesMove(Native_RecordCanTxRtrMsg(kLast, 100, info));
  expectBothTimesMove(Native_RecordCanTxFdMsg({}, kLast, 100, info));
  Native_RecordCanError error;
  error.AdjustTimestamp(7);
  EXPECT_EQ(error.timestamp, 7U);
  Native_RecordCanStatus status;
  status.AdjustTimestamp(7);
  EXPECT_EQ(status.timestamp, 7U);
}

TEST(NativeRecord, everyRecordIsSerializableByItsBase) {
  const Native_RecordCanRxMsg frame(counting(1), kTime, {0, 1, 0, 1});
  const ISerializable& serializable = frame;
  EXPECT_EQ(serializable.Serialize(), frame.Serialize());
}

}  // namespace
}  // namespace xlatr
