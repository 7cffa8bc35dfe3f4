#include <gtest/gtest.h>
#include <zlib.h>

#include <exception>
#include <string>
#include <vector>

#include "formats/mf4/mdf_file_builder.hpp"
#include "formats/mf4/mdf_reader.hpp"
#include "support/temp_folder.hpp"

// Files that are made to hang a reader or to eat its memory. The bounds: each block of the tree is reached once; all
// that blocks ask for is at most eight times the file and a mebibyte; the inflated data of a list is at most 1032 times
// the file; a record costs at most 64 fields and a payload of 2048 bytes.
namespace xlatr {
namespace {

using test::ByteList;
using test::join;
using test::le;
using test::MdfFileBuilder;
using test::textBytes;

constexpr char kLoop[] = "Block links form a loop";

class MdfHostileTest : public testing::Test {
 protected:
  // What validating and reading the file ends with, and after how many messages.
  std::string outcomeOf(const MdfFileBuilder& file) {
    count_ = 0;
    MdfReader reader{MdfInfo(folder_.write("hostile.mf4", file.asText()))};
    std::string reason;
    if (!reader.ValidateFile(reason)) {
      return reason;
    }
    try {
      reader.setActive(true);
      for (MdfCanMessage message; reader.readInto(message);) {
        ++count_;
      }
    } catch (const std::exception& failure) {
      return failure.what();
    }
    return "";
  }

