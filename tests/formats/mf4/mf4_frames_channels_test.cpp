// What the channels of MF4 files may be: times of all kinds, members that are valid or not, payloads of all lengths.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "formats/mf4/mdf_file_builder.hpp"
#include "formats/mf4/mf4_read_file.hpp"

namespace xlatr {
namespace {

using test::ByteList;
using test::ChannelSpec;
using test::join;
using test::le;
using test::MdfFileBuilder;
using test::readFile;
using test::ReadFile;
using test::real;
using test::Texts;

constexpr std::uint32_t kAllInvalid = 0x401;
constexpr std::uint32_t kInvalidBit = 0x402;
constexpr std::size_t kTimeSize = 8;

// The frames of records whose times are this channel, in the first eight bytes.
ReadFile readTimes(MdfFileBuilder& file, ChannelSpec time, const std::vector<ByteList>& values) {
  time.name = "t";
  time.type = time.type == 0 ? 2 : time.type;
  const std::uint64_t parts = file.channels({{.name = "ID", .byteOffset = kTimeSize, .bitCount = 8}});
  const std::uint64_t frame =
      file.channel({.name = "CAN_DataFrame", .dataType = 10, .byteOffset = 8, .bitCount = 8, .composition = parts});
  ByteList records;
  for (ByteList value : values) {
    value.resize(kTimeSize);
    records = join({records, value, le(1, 1)});
  }
  const std::uint64_t group =
      file.group({.channels = file.channel(time, frame), .cycles = values.size(), .dataBytes = kTimeSize + 1});
  file.setFirstDataGroup(file.dataGroup(group, file.data(records)));
  return readFile(file);
}

std::vector<std::int64_t> timesOf(const ReadFile& read) {
  std::vector<std::int64_t> times;
  for (const std::string& frame : read.frames) {
    times.push_back(std::stoll(frame));
  }
  return times;
}

using Times = std::vector<std::int64_t>;

ByteList real32(float value) {
  return le(std::bit_cast<std::uint32_t>(value), 4);
}

ByteList reversed(ByteList bytes) {
  return {bytes.rbegin(), bytes.rend()};
}

TEST(Mf4FrameChannels, haveTimesOfAllNumbers) {
  struct Case {
    std::uint8_t dataType;
    std::uint32_t bitCount;
    std::vector<ByteList> values;
    Times times;
  };
  const std::vector<Case> cases = {
      {0, 64, {le(5, 8)}, {5'000'000'000}},
      {1, 32, {reversed(le(5, 4))}, {5'000'000'000}},
      {2, 32, {le(0xFFFFFFFF, 4), le(2, 4)}, {-1'000'000'000, 2'000'000'000}},
      {4, 16, {{0x00, 0x3E}, {0x00, 0xBE}}, {1'500'000'000, -1'500'000'000}},
      {4, 32, {real32(0.5F), real32(-0.25F)}, {500'000'000, -250'000'000}},
      {5, 32, {reversed(real32(0.5F))}, {500'000'000}},
      {4, 64, {real(1.0000000016), real(-1.25), real(3.0)}, {1'000'000'002, -1'250'000'000, 3'000'000'000}},
      {5, 64, {reversed(real(0.125))}, {125'000'000}},
  };
  for (const Case& each : cases) {
    MdfFileBuilder file;
    const std::uint64_t seconds = file.conversion(1, {0, 1}, "s");
    const ReadFile read =
        readTimes(file, {.dataType = each.dataType, .bitCount = each.bitCount, .conversion = seconds}, each.values);
    EXPECT_EQ(timesOf(read), each.times) << int{each.dataType} << " " << each.bitCount;
    EXPECT_TRUE(read.account.complete());
  }
}

TEST(Mf4FrameChannels, haveTimesOfAllUnits) {
  const std::vector<std::pair<const char*, std::int64_t>> units = {
      {"s", 7'000'000'000}, {"ms", 7'000'000}, {"us", 7'000}, {"\xC2\xB5s", 7'000}, {"ns", 7}};
  for (const auto& [unit, time] : units) {
    MdfFileBuilder file;
    EXPECT_EQ(timesOf(readTimes(file, {.bitCount = 32, .unit = file.text(unit)}, {le(7, 4)})), Times{time}) << unit;
  }
}

// Without a unit: real numbers are seconds, counts are the nanoseconds of loggers, which is told.
TEST(Mf4FrameChannels, haveTimesWithoutUnits) {
  MdfFileBuilder seconds;
  const ReadFile real = readTimes(seconds, {.dataType = 4, .bitCount = 64}, {test::real(7.0)});
  EXPECT_EQ(timesOf(real), Times{7'000'000'000});
  EXPECT_TRUE(real.account.complete());

  MdfFileBuilder counts;
  const ReadFile count = readTimes(counts, {.bitCount = 32}, {le(7, 4), le(8, 4)});
  EXPECT_EQ(timesOf(count), (Times{7, 8}));
  EXPECT_EQ(count.account.noted(Remark::DetailGuessed), (Account::Count{1, 1}));
}

TEST(Mf4FrameChannels, haveTimesWithOffsetsAndFactorsOfAnySign) {
  MdfFileBuilder offset;
  EXPECT_EQ(timesOf(readTimes(offset, {.bitCount = 32, .conversion = offset.conversion(1, {-2.5, 1e-3}, "s")},
                              {le(0, 4), le(3'000, 4)})),
            (Times{-2'500'000'000, 500'000'000}));
  MdfFileBuilder negative;
  EXPECT_EQ(timesOf(readTimes(negative, {.bitCount = 32, .conversion = negative.conversion(1, {0.0, -0.5}, "s")},
                              {le(3, 4)})),
            Times{-1'500'000'000});
  MdfFileBuilder fraction;
  EXPECT_EQ(timesOf(readTimes(fraction, {.bitCount = 32, .conversion = fraction.conversion(1, {0.0, 2.5e-10}, "s")},
                              {le(1, 4), le(2, 4), le(6, 4)})),
            (Times{0, 1, 2}));
}

TEST(Mf4FrameChannels, haveTimesOfTheirRecordsNumbers) {
  MdfFileBuilder file;
  const ReadFile read =
      readTimes(file, {.type = 3, .bitCount = 0, .conversion = file.conversion(1, {1, 0.5}, "s")}, {{}, {}, {}});
  EXPECT_EQ(timesOf(read), (Times{1'000'000'000, 1'500'000'000, 2'000'000'000}));
}

TEST(Mf4FrameChannels, countRecordsWithoutATime) {
  MdfFileBuilder file;
  const std::vector<ByteList> values = {real(1.0), real(std::numeric_limits<double>::quiet_NaN()), real(1e30),
                                        real(std::numeric_limits<double>::infinity()), real(2.0)};
  const ReadFile read = readTimes(file, {.dataType = 4, .bitCount = 64}, values);
  EXPECT_EQ(timesOf(read), (Times{1'000'000'000, 2'000'000'000}));
  EXPECT_EQ(read.account.noted(Remark::RecordNotUnderstood), (Account::Count{3, 2}));
}

TEST(Mf4FrameChannels, countRecordsWhoseTimeATableDoesNotHave) {
  MdfFileBuilder file;
  const std::uint64_t ranges = file.conversion(6, {0, 1, 5, 2, 3, 1e30, 4, 5, 0.25}, "s");
  const ReadFile read = readTimes(file, {.bitCount = 8, .conversion = ranges}, {{0}, {2}, {4}, {9}});
  EXPECT_EQ(timesOf(read), (Times{5'000'000'000, 250'000'000}));
  EXPECT_EQ(read.account.noted(Remark::RecordNotUnderstood).frames, 2U);
}

TEST(Mf4FrameChannels, areNoFramesWithoutAUsableTime) {
  MdfFileBuilder formula;
  EXPECT_EQ(readTimes(formula, {.bitCount = 8, .conversion = formula.conversion(3, {})}, {{1}}).damaged(), 1U);
  MdfFileBuilder half;
  EXPECT_EQ(readTimes(half, {.bitCount = 8, .conversion = half.conversion(1, {1})}, {{1}}).damaged(), 1U);
  MdfFileBuilder nowhere;
  EXPECT_GE(readTimes(nowhere, {.bitCount = 8, .conversion = 12}, {{1}}).damaged(), 1U);
  MdfFileBuilder outside;
  EXPECT_EQ(readTimes(outside, {.byteOffset = 5, .bitCount = 64}, {{1}}).damaged(), 1U);
  MdfFileBuilder odd;
  EXPECT_EQ(readTimes(odd, {.dataType = 4, .bitCount = 24}, {{1}}).damaged(), 1U);
}

// A file whose records have the time (8 bytes), then what the members say, then a byte of invalidation bits.
ReadFile readMembers(MdfFileBuilder& file, const std::vector<ChannelSpec>& members,
                     const std::vector<ByteList>& records, const std::string& frame = "CAN_DataFrame",
                     std::uint32_t frameFlags = 0x400, const std::string& groupName = "") {
  const std::uint64_t nanoseconds = file.text("ns");
  const std::uint64_t last = file.channel({.name = frame,
                                           .dataType = 10,
                                           .byteOffset = 8,
                                           .bitCount = 8,
                                           .flags = frameFlags,
                                           .composition = file.channels(members)});
  const std::uint64_t first = file.channel(
      {.name = "t", .type = 2, .bitCount = 64, .flags = kInvalidBit, .invalidBit = 7, .unit = nanoseconds}, last);
  ByteList bytes;
  std::uint64_t time = 0;
  for (const ByteList& record : records) {
    bytes = join({bytes, le(++time, 8), record});
  }
  const auto size = static_cast<std::uint32_t>(7 + records.front().size());
  const std::uint64_t group = file.group(
      {.channels = first, .cycles = records.size(), .dataBytes = size, .invalidationBytes = 1, .name = groupName});
  file.setFirstDataGroup(file.dataGroup(group, file.data(bytes)));
  return readFile(file);
}

ReadFile readMembers(const std::vector<ChannelSpec>& members, const std::vector<ByteList>& records,
                     const std::string& frame = "CAN_DataFrame", std::uint32_t frameFlags = 0x400,
                     const std::string& groupName = "") {
  MdfFileBuilder file;
  return readMembers(file, members, records, frame, frameFlags, groupName);
}

const ChannelSpec kId = {.name = "ID", .byteOffset = 8, .bitCount = 16};

TEST(Mf4FrameChannels, mayBeInvalid) {
  const ChannelSpec data = {
      .name = "DataBytes", .dataType = 10, .byteOffset = 11, .bitCount = 8, .flags = kInvalidBit, .invalidBit = 3};
  const ChannelSpec length = {.name = "DataLength", .byteOffset = 10, .flags = kInvalidBit, .invalidBit = 2};
  // Of all: the time, the frame, the length, the bytes with and without a need for them.
  const ReadFile read = readMembers({kId, length, data},
                                    {{1, 0, 1, 0xAA, 0x00},
                                     {2, 0, 1, 0xAA, 0x80},
                                     {3, 0, 1, 0xAA, 0x01},
                                     {4, 0, 0, 0xAA, 0x04},
                                     {5, 0, 1, 0xAA, 0x08},
                                     {6, 0, 0, 0xAA, 0x08}},
                                    "CAN_DataFrame", kInvalidBit);
  EXPECT_EQ(read.frames, (Texts{"1 data 0 1 dlc1 [AA]", "4 data 0 4 dlc1 [AA]", "6 data 0 6"}));
  EXPECT_EQ(read.account.noted(Remark::RecordNotUnderstood), (Account::Count{3, 2}));
}

TEST(Mf4FrameChannels, mayAllBeInvalid) {
  const ReadFile read = readMembers({kId, {.name = "Dir", .byteOffset = 10, .flags = kAllInvalid}}, {{1, 0, 1, 0}});
  EXPECT_EQ(read.frames, Texts{"1 data 0 1"});
  EXPECT_EQ(readMembers({kId}, {{1, 0, 0}}, "CAN_DataFrame", kAllInvalid).damaged(), 1U);
}

// More rows than are read at once, of which some are no frames.
TEST(Mf4FrameChannels, mayBeInvalidAmongMany) {
  constexpr std::size_t kCount = 1'000;
  std::vector<ByteList> records;
  Texts expected;
  for (std::size_t at = 0; at < kCount; ++at) {
    const bool bad = at % 7 == 3;
    records.push_back(join({le(at, 2), {static_cast<std::uint8_t>(bad ? 0x80 : 0)}}));
    if (!bad) {
      char text[32];
      std::snprintf(text, sizeof text, "%zu data 0 %zX", at + 1, at);
      expected.emplace_back(text);
    }
  }
  const ReadFile read = readMembers({kId}, records);
  EXPECT_EQ(read.frames, expected);
  EXPECT_EQ(read.account.noted(Remark::RecordNotUnderstood), (Account::Count{kCount - expected.size(), 4}));
}

TEST(Mf4FrameChannels, haveIdentifiersOfAllKinds) {
  const std::vector<ChannelSpec> members = {{.name = "ID", .byteOffset = 8, .bitCount = 40},
                                            {.name = "IDE", .byteOffset = 13, .bitCount = 1}};
  const ReadFile read = readMembers(members, {join({le(0x123, 5), {1, 0}}), join({le(0x80000123, 5), {0, 0}}),
                                              join({le(0x800, 5), {0, 0}}), join({le(0x1'4000'0123, 5), {0, 0}})});
  EXPECT_EQ(read.frames, (Texts{"1 data 0 123 x", "2 data 0 123 x", "3 data 0 800 x", "4 data 0 123"}));
  EXPECT_EQ(read.account.noted(Remark::DetailGuessed), (Account::Count{2, 3}));

  // Where nothing says which frames are extended, long ones are.
  const ReadFile silent = readMembers({kId}, {{0x00, 0x08, 0}});
  EXPECT_EQ(silent.frames, Texts{"1 data 0 800 x"});
  EXPECT_TRUE(silent.account.complete());
}

TEST(Mf4FrameChannels, countFramesWithoutAnIdentifier) {
  ChannelSpec id = kId;
  id.flags = kInvalidBit;
  id.invalidBit = 1;
  const ReadFile read = readMembers({id}, {{1, 0, 0}, {2, 0, 2}});
  EXPECT_EQ(read.frames, Texts{"1 data 0 1"});
  EXPECT_EQ(read.damaged(), 1U);
  EXPECT_EQ(readMembers({{.name = "Dir", .byteOffset = 8}}, {{1, 0, 0}}).damaged(), 1U);
}

TEST(Mf4FrameChannels, haveBusesByTheNamesOfTheirGroups) {
  const ReadFile named = readMembers({kId}, {{1, 0, 0}, {2, 0, 0}}, "CAN_DataFrame", 0x400, "CAN 7");
  EXPECT_EQ(named.frames, (Texts{"1 data 7 1", "2 data 7 2"}));
  EXPECT_EQ(named.account.noted(Remark::BusGuessed), (Account::Count{2, 1}));

  const ChannelSpec bus = {.name = "BusChannel", .byteOffset = 10, .bitCount = 24};
  const ReadFile large = readMembers({kId, bus}, {{1, 0, 0, 0, 1, 0}, {2, 0, 9, 0, 0, 0}});
  EXPECT_EQ(large.frames, (Texts{"1 data 0 1", "2 data 9 2"}));
  EXPECT_EQ(large.account.noted(Remark::BusGuessed), (Account::Count{1, 1}));
}

TEST(Mf4FrameChannels, haveConstantsForWhatIsTheSameInAllRecords) {
  MdfFileBuilder file;
  const std::uint64_t five = file.conversion(1, {5, 0});
  EXPECT_EQ(readMembers(file, {kId, {.name = "BusChannel", .type = 6, .bitCount = 0, .conversion = five}},
                        {{1, 0, 0}, {2, 0, 0}})
                .frames,
            (Texts{"1 data 5 1", "2 data 5 2"}));
}

TEST(Mf4FrameChannels, areRemoteFrames) {
  const ChannelSpec dlc = {.name = "DLC", .byteOffset = 10};
  const ChannelSpec length = {.name = "DataLength", .byteOffset = 11};
  EXPECT_EQ(readMembers({kId, dlc, length}, {{1, 0, 5, 0, 0}, {2, 0, 99, 12, 0}, {3, 0, 99, 99, 0}}, "CAN_RemoteFrame")
                .frames,
            (Texts{"1 remote 0 1 known dlc5", "2 remote 0 2 known dlc9", "3 remote 0 3"}));
  EXPECT_EQ(readMembers({kId}, {{1, 0, 0}}, "CAN_RemoteFrame").frames, Texts{"1 remote 0 1"});
}

TEST(Mf4FrameChannels, areOverloadFrames) {
  EXPECT_EQ(readMembers({{.name = "BusChannel", .byteOffset = 8}}, {{2, 0}}, "CAN_OverloadFrame").frames,
            Texts{"1 overload 2 0"});
}

TEST(Mf4FrameChannels, haveLengthsByTheirCodes) {
  const std::vector<ChannelSpec> members = {
      kId,
      {.name = "DLC", .byteOffset = 10},
      {.name = "EDL", .byteOffset = 11},
      {.name = "DataBytes", .dataType = 10, .byteOffset = 12, .bitCount = 96},
  };
  const ByteList bytes = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 0};
  const ReadFile read = readMembers(members, {join({{1, 0, 9, 1}, bytes}), join({{2, 0, 9, 0}, bytes}),
                                              join({{3, 0, 2, 0}, bytes}), join({{4, 0, 16, 0}, bytes})});
  EXPECT_EQ(read.frames, (Texts{"1 data 0 1 FD dlc9 [0102030405060708090A0B0C]", "2 data 0 2 dlc9 [0102030405060708]",
                                "3 data 0 3 dlc2 [0102]", "4 data 0 4 FD dlc9 [0102030405060708090A0B0C]"}));
  EXPECT_EQ(read.account.noted(Remark::DetailGuessed), (Account::Count{1, 4}));

  // A group that says nothing of CAN FD, but for what its frames alone have.
  const std::vector<ChannelSpec> silent = {
      kId,
      {.name = "DLC", .byteOffset = 10},
      {.name = "BRS", .byteOffset = 11},
      {.name = "DataBytes", .dataType = 10, .byteOffset = 12, .bitCount = 96},
  };
  EXPECT_EQ(readMembers(silent, {join({{1, 0, 9, 1}, bytes})}).frames,
            Texts{"1 data 0 1 FD BRS dlc9 [0102030405060708090A0B0C]"});
}

TEST(Mf4FrameChannels, tellOfLengthsBeyondTheirBytes) {
  const std::vector<ChannelSpec> members = {
      kId,
      {.name = "DataLength", .byteOffset = 10},
      {.name = "DataBytes", .dataType = 10, .byteOffset = 11, .bitCount = 16},
  };
  const ReadFile read = readMembers(members, {{1, 0, 3, 0xAA, 0xBB, 0}});
  EXPECT_EQ(read.frames, Texts{"1 data 0 1 dlc2 [AABB]"});
  EXPECT_EQ(read.account.noted(Remark::LengthGuessed), (Account::Count{1, 1}));
  const ReadFile none = readMembers({kId, members[1]}, {{1, 0, 3, 0}});
  EXPECT_EQ(none.frames, Texts{"1 data 0 1"});
  EXPECT_EQ(none.account.noted(Remark::LengthGuessed).frames, 1U);
}

// The channel of the bytes says which one has their number.
TEST(Mf4FrameChannels, haveLengthsThatTheirBytesLeadTo) {
  MdfFileBuilder file;
  const std::uint64_t count = file.channel({.name = "n", .byteOffset = 10});
  EXPECT_EQ(
      readMembers(
          file,
          {kId, {.name = "DataBytes", .type = 5, .dataType = 10, .byteOffset = 11, .bitCount = 32, .data = count}},
          {{1, 0, 1, 0xAA, 0, 0, 0, 0}, {2, 0, 4, 1, 2, 3, 4, 0}})
          .frames,
      (Texts{"1 data 0 1 dlc1 [AA]", "2 data 0 2 dlc4 [01020304]"}));
}

TEST(Mf4FrameChannels, haveBytesInsideTheirRecordsAlone) {
  EXPECT_EQ(
      readMembers({kId, {.name = "DataBytes", .dataType = 10, .byteOffset = 10, .bitCount = 800}}, {{1, 0, 0}}).frames,
      Texts{"1 data 0 1"});
}

TEST(Mf4FrameChannels, areLinFramesWithWhatWasReceived) {
  const std::vector<ChannelSpec> members = {
      {.name = "ID", .byteOffset = 8},
      {.name = "DataLength", .byteOffset = 9},
      {.name = "ReceivedDataByteCount", .byteOffset = 10},
      {.name = "Checksum", .byteOffset = 11, .bitCount = 16},
      {.name = "ChecksumModel", .dataType = 2, .byteOffset = 13},
      {.name = "Dir", .byteOffset = 14},
      {.name = "DataBytes", .dataType = 10, .byteOffset = 15, .bitCount = 32},
  };
  const ReadFile read =
      readMembers(members, {{0x11, 4, 2, 0x34, 0, 0, 1, 1, 2, 3, 4, 0}, {0x12, 9, 4, 0x34, 1, 0xFF, 0, 1, 2, 3, 4, 0}},
                  "LIN_TransmissionError");
  EXPECT_EQ(read.frames.size(), 2U);
  EXPECT_EQ(read.frames.front().substr(0, 38), "1 lin 0 11 Tx dlc4 [0102] checksum=52 ");
  EXPECT_EQ(read.frames.back().substr(0, 32), "2 lin 0 12 Rx dlc4 [01020304] li");
  EXPECT_TRUE(read.account.complete());
}

TEST(Mf4FrameChannels, areLinEventsWithAndWithoutAnIdentifier) {
  EXPECT_EQ(readMembers({{.name = "BusChannel", .byteOffset = 8}}, {{2, 0}}, "LIN_WakeUp").frames,
            Texts{"1 lin_event 2 0 \"Wake-up\""});
  EXPECT_EQ(readMembers({{.name = "ID", .byteOffset = 8}}, {{0x2A, 0}, {0x40, 0}}, "LIN_SyncError").frames,
            (Texts{"1 lin_event 0 0 \"Sync error of 2A\"", "2 lin_event 0 0 \"Sync error\""}));
  EXPECT_EQ(readMembers({{.name = "BusChannel", .byteOffset = 8}}, {{2, 0}}, "LIN_Frame").damaged(), 1U);
}

TEST(Mf4FrameChannels, haveTimesOfTablesInTheirUnit) {
  MdfFileBuilder file;
  const std::uint64_t ranges = file.conversion(6, {0, 1, 1.5}, "ms");
  EXPECT_EQ(timesOf(readTimes(file, {.bitCount = 8, .conversion = ranges}, {{0}})), Times{1'500'000});
  MdfFileBuilder fine;
  const std::uint64_t picoseconds = fine.conversion(6, {0, 1, 1.5}, "ps");
  EXPECT_EQ(readTimes(fine, {.bitCount = 8, .conversion = picoseconds}, {{0}}).damaged(), 1U);
}

TEST(Mf4FrameChannels, haveTimesOfHalvesThatAreNone) {
  MdfFileBuilder file;
  const ReadFile read = readTimes(file, {.dataType = 4, .bitCount = 16, .conversion = file.conversion(1, {0, 1}, "s")},
                                  {{0x00, 0x7C}, {0x01, 0x7C}, {0x01, 0x00}});
  EXPECT_EQ(timesOf(read), Times{60});
  EXPECT_EQ(read.damaged(), 2U);
}

TEST(Mf4FrameChannels, haveNumbersAfterTheirFrame) {
  for (const char* const name : {"CAN_DataFrame_2", "Bus\\CAN_DataFrame", "CAN_DataFrame"}) {
    MdfFileBuilder file;
    const std::string prefix = std::string(name) + ".";
    EXPECT_EQ(readMembers(file, {{.name = prefix + "ID", .byteOffset = 8, .bitCount = 16}}, {{1, 0, 0}}, name).frames,
              Texts{"1 data 0 1"});
  }
  for (const char* const name : {"CAN_DataFrame_x", "MyCAN_DataFrame", "CAN_DataFrames"}) {
    EXPECT_EQ(readMembers({kId}, {{1, 0, 0}}, name).frames, Texts()) << name;
  }
}

TEST(Mf4FrameChannels, haveNamesInAnyCase) {
  for (const char* const name : {"can_dataframe", "CAN_DATAFRAME_2", "Bus.Can_DataFrame"}) {
    MdfFileBuilder file;
    const std::string prefix = std::string(name) + ".";
    EXPECT_EQ(readMembers(file,
                          {{.name = prefix + "id", .byteOffset = 8, .bitCount = 16},
                           {.name = prefix + "BUSCHANNEL", .byteOffset = 10}},
                          {{1, 0, 3, 0}}, name)
                  .frames,
              Texts{"1 data 3 1"})
        << name;
  }
}

TEST(Mf4FrameChannels, mayBeGrouped) {
  MdfFileBuilder file;
  const std::uint64_t inner = file.channels({{.name = "BRS", .byteOffset = 10}, {.name = "EDL", .byteOffset = 11}});
  EXPECT_EQ(readMembers(file, {kId, {.name = "Flags", .byteOffset = 10, .bitCount = 16, .composition = inner}},
                        {{1, 0, 1, 1, 0}})
                .frames,
            Texts{"1 data 0 1 FD BRS"});
  MdfFileBuilder flat;
  EXPECT_EQ(readMembers(flat, {kId, {.name = "Flags.EDL", .byteOffset = 10}}, {{1, 0, 1, 0}}).frames,
            Texts{"1 data 0 1 FD"});
}

// Compositions that lead into themselves end.
TEST(Mf4FrameChannels, mayLeadAnywhere) {
  MdfFileBuilder loop;
  const std::uint64_t last = loop.channel(kId);
  loop.setLink(last, 0, last);
  const std::uint64_t frame = loop.channel({.name = "CAN_DataFrame", .byteOffset = 8, .composition = last});
  const std::uint64_t time = loop.channel({.name = "t", .type = 2, .bitCount = 64, .unit = loop.text("ns")}, frame);
  loop.setLink(frame, 0, 12);
  const std::uint64_t group = loop.group({.channels = time, .cycles = 1, .dataBytes = 10});
  loop.setLink(group, 0, 12);
  loop.setFirstDataGroup(loop.dataGroup(group, loop.data(join({le(1, 8), le(1, 2)}))));
  const ReadFile read = readFile(loop);
  EXPECT_EQ(read.frames, Texts{"1 data 0 1"});
  EXPECT_GE(read.damaged(), 1U);

  MdfFileBuilder array;
  EXPECT_EQ(readMembers(array, {{.name = "ID", .byteOffset = 8, .bitCount = 16, .composition = array.text("no array")}},
                        {{1, 0, 0}})
                .frames,
            Texts{"1 data 0 1"});
}

TEST(Mf4FrameChannels, countFramesWhoseConversionCanNotBeRead) {
  const auto damageOf = [](auto&& conversionIn) {
    MdfFileBuilder file;
    ChannelSpec id = kId;
    id.conversion = conversionIn(file);
    const ReadFile read = readMembers(file, {id}, {{1, 0, 0}});
    EXPECT_EQ(read.frames, Texts());
    return read.damaged();
  };
  EXPECT_GE(damageOf([](MdfFileBuilder& file) { return file.conversion(1, {1}); }), 1U);
  EXPECT_GE(damageOf([](MdfFileBuilder& file) { return file.conversion(2, {1, 2, 3}); }), 1U);
  EXPECT_GE(damageOf([](MdfFileBuilder& file) { return file.conversion(4, {}); }), 1U);
  EXPECT_GE(damageOf([](MdfFileBuilder& file) { return file.conversion(99, {1, 2}); }), 1U);
  EXPECT_GE(damageOf([](MdfFileBuilder& file) { return file.text("no conversion"); }), 1U);
}

TEST(Mf4FrameChannels, haveConversionsThatChangeNothing) {
  MdfFileBuilder file;
  ChannelSpec id = kId;
  id.conversion = file.conversion(0, {});
  EXPECT_EQ(readMembers(file, {id}, {{1, 0, 0}}).frames, Texts{"1 data 0 1"});
}

// Values beyond all keys, and those of real numbers that are none.
TEST(Mf4FrameChannels, lackWhatTheirTablesDoNotHave) {
  MdfFileBuilder ranges;
  ChannelSpec bus = {.name = "BusChannel", .dataType = 4, .byteOffset = 10, .bitCount = 32};
  bus.conversion = ranges.conversion(6, {0, 1, 5, 3, 4, 6});
  const auto record = [](float value) { return join({{1, 0}, real32(value), {0}}); };
  EXPECT_EQ(readMembers(ranges, {kId, bus}, {record(1), record(2), record(4), record(-1)}).frames,
            (Texts{"1 data 5 1", "2 data 0 1", "3 data 6 1", "4 data 0 1"}));
  for (const std::uint8_t type : {std::uint8_t{4}, std::uint8_t{5}}) {
    MdfFileBuilder table;
    bus.conversion = table.conversion(type, {1, 5, std::nan(""), 9, 3, 7});
    EXPECT_EQ(readMembers(table, {kId, bus}, {record(std::nanf("")), record(1), record(9)}).frames,
              (Texts{"1 data 0 1", "2 data 5 1", "3 data 7 1"}));
  }
}

// Each row of words may lead to one more conversion, but not without an end.
TEST(Mf4FrameChannels, haveConversionsOfLittleDepth) {
  MdfFileBuilder file;
  std::uint64_t conversion = file.conversion(1, {0, 1});
  for (int at = 0; at < 6; ++at) {
    conversion = file.block("CC", {0, 0, 0, 0, conversion, 0},
                            join({le(7, 1), le(0, 3), le(2, 2), le(1, 2), le(0, 16), real(1.0)}));
  }
  ChannelSpec bus = {.name = "BusChannel", .byteOffset = 10};
  bus.conversion = conversion;
  EXPECT_EQ(readMembers(file, {kId, bus}, {{1, 0, 1, 0}}).frames, Texts{"1 data 0 1"});
}

TEST(Mf4FrameChannels, sayWhichLinFramesAreNone) {
  const ChannelSpec id = {.name = "ID", .byteOffset = 8, .flags = kInvalidBit, .invalidBit = 0};
  const ChannelSpec data = {
      .name = "DataBytes", .dataType = 10, .byteOffset = 9, .bitCount = 8, .flags = kInvalidBit, .invalidBit = 1};
  const ReadFile read =
      readMembers({id, data}, {{1, 0xAA, 0}, {2, 0xAA, 1}, {3, 0xAA, 2}}, "LIN_Frame", 0x400, "LIN 4");
  EXPECT_EQ(read.frames, Texts{"1 lin 4 1 dlc1 [AA]"});
  EXPECT_EQ(read.account.noted(Remark::RecordNotUnderstood), (Account::Count{2, 2}));
  EXPECT_EQ(read.account.noted(Remark::BusGuessed), (Account::Count{3, 1}));
}

// The values of a sorted group have no record of their own.
TEST(Mf4FrameChannels, haveNoBytesInGroupsOfFixedLength) {
  MdfFileBuilder file;
  const std::uint64_t values = file.group({.dataBytes = 4});
  const std::uint64_t parts = file.channels(
      {kId, {.name = "DataBytes", .type = 1, .dataType = 10, .byteOffset = 10, .bitCount = 32, .data = values}});
  const std::uint64_t group =
      file.group({.channels = file.topChannels("CAN_DataFrame", parts), .cycles = 1, .dataBytes = 14}, values);
  file.setFirstDataGroup(file.dataGroup(group, file.data(join({le(1, 8), le(1, 2), le(0, 4)}))));
  const ReadFile read = readFile(file);
  ASSERT_FALSE(read.frames.empty());
  EXPECT_EQ(read.frames.front(), "1 data 0 1");
}

TEST(Mf4FrameChannels, areThoseOfOtherBusesToo) {
  MdfFileBuilder file;
  const std::uint64_t flexRay = file.channels(
      {{.name = "t", .type = 2, .bitCount = 64, .flags = 0}, {.name = "FLX_Frame", .dataType = 10, .byteOffset = 8}});
  const std::uint64_t other =
      file.dataGroup(file.group({.channels = flexRay, .cycles = 1, .dataBytes = 9}), file.data(ByteList(9)));
  const std::uint64_t group = file.group({.channels = file.frameChannels(), .cycles = 1});
  file.setFirstDataGroup(file.dataGroup(group, file.data(MdfFileBuilder::record(1)), 0, other));
  const ReadFile read = readFile(file);
  EXPECT_EQ(read.frames, Texts{"1 data 1 123 Rx dlc2 [1122]"});
  EXPECT_EQ(read.damaged(), 1U);
}

TEST(Mf4FrameHead, mayHaveNoStartAndNoProducer) {
  MdfFileBuilder file;
  file.sortedFile({});
  constexpr std::uint64_t kHeaderData = 64 + 24 + 48;
  file.patch(kHeaderData, le(0, 8));
  const std::uint64_t history = file.block("FH", {0, file.text("<FHcomment><tool_id>Log")}, ByteList(16));
  file.setLink(MdfFileBuilder::kHeader, 1, history);
  const ReadFile read = readFile(file);
  EXPECT_EQ(read.head.start, std::nullopt);
  EXPECT_EQ(read.head.producer, "Stranger");
}

}  // namespace
}  // namespace xlatr
