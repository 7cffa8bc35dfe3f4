// The families of LIN traces, driven as a C++ client drives them.
#include <gtest/gtest.h>

#include <string>

#include "support/object_text.hpp"
#include "support/processing_failure.hpp"
#include "support/temp_folder.hpp"
#include "xlatr/failures.hpp"
#include "xlatr/objects.h"

namespace xlatr::test {
namespace {

class LinObjectsTest : public testing::Test {
 protected:
  ~LinObjectsTest() override {
    KorlInfo_Destruct(info_);
    TraceFileInfo_Destruct(file_);
  }

  TempFolder folder_;
  std::string path_ = folder_.write(
      "x.ltrc", ";$FILEVERSION=1.1\n;$STARTTIME=44403.25\n5) 1000 Pub 2A 2 01 02 7C CL\n; a comment\nno frame here\n");
  TraceFileInfo* file_ = TraceFileInfo_Construct(path_.c_str());
  KorlInfo* info_ = KorlInfo_Construct(file_);
};

TEST(LinObjects, ignoreNullInDestruct) {
  KorlInfo_Destruct(nullptr);
  KorlReader_Destruct(nullptr);
  KorlWriter_Destruct(nullptr);
  MessageLin_Destruct(nullptr);
}

TEST(LinObjects, refuseNullEverywhereElse) {
  const std::string expected = "Object cannot be null";
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(KorlInfo_Construct(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(KorlInfo_getValid(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(KorlReader_Construct(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([] { KorlWriter_setActive(nullptr, true); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(MessageLin_getValid(nullptr)); }), expected);
}

TEST(LinObjects, answerForTheirFormatWithoutAnObject) {
  EXPECT_EQ(textOf(KorlInfo_getFormatDescriptionSize(), KorlInfo_getFormatDescription), "KORL trace file");
  EXPECT_EQ(textOf(KorlInfo_GetExtensionSize(), KorlInfo_GetExtension), ".ltrc");
  EXPECT_EQ(KorlInfo_GetCurrentVersion(), 1.2);
  ASSERT_EQ(KorlInfo_GetAllowedConvertionsSize(), 2U);
  EXPECT_EQ(KorlInfo_GetAllowedConvertions()[0], XLATR_FORMAT_ASC);
  EXPECT_EQ(KorlInfo_GetAllowedConvertions()[1], XLATR_FORMAT_CSV);
  ASSERT_EQ(KorlInfo_GetSupportedVersionsSize(), 3U);
  EXPECT_EQ(KorlInfo_GetSupportedVersions()[0], 1.0);
  EXPECT_EQ(KorlInfo_GetSupportedVersions()[2], 1.2);
}

TEST_F(LinObjectsTest, tellOfTheHeader) {
  EXPECT_TRUE(KorlInfo_getValid(info_));
  EXPECT_EQ(KorlInfo_GetVersion(info_), 1.1);
  EXPECT_EQ(KorlInfo_getStartTime(info_), 44403.25);
  EXPECT_EQ(TEXT_OF(KorlInfo, getPath, getPathSize, info_), path_);
}

TEST_F(LinObjectsTest, handOutMessagesThatTheCallerOwns) {
  KorlReader* const reader = KorlReader_Construct(info_);
  EXPECT_EQ(TEXT_OF(KorlInfo, getPath, getPathSize, KorlReader_getTrace(reader)), path_);
  MessageLin* frame = nullptr;
  EXPECT_FALSE(KorlReader_ReadNextMessage(reader, &frame));
  EXPECT_EQ(frame, nullptr);
  ASSERT_TRUE(KorlReader_setActive(reader, true));
  MessageLin* other = nullptr;
  ASSERT_TRUE(KorlReader_ReadNextMessage(reader, &frame));
  ASSERT_TRUE(KorlReader_ReadNextMessage(reader, &other));
  EXPECT_FALSE(KorlReader_ReadNextMessage(reader, &other));
  EXPECT_EQ(KorlReader_getPercentDone(reader), 100.0);
  EXPECT_FALSE(KorlReader_setActive(reader, false));
  KorlReader_Destruct(reader);
  EXPECT_TRUE(MessageLin_getValid(frame));
  EXPECT_EQ(TEXT_OF(MessageLin, getParsingText, getParsingTextSize, frame), "5) 1000 Pub 2A 2 01 02 7C CL");
  EXPECT_FALSE(MessageLin_getValid(other));
  EXPECT_EQ(TEXT_OF(MessageLin, getParsingText, getParsingTextSize, other), "no frame here");

  KorlWriter* const writer = KorlWriter_Construct(folder_.file("y.ltrc").c_str(), false, 1.2);
  KorlWriter_setActive(writer, true);
  EXPECT_EQ(processingFailureOf([&] { KorlWriter_WriteMessage(writer, reinterpret_cast<const IMessage*>(frame)); }),
            "Object cannot be casted to any supported message trace");
  KorlWriter_Destruct(writer);
  MessageLin_Destruct(frame);
  MessageLin_Destruct(other);
}

TEST_F(LinObjectsTest, keepWhatTheirSettersSet) {
  KorlWriter* const writer = KorlWriter_Construct("a.ltrc", true, 1.1);
  EXPECT_EQ(KorlWriter_getTargetFormat(writer), XLATR_FORMAT_LIN);
  EXPECT_EQ(KorlWriter_getOwnerBus(writer), -1);
  KorlWriter_setTargetPath(writer, "b.ltrc");
  KorlWriter_setOverrideExistingFile(writer, false);
  KorlWriter_setTargetVersion(writer, 1.0);
  KorlWriter_setOwnerBus(writer, 5);
  KorlWriter_setSourcePath(writer, "s.blf");
  EXPECT_EQ(TEXT_OF(KorlWriter, getSourcePath, getSourcePathSize, writer), "s.blf");
  KorlWriter* const fresh = KorlWriter_CreateNew(writer);
  EXPECT_EQ(TEXT_OF(KorlWriter, getTargetPath, getTargetPathSize, fresh), "b.ltrc");
  EXPECT_FALSE(KorlWriter_getOverrideExistingFile(fresh));
  EXPECT_EQ(KorlWriter_getTargetVersion(fresh), 1.0);
  EXPECT_EQ(KorlWriter_getOwnerBus(fresh), 5);
  EXPECT_EQ(TEXT_OF(KorlWriter, getSourcePath, getSourcePathSize, fresh), "");
  KorlWriter_Destruct(fresh);
  KorlWriter_Destruct(writer);
}

TEST_F(LinObjectsTest, writeAHeaderAndComments) {
  KorlWriter* const writer = KorlWriter_Construct(folder_.file("y.ltrc").c_str(), false, 1.1);
  KorlWriter_setActive(writer, true);
  EXPECT_TRUE(KorlWriter_getActive(writer));
  KorlWriter_WriteHeader(writer, reinterpret_cast<const ITraceInfo*>(info_));
  KorlWriter_WriteComment(writer, "a comment");
  EXPECT_EQ(processingFailureOf([writer] { KorlWriter_setTargetVersion(writer, 1.2); }),
            "Cannot change property value when object is active");
  KorlWriter_setActive(writer, false);
  KorlWriter_Destruct(writer);
  const std::string written = folder_.read("y.ltrc");
  EXPECT_EQ(written.find(";$FILEVERSION=1.1\r\n;$STARTTIME=44403.25\r\n;\r\n;" + path_ + "\r\n"), 0U);
  EXPECT_TRUE(written.ends_with("\r\n;a comment\r\n"));
}

}  // namespace
}  // namespace xlatr::test
