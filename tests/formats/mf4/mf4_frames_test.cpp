// MF4 files as frames, made block by block.
#include "formats/mf4/mf4_frames.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ios>
#include <optional>
#include <string>
#include <vector>

#include "formats/mf4/mdf_file_builder.hpp"
#include "formats/mf4/mdf_number_field.hpp"
#include "formats/mf4/mf4_read_file.hpp"
#include "support/frame_text.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

using test::ByteList;
using test::ChannelSpec;
using test::GroupSpec;
using test::join;
using test::le;
using test::MdfFileBuilder;
using test::real;
using test::textBytes;

using test::addGroup;
using test::addList;
using test::expectMany;
using test::frameAt;
using test::manyRecords;
using test::readFile;
using test::ReadFile;
using test::Texts;
using test::transposed;
using test::zippedBlock;

TEST(Mf4Frames, readsRecordsWithTheirFlags) {
  MdfFileBuilder file;
  file.sortedFile({MdfFileBuilder::record(1'500, 0x1ABCDEF0, 0x01), MdfFileBuilder::record(2'500, 0x123, 0x02),
                   MdfFileBuilder::record(3'500, 0x123, 0x04, 5, 2), MdfFileBuilder::record(4'500, 0x7, 0x38, 8)});
  const ReadFile read = readFile(file);
  EXPECT_EQ(read.frames,
            (Texts{"1500 data 1 1ABCDEF0 x Rx dlc2 [1122]", "2500 data 1 123 Tx dlc2 [1122]",
                   "3500 remote 2 123 Rx known dlc5", "4500 data 1 7 Rx FD BRS ESI dlc8 [1122334455667788]"}));
  EXPECT_EQ(read.head.format, XLATR_FORMAT_MF4);
  EXPECT_EQ(read.head.version, 4.1);
  EXPECT_EQ(read.head.producer, "Stranger");
  EXPECT_EQ(read.head.places, PlaceUnit::Record);
  EXPECT_EQ(read.head.frames, 4U);
  EXPECT_EQ(read.head.start, (TraceStart{.sinceEpochNs = 1'500'000'000'123'456'789}));
  // The file says nothing of the unit of its times.
  EXPECT_EQ(read.account.noted(Remark::DetailGuessed), (Account::Count{1, 1}));
  EXPECT_EQ(read.damaged(), 0U);
}

TEST(Mf4Frames, tellsTheZoneOfTheStart) {
  MdfFileBuilder file;
  file.sortedFile({});
  constexpr std::uint64_t kHeaderData = 64 + 24 + 48;
  file.patch(kHeaderData + 8, join({le(60, 2), le(60, 2), le(2, 1)}));
  EXPECT_EQ(readFile(file).head.start,
            (TraceStart{.sinceEpochNs = 1'500'000'000'123'456'789 + 7'200'000'000'000, .zoneMinutes = 120}));
  file.patch(kHeaderData + 12, le(0, 1));
  EXPECT_EQ(readFile(file).head.start, (TraceStart{.sinceEpochNs = 1'500'000'000'123'456'789, .zoneMinutes = 0}));
}

TEST(Mf4Frames, readsFlatChannels) {
  MdfFileBuilder file;
  const std::uint64_t seconds = file.conversion(1, {0.0, 1e-7}, "s");
  const std::uint64_t channels = file.channels({
      {.name = "t", .type = 2, .bitCount = 64, .conversion = seconds},
      {.name = "CAN_DataFrame.BusChannel", .byteOffset = 8},
      {.name = "CAN_DataFrame.ID", .byteOffset = 9, .bitCount = 32},
      {.name = "CAN_DataFrame.DataLength", .byteOffset = 15},
      {.name = "CAN_DataFrame.DataBytes", .dataType = 10, .byteOffset = 16, .bitCount = 64},
  });
  const ByteList records = join({MdfFileBuilder::record(15, 0x80000123), MdfFileBuilder::record(25, 0x123)});
  file.setFirstDataGroup(file.dataGroup(file.group({.channels = channels, .cycles = 2}), file.data(records)));
  const ReadFile read = readFile(file);
  EXPECT_EQ(read.frames, (Texts{"1500 data 1 123 x dlc2 [1122]", "2500 data 1 123 dlc2 [1122]"}));
  EXPECT_TRUE(read.account.complete());
}

