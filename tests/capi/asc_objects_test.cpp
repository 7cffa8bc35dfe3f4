// The families of ASC logs, driven as a C++ client drives them.
#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>

#include "support/object_failures.hpp"
#include "support/object_families.hpp"
#include "support/object_text.hpp"
#include "support/temp_folder.hpp"
#include "xlatr/objects.h"

namespace xlatr::test {
namespace {

class AscObjectsTest : public testing::Test {
 protected:
  TempFolder folder_;
  std::string path_ =
      folder_.write("x.asc",
                    "date Mon Jul 26 06:00:00.000 2021\nbase hex  timestamps relative\n// version 7.0.0\n"
                    "0.1 3 100 Rx d 1 AA\nno frame here\n0.2 3 100 Rx d 0\n");
  Owned<AscInfoType> info_ = openInfo<AscInfoType>(path_.c_str());
};

TEST(AscObjects, refuseNullEverywhereElse) {
  const std::string expected = "Object cannot be null";
  double reference = 0.0;
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(AscInfo_Construct(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(MessageAsc_getBus(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([&] { static_cast<void>(MessageAsc_AdjustTime(nullptr, &reference)); }), expected);
}

TEST(AscObjects, tellOfTheirFormatWithoutAnObject) {
  EXPECT_EQ(textOf(AscInfo_getFormatDescriptionSize(), AscInfo_getFormatDescription), "CANalyzer ASCII logging file");
  EXPECT_EQ(textOf(AscInfo_GetExtensionSize(), AscInfo_GetExtension), ".asc");
  EXPECT_EQ(AscInfo_GetCurrentVersion(), 15.0);
  ASSERT_EQ(AscInfo_GetAllowedConvertionsSize(), 2U);
  EXPECT_EQ(AscInfo_GetAllowedConvertions()[0], XLATR_FORMAT_TRC);
  EXPECT_EQ(AscInfo_GetAllowedConvertions()[1], XLATR_FORMAT_CSV);
  ASSERT_EQ(AscInfo_GetSupportedVersionsSize(), 10U);
  EXPECT_EQ(AscInfo_GetSupportedVersions()[0], 0.0);
  EXPECT_EQ(AscInfo_GetSupportedVersions()[9], 15.0);
}

TEST_F(AscObjectsTest, tellOfTheHead) {
  EXPECT_TRUE(AscInfo_getValid(info_.get()));
  EXPECT_EQ(AscInfo_GetVersion(info_.get()), 7.0);
  EXPECT_EQ(AscInfo_getStartTime(info_.get()), 44403.25);
  EXPECT_EQ(TEXT_OF(AscInfo, getPath, getPathSize, info_.get()), path_);
}

TEST_F(AscObjectsTest, handOutMessagesThatTheCallerOwns) {
  AscReader* const reader = AscReader_Construct(info_.get());
  EXPECT_EQ(TEXT_OF(AscInfo, getPath, getPathSize, AscReader_getTrace(reader)), path_);
  MessageAsc* first = nullptr;
  EXPECT_FALSE(AscReader_ReadNextMessage(reader, &first));
  EXPECT_EQ(first, nullptr);
  ASSERT_TRUE(AscReader_setActive(reader, true));
  MessageAsc* second = nullptr;
  MessageAsc* third = nullptr;
  ASSERT_TRUE(AscReader_ReadNextMessage(reader, &first));
  ASSERT_TRUE(AscReader_ReadNextMessage(reader, &second));
  ASSERT_TRUE(AscReader_ReadNextMessage(reader, &third));
  MessageAsc* untouched = third;
  EXPECT_FALSE(AscReader_ReadNextMessage(reader, &untouched));
  EXPECT_EQ(untouched, third);
  EXPECT_EQ(AscReader_getPercentDone(reader), 100.0);
  EXPECT_FALSE(AscReader_setActive(reader, false));
  AscReader_Destruct(reader);

  EXPECT_TRUE(MessageAsc_getValid(first));
  EXPECT_EQ(MessageAsc_getBus(first), 3U);
  EXPECT_EQ(TEXT_OF(MessageAsc, getParsingText, getParsingTextSize, first), "0.1 3 100 Rx d 1 AA");
  EXPECT_FALSE(MessageAsc_getValid(second));
  EXPECT_EQ(TEXT_OF(MessageAsc, getParsingText, getParsingTextSize, second), "no frame here");
  double reference = 0.0;
  EXPECT_TRUE(MessageAsc_AdjustTime(first, &reference));
  EXPECT_EQ(reference, 0.1);
  EXPECT_TRUE(MessageAsc_AdjustTime(third, &reference));
  EXPECT_DOUBLE_EQ(reference, 0.3);
  EXPECT_EQ(processingFailureOf([&] { static_cast<void>(MessageAsc_AdjustTime(first, nullptr)); }),
            "Object cannot be null");
  MessageAsc_Destruct(first);
  MessageAsc_Destruct(second);
  MessageAsc_Destruct(third);
}

TEST_F(AscObjectsTest, letTheFailureOfAShortLineOut) {
  const std::string path = folder_.write("short.asc", "// version 7.0.0\nsecond line\n0.1 3\n");
  TraceFileInfo* const file = TraceFileInfo_Construct(path.c_str());
  AscInfo* const info = AscInfo_Construct(file);
  AscReader* const reader = AscReader_Construct(info);
  ASSERT_TRUE(AscReader_setActive(reader, true));
  MessageAsc* message = nullptr;
  ASSERT_TRUE(AscReader_ReadNextMessage(reader, &message));
  MessageAsc_Destruct(message);
  message = nullptr;
  EXPECT_THROW(static_cast<void>(AscReader_ReadNextMessage(reader, &message)), std::out_of_range);
  EXPECT_EQ(message, nullptr);
  AscReader_Destruct(reader);
  AscInfo_Destruct(info);
  TraceFileInfo_Destruct(file);
}

TEST_F(AscObjectsTest, writeAFileFromATrcMessage) {
  const std::string source =
      folder_.write("s.trc", ";$FILEVERSION=1.2\n;$STARTTIME=44403.25\n1) 10.5 3 Rx 0123 1 AA\n");
  TrcInfo* const trace = TrcInfo_Construct_2(source.c_str());
  TrcReader* const reader = TrcReader_Construct(trace);
  ASSERT_TRUE(TrcReader_setActive(reader, true));
  MessageCan* message = nullptr;
  ASSERT_TRUE(TrcReader_ReadNextMessage(reader, &message));
  AscWriter* const writer = AscWriter_Construct(folder_.file("y.asc").c_str(), false, 7.0);
  AscWriter_setActive(writer, true);
  EXPECT_TRUE(AscWriter_getActive(writer));
  AscWriter_WriteHeader_2(writer, reinterpret_cast<const ITraceInfo*>(trace), 44403.25);
  AscWriter_WriteComment(writer, "a comment");
  AscWriter_WriteMessage(writer, reinterpret_cast<const IMessage*>(message));
  EXPECT_EQ(processingFailureOf([writer] { AscWriter_setTargetVersion(writer, 8.0); }),
            "Cannot change property value when object is active");
  AscWriter_setActive(writer, false);
  AscWriter_Destruct(writer);
  MessageCan_Destruct(message);
  TrcReader_Destruct(reader);
  TrcInfo_Destruct(trace);
  EXPECT_EQ(folder_.read("y.asc"),
            "date Mon Jul 26 06:00:00.000 2021\r\nbase hex  timestamps absolute\r\nno internal events logged\r\n"
            "// version 7.0.0\r\n// a comment\r\n   0.010500 3  123             Rx   d 1 AA\r\n");
}

}  // namespace
}  // namespace xlatr::test
