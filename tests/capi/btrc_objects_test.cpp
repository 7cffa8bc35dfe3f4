// The families of BTRC traces, driven as a C++ client drives them.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "support/btrc_image.hpp"
#include "support/object_failures.hpp"
#include "support/object_families.hpp"
#include "support/object_text.hpp"
#include "support/temp_folder.hpp"
#include "xlatr/objects.h"

namespace xlatr::test {
namespace {

using namespace btrc;

class BtrcObjectsTest : public testing::Test {
 protected:
  TempFolder folder_;
  std::string path_ = folder_.write(
      "x.btrc", filled(head() + plainFrame(kStart + 5, 3) + record(0x8002, "text")) + filled(counter(0, 2, 2)));
  Owned<BtrcInfoType> info_ = openInfo<BtrcInfoType>(path_.c_str());
};

TEST(BtrcObjects, refuseNullEverywhereElse) {
  const std::string expected = "Object cannot be null";
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(BtrcInfo_Construct(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(BtrcInfo_GetHeader(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(BtrcFileHeader_getVersion(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([] { BtrcReader_SkipCurrentBlock(nullptr, nullptr, 0); }), expected);
  EXPECT_EQ(processingFailureOf([] { BtrcWriter_WriteComment(nullptr, ""); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(MessageBinaryFD_getBus(nullptr)); }), expected);
}

TEST(BtrcObjects, tellOfTheirFormatWithoutAnObject) {
  EXPECT_EQ(textOf(BtrcInfo_getFormatDescriptionSize(), BtrcInfo_getFormatDescription), "ZELK binary trace file");
  EXPECT_EQ(textOf(BtrcInfo_GetExtensionSize(), BtrcInfo_GetExtension), ".btrc");
  EXPECT_EQ(BtrcInfo_GetCurrentVersion(), 1.0);
  ASSERT_EQ(BtrcInfo_GetSupportedVersionsSize(), 1U);
  EXPECT_EQ(BtrcInfo_GetSupportedVersions()[0], 1.0);
  ASSERT_EQ(BtrcInfo_GetAllowedConvertionsSize(), 3U);
  EXPECT_EQ(BtrcInfo_GetAllowedConvertions()[0], XLATR_FORMAT_TRC);
  EXPECT_EQ(BtrcInfo_GetAllowedConvertions()[1], XLATR_FORMAT_ASC);
  EXPECT_EQ(BtrcInfo_GetAllowedConvertions()[2], XLATR_FORMAT_CSV);
}

constexpr char kCalibrationBytes[] = "18 00 03 80 C6 29 66 22 C8 20 E3 00 EA 07 0B 15 0D 0E 0F 00 06 12 0F 00 ";

TEST_F(BtrcObjectsTest, tellOfTheHead) {
  EXPECT_TRUE(BtrcInfo_GetValid(info_.get()));
  EXPECT_EQ(BtrcInfo_GetVersion(info_.get()), 1.0);
  EXPECT_NEAR(BtrcInfo_getStartTime(info_.get()), 46347.5515739, 1e-6);
  EXPECT_EQ(TEXT_OF(BtrcInfo, getPath, getPathSize, info_.get()), path_);
  const BtrcFileHeader* const header = BtrcInfo_GetHeader(info_.get());
  EXPECT_TRUE(BtrcFileHeader_getValid(header));
  EXPECT_FALSE(BtrcFileHeader_getErrorOnRTC(header));
  EXPECT_EQ(BtrcFileHeader_getSystemTime(header), kStart);
  EXPECT_EQ(BtrcFileHeader_getBlockSize(header), 8U);
  EXPECT_EQ(BtrcFileHeader_getVersion(header), 1U);
  EXPECT_EQ(BtrcFileHeader_getTimeScalingExponent(header), -6);
  EXPECT_EQ(BtrcFileHeader_getFirstFramePosition(header), 32U);
  EXPECT_EQ(TEXT_OF(BtrcFileHeader, getSourcePath, getSourcePathSize, header), path_);
  EXPECT_EQ(TEXT_OF(BtrcFileHeader, getRTCRawDataString, getRTCRawDataStringSize, header), kCalibrationBytes);
}

TEST_F(BtrcObjectsTest, readAHeadByItsPathAlone) {
  BtrcFileHeader* const bad =
      BtrcFileHeader_Construct(folder_.write("bad", filled(info() + calibration(kStart, 13))).c_str());
  EXPECT_TRUE(BtrcFileHeader_getValid(bad));
  EXPECT_TRUE(BtrcFileHeader_getErrorOnRTC(bad));
  EXPECT_EQ(BtrcFileHeader_getFirstFramePosition(bad), 8U);
  BtrcFileHeader_Destruct(bad);
  BtrcFileHeader* const none = BtrcFileHeader_Construct(nullptr);
  EXPECT_FALSE(BtrcFileHeader_getValid(none));
  EXPECT_EQ(BtrcFileHeader_getBlockSize(none), 8U);
  EXPECT_EQ(BtrcFileHeader_getTimeScalingExponent(none), 0);
  BtrcFileHeader_Destruct(none);
  BtrcFileHeader_Destruct(nullptr);
}

TEST_F(BtrcObjectsTest, handOutMessagesThatTheCallerOwns) {
  BtrcReader* const reader = BtrcReader_Construct(info_.get());
  EXPECT_EQ(TEXT_OF(BtrcInfo, getPath, getPathSize, BtrcReader_getTrace(reader)), path_);
  MessageBinaryFD* frame = nullptr;
  EXPECT_FALSE(BtrcReader_ReadNextMessage(reader, &frame));
  EXPECT_EQ(frame, nullptr);
  ASSERT_TRUE(BtrcReader_setActive(reader, true));
  MessageBinaryFD* text = nullptr;
  MessageBinaryFD* totals = nullptr;
  ASSERT_TRUE(BtrcReader_ReadNextMessage(reader, &frame));
  ASSERT_TRUE(BtrcReader_ReadNextMessage(reader, &text));
  char report[100];
  BtrcReader_SkipCurrentBlock(reader, report, sizeof report);
  EXPECT_STREQ(report, "Block Size: 8192 | Old position: 64 | New position 8192 | 8128 bytes advanced");
  ASSERT_TRUE(BtrcReader_ReadNextMessage(reader, &totals));
  BtrcReader_SkipCurrentBlock(reader, report, 6);
  EXPECT_STREQ(report, "Block");
  MessageBinaryFD* untouched = totals;
  EXPECT_FALSE(BtrcReader_ReadNextMessage(reader, &untouched));
  EXPECT_EQ(untouched, totals);
  EXPECT_GT(BtrcReader_getPercentDone(reader), 50.0);
  EXPECT_FALSE(BtrcReader_setActive(reader, false));
  BtrcReader_Destruct(reader);

  EXPECT_TRUE(MessageBinaryFD_getValid(frame));
  EXPECT_EQ(MessageBinaryFD_getBus(frame), 3U);
  EXPECT_TRUE(MessageBinaryFD_ValidateForTargetVersion(frame, 1.1));
  EXPECT_FALSE(MessageBinaryFD_ValidateForTargetVersion(frame, 2.5));
  EXPECT_EQ(TEXT_OF(MessageBinaryFD, getParsingBytesString, getParsingBytesStringSize, frame),
            "18 00 01 00 CB 29 66 22 C8 20 E3 00 03 04 00 00 23 01 00 00 01 02 03 04");
  EXPECT_EQ(TEXT_OF(MessageBinaryFD, getCommentary, getCommentarySize, frame), "");
  EXPECT_FALSE(MessageBinaryFD_getValid(text));
  EXPECT_EQ(TEXT_OF(MessageBinaryFD, getCommentary, getCommentarySize, text), "text");
  EXPECT_FALSE(MessageBinaryFD_ValidateForTargetVersion(text, 2.1));
  EXPECT_EQ(TEXT_OF(MessageBinaryFD, getCommentary, getCommentarySize, totals),
            "Records counter --> Total records: 2 - Total messages: 2");
  MessageBinaryFD_Destruct(frame);
  MessageBinaryFD_Destruct(text);
  MessageBinaryFD_Destruct(totals);
}

TEST_F(BtrcObjectsTest, writeAFileFromATrcMessage) {
  const std::string source =
      folder_.write("s.trc", ";$FILEVERSION=1.2\n;$STARTTIME=46347.25\n1) 10.5 3 Rx 0123 1 AA\n");
  TrcInfo* const trace = TrcInfo_Construct_2(source.c_str());
  TrcReader* const reader = TrcReader_Construct(trace);
  ASSERT_TRUE(TrcReader_setActive(reader, true));
  MessageCan* message = nullptr;
  ASSERT_TRUE(TrcReader_ReadNextMessage(reader, &message));
  BtrcWriter* const writer = BtrcWriter_Construct(folder_.file("y.btrc").c_str(), false, 0.0);
  const auto* const anyMessage = reinterpret_cast<const IMessage*>(message);
  EXPECT_EQ(failureTextOf<ConverterParsingException>([&] { BtrcWriter_WriteMessage(writer, anyMessage); }),
            "Writer is not initialized");
  BtrcWriter_setActive(writer, true);
  EXPECT_TRUE(BtrcWriter_getActive(writer));
  BtrcWriter_WriteHeader(writer, reinterpret_cast<const ITraceInfo*>(trace));
  BtrcWriter_WriteHeader_2(writer, reinterpret_cast<const ITraceInfo*>(trace), 46347.25);
  BtrcWriter_WriteComment(writer, "note");
  BtrcWriter_WriteMessage(writer, anyMessage);
  EXPECT_EQ(processingFailureOf([&] { BtrcWriter_setTargetVersion(writer, 1.0); }),
            "Cannot change property value when object is active");
  BtrcWriter_setActive(writer, false);
  BtrcWriter_Destruct(writer);
  MessageCan_Destruct(message);
  TrcReader_Destruct(reader);
  TrcInfo_Destruct(trace);
  EXPECT_EQ(folder_.read("y.btrc"),
            filled(info(0) + record(0x8002, "note") +
                   received(1, 10500, frameInfo(2, 1, 0, 0x123), std::string("\xAA\0\0\0", 4))));
}

}  // namespace
}  // namespace xlatr::test