TEST(Mf4Frames, readsWordsAndTablesAsNumbers) {
  MdfFileBuilder file;
  const std::uint64_t seconds = file.conversion(1, {0.0, 1e-9}, "s");
  const std::uint64_t received = file.text("Rx");
  const std::uint64_t sent = file.text("Tx");
  const auto doubles = [](const std::vector<double>& values) {
    ByteList bytes;
    for (const double value : values) {
      bytes = join({bytes, real(value)});
    }
    return bytes;
  };
  const std::uint64_t direction =
      file.block("CC", {0, 0, 0, 0, received, sent, 0},
                 join({le(7, 1), le(0, 3), le(3, 2), le(2, 2), le(0, 16), doubles({0, 1})}));
  const std::uint64_t length = file.conversion(5, {0, 0, 1, 1, 2, 2, 9, 8});
  const std::uint64_t bus = file.conversion(6, {0, 3, 7, 4, 200, 8, 99});
  const std::uint64_t parts = file.channels({
      {.name = "BusChannel", .byteOffset = 8, .conversion = bus},
      {.name = "ID", .byteOffset = 9, .bitCount = 32},
      {.name = "Dir", .byteOffset = 13, .conversion = direction},
      {.name = "DataLength", .byteOffset = 14, .conversion = length},
      {.name = "DataBytes", .dataType = 10, .byteOffset = 16, .bitCount = 64},
  });
  const std::uint64_t group = file.group({.channels = file.topChannels("CAN_DataFrame", parts, seconds), .cycles = 3});
  file.setFirstDataGroup(file.dataGroup(
      group, file.data(join({MdfFileBuilder::record(1, 0x1, 0, 9, 2), MdfFileBuilder::record(2, 0x2, 1, 2, 4),
                             MdfFileBuilder::record(3, 0x3, 1, 1, 201)}))));
  EXPECT_EQ(readFile(file).frames,
            (Texts{"1 data 7 1 Rx dlc8 [1122334455667788]", "2 data 8 2 Tx dlc2 [1122]", "3 data 99 3 Tx dlc1 [11]"}));
}

// The buses of records whose bus is this channel, at the ninth byte, before which stands the time.
Texts busesOf(MdfFileBuilder& file, ChannelSpec bus, const std::vector<ByteList>& values) {
  bus.name = "BusChannel";
  bus.byteOffset = 8;
  const std::uint64_t parts = file.channels({bus, {.name = "ID", .byteOffset = 16, .bitCount = 32}});
  const std::uint64_t group =
      file.group({.channels = file.topChannels("CAN_DataFrame", parts), .cycles = values.size()});
  ByteList records;
  for (ByteList value : values) {
    value.resize(16);
    records = join({records, le(1, 8), value});
  }
  file.setFirstDataGroup(file.dataGroup(group, file.data(records)));
  Texts buses;
  for (const std::string& frame : readFile(file).frames) {
    buses.push_back(frame.substr(7, frame.rfind(' ') - 7));
  }
  return buses;
}

Texts busesOf(MdfFileBuilder& file, std::uint64_t conversion, const std::vector<std::uint64_t>& values) {
  std::vector<ByteList> bytes;
  for (const std::uint64_t value : values) {
    bytes.push_back(le(value, 1));
  }
  return busesOf(file, ChannelSpec{.conversion = conversion}, bytes);
}

// A conversion from values (7) or ranges of values (8) to what the references lead to.
std::uint64_t wordConversion(MdfFileBuilder& file, std::uint8_t type, const std::vector<std::uint64_t>& references,
                             const std::vector<double>& values) {
  std::vector<std::uint64_t> links = {0, 0, 0, 0};
  links.insert(links.end(), references.begin(), references.end());
  ByteList data = join({le(type, 1), le(0, 3), le(references.size(), 2), le(values.size(), 2), le(0, 16)});
  for (const double value : values) {
    data = join({data, real(value)});
  }
  return file.block("CC", links, data);
}

TEST(Mf4Frames, readsRationalConversions) {
  MdfFileBuilder file;
  EXPECT_EQ(busesOf(file, file.conversion(2, {0, 2, 1, 0, 0, 1}), {3, 4}), (Texts{"7", "9"}));
}

TEST(Mf4Frames, readsTablesBetweenTheirKeys) {
  MdfFileBuilder interpolated;
  EXPECT_EQ(busesOf(interpolated, interpolated.conversion(4, {2, 4, 10, 20}), {0, 2, 6, 10, 200}),
            (Texts{"4", "4", "12", "20", "20"}));
  MdfFileBuilder steps;
  EXPECT_EQ(busesOf(steps, steps.conversion(5, {2, 4, 10, 20}), {5, 6, 7}), (Texts{"4", "4", "20"}));
}

