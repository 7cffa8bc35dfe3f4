// The families of LIN traces, driven as a C++ client drives them.
#include <gtest/gtest.h>

#include <string>

#include "support/object_failures.hpp"
#include "support/object_families.hpp"
#include "support/object_text.hpp"
#include "support/temp_folder.hpp"
#include "xlatr/objects.h"

namespace xlatr::test {
namespace {

class LinObjectsTest : public testing::Test {
 protected:
  TempFolder folder_;
  std::string path_ = folder_.write(
      "x.ltrc", ";$FILEVERSION=1.1\n;$STARTTIME=44403.25\n5) 1000 Pub 2A 2 01 02 7C CL\n; a comment\nno frame here\n");
  const Owned<KorlInfoType> info_ = openInfo<KorlInfoType>(path_.c_str());
};

TEST(LinObjects, tellOfTheirFormatWithoutAnObject) {
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
  EXPECT_TRUE(KorlInfo_getValid(info_.get()));
  EXPECT_EQ(KorlInfo_GetVersion(info_.get()), 1.1);
}

TEST_F(LinObjectsTest, handOutFramesAndWhatIsNone) {
  const Owned<KorlReaderType> reader(KorlReader_Construct(info_.get()));
  ASSERT_TRUE(KorlReader_setActive(reader.get(), true));
  MessageLin* next = nullptr;
  ASSERT_TRUE(KorlReader_ReadNextMessage(reader.get(), &next));
  const Owned<MessageLinType> frame(next);
  EXPECT_TRUE(MessageLin_getValid(frame.get()));
  EXPECT_EQ(TEXT_OF(MessageLin, getParsingText, getParsingTextSize, frame.get()), "5) 1000 Pub 2A 2 01 02 7C CL");
  ASSERT_TRUE(KorlReader_ReadNextMessage(reader.get(), &next));
  const Owned<MessageLinType> other(next);
  EXPECT_FALSE(MessageLin_getValid(other.get()));
  EXPECT_EQ(TEXT_OF(MessageLin, getParsingText, getParsingTextSize, other.get()), "no frame here");
  EXPECT_FALSE(KorlReader_ReadNextMessage(reader.get(), &next));
}

TEST_F(LinObjectsTest, writeNoMessageOfALinTrace) {
  const Owned<KorlReaderType> reader(KorlReader_Construct(info_.get()));
  ASSERT_TRUE(KorlReader_setActive(reader.get(), true));
  MessageLin* next = nullptr;
  ASSERT_TRUE(KorlReader_ReadNextMessage(reader.get(), &next));
  const Owned<MessageLinType> frame(next);
  const Owned<KorlWriterType> writer(KorlWriter_Construct(folder_.file("y.ltrc").c_str(), false, 1.2));
  KorlWriter_setActive(writer.get(), true);
  EXPECT_EQ(processingFailureOf([&] { KorlWriter_WriteMessage(writer.get(), asMessage(frame.get())); }),
            "Object cannot be casted to any supported message trace");
}

TEST_F(LinObjectsTest, writeAHeaderAndComments) {
  Owned<KorlWriterType> writer(KorlWriter_Construct(folder_.file("y.ltrc").c_str(), false, 1.1));
  KorlWriter_setActive(writer.get(), true);
  KorlWriter_WriteHeader(writer.get(), asTraceInfo(info_.get()));
  KorlWriter_WriteComment(writer.get(), "a comment");
  writer.reset();
  const std::string written = folder_.read("y.ltrc");
  EXPECT_EQ(written.find(";$FILEVERSION=1.1\r\n;$STARTTIME=44403.25\r\n;\r\n;" + path_ + "\r\n"), 0U);
  EXPECT_TRUE(written.ends_with("\r\n;a comment\r\n"));
}

}  // namespace
}  // namespace xlatr::test
