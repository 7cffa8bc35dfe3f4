#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "conversions/conversion_support.hpp"
#include "formats/mf4/mdf_file_builder.hpp"

// MF4 files of a stranger on their way to TRC.
namespace xlatr::conversions {
namespace {

using test::join;
using test::MdfFileBuilder;

void save(const MdfFileBuilder& file) {
  writeFile("in.mf4", file.asText());
}

std::vector<std::string> framesOf(const char* path, const char* version) {
  return linesBehindHeader(path, version);
}

void expectFailure(const Outcome& outcome, const std::string& text) {
  EXPECT_EQ(outcome.status, 3);
  EXPECT_EQ(outcome.text, text + " ");  // each source's text ends in a blank
}

TEST(Mf4Source, becomesATraceWithItsFramesInTheOrderOfTheirTimes) {
  const WorkingDirectory directory;
  MdfFileBuilder file;
  const std::uint64_t remote =
      file.dataGroup(file.group({.channels = file.frameChannels("CAN_RemoteFrame"), .cycles = 1}),
                     file.data(MdfFileBuilder::record(1'500'000, 0x222, 0, 8, 2)));
  const std::uint64_t data = file.group({.channels = file.frameChannels(), .cycles = 2});
  file.setFirstDataGroup(file.dataGroup(
      data, file.data(join({MdfFileBuilder::record(1'000'000, 0x123), MdfFileBuilder::record(2'000'000, 0x321)})), 0,
      remote));
  save(file);
  expectSuccess(convert("in.mf4", "out.trc", 2.1), {"out.trc"});
  EXPECT_EQ(framesOf("out.trc", "2.1"),
            (std::vector<std::string>{"      1         1.000 DT 1      0123 Rx -  2    11 22",
                                      "      2         1.500 RR 2      0222 Rx -  8    ",
                                      "      3         2.000 DT 1      0321 Rx -  2    11 22"}));
}

TEST(Mf4Source, becomesAFileForEachBusOfATargetWithoutBuses) {
  const WorkingDirectory directory;
  MdfFileBuilder file;
  file.sortedFile({MdfFileBuilder::record(0, 1, 0, 2, 3), MdfFileBuilder::record(1, 2, 0, 2, 20),
                   MdfFileBuilder::record(2, 3, 0, 2, 3)});
  save(file);
  expectSuccess(convert("in.mf4", "out.trc", 1.1), {"out_BUS3.trc", "out_BUS20.trc"});
}

// A length above the payload: the record is not understood, but its bus is known.
constexpr std::uint8_t kTooLong = 9;

TEST(Mf4Source, hasNoFileForABusWhoseRecordsAreNotUnderstood) {
  const WorkingDirectory directory;
  MdfFileBuilder file;
  file.sortedFile({MdfFileBuilder::record(0, 1, 0, kTooLong, 9), MdfFileBuilder::record(1, 2, 0, 2, 3)});
  save(file);
  expectSuccess(convert("in.mf4", "out.trc", 1.1), {"out_BUS3.trc"});
  EXPECT_EQ(directory.names(), (std::vector<std::string>{"in.mf4", "out_BUS3.trc"}));
}

TEST(Mf4Source, warnsOfTheBusesOfRecordsThatAreNotUnderstoodToo) {
  const WorkingDirectory directory;
  MdfFileBuilder file;
  file.sortedFile({MdfFileBuilder::record(0, 1, 0, kTooLong, 40), MdfFileBuilder::record(1, 2, 0, 2, 17)});
  save(file);
  expectSuccess(convert("in.mf4", "out.trc", 2.1), {"out.trc"},
                "The Converted file 'out.trc' contents at least one invalid BUS number: 17 40.\n"
                "Only BRIX trace files with bus numbers from 1 to 16 are supported ");
  EXPECT_EQ(framesOf("out.trc", "2.1"),
            (std::vector<std::string>{"      1         0.000 DT 17     0002 Rx -  2    11 22"}));
}

TEST(Mf4Source, warnsOfBusesThatTraceProgramsDoNotShow) {
  const WorkingDirectory directory;
  MdfFileBuilder file;
  file.sortedFile({MdfFileBuilder::record(0, 1, 0, 2, 17)});
  save(file);
  expectSuccess(convert("in.mf4", "out.trc", 2.1), {"out.trc"},
                "The Converted file 'out.trc' contents at least one invalid BUS number: 17.\n"
                "Only BRIX trace files with bus numbers from 1 to 16 are supported ");
}

TEST(Mf4Source, leavesOutRecordsThatAreNotUnderstood) {
  const WorkingDirectory directory;
  MdfFileBuilder file;
  file.sortedFile({MdfFileBuilder::record(0, 1, 0, 9), MdfFileBuilder::record(0, 2, 0, 8)});
  save(file);
  expectSuccess(convert("in.mf4", "out.trc", 2.1), {"out.trc"});
  EXPECT_EQ(framesOf("out.trc", "2.1"),
            (std::vector<std::string>{"      1         0.000 DT 1      0002 Rx -  8    11 22 33 44 55 66 77 88"}));
}

TEST(Mf4Source, thatMayNotBeConvertedFailsWithTheReasonAndWritesNothing) {
  const WorkingDirectory directory;
  MdfFileBuilder file;
  file.sortedFile({MdfFileBuilder::record(0)});
  file.patch(60, {1, 0});
  save(file);
  expectFailure(convert("in.mf4", "out.trc", 2.1), "Only finalized MDF4 files are supported");
  save(MdfFileBuilder());
  expectFailure(convert("in.mf4", "out.trc", 2.1), "CAN bus not available. There is no data to be converted");
  EXPECT_EQ(directory.names(), std::vector<std::string>{"in.mf4"});
}

TEST(Mf4Source, whoseDataIsDamagedFailsAndIsNoEmptyTrace) {
  const WorkingDirectory directory;
  MdfFileBuilder start;
  start.setFirstDataGroup(start.dataGroup(start.group({.flags = 7}), 0));
  save(start);
  expectFailure(convert("in.mf4", "out.trc", 2.1), "VLSD Channel groups are not supported");
  MdfFileBuilder middle;
  const std::uint64_t group = middle.group({.channels = middle.frameChannels(), .cycles = 2, .recordId = 1});
  middle.setFirstDataGroup(
      middle.dataGroup(group, middle.data(join({{1}, MdfFileBuilder::record(0), {2}, MdfFileBuilder::record(0)})), 1));
  save(middle);
  expectFailure(convert("in.mf4", "out.trc", 2.1), "Unknown record Id");
}

}  // namespace
}  // namespace xlatr::conversions