TEST(Mf4Frames, readsWordsThatEndOrBeginWithANumber) {
  MdfFileBuilder file;
  const std::vector<std::uint64_t> words = {file.text("CAN 2"), file.text("3 wires"), file.text("none"),
                                            file.text("CAN 9")};
  EXPECT_EQ(busesOf(file, wordConversion(file, 7, words, {1, 2, 4}), {1, 2, 3}), (Texts{"2", "3", "9"}));
}

TEST(Mf4Frames, readsWordsOfRanges) {
  MdfFileBuilder file;
  const std::vector<std::uint64_t> words = {file.text("1"), file.text("2"), file.text("8")};
  EXPECT_EQ(busesOf(file, wordConversion(file, 8, words, {0, 4, 5, 9}), {4, 5, 9, 10}), (Texts{"1", "2", "2", "8"}));
}

TEST(Mf4Frames, readsConversionsThatLeadToOthers) {
  MdfFileBuilder file;
  const std::uint64_t first = file.conversion(1, {10, 1});
  const std::uint64_t otherwise = file.conversion(1, {20, 2});
  EXPECT_EQ(busesOf(file, wordConversion(file, 7, {first, otherwise}, {1}), {1, 5}), (Texts{"11", "30"}));
}

TEST(Mf4Frames, readsNumbersOfEveryType) {
  const auto readAs = [](std::uint8_t dataType, std::uint32_t bits, const ByteList& bytes) {
    MdfFileBuilder file;
    return busesOf(file, {.dataType = dataType, .bitCount = bits}, {bytes});
  };
  EXPECT_EQ(readAs(0, 16, {5, 0}), Texts{"5"});
  EXPECT_EQ(readAs(1, 16, {0, 5}), Texts{"5"});
  EXPECT_EQ(readAs(2, 16, {5, 0}), Texts{"5"});
  EXPECT_EQ(readAs(3, 16, {0, 5}), Texts{"5"});
  EXPECT_EQ(readAs(4, 16, {0x00, 0x45}), Texts{"5"});
  EXPECT_EQ(readAs(4, 32, {0x00, 0x00, 0xA0, 0x40}), Texts{"5"});
  EXPECT_EQ(readAs(5, 32, {0x40, 0xA0, 0x00, 0x00}), Texts{"5"});
  EXPECT_EQ(readAs(4, 64, real(5.0)), Texts{"5"});
}

TEST(Mf4Frames, convertsNumbersOfEveryType) {
  const auto readAs = [](std::uint8_t dataType, std::uint32_t bits, const ByteList& bytes) {
    MdfFileBuilder file;
    const std::uint64_t conversion = file.conversion(1, {8, 1});
    return busesOf(file, {.dataType = dataType, .bitCount = bits, .conversion = conversion}, {bytes});
  };
  EXPECT_EQ(readAs(2, 16, {0xFF, 0xFF}), Texts{"7"});
  EXPECT_EQ(readAs(4, 16, {0x00, 0xC5}), Texts{"3"});
  EXPECT_EQ(readAs(4, 16, {0x00, 0x00}), Texts{"8"});
  EXPECT_EQ(readAs(4, 32, {0x00, 0x00, 0xA0, 0xC0}), Texts{"3"});
}

