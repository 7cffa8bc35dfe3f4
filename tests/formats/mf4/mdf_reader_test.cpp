#include "formats/mf4/mdf_reader.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "formats/mf4/mdf_file_builder.hpp"
#include "support/temp_folder.hpp"
#include "util/failures.hpp"
#include "util/time_zone.hpp"
#include "xlatr/failures.hpp"

namespace xlatr {
namespace {

using test::ByteList;
using test::join;
using test::le;
using test::MdfFileBuilder;
using test::real;
using test::textBytes;

// How reading fails when the data of a group end before its next record.
std::string failureAfterTheDataOf(std::uint64_t group) {
  std::ostringstream text;
  text << "Index is out of range for next cycle for Channel Group 0x" << std::hex << group;
  return text.str();
}

class MdfReaderTest : public testing::Test {
 protected:
  std::string save(const MdfFileBuilder& file, const std::string& name = "trace.mf4") {
    return folder_.write(name, file.asText());
  }
  MdfReader openReader(const MdfFileBuilder& file) { return MdfReader(MdfInfo(save(file))); }

  // What reading the whole file ends with: the text of its failure, or nothing.
  template <class Failure = ConverterProcessingException>
  std::string failureOf(const MdfFileBuilder& file) {
    MdfReader reader = openReader(file);
    try {
      reader.setActive(true);
      MdfCanMessage message;
      while (reader.readInto(message)) {
      }
    } catch (const Failure& failure) {
      EXPECT_EQ(reader.failure(), failure.what());
      return failure.what();
    }
    return "";
  }

  std::vector<double> timesOf(const MdfFileBuilder& file) {
    MdfReader reader = openReader(file);
    EXPECT_TRUE(reader.setActive(true));
    std::vector<double> times;
    for (MdfCanMessage message; reader.readInto(message);) {
      times.push_back(message.time.count());
    }
    return times;
  }

  std::string reasonAgainst(const MdfFileBuilder& file) {
    std::string reason = "not set";
    MdfReader reader = openReader(file);
    const bool valid = reader.ValidateFile(reason);
    EXPECT_EQ(valid, reason.empty());
    return reason;
  }

