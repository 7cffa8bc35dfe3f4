#include "formats/mf4/block_base.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "formats/mf4/block_header.hpp"
#include "formats/mf4/mdf_file_builder.hpp"
#include "util/host.hpp"
#include "xlatr/failures.hpp"

namespace xlatr {
namespace {

using test::ByteList;
using test::join;
using test::le;
using test::MdfFileBuilder;
using test::real;
using test::textBytes;

template <class Failure, class Action>
std::string failureOf(Action action) {
  try {
    action();
  } catch (const Failure& failure) {
    return failure.what();
  }
  return "";
}

template <class Action>
std::string processingFailureOf(Action action) {
  return failureOf<ConverterProcessingException>(action);
}

// Heads and links.

TEST(BlockTest, readsAHeadAndItsLinks) {
  BlockStream stream(ByteList{
      'x', 'x', '#', '#', 'T', 'X', 9, 9, 9, 9, 48, 0, 0, 0, 0, 0,    0,   0,   2,   0,   0,   0, 0, 0, 0, 0,  //
      1,   2,   3,   4,   5,   6,   7, 8, 0, 0, 0,  0, 0, 0, 0, 0x80, 'd', 'a', 't', 'a', '!', 0, 0, 0});
  const BlockBase block(stream, 2);
  EXPECT_EQ(block.position(), 2U);
  EXPECT_EQ(block.type(), BlockTypeId::TX);
  EXPECT_EQ(block.head().length, 48U);
  EXPECT_EQ(block.links(), (std::vector<std::uint64_t>{0x0807060504030201, 0x8000000000000000}));
  EXPECT_EQ(block.link(0), 0x0807060504030201U);
  EXPECT_EQ(block.link(2), 0U);
  EXPECT_EQ(block.dataOffset(), 42U);
  EXPECT_EQ(block.dataLength(), 8U);
  EXPECT_EQ(block.readBytes(42, 5), textBytes("data!"));
  EXPECT_EQ(block.readBytes(42, 0), ByteList{});
  EXPECT_EQ(processingFailureOf([&] { static_cast<void>(block.readBytes(42, 9)); }),
            "Not all wanted bytes could be retrieved");
  EXPECT_EQ(processingFailureOf([&] { static_cast<void>(block.readBytes(~std::uint64_t{0}, ~std::uint64_t{0})); }),
            "Not all wanted bytes could be retrieved");
}

TEST(BlockTest, aBlockWithoutFileHasNoBytes) {
  const BlockBase block(BlockTypeId::DG, 4);
  EXPECT_EQ(block.dataOffset(), std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(block.readBytes(0, 10), ByteList{});
  EXPECT_EQ(block.links().size(), 4U);
}

TEST(BlockTest, aHeadBeyondTheFileFails) {
  MdfFileBuilder file;
  file.append(textBytes("##DT"));
  BlockStream stream(file.bytes());
  for (const std::uint64_t position :
       {std::uint64_t{168}, std::uint64_t{171}, std::uint64_t{172}, std::uint64_t{1} << 40, ~std::uint64_t{0}}) {
    EXPECT_EQ(processingFailureOf([&] { BlockBase(stream, position); }),
              "Not all wanted bytes could be retrieved for building a HeaderSection");
  }
}

TEST(BlockTest, linksBeyondTheFileFail) {
  for (const std::int64_t count : {std::int64_t{2}, std::int64_t{1} << 61, std::numeric_limits<std::int64_t>::max()}) {
    MdfFileBuilder file;
    const std::uint64_t position = file.block("TX", {0}, {}, count);
    BlockStream stream(file.bytes());
    EXPECT_EQ(processingFailureOf([&] { BlockBase(stream, position); }),
              "Not all wanted bytes could be retrieved for building a LinkSection");
  }
}

TEST(BlockTest, blockIdsThatAreNoneFail) {
  const auto typeOf = [](std::string_view id) {
    HeaderSection section;
    std::copy(id.begin(), id.end(), section.blockId.begin());
    return HeaderSection::typeOf(section);
  };
  EXPECT_EQ(typeOf("##HL"), BlockTypeId::HL);
  EXPECT_EQ(failureOf<ConverterParsingException>([&] { static_cast<void>(typeOf("HD##")); }),
            "Format of parameter 'toParse' must be: '##[Blocktype ID]': {HD##}");
  EXPECT_EQ(failureOf<ConverterParsingException>([&] { static_cast<void>(typeOf("#HD#")); }),
            "Format of parameter 'toParse' must be: '##[Blocktype ID]': {#HD#}");
  EXPECT_EQ(processingFailureOf([&] { static_cast<void>(typeOf("##QQ")); }),
            "There is no block type defined that matches the given parameter");
  EXPECT_EQ(processingFailureOf([&] { static_cast<void>(typeOf("##hd")); }),
            "There is no block type defined that matches the given parameter");
}

TEST(BlockTest, aHeadIsWrittenAsItIsRead) {
  HeaderSection section;
  HeaderSection::setType(section, BlockTypeId::CG);
  section.length = 0x0102030405060708;
  section.linkCount = 6;
  Bytes bytes;
  appendFields(bytes, section);
  EXPECT_EQ(bytes, (ByteList{'#', '#', 'C', 'G', 0, 0, 0, 0, 8, 7, 6, 5, 4, 3, 2, 1, 6, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(BlockTest, aDataPartThatIsTooShortFails) {
  MdfFileBuilder file;
  const std::uint64_t shortData = file.block("DG", {0, 0, 0, 0}, le(1, 7));
  const std::uint64_t shortLength = file.block("DG", {0, 0, 0, 0}, le(1, 8), -1, 55);
  const std::uint64_t beyond = file.block("DG", {0, 0, 0, 0}, le(1, 8), -1, 1'000'000);
  const std::uint64_t exact = file.block("DG", {0, 0, 0, 0}, le(1, 8));
  const std::uint64_t longer = file.block("DG", {0, 0, 0, 0}, le(1, 16));
  BlockStream stream(file.bytes());
  for (const std::uint64_t position : {shortData, shortLength, beyond}) {
    EXPECT_EQ(processingFailureOf([&] { DataGroupBlock(stream, position); }),
              "Not all wanted bytes could be retrieved");
  }
  EXPECT_EQ(DataGroupBlock(stream, exact).data.dgRecIdSize, 1);
  EXPECT_EQ(DataGroupBlock(stream, longer).data.dgRecIdSize, 1);
}

TEST(BlockTest, aStreamServesReadsOfAllSizesAndPlaces) {
  ByteList bytes(300'000);
  for (std::size_t index = 0; index < bytes.size(); ++index) {
    bytes[index] = static_cast<std::uint8_t>(index * 7 + index / 256);
  }
  BlockStream stream(bytes);
  for (const std::size_t size : {1U, 24U, 1000U, 40'000U, 100'000U}) {
    for (const std::size_t position : {0U, 5U, 65'530U, 131'072U, 200'000U}) {
      ByteList read(size);
      ASSERT_TRUE(stream.read(position, read));
      EXPECT_TRUE(std::equal(read.begin(), read.end(), bytes.begin() + static_cast<std::ptrdiff_t>(position)));
    }
  }
  ByteList two(2);
  EXPECT_FALSE(stream.read(299'999, two));
}

TEST(BlockTest, readingTheSameBytesWithoutEndFails) {
  ByteList bytes(100'000);
  BlockStream stream(bytes);
  // Eight times the file and a mebibyte are allowed.
  constexpr int kAllowed = 8 + 10;
  for (int count = 0; count < kAllowed; ++count) {
    ASSERT_TRUE(stream.read(0, bytes));
  }
  EXPECT_EQ(processingFailureOf([&] {
              static_cast<void>(stream.read(0, bytes));
              static_cast<void>(stream.read(0, bytes));
            }),
            "Block links form a loop");
}

// Texts.

TEST(BlockTest, textsEndInAZeroAndFillGroupsOfEight) {
  EXPECT_EQ(toTextBytes(""), ByteList(8));
  EXPECT_EQ(toTextBytes("seven77"), join({textBytes("seven77"), {0}}));
  EXPECT_EQ(toTextBytes("eight888"), join({textBytes("eight888"), ByteList(8)}));
  EXPECT_EQ(createText("t")->toBytes(), join({textBytes("##TX"), ByteList(20), textBytes("t"), ByteList(7)}));
}

TEST(BlockTest, readsTextsWithoutTheirZeros) {
  MdfFileBuilder file;
  const std::uint64_t text = file.block("TX", {}, join({textBytes("name"), ByteList(12)}));
  const std::uint64_t metadata = file.block("MD", {}, textBytes("<x/>"));
  const std::uint64_t inner = file.block("TX", {}, {'a', 0, 'b', 0, 0});
  const std::uint64_t other = file.block("SI", {0, 0, 0}, textBytes("12345678"));
  const std::uint64_t longest = file.block("TX", {}, ByteList(4096, 'x'));
  const std::uint64_t tooLong = file.block("TX", {}, ByteList(4097, 'x'));
  BlockStream stream(file.bytes());
  EXPECT_EQ(readText(&stream, text), "name");
  EXPECT_EQ(readText(&stream, metadata), "<x/>");
  EXPECT_EQ(readText(&stream, inner), std::string("a\0b", 3));
  EXPECT_EQ(readText(&stream, other), "");
  EXPECT_EQ(readText(&stream, longest), std::string(4096, 'x'));
  EXPECT_EQ(readText(&stream, tooLong), "");
  EXPECT_EQ(readText(&stream, 0), "");
  EXPECT_EQ(readText(nullptr, text), "");
}

// Identification and header.

TEST(BlockTest, theIdentificationIsSixtyFourBytes) {
  const struct {
    double version;
    ByteList text;
    std::uint16_t number;
  } cases[] = {{4.1, {'4', '.', '1', '0', 0, 0, 0, 0}, 410},
               {4.11, {'4', '.', '1', '1', 0, 0, 0, 0}, 411},
               {4.2, {'4', '.', '2', '0', 0, 0, 0, 0}, 420}};
  for (const auto& each : cases) {
    const FileIdentificationBlock block = FileIdentificationBlock::forVersion(each.version);
    Bytes bytes;
    appendFields(bytes, block);
    EXPECT_EQ(bytes, join({textBytes("MDF     "), each.text, textBytes("ZELK-Con"), le(0, 4), le(each.number, 2),
                           ByteList(30), le(0, 2), le(0, 2)}));
  }
  EXPECT_EQ(FileIdentificationBlock::forVersion(1234567.0).idVersion[7], '\0');
}

TEST(BlockTest, theHistoryStandsAfterTheHeader) {
  const auto file = MdfFileHeader::createForWriting({}, UnsignedNanoseconds(0x1122334455667788), 4.1);
  const Bytes bytes = file->toBytes();
  const auto at = [&](std::size_t position, std::size_t size) {
    return ByteList(bytes.begin() + static_cast<std::ptrdiff_t>(position),
                    bytes.begin() + static_cast<std::ptrdiff_t>(position + size));
  };
  const std::string comment =
      "<FHcomment><TX>created</TX><tool_id>ZELK-Converter</tool_id><tool_vendor>Zelkworks Instruments</tool_vendor>"
      "<tool_version>" +
      getHostVersionText() + "</tool_version></FHcomment>";
  const std::uint64_t commentSize = (comment.size() / 8 + 1) * 8;
  ByteList paddedComment = textBytes(comment);
  paddedComment.resize(commentSize);
  const std::uint64_t firstGroup = 224 + 24 + commentSize;
  EXPECT_EQ(at(0, 8), textBytes("MDF     "));
  EXPECT_EQ(at(64, 104), join({textBytes("##HD"),
                               le(0, 4),
                               le(104, 8),
                               le(6, 8),
                               le(firstGroup, 8),
                               le(168, 8),
                               ByteList(32),
                               le(0x1122334455667788, 8),
                               le(0, 4),
                               {1, 0, 0, 0},
                               ByteList(16)}));
  EXPECT_EQ(at(168, 24 + 16), join({textBytes("##FH"), le(0, 4), le(56, 8), le(2, 8), le(0, 8), le(224, 8)}));
  EXPECT_EQ(at(168 + 48, 8), join({le(0, 4), {1, 0, 0, 0}}));
  EXPECT_EQ(at(224, 24 + commentSize),
            join({textBytes("##MD"), le(0, 4), le(24 + commentSize, 8), le(0, 8), paddedComment}));
  EXPECT_EQ(at(firstGroup, 4), textBytes("##DG"));
}

TEST(BlockTest, aHeaderWithoutDataGroupHasNone) {
  MdfFileBuilder builder;
  MdfFileHeader file(builder.bytes());
  ASSERT_NE(file.header(), nullptr);
  EXPECT_EQ(file.header()->firstDataGroup(), nullptr);
  EXPECT_EQ(processingFailureOf([&] { static_cast<void>(file.header()->dataLinkPosition(0)); }),
            "Did not find channel group by nature");
}

TEST(BlockTest, aHeaderWithoutFileIsLocalTime) {
  EXPECT_EQ(HeaderBlock().data.hdTimeFlags, 1);
  const auto file = MdfFileHeader::createForWriting({}, UnsignedNanoseconds(0), 4.1);
  EXPECT_TRUE(file->closed());
}

TEST(BlockTest, whatIsNoPartOfAWrittenTreeFails) {
  for (const auto type : {BlockTypeId::CH, BlockTypeId::AT, BlockTypeId::EV, BlockTypeId::SR, BlockTypeId::CA}) {
    const auto header = HeaderBlock::createTree({}, UnsignedNanoseconds(0));
    (type == BlockTypeId::CH ? header->hierarchies() : header->events()).addBlock(std::make_unique<BlockBase>(type, 1));
    Bytes bytes;
    EXPECT_EQ(processingFailureOf([&] { header->appendTreeBytes(bytes); }), "NYI");
  }
}

TEST(BlockTest, aWrongNumberOfLinksFailsWhenATreeIsPlaced) {
  const auto placeWith = [](auto block, std::size_t count) {
    block->setLinkCount(count);
    BlockList list;
    list.addBlock(std::move(block));
    std::uint64_t nextFree = 0;
    placeTree(list, nextFree);
  };
  const MdfLayoutOptions options;
  EXPECT_EQ(processingFailureOf([&] { placeWith(FileHistoryBlock::create(), 3); }), "Fatal error");
  EXPECT_EQ(processingFailureOf([&] { placeWith(SourceInformationBlock::createForChannel(), 4); }), "Fatal error");
  const auto group = [&] { return ChannelGroupBlock::createTree(options, BusEventFrameType::DataFrame); };
  EXPECT_EQ(processingFailureOf([&] { placeWith(group(), 5); }), "Fatal error");
  EXPECT_EQ(processingFailureOf([&] { placeWith(group(), 8); }), "Fatal error");
  EXPECT_EQ(processingFailureOf([&] { placeWith(group(), 7); }), "");
}

}  // namespace
}  // namespace xlatr
