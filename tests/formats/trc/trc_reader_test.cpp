#include "formats/trc/trc_reader.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

constexpr char kHeader[] = ";$FILEVERSION=1.1\n";

std::vector<std::string> textsOf(TrcReader& reader) {
  std::vector<std::string> texts;
  while (const auto message = reader.ReadNextMessage()) {
    texts.push_back((message->valid ? "+" : "-") + message->parsingText);
  }
  return texts;
}

TEST(TrcReader, handsOutALineAMessageAndSkipsComments) {
  const test::TempFolder folder;
  TrcReader reader(
      TrcInfo(folder.write("x.trc", std::string(kHeader) + "1) 1 Rx 0123 0\n; a comment\n\nbroken\n2) 2 Rx 0456 0")));
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_EQ(textsOf(reader), (std::vector<std::string>{"+1) 1 Rx 0123 0", "-", "-broken", "+2) 2 Rx 0456 0"}));
  EXPECT_EQ(reader.invalidCount(), 2U);
  EXPECT_EQ(reader.lineCount(), 5U);
  EXPECT_EQ(reader.getPercentDone(), 100.0);
}

TEST(TrcReader, endsAt100PercentWithEitherLineEnd) {
  const test::TempFolder folder;
  for (const std::string end : {"\n", "\r\n"}) {
    TrcReader reader(TrcInfo(folder.write("x.trc", ";$FILEVERSION=1.1" + end + "1) 1 Rx 0123 0" + end)));
    ASSERT_TRUE(reader.setActive(true));
    EXPECT_LT(reader.getPercentDone(), 100.0);
    EXPECT_EQ(textsOf(reader).size(), 1U);
    EXPECT_EQ(reader.getPercentDone(), 100.0);
  }
}

TEST(TrcReader, losesNoLineOfAFileWithBothLineEnds) {
  const test::TempFolder folder;
  TrcReader reader(TrcInfo(folder.write("x.trc", ";$FILEVERSION=1.1\r\n\r\n1\n2\r\n3\n4\n5\n6\n7\n\n\n")));
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_EQ(textsOf(reader), (std::vector<std::string>{"-1", "-2", "-3", "-4", "-5", "-6", "-7", "-", "-"}));
}

TEST(TrcReader, startsAgainWhenActivatedTwice) {
  const test::TempFolder folder;
  TrcReader reader(TrcInfo(folder.write("x.trc", std::string(kHeader) + "1) 1 Rx 0123 0\nbroken\n")));
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_EQ(textsOf(reader).size(), 2U);
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_EQ(reader.invalidCount(), 0U);
  EXPECT_EQ(reader.lineCount(), 0U);
  EXPECT_EQ(textsOf(reader).size(), 2U);
}

TEST(TrcReader, ofAHeaderAloneEndsAtOnce) {
  const test::TempFolder folder;
  for (const char* const content : {";$FILEVERSION=1.1\n", ";$FILEVERSION=1.1"}) {
    TrcReader reader(TrcInfo(folder.write("x.trc", content)));
    ASSERT_TRUE(reader.setActive(true));
    EXPECT_EQ(reader.getPercentDone(), 100.0);
    EXPECT_EQ(reader.ReadNextMessage(), nullptr);
  }
}

TEST(TrcReader, readsNothingWhileInactive) {
  const test::TempFolder folder;
  TrcReader reader(TrcInfo(folder.write("x.trc", std::string(kHeader) + "1) 1 Rx 0123 0\n")));
  EXPECT_FALSE(reader.getActive());
  EXPECT_EQ(reader.ReadNextMessage(), nullptr);
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_FALSE(reader.setActive(false));
  EXPECT_FALSE(reader.getActive());
  EXPECT_EQ(reader.ReadNextMessage(), nullptr);
}

TEST(TrcReader, staysInactiveWithTheReasonWhenTheFileIsGone) {
  const test::TempFolder folder;
  const std::string path = folder.write("x.trc", kHeader);
  TrcReader reader{TrcInfo(path)};
  std::filesystem::remove(path);
  EXPECT_FALSE(reader.setActive(true));
  EXPECT_FALSE(reader.getActive());
  EXPECT_EQ(reader.failure(), path + ": cannot open: No such file or directory");
}

TEST(TrcReader, handsOutTheLinesOfAnUnknownVersionAsNotValid) {
  const test::TempFolder folder;
  TrcReader reader(TrcInfo(folder.write("x.trc", "1) 1 Rx 0123 0\n\n2 2 DT 1 0123 Rx - 0\n")));
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_EQ(textsOf(reader), (std::vector<std::string>{"-1) 1 Rx 0123 0", "-", "-2 2 DT 1 0123 Rx - 0"}));
}

TEST(TrcReader, endsWhereAFileThatShrankEnds) {
  const test::TempFolder folder;
  const std::string path = folder.write("x.trc", std::string(kHeader) + "1) 1 Rx 0123 0\n2) 2 Rx 0123 0\n");
  TrcReader reader{TrcInfo(path)};
  std::filesystem::resize_file(path, std::string(kHeader).size() + 20);
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_EQ(textsOf(reader), (std::vector<std::string>{"+1) 1 Rx 0123 0", "-2) 2 "}));
}

TEST(TrcReader, endsWhereAGrowingFileEndedWhenItWasLookedAt) {
  const test::TempFolder folder;
  const std::string path = folder.write("x.trc", std::string(kHeader) + "1) 1 Rx 0123 0\n");
  TrcReader reader{TrcInfo(path)};
  std::ofstream(path, std::ios::app) << "2) 2 Rx 0123 0\n";
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_EQ(textsOf(reader).size(), 1U);
}

}  // namespace
}  // namespace xlatr
