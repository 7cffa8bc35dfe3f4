#include "formats/mf4/block_groups.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "formats/mf4/block_header.hpp"
#include "formats/mf4/mdf_file_builder.hpp"
#include "xlatr/failures.hpp"

namespace xlatr {
namespace {

using test::ByteList;
using test::join;
using test::le;
using test::MdfFileBuilder;
using test::real;
using test::textBytes;

constexpr auto kData = BusEventFrameType::DataFrame;
constexpr auto kRemote = BusEventFrameType::RemoteFrame;
constexpr auto kError = BusEventFrameType::ErrorFrame;

// Layouts.

TEST(BlockChannelsTest, aChannelIsAHundredAndSixtyBytes) {
  ChannelBlock block;
  ChannelBlockData& data = block.data;
  data.cnType = 1;
  data.cnSyncType = 2;
  data.cnDataType = 3;
  data.cnBitOffset = 4;
  data.cnByteOffset = 0x05060708;
  data.cnBitCount = 0x090A0B0C;
  data.cnFlags = 0x0D0E0F10;
  data.cnInvalBitPos = 0x11121314;
  data.cnPrecision = 0x15;
  data.cnAttachmentCount = 0x1617;
  data.cnValRangeMin = 1.0;
  data.cnValRangeMax = 2.0;
  data.cnLimitMin = 3.0;
  data.cnLimitMax = 4.0;
  data.cnLimitExtMin = 5.0;
  data.cnLimitExtMax = 6.0;
  const ByteList fields = join({{1, 2, 3, 4},
                                le(0x05060708, 4),
                                le(0x090A0B0C, 4),
                                le(0x0D0E0F10, 4),
                                le(0x11121314, 4),
                                {0x15, 0},
                                le(0x1617, 2),
                                real(1),
                                real(2),
                                real(3),
                                real(4),
                                real(5),
                                real(6)});
  EXPECT_EQ(block.length(), 160U);
  EXPECT_EQ(block.toBytes(), join({textBytes("##CN"), ByteList(20), ByteList(64), fields}));

  MdfFileBuilder file;
  const std::uint64_t position = file.block("CN", std::vector<std::uint64_t>(8), fields);
  BlockStream stream(file.bytes());
  const ChannelBlock read(stream, position);
  Bytes again = read.toBytes();
  EXPECT_EQ(ByteList(again.end() - 72, again.end()), fields);
  EXPECT_EQ(read.data.cnLimitExtMax, 6.0);
  EXPECT_EQ(read.data.cnAttachmentCount, 0x1617);
  EXPECT_FALSE(read.isByteArray());
}

TEST(BlockChannelsTest, aChannelGroupIsAHundredAndFourBytes) {
  const ByteList fields = join({le(0x0102030405060708, 8), le(0x1112131415161718, 8), le(0x2122, 2), le(0x3132, 2),
                                le(0, 4), le(0x41424344, 4), le(0x51525354, 4)});
  MdfFileBuilder file;
  const std::uint64_t position = file.block("CG", std::vector<std::uint64_t>(6), fields);
  BlockStream stream(file.bytes());
  const ChannelGroupBlock group(stream, position);
  EXPECT_EQ(group.data.cgRecordId, 0x0102030405060708U);
  EXPECT_EQ(group.data.cgCycleCount, 0x1112131415161718U);
  EXPECT_EQ(group.data.cgFlags, 0x2122);
  EXPECT_EQ(group.data.cgPathSeparator, 0x3132);
  EXPECT_EQ(group.data.cgDataBytes, 0x41424344U);
  EXPECT_EQ(group.data.cgInvalBytes, 0x51525354U);
  const Bytes again = group.toBytes();
  EXPECT_EQ(again.size(), 104U);
  EXPECT_EQ(ByteList(again.end() - 32, again.end()), fields);
  EXPECT_EQ(group.cycleCountPosition(), position + 32 + 48);
}

TEST(BlockChannelsTest, aDataGroupIsSixtyFourBytes) {
  DataGroupBlock group;
  group.data.dgRecIdSize = 8;
  EXPECT_EQ(group.toBytes(), join({textBytes("##DG"), ByteList(20), ByteList(32), {8}, ByteList(7)}));
  EXPECT_EQ(group.dataLinkPosition(), 40U);
}

TEST(BlockChannelsTest, aConversionHasItsValuesAtTheEnd) {
  const ByteList fields =
      join({{5, 6}, le(0x0708, 2), le(1, 2), le(2, 2), real(-1.5), real(1.5), real(10.0), real(20.0)});
  MdfFileBuilder file;
  const std::uint64_t position = file.block("CC", std::vector<std::uint64_t>(5), fields);
  BlockStream stream(file.bytes());
  const ChannelConversionBlock block(stream, position);
  EXPECT_EQ(block.data.ccType, 5);
  EXPECT_EQ(block.data.ccPrecision, 6);
  EXPECT_EQ(block.data.ccFlags, 0x0708);
  EXPECT_EQ(block.data.ccRefCount, 1);
  EXPECT_EQ(block.data.ccPhyRangeMin, -1.5);
  EXPECT_EQ(block.data.ccPhyRangeMax, 1.5);
  EXPECT_EQ(block.data.ccVal, (std::vector<double>{10.0, 20.0}));
  const Bytes again = block.toBytes();
  EXPECT_EQ(ByteList(again.end() - 40, again.end()), fields);
}

TEST(BlockChannelsTest, aConversionWithMoreValuesThanBytesFails) {
  MdfFileBuilder file;
  const std::uint64_t position =
      file.block("CC", std::vector<std::uint64_t>(4), join({{5}, le(0, 5), le(65535, 2), le(0, 16), real(1.0)}));
  BlockStream stream(file.bytes());
  try {
    const ChannelConversionBlock block(stream, position);
    FAIL();
  } catch (const ConverterProcessingException& failure) {
    EXPECT_STREQ(failure.what(), "Not all wanted bytes could be retrieved");
  }
}

TEST(BlockChannelsTest, aChannelArrayHasTheSumAndTheProductOfItsSizes) {
  MdfFileBuilder file;
  const std::uint64_t array =
      file.block("CA", {0}, join({{1, 2}, le(3, 2), le(4, 4), le(5, 4), le(6, 4), le(2, 8), le(3, 8), le(7, 8)}));
  const std::uint64_t channel = file.channel({.name = "x", .composition = array});
  BlockStream stream(file.bytes());
  ChannelBlock block(stream, channel);
  const auto read = block.compositionArray();
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(read->data.caType, 1);
  EXPECT_EQ(read->data.caStorage, 2);
  EXPECT_EQ(read->data.caFlags, 4U);
  EXPECT_EQ(read->data.caByteOffsetBase, 5U);
  EXPECT_EQ(read->data.caInvalBitPosBase, 6U);
  EXPECT_EQ(read->sumOfSizes(), 12U);
  EXPECT_EQ(read->productOfSizes(), 42U);
  EXPECT_EQ(block.composition().at(0), nullptr);
}

// Following links.

TEST(BlockChannelsTest, linksToOtherBlocksLeadToNothing) {
  MdfFileBuilder file;
  const std::uint64_t text = file.text("x");
  const std::uint64_t channel = file.block("CN", {text, text, 0, text, text, text, text, 0}, ByteList(72));
  const std::uint64_t group = file.block("CG", {text, text, 0, text, 0, 0}, ByteList(32));
  const std::uint64_t dataGroup = file.block("DG", {text, text, text, 0}, ByteList(8));
  BlockStream stream(file.bytes());
  ChannelBlock channelBlock(stream, channel);
  EXPECT_EQ(channelBlock.composition().at(0), nullptr);
  EXPECT_EQ(channelBlock.compositionArray(), nullptr);
  EXPECT_EQ(channelBlock.conversion(), nullptr);
  EXPECT_EQ(channelBlock.dataLink(), nullptr);
  EXPECT_EQ(channelBlock.name(), "");
  ChannelGroupBlock groupBlock(stream, group);
  EXPECT_EQ(groupBlock.firstChannel(), nullptr);
  EXPECT_EQ(groupBlock.source(), nullptr);
  EXPECT_EQ(groupBlock.acquisitionName(), "");
  DataGroupBlock dataGroupBlock(stream, dataGroup);
  EXPECT_EQ(dataGroupBlock.firstChannelGroup(), nullptr);
  EXPECT_EQ(dataGroupBlock.dataBlock(), nullptr);
  EXPECT_FALSE(dataGroupBlock.hasCanBus());
}

TEST(BlockChannelsTest, aGroupWithFlagThreeHasASeventhLink) {
  MdfFileBuilder file;
  const std::uint64_t position =
      file.block("CG", std::vector<std::uint64_t>(7, 0), join({le(1, 8), le(2, 8), le(8, 2), le(0, 14)}));
  BlockStream stream(file.bytes());
  const ChannelGroupBlock group(stream, position);
  EXPECT_EQ(group.data.cgCycleCount, 2U);
  EXPECT_EQ(group.cycleCountPosition(), position + 32 + 56);
  EXPECT_TRUE(group.hasValidLinkCount());
}

TEST(BlockChannelsTest, findsGroupsAndChannelsByTheirNames) {
  MdfFileBuilder file;
  const std::uint64_t remote = file.group({.name = "CAN_RemoteFrame"});
  const std::uint64_t data =
      file.group({.channels = file.frameChannels(), .name = std::string("CAN_DataFrame\0\0", 15)}, remote);
  file.setFirstDataGroup(file.dataGroup(data, 0));
  MdfFileHeader header(file.bytes());
  DataGroupBlock& group = *header.header()->firstDataGroup();
  ASSERT_NE(group.findChannelGroup(kData), nullptr);
  EXPECT_EQ(group.findChannelGroup(kData)->position(), data);
  ASSERT_NE(group.findChannelGroup(kRemote), nullptr);
  EXPECT_EQ(group.findChannelGroup(kRemote)->position(), remote);
  EXPECT_EQ(group.findChannelGroup(kError), nullptr);
  ChannelBlock* const payload = group.findChannelGroup(kData)->findDataBytesChannel();
  ASSERT_NE(payload, nullptr);
  EXPECT_EQ(payload->name(), "CAN_DataFrame.DataBytes");
  EXPECT_TRUE(payload->isByteArray());
  EXPECT_EQ(group.findChannelGroup(kRemote)->findDataBytesChannel(), nullptr);
  EXPECT_EQ(header.header()->cycleCountPosition(0, kRemote), remote + 80);
  EXPECT_THROW(static_cast<void>(header.header()->cycleCountPosition(0, kError)), ConverterProcessingException);
  EXPECT_THROW(static_cast<void>(header.header()->cycleCountPosition(1, kData)), ConverterProcessingException);
}

TEST(BlockChannelsTest, frameNames) {
  EXPECT_EQ(mdfFrameName(kData), "CAN_DataFrame");
  EXPECT_EQ(mdfFrameName(kRemote), "CAN_RemoteFrame");
  EXPECT_EQ(mdfFrameName(kError), "CAN_ErrorFrame");
  EXPECT_EQ(mdfFrameName(BusEventFrameType::OverloadFrame), "CAN_OverloadFrame");
  EXPECT_EQ(mdfFrameName(static_cast<BusEventFrameType>(4)), "Unknown");
}

// Conversions.

std::optional<double> evaluate(std::uint8_t type, const std::vector<double>& values, double input) {
  ChannelConversionBlock block;
  block.data.ccType = type;
  block.data.ccVal = values;
  return block.evaluate(input);
}

TEST(BlockChannelsTest, aLinearConversionIsAConstantOrNothing) {
  EXPECT_EQ(evaluate(1, {3.5, 0.0}, 100.0), 3.5);
  EXPECT_EQ(evaluate(1, {3.5, 1.0}, 100.0), std::nullopt);
  EXPECT_EQ(evaluate(1, {3.5}, 100.0), std::nullopt);
  EXPECT_EQ(evaluate(1, {3.5, 0.0, 0.0}, 100.0), std::nullopt);
  for (const std::uint8_t type : std::vector<std::uint8_t>{0, 2, 3, 4, 6, 7, 8, 255}) {
    EXPECT_EQ(evaluate(type, {3.5, 0.0}, 0.0), std::nullopt);
  }
}

TEST(BlockChannelsTest, aTableTakesTheNearestKey) {
  const std::vector<double> table = {0.0, 100.0, 10.0, 200.0, 20.0, 300.0};
  const struct {
    double input;
    double value;
  } cases[] = {{-1.0, 100.0}, {0.0, 100.0},  {4.0, 100.0},  {5.0, 100.0},  {5.5, 200.0},
               {10.0, 200.0}, {15.0, 200.0}, {15.5, 300.0}, {20.0, 300.0}, {1000.0, 300.0}};
  for (const auto& each : cases) {
    EXPECT_EQ(evaluate(5, table, each.input), each.value) << each.input;
  }
  EXPECT_EQ(evaluate(5, {0.0, 1.0, 2.0}, 1.0), std::nullopt);
  EXPECT_EQ(evaluate(5, {}, 1.0), std::nullopt);
  EXPECT_EQ(evaluate(5, {7.0, 8.0}, 7.0), 8.0);
  EXPECT_EQ(evaluate(5, table, std::numeric_limits<double>::quiet_NaN()), std::nullopt);
}

TEST(BlockChannelsTest, tableFindsValuesThatEqualTheInput) {
  EXPECT_EQ(evaluate(5, {0.0, 3.0, 3.5, 50.0, 10.0, 60.0}, 3.0), 50.0);  // between the keys 0 and 3.5
  EXPECT_EQ(evaluate(5, {4.0, 3.0, 2.0, 9.0}, 3.0), 3.0);                // below the first key
  EXPECT_EQ(evaluate(5, {0.0, 5.0, 3.0, 9.0, 20.0, 1.0}, 5.0), 3.0);     // a value, after which key 3 stands
  // Between the values 5 and 9, before the walk reaches the keys 3 and 20.
  EXPECT_EQ(evaluate(5, {0.0, 5.0, 3.0, 9.0, 20.0, 1.0}, 6.0), 3.0);
  EXPECT_EQ(evaluate(5, {0.0, 5.0, 3.0, 9.0, 20.0, 1.0}, 8.0), 20.0);
}

// The tree of a written file.

struct Expected {
  const char* name;
  std::uint8_t type;
  std::uint8_t dataType;
  std::uint32_t byte;
  std::uint8_t bit;
  std::uint32_t bits;
  std::uint32_t flags;
  double limit;
};

void expectChannel(ChannelBlock& channel, const std::string& prefix, const Expected& each) {
  SCOPED_TRACE(prefix + each.name);
  EXPECT_EQ(channel.name(), prefix + each.name);
  EXPECT_EQ(channel.data.cnType, each.type);
  EXPECT_EQ(channel.data.cnSyncType, 0);
  EXPECT_EQ(channel.data.cnDataType, each.dataType);
  EXPECT_EQ(channel.data.cnByteOffset, each.byte);
  EXPECT_EQ(channel.data.cnBitOffset, each.bit);
  EXPECT_EQ(channel.data.cnBitCount, each.bits);
  EXPECT_EQ(channel.data.cnFlags, each.flags);
  EXPECT_EQ(channel.data.cnPrecision, 0xFF);
  EXPECT_EQ(channel.data.cnLimitMax, each.limit);
  EXPECT_EQ(channel.link(ChannelBlock::kSource), 0U);
  EXPECT_EQ(channel.link(ChannelBlock::kConversion), 0U);
}

void expectFrame(ChannelGroupBlock& group, const std::string& frame, std::uint32_t frameBits, std::uint32_t dataBytes,
                 const std::vector<Expected>& parts) {
  SCOPED_TRACE(frame);
  EXPECT_EQ(group.data.cgDataBytes, dataBytes);
  EXPECT_EQ(group.data.cgFlags, 6);
  EXPECT_EQ(group.acquisitionName(), frame);
  ASSERT_NE(group.source(), nullptr);
  EXPECT_EQ(group.source()->data.siBusType, 2);
  ChannelBlock* const time = group.channels().at(0);
  ChannelBlock* const whole = group.channels().at(1);
  ASSERT_NE(whole, nullptr);
  EXPECT_EQ(group.channels().at(2), nullptr);
  EXPECT_EQ(time->name(), "t");
  EXPECT_EQ(time->data.cnType, 2);
  EXPECT_EQ(time->data.cnSyncType, 1);
  EXPECT_EQ(time->data.cnDataType, 4);
  EXPECT_EQ(time->data.cnBitCount, 64U);
  EXPECT_EQ(time->data.cnPrecision, 0);
  EXPECT_EQ(time->conversion()->head().length, 96U);
  EXPECT_EQ(time->conversion()->data.ccVal, (std::vector<double>{0.0, 1e-9}));
  EXPECT_EQ(time->conversion()->unitText(), "s");
  EXPECT_EQ(time->conversion()->link(ChannelConversionBlock::kUnit), time->conversion()->position() + 96);
  EXPECT_EQ(whole->name(), frame);
  EXPECT_EQ(whole->data.cnDataType, 10);
  EXPECT_EQ(whole->data.cnByteOffset, 8U);
  EXPECT_EQ(whole->data.cnBitCount, frameBits);
  EXPECT_EQ(whole->data.cnFlags, 0x404U);
  EXPECT_EQ(whole->data.cnPrecision, 0xFF);
  EXPECT_NE(whole->link(ChannelBlock::kSource), 0U);
  for (std::size_t index = 0; index < parts.size(); ++index) {
    ASSERT_NE(whole->composition().at(index), nullptr);
    expectChannel(*whole->composition().at(index), frame + ".", parts[index]);
  }
  EXPECT_EQ(whole->composition().at(parts.size()), nullptr);
}

std::vector<Expected> dataParts(std::uint8_t type, std::uint32_t bits, std::uint32_t flags) {
  return {{"BusChannel", 0, 0, 12, 0, 8, 0x400, 0.0},   {"DataBytes", type, 10, 16, 0, bits, flags, 255.0},
          {"DataLength", 0, 0, 15, 0, 8, 0x414, 255.0}, {"DLC", 0, 0, 14, 0, 8, 0x414, 255.0},
          {"ID", 0, 0, 8, 0, 32, 0x414, 255.0},         {"IDE", 0, 0, 13, 4, 1, 0x400, 255.0},
          {"Flags", 0, 0, 13, 0, 8, 0x400, 255.0},      {"Dir", 0, 0, 13, 0, 1, 0x400, 255.0},
          {"EDL", 0, 0, 13, 1, 1, 0x400, 255.0},        {"BRS", 0, 0, 13, 2, 1, 0x400, 255.0},
          {"ESI", 0, 0, 13, 3, 1, 0x400, 255.0}};
}

const std::vector<Expected> kRemoteParts = {
    {"BusChannel", 0, 0, 12, 0, 8, 0x400, 0.0}, {"DataLength", 0, 0, 15, 0, 8, 0x414, 255.0},
    {"DLC", 0, 0, 14, 0, 8, 0x414, 255.0},      {"ID", 0, 0, 8, 0, 32, 0x414, 255.0},
    {"IDE", 0, 0, 13, 4, 1, 0x400, 255.0},      {"Flags", 0, 0, 13, 0, 8, 0x400, 255.0},
    {"Dir", 0, 0, 13, 0, 1, 0x400, 255.0}};
const std::vector<Expected> kErrorParts = {{"BusChannel", 0, 0, 8, 0, 8, 0x400, 0.0},
                                           {"Flags", 0, 0, 9, 0, 8, 0x400, 255.0},
                                           {"Dir", 0, 0, 9, 0, 1, 0x400, 255.0},
                                           {"ErrorType", 0, 0, 10, 0, 8, 0x400, 255.0},
                                           {"BitPosition", 0, 0, 11, 0, 8, 0x400, 255.0}};

// Written, and read back from its bytes.
std::unique_ptr<MdfFileHeader> writtenTree(const MdfLayoutOptions& options) {
  return std::make_unique<MdfFileHeader>(
      MdfFileHeader::createForWriting(options, UnsignedNanoseconds(0), 4.1)->toBytes());
}

TEST(BlockChannelsTest, anUnsortedTreeHasOneDataGroup) {
  const auto file = writtenTree({});
  HeaderBlock& header = *file->header();
  ASSERT_NE(header.firstDataGroup(), nullptr);
  EXPECT_EQ(header.dataGroups().at(1), nullptr);
  DataGroupBlock& group = *header.firstDataGroup();
  EXPECT_EQ(group.data.dgRecIdSize, 1);
  EXPECT_TRUE(group.hasCanBus());
  for (std::size_t kind = 0; kind < 3; ++kind) {
    ASSERT_NE(group.channelGroups().at(kind), nullptr);
    EXPECT_EQ(group.channelGroups().at(kind)->data.cgRecordId, kind);
  }
  EXPECT_EQ(group.channelGroups().at(3), nullptr);
  expectFrame(*group.channelGroups().at(0), "CAN_DataFrame", 576, 80, dataParts(5, 512, 0x404));
  expectFrame(*group.channelGroups().at(1), "CAN_RemoteFrame", 64, 16, kRemoteParts);
  expectFrame(*group.channelGroups().at(2), "CAN_ErrorFrame", 32, 12, kErrorParts);
}

TEST(BlockChannelsTest, aSortedTreeHasADataGroupForEachKind) {
  const auto file = writtenTree({.layout = MdfLayout::Sorted});
  HeaderBlock& header = *file->header();
  const char* const names[] = {"CAN_DataFrame", "CAN_RemoteFrame", "CAN_ErrorFrame"};
  std::vector<std::uint64_t> groups;
  std::vector<std::uint64_t> channelGroups;
  for (std::size_t kind = 0; kind < 3; ++kind) {
    DataGroupBlock* const group = header.dataGroups().at(kind);
    ASSERT_NE(group, nullptr);
    EXPECT_EQ(group->data.dgRecIdSize, 0);
    ASSERT_NE(group->firstChannelGroup(), nullptr);
    EXPECT_EQ(group->channelGroups().at(1), nullptr);
    EXPECT_EQ(group->firstChannelGroup()->data.cgRecordId, kind);
    EXPECT_EQ(group->firstChannelGroup()->acquisitionName(), names[kind]);
    EXPECT_EQ(header.dataLinkPosition(kind), group->position() + 40);
    groups.push_back(group->position());
    channelGroups.push_back(group->firstChannelGroup()->position());
  }
  EXPECT_EQ(header.dataGroups().at(3), nullptr);
  // The data groups stand together, then come the channel groups of the last one first.
  EXPECT_EQ(groups[1], groups[0] + 64);
  EXPECT_EQ(groups[2], groups[0] + 128);
  EXPECT_EQ(channelGroups[2], groups[0] + 192);
  EXPECT_LT(channelGroups[2], channelGroups[1]);
  EXPECT_LT(channelGroups[1], channelGroups[0]);
  EXPECT_EQ(header.dataLinkPosition(7), groups[2] + 40);
}

TEST(BlockChannelsTest, dataFramesAloneHaveOneGroup) {
  for (const auto layout : {MdfLayout::Unsorted, MdfLayout::Sorted}) {
    const auto file = writtenTree({.layout = layout, .dataFramesOnly = true});
    EXPECT_EQ(file->header()->dataGroups().at(1), nullptr);
    EXPECT_EQ(file->header()->firstDataGroup()->channelGroups().at(1), nullptr);
  }
}

TEST(BlockChannelsTest, smallPayloadsTakeEightBytes) {
  const auto file = writtenTree({.largePayload = false});
  expectFrame(*file->header()->firstDataGroup()->firstChannelGroup(), "CAN_DataFrame", 128, 24,
              dataParts(5, 64, 0x404));
}

TEST(BlockChannelsTest, signalDataLayoutsHaveAnOffsetInTheRecord) {
  const auto plain = writtenTree({.layout = MdfLayout::SignalData});
  expectFrame(*plain->header()->firstDataGroup()->firstChannelGroup(), "CAN_DataFrame", 128, 24,
              dataParts(1, 64, 0x404));
  const auto stream = writtenTree({.layout = MdfLayout::SignalDataStream});
  expectFrame(*stream->header()->firstDataGroup()->firstChannelGroup(), "CAN_DataFrame", 128, 24,
              dataParts(1, 64, 0x4404));
  EXPECT_EQ(plain->header()->firstDataGroup()->data.dgRecIdSize, 1);
}

TEST(BlockChannelsTest, theDataLinkLeadsToTheEndOfTheTree) {
  const auto file = MdfFileHeader::createForWriting({}, UnsignedNanoseconds(0), 4.1);
  const Bytes bytes = file->toBytes();
  EXPECT_EQ(file->header()->firstDataGroup()->link(DataGroupBlock::kData), bytes.size());
}

TEST(BlockChannelsTest, sourcesOfGroupsAndChannels) {
  const auto bytesOf = [](std::unique_ptr<SourceInformationBlock> source) {
    BlockList list;
    list.addBlock(std::move(source));
    std::uint64_t nextFree = 1000;
    placeTree(list, nextFree);
    Bytes bytes;
    appendTree(list, bytes);
    return bytes;
  };
  const auto source = [](std::uint64_t pathLength) {
    return join({textBytes("##SI"),
                 le(0, 4),
                 le(56, 8),
                 le(3, 8),
                 le(1056, 8),
                 le(1088, 8),
                 le(0, 8),
                 {2, 2, 0},
                 ByteList(5),
                 textBytes("##TX"),
                 le(0, 4),
                 le(32, 8),
                 le(0, 8),
                 ByteList(8),
                 textBytes("##TX"),
                 le(0, 4),
                 le(pathLength, 8),
                 le(0, 8)});
  };
  EXPECT_EQ(bytesOf(SourceInformationBlock::createForGroup()), join({source(32), textBytes("Message"), {0}}));
  EXPECT_EQ(bytesOf(SourceInformationBlock::createForChannel()), join({source(32), ByteList(8)}));
}

}  // namespace
}  // namespace xlatr
