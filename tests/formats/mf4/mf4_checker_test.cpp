// The checker of written files finds what may be wrong with them.
#include "support/mf4_checker.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/layout.hpp"

namespace xlatr::test {
namespace {

using testing::HasSubstr;

std::filesystem::path golden(const std::string& name) {
  return std::filesystem::path(XLATR_GOLDEN_DIR) / name;
}

// An unsorted file with a remote frame.
std::string soundFile() {
  const LayoutNames names{.numbers = {{"versionNumber", 410},
                                      {"start", 5},
                                      {"written", 6},
                                      {"cycles0", 0},
                                      {"cycles1", 1},
                                      {"cycles2", 0},
                                      {"data0", 8040}},
                          .texts = {{"version", "4.10"}}};
  return layOutFile(golden("unsorted.layout"), names) +
         layOut("@8040 DT 41 () u8:1 f64:1000 u32:0x100 u8:1 u8:0 u8:8 u8:8\n@8081 end", names, 8040);
}

TEST(Mf4Checker, findsNothingWrongWithASoundFile) {
  const Mf4Report report = checkMf4(soundFile());
  EXPECT_EQ(faultsOf(report), "");
  EXPECT_EQ(report.version, 4.1);
  EXPECT_EQ(report.startNs, 5U);
  ASSERT_EQ(report.groups.size(), 3U);
  EXPECT_EQ(report.groups[1].name, "CAN_RemoteFrame");
  EXPECT_EQ(report.groups[1].cycleCount, 1U);
  EXPECT_EQ(report.groups[1].records.size(), 16U);
  EXPECT_EQ(report.blocks.front(), "identification");
  EXPECT_EQ(report.blocks.back(), "DT");
}

// One byte of the sound file is another one.
TEST(Mf4Checker, findsEveryFault) {
  struct Case {
    std::size_t offset;
    char value;
    const char* fault;
  };
  const Case cases[] = {
      {0, 'm', "not an MDF file"},
      {8, '5', "not version 4"},
      {12, ' ', "not padded with zeros"},
      {28, 0, "versions of the identification differ"},
      {60, 1, "not finished"},
      {68, 1, "reserved bytes in the head"},
      {66, 'X', "is no HD"},
      {96, 0, "a header needs a file history"},
      {104, 8, "leads somewhere"},
      {176, 48, "odd length"},
      {192, 4, "not at a multiple of 8"},
      {200, 0, "a file history needs its comment"},
      {184, 3, "has 3 links"},
      {1160, 0x20, "more than one link leads here"},
      {424 + 56, 2, "odd size of record ids"},
      {424 + 57, 1, "reserved bytes"},
      {424 + 41, 127, "outside the file"},
      {488 + 72, 1, "two groups with one record id"},
      {488 + 80, 1, "has 0 records, but states 1"},
      {488 + 88, 2, "not a group of plain bus events"},
      {488 + 96, 16, "lies outside of"},
      {800 + 88, 0, "has 0 master channels"},
      {1120 + 91, 9, "bit offset above 7"},
      {1280 + 92, 200 - 256, "lies outside of CAN_ErrorFrame"},
      {1920 + 24, 'X', "is no component of"},
      {2184 + 39, 'X', "does not end in zeros"},
      {2280 + 8, 40, "overlaps"},
      {2344 + 24, 0, "empty text"},
      {2376 + 56, 7, "not a linear conversion"},
      {2544 + 48, 3, "not a CAN or LIN bus"},
      {8040 + 24, 7, "no record at 0"},
      {8040 + 8, 42, "impossible length"},
      {8040 + 8, 24, "has 0 records, but states 1"},
  };
  for (const Case& item : cases) {
    std::string file = soundFile();
    file[item.offset] = item.value;
    EXPECT_THAT(faultsOf(checkMf4(file)), HasSubstr(item.fault)) << "byte " << item.offset;
  }
}

TEST(Mf4Checker, findsWhatNoBlockOwns) {
  EXPECT_THAT(faultsOf(checkMf4(soundFile() + "x")), HasSubstr("something lies after the last block"));
  EXPECT_THAT(faultsOf(checkMf4(soundFile() + std::string(9, '\0'))), HasSubstr("something lies after"));
  EXPECT_EQ(faultsOf(checkMf4("MDF")), "0: no room for an identification\n");
}

TEST(Mf4Layout, refusesWhatIsNotTrue) {
  const LayoutNames names;
  EXPECT_EQ(layOut("@0 TX 32 () \"ab\" z6", names),
            std::string("##TX\0\0\0\0\x20\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0ab", 26) + std::string(6, '\0'));
  EXPECT_THROW(static_cast<void>(layOut("@8 TX 32 () z8", names)), LayoutError);
  EXPECT_THROW(static_cast<void>(layOut("@0 TX 40 () z8", names)), LayoutError);
  EXPECT_THROW(static_cast<void>(layOut("@0 TX 32 z8", names)), LayoutError);
  EXPECT_THROW(static_cast<void>(layOut("\"no end", names)), LayoutError);
  EXPECT_THROW(static_cast<void>(layOut("ABC", names)), LayoutError);
}

}  // namespace
}  // namespace xlatr::test