  test::TempFolder folder_;
};

// The information object.

TEST_F(MdfReaderTest, infoTellsVersionStartAndFirstDataGroup) {
  MdfFileBuilder file(411);
  file.sortedFile({MdfFileBuilder::record(0)});
  const MdfInfo info(save(file));
  EXPECT_TRUE(info.getValid());
  EXPECT_EQ(info.getVersion(), 4.11);
  // 1500000000.123456 seconds since 1970.
  EXPECT_DOUBLE_EQ(info.getStartTime(), (1500000000.0 + 2209161600.0 + 0.123 + 0.000456) / 86400.0);
  EXPECT_EQ(info.getStartTime(), (1500000000.0 + 2209161600.0 + 123 / 1000.0 + 456 / 1000000.0) / 86400.0);
  EXPECT_EQ(info.getLowestVersion(), 4.1);
  EXPECT_EQ(info.getCurrentVersion(), 4.2);
  EXPECT_EQ(info.firstDataGroupPosition(), file.bytes().size() - 64);
}

TEST_F(MdfReaderTest, infoIsValidFromVersion410To420) {
  const struct {
    std::uint16_t version;
    bool valid;
  } cases[] = {{400, false}, {409, false}, {410, true}, {411, true}, {420, true}, {421, false}, {500, false}};
  for (const auto& each : cases) {
    MdfFileBuilder file(each.version);
    EXPECT_EQ(MdfInfo(save(file)).getValid(), each.valid) << each.version;
  }
}

TEST_F(MdfReaderTest, infoOfAnotherExtensionHasNoHeader) {
  MdfFileBuilder file;
  MdfInfo info(save(file, "trace.dat"));
  EXPECT_FALSE(info.getValid());
  EXPECT_EQ(info.header(), nullptr);
  EXPECT_EQ(info.firstDataGroupPosition(), std::numeric_limits<std::uint64_t>::max());
  MdfReader reader(info);
  std::string reason;
  EXPECT_FALSE(reader.ValidateFile(reason));
  EXPECT_EQ(reason, "Mdf file could not be read");
  EXPECT_FALSE(reader.setActive(true));
  EXPECT_EQ(reader.failure(), "Mdf file could not be read");
}

TEST_F(MdfReaderTest, infoOfAFileThatIsTooShortIsNotValid) {
  MdfFileBuilder file;
  for (const std::size_t size : {0U, 1U, 63U, 64U, 87U, 100U, 167U}) {
    const MdfInfo info(folder_.write("short.mf4", file.asText().substr(0, size)));
    EXPECT_FALSE(info.getValid()) << size;
    std::string reason;
    EXPECT_FALSE(MdfReader(info).ValidateFile(reason));
    EXPECT_EQ(reason, "Only finalized MDF4 files are supported");
  }
  EXPECT_TRUE(MdfInfo(folder_.write("whole.mf4", file.asText().substr(0, 168))).getValid());
}

TEST_F(MdfReaderTest, infoDoesNotCompareTheFileIdentification) {
  MdfFileBuilder file;
  file.patch(0, textBytes("Whatever"));
  EXPECT_TRUE(MdfInfo(save(file)).getValid());
}

TEST_F(MdfReaderTest, infoOfAFileWithoutHeaderBlockIsNotValid) {
  for (const char* const id : {"##DG", "HD##", "##QQ"}) {
    MdfFileBuilder file;
    file.patch(64, textBytes(id));
    EXPECT_FALSE(MdfInfo(save(file)).getValid()) << id;
    EXPECT_EQ(reasonAgainst(file), "Only finalized MDF4 files are supported") << id;
  }
}

TEST_F(MdfReaderTest, infoReadsTheStartAsTheClockOnTheWall) {
  MdfFileBuilder file;
  file.patch(64 + 24 + 48, le(1'500'000'000'000'000'000, 8));
  {
    const ScopedTimeZone zone(kCentralEurope);
    EXPECT_NEAR(MdfInfo(save(file)).getStartTime() * 86400.0, 1500000000.0 - 3600.0 + 2209161600.0, 1e-4);
  }
  const ScopedTimeZone zone(kNewYork);
  EXPECT_NEAR(MdfInfo(save(file)).getStartTime() * 86400.0, 1500000000.0 + 5 * 3600.0 + 2209161600.0, 1e-4);
}

TEST_F(MdfReaderTest, infoWithoutAStartThatCanBeRepresentedHasNone) {
  const ScopedTimeZone zone(kCentralEurope);
  MdfFileBuilder file;
  file.patch(64 + 24 + 48, le(3'599'000'000'000, 8));  // before 1970 by the clock of Greenwich
  const MdfInfo info(save(file));
  EXPECT_TRUE(info.getValid());
  EXPECT_EQ(info.getStartTime(), 0.0);
}

TEST_F(MdfReaderTest, infoOfAPathWithoutFileIsNotValid) {
  const MdfInfo info(folder_.file("none.mf4"));
  EXPECT_FALSE(info.getValid());
  EXPECT_EQ(info.getStartTime(), 0.0);
}

TEST_F(MdfReaderTest, infoTakesTheStartByItsFlags) {
  MdfFileBuilder file;
  // Neither local nor with offsets, an hour ahead of 1970 by the offset, and the end of the count.
  const struct {
    std::uint64_t start;
    std::int16_t timeZone;
    std::uint8_t flags;
    double seconds;
  } cases[] = {
      {1'500'000'000'000'000'000, 60, 0, 0.0},
      {1'500'000'000'000'000'000, 60, 1, 1500000000.0},
      {1'500'000'000'000'000'000, 60, 2, 1500003600.0},
      {1'500'000'000'000'000'000, 60, 3, 1500000000.0},
      {0, -60, 2, 0.0},
      {0xFFFFFFFFFFFFFFFF, 1, 2, 18446744073.709551},
  };
  for (const auto& each : cases) {
    file.patch(64 + 24 + 48, join({le(each.start, 8), le(static_cast<std::uint16_t>(each.timeZone), 2), le(0, 2),
                                   le(each.flags, 1)}));
    EXPECT_NEAR(MdfInfo(save(file)).getStartTime() * 86400.0, each.seconds + 2209161600.0, 1e-4);
  }
}

TEST_F(MdfReaderTest, aTimeZoneOfAnHourAndSummerTimeMoveTheStart) {
  MdfFileBuilder file;
  file.patch(64 + 24 + 48, join({le(3'600'000'000'000, 8), le(60, 2), le(30, 2), le(2, 1)}));
  EXPECT_NEAR(MdfInfo(save(file)).getStartTime() * 86400.0 - 2209161600.0, 3600.0 + 3600.0 + 1800.0, 1e-4);
}

// Validation.

TEST_F(MdfReaderTest, anUnfinishedFileIsRefused) {
  for (const std::uint64_t offset : {60U, 62U}) {
    MdfFileBuilder file;
    file.sortedFile({MdfFileBuilder::record(0)});
    EXPECT_EQ(reasonAgainst(file), "");
    file.patch(offset, le(1, 2));
    EXPECT_EQ(reasonAgainst(file), "Only finalized MDF4 files are supported");
  }
}

TEST_F(MdfReaderTest, aFileWithoutCanSourceHasNothingToConvert) {
  constexpr char kNothing[] = "CAN bus not available. There is no data to be converted";
  MdfFileBuilder empty;
  EXPECT_EQ(reasonAgainst(empty), kNothing);
  MdfFileBuilder lin;
  lin.setFirstDataGroup(lin.dataGroup(lin.group({.busType = 3}), 0));
  EXPECT_EQ(reasonAgainst(lin), kNothing);
  MdfFileBuilder noBusEvent;
  noBusEvent.setFirstDataGroup(noBusEvent.dataGroup(noBusEvent.group({.flags = 4}), 0));
  EXPECT_EQ(reasonAgainst(noBusEvent), kNothing);
  MdfFileBuilder second;  // a CAN group after another one, in the second data group
  const std::uint64_t group = second.group({.busType = 3}, second.group({}));
  second.setFirstDataGroup(second.dataGroup(0, 0, 0, second.dataGroup(group, 0)));
  EXPECT_EQ(reasonAgainst(second), "");
}

TEST_F(MdfReaderTest, validationReportsADamagedBlockAndRaisesNothing) {
  MdfFileBuilder beyond;
  beyond.setFirstDataGroup(100000);
  EXPECT_EQ(reasonAgainst(beyond), "Not all wanted bytes could be retrieved for building a HeaderSection");
  MdfFileBuilder noId;
  noId.setFirstDataGroup(8);  // where the version stands
  EXPECT_EQ(reasonAgainst(noId), "Format of parameter 'toParse' must be: '##[Blocktype ID]': {4.10}");
}

TEST_F(MdfReaderTest, aClosedFileIsNotValidAnyMore) {
  MdfFileBuilder file;
  file.sortedFile({MdfFileBuilder::record(0)});
  const MdfInfo info(save(file));
  MdfReader reader(info);
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_TRUE(info.getValid());
  EXPECT_FALSE(reader.setActive(false));
  EXPECT_FALSE(info.getValid());
  EXPECT_FALSE(reader.getTrace().getValid());
  std::string reason;
  EXPECT_FALSE(reader.ValidateFile(reason));
  EXPECT_EQ(reason, "Only finalized MDF4 files are supported");
  EXPECT_FALSE(reader.setActive(true));
  EXPECT_FALSE(reader.getActive());
  EXPECT_EQ(reader.failure(), "Only finalized MDF4 files are supported");
  EXPECT_EQ(reader.ReadNextMessage(), nullptr);
}

// Reading.

TEST_F(MdfReaderTest, readsARecord) {
  MdfFileBuilder file;
  file.sortedFile({MdfFileBuilder::record(1'234'500, 0x1ABCDEF0, 0x01 | 0x02 | 0x08 | 0x10, 3, 7)});
  MdfReader reader = openReader(file);
  ASSERT_TRUE(reader.setActive(true));
  const auto message = reader.ReadNextMessage();
  ASSERT_NE(message, nullptr);
  EXPECT_TRUE(message->getValid());
  EXPECT_EQ(message->time, RealMicroseconds(1234.5));
  EXPECT_EQ(message->bus, 7U);
  EXPECT_EQ(message->getIdentifier(), 0x1ABCDEF0U);
  EXPECT_TRUE(message->extended);
  EXPECT_EQ(message->direction, MessageDirection::Tx);
  EXPECT_EQ(message->type, MessageType::Tx);
  EXPECT_EQ(message->kind, MessageKind::FB);
  EXPECT_EQ(message->dlc, 3U);
  EXPECT_EQ(message->getLength(), 3U);
  EXPECT_EQ(message->data, (ByteList{0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88}));
  EXPECT_EQ(message->frameKind, 0);
  EXPECT_EQ(reader.getPercentDone(), 100.0);
  EXPECT_EQ(reader.ReadNextMessage(), nullptr);
  EXPECT_EQ(reader.invalidCount(), 0U);
}

TEST_F(MdfReaderTest, percentRisesToAHundredAtTheLastMessage) {
  MdfFileBuilder file;
  file.sortedFile(
      {MdfFileBuilder::record(0), MdfFileBuilder::record(1), MdfFileBuilder::record(2), MdfFileBuilder::record(3)});
  MdfReader reader = openReader(file);
  ASSERT_TRUE(reader.setActive(true));
  for (const double percent : {25.0, 50.0, 75.0, 100.0}) {
    ASSERT_NE(reader.ReadNextMessage(), nullptr);
    EXPECT_EQ(reader.getPercentDone(), percent);
  }
}

TEST_F(MdfReaderTest, percentOfAFileWithoutRecordsIsNoNumber) {
  MdfFileBuilder file;
  file.sortedFile({});
  MdfReader reader = openReader(file);
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_EQ(reader.ReadNextMessage(), nullptr);
  EXPECT_TRUE(std::isnan(reader.getPercentDone()));
}

TEST_F(MdfReaderTest, mergesDataGroupsByTimeAndTiesByTheirOrder) {
  MdfFileBuilder file;
  const auto addGroup = [&](const std::vector<ByteList>& records, std::uint64_t next) {
    const std::uint64_t group = file.group({.channels = file.frameChannels(), .cycles = records.size()});
    return file.dataGroup(group, file.data(join(records)), 0, next);
  };
  const std::uint64_t third = addGroup({MdfFileBuilder::record(1000, 0x301), MdfFileBuilder::record(5000, 0x302)}, 0);
  const std::uint64_t second =
      addGroup({MdfFileBuilder::record(3000, 0x201), MdfFileBuilder::record(5000, 0x202)}, third);
  file.setFirstDataGroup(addGroup({MdfFileBuilder::record(5000, 0x101), MdfFileBuilder::record(2000, 0x102)}, second));
  MdfReader reader = openReader(file);
  ASSERT_TRUE(reader.setActive(true));
  std::vector<std::uint32_t> ids;
  for (MdfCanMessage message; reader.readInto(message);) {
    ids.push_back(message.id);
  }
  // Within a group the order of the file stays: 0x102 waits for 0x101.
  EXPECT_EQ(ids, (std::vector<std::uint32_t>{0x301, 0x201, 0x101, 0x102, 0x202, 0x302}));
}

TEST_F(MdfReaderTest, unsortedRecordsKeepTheirFileOrder) {
  for (const auto idSize : std::vector<std::uint8_t>{1, 2, 4, 8}) {
    MdfFileBuilder file;
    const std::uint64_t second = file.group({.channels = file.frameChannels(), .cycles = 2, .recordId = 7});
    const std::uint64_t first = file.group({.channels = file.frameChannels(), .cycles = 1, .recordId = 3}, second);
    const std::uint64_t data =
        file.data(join({le(7, idSize), MdfFileBuilder::record(9000), le(3, idSize), MdfFileBuilder::record(4000),
                        le(7, idSize), MdfFileBuilder::record(6000)}));
    file.setFirstDataGroup(file.dataGroup(first, data, idSize));
    EXPECT_EQ(timesOf(file), (std::vector<double>{9.0, 4.0, 6.0})) << static_cast<int>(idSize);
  }
}

TEST_F(MdfReaderTest, recordIdsAboveAByteAreFound) {
  MdfFileBuilder file;
  const std::uint64_t second = file.group({.channels = file.frameChannels(), .cycles = 1, .recordId = 0x10000});
  const std::uint64_t first = file.group({.channels = file.frameChannels(), .cycles = 1, .recordId = 0x100}, second);
  const std::uint64_t data =
      file.data(join({le(0x10000, 4), MdfFileBuilder::record(2000), le(0x100, 4), MdfFileBuilder::record(1000)}));
  file.setFirstDataGroup(file.dataGroup(first, data, 4));
  EXPECT_EQ(timesOf(file), (std::vector<double>{2.0, 1.0}));
}

TEST_F(MdfReaderTest, withoutRecordIdsAllRecordsAreThoseOfTheLowestId) {
  MdfFileBuilder file;
  // Without the payload's last byte, so that records of the other size would be read from the wrong places.
  constexpr std::uint32_t kSize = 23;
  const std::uint64_t parts = file.channels({{.name = "BusChannel", .byteOffset = 8},
                                             {.name = "ID", .byteOffset = 9, .bitCount = 32},
                                             {.name = "DLC", .byteOffset = 14}});
  const std::uint64_t channels = file.topChannels("CAN_RemoteFrame", parts);
  const std::uint64_t second = file.group({.channels = channels, .cycles = 1, .dataBytes = kSize, .recordId = 1});
  const std::uint64_t first =
      file.group({.channels = file.frameChannels(), .cycles = 1, .dataBytes = 40, .recordId = 5}, second);
  ByteList records;
  for (const std::uint32_t id : {0x101U, 0x102U}) {
    const ByteList record = MdfFileBuilder::record(1000, id);
    records.insert(records.end(), record.begin(), record.begin() + kSize);
  }
  file.setFirstDataGroup(file.dataGroup(first, file.data(records)));
  MdfReader reader = openReader(file);
  ASSERT_TRUE(reader.setActive(true));
  MdfCanMessage message;
  for (const std::uint32_t id : {0x101U, 0x102U}) {
    ASSERT_TRUE(reader.readInto(message));
    EXPECT_TRUE(message.valid);
    EXPECT_TRUE(message.isRemote);
    EXPECT_EQ(message.id, id);
    EXPECT_EQ(message.frameKind, 1);
  }
  EXPECT_FALSE(reader.readInto(message));
}

TEST_F(MdfReaderTest, ofTwoGroupsWithOneRecordIdTheLaterOneCounts) {
  MdfFileBuilder file;
  const std::uint64_t second = file.group({.channels = file.frameChannels(), .cycles = 1, .recordId = 1});
  const std::uint64_t first = file.group({.channels = 0, .cycles = 5, .dataBytes = 3, .recordId = 1}, second);
  file.setFirstDataGroup(file.dataGroup(first, file.data(join({le(1, 1), MdfFileBuilder::record(1000)})), 1));
  EXPECT_EQ(timesOf(file), std::vector<double>{1.0});
}

TEST_F(MdfReaderTest, cycleCountsDecideAndNotTheSizeOfTheData) {
  MdfFileBuilder file;
  const std::uint64_t group = file.group({.channels = file.frameChannels(), .cycles = 1});
  file.setFirstDataGroup(
      file.dataGroup(group, file.data(join({MdfFileBuilder::record(1000), MdfFileBuilder::record(2000)}))));
  EXPECT_EQ(timesOf(file), std::vector<double>{1.0});
}

TEST_F(MdfReaderTest, dataGroupsWithoutCanBusArePassedOver) {
  MdfFileBuilder file;
  const std::uint64_t can = file.dataGroup(file.group({.channels = file.frameChannels(), .cycles = 1}),
                                           file.data(MdfFileBuilder::record(1000)));
  const std::uint64_t lin = file.dataGroup(file.group({.channels = file.frameChannels(), .cycles = 1, .busType = 3}),
                                           file.data(MdfFileBuilder::record(500)), 0, can);
  file.setFirstDataGroup(lin);
  EXPECT_EQ(timesOf(file), std::vector<double>{1.0});
}

TEST_F(MdfReaderTest, aRecordThatIsNotUnderstoodIsAMessageThatIsNotValid) {
  MdfFileBuilder file;
  const std::uint64_t group = file.group({.cycles = 2});
  file.setFirstDataGroup(
      file.dataGroup(group, file.data(join({MdfFileBuilder::record(1000), MdfFileBuilder::record(2000)}))));
  MdfReader reader = openReader(file);
  ASSERT_TRUE(reader.setActive(true));
  const auto message = reader.ReadNextMessage();
  ASSERT_NE(message, nullptr);
  EXPECT_FALSE(message->valid);
  EXPECT_EQ(message->id, kNoIdentifier);
  EXPECT_EQ(message->bus, 1U);
  EXPECT_EQ(message->direction, MessageDirection::Rx);
  EXPECT_EQ(message->errorType, 255);
  ASSERT_NE(reader.ReadNextMessage(), nullptr);
  EXPECT_EQ(reader.invalidCount(), 2U);
}

TEST_F(MdfReaderTest, anInactiveReaderReadsNothing) {
  MdfFileBuilder file;
  file.sortedFile({MdfFileBuilder::record(0)});
  MdfReader reader = openReader(file);
  EXPECT_FALSE(reader.getActive());
  EXPECT_EQ(reader.ReadNextMessage(), nullptr);
}

// Failures at the start.

TEST_F(MdfReaderTest, aVariableLengthGroupIsRefusedOnStart) {
  MdfFileBuilder file;
  const std::uint64_t second = file.group({.recordId = 2, .flags = 1});
  const std::uint64_t first = file.group({.channels = file.frameChannels(), .recordId = 1}, second);
  file.setFirstDataGroup(file.dataGroup(first, 0, 1));
  MdfReader reader = openReader(file);
  EXPECT_THROW(reader.setActive(true), ConverterProcessingException);
  EXPECT_FALSE(reader.getActive());
  EXPECT_EQ(reader.failure(), "VLSD Channel groups are not supported");
}

// Blocks that the first start reached are no loop for the second.
TEST_F(MdfReaderTest, aStartThatFailedFailsInTheSameWayAgain) {
  MdfFileBuilder file;
  const std::uint64_t good = file.data(MdfFileBuilder::record(0));
  const ByteList junk(100, 0x55);
  const std::uint64_t bad =
      file.block("DZ", {}, join({test::textBytes("DT"), le(0, 2), le(0, 4), le(24, 8), le(100, 8), junk}));
  const std::uint64_t list = file.block("DL", {0, good, bad}, join({le(1, 4), le(2, 4), le(24, 8)}));
  file.setFirstDataGroup(file.dataGroup(file.group({.channels = file.frameChannels(), .cycles = 2}), list));
  MdfReader reader = openReader(file);
  for (int start = 0; start < 2; ++start) {
    EXPECT_THROW(reader.setActive(true), ConverterGenericException);
    EXPECT_FALSE(reader.getActive());
    EXPECT_EQ(reader.failure(), "Decompression error");
  }
}

// Failures of records.

TEST_F(MdfReaderTest, recordIdBeyondTheDataFails) {
  MdfFileBuilder file;
  const std::uint64_t group = file.group({.channels = file.frameChannels(), .cycles = 2});
  file.setFirstDataGroup(file.dataGroup(group, file.data(join({le(0, 2), MdfFileBuilder::record(0), le(0, 1)})), 2));
  EXPECT_EQ(failureOf(file), "Index is out of range for record Id");
}

TEST_F(MdfReaderTest, recordIdSizeOfThreeFails) {
  for (const auto size : std::vector<std::uint8_t>{3, 5, 9, 255}) {
    MdfFileBuilder file;
    const std::uint64_t group = file.group({.channels = file.frameChannels(), .cycles = 1});
    file.setFirstDataGroup(file.dataGroup(group, file.data(ByteList(400)), size));
    EXPECT_EQ(failureOf(file), "Record Id size not allowed");
  }
}

TEST_F(MdfReaderTest, unknownRecordIdFails) {
  for (const auto size : std::vector<std::uint8_t>{1, 2, 4, 8}) {
    MdfFileBuilder file;
    const std::uint64_t group = file.group({.channels = file.frameChannels(), .cycles = 1, .recordId = 1});
    file.setFirstDataGroup(file.dataGroup(group, file.data(join({le(2, size), MdfFileBuilder::record(0)})), size));
    EXPECT_EQ(failureOf(file), "Unknown record Id");
  }
}

TEST_F(MdfReaderTest, invalidationBytesFail) {
  MdfFileBuilder file;
  const std::uint64_t group = file.group({.channels = file.frameChannels(), .cycles = 1, .invalidationBytes = 1});
  file.setFirstDataGroup(file.dataGroup(group, file.data(MdfFileBuilder::record(0))));
  EXPECT_EQ(failureOf(file), "CG Invalidation bits are not supported");
}

TEST_F(MdfReaderTest, cycleCountBeyondTheDataFails) {
  MdfFileBuilder file;
  const std::uint64_t group = file.group({.channels = file.frameChannels(), .cycles = 0xFFFFFFFFFFFFFFFF});
  file.setFirstDataGroup(file.dataGroup(group, file.data(join({MdfFileBuilder::record(0), ByteList(23)}))));
  EXPECT_EQ(failureOf<ConverterGenericException>(file), failureAfterTheDataOf(group));
}

TEST_F(MdfReaderTest, aDataGroupWithoutADataLinkHasNoBytes) {
  MdfFileBuilder file;
  const std::uint64_t group = file.group({.channels = file.frameChannels(), .cycles = 1});
  file.setFirstDataGroup(file.dataGroup(group, 0));
  EXPECT_EQ(failureOf<ConverterGenericException>(file), failureAfterTheDataOf(group));
}

TEST_F(MdfReaderTest, aRecordOfNoBytesWithCyclesLeftFails) {
  MdfFileBuilder file;
  const std::uint64_t group =
      file.group({.channels = file.frameChannels(), .cycles = std::uint64_t{1} << 60, .dataBytes = 0});
  file.setFirstDataGroup(file.dataGroup(group, file.data(MdfFileBuilder::record(0))));
  EXPECT_EQ(failureOf<ConverterGenericException>(file).substr(0, 38), "Index is out of range for next cycle f");
}

TEST_F(MdfReaderTest, nothingIsReadAfterAFailure) {
  MdfFileBuilder file;
  const std::uint64_t group = file.group({.channels = file.frameChannels(), .cycles = 3});
  file.setFirstDataGroup(file.dataGroup(group, file.data(MdfFileBuilder::record(0))));
  MdfReader reader = openReader(file);
  ASSERT_TRUE(reader.setActive(true));
  ASSERT_NE(reader.ReadNextMessage(), nullptr);
  EXPECT_THROW(static_cast<void>(reader.ReadNextMessage()), ConverterGenericException);
  EXPECT_EQ(reader.ReadNextMessage(), nullptr);
  EXPECT_EQ(reader.failure().substr(0, 21), "Index is out of range");
}

}  // namespace
}  // namespace xlatr
