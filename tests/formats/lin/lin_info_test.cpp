#include "formats/lin/lin_info.hpp"

#include <gtest/gtest.h>

#include <string>

#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

class LinInfoTest : public testing::Test {
 protected:
  [[nodiscard]] KorlInfo infoOf(const std::string& content) const {
    return KorlInfo(TraceFileInfo(folder_.write("x.ltrc", content)));
  }

  test::TempFolder folder_;
};

TEST_F(LinInfoTest, readsTheHeader) {
  const std::string header = ";$FILEVERSION=1.1\r\n;$STARTTIME=44403.25\r\n;\r\n";
  const KorlInfo info = infoOf(header + "1) 1 Pub 01 0 FF CL\r\n;$FILEVERSION=1.2\r\n");
  EXPECT_TRUE(info.getValid());
  EXPECT_EQ(info.getVersion(), 1.1);
  EXPECT_EQ(info.getVersionText(), "1.1");
  EXPECT_EQ(info.getStartTime(), 44403.25);
  EXPECT_EQ(info.getHeaderLength(), header.size());
  EXPECT_EQ(info.lineBreakSize(), 2);
  EXPECT_EQ(info.getLowestVersion(), 1.0);
  EXPECT_EQ(info.getCurrentVersion(), 1.2);
}

TEST_F(LinInfoTest, isValidFromVersion10To12) {
  EXPECT_FALSE(infoOf(";$FILEVERSION=0.9\n").getValid());
  EXPECT_TRUE(infoOf(";$FILEVERSION=1.0\n").getValid());
  EXPECT_TRUE(infoOf(";$FILEVERSION=1.05\n").getValid());
  EXPECT_TRUE(infoOf(";$FILEVERSION=1.2").getValid());
  EXPECT_FALSE(infoOf(";$FILEVERSION=1.3\n").getValid());
  EXPECT_FALSE(infoOf("").getValid());
}

TEST_F(LinInfoTest, anEmptyFirstLineIsAHeaderOfNoLines) {
  const KorlInfo info = infoOf("\n;$FILEVERSION=1.2\n");
  EXPECT_FALSE(info.getValid());
  EXPECT_EQ(info.getVersion(), 0.0);
  EXPECT_EQ(info.getHeaderLength(), 0U);
}

TEST_F(LinInfoTest, takesADateOutOfRangeForNoHeader) {
  const KorlInfo info = infoOf(";$FILEVERSION=1.0\n;   Start time: 01.01.1000 00:00:00\n");
  EXPECT_FALSE(info.getValid());
  EXPECT_EQ(info.getVersion(), 0.0);
  EXPECT_EQ(info.getHeaderLength(), 0U);
}

TEST_F(LinInfoTest, isNotValidWithoutAFileOrForAnotherFormat) {
  EXPECT_FALSE(KorlInfo(TraceFileInfo(folder_.file("none.ltrc"))).getValid());
  EXPECT_FALSE(KorlInfo(TraceFileInfo(folder_.write("x.trc", ";$FILEVERSION=1.1\n"))).getValid());
  EXPECT_TRUE(KorlInfo(TraceFileInfo(folder_.write("x.LTRC", ";$FILEVERSION=1.1\n"))).getValid());
}

}  // namespace
}  // namespace xlatr