TEST(Mf4Frames, readsTimesThroughOtherConversions) {
  MdfFileBuilder file;
  const std::uint64_t seconds = file.conversion(2, {0, 1, 0, 0, 0, 1000}, "s");
  const std::uint64_t parts = file.channels({{.name = "ID", .byteOffset = 9, .bitCount = 32}});
  const std::uint64_t group = file.group({.channels = file.topChannels("CAN_DataFrame", parts, seconds), .cycles = 1});
  file.setFirstDataGroup(file.dataGroup(group, file.data(MdfFileBuilder::record(1'500, 1))));
  EXPECT_EQ(readFile(file).frames, (Texts{"1500000000 data 0 1"}));
}

// 7 is a key and the value of another one.
TEST(Mf4Frames, findsKeysAloneInTables) {
  MdfFileBuilder file;
  const std::uint64_t bus = file.conversion(5, {1, 7, 7, 3});
  const std::uint64_t parts = file.channels({
      {.name = "BusChannel", .byteOffset = 8, .conversion = bus},
      {.name = "ID", .byteOffset = 9, .bitCount = 32},
  });
  const std::uint64_t group = file.group({.channels = file.topChannels("CAN_DataFrame", parts), .cycles = 1});
  file.setFirstDataGroup(file.dataGroup(group, file.data(MdfFileBuilder::record(1, 1, 0, 0, 7))));
  EXPECT_EQ(readFile(file).frames, (Texts{"1 data 3 1"}));
}

TEST(Mf4Frames, inflatesSignalData) {
  MdfFileBuilder file;
  const std::uint64_t values =
      file.block("DZ", {}, zippedBlock(join({le(2, 4), {0xAA, 0xBB}, le(1, 4), {0xCC}}), 0, 0, "SD"));
  const std::uint64_t parts = file.channels({
      {.name = "ID", .byteOffset = 8, .bitCount = 32},
      {.name = "DataBytes", .type = 1, .dataType = 10, .byteOffset = 12, .bitCount = 32, .data = values},
  });
  const std::uint64_t group =
      file.group({.channels = file.topChannels("CAN_DataFrame", parts), .cycles = 3, .dataBytes = 16});
  const ByteList records =
      join({le(1, 8), le(1, 4), le(0, 4), le(2, 8), le(2, 4), le(6, 4), le(3, 8), le(3, 4), le(0, 4)});
  file.setFirstDataGroup(file.dataGroup(group, file.data(records)));
  EXPECT_EQ(readFile(file).frames, (Texts{"1 data 0 1 dlc2 [AABB]", "2 data 0 2 dlc1 [CC]", "3 data 0 3 dlc2 [AABB]"}));
}

TEST(Mf4Frames, countsRecordsWithFormulas) {
  MdfFileBuilder file;
  const std::uint64_t formula = file.conversion(3, {});
  const std::uint64_t parts = file.channels({{.name = "ID", .byteOffset = 9, .bitCount = 32, .conversion = formula}});
  const std::uint64_t group = file.group({.channels = file.topChannels("CAN_DataFrame", parts), .cycles = 2});
  file.setFirstDataGroup(file.dataGroup(group, file.data(manyRecords(2))));
  const ReadFile read = readFile(file);
  EXPECT_EQ(read.frames, Texts());
  EXPECT_EQ(read.damaged(), 2U);
}

TEST(Mf4Frames, countsInvalidRecords) {
  MdfFileBuilder file;
  const std::uint64_t parts = file.channels({
      {.name = "ID", .byteOffset = 9, .bitCount = 32, .flags = 0x402},
      {.name = "Dir", .byteOffset = 13, .flags = 0x401},
      {.name = "DataLength", .byteOffset = 15},
      {.name = "DataBytes", .dataType = 10, .byteOffset = 16, .bitCount = 64},
  });
  const std::uint64_t group =
      file.group({.channels = file.topChannels("CAN_DataFrame", parts), .cycles = 3, .invalidationBytes = 1});
  file.setFirstDataGroup(
      file.dataGroup(group, file.data(join({MdfFileBuilder::record(1), le(0, 1), MdfFileBuilder::record(2), le(1, 1),
                                            MdfFileBuilder::record(3), le(2, 1)}))));
  const ReadFile read = readFile(file);
  EXPECT_EQ(read.frames, (Texts{"1 data 0 123 dlc2 [1122]", "3 data 0 123 dlc2 [1122]"}));
  EXPECT_EQ(read.account.noted(Remark::RecordNotUnderstood), (Account::Count{1, 2}));
}

TEST(Mf4Frames, mergesGroupsByTime) {
  MdfFileBuilder file;
  const std::uint64_t first = file.group({.channels = file.frameChannels(), .cycles = 3});
  const std::uint64_t firstData =
      file.data(join({MdfFileBuilder::record(10, 1), MdfFileBuilder::record(30, 1), MdfFileBuilder::record(30, 2)}));
  const std::uint64_t second = file.group({.channels = file.frameChannels("CAN_ErrorFrame"), .cycles = 2});
  const std::uint64_t secondData = file.data(join({MdfFileBuilder::record(20), MdfFileBuilder::record(30)}));
  const std::uint64_t last = file.dataGroup(second, secondData);
  file.setFirstDataGroup(file.dataGroup(first, firstData, 0, last));
  const ReadFile read = readFile(file);
  EXPECT_EQ(read.frames, (Texts{"10 data 1 1 Rx dlc2 [1122]", "20 error 1 0 Rx", "30 data 1 1 Rx dlc2 [1122]",
                                "30 data 1 2 Rx dlc2 [1122]", "30 error 1 0 Rx"}));
  EXPECT_EQ(read.head.frames, 5U);
}

TEST(Mf4Frames, readsErrorFrames) {
  MdfFileBuilder file;
  const std::uint64_t parts = file.channels({
      {.name = "CAN_ErrorFrame.BusChannel", .byteOffset = 8},
      {.name = "CAN_ErrorFrame.ErrorType", .byteOffset = 9},
      {.name = "CAN_ErrorFrame.BitPosition", .byteOffset = 10},
  });
  const std::uint64_t group =
      file.group({.channels = file.topChannels("CAN_ErrorFrame", parts), .cycles = 4, .dataBytes = 11});
  file.setFirstDataGroup(file.dataGroup(
      group,
      file.data(join({le(1, 8), {1, 1, 20}, le(2, 8), {1, 3, 255}, le(3, 8), {1, 255, 0}, le(4, 8), {1, 4, 1}}))));
  EXPECT_EQ(readFile(file).frames,
            (Texts{"1 error 1 0 error_type=0 error_position=23", "2 error 1 0 error_type=2",
                   "3 error 1 0 error_position=3", "4 error 1 0 error_type=3 error_position=4"}));
}

TEST(Mf4Frames, readsLinFramesAndEvents) {
  MdfFileBuilder file;
  const auto group = [&file](const std::string& name, std::uint64_t time, std::uint64_t next) {
    const std::uint64_t parts = file.channels({
        {.name = name + ".BusChannel", .byteOffset = 8},
        {.name = name + ".ID", .bitOffset = 2, .byteOffset = 9, .bitCount = 6},
        {.name = name + ".DataLength", .byteOffset = 10},
        {.name = name + ".ChecksumModel", .byteOffset = 11},
        {.name = name + ".Checksum", .byteOffset = 12},
        {.name = name + ".DataBytes", .dataType = 10, .byteOffset = 13, .bitCount = 64},
    });
    const std::uint64_t made =
        file.group({.channels = file.topChannels(name, parts), .cycles = 1, .dataBytes = 21, .busType = 3});
    return file.dataGroup(made, file.data(join({le(time, 8), {2, 0x6B, 2, 1, 0x5A, 1, 2, 3, 4, 5, 6, 7, 8}})), 0, next);
  };
  file.setFirstDataGroup(group("LIN_Frame", 1, group("LIN_ChecksumError", 2, group("LIN_ReceiveError", 3, 0))));
  EXPECT_EQ(readFile(file).frames, (Texts{"1 lin 2 1A enhanced dlc2 [0102] checksum=90 checksum_model=2",
                                          "2 lin 2 1A enhanced dlc2 [0102] checksum=90 checksum_model=2 lin_errors=1",
                                          "3 lin_event 2 0 \"Receive error of 1A\""}));
}

TEST(Mf4Frames, tellOfLinIdentifiersWithTheirParity) {
  MdfFileBuilder file;
  const std::uint64_t parts = file.channels({
      {.name = "ID", .byteOffset = 8},
      {.name = "DataLength", .byteOffset = 9},
      {.name = "DataBytes", .dataType = 10, .byteOffset = 10, .bitCount = 16},
  });
  const std::uint64_t group =
      file.group({.channels = file.topChannels("LIN_Frame", parts), .cycles = 1, .dataBytes = 12, .busType = 3});
  file.setFirstDataGroup(file.dataGroup(group, file.data(join({le(1, 8), {0xDA, 4, 0xAA, 0xBB}}))));
  const ReadFile read = readFile(file);
  EXPECT_EQ(read.frames, (Texts{"1 lin 0 1A dlc4 [AABB]"}));
  EXPECT_EQ(read.account.noted(Remark::LengthGuessed).frames, 1U);
  EXPECT_GE(read.account.noted(Remark::DetailGuessed).frames, 1U);
}

// Frames whose group does not say what they are.
TEST(Mf4Frames, takesLongPayloadsForFdAndXl) {
  for (const std::uint32_t length : {8U, 12U, 70U}) {
    MdfFileBuilder file;
    const std::uint64_t parts = file.channels({
        {.name = "ID", .byteOffset = 8, .bitCount = 16},
        {.name = "DataBytes", .dataType = 10, .byteOffset = 10, .bitCount = 8 * length},
    });
    const std::uint64_t group =
        file.group({.channels = file.topChannels("CAN_DataFrame", parts), .cycles = 1, .dataBytes = 10 + length});
    file.setFirstDataGroup(file.dataGroup(group, file.data(join({le(1, 8), le(5, 2), ByteList(length)}))));
    const Texts frames = readFile(file).frames;
    ASSERT_EQ(frames.size(), 1U);
    const std::string expected = length == 8    ? "1 data 0 5 dlc8 ["
                                 : length == 12 ? "1 data 0 5 FD dlc9 ["
                                                : "1 data 0 5 XL dlc69 [";
    EXPECT_EQ(frames.front().substr(0, expected.size()), expected);
  }
}

// The list says where each of its blocks begins, so that a lost one leaves a gap of known length.
TEST(Mf4Frames, goesOnAfterALostBlockOfAListWithOffsets) {
  MdfFileBuilder file;
  const std::uint64_t first = file.data(MdfFileBuilder::record(1'000, 1));
  const std::uint64_t third = file.data(MdfFileBuilder::record(3'000, 3));
  const std::uint64_t list = file.block("DL", {0, first, 0x7FFFFFF8, third},
                                        join({le(0, 1), le(0, 3), le(3, 4), le(0, 8), le(24, 8), le(48, 8)}));
  addGroup(file, list, 3);
  const ReadFile read = readFile(file);
  EXPECT_EQ(read.frames, (Texts{"1000 data 1 1 Rx dlc2 [1122]", "3000 data 1 3 Rx dlc2 [1122]"}));
  EXPECT_GE(read.damaged() + read.cut(), 1U);
}

// A unsorted data group: frames (id 1) whose bytes are values of variable length (id 2).
std::uint64_t addVariableGroup(MdfFileBuilder& file, const ByteList& records, std::uint64_t cycles) {
  const std::uint64_t values = file.group({.cycles = cycles, .dataBytes = 0, .recordId = 2, .flags = 1});
  const std::uint64_t parts = file.channels({
      {.name = "ID", .byteOffset = 8, .bitCount = 16},
      {.name = "DataBytes", .type = 1, .dataType = 10, .byteOffset = 10, .bitCount = 32, .data = values},
  });
  const std::uint64_t frames = file.group(
      {.channels = file.topChannels("CAN_DataFrame", parts), .cycles = cycles, .dataBytes = 14, .recordId = 1}, values);
  const std::uint64_t group = file.dataGroup(frames, file.data(records), 1);
  file.setFirstDataGroup(group);
  return group;
}

ByteList variableRecord(std::uint64_t time, std::uint16_t id, std::uint32_t offset) {
  return join({le(1, 1), le(time, 8), le(id, 2), le(offset, 4)});
}

ByteList valueRecord(const ByteList& value) {
  return join({le(2, 1), le(value.size(), 4), value});
}

TEST(Mf4Frames, readsValuesOfVariableLengthWhereverTheyStand) {
  MdfFileBuilder file;
  addVariableGroup(
      file,
      join({valueRecord({1}), variableRecord(1, 1, 0), variableRecord(2, 2, 5), variableRecord(3, 3, 11),
            valueRecord({2, 2}), valueRecord({3, 3, 3}), variableRecord(4, 4, 0), variableRecord(5, 5, 6)}),
      5);
  const ReadFile read = readFile(file);
  EXPECT_EQ(read.frames, (Texts{"1 data 0 1 dlc1 [01]", "2 data 0 2 dlc2 [0202]", "3 data 0 3 dlc3 [030303]",
                                "4 data 0 4 dlc1 [01]"}));
  EXPECT_EQ(read.account.noted(Remark::RecordNotUnderstood), (Account::Count{1, 5}));
}

TEST(Mf4Frames, takesValuesInTheirOrderWhereOffsetsWereNeverWritten) {
  MdfFileBuilder file;
  addVariableGroup(file,
                   join({valueRecord({1}), variableRecord(1, 1, 0), valueRecord({2, 2}), variableRecord(2, 2, 0)}), 0);
  file.patch(0, textBytes("UnFinMF "));
  file.patch(60, le(0x65, 2));
  const ReadFile read = readFile(file);
  EXPECT_EQ(read.frames, (Texts{"1 data 0 1 dlc1 [01]", "2 data 0 2 dlc2 [0202]"}));
  EXPECT_TRUE(read.head.unfinished);
  EXPECT_EQ(read.head.frames, std::nullopt);
}

TEST(Mf4Frames, readsRecordIdsOfAnySize) {
  for (const std::uint8_t size : std::vector<std::uint8_t>{1, 2, 3, 4, 7, 8}) {
    MdfFileBuilder file;
    const std::uint64_t second = file.group({.cycles = 1, .dataBytes = 3, .recordId = 9, .flags = 0});
    const std::uint64_t first = file.group({.channels = file.frameChannels(), .cycles = 2, .recordId = 77}, second);
    file.setFirstDataGroup(file.dataGroup(first,
                                          file.data(join({le(77, size), MdfFileBuilder::record(1), le(9, size),
                                                          le(0, 3), le(77, size), MdfFileBuilder::record(2)})),
                                          size));
    const ReadFile read = readFile(file);
    EXPECT_EQ(read.frames, (Texts{"1 data 1 123 Rx dlc2 [1122]", "2 data 1 123 Rx dlc2 [1122]"}));
    EXPECT_EQ(read.damaged(), 0U);
  }
}

TEST(Mf4Frames, readsColumnsWithARemoteMaster) {
  MdfFileBuilder file(420);
  const auto column = [&file](const ChannelSpec& channel, std::uint32_t size, const ByteList& values,
                              std::uint64_t master, std::uint64_t next, std::uint64_t& group) {
    const std::uint64_t channels = file.channels({channel});
    std::vector<std::uint64_t> links = {0, channels, 0, 0, 0, 0};
    if (master != 0) {
      links.push_back(master);
    }
    group = file.block("CG", links,
                       join({le(0, 8), le(3, 8), le(master != 0 ? 0xE : 6, 2), le(0, 6), le(size, 4), le(0, 4)}));
    return file.dataGroup(group, file.block("DV", {}, values), 0, next);
  };
  std::uint64_t master = 0;
  std::uint64_t other = 0;
  const std::uint64_t times =
      column({.name = "t", .type = 2, .bitCount = 64}, 8, join({le(10, 8), le(20, 8), le(30, 8)}), 0, 0, master);
  const std::uint64_t ids = column({.name = "CAN_DataFrame.ID", .bitCount = 16}, 2,
                                   join({le(1, 2), le(2, 2), le(3, 2)}), master, times, other);
  const std::uint64_t lengths = column({.name = "CAN_DataFrame.DataLength"}, 1, {1, 2, 0}, master, ids, other);
  file.setFirstDataGroup(column({.name = "CAN_DataFrame.DataBytes", .dataType = 10, .bitCount = 16}, 2,
                                {1, 2, 3, 4, 5, 6}, master, lengths, other));
  const ReadFile read = readFile(file);
  EXPECT_EQ(read.frames, (Texts{"10 data 0 1 dlc1 [01]", "20 data 0 2 dlc2 [0304]", "30 data 0 3"}));
  EXPECT_EQ(read.damaged(), 0U);
}

TEST(Mf4Frames, readsZippedBlocks) {
  constexpr std::size_t kCount = 3'000;
  const ByteList records = manyRecords(kCount);
  for (const bool transposes : {false, true}) {
    MdfFileBuilder file;
    const std::uint64_t data = transposes ? file.block("DZ", {}, zippedBlock(transposed(records, 24), 1, 24))
                                          : file.block("DZ", {}, zippedBlock(records));
    addGroup(file, data, kCount);
    const ReadFile read = readFile(file);
    expectMany(read, kCount);
    EXPECT_EQ(read.damaged(), 0U);
  }
}

TEST(Mf4Frames, inflatesTheColumnsOfLargeBlocksApart) {
  constexpr std::size_t kCount = 400'000;  // 9.6 MB
  MdfFileBuilder file;
  ByteList records(kCount * 24);
  const ByteList record = MdfFileBuilder::record(0);
  for (std::size_t at = 0; at < kCount; ++at) {
    std::copy(record.begin(), record.end(), records.begin() + static_cast<std::ptrdiff_t>(24 * at));
    for (std::size_t byte = 0; byte < 4; ++byte) {
      records[24 * at + byte] = static_cast<std::uint8_t>(at >> 8 * byte);
    }
  }
  addGroup(file, file.block("DZ", {}, zippedBlock(transposed(records, 24), 1, 24)), kCount);
  const test::TempFolder folder;
  const auto source = openMf4Frames(folder.write("trace.mf4", file.asText()));
  FrameBatch batch;
  Account account;
  std::int64_t next = 0;
  while (source->read(batch, account)) {
    for (const std::int64_t time : batch.times()) {
      ASSERT_EQ(time, next++);
    }
    batch.clear();
  }
  EXPECT_EQ(next, kCount);
  EXPECT_EQ(account.noted(Remark::RecordNotUnderstood).frames, 0U);
}

// Each of many groups may have blocks of the usual size, which are held whole.
TEST(Mf4Frames, readsTransposedBlocksOfManyGroups) {
  constexpr std::size_t kRows = 50'000;  // 4 MB
  constexpr std::size_t kWidth = 80;
  ByteList rows(kRows * kWidth);
  for (std::size_t row = 0; row < kRows; ++row) {
    for (std::size_t byte = 0; byte < 3; ++byte) {
      rows[kWidth * row + byte] = static_cast<std::uint8_t>(row >> 8 * byte);
    }
  }
  test::expectRowsOfGroups(zippedBlock(transposed(rows, kWidth), 1, kWidth), 6, kRows, kWidth);
}

TEST(Mf4Frames, goesOnAfterALostBlock) {
  MdfFileBuilder file;
  const ByteList all = manyRecords(6);
  const auto part = [&all](std::ptrdiff_t from) { return ByteList(all.begin() + from, all.begin() + from + 48); };
  const std::uint64_t first = file.data(part(0));
  const std::uint64_t last = file.data(part(96));
  addGroup(file, addList(file, {first, 12, last}, 48), 6);
  const ReadFile read = readFile(file);
  EXPECT_EQ(read.frames, (Texts{frameAt(0), frameAt(1), frameAt(4), frameAt(5)}));
  EXPECT_GE(read.damaged(), 1U);
}

TEST(Mf4Frames, goesOnAfterABrokenZippedBlock) {
  const ByteList all = manyRecords(400);
  const ByteList half(all.begin(), all.begin() + 200 * 24);
  const ByteList rest(all.begin() + 200 * 24, all.end());
  MdfFileBuilder file;
  ByteList broken = zippedBlock(half);
  broken[broken.size() / 2] ^= 0xFF;
  const std::uint64_t one = file.block("DZ", {}, broken);
  const std::uint64_t two = file.block("DZ", {}, zippedBlock(rest));
  addGroup(file, addList(file, {one, two}, half.size()), 400);
  const ReadFile read = readFile(file);
  ASSERT_GE(read.frames.size(), 200U);
  ASSERT_LT(read.frames.size(), 400U);
  EXPECT_EQ(read.frames.back(), frameAt(399));
  EXPECT_GE(read.damaged(), 1U);
}

TEST(Mf4Frames, readsWhatACutFileHolds) {
  MdfFileBuilder file;
  const std::uint64_t group = file.group({.channels = file.frameChannels(), .cycles = 100});
  const std::uint64_t dataGroup = file.dataGroup(group, 0);
  file.setFirstDataGroup(dataGroup);
  file.setLink(dataGroup, 2, file.data(manyRecords(100)));
  const std::string bytes = file.asText();
  const ReadFile read = readFile(bytes.substr(0, bytes.size() - 100));
  EXPECT_EQ(read.frames.size(), 95U);
  EXPECT_EQ(read.cut(), 1U);
}

TEST(Mf4Frames, endsLoopsAndTellsThem) {
  MdfFileBuilder file;
  const std::uint64_t data = file.data(manyRecords(10));
  std::vector<std::uint64_t> same(5'000, data);
  const std::uint64_t list = addList(file, same, 240);
  file.setLink(list, 0, list);
  const std::uint64_t group = file.group({.channels = file.frameChannels(), .cycles = ~std::uint64_t{0}});
  const std::uint64_t dataGroup = file.dataGroup(group, list);
  file.setLink(dataGroup, 0, dataGroup);
  file.setFirstDataGroup(dataGroup);
  const ReadFile read = readFile(file);
  EXPECT_GE(read.frames.size(), 10U);
  EXPECT_LE(read.frames.size(), 5'000U);
  EXPECT_GE(read.damaged(), 1U);
}

TEST(Mf4Frames, readsAnythingWithoutAFailure) {
  EXPECT_EQ(readFile(std::string()).cut(), 1U);
  EXPECT_EQ(readFile(std::string(64, 'x')).damaged(), 1U);
  MdfFileBuilder file;
  file.sortedFile({MdfFileBuilder::record(1), MdfFileBuilder::record(2)});
  const std::string whole = file.asText();
  for (std::size_t size = 0; size < whole.size(); size += 7) {
    const ReadFile read = readFile(whole.substr(0, size));
    EXPECT_LE(read.frames.size(), 2U);
    EXPECT_FALSE(read.account.complete());
  }
}

TEST(Mf4Frames, refusesAFileThatIsNotThere) {
  const test::TempFolder folder;
  EXPECT_THROW(static_cast<void>(openMf4Frames(folder.file("none.mf4"))), std::ios_base::failure);
}

TEST(MdfNumberField, losesBitsBeyondItsBytesOnTheCompatibleWay) {
  ChannelBlockData data;
  data.cnBitOffset = 4;
  data.cnBitCount = 8;
  const ByteList record = {0xAB, 0xCD, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(MdfNumberField::of(data, Way::compatible()).read(record.data()), 0x0AU);
  EXPECT_EQ(MdfNumberField::of(data, Way::complete()).read(record.data()), 0xDAU);
}

TEST(MdfNumberField, readsBitsOfNineBytes) {
  ChannelBlockData data;
  data.cnBitOffset = 4;
  data.cnBitCount = 64;
  const ByteList record = {0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE, 0x0F};
  EXPECT_EQ(MdfNumberField::of(data, Way::complete()).read(record.data()), 0xFFEDCBA987654321U);
  data.cnDataType = static_cast<std::uint8_t>(MdfDataType::UnsignedBig);
  EXPECT_EQ(MdfNumberField::of(data, Way::complete()).read(record.data()), 0x032547698BADCFE0U);
}

}  // namespace
}  // namespace xlatr
