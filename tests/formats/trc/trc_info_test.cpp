#include "formats/trc/trc_info.hpp"

#include <gtest/gtest.h>

#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

TEST(TrcInfo, readsTheHeaderUpToTheFirstLineThatIsNeitherEmptyNorAComment) {
  const test::TempFolder folder;
  const std::string header = ";$FILEVERSION=2.1\n\n;$STARTTIME=44403.25\n;$COLUMNS=N,O,T,B,I,d,R,L,D\n";
  const TrcInfo info(folder.write("x.trc", header + "1 1 DT 1 0123 Rx - 0\n;$FILEVERSION=1.0\n"));
  EXPECT_TRUE(info.getValid());
  EXPECT_EQ(info.getVersion(), 2.1);
  EXPECT_EQ(info.getVersionText(), "2.1");
  EXPECT_EQ(info.getStartTime(), 44403.25);
  EXPECT_EQ(info.columnSet(), 0x3EFU);
  EXPECT_EQ(info.getHeaderLength(), header.size());
  EXPECT_EQ(info.lineBreakSize(), 1);
  EXPECT_EQ(info.getPath(), folder.file("x.trc"));
  EXPECT_EQ(info.getFileSize(), header.size() + 39);
  EXPECT_EQ(info.getLowestVersion(), 1.0);
  EXPECT_EQ(info.getCurrentVersion(), 3.0);
}

TEST(TrcInfo, countsCrLfAsTwoBytes) {
  const test::TempFolder folder;
  const std::string header = ";$FILEVERSION=1.1\r\n;\r\n\r\n";
  const TrcInfo info(folder.write("x.trc", header + "1) 1 Rx 0123 0\r\n"));
  EXPECT_EQ(info.getHeaderLength(), header.size());
  EXPECT_EQ(info.lineBreakSize(), 2);
}

// No real trace is mixed like this, but losing a line over it would be wrong.
TEST(TrcInfo, findsTheEndOfAHeaderWithBothLineEnds) {
  const test::TempFolder folder;
  const std::string header = ";$FILEVERSION=1.1\r\n;\n;\n;\r\n";
  EXPECT_EQ(TrcInfo(folder.write("x.trc", header + "1) 1 Rx 0123 0\n")).getHeaderLength(), header.size());
}

TEST(TrcInfo, takesColumnsFromVersion20On) {
  const test::TempFolder folder;
  EXPECT_EQ(TrcInfo(folder.write("a.trc", ";$FILEVERSION=1.1\n;$COLUMNS=N,O\n")).columnSet(), 0U);
  EXPECT_EQ(TrcInfo(folder.write("b.trc", ";$FILEVERSION=2.0\n;$COLUMNS=N,O\n")).columnSet(), 0xC0U);
}

TEST(TrcInfo, knowsAnOldFileByItsMark) {
  const test::TempFolder folder;
  const TrcInfo marked(folder.write("a.trc", ";  BRIX Scope\n"));
  EXPECT_TRUE(marked.getValid());
  EXPECT_EQ(marked.getVersion(), 1.0);
  const TrcInfo unmarked(folder.write("b.trc", ";  something\n"));
  EXPECT_FALSE(unmarked.getValid());
  EXPECT_EQ(unmarked.getVersion(), 0.0);
}

TEST(TrcInfo, reportsAVersionThatItDoesNotAccept) {
  const test::TempFolder folder;
  const TrcInfo info(folder.write("x.trc", ";$FILEVERSION=3.1\n;$STARTTIME=44403.25\n"));
  EXPECT_FALSE(info.getValid());
  EXPECT_EQ(info.getVersion(), 3.1);
  EXPECT_EQ(info.getVersionText(), "");
  EXPECT_EQ(info.getStartTime(), 0.0);
}

TEST(TrcInfo, acceptsAFileWithoutAStartTime) {
  const test::TempFolder folder;
  const TrcInfo info(folder.write("x.trc", ";$FILEVERSION=1.1\n"));
  EXPECT_TRUE(info.getValid());
  EXPECT_EQ(info.getStartTime(), 0.0);
}

TEST(TrcInfo, looksIntoTrcFilesOnly) {
  const test::TempFolder folder;
  const TrcInfo info(folder.write("x.asc", ";$FILEVERSION=1.1\n"));
  EXPECT_FALSE(info.getValid());
  EXPECT_EQ(info.getVersion(), 0.0);
  EXPECT_EQ(info.getHeaderLength(), 0U);
}

TEST(TrcInfo, ofAMissingFileIsNotValid) {
  const test::TempFolder folder;
  const TrcInfo info(folder.file("none.trc"));
  EXPECT_FALSE(info.getValid());
  EXPECT_EQ(info.getPath(), "");
  EXPECT_EQ(info.getVersionText(), "");
}

}  // namespace
}  // namespace xlatr
