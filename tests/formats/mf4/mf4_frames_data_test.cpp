// Where the records of MF4 files lie: blocks of all names, lists, zipped or not, whole or not.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "formats/mf4/mdf_file_builder.hpp"
#include "formats/mf4/mf4_read_file.hpp"

namespace xlatr {
namespace {

using test::addGroup;
using test::addList;
using test::ByteList;
using test::expectMany;
using test::frameAt;
using test::join;
using test::le;
using test::manyRecords;
using test::MdfFileBuilder;
using test::readFile;
using test::ReadFile;
using test::textBytes;
using test::Texts;
using test::transposed;
using test::zippedBlock;

constexpr std::ptrdiff_t kRecord = 24;

// The records from `first` on.
ByteList someRecords(std::ptrdiff_t first, std::ptrdiff_t count) {
  const ByteList all = manyRecords(static_cast<std::size_t>(first + count));
  return {all.begin() + first * kRecord, all.end()};
}

void expectDamage(const ReadFile& read, const Texts& frames) {
  EXPECT_EQ(read.frames, frames);
  EXPECT_GE(read.damaged(), 1U);
}

TEST(Mf4FrameData, hasBlocksOfManyNames) {
  for (const char* const name : {"DT", "DV", "RD", "RV", "SD"}) {
    MdfFileBuilder file;
    addGroup(file, file.block(name, {}, manyRecords(3)), 3);
    const ReadFile read = readFile(file);
    expectMany(read, 3);
    EXPECT_EQ(read.damaged(), 0U) << name;
  }
  MdfFileBuilder file;
  addGroup(file, file.block("XX", {}, manyRecords(3)), 3);
  expectDamage(readFile(file), {});
}

TEST(Mf4FrameData, goesThroughListsWithWhateverTheyLeadTo) {
  MdfFileBuilder file;
  const std::uint64_t plain = file.data(someRecords(0, 2));
  const std::uint64_t zipped = file.block("DZ", {}, zippedBlock(someRecords(2, 2)));
  const std::uint64_t turned = file.block("DZ", {}, zippedBlock(transposed(someRecords(4, 2), kRecord), 1, kRecord));
  const std::uint64_t last = addList(file, {turned}, 48);
  const std::uint64_t first = addList(file, {plain, 0, zipped}, 48, last);
  addGroup(file, file.block("HL", {first}, le(0, 8)), 6);
  const ReadFile read = readFile(file);
  expectMany(read, 6);
  EXPECT_EQ(read.damaged(), 0U);
}

TEST(Mf4FrameData, hasRecordsThatBeginInOneBlockAndEndInAnother) {
  const ByteList all = manyRecords(4);
  MdfFileBuilder file;
  const std::uint64_t one = file.data({all.begin(), all.begin() + 31});
  const std::uint64_t two = file.block("DZ", {}, zippedBlock({all.begin() + 31, all.end()}));
  const std::uint64_t list = file.block("DL", {0, one, two}, join({le(0, 4), le(2, 4), le(0, 8), le(31, 8)}));
  addGroup(file, list, 4);
  expectMany(readFile(file), 4);
}

TEST(Mf4FrameData, isLostWithItsList) {
  MdfFileBuilder nowhere;
  addGroup(nowhere, 0x7FFFFFF8, 1);
  expectDamage(readFile(nowhere), {});

  MdfFileBuilder header;
  addGroup(header, header.block("HL", {0}, le(0, 8)), 0);
  EXPECT_EQ(readFile(header).frames, Texts());

  MdfFileBuilder noLinks;
  addGroup(noLinks, noLinks.block("DL", {}, le(0, 16)), 1);
  expectDamage(readFile(noLinks), {});
}

TEST(Mf4FrameData, isReadUpToADamageOfItsList) {
  MdfFileBuilder next;
  addGroup(next, addList(next, {next.data(someRecords(0, 1))}, 24, next.text("no list")), 1);
  expectDamage(readFile(next), {frameAt(0)});

  MdfFileBuilder fewer;
  const std::uint64_t data = fewer.data(someRecords(0, 1));
  addGroup(fewer, fewer.block("DL", {0, data}, join({le(1, 4), le(5, 4), le(24, 8)})), 1);
  expectDamage(readFile(fewer), {frameAt(0)});
}

TEST(Mf4FrameData, hasNoValuesInBlocksOfInvalidationBits) {
  MdfFileBuilder file;
  addGroup(file, file.block("DI", {}, manyRecords(1)), 1);
  expectDamage(readFile(file), {});
}

// Columns with the bits apart: values in DV or zipped, bits in DI, both in one list.
TEST(Mf4FrameData, hasInvalidationBitsInListsOfTheirOwn) {
  const std::vector<std::pair<std::string, std::string>> names = {{"DV", "DI"}, {"RV", "RI"}};
  for (const auto& [values, bits] : names) {
    for (const bool zips : {false, true}) {
      MdfFileBuilder file(420);
      const auto block = [&](const std::string& name, const ByteList& bytes) {
        return zips ? file.block("DZ", {}, zippedBlock(bytes, 0, 0, name.c_str())) : file.block(name, {}, bytes);
      };
      const std::uint64_t list = file.block("LD",
                                            {0, block(values, someRecords(0, 2)), block(values, someRecords(2, 1)),
                                             block(bits, le(0x0100, 2)), block(bits, le(0, 1))},
                                            join({le(0x80000001, 4), le(2, 4), le(2, 8)}));
      const std::uint64_t parts = file.channels(
          {{.name = "BusChannel", .byteOffset = 8}, {.name = "ID", .byteOffset = 9, .bitCount = 32, .flags = 0x402}});
      const std::uint64_t group =
          file.group({.channels = file.topChannels("CAN_DataFrame", parts), .cycles = 3, .invalidationBytes = 1});
      file.setFirstDataGroup(file.dataGroup(group, list));
      const ReadFile read = readFile(file);
      EXPECT_EQ(read.frames, (Texts{"0 data 1 0", "2000 data 1 2"}));
      EXPECT_EQ(read.account.noted(Remark::RecordNotUnderstood), (Account::Count{1, 2}));
    }
  }
}

TEST(Mf4FrameData, countsAsValidWithoutItsBits) {
  MdfFileBuilder file(420);
  const std::uint64_t list =
      file.block("LD", {0, file.block("DV", {}, someRecords(0, 2))}, join({le(1, 4), le(1, 4), le(2, 8)}));
  const std::uint64_t parts = file.channels({{.name = "ID", .byteOffset = 9, .bitCount = 32, .flags = 0x402}});
  const std::uint64_t group =
      file.group({.channels = file.topChannels("CAN_DataFrame", parts), .cycles = 2, .invalidationBytes = 1});
  file.setFirstDataGroup(file.dataGroup(group, list));
  EXPECT_EQ(readFile(file).frames, (Texts{"0 data 0 0", "1000 data 0 1"}));
}

TEST(Mf4FrameData, endsWithTheFileWhereItsLengthWasNeverWritten) {
  for (const std::size_t size : {std::size_t{72}, std::size_t{80}}) {
    MdfFileBuilder file;
    file.patch(0, textBytes("UnFinMF "));
    file.patch(60, le(0x05, 2));
    const std::uint64_t group = file.group({.channels = file.frameChannels()});
    const std::uint64_t dataGroup = file.dataGroup(group, 0);
    file.setFirstDataGroup(dataGroup);
    ByteList records = manyRecords(3);
    records.resize(size, 0xEE);
    file.setLink(dataGroup, 2, file.block("DT", {}, records, -1, 24));
    const ReadFile read = readFile(file);
    expectMany(read, 3);
    EXPECT_TRUE(read.head.unfinished);
    EXPECT_EQ(read.head.frames, std::nullopt);
    EXPECT_EQ(read.cut(), size > 72 ? 1U : 0U);
  }
}

// Whatever a file leaves open that says of nothing that it is.
TEST(Mf4FrameData, isReadWhereOnlyTheFirstBytesSayThatItIsUnfinished) {
  MdfFileBuilder file;
  addGroup(file, file.data(manyRecords(3)), 0);
  file.patch(0, textBytes("UnFinMF "));
  const ReadFile read = readFile(file);
  expectMany(read, 3);
  EXPECT_TRUE(read.head.unfinished);
}

TEST(Mf4FrameData, endsWithTheNextBlockWhereItsLengthWasNeverWritten) {
  MdfFileBuilder file;
  file.patch(60, le(0x05, 2));
  const std::uint64_t data = file.block("DT", {}, manyRecords(3), -1, 24);
  addGroup(file, data, 3);
  const ReadFile read = readFile(file);
  ASSERT_GE(read.frames.size(), 3U);
  EXPECT_EQ(read.frames[2], frameAt(2));
}

TEST(Mf4FrameData, tellsOfRecordsThatAreNotThere) {
  MdfFileBuilder file;
  addGroup(file, file.data(manyRecords(3)), 5);
  const ReadFile read = readFile(file);
  expectMany(read, 3);
  EXPECT_EQ(read.head.frames, 5U);
  EXPECT_EQ(read.cut(), 1U);
}

TEST(Mf4FrameData, tellsOfRecordsThatAreNotCounted) {
  MdfFileBuilder file;
  addGroup(file, file.data(manyRecords(3)), 2);
  const ReadFile read = readFile(file);
  expectMany(read, 2);
  EXPECT_EQ(read.damaged(), 1U);
}

TEST(Mf4FrameData, isLostWhereNobodyKnowsHowItWasZipped) {
  MdfFileBuilder file;
  const std::uint64_t unknown = file.block("DZ", {}, zippedBlock(someRecords(0, 1), 7));
  const std::uint64_t known = file.data(someRecords(1, 1));
  addGroup(file, addList(file, {unknown, known}, 24), 2);
  expectDamage(readFile(file), {frameAt(1)});
}

TEST(Mf4FrameData, isReadAsFarAsItWasZipped) {
  const ByteList block = zippedBlock(manyRecords(2'000));
  MdfFileBuilder file;
  const std::uint64_t group = file.group({.channels = file.frameChannels(), .cycles = 2'000});
  const std::uint64_t dataGroup = file.dataGroup(group, 0);
  file.setFirstDataGroup(dataGroup);
  file.setLink(dataGroup, 2, file.block("DZ", {}, block));
  const std::string bytes = file.asText();
  const ReadFile read = readFile(bytes.substr(0, bytes.size() - block.size() / 2));
  ASSERT_GT(read.frames.size(), 100U);
  ASSERT_LT(read.frames.size(), 2'000U);
  EXPECT_EQ(read.frames.back(), frameAt(read.frames.size() - 1));
  EXPECT_EQ(read.cut(), 1U);
}

// The stream ends where it should, but what it says of its bytes is not true of them.
TEST(Mf4FrameData, isReadAndToldWhereItsCheckSumIsWrong) {
  ByteList rows = zippedBlock(manyRecords(100));
  rows.back() ^= 0xFF;
  ByteList columns = zippedBlock(transposed(manyRecords(100), kRecord), 1, kRecord);
  columns.back() ^= 0xFF;
  for (const ByteList& block : {rows, columns}) {
    MdfFileBuilder file;
    addGroup(file, file.block("DZ", {}, block), 100);
    const ReadFile read = readFile(file);
    expectMany(read, 100);
    EXPECT_EQ(read.damaged(), 1U);
  }
}

TEST(Mf4FrameData, isToldWhereItWasZippedWithMoreBytesThanStated) {
  ByteList block = zippedBlock(manyRecords(101));
  const ByteList stated = le(100 * kRecord, 8);
  std::copy(stated.begin(), stated.end(), block.begin() + 8);
  MdfFileBuilder file;
  addGroup(file, file.block("DZ", {}, block), 100);
  const ReadFile read = readFile(file);
  expectMany(read, 100);
  EXPECT_EQ(read.damaged(), 1U);
}

TEST(Mf4FrameData, losesAllRowsOfATransposedBlockThatIsBroken) {
  ByteList block = zippedBlock(transposed(manyRecords(200), kRecord), 1, kRecord);
  block.resize(block.size() / 2);
  MdfFileBuilder file;
  const std::uint64_t broken = file.block("DZ", {}, block);
  const std::uint64_t good = file.data(someRecords(200, 1));
  addGroup(file, addList(file, {broken, good}, 200 * kRecord), 201);
  expectDamage(readFile(file), {frameAt(200)});
}

constexpr std::size_t kManyValues = 600'000;

// Values of 16 bytes with their lengths before them, 12 MB: more than is inflated at once.
ByteList manyValues() {
  ByteList values;
  for (std::size_t at = 0; at < kManyValues; ++at) {
    const ByteList value = join({le(16, 4), le(at, 16)});
    values.insert(values.end(), value.begin(), value.end());
  }
  return values;
}

// A file whose frames have the values with these numbers.
MdfFileBuilder fileWithValues(const std::vector<std::uint64_t>& numbers, bool zips, std::size_t parts) {
  MdfFileBuilder file;
  const ByteList all = manyValues();
  std::vector<std::uint64_t> blocks;
  for (std::size_t part = 0; part < parts; ++part) {
    const auto from = static_cast<std::ptrdiff_t>(all.size() / parts * part);
    const auto to = static_cast<std::ptrdiff_t>(all.size() / parts * (part + 1));
    const ByteList bytes(all.begin() + from, all.begin() + to);
    blocks.push_back(zips ? file.block("DZ", {}, zippedBlock(bytes, 0, 0, "SD")) : file.block("SD", {}, bytes));
  }
  const std::uint64_t values = parts == 1 ? blocks.front() : addList(file, blocks, all.size() / parts);
  const std::uint64_t channels = file.channels({
      {.name = "ID", .byteOffset = 8, .bitCount = 16},
      {.name = "DataBytes", .type = 1, .dataType = 10, .byteOffset = 10, .bitCount = 32, .data = values},
  });
  const std::uint64_t group =
      file.group({.channels = file.topChannels("CAN_DataFrame", channels), .cycles = numbers.size(), .dataBytes = 14});
  ByteList records;
  for (const std::uint64_t number : numbers) {
    records = join({records, le(number, 8), le(1, 2), le(20 * number, 4)});
  }
  file.setFirstDataGroup(file.dataGroup(group, file.data(records)));
  return file;
}

TEST(Mf4FrameData, findsValuesInAnyOrder) {
  const std::vector<std::uint64_t> numbers = {5, 599'999, 2, 300'000, 1, 299'999, 4, 450'000, 449'000, 0};
  for (const bool zips : {false, true}) {
    for (const std::size_t parts : {std::size_t{1}, std::size_t{4}}) {
      const ReadFile read = readFile(fileWithValues(numbers, zips, parts));
      ASSERT_EQ(read.frames.size(), numbers.size()) << zips << parts;
      for (std::size_t at = 0; at < numbers.size(); ++at) {
        char expected[64];
        std::snprintf(expected, sizeof expected, "%u data 0 1 FD dlc10 [%02X%02X%02X",
                      static_cast<unsigned>(numbers[at]), static_cast<unsigned>(numbers[at] & 0xFF),
                      static_cast<unsigned>(numbers[at] >> 8 & 0xFF), static_cast<unsigned>(numbers[at] >> 16));
        EXPECT_EQ(read.frames[at].substr(0, std::string(expected).size()), expected);
      }
    }
  }
}

TEST(Mf4FrameData, countsFramesWhoseValueIsNotThere) {
  const ReadFile read = readFile(fileWithValues({1, 600'000, 2}, true, 1));
  EXPECT_EQ(read.frames.size(), 2U);
  EXPECT_EQ(read.account.noted(Remark::RecordNotUnderstood), (Account::Count{1, 2}));
}

TEST(Mf4FrameData, countsFramesWhoseValueIsTooLong) {
  MdfFileBuilder file;
  const std::uint64_t values = file.block("SD", {}, join({le(3'000, 4), ByteList(3'000)}));
  const std::uint64_t channels = file.channels({
      {.name = "ID", .byteOffset = 8, .bitCount = 16},
      {.name = "DataBytes", .type = 1, .dataType = 10, .byteOffset = 10, .bitCount = 32, .data = values},
  });
  const std::uint64_t group =
      file.group({.channels = file.topChannels("CAN_DataFrame", channels), .cycles = 1, .dataBytes = 14});
  file.setFirstDataGroup(file.dataGroup(group, file.data(join({le(1, 8), le(1, 2), le(0, 4)}))));
  expectDamage(readFile(file), {});
}

TEST(Mf4FrameData, isReadOnAfterARecordOfNoGroup) {
  MdfFileBuilder file;
  const std::uint64_t group = file.group({.channels = file.frameChannels(), .cycles = 3, .recordId = 1});
  const std::uint64_t first = file.data(join({le(1, 1), someRecords(0, 1), le(9, 1), ByteList(5)}));
  const std::uint64_t lost = 0x7FFFFFF8;
  const std::uint64_t last = file.data(join({le(1, 1), someRecords(2, 1)}));
  file.setFirstDataGroup(file.dataGroup(
      group, file.block("DL", {0, first, lost, last}, join({le(0, 4), le(3, 4), le(0, 8), le(31, 8), le(56, 8)})), 1));
  const ReadFile read = readFile(file);
  ASSERT_FALSE(read.frames.empty());
  EXPECT_EQ(read.frames.front(), frameAt(0));
  EXPECT_GE(read.damaged(), 1U);
}

TEST(Mf4FrameData, isReadOnAfterALostBlockOfUnsortedRecords) {
  MdfFileBuilder file;
  const std::uint64_t group = file.group({.channels = file.frameChannels(), .cycles = 3, .recordId = 1});
  const std::uint64_t first = file.data(join({le(1, 1), someRecords(0, 1)}));
  const std::uint64_t last = file.data(join({le(1, 1), someRecords(2, 1)}));
  file.setFirstDataGroup(file.dataGroup(group, addList(file, {first, 0x7FFFFFF8, last}, 25), 1));
  expectDamage(readFile(file), {frameAt(0), frameAt(2)});
}

TEST(Mf4FrameData, endsInTheMiddleOfAnUnsortedRecord) {
  MdfFileBuilder file;
  const std::uint64_t group = file.group({.channels = file.frameChannels(), .cycles = 2, .recordId = 1});
  file.setFirstDataGroup(file.dataGroup(group, file.data(join({le(1, 1), someRecords(0, 1), le(1, 1), le(0, 5)})), 1));
  const ReadFile read = readFile(file);
  EXPECT_EQ(read.frames, Texts{frameAt(0)});
  EXPECT_EQ(read.cut(), 1U);
}

TEST(Mf4FrameData, hasNoRecordIdsOfMoreThanEightBytes) {
  MdfFileBuilder file;
  const std::uint64_t group = file.group({.channels = file.frameChannels(), .cycles = 1, .recordId = 1});
  file.setFirstDataGroup(file.dataGroup(group, file.data(join({le(1, 9), someRecords(0, 1)})), 9));
  expectDamage(readFile(file), {});
}

TEST(Mf4FrameData, hasRecordIdsOfAnyNumber) {
  MdfFileBuilder file;
  const std::uint64_t group = file.group({.channels = file.frameChannels(), .cycles = 1, .recordId = 0x12345});
  file.setFirstDataGroup(file.dataGroup(group, file.data(join({le(0x12345, 4), someRecords(0, 1)})), 4));
  expectMany(readFile(file), 1);
}

TEST(Mf4FrameData, hasNoRecordsOfMoreThanAMegabyte) {
  MdfFileBuilder sorted;
  const std::uint64_t group =
      sorted.group({.channels = sorted.frameChannels(), .cycles = 1, .dataBytes = std::uint32_t{2} << 20});
  sorted.setFirstDataGroup(sorted.dataGroup(group, sorted.data(manyRecords(1))));
  expectDamage(readFile(sorted), {});

  MdfFileBuilder unsorted;
  const std::uint64_t other = unsorted.group(
      {.channels = unsorted.frameChannels(), .cycles = 1, .dataBytes = std::uint32_t{2} << 20, .recordId = 1});
  unsorted.setFirstDataGroup(unsorted.dataGroup(other, unsorted.data(join({le(1, 1), manyRecords(1)})), 1));
  EXPECT_EQ(readFile(unsorted).frames, Texts());
}

// More than one batch, and the rest in another.
TEST(Mf4FrameData, fillsBatches) {
  constexpr std::size_t kCount = FrameBatch::kCapacity + 1000;
  MdfFileBuilder file;
  addGroup(file, file.data(manyRecords(kCount)), kCount);
  const test::TempFolder folder;
  const auto source = openMf4Frames(folder.write("trace.mf4", file.asText()));
  FrameBatch batch;
  Account account;
  ASSERT_TRUE(source->read(batch, account));
  EXPECT_EQ(batch.size(), FrameBatch::kCapacity);
  EXPECT_EQ(batch.at(FrameBatch::kCapacity - 1).place, FrameBatch::kCapacity);
  EXPECT_EQ(test::textOf(batch.at(FrameBatch::kCapacity - 1)), frameAt(FrameBatch::kCapacity - 1));
  batch.clear();
  ASSERT_TRUE(source->read(batch, account));
  EXPECT_EQ(batch.size(), 1000U);
  EXPECT_EQ(batch.at(999).place, kCount);
  batch.clear();
  EXPECT_FALSE(source->read(batch, account));
}

TEST(Mf4FrameData, fillsBatchesWithNoMoreBytesThanTheyTake) {
  constexpr std::size_t kCount = 3'000;
  constexpr std::uint32_t kSize = 2048;
  MdfFileBuilder file;
  const std::uint64_t parts = file.channels({
      {.name = "ID", .byteOffset = 8, .bitCount = 16},
      {.name = "DataBytes", .dataType = 10, .byteOffset = 10, .bitCount = 8 * kSize},
  });
  const std::uint64_t group =
      file.group({.channels = file.topChannels("CAN_DataFrame", parts), .cycles = kCount, .dataBytes = 10 + kSize});
  file.setFirstDataGroup(file.dataGroup(group, file.data(ByteList(kCount * (10 + kSize), 1))));
  const test::TempFolder folder;
  const auto source = openMf4Frames(folder.write("trace.mf4", file.asText()));
  FrameBatch batch;
  Account account;
  std::size_t batches = 0;
  while (source->read(batch, account)) {
    EXPECT_LE(batch.data().size(), FrameBatch::kByteCapacity + kSize);
    EXPECT_EQ(batch.data().size(), batch.size() * kSize);
    batch.clear();
    ++batches;
  }
  EXPECT_EQ(batches, 2U);
  EXPECT_EQ(account.read(), kCount);
}

// Groups whose frames alternate, one of them with attributes.
TEST(Mf4FrameData, mergesFramesOfAllKinds) {
  constexpr std::size_t kCount = 500;
  MdfFileBuilder file;
  const std::uint64_t parts =
      file.channels({{.name = "BusChannel", .byteOffset = 8}, {.name = "ErrorType", .byteOffset = 9}});
  const std::uint64_t errors =
      file.group({.channels = file.topChannels("CAN_ErrorFrame", parts), .cycles = kCount, .dataBytes = 10});
  ByteList records;
  for (std::size_t at = 0; at < kCount; ++at) {
    records = join({records, le(1'000 * at + 500 * (at % 2), 8), {1, 1}});
  }
  const std::uint64_t last = file.dataGroup(errors, file.data(records));
  const std::uint64_t frames = file.group({.channels = file.frameChannels(), .cycles = kCount});
  file.setFirstDataGroup(file.dataGroup(frames, file.data(manyRecords(kCount)), 0, last));
  const ReadFile read = readFile(file);
  ASSERT_EQ(read.frames.size(), 2 * kCount);
  for (std::size_t at = 0; at < kCount; ++at) {
    ASSERT_EQ(read.frames[2 * at], frameAt(at));
    ASSERT_EQ(read.frames[2 * at + 1], std::to_string(1'000 * at + 500 * (at % 2)) + " error 1 0 error_type=0");
  }
}

TEST(Mf4FrameData, readsUnsortedRecordsThatTakeTurns) {
  constexpr std::size_t kCount = 1'000;
  MdfFileBuilder file;
  const std::uint64_t second =
      file.group({.channels = file.frameChannels("CAN_RemoteFrame"), .cycles = kCount, .recordId = 2});
  const std::uint64_t first = file.group({.channels = file.frameChannels(), .cycles = kCount, .recordId = 1}, second);
  ByteList records;
  for (std::size_t at = 0; at < kCount; ++at) {
    const ByteList record = MdfFileBuilder::record(1'000 * at, static_cast<std::uint32_t>(at % 0x700));
    records.push_back(at % 3 == 2 ? 2 : 1);
    records.insert(records.end(), record.begin(), record.end());
  }
  file.setFirstDataGroup(file.dataGroup(first, file.data(records), 1));
  const ReadFile read = readFile(file);
  ASSERT_EQ(read.frames.size(), kCount);
  for (std::size_t at = 0; at < kCount; ++at) {
    char remote[64];
    std::snprintf(remote, sizeof remote, "%zu remote 1 %zX Rx known dlc2", 1'000 * at, at % 0x700);
    ASSERT_EQ(read.frames[at], at % 3 == 2 ? remote : frameAt(at));
  }
}

// Longer than anything, so that the next record has no number.
TEST(Mf4FrameData, endsAfterAGapWithoutAnEnd) {
  MdfFileBuilder file;
  const std::uint64_t good = file.data(someRecords(0, 1));
  addGroup(file, addList(file, {good, 0x7FFFFFF8, good}, 0xFFFFFFFFFFFFFF00), 3);
  expectDamage(readFile(file), {frameAt(0)});
}

TEST(Mf4FrameData, losesBlocksWithoutALength) {
  MdfFileBuilder file;
  const std::uint64_t good = file.data(someRecords(0, 1));
  addGroup(file, addList(file, {0x7FFFFFF8, good}, 0), 1);
  expectDamage(readFile(file), {frameAt(0)});
}

TEST(Mf4FrameData, isCutInTheHeadOfAZippedBlock) {
  MdfFileBuilder file;
  const std::uint64_t group = file.group({.channels = file.frameChannels(), .cycles = 1});
  const std::uint64_t dataGroup = file.dataGroup(group, 0);
  file.setFirstDataGroup(dataGroup);
  file.setLink(dataGroup, 2, file.block("DZ", {}, le(0, 8)));
  expectDamage(readFile(file), {});
}

// More than is taken in at once, most of which is nothing.
TEST(Mf4FrameData, hasStreamsWithAnythingAfterThem) {
  ByteList block = zippedBlock(manyRecords(50));
  block.resize(std::size_t{9} << 20);
  const ByteList size = le(block.size() - 24, 8);
  std::copy(size.begin(), size.end(), block.begin() + 16);
  MdfFileBuilder file;
  addGroup(file, file.block("DZ", {}, block), 50);
  const ReadFile read = readFile(file);
  expectMany(read, 50);
  EXPECT_EQ(read.damaged(), 0U);
}

// Rows of a large block with bytes after the last whole one, in a list.
TEST(Mf4FrameData, goesOnAfterARowThatEndsInAnotherBlock) {
  constexpr std::size_t kCount = 360'000;
  const ByteList record = MdfFileBuilder::record(7'000, 7);
  ByteList all;
  all.reserve(kCount * kRecord);
  for (std::size_t at = 0; at < kCount; ++at) {
    all.insert(all.end(), record.begin(), record.end());
  }
  MdfFileBuilder file;
  const auto split = static_cast<std::ptrdiff_t>(all.size()) - 13;
  const ByteList front(all.begin(), all.begin() + split);
  const std::uint64_t large = file.block("DZ", {}, zippedBlock(transposed(front, kRecord), 1, kRecord));
  const std::uint64_t rest = file.data({all.begin() + split, all.end()});
  const std::uint64_t list = file.block("DL", {0, large, rest},
                                        join({le(0, 4), le(2, 4), le(0, 8), le(static_cast<std::uint64_t>(split), 8)}));
  addGroup(file, list, kCount);
  const ReadFile read = readFile(file);
  ASSERT_EQ(read.frames.size(), kCount);
  EXPECT_EQ(read.frames.back(), frameAt(7));
  EXPECT_EQ(read.damaged(), 0U);
}

TEST(Mf4FrameData, isLostInLargeBlocksThatAreBroken) {
  ByteList block = zippedBlock(ByteList(std::size_t{12} << 20), 1, kRecord);
  block.resize(block.size() / 2);
  const ByteList wide = zippedBlock(ByteList(std::size_t{12} << 20), 1, 1'000);
  for (const ByteList& lost : {block, wide}) {
    MdfFileBuilder file;
    const std::uint64_t list = addList(
        file, {file.block("DZ", {}, lost), file.data(someRecords((12 << 20) / kRecord, 1))}, std::uint64_t{12} << 20);
    addGroup(file, list, (std::uint64_t{12} << 20) / kRecord + 1);
    const ReadFile read = readFile(file);
    EXPECT_LE(read.frames.size(), 1U);
    EXPECT_GE(read.damaged(), 1U);
  }
}

// More groups than have their blocks held as a whole.
TEST(Mf4FrameData, isZippedInManyGroups) {
  constexpr std::size_t kRows = 50'000;
  const ByteList record = MdfFileBuilder::record(5);
  ByteList rows;
  for (std::size_t at = 0; at < kRows; ++at) {
    rows.insert(rows.end(), record.begin(), record.end());
    rows.resize(80 * (at + 1));
  }
  test::expectRowsOfGroups(zippedBlock(rows), 9, kRows, 80);
}

TEST(Mf4FrameData, isFoundBackwardAmongUnsortedValuesAlone) {
  MdfFileBuilder file;
  const std::uint64_t values = file.group({.cycles = 2, .dataBytes = 0, .recordId = 2, .flags = 1});
  const std::uint64_t parts = file.channels({
      {.name = "ID", .byteOffset = 8, .bitCount = 16},
      {.name = "DataBytes", .type = 1, .dataType = 10, .byteOffset = 10, .bitCount = 32, .data = values},
  });
  const std::uint64_t frames = file.group(
      {.channels = file.topChannels("CAN_DataFrame", parts), .cycles = 4, .dataBytes = 14, .recordId = 1}, values);
  const auto record = [](std::uint64_t time, std::uint32_t offset) {
    return join({le(1, 1), le(time, 8), le(1, 2), le(offset, 4)});
  };
  // The last value is cut.
  const ByteList records = join({le(2, 1),
                                 le(1, 4),
                                 {0xAA},
                                 record(1, 5),
                                 record(2, 0),
                                 record(3, 99),
                                 record(4, 5),
                                 le(2, 1),
                                 le(2, 4),
                                 {0xBB, 0xCC},
                                 le(2, 1),
                                 le(9, 2)});
  file.setFirstDataGroup(file.dataGroup(frames, file.data(records), 1));
  const ReadFile read = readFile(file);
  EXPECT_EQ(read.frames, (Texts{"1 data 0 1 dlc2 [BBCC]", "2 data 0 1 dlc1 [AA]", "4 data 0 1 dlc2 [BBCC]"}));
  EXPECT_GE(read.damaged(), 1U);
}

}  // namespace
}  // namespace xlatr
