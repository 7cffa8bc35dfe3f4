#include "formats/mf4/mdf_writer.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <ios>
#include <limits>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "formats/mf4/mdf_info.hpp"
#include "formats/mf4/mdf_reader.hpp"
#include "formats/mf4/mf4_frames.hpp"
#include "formats/trc/trc_message.hpp"
#include "formats/trc/trc_version.hpp"
#include "frames/account.hpp"
#include "frames/frame_batch.hpp"
#include "support/file_size_limit.hpp"
#include "support/layout.hpp"
#include "support/mf4_checker.hpp"
#include "support/temp_folder.hpp"
#include "support/writer_stubs.hpp"
#include "util/hex.hpp"

namespace xlatr {
namespace {

using test::failureOf;
using test::ForeignMessage;
using test::LayoutNames;
using test::StubInfo;

BrixMessage frame(std::string_view line) {
  BrixMessage message;
  message.parseLine(line, findTrcVersion(2.1), kTrcColumns21 & ~trc_column::kNumber);
  EXPECT_TRUE(message.valid) << line;
  return message;
}

const std::string kDataLine = "1.000 DT 1 0100 Rx - 2 AB CD";
const std::string kDataRecord = "f64:1000000 u32:0x100 u8:1 u8:0 u8:2 u8:2 AB CD z62\n";
const std::string kRemoteLine = "2.000 RR 1 0200 Rx - 8";
const std::string kRemoteRecord = "f64:2000000 u32:0x200 u8:1 u8:0 u8:8 u8:8\n";
const std::string kErrorLine = "3.000 ER 1 - Rx - 5 01 00 03 00 00";
const std::string kErrorRecord = "f64:3000000 u8:1 u8:0 u8:1 u8:0\n";

// 2021-07-26 06:00, the start of StubInfo.
constexpr std::uint64_t kStartNs = 1627279200000000000U;

std::uint64_t numberAt(const std::string& file, std::size_t offset) {
  std::uint64_t value = 0;
  for (std::size_t index = 8; index-- > 0;) {
    value = value << 8 | static_cast<unsigned char>(file.at(offset + index));
  }
  return value;
}

class MdfWriterTest : public testing::Test {
 protected:
  [[nodiscard]] std::string read() const { return folder_.read("x.mf4"); }

  // The file that a writer of version 4.2 writes, header included.
  [[nodiscard]] std::string written(const MdfLayoutOptions& options, const std::vector<std::string>& lines) const {
    MdfWriter writer(path_, true, 4.2);
    writer.setLayoutOptions(options);
    writer.setActive(true);
    writer.WriteHeader(StubInfo("source.trc"));
    for (const std::string& line : lines) {
      writer.WriteMessage(frame(line));
    }
    writer.setActive(false);
    return read();
  }

  // The golden tree with these numbers, then the blocks of the data.
  static void expectFile(const std::string& file, const char* tree, std::map<std::string, std::uint64_t> numbers,
                         const std::string& data) {
    LayoutNames names{.numbers = std::move(numbers), .texts = {{"version", "4.20"}}};
    names.numbers.insert({{"versionNumber", 420}, {"start", kStartNs}, {"written", numberAt(file, 208)}});
    const std::string treeBytes = test::layOutFile(std::filesystem::path(XLATR_GOLDEN_DIR) / tree, names);
    const std::string expected = treeBytes + test::layOut(data, names, treeBytes.size());
    const auto differs = std::ranges::mismatch(file, expected);
    EXPECT_TRUE(file == expected) << "at " << differs.in1 - file.begin() << ", sizes " << file.size() << " and "
                                  << expected.size();
    EXPECT_EQ(faultsOf(test::checkMf4(file)), "");
  }

