#include "formats/mf4/block_data.hpp"

#include <gtest/gtest.h>
#include <zlib.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "formats/mf4/mdf_file_builder.hpp"
#include "xlatr/failures.hpp"

namespace xlatr {
namespace {

using test::ByteList;
using test::join;
using test::le;
using test::MdfFileBuilder;
using test::textBytes;

ByteList deflated(const ByteList& bytes) {
  uLongf size = compressBound(bytes.size());
  ByteList zipped(size);
  EXPECT_EQ(compress(zipped.data(), &size, bytes.data(), bytes.size()), Z_OK);
  zipped.resize(size);
  return zipped;
}

struct Zip {
  ByteList zipped;
  std::uint64_t originalSize = 0;
  std::uint8_t type = 0;
  std::uint32_t parameter = 0;
  std::int64_t statedSize = -1;  // of the compressed bytes, where it is not true
};

std::uint64_t addZipped(MdfFileBuilder& file, const Zip& zip) {
  const std::uint64_t stated = zip.statedSize >= 0 ? static_cast<std::uint64_t>(zip.statedSize) : zip.zipped.size();
  return file.block("DZ", {},
                    join({textBytes("DT"), le(zip.type, 1), le(0, 1), le(zip.parameter, 4), le(zip.originalSize, 8),
                          le(stated, 8), zip.zipped}));
}

ByteList toBytes(const RecordBytes& bytes) {
  return {bytes.view().begin(), bytes.view().end()};
}

// What a data link to this position gives.
ByteList dataAt(const MdfFileBuilder& file, std::uint64_t position) {
  BlockStream stream(file.bytes());
  const auto block = followDataLink(&stream, position);
  return block ? toBytes(block->getData()) : textBytes("no data block");
}

std::string failureAt(const MdfFileBuilder& file, std::uint64_t position) {
  try {
    dataAt(file, position);
  } catch (const ConverterProcessingException& failure) {
    return failure.what();
  }
  return "";
}

ByteList dlFields(std::uint32_t count, std::uint8_t flags = 1) {
  return join({{flags}, le(0, 3), le(count, 4), flags == 1 ? le(0, 8) : ByteList(8 * std::size_t{count})});
}

ByteList ldFields(std::uint32_t count) {
  return join({le(1, 4), le(count, 4), le(0, 8)});
}

// These values, of 8 bytes each.
ByteList longs(const std::vector<std::uint64_t>& values) {
  ByteList bytes;
  for (const std::uint64_t value : values) {
    bytes = join({bytes, le(value, 8)});
  }
  return bytes;
}

TEST(BlockDataTest, plainBlocksGiveTheirBytes) {
  for (const char* const type : {"DT", "DV", "RD", "RV", "SD"}) {
    MdfFileBuilder file;
    const std::uint64_t block = file.block(type, {}, {1, 2, 3});
    const std::uint64_t empty = file.block(type, {}, {});
    const std::uint64_t withLink = file.block(type, {77}, {4, 5});
    const std::uint64_t tooShort = file.block(type, {77}, {4, 5}, -1, 10);
    const std::uint64_t tooLong = file.block(type, {}, {4, 5}, -1, 1'000'000'000'000);
    EXPECT_EQ(dataAt(file, block), (ByteList{1, 2, 3})) << type;
    EXPECT_EQ(dataAt(file, empty), ByteList{}) << type;
    EXPECT_EQ(dataAt(file, withLink), (ByteList{4, 5})) << type;
    EXPECT_EQ(dataAt(file, tooShort), ByteList{}) << type;
    EXPECT_EQ(failureAt(file, tooLong), "Not all wanted bytes could be retrieved") << type;
  }
}

TEST(BlockDataTest, otherBlocksHoldNoData) {
  MdfFileBuilder file;
  const std::uint64_t text = file.text("x");
  EXPECT_EQ(dataAt(file, text), textBytes("no data block"));
  EXPECT_EQ(dataAt(file, 0), textBytes("no data block"));
}

TEST(BlockDataTest, aZippedBlockIsInflated) {
  MdfFileBuilder file;
  const ByteList bytes(100'000, 7);
  EXPECT_EQ(dataAt(file, addZipped(file, {.zipped = deflated(bytes), .originalSize = bytes.size()})), bytes);
}

TEST(BlockDataTest, aTransposedBlockIsReadRowByRow) {
  MdfFileBuilder file;
  const std::uint64_t block =
      addZipped(file, {.zipped = deflated(textBytes("abcdefgh")), .originalSize = 8, .type = 1, .parameter = 4});
  // Two rows of four columns, stored by columns: ab, cd, ef, gh.
  EXPECT_EQ(dataAt(file, block), textBytes("acegbdfh"));
}

TEST(BlockDataTest, transposedRowsOfAllSizes) {
  for (const std::uint32_t width : {1U, 3U, 80U, 1000U}) {
    const std::size_t rows = 777;
    ByteList columns(rows * width);
    ByteList expected(columns.size());
    for (std::size_t index = 0; index < columns.size(); ++index) {
      columns[index] = static_cast<std::uint8_t>(index * 31 + index / 251);
      expected[index % rows * width + index / rows] = columns[index];
    }
    MdfFileBuilder file;
    const std::uint64_t block =
        addZipped(file, {.zipped = deflated(columns), .originalSize = columns.size(), .type = 1, .parameter = width});
    EXPECT_EQ(dataAt(file, block), expected) << width;
  }
}

TEST(BlockDataTest, transposedBytesThatAreNoWholeRowsComeToNothing) {
  for (const std::uint32_t width : {0U, 3U, 5U, 9U, 0xFFFFFFFFU}) {
    MdfFileBuilder file;
    const std::uint64_t block =
        addZipped(file, {.zipped = deflated(textBytes("abcdefgh")), .originalSize = 8, .type = 1, .parameter = width});
    EXPECT_EQ(dataAt(file, block), ByteList{}) << width;
  }
}

TEST(BlockDataTest, aZippedBlockOfNothingIsEmpty) {
  MdfFileBuilder file;
  EXPECT_EQ(dataAt(file, addZipped(file, {.zipped = deflated({}), .originalSize = 0})), ByteList{});
}

TEST(BlockDataTest, streamsThatAreNoneFailAndLeaveNothing) {
  const ByteList bytes = textBytes("some bytes that are worth being compressed, bytes, bytes");
  const ByteList good = deflated(bytes);
  ByteList wrong = good;
  wrong[wrong.size() / 2] ^= 0xFF;
  ByteList cut(good.begin(), good.end() - 5);
  const struct {
    const char* name;
    Zip zip;
  } cases[] = {
      {"garbage", {.zipped = ByteList(50, 0xAB), .originalSize = 100}},
      {"one wrong byte", {.zipped = wrong, .originalSize = bytes.size()}},
      {"cut", {.zipped = cut, .originalSize = bytes.size()}},
      {"no bytes", {.zipped = {}, .originalSize = 10}},
      {"no bytes of nothing", {.zipped = {}, .originalSize = 0}},
      {"more than stated", {.zipped = good, .originalSize = bytes.size() - 1}},
      {"less than stated", {.zipped = good, .originalSize = bytes.size() + 1}},
      {"something of nothing", {.zipped = good, .originalSize = 0}},
      {"terabytes", {.zipped = good, .originalSize = std::uint64_t{1} << 42}},
      {"all there is", {.zipped = good, .originalSize = ~std::uint64_t{0}}},
      {"transposed", {.zipped = wrong, .originalSize = bytes.size(), .type = 1, .parameter = 1}},
      {"terabytes transposed", {.zipped = good, .originalSize = std::uint64_t{1} << 42, .type = 1, .parameter = 1}},
  };
  for (const auto& each : cases) {
    MdfFileBuilder file;
    const std::uint64_t position = addZipped(file, each.zip);
    EXPECT_EQ(failureAt(file, position), "Decompression error") << each.name;
    BlockStream stream(file.bytes());
    DataZippedBlock block(stream, position);
    RecordBytes out;
    out.extend(3)[0] = 42;
    EXPECT_THROW(block.decompress(out), ConverterProcessingException) << each.name;
    EXPECT_EQ(out.size(), 3U);
    EXPECT_EQ(out.data()[0], 42);
  }
}

TEST(BlockDataTest, compressedBytesBeyondTheFileFail) {
  MdfFileBuilder file;
  const std::uint64_t block =
      addZipped(file, {.zipped = deflated(textBytes("x")), .originalSize = 1, .statedSize = std::int64_t{1} << 50});
  EXPECT_EQ(failureAt(file, block), "Not all wanted bytes could be retrieved");
  MdfFileBuilder noFields;
  const std::uint64_t position = noFields.block("DZ", {}, ByteList(20));
  EXPECT_EQ(failureAt(noFields, position), "Not all wanted bytes could be retrieved");
}

TEST(BlockDataTest, listsJoinTheirBlocksInTheOrderOfTheLinks) {
  MdfFileBuilder file;
  const std::uint64_t dt = file.block("DT", {}, {1});
  const std::uint64_t rd = file.block("RD", {}, {2});
  const std::uint64_t sd = file.block("SD", {}, {3});
  const std::uint64_t dz = addZipped(file, {.zipped = deflated({4, 4}), .originalSize = 2});
  const std::uint64_t dv = file.block("DV", {}, {5});
  const std::uint64_t text = file.text("x");
  const std::uint64_t last = file.block("DT", {}, {6});
  const std::uint64_t second = file.block("DL", {0, last}, dlFields(1, 0));
  const std::uint64_t first = file.block("DL", {second, sd, 0, dz, dv, text, rd, dt}, dlFields(7));
  EXPECT_EQ(dataAt(file, first), (ByteList{3, 4, 4, 2, 1, 6}));
  const std::uint64_t hl = file.block("HL", {first}, le(0, 8));
  EXPECT_EQ(dataAt(file, hl), (ByteList{3, 4, 4, 2, 1, 6}));
}

TEST(BlockDataTest, listsOfValuesTakeTheirOwnBlocks) {
  MdfFileBuilder file;
  const std::uint64_t dt = file.block("DT", {}, {1});
  const std::uint64_t dv = file.block("DV", {}, {2});
  const std::uint64_t rv = file.block("RV", {}, {3});
  const std::uint64_t dz = addZipped(file, {.zipped = deflated({4}), .originalSize = 1});
  const std::uint64_t last = file.block("DV", {}, {5});
  const std::uint64_t second = file.block("LD", {0, last}, ldFields(1));
  const std::uint64_t first = file.block("LD", {second, dz, dt, 0, rv, dv}, ldFields(5));
  EXPECT_EQ(dataAt(file, first), (ByteList{4, 3, 2, 5}));
  const std::uint64_t hl = file.block("HL", {first}, le(0, 8));
  EXPECT_EQ(dataAt(file, hl), (ByteList{4, 3, 2, 5}));
}

TEST(BlockDataTest, emptyListsHaveNoData) {
  MdfFileBuilder file;
  const std::uint64_t hl = file.block("HL", {0}, le(0, 8));
  const std::uint64_t text = file.text("x");
  const std::uint64_t hlOfText = file.block("HL", {text}, le(0, 8));
  const std::uint64_t dl = file.block("DL", {0}, dlFields(0));
  const std::uint64_t unlinked = file.block("DL", {}, dlFields(0));
  for (const std::uint64_t position : {hl, hlOfText, dl, unlinked}) {
    EXPECT_EQ(dataAt(file, position), ByteList{});
  }
}

TEST(BlockDataTest, aListWithMoreEntriesThanLinksFails) {
  for (const std::uint32_t count : {2U, 3U, 0xFFFFFFFFU}) {
    MdfFileBuilder file;
    const std::uint64_t dt = file.block("DT", {}, {1});
    const std::uint64_t dl = file.block("DL", {0, dt}, dlFields(count));
    const std::uint64_t ld = file.block("LD", {0, dt}, ldFields(count));
    EXPECT_EQ(failureAt(file, dl), "Not all wanted bytes could be retrieved");
    EXPECT_EQ(failureAt(file, ld), "Not all wanted bytes could be retrieved");
  }
}

TEST(BlockDataTest, aListKeepsItsValues) {
  MdfFileBuilder file;
  const std::uint64_t position = file.block(
      "DL", {0, 0, 0},
      join(
          {{0x0E, 0, 0, 0}, le(2, 4), le(1, 8), le(2, 8), le(3, 8), le(4, 8), le(5, 8), le(6, 8), le(7, 8), le(8, 8)}));
  BlockStream stream(file.bytes());
  const DataListBlock block(stream, position);
  EXPECT_EQ(block.data.offsets, (std::vector<std::uint64_t>{1, 2}));
  EXPECT_EQ(block.data.timeValues, (std::vector<std::uint64_t>{3, 4}));
  EXPECT_EQ(block.data.angleValues, (std::vector<std::uint64_t>{5, 6}));
  EXPECT_EQ(block.data.distanceValues, (std::vector<std::uint64_t>{7, 8}));
}

TEST(BlockDataTest, aListOfValuesKeepsWhatItsFlagsAnnounce) {
  using Values = std::vector<std::uint64_t>;
  const struct {
    const char* name;
    std::uint32_t flags;
    Values stored;
    std::uint64_t equalLength;
    Values offsets;
    Values times;
    Values angles;
    Values distances;
  } cases[] = {
      {"offsets", 0x00, {1, 2}, 0, {1, 2}, {}, {}, {}},
      {"equal lengths", 0x01, {9}, 9, {}, {}, {}, {}},
      {"all but equal lengths", 0x0E, {1, 2, 3, 4, 5, 6, 7, 8}, 0, {1, 2}, {3, 4}, {5, 6}, {7, 8}},
      {"equal lengths and angles", 0x05, {9, 5, 6}, 9, {}, {}, {5, 6}, {}},
  };
  for (const auto& each : cases) {
    MdfFileBuilder file;
    const std::uint64_t dv = file.block("DV", {}, {1});
    const std::uint64_t rv = file.block("RV", {}, {2});
    const auto fieldsWith = [&](const Values& stored) { return join({le(each.flags, 4), le(2, 4), longs(stored)}); };
    const std::uint64_t position = file.block("LD", {0, rv, dv}, fieldsWith(each.stored));
    const std::uint64_t shorter =
        file.block("LD", {0, rv, dv}, fieldsWith(Values(each.stored.begin(), each.stored.end() - 1)));
    BlockStream stream(file.bytes());
    const ListDataBlockData values = ListDataBlock(stream, position).data;
    EXPECT_EQ(values.equalLength, each.equalLength) << each.name;
    EXPECT_EQ(values.offsets, each.offsets) << each.name;
    EXPECT_EQ(values.timeValues, each.times) << each.name;
    EXPECT_EQ(values.angleValues, each.angles) << each.name;
    EXPECT_EQ(values.distanceValues, each.distances) << each.name;
    EXPECT_EQ(dataAt(file, position), (ByteList{2, 1})) << each.name;
    EXPECT_EQ(failureAt(file, shorter), "Not all wanted bytes could be retrieved") << each.name;
  }
}

TEST(BlockDataTest, aBlockThatIsLinkedTwiceFails) {
  MdfFileBuilder file;
  const std::uint64_t dt = file.block("DT", {}, {1});
  const std::uint64_t twice = file.block("DL", {0, dt, dt}, dlFields(2));
  EXPECT_EQ(failureAt(file, twice), "Block links form a loop");
  const std::uint64_t loop = file.block("DL", {0, dt}, dlFields(1));
  file.setLink(loop, 0, loop);
  EXPECT_EQ(failureAt(file, loop), "Block links form a loop");
  const std::uint64_t second = file.block("LD", {0}, ldFields(0));
  const std::uint64_t first = file.block("LD", {second}, ldFields(0));
  file.setLink(second, 0, first);
  EXPECT_EQ(failureAt(file, first), "Block links form a loop");
}

TEST(RecordBytesTest, growsAndHasZerosAfterItsEnd) {
  RecordBytes bytes;
  const auto expectPadding = [&] {
    for (std::size_t index = 0; index < RecordBytes::kPadding; ++index) {
      EXPECT_EQ(bytes.data()[bytes.size() + index], 0);
    }
  };
  expectPadding();
  for (std::size_t size = 1; size < 1000; size = size * 2 + 1) {
    for (std::uint8_t& byte : bytes.extend(size)) {
      byte = 0xFF;
    }
    expectPadding();
  }
  bytes.shrink(5);
  EXPECT_EQ(toBytes(bytes), ByteList(5, 0xFF));
  expectPadding();
  bytes.shrink(6);
  EXPECT_EQ(bytes.size(), 5U);
  EXPECT_THROW(static_cast<void>(bytes.extend(~std::size_t{0})), std::length_error);
  EXPECT_EQ(bytes.size(), 5U);
}

}  // namespace
}  // namespace xlatr
