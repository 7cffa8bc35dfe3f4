#include "io/trace_info.hpp"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

TEST(TraceFileInfo, takesSizeAndFormatFromTheFile) {
  const test::TempFolder folder;
  const TraceFileInfo file(folder.write("x.TRC", "12345"));
  EXPECT_TRUE(file.getValid());
  EXPECT_EQ(file.getPath(), folder.file("x.TRC"));
  EXPECT_EQ(file.getSize(), 5U);
  EXPECT_EQ(file.getFormat(), XLATR_FORMAT_TRC);
  EXPECT_EQ(file.getFormatDescription(), "BRIX trace file");
  EXPECT_EQ(file.getShortName(), "BRIX-Trace");
  EXPECT_TRUE(std::ranges::equal(file.getSupportedConversions(), formatOf(XLATR_FORMAT_TRC).allowedTargets));
  EXPECT_TRUE(std::ranges::equal(file.getSupportedVersions(), formatOf(XLATR_FORMAT_TRC).supportedVersions));
}

TEST(TraceFileInfo, ofAMissingFileHasNoPathAndNoFormat) {
  const test::TempFolder folder;
  const TraceFileInfo file(folder.file("none.trc"));
  EXPECT_FALSE(file.getValid());
  EXPECT_EQ(file.getPath(), "");
  EXPECT_EQ(file.getSize(), 0U);
  EXPECT_EQ(file.getFormat(), XLATR_FORMAT_NONE);
  EXPECT_EQ(file.getFormatDescription(), "");
  EXPECT_TRUE(file.getSupportedConversions().empty());
  EXPECT_TRUE(file.getSupportedVersions().empty());
}

TEST(TraceFileInfo, countsAFolderAsNoFile) {
  const test::TempFolder folder;
  std::filesystem::create_directory(folder.path() / "folder.trc");
  EXPECT_FALSE(TraceFileInfo(folder.file("folder.trc")).getValid());
}

TEST(TraceFileInfo, keepsThePathOfAFileOfNoFormat) {
  const test::TempFolder folder;
  const TraceFileInfo file(folder.write("x.dat", "1"));
  EXPECT_FALSE(file.getValid());
  EXPECT_EQ(file.getPath(), folder.file("x.dat"));
  EXPECT_EQ(file.getSize(), 1U);
}

TEST(BaseTraceInfo, ofCsvHasNoTargets) {
  const BaseTraceInfo csv(XLATR_FORMAT_CSV);
  EXPECT_TRUE(csv.getSupportedConversions().empty());
  ASSERT_EQ(csv.getSupportedVersions().size(), 1U);
  EXPECT_EQ(csv.getSupportedVersions()[0], 1.0);
}

}  // namespace
}  // namespace xlatr