  test::TempFolder folder_;
  std::string path_ = folder_.file("x.mf4");
};

MdfLayoutOptions layout(MdfLayout value) {
  MdfLayoutOptions options;
  options.layout = value;
  return options;
}

TEST_F(MdfWriterTest, hasItsDefaults) {
  const MdfWriter writer;
  EXPECT_EQ(writer.getTargetVersion(), 0.0);
  EXPECT_EQ(writer.getOwnerBus(), -1);
  EXPECT_FALSE(writer.getOverrideExistingFile());
  EXPECT_EQ(writer.getTargetFormat(), XLATR_FORMAT_MF4);
  EXPECT_EQ(writer.getExtension(), ".mf4");
  EXPECT_FALSE(writer.getActive());
  EXPECT_TRUE(writer.layoutOptions().largePayload);
  EXPECT_EQ(writer.layoutOptions().layout, MdfLayout::Unsorted);
  EXPECT_FALSE(writer.layoutOptions().zipped);
  EXPECT_FALSE(writer.layoutOptions().dataFramesOnly);
}

TEST_F(MdfWriterTest, sortsOnlyWhatIsNotSignalData) {
  MdfWriter writer;
  writer.setSorted(true);
  EXPECT_EQ(writer.layoutOptions().layout, MdfLayout::Sorted);
  writer.setSorted(false);
  EXPECT_EQ(writer.layoutOptions().layout, MdfLayout::Unsorted);
  for (const MdfLayout kept : {MdfLayout::SignalData, MdfLayout::SignalDataStream}) {
    writer.setLayoutOptions(layout(kept));
    writer.setSorted(true);
    EXPECT_EQ(writer.layoutOptions().layout, kept);
    writer.setSorted(false);
    EXPECT_EQ(writer.layoutOptions().layout, kept);
  }
}

TEST_F(MdfWriterTest, givesAllOptionsToANewWriter) {
  MdfWriter writer(path_, true, 4.11);
  writer.setOwnerBus(7);
  writer.setSourcePath("source.trc");
  writer.setLayoutOptions({.largePayload = false, .layout = MdfLayout::Sorted, .zipped = true, .dataFramesOnly = true});
  writer.setActive(true);
  const auto fresh = writer.CreateNew();
  const auto& mdf = dynamic_cast<const MdfWriter&>(*fresh);
  EXPECT_FALSE(fresh->getActive());
  EXPECT_EQ(fresh->getTargetPath(), path_);
  EXPECT_EQ(fresh->getTargetVersion(), 4.11);
  EXPECT_TRUE(fresh->getOverrideExistingFile());
  EXPECT_EQ(fresh->getOwnerBus(), 7);
  EXPECT_EQ(fresh->getSourcePath(), "");
  EXPECT_FALSE(mdf.layoutOptions().largePayload);
  EXPECT_EQ(mdf.layoutOptions().layout, MdfLayout::Sorted);
  EXPECT_TRUE(mdf.layoutOptions().zipped);
  EXPECT_TRUE(mdf.layoutOptions().dataFramesOnly);
}

TEST_F(MdfWriterTest, beginsWithThePaddedIdentification) {
  const std::string file = written({}, {});
  EXPECT_EQ(file.substr(0, 24), std::string("MDF     4.20\0\0\0\0ZELK-Con", 24));
}

TEST_F(MdfWriterTest, writesOneFrameUnsortedAndPlain) {
  const std::string file = written({}, {kDataLine});
  expectFile(file, "unsorted.layout", {{"cycles0", 1}, {"cycles1", 0}, {"cycles2", 0}, {"data0", 8040}},
             "@8040 DT 105 () u8:0 " + kDataRecord + "@8145 end");
  EXPECT_EQ(numberAt(file, 8048), 24U + 81U);
}

TEST_F(MdfWriterTest, leavesAllDataLinks0InAnEmptyZippedFile) {
  MdfLayoutOptions options = layout(MdfLayout::Sorted);
  options.zipped = true;
  expectFile(written(options, {}), "sorted.layout",
             {{"cycles0", 0}, {"cycles1", 0}, {"cycles2", 0}, {"data0", 0}, {"data1", 0}, {"data2", 0}}, "");
}

TEST_F(MdfWriterTest, alignsAfterAZippedBlockAlsoForGroupsWithoutRecords) {
  MdfLayoutOptions options = layout(MdfLayout::Sorted);
  options.zipped = true;
  constexpr std::uint64_t kFirstBlock = 8168;
  std::vector<std::string> lines;
  std::string file;
  std::uint64_t end = 0;
  do {  // how well zlib does is its own affair: until the block ends unaligned
    lines.push_back(kDataLine);
    file = written(options, lines);
    end = kFirstBlock + numberAt(file, kFirstBlock + 8);
  } while (end % 8 == 0 && lines.size() < 20);
  ASSERT_NE(end % 8, 0U);
  const std::string block = file.substr(kFirstBlock, end - kFirstBlock);
  ASSERT_EQ(block.substr(0, 4), "##DZ");
  std::string fields;
  for (const char byte : block) {
    fields.append(hexPair(static_cast<std::uint8_t>(byte))).append(" ");
  }
  expectFile(
      file, "sorted.layout",
      {{"cycles0", lines.size()}, {"cycles1", 0}, {"cycles2", 0}, {"data0", kFirstBlock}, {"data1", 0}, {"data2", 0}},
      fields + "z" + std::to_string(8 - end % 8));
}

TEST_F(MdfWriterTest, writesThreeEmptyBlocksInAnEmptySortedFile) {
  expectFile(written(layout(MdfLayout::Sorted), {}), "sorted.layout",
             {{"cycles0", 0}, {"cycles1", 0}, {"cycles2", 0}, {"data0", 8168}, {"data1", 8192}, {"data2", 8216}},
             "@8168 DT 24 ()\n@8192 DT 24 ()\n@8216 DT 24 ()\n@8240 end");
}

TEST_F(MdfWriterTest, clearsTheMarkOfAnExtendedIdentifier) {
  const std::string file = written({}, {"1.000 DT 1 00000100 Rx - 0"});
  expectFile(file, "unsorted.layout", {{"cycles0", 1}, {"cycles1", 0}, {"cycles2", 0}, {"data0", 8040}},
             "@8040 DT 105 () u8:0 f64:1000000 u32:0x100 u8:1 u8:0x10 u8:0 u8:0 z64");
}

TEST_F(MdfWriterTest, writesErrorFramesOf12And13Bytes) {
  expectFile(written({}, {kErrorLine}), "unsorted.layout",
             {{"cycles0", 0}, {"cycles1", 0}, {"cycles2", 1}, {"data0", 8040}},
             "@8040 DT 37 () u8:2 " + kErrorRecord + "@8077 end");
  expectFile(written(layout(MdfLayout::Sorted), {kErrorLine}), "sorted.layout",
             {{"cycles0", 0}, {"cycles1", 0}, {"cycles2", 1}, {"data0", 8168}, {"data1", 8192}, {"data2", 8216}},
             "@8168 DT 24 ()\n@8192 DT 24 ()\n@8216 DT 36 () " + kErrorRecord + "@8252 end");
}

TEST_F(MdfWriterTest, keepsTheOrderOfArrivalInEveryGroup) {
  const std::vector<std::string> lines = {"9.000 DT 1 0009 Rx - 0", kRemoteLine, "1.000 DT 1 0001 Rx - 0"};
  const std::string nine = "f64:9000000 u32:9 u8:1 u8:0 u8:0 u8:0 z64\n";
  const std::string one = "f64:1000000 u32:1 u8:1 u8:0 u8:0 u8:0 z64\n";
  expectFile(written({}, lines), "unsorted.layout", {{"cycles0", 2}, {"cycles1", 1}, {"cycles2", 0}, {"data0", 8040}},
             "\"##DT\" z4 u64:203 u64:0 u8:0 " + nine + "u8:1 " + kRemoteRecord + "u8:0 " + one);
  expectFile(written(layout(MdfLayout::Sorted), lines), "sorted.layout",
             {{"cycles0", 2}, {"cycles1", 1}, {"cycles2", 0}, {"data0", 8168}, {"data1", 8352}, {"data2", 8392}},
             "\"##DT\" z4 u64:184 u64:0 " + nine + one + "@8352 DT 40 () " + kRemoteRecord + "@8392 DT 24 ()");
}

TEST_F(MdfWriterTest, writesShortPayloadsOfDataFramesAlone) {
  MdfLayoutOptions options = layout(MdfLayout::Sorted);
  options.largePayload = false;
  options.dataFramesOnly = true;
  // FD frames with BRS or ESI are left out, too.
  const std::vector<std::string> lines = {kDataLine,
                                          "1.000 FB 1 0100 Rx - 2 AB CD",
                                          kRemoteLine,
                                          kErrorLine,
                                          "2.000 FD 1 0100 Rx - 8 01 02 03 04 05 06 07 08",
                                          "3.000 FD 1 0100 Rx - 9 01 02 03 04 05 06 07 08 09 0A 0B 0C"};
  expectFile(written(options, lines), "short-data-frames-only.layout", {{"cycles0", 2}, {"data0", 3696}},
             "\"##DT\" z4 u64:72 u64:0 f64:1000000 u32:0x100 u8:1 u8:0 u8:2 u8:2 AB CD z6\n"
             "f64:2000000 u32:0x100 u8:1 u8:2 u8:8 u8:8 01 02 03 04 05 06 07 08\n@3768 end");
}

TEST_F(MdfWriterTest, keepsPayloadsInTheSignalData) {
  const std::vector<std::string> lines = {kDataLine, kRemoteLine,
                                          "2.000 FD 1 0101 Rx - 9 01 02 03 04 05 06 07 08 09 0A 0B 0C",
                                          "2.500 DT 1 0102 Rx - 0", kErrorLine};
  const std::string data =
      "\"##DT\" z4 u64:129 u64:0 u8:0 f64:1000000 u32:0x100 u8:1 u8:0 u8:2 u8:2 u64:0\n"
      "u8:1 " +
      kRemoteRecord +
      "u8:0 f64:2000000 u32:0x101 u8:1 u8:2 u8:9 u8:12 u64:6\n"
      "u8:0 f64:2500000 u32:0x102 u8:1 u8:0 u8:0 u8:0 u64:22\n"
      "u8:2 " +
      kErrorRecord +
      "@8169 raw 7 z7\n"
      "@8176 SD 50 () u32:2 AB CD u32:12 01 02 03 04 05 06 07 08 09 0A 0B 0C u32:0\n@8226 end";
  const std::pair<MdfLayout, std::uint64_t> layouts[] = {{MdfLayout::SignalData, 0x404},
                                                         {MdfLayout::SignalDataStream, 0x4404}};
  for (const auto& [value, flags] : layouts) {
    expectFile(
        written(layout(value), lines), "signal-data.layout",
        {{"cycles0", 3}, {"cycles1", 1}, {"cycles2", 1}, {"data0", 8040}, {"payload", 8176}, {"payloadFlags", flags}},
        data);
  }
}

TEST_F(MdfWriterTest, writesSignalDataThatTheReaderFinds) {
  ASSERT_FALSE(
      written(layout(MdfLayout::SignalData), {kDataLine, kRemoteLine, "2.500 FD 2 0102 Rx - 3 01 02 03"}).empty());
  MdfReader reader{MdfInfo(path_)};
  ASSERT_TRUE(reader.setActive(true));
  MdfCanMessage message;
  ASSERT_TRUE(reader.readInto(message));
  EXPECT_TRUE(message.valid);
  EXPECT_EQ(message.data, (std::vector<std::uint8_t>{0xAB, 0xCD}));
  ASSERT_TRUE(reader.readInto(message));
  EXPECT_TRUE(message.isRemote);
  ASSERT_TRUE(reader.readInto(message));
  EXPECT_TRUE(message.valid);
  EXPECT_EQ(message.bus, 2U);
  EXPECT_EQ(message.kind, MessageKind::FD);
  EXPECT_EQ(message.data, (std::vector<std::uint8_t>{1, 2, 3}));
  EXPECT_FALSE(reader.readInto(message));
}

TEST_F(MdfWriterTest, writesStreamsThatTheReaderRefuses) {
  ASSERT_FALSE(written(layout(MdfLayout::SignalDataStream), {kDataLine}).empty());
  MdfReader reader{MdfInfo(path_)};
  EXPECT_EQ(failureOf([&reader] {
              reader.setActive(true);
              MdfCanMessage message;
              static_cast<void>(reader.readInto(message));
            }),
            "VLSD stream channels are not supported");
}

TEST_F(MdfWriterTest, keepsPayloadsOfFramesWithBrsOrEsiInTheRecord) {
  const std::string file = written(layout(MdfLayout::SignalData), {"1.000 FB 1 0100 Rx - 2 AB CD"});
  const std::string record = test::layOut("u8:0 f64:1000000 u32:0x100 u8:1 u8:6 u8:2 u8:2 AB CD z62", {});
  EXPECT_EQ(file.substr(8064, record.size()), record);
  EXPECT_EQ(file.size(), 8152U + 24U);  // an SD without values
}

TEST_F(MdfWriterTest, refusesSignalDataThatAreNotAsLongAsTheySay) {
  MdfWriter writer(path_, false, 4.2);
  writer.setLayoutOptions(layout(MdfLayout::SignalData));
  writer.setActive(true);
  writer.WriteHeader(StubInfo("source.trc"));
  BrixMessage message = frame(kDataLine);
  message.length = 3;
  EXPECT_EQ(failureOf([&] { writer.WriteMessage(message); }), "Internal error (VLSD SD)");
}

TEST_F(MdfWriterTest, refusesTheStreamLayoutBelow42) {
  MdfWriter writer(path_, false, 4.11);
  writer.setLayoutOptions(layout(MdfLayout::SignalDataStream));
  EXPECT_EQ(failureOf([&] { writer.setActive(true); }), "VLSD stream is not supported by the target version");
  EXPECT_FALSE(writer.getActive());
  EXPECT_FALSE(folder_.has("x.mf4"));
  writer.setTargetPath("");
  EXPECT_EQ(failureOf([&] { writer.setActive(true); }), "Value cannot be null or empty - TargetPath");
}

TEST_F(MdfWriterTest, refusesMessagesOfOtherClasses) {
  MdfWriter writer(path_, false, 4.2);
  writer.setActive(true);
  EXPECT_EQ(failureOf([&] { writer.WriteMessage(ForeignMessage()); }),
            "Object cannot be casted to any supported message trace");
}

TEST_F(MdfWriterTest, refusesHeadersAndMessagesWhileInactive) {
  MdfWriter writer(path_, false, 4.2);
  EXPECT_EQ(failureOf([&] { writer.WriteHeader(StubInfo("source.trc")); }), "Writer is not initialized");
  EXPECT_EQ(failureOf([&] { writer.WriteMessage(frame(kDataLine)); }), "Writer is not initialized");
  writer.WriteComment("nobody wants it");
  EXPECT_FALSE(folder_.has("x.mf4"));
}

TEST_F(MdfWriterTest, writesNothingForComments) {
  MdfWriter writer(path_, false, 4.2);
  writer.setActive(true);
  writer.WriteHeader(StubInfo("source.trc"));
  writer.WriteComment("a comment");
  writer.setActive(false);
  const std::string with = read();
  EXPECT_EQ(with.size(), written({}, {}).size());
}

TEST_F(MdfWriterTest, leavesAFileWithoutAHeaderEmpty) {
  MdfWriter writer(path_, false, 4.2);
  writer.setActive(true);
  writer.WriteMessage(frame(kDataLine));
  writer.setActive(false);
  EXPECT_EQ(read(), "");
}

TEST_F(MdfWriterTest, keepsMessagesForAHeaderThatComesLate) {
  MdfWriter writer(path_, false, 4.2);
  writer.setActive(true);
  writer.WriteMessage(frame(kDataLine));
  writer.WriteHeader(StubInfo("source.trc"));
  writer.WriteMessage(frame(kRemoteLine));
  writer.setActive(false);
  expectFile(read(), "unsorted.layout", {{"cycles0", 1}, {"cycles1", 1}, {"cycles2", 0}, {"data0", 8040}},
             "\"##DT\" z4 u64:122 u64:0 u8:0 " + kDataRecord + "u8:1 " + kRemoteRecord);
}

TEST_F(MdfWriterTest, writesASecondHeaderInThePlaceOfTheFirst) {
  MdfWriter writer(path_, false, 4.2);
  writer.setActive(true);
  writer.WriteHeader_2(StubInfo("source.trc"), 1.0);
  writer.WriteMessage(frame(kDataLine));
  writer.WriteHeader_2(StubInfo("source.trc"), 44403.25);
  writer.WriteMessage(frame(kRemoteLine));
  writer.setActive(false);
  expectFile(read(), "unsorted.layout", {{"cycles0", 1}, {"cycles1", 1}, {"cycles2", 0}, {"data0", 8040}},
             "\"##DT\" z4 u64:122 u64:0 u8:0 " + kDataRecord + "u8:1 " + kRemoteRecord);
}

TEST_F(MdfWriterTest, finishesAFileAsItWasBegun) {
  MdfWriter writer(path_, false, 4.2);
  writer.setActive(true);
  writer.setSorted(true);  // before the header it still counts
  writer.WriteHeader(StubInfo("source.trc"));
  writer.setZipped(true);
  writer.setSorted(false);
  writer.WriteMessage(frame(kRemoteLine));
  writer.setActive(false);
  expectFile(read(), "sorted.layout",
             {{"cycles0", 0}, {"cycles1", 1}, {"cycles2", 0}, {"data0", 8168}, {"data1", 8192}, {"data2", 8232}},
             "@8168 DT 24 ()\n@8192 DT 40 () " + kRemoteRecord + "@8232 DT 24 ()");
}

TEST_F(MdfWriterTest, beginsAnewWhenItBecomesActiveAgain) {
  MdfWriter writer(path_, true, 4.2);
  for (int round = 0; round < 2; ++round) {
    writer.setActive(true);
    writer.WriteHeader(StubInfo("source.trc"));
    writer.WriteMessage(frame(kErrorLine));
    writer.setActive(false);
    expectFile(read(), "unsorted.layout", {{"cycles0", 0}, {"cycles1", 0}, {"cycles2", 1}, {"data0", 8040}},
               "@8040 DT 37 () u8:2 " + kErrorRecord);
  }
}

TEST_F(MdfWriterTest, closesInItsDestructor) {
  {
    MdfWriter writer(path_, false, 4.2);
    writer.setActive(true);
    writer.WriteHeader(StubInfo("source.trc"));
    writer.WriteMessage(frame(kErrorLine));
  }
  EXPECT_EQ(test::checkMf4(read()).groups.at(2).cycleCount, 1U);
}

constexpr char kPlainMark = 5;   // counts and the last length are missing
constexpr char kZippedMark = 1;  // counts

void expectMark(const std::string& file, char mark) {
  EXPECT_EQ(file.substr(0, 8), mark == 0 ? "MDF     " : "UnFinMF ");
  EXPECT_EQ(file.substr(60, 4), std::string({mark, 0, 0, 0}));
}

// The tree of blocks, and the head of the data: whole but for the mark, and without records.
void expectUnfinished(const std::string& file) {
  expectMark(file, kPlainMark);
  std::string tree = file.substr(0, 8064);
  tree.replace(0, 8, "MDF     ");
  tree[60] = 0;
  const test::Mf4Report report = test::checkMf4(tree);
  EXPECT_EQ(faultsOf(report), "");
  EXPECT_EQ(report.groups.at(0).cycleCount, 0U);
}

TEST_F(MdfWriterTest, saysThatItIsUnfinishedUntilItsEnd) {
  for (const bool zipped : {false, true}) {
    MdfWriter writer(path_, true, 4.2);
    writer.setZipped(zipped);
    writer.setActive(true);
    writer.WriteHeader(StubInfo("source.trc"));
    writer.flush();
    expectMark(read(), zipped ? kZippedMark : kPlainMark);
    for (int count = 0; count < 20000; ++count) {
      writer.WriteMessage(frame(kDataLine));
    }
    writer.flush();
    expectMark(read(), zipped ? kZippedMark : kPlainMark);
    if (!zipped) {
      expectUnfinished(read());
    }
    writer.setActive(false);
    expectMark(read(), 0);
    EXPECT_EQ(test::checkMf4(read()).groups.at(0).cycleCount, 20000U);
  }
}

// What an interrupted writer has left: nothing for a reader that asks for finished files, most of the frames for one
// that knows better.
TEST_F(MdfWriterTest, isReadWithoutItsEndByThoseWhoKnowHow) {
  struct Case {
    MdfLayoutOptions options;
    bool found;
  };
  for (const auto& [options, found] : {Case{layout(MdfLayout::Unsorted), true}, Case{layout(MdfLayout::Sorted), true},
                                       Case{layout(MdfLayout::SignalData), false}, Case{{.zipped = true}, false}}) {
    SCOPED_TRACE(static_cast<int>(options.layout));
    MdfWriter writer(path_, true, 4.2);
    writer.setLayoutOptions(options);
    writer.setActive(true);
    writer.WriteHeader(StubInfo("source.trc"));
    for (int count = 0; count < 20000; ++count) {
      writer.WriteMessage(frame(kDataLine));
    }
    writer.flush();
    const std::string half = folder_.write("half.mf4", read());
    std::string text;
    EXPECT_FALSE(MdfReader(MdfInfo(half)).ValidateFile(text));
    EXPECT_EQ(text, "Only finalized MDF4 files are supported");
    const auto source = openMf4Frames(half);
    EXPECT_TRUE(source->head().unfinished);
    Account account;
    for (FrameBatch batch; source->read(batch, account); batch.clear()) {
      for (std::size_t row = 0; row < batch.size(); ++row) {
        ASSERT_EQ(batch.at(row).id, 0x100U);
        ASSERT_EQ(batch.at(row).data.size(), 2U);
      }
    }
    EXPECT_EQ(account.read() > 15'000, found) << account.read();
    EXPECT_EQ(account.read() == 0, !found) << account.read();
    writer.setActive(false);
    EXPECT_EQ(test::checkMf4(read()).groups.at(0).cycleCount, 20000U);
  }
}

TEST_F(MdfWriterTest, passesOverFramesThatNoRecordHolds) {
  BrixMessage tooLong = frame("1.000 FD 1 0100 Rx - 15 " + [] {
    std::string bytes;
    for (int count = 0; count < 64; ++count) {
      bytes += "11 ";
    }
    return bytes;
  }());
  tooLong.length = 65;
  tooLong.data.resize(65);
  BrixMessage tooShort = frame(kDataLine);
  tooShort.length = 4;  // of which two are there
  MdfWriter writer(path_, false, 4.2);
  writer.setActive(true);
  writer.WriteHeader(StubInfo("source.trc"));
  writer.WriteMessage(tooLong);
  writer.WriteMessage(tooShort);
  writer.WriteMessage(frame("1.000 EV 1 an event"));
  writer.setActive(false);
  expectFile(read(), "unsorted.layout", {{"cycles0", 1}, {"cycles1", 0}, {"cycles2", 0}, {"data0", 8040}},
             "@8040 DT 105 () u8:0 f64:1000000 u32:0x100 u8:1 u8:0 u8:4 u8:4 AB CD z62");
}

TEST_F(MdfWriterTest, startsAtWhatTheDateTellsInMicroseconds) {
  const std::pair<double, std::uint64_t> starts[] = {
      {25569.0, 0},
      {25569.5, 43200000000000U},
      {45658.4166670301, 1735725600031401000U},
      {25568.0, 0},
      {0.0, 0},
      {-1.0, 0},
      {1e300, 0},
      {std::numeric_limits<double>::quiet_NaN(), 0},
      {239072.0, 18446659200000000000U},  // the last whole day that has nanoseconds in 64 bits
      {239073.0, 0},
  };
  for (const auto& [days, nanoseconds] : starts) {
    MdfWriter writer(path_, true, 4.2);
    writer.setActive(true);
    writer.WriteHeader_2(StubInfo("source.trc"), days);
    writer.setActive(false);
    EXPECT_EQ(test::checkMf4(read()).startNs, nanoseconds) << days;
  }
}

TEST_F(MdfWriterTest, leavesAFileThatCanNotGrowWithoutRecords) {
  MdfWriter writer(path_, true, 4.2);
  {
    const test::FileSizeLimit limit(100000);
    writer.setActive(true);
    writer.WriteHeader(StubInfo("source.trc"));
    EXPECT_THROW(
        {
          for (int count = 0; count < 10000; ++count) {
            writer.WriteMessage(frame(kDataLine));
          }
        },
        std::ios_base::failure);
    EXPECT_THROW(writer.WriteMessage(frame(kDataLine)), std::ios_base::failure);
    EXPECT_THROW(writer.WriteHeader(StubInfo("source.trc")), std::ios_base::failure);
  }
  EXPECT_THROW(writer.setActive(false), std::ios_base::failure);  // does not even try
  EXPECT_FALSE(writer.getActive());
  const std::string file = read();
  EXPECT_EQ(file.size(), 100000U);
  expectUnfinished(file);
}

TEST_F(MdfWriterTest, raisesWhatFailsAtItsEndAndIsInactiveThen) {
  const test::FileSizeLimit limit(8050);
  MdfWriter writer(path_, true, 4.2);
  writer.setActive(true);
  writer.WriteHeader(StubInfo("source.trc"));
  EXPECT_THROW(writer.setActive(false), std::ios_base::failure);
  EXPECT_FALSE(writer.getActive());
  EXPECT_EQ(read().size(), 8050U);
}

}  // namespace
}  // namespace xlatr