  test::TempFolder folder_;
  std::size_t count_ = 0;
};

TEST_F(MdfHostileTest, dataGroupsThatLeadBackToThemselves) {
  MdfFileBuilder self;
  const std::uint64_t alone = self.dataGroup(0, 0);
  self.setLink(alone, 0, alone);
  self.setFirstDataGroup(alone);
  EXPECT_EQ(outcomeOf(self), kLoop);

  MdfFileBuilder circle;
  const std::uint64_t group = circle.group({.channels = circle.frameChannels()});
  const std::uint64_t last = circle.dataGroup(group, 0);
  const std::uint64_t first = circle.dataGroup(0, 0, 0, circle.dataGroup(0, 0, 0, last));
  circle.setLink(last, 0, first);
  circle.setFirstDataGroup(first);
  EXPECT_EQ(outcomeOf(circle), kLoop);
}

TEST_F(MdfHostileTest, channelGroupsThatLeadBackToThemselves) {
  MdfFileBuilder file;
  const std::uint64_t second = file.group({.busType = 3});
  const std::uint64_t first = file.group({.busType = 3}, second);
  file.setLink(second, 0, first);
  file.setFirstDataGroup(file.dataGroup(first, 0));
  EXPECT_EQ(outcomeOf(file), kLoop);
}

TEST_F(MdfHostileTest, channelsThatLeadBackToThemselves) {
  MdfFileBuilder file;
  const std::uint64_t second = file.channel({.name = "b"});
  const std::uint64_t first = file.channel({.name = "a"}, second);
  file.setLink(second, 0, first);
  file.setFirstDataGroup(file.dataGroup(file.group({.channels = first, .cycles = 1}), file.data(ByteList(24))));
  EXPECT_EQ(outcomeOf(file), kLoop);
}

TEST_F(MdfHostileTest, compositionsThatLeadBackToTheirChannel) {
  for (const std::size_t target : {0U, 1U}) {  // the master, the frame itself
    MdfFileBuilder file;
    const std::uint64_t frame = file.channel({.name = "CAN_DataFrame"});
    const std::uint64_t time = file.channel({.name = "t", .type = 2, .bitCount = 64}, frame);
    file.setLink(frame, 1, target == 0 ? time : frame);
    file.setFirstDataGroup(file.dataGroup(file.group({.channels = time, .cycles = 1}), file.data(ByteList(24))));
    EXPECT_EQ(outcomeOf(file), kLoop);
  }
}

TEST_F(MdfHostileTest, channelsThatManyGroupsShare) {
  MdfFileBuilder file;
  const std::uint64_t channels = file.frameChannels();
  const std::uint64_t second = file.group({.channels = channels, .cycles = 1, .recordId = 1});
  const std::uint64_t first = file.group({.channels = channels, .cycles = 1, .recordId = 2}, second);
  const ByteList records = join({{1}, MdfFileBuilder::record(0), {2}, MdfFileBuilder::record(0)});
  file.setFirstDataGroup(file.dataGroup(first, file.data(records), 1));
  EXPECT_EQ(outcomeOf(file), kLoop);
}

TEST_F(MdfHostileTest, dataListsThatLeadBackToThemselves) {
  for (const char* const type : {"DL", "LD"}) {
    MdfFileBuilder file;
    const std::uint64_t list = file.block(type, {0}, join({le(1, 4), le(0, 4), le(0, 8)}));
    file.setLink(list, 0, list);
    file.setFirstDataGroup(file.dataGroup(file.group({.channels = file.frameChannels()}), list));
    EXPECT_EQ(outcomeOf(file), kLoop);
  }
}

TEST_F(MdfHostileTest, aDataBlockThatAllGroupsShare) {
  MdfFileBuilder file;
  const std::uint64_t data = file.data(MdfFileBuilder::record(0));
  const std::uint64_t second = file.dataGroup(file.group({.channels = file.frameChannels(), .cycles = 1}), data);
  const std::uint64_t first =
      file.dataGroup(file.group({.channels = file.frameChannels(), .cycles = 1}), data, 0, second);
  file.setFirstDataGroup(first);
  EXPECT_EQ(outcomeOf(file), kLoop);
}

// Sharing is legitimate, so the bound on what is read leaves room for it, but not without end.
TEST_F(MdfHostileTest, aHugeConversionThatManyFieldsShare) {
  const auto outcomeWith = [this](std::size_t fields) {
    MdfFileBuilder file;
    const std::uint64_t conversion = file.conversion(5, std::vector<double>(65534));
    const std::vector<test::ChannelSpec> specs(fields, {.name = "DLC", .byteOffset = 8, .conversion = conversion});
    const std::uint64_t top = file.topChannels("CAN_ErrorFrame", file.channels(specs));
    file.setFirstDataGroup(file.dataGroup(file.group({.channels = top, .cycles = 1}), file.data(ByteList(24))));
    return outcomeOf(file);
  };
  EXPECT_EQ(outcomeWith(8), "");
  EXPECT_EQ(outcomeWith(20), kLoop);
}

// A table that each record looks up again must not be walked again: that would be fifty thousand million steps here.
TEST_F(MdfHostileTest, aHugeConversionOfManyRecords) {
  constexpr std::size_t kRecords = 100'000;
  MdfFileBuilder file;
  std::vector<double> table(65534, -1.0);  // the input 0 is found between the last two keys
  table[table.size() - 3] = 8.0;
  table[table.size() - 2] = 1.0;
  const std::uint64_t conversion = file.conversion(5, table);
  const std::vector<test::ChannelSpec> specs(8, {.name = "DLC", .byteOffset = 8, .conversion = conversion});
  const std::uint64_t top = file.topChannels("CAN_ErrorFrame", file.channels(specs));
  const std::uint64_t group = file.group({.channels = top, .cycles = kRecords});
  file.setFirstDataGroup(file.dataGroup(group, file.data(ByteList(kRecords * 24))));
  EXPECT_EQ(outcomeOf(file), "");
  EXPECT_EQ(count_, kRecords);
}

TEST_F(MdfHostileTest, zippedBlocksThatOverlap) {
  MdfFileBuilder file;
  std::vector<std::uint64_t> links = {0};
  for (int count = 0; count < 10; ++count) {
    // Each claims all that follows as its compressed bytes.
    links.push_back(file.block("DZ", {}, join({textBytes("DT"), le(0, 2), le(0, 4), le(1'000'000, 8), le(1000, 8)})));
  }
  file.append(ByteList(2000));
  const std::uint64_t list = file.block("DL", links, join({le(1, 4), le(10, 4), le(0, 8)}));
  file.setFirstDataGroup(file.dataGroup(file.group({.channels = file.frameChannels(), .cycles = 1}), list));
  EXPECT_EQ(outcomeOf(file), kLoop);
}

TEST_F(MdfHostileTest, linksBeyondTheFile) {
  constexpr char kHead[] = "Not all wanted bytes could be retrieved for building a HeaderSection";
  for (const std::uint64_t target : {std::uint64_t{1} << 20, std::uint64_t{1} << 63, ~std::uint64_t{0}}) {
    MdfFileBuilder group;
    group.setFirstDataGroup(group.dataGroup(target, 0));
    EXPECT_EQ(outcomeOf(group), kHead);
    MdfFileBuilder data;
    data.setFirstDataGroup(data.dataGroup(data.group({.channels = data.frameChannels()}), target));
    EXPECT_EQ(outcomeOf(data), kHead);
    MdfFileBuilder channels;
    channels.setFirstDataGroup(
        channels.dataGroup(channels.group({.channels = target, .cycles = 1}), channels.data(ByteList(24))));
    EXPECT_EQ(outcomeOf(channels), kHead);
  }
}

TEST_F(MdfHostileTest, linkCountsBeyondTheFile) {
  for (const std::int64_t count : {std::int64_t{100}, std::int64_t{1} << 60}) {
    MdfFileBuilder file;
    file.setFirstDataGroup(file.block("DG", {0, 0, 0, 0}, le(0, 8), count));
    EXPECT_EQ(outcomeOf(file), "Not all wanted bytes could be retrieved for building a LinkSection");
  }
}

TEST_F(MdfHostileTest, lengthsBeyondTheFile) {
  MdfFileBuilder file;
  const std::uint64_t data = file.block("DT", {}, ByteList(24), -1, std::int64_t{1} << 62);
  file.setFirstDataGroup(file.dataGroup(file.group({.channels = file.frameChannels(), .cycles = 1}), data));
  EXPECT_EQ(outcomeOf(file), "Not all wanted bytes could be retrieved");
}

TEST_F(MdfHostileTest, zippedDataThatClaimsTerabytes) {
  MdfFileBuilder file;
  const ByteList zipped(1000, 0x55);
  const std::uint64_t data = file.block(
      "DZ", {}, join({textBytes("DT"), le(0, 2), le(0, 4), le(std::uint64_t{1} << 43, 8), le(1000, 8), zipped}));
  file.setFirstDataGroup(file.dataGroup(file.group({.channels = file.frameChannels(), .cycles = 1}), data));
  EXPECT_EQ(outcomeOf(file), "Decompression error");
}

TEST_F(MdfHostileTest, cycleCountsThatOverflowTheirSum) {
  MdfFileBuilder file;
  const std::uint64_t half = std::uint64_t{1} << 63;
  const std::uint64_t second = file.group({.channels = file.frameChannels(), .cycles = half, .recordId = 1});
  const std::uint64_t first = file.group({.channels = file.frameChannels(), .cycles = half, .recordId = 2}, second);
  file.setFirstDataGroup(file.dataGroup(first, file.data(join({{1}, MdfFileBuilder::record(0)})), 1));
  EXPECT_EQ(outcomeOf(file), "Index is out of range for record Id");
  EXPECT_EQ(count_, 1U);
}

TEST_F(MdfHostileTest, conversionsWithHugeCounts) {
  MdfFileBuilder file;
  const std::uint64_t conversion =
      file.block("CC", {0, 0, 0, 0}, join({{5}, le(0, 5), le(65535, 2), le(0, 16), le(0, 8)}));
  const std::uint64_t channels = file.topChannels("CAN_ErrorFrame", 0, conversion);
  file.setFirstDataGroup(file.dataGroup(file.group({.channels = channels, .cycles = 1}), file.data(ByteList(24))));
  EXPECT_EQ(outcomeOf(file), "Not all wanted bytes could be retrieved");
}

TEST_F(MdfHostileTest, aLongChainOfGroupsIsReadAndFreedWithoutRecursion) {
  constexpr int kGroups = 20'000;
  MdfFileBuilder file;
  std::uint64_t next =
      file.dataGroup(file.group({.channels = file.frameChannels(), .cycles = 1}), file.data(MdfFileBuilder::record(0)));
  for (int count = 0; count < kGroups; ++count) {
    next = file.dataGroup(0, 0, 0, next);
  }
  file.setFirstDataGroup(next);
  EXPECT_EQ(outcomeOf(file), "");
  EXPECT_EQ(count_, 1U);
}

// Every prefix of a file, and every byte of it changed, ends somehow.
TEST_F(MdfHostileTest, damagedFilesEnd) {
  MdfFileBuilder file;
  const ByteList records = join({MdfFileBuilder::record(1000), MdfFileBuilder::record(2000)});
  const std::uint64_t dt = file.data(records);
  uLongf size = compressBound(records.size());
  ByteList zipped(size);
  ASSERT_EQ(compress(zipped.data(), &size, records.data(), records.size()), Z_OK);
  zipped.resize(size);
  const std::uint64_t dz =
      file.block("DZ", {}, join({textBytes("DT"), {1, 0}, le(24, 4), le(records.size(), 8), le(size, 8), zipped}));
  const std::uint64_t list = file.block("DL", {0, dt, dz}, join({le(1, 4), le(2, 4), le(0, 8)}));
  file.setFirstDataGroup(
      file.dataGroup(file.group({.channels = file.frameChannels(), .cycles = 4}), file.block("HL", {list}, le(0, 8))));
  ASSERT_EQ(outcomeOf(file), "");
  ASSERT_EQ(count_, 4U);
  const std::string whole = file.asText();
  for (std::size_t index = 168; index < whole.size(); index += 11) {
    for (const char value : {'\0', '\x7F', '\xFF'}) {
      MdfFileBuilder damaged = file;
      damaged.patch(index, {static_cast<std::uint8_t>(value)});
      static_cast<void>(outcomeOf(damaged));
    }
  }
  for (std::size_t length = 0; length < whole.size(); length += 7) {
    MdfReader reader{MdfInfo(folder_.write("cut.mf4", whole.substr(0, length)))};
    std::string reason;
    if (!reader.ValidateFile(reason)) {
      EXPECT_NE(reason, "");
    }
  }
}

}  // namespace
}  // namespace xlatr
