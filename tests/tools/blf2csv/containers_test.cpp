#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "support/blf_builder.hpp"
#include "tools/blf2csv/table.hpp"

// Objects in containers, and containers in the file, whole and damaged.
namespace blf2csv {
namespace {

using xlatr::test::blf::Bytes;
using xlatr::test::blf::classicFrame;
using xlatr::test::blf::containerOf;
using xlatr::test::blf::deflated;
using xlatr::test::blf::file;
using xlatr::test::blf::kTenMicroseconds;
using xlatr::test::blf::object;
using xlatr::test::blf::stored;
using xlatr::test::blf::zipped;

// Frames with the identifiers first, first + 1, ...
std::string frames(std::uint32_t count, std::uint32_t first = 1) {
  std::string content;
  for (std::uint32_t index = 0; index < count; ++index) {
    content += classicFrame({.id = first + index, .dlc = 1});
  }
  return content;
}

std::string rowsOf(const std::vector<std::uint32_t>& ids) {
  std::string rows;
  for (const std::uint32_t id : ids) {
    rows += std::to_string(std::count(rows.begin(), rows.end(), '\n') + 1) + ";1;0;2;1;-;" + std::to_string(id) +
            ";1;0;0;0;0;0;0;0;0;1;11\n";
  }
  return rows;
}

using Told = std::vector<std::pair<Remark, std::uint64_t>>;

void expectRemarks(const Remarks& remarks, const Told& expected) {
  for (std::size_t index = 0; index < kRemarkCount; ++index) {
    const auto remark = static_cast<Remark>(index);
    std::uint64_t times = 0;
    for (const auto& [told, count] : expected) {
      times += told == remark ? count : 0;
    }
    EXPECT_EQ(remarks.times(remark), times) << "remark " << index;
  }
}

void expectRows(const std::string& log, const std::vector<std::uint32_t>& ids, const Told& told = {}) {
  const Converted converted = convertLog(log);
  EXPECT_EQ(converted.rows(), rowsOf(ids));
  expectRemarks(converted.remarks, told);
}

TEST(Blf2CsvContainers, bothMethodsGiveTheSame) {
  expectRows(file(stored(frames(3))), {1, 2, 3});
  expectRows(file(zipped(frames(3))), {1, 2, 3});
  expectRows(file(zipped(frames(2)) + stored(frames(1, 3)) + zipped(frames(1, 4))), {1, 2, 3, 4});
}

TEST(Blf2CsvContainers, aLogOfNothingHasAHeadOnly) {
  expectRows(file(""), {});
  expectRows(file(stored("")), {});
  expectRows(file(zipped("")), {});
}

TEST(Blf2CsvContainers, anObjectMayBeCutAnywhere) {
  const std::string content = frames(3);
  for (std::size_t cut = 0; cut <= content.size(); ++cut) {
    SCOPED_TRACE(cut);
    expectRows(file(zipped(content.substr(0, cut)) + stored(content.substr(cut))), {1, 2, 3});
  }
}

TEST(Blf2CsvContainers, anObjectMaySpanManyContainers) {
  std::string containers;
  for (const char byte : frames(2)) {
    containers += zipped(std::string(1, byte));
  }
  expectRows(file(containers), {1, 2});
}

TEST(Blf2CsvContainers, objectsOutsideOfContainersCount) {
  expectRows(file(frames(2)), {1, 2});
  expectRows(file(frames(1) + zipped(frames(1, 2)) + frames(1, 3)), {1, 2, 3});
}

// After an object of odd size the next may begin at an odd offset; how many bytes lie between them depends on the type.
TEST(Blf2CsvContainers, paddingOfUpToThreeBytesIsNothing) {
  for (std::size_t size = 0; size < 5; ++size) {
    for (std::size_t padding = 0; padding <= 3; ++padding) {
      SCOPED_TRACE(std::to_string(size) + " bytes, " + std::to_string(padding) + " after them");
      const std::string odd = object({.type = 92}, std::string(size, 'x'), padding);
      expectRows(file(stored(odd + frames(1))), {1});
      expectRows(file(zipped(frames(1) + odd)), {1});
    }
  }
}

TEST(Blf2CsvContainers, strayBytesAreSkippedAndReported) {
  expectRows(file(stored(frames(1) + std::string(4, '\0') + frames(1, 2))), {1, 2}, {{Remark::StrayBytes, 1}});
  expectRows(file(stored("x" + frames(1) + "LOB" + frames(1, 2) + "LOBJLOBJ")), {1, 2}, {{Remark::StrayBytes, 3}});
  expectRows(file("junk" + stored(frames(1)) + "junk, LOBJ and junk" + stored(frames(1, 2)) + "LOBJ"), {1, 2},
             {{Remark::StrayFileBytes, 3}});
  EXPECT_EQ(convertLog(file(stored(frames(1) + "junk" + frames(1, 2)))).remarks.lines(),
            std::vector<std::string>{"stretches of bytes between objects that belong to none, skipped: 1, the first at "
                                     "offset 48 of the content"});
  EXPECT_EQ(convertLog(file("junk" + stored(frames(1)))).remarks.lines(),
            std::vector<std::string>{"stretches of bytes between containers that belong to none, skipped: 1, the first "
                                     "at offset 144"});
}

TEST(Blf2CsvContainers, anObjectTooSmallForItsSizeFieldIsNotAnObject) {
  for (const auto& [headerSize, size] : std::vector<std::pair<unsigned, unsigned>>{
           {32, 0}, {32, 31}, {31, 48}, {16, 48}, {0, 48}, {0, 0}, {65535, 48}, {32, 0xFFFFFFFF}, {32, 1U << 25}}) {
    SCOPED_TRACE(std::to_string(headerSize) + " of " + std::to_string(size));
    const std::string bad =
        Bytes().text("LOBJ").u16(headerSize).u16(1).u32(size).u32(1).u32(2).u32(0).u64(0).leftovers(16).str();
    expectRows(file(stored(frames(1) + bad + frames(1, 2))), {1, 2}, {{Remark::StrayBytes, 1}});
    expectRows(file(frames(1) + bad + frames(1, 2)), {1, 2}, {{Remark::StrayFileBytes, 1}});
  }
}

TEST(Blf2CsvContainers, aLastObjectThatIsCutIsDropped) {
  const std::string content = frames(2);
  for (std::size_t size = 49; size < 96; ++size) {
    SCOPED_TRACE(size);
    const Converted converted = convertLog(file(stored(content.substr(0, size))));
    EXPECT_EQ(converted.rows(), rowsOf({1}));
    EXPECT_EQ(converted.remarks.times(Remark::StrayBytes), 1U);
  }
}

TEST(Blf2CsvContainers, aWholeObjectInsideACutOneIsFound) {
  const std::string open = object({.type = 92}, std::string(40, 'x') + frames(1, 7) + "tail");
  expectRows(file(stored(frames(1) + open.substr(0, open.size() - 3))), {1, 7}, {{Remark::StrayBytes, 2}});
}

TEST(Blf2CsvContainers, aContainerCutByTheEndGivesWhatIsThere) {
  const std::string container = zipped(frames(50));
  const std::string log = file(zipped(frames(1, 100)) + container);
  std::size_t most = 0;
  for (std::size_t cut = 4; cut < container.size() - 32; ++cut) {
    const Converted converted = convertLog(log.substr(0, log.size() - cut));
    const auto rows = static_cast<std::size_t>(std::count(converted.table.begin(), converted.table.end(), '\n')) - 2;
    EXPECT_GE(rows, 1U);
    EXPECT_EQ(converted.remarks.times(Remark::CutContainer), 1U);
    EXPECT_EQ(converted.remarks.times(Remark::BrokenContainer), 0U);
    most = std::max(most, rows);
  }
  EXPECT_GE(most, 50U);
}

TEST(Blf2CsvContainers, aCutStoredContainerGivesWhatIsThere) {
  const std::string log = file(stored(frames(3)));
  expectRows(log.substr(0, log.size() - 48), {1, 2}, {{Remark::CutContainer, 1}});
}

TEST(Blf2CsvContainers, aBrokenContainerLeavesAHole) {
  std::string packed = deflated(frames(60, 1000));
  packed[packed.size() / 2] = static_cast<char>(packed[packed.size() / 2] ^ 0x55);
  // The object that was open before the hole does not go on after it.
  const std::string open = frames(1, 5);
  const std::string log = file(stored(frames(1) + open.substr(0, 40)) + containerOf(2, "no zlib stream", 480) +
                               stored(open.substr(40) + frames(1, 2)));
  expectRows(log, {1, 2}, {{Remark::BrokenContainer, 1}, {Remark::StrayBytes, 2}});

  const Converted converted = convertLog(file(containerOf(2, packed, 2880) + stored(frames(1))));
  EXPECT_TRUE(converted.rows().ends_with(";1;0;2;1;-;1;1;0;0;0;0;0;0;0;0;1;11\n"));
  EXPECT_EQ(converted.remarks.times(Remark::BrokenContainer), 1U);
  EXPECT_EQ(converted.remarks.times(Remark::StrayFileBytes), 0U);
}

TEST(Blf2CsvContainers, aStreamThatEndsEarlyIsBroken) {
  const std::string packed = deflated(frames(3));
  const std::string log = file(containerOf(2, packed.substr(0, packed.size() - 5), 144) + stored(frames(1, 9)));
  expectRows(log, {1, 2, 3, 9}, {{Remark::BrokenContainer, 1}});
}

TEST(Blf2CsvContainers, whatFollowsAStreamIsSearched) {
  // A container whose size takes in the next one.
  const std::string next = stored(frames(1, 2));
  std::string first = zipped(frames(1));
  const std::size_t size = first.size() + next.size();
  first.replace(8, 4, Bytes().u32(size).str());
  expectRows(file(first + next), {1, 2});
}

TEST(Blf2CsvContainers, statedContentSizesAreNotReliedOn) {
  const std::string packed = deflated(frames(2));
  for (const std::uint32_t stated : {0U, 1U, 95U, 97U, 0xFFFFFFFFU}) {
    SCOPED_TRACE(stated);
    expectRows(file(containerOf(2, packed, stated)), {1, 2}, {{Remark::WrongContentSize, 1}});
  }
  for (const std::uint32_t stated : {0U, 97U, 0xFFFFFFFFU}) {
    SCOPED_TRACE(stated);
    expectRows(file(containerOf(0, frames(2), stated)), {1, 2}, {{Remark::WrongContentSize, 1}});
  }
  // If the size of the container is the wrong one of the two, the next container is not lost.
  const std::string both = frames(2) + stored(frames(1, 3));
  expectRows(file(containerOf(0, both, 96)), {1, 2, 3}, {{Remark::WrongContentSize, 1}});
}

TEST(Blf2CsvContainers, unknownMethodsAreSkipped) {
  for (const std::uint16_t method : std::initializer_list<std::uint16_t>{1, 3, 65535}) {
    SCOPED_TRACE(method);
    const std::string unknown = containerOf(method, frames(3), 144);
    expectRows(file(stored(frames(1)) + unknown + stored(frames(1, 2))), {1, 2}, {{Remark::UnknownMethod, 1}});
  }
}

TEST(Blf2CsvContainers, aContainerInAContainerIsSkipped) {
  expectRows(file(stored(frames(1) + zipped(frames(1, 5)) + frames(1, 2))), {1, 2}, {{Remark::NestedContainer, 1}});
}

TEST(Blf2CsvContainers, aContainerWithoutRoomForItsHeaderIsNotAContainer) {
  for (const unsigned size : {16U, 31U}) {
    const std::string bad = Bytes().text("LOBJ").u16(16).u16(1).u32(size).u32(10).zeros(16).str();
    expectRows(file(bad + stored(frames(1))), {1}, {{Remark::StrayFileBytes, 1}});
  }
  const std::string atTheEnd = Bytes().text("LOBJ").u16(16).u16(1).u32(5000).u32(10).zeros(8).str();
  expectRows(file(stored(frames(1)) + atTheEnd), {1}, {{Remark::StrayFileBytes, 1}});
}

TEST(Blf2CsvContainers, largeContainersAndLargeObjectsAreRead) {
  const std::string large = object({.type = 92}, std::string(3'000'001, 'L'));
  const std::string content = frames(1) + large + frames(1, 2);
  expectRows(file(zipped(content)), {1, 2});
  expectRows(file(stored(content)), {1, 2});
  expectRows(file(content), {1, 2});
}

TEST(Blf2CsvContainers, manyFramesAcrossManyContainers) {
  std::string content;
  std::string rows;
  for (int index = 0; index < 20000; ++index) {
    content += object({.type = 1, .timestamp = static_cast<std::uint64_t>(index), .flags = kTenMicroseconds},
                      Bytes().u16(1).u8(0).u8(2).u32(static_cast<std::uint32_t>(index)).counting(8).str());
    rows += std::to_string(index + 1) + ";1;" + std::to_string(index) + ";1;1;-;" + std::to_string(index) +
            ";1;0;0;0;0;0;0;0;0;2;01;02\n";
  }
  std::string containers;
  for (std::size_t at = 0; at < content.size(); at += 1001) {
    containers += zipped(content.substr(at, 1001));
  }
  EXPECT_EQ(convertLog(file(containers)).rows(), rows);
}

TEST(Blf2CsvFile, whatIsNotALogIsRefused) {
  const std::string log = file(stored(frames(1)));
  for (const std::string& bytes :
       {std::string(), std::string("LOGG"), log.substr(0, 143), "x" + log.substr(1), std::string(1000, '\0')}) {
    EXPECT_THROW(static_cast<void>(convertLog(bytes)), std::runtime_error);
  }
}

TEST(Blf2CsvFile, objectsBeginWhereTheHeaderSays) {
  std::string log = file(Bytes().leftovers(16).str() + stored(frames(1)));
  log.replace(4, 4, Bytes().u32(160).str());
  expectRows(log, {1});
  // Not before the end of the known fields; and beyond the end of the file there is nothing.
  log = file(stored(frames(1)));
  log.replace(4, 4, Bytes().u32(0).str());
  expectRows(log, {1});
  log.replace(4, 4, Bytes().u32(0xFFFFFFFF).str());
  expectRows(log, {});
}

TEST(Blf2CsvFile, objectsAreCountedIfTheHeaderDoesNot) {
  const xlatr::test::TempFolder folder;
  EXPECT_EQ(countObjects(folder.write("a.blf", file({.objects = 77}, stored(frames(3))))), 77);
  EXPECT_EQ(countObjects(folder.write("b.blf", file({.objects = 0}, stored(frames(3) + object({.type = 92}, ""))))), 3);
  EXPECT_EQ(countObjects(folder.write("c.blf", file({.objects = 0xFFFFFFFF}, ""))), INT32_MAX);
  EXPECT_THROW(static_cast<void>(countObjects(folder.file("missing.blf"))), std::runtime_error);
}

TEST(Blf2CsvFile, theVersionIsFourPairs) {
  const xlatr::test::TempFolder folder;
  for (const auto& [number, version] : std::vector<std::pair<std::uint32_t, std::int32_t>>{
           {4070100, 4070100}, {0, 0}, {5, 5}, {99999999, 99999999}, {100000000, 0}, {0xFFFFFFFF, 0}}) {
    EXPECT_EQ(fileVersion(readFileHeader(folder.write("log.blf", file({.api = number}, "")))), version);
  }
}

}  // namespace
}  // namespace blf2csv
