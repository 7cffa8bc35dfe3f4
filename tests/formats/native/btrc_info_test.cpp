#include "formats/native/btrc_info.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <string>

#include "support/btrc_image.hpp"
#include "support/temp_folder.hpp"
#include "util/host.hpp"
#include "util/time_zone.hpp"

namespace xlatr {
namespace {

using namespace test::btrc;

class BtrcInfoTest : public testing::Test {
 protected:
  [[nodiscard]] BtrcInfo infoOf(const std::string& content, const char* name = "in.btrc") const {
    return BtrcInfo(folder_.write(name, content));
  }

  test::TempFolder folder_;
};

// 2026-11-21 13:14:15.987654 in days since 1899-12-30.
constexpr double kStartDays = 46347.0 + (13 * 3600 + 14 * 60 + 15.987654) / 86400.0;

TEST_F(BtrcInfoTest, readsTheHeadOfAFile) {
  const std::string path = folder_.write("in.btrc", filled(head()));
  const BtrcInfo info(path);
  EXPECT_TRUE(info.getValid());
  EXPECT_EQ(info.getVersion(), 1.0);
  EXPECT_EQ(info.getVersionText(), "1.0");
  EXPECT_EQ(info.getHeaderLength(), 32U);
  EXPECT_EQ(info.getFileSize(), 8192U);
  EXPECT_DOUBLE_EQ(info.getStartTime(), kStartDays);
  const BtrcFileHeader& header = info.GetHeader();
  EXPECT_TRUE(header.valid);
  EXPECT_FALSE(header.errorOnRtc);
  EXPECT_EQ(header.sourcePath, path);
  EXPECT_EQ(header.info.blockSize, 8);
  EXPECT_EQ(header.info.version, 1);
  EXPECT_EQ(header.info.timeScalingExponent, -6);
  EXPECT_EQ(header.firstFramePosition, 32U);
  EXPECT_EQ(header.systemTime, UnsignedMicroseconds(kStart));
  EXPECT_EQ(header.blockBytes(), 8192U);
  EXPECT_EQ(header.getRTCRawDataString(), "18 00 03 80 C6 29 66 22 C8 20 E3 00 EA 07 0B 15 0D 0E 0F 00 06 12 0F 00 ");
}

TEST_F(BtrcInfoTest, microsecondsBeyondASecondCountOn) {
  const std::string late =
      record(0x8003, number(5, 8) + number(2026, 2) + number(11, 1) + number(21, 1) + number(13, 1) + number(14, 1) +
                         number(12, 1) + number(0, 1) + number(3987654, 4));
  EXPECT_DOUBLE_EQ(infoOf(filled(info() + late)).getStartTime(), kStartDays);
}

TEST_F(BtrcInfoTest, dateIsLocalTime) {
  const ScopedTimeZone zone("XYZ-2");
  EXPECT_DOUBLE_EQ(infoOf(filled(head())).getStartTime(), kStartDays - 2.0 / 24);
}

TEST_F(BtrcInfoTest, fileOfVersion0IsNotValid) {
  const BtrcInfo read = infoOf(filled(info(0) + plainFrame(5)));
  EXPECT_FALSE(read.getValid());
  EXPECT_TRUE(read.GetHeader().valid);
  EXPECT_EQ(read.getVersion(), 0.0);
  EXPECT_EQ(read.getVersionText(), "");
  EXPECT_EQ(read.getStartTime(), 0.0);
  EXPECT_EQ(read.GetHeader().firstFramePosition, 8U);
  EXPECT_FALSE(infoOf(filled(info(2) + calibration())).getValid());
}

TEST_F(BtrcInfoTest, fileWithoutCalibrationBeganWhenItWasMade) {
  const std::string path = folder_.write("in.btrc", filled(info() + plainFrame(5)));
  const BtrcInfo info(path);
  EXPECT_TRUE(info.getValid());
  EXPECT_EQ(info.getHeaderLength(), 8U);
  EXPECT_EQ(info.GetHeader().systemTime, UnsignedMicroseconds(0U));
  EXPECT_FALSE(info.GetHeader().errorOnRtc);
  EXPECT_EQ(info.getStartTime(), getFileCreationTime(path).toOleDate());
  EXPECT_EQ(info.GetHeader().timeCalibration.header.type, RecordType::CanRxMsg) << "whatever was read";
}

TEST_F(BtrcInfoTest, impossibleDateIsAnErrorAndReplacedByTheTimeOfTheLastChange) {
  const std::string path = folder_.write("in.btrc", filled(info() + calibration(kStart, 13)));
  const timespec times[] = {{1000000000, 0}, {1000000000, 250000000}};
  ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  const BtrcInfo info(path);
  EXPECT_TRUE(info.getValid());
  EXPECT_TRUE(info.GetHeader().errorOnRtc);
  EXPECT_EQ(info.GetHeader().systemTime, UnsignedMicroseconds(0U));
  EXPECT_EQ(info.getHeaderLength(), 8U);
  EXPECT_DOUBLE_EQ(info.getStartTime(), (1000000000.25 + 2209161600.0) / 86400.0);
}

TEST_F(BtrcInfoTest, fieldsOfTheDateAreChecked) {
  const struct {
    unsigned year, month, day, hour, minute, second;
    bool possible;
  } cases[] = {{2026, 1, 1, 0, 0, 0, true},      {2026, 12, 31, 23, 59, 59, true}, {2026, 2, 31, 0, 0, 0, true},
               {2026, 0, 1, 0, 0, 0, false},     {2026, 13, 1, 0, 0, 0, false},    {2026, 1, 0, 0, 0, 0, false},
               {2026, 1, 32, 0, 0, 0, false},    {2026, 1, 1, 24, 0, 0, false},    {2026, 1, 1, 0, 60, 0, false},
               {2026, 1, 1, 0, 0, 60, false},    {1900, 1, 1, 0, 0, 0, true},      {1899, 12, 31, 0, 0, 0, false},
               {1899, 12, 30, 0, 0, 0, true},    {1899, 12, 30, 0, 0, 1, false},   {0, 1, 1, 0, 0, 0, false},
               {65535, 12, 31, 23, 59, 59, true}};
  for (const auto& test : cases) {
    const std::string date = record(0x8003, number(5, 8) + number(test.year, 2) + number(test.month, 1) +
                                                number(test.day, 1) + number(test.hour, 1) + number(test.minute, 1) +
                                                number(test.second, 1) + number(0, 1) + number(0, 4));
    const BtrcInfo read = infoOf(filled(info() + date));
    EXPECT_EQ(read.GetHeader().errorOnRtc, !test.possible)
        << test.year << "-" << test.month << "-" << test.day << " " << test.hour << ":" << test.minute;
    EXPECT_EQ(read.GetHeader().firstFramePosition, test.possible ? 32U : 8U);
    EXPECT_EQ(read.GetHeader().systemTime, UnsignedMicroseconds(test.possible ? 5U : 0U));
  }
}

void expectDefault(const BtrcFileHeader& header) {
  EXPECT_FALSE(header.valid);
  EXPECT_FALSE(header.errorOnRtc);
  EXPECT_EQ(header.info.header.size, 8);
  EXPECT_EQ(header.info.header.type, RecordType::Info);
  EXPECT_EQ(header.info.blockSize, 8);
  EXPECT_EQ(header.info.version, 0);
  EXPECT_EQ(header.info.timeScalingExponent, 0);
  EXPECT_EQ(header.firstFramePosition, 0U);
  EXPECT_EQ(header.systemTime, UnsignedMicroseconds(0U));
  EXPECT_EQ(header.startDateTime, DateTime());
  EXPECT_EQ(header.getRTCRawDataString(), "18 00 03 80 00 00 00 00 00 00 00 00 B2 07 01 01 00 00 00 00 00 00 00 00 ");
}

TEST_F(BtrcInfoTest, headerWithoutAPathIsTheDefault) {
  expectDefault(BtrcFileHeader());
  expectDefault(BtrcFileHeader(folder_.file("none.btrc")));
}

TEST_F(BtrcInfoTest, defaultDateIsThatOfSecond0InLocalTime) {
  const ScopedTimeZone zone("XYZ-2");
  EXPECT_EQ(BtrcFileHeader().getRTCRawDataString(),
            "18 00 03 80 00 00 00 00 00 00 00 00 B2 07 01 01 02 00 00 00 00 00 00 00 ");
}

TEST_F(BtrcInfoTest, fileShorterThanBothRecordsIsResetToTheDefault) {
  const std::string whole = head();
  for (std::size_t size = 0; size < whole.size(); ++size) {
    const BtrcInfo info = infoOf(whole.substr(0, size));
    EXPECT_FALSE(info.getValid()) << size;
    EXPECT_EQ(info.getVersion(), 0.0) << size;
    EXPECT_EQ(info.getHeaderLength(), 0U) << size;
    expectDefault(info.GetHeader());
  }
  EXPECT_TRUE(infoOf(whole).getValid());
}

TEST_F(BtrcInfoTest, fileThatBeginsWithAnotherRecordIsNotValid) {
  const BtrcInfo read = infoOf(filled(record(0x8001, number(16, 2) + number(1, 1) + number(7, 1)) + calibration()));
  EXPECT_FALSE(read.getValid());
  EXPECT_FALSE(read.GetHeader().valid);
  EXPECT_EQ(read.getHeaderLength(), 0U);
  EXPECT_EQ(read.GetHeader().info.blockSize, 16) << "as it was read";
  EXPECT_EQ(read.GetHeader().firstFramePosition, 0U);
}

TEST_F(BtrcInfoTest, fileOfAnotherNameIsNotLookedAt) {
  const BtrcInfo info = infoOf(filled(head()), "in.trc");
  EXPECT_FALSE(info.getValid());
  EXPECT_FALSE(info.GetHeader().valid);
  EXPECT_EQ(info.getVersion(), 0.0);
  EXPECT_TRUE(BtrcFileHeader(folder_.file("in.trc")).valid) << "but by the header itself";
}

TEST_F(BtrcInfoTest, knowsItsFormat) {
  const BtrcInfo info = infoOf(filled(head()));
  EXPECT_EQ(info.getCurrentVersion(), 1.0);
  EXPECT_EQ(info.getSupportedVersions().size(), 1U);
  EXPECT_EQ(info.getSupportedVersions()[0], 1.0);
  ASSERT_EQ(info.getAllowedConvertions().size(), 3U);
  EXPECT_EQ(info.getAllowedConvertions()[0], 1U);
  EXPECT_EQ(info.getAllowedConvertions()[1], 4U);
  EXPECT_EQ(info.getAllowedConvertions()[2], 16U);
}

}  // namespace
}  // namespace xlatr
