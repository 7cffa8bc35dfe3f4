// The object families, driven as a C++ client drives them.
#include "xlatr/objects.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

#include "capi/c_frame.h"
#include "support/object_failures.hpp"
#include "support/object_text.hpp"
#include "support/temp_folder.hpp"

namespace xlatr::test {
namespace {

constexpr char kFrozen[] = "Cannot change property value when object is active";

TEST(Objects, ignoreNullInDestruct) {
  TraceFileInfo_Destruct(nullptr);
}

TEST(Objects, refuseNullEverywhereElse) {
  const std::string expected = "Object cannot be null";
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(TraceFileInfo_getSize(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(MessageCan_getBus(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(CsvInfo_getValid(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([] { CsvWriter_setSeparator(nullptr, ","); }), expected);
}

TEST(Objects, refuseAnObjectOfAnotherFamily) {
  const std::string expected = "Object is of another class";
  TrcWriter* const writer = TrcWriter_Construct("x.trc", false, 1.2);
  auto* const cast = reinterpret_cast<CsvWriter*>(writer);
  EXPECT_EQ(processingFailureOf([cast] { CsvWriter_setSeparator(cast, ","); }), expected);
  TrcWriter_Destruct(writer);
  TrcInfo* const info = TrcInfo_Construct_2("x.trc");
  const auto* const castInfo = reinterpret_cast<const CsvInfo*>(info);
  EXPECT_EQ(processingFailureOf([castInfo] { static_cast<void>(CsvInfo_getValid(castInfo)); }), expected);
  EXPECT_EQ(processingFailureOf([castInfo] { static_cast<void>(CsvInfo_GetVersion(castInfo)); }), expected);
  EXPECT_EQ(processingFailureOf([castInfo] { static_cast<void>(CsvInfo_getStartTime(castInfo)); }), expected);
  EXPECT_EQ(processingFailureOf([castInfo] { static_cast<void>(CsvInfo_getPathSize(castInfo)); }), expected);
  char path[8] = "";
  EXPECT_EQ(processingFailureOf([&] { CsvInfo_getPath(castInfo, path, sizeof path); }), expected);
  EXPECT_STREQ(path, "");
  TrcInfo_Destruct(info);
}

TEST(BaseTraceInfoExports, describeFormatsByFlag) {
  const struct {
    TraceFormat format;
    std::string extension;
    std::string description;
    double version;
    bool convertible;
  } cases[] = {
      {1, ".trc", "BRIX trace file", 3.0, true},
      {2, ".btr", "BRIX-Bridge Pro - Binary trace file", 3.0, true},
      {4, ".asc", "CANalyzer ASCII logging file", 15.0, true},
      {8, ".ltrc", "KORL trace file", 1.2, true},
      {16, ".csv", "Character-separated values", 1.0, false},
      {32, ".btrc", "ZELK binary trace file", 1.0, true},
      {64, ".mf4", "ASAM Measurement Data Format", 4.2, true},
      {128, ".blf", "Vector BLF trace file", BlfInfo_GetCurrentVersion(), true},  // the converter's to tell
      {0, "", "", -1.0, false},
      {3, "", "", -1.0, false},
      {0x40000000, "", "", -1.0, false},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.format);
    char extension[16];
    BaseTraceInfo_GetTraceExtension(test.format, extension, sizeof extension);
    EXPECT_EQ(extension, test.extension);
    EXPECT_EQ(TEXT_OF(BaseTraceInfo, GetTraceFormatDescription, GetTraceFormatDescriptionSize, test.format),
              test.description);
    EXPECT_EQ(BaseTraceInfo_GetTraceCurrentVersion(test.format), test.version);
    EXPECT_EQ(BaseTraceInfo_GetIfConvertible(test.format), test.convertible);
  }
}

TEST(BaseTraceInfoExports, tellTheVersionsOfAFormatByFlag) {
  const auto versionsOf = [](TraceFormat format) {
    const double* const first = BaseTraceInfo_GetTraceSupportedVersions(format);
    return std::vector<double>(first, first + BaseTraceInfo_GetTraceSupportedVersionsSize(format));
  };
  EXPECT_EQ(versionsOf(XLATR_FORMAT_TRC), (std::vector<double>{1.0, 1.1, 1.2, 1.3, 2.0, 2.1, 3.0}));
  EXPECT_EQ(versionsOf(XLATR_FORMAT_MF4), (std::vector<double>{4.1, 4.11, 4.2}));
  EXPECT_EQ(versionsOf(XLATR_FORMAT_CSV), std::vector<double>{1.0});
  for (const TraceFormat none : {0, 3, 0x40000000}) {
    EXPECT_EQ(BaseTraceInfo_GetTraceSupportedVersions(none), nullptr) << none;
    EXPECT_EQ(versionsOf(none), std::vector<double>{}) << none;
  }
}

TEST(BaseTraceInfoExports, tellWhichTargetsBecomeOneFilePerBus) {
  for (const double version : {-1.0, 0.9, 1.0, 1.05, 1.1, 2.0}) {
    EXPECT_TRUE(BaseTraceInfo_GetIfSplitByBus(XLATR_FORMAT_TRC, version)) << version;
  }
  for (const double version : {1.15, 1.2, 1.3, 1.5, 2.05, 2.1, 2.5, 3.0, 4.0, std::nan("")}) {
    EXPECT_FALSE(BaseTraceInfo_GetIfSplitByBus(XLATR_FORMAT_TRC, version)) << version;
  }
  for (const TraceFormat other : {2, 4, 8, 16, 32, 64, 128, 0, 3}) {
    EXPECT_FALSE(BaseTraceInfo_GetIfSplitByBus(other, 1.0)) << other;
  }
}

TEST(BaseTraceInfoExports, tellWhichSourcesBecomeOneTargetPerSession) {
  for (const TraceFormat format : {0, 1, 2, 3, 4, 8, 16, 32, 64, 128}) {
    EXPECT_EQ(BaseTraceInfo_GetIfSplitBySession(format), format == XLATR_FORMAT_BTR) << format;
  }
}

class ObjectsTest : public testing::Test {
 protected:
  TempFolder folder_;
  std::string path_ = folder_.write("x.trc", ";$FILEVERSION=1.2\n;$STARTTIME=44403.25\n1) 10.5 3 Rx 0123 1 AA\nbad\n");
};

TEST_F(ObjectsTest, traceFileInfoTellsOfTheFile) {
  TraceFileInfo* const file = TraceFileInfo_Construct(path_.c_str());
  EXPECT_TRUE(TraceFileInfo_getValid(file));
  EXPECT_EQ(TraceFileInfo_getSize(file), 18U + 21U + 23U + 4U);
  EXPECT_EQ(TEXT_OF(TraceFileInfo, getPath, getPathSize, file), path_);
  EXPECT_EQ(TEXT_OF(TraceFileInfo, ToString, getToStringSize, file), path_);
  const auto* const base = reinterpret_cast<const BaseTraceInfo*>(file);
  EXPECT_EQ(BaseTraceInfo_getFormat(base), XLATR_FORMAT_TRC);
  EXPECT_EQ(TEXT_OF(BaseTraceInfo, getFormatDescription, getFormatDescriptionSize, base), "BRIX trace file");
  ASSERT_EQ(BaseTraceInfo_getSupportedConversionsSize(base), 6U);
  EXPECT_EQ(BaseTraceInfo_getSupportedConversions(base)[3], XLATR_FORMAT_BTR);
  ASSERT_EQ(BaseTraceInfo_getSupportedVersionsSize(base), 7U);
  EXPECT_EQ(BaseTraceInfo_getSupportedVersions(base)[6], 3.0);
  TraceFileInfo_Destruct(file);
}

TEST_F(ObjectsTest, traceFileInfoOfNoFileIsNotValid) {
  for (const char* const path : {static_cast<const char*>(nullptr), "", "none.trc"}) {
    TraceFileInfo* const file = TraceFileInfo_Construct(path);
    EXPECT_FALSE(TraceFileInfo_getValid(file));
    EXPECT_EQ(TraceFileInfo_getSize(file), 0U);
    EXPECT_EQ(TEXT_OF(TraceFileInfo, getPath, getPathSize, file), "");
    TraceFileInfo_Destruct(file);
  }
}

TEST_F(ObjectsTest, trcInfoTellsOfTheHeader) {
  TraceFileInfo* const file = TraceFileInfo_Construct(path_.c_str());
  for (TrcInfo* const info : {TrcInfo_Construct(file), TrcInfo_Construct_2(path_.c_str())}) {
    EXPECT_TRUE(TrcInfo_getValid(info));
    EXPECT_EQ(TrcInfo_GetVersion(info), 1.2);
    EXPECT_EQ(TrcInfo_getStartTime(info), 44403.25);
    EXPECT_EQ(TEXT_OF(TrcInfo, getPath, getPathSize, info), path_);
    TrcInfo_Destruct(info);
  }
  TraceFileInfo_Destruct(file);
}

TEST_F(ObjectsTest, trcInfoTellsOfItsFormatWithoutAnObject) {
  EXPECT_EQ(textOf(TrcInfo_getFormatDescriptionSize(), TrcInfo_getFormatDescription), "BRIX trace file");
  EXPECT_EQ(textOf(TrcInfo_GetExtensionSize(), TrcInfo_GetExtension), ".trc");
  EXPECT_EQ(TrcInfo_GetCurrentVersion(), 3.0);
  ASSERT_EQ(TrcInfo_GetAllowedConvertionsSize(), 6U);
  EXPECT_EQ(TrcInfo_GetAllowedConvertions()[0], XLATR_FORMAT_TRC);
  EXPECT_EQ(TrcInfo_GetAllowedConvertions()[5], XLATR_FORMAT_MF4);
  ASSERT_EQ(TrcInfo_GetSupportedVersionsSize(), 7U);
  EXPECT_EQ(TrcInfo_GetSupportedVersions()[1], 1.1);
}

TEST_F(ObjectsTest, trcReaderHandsOutMessagesThatTheCallerOwns) {
  TrcInfo* const info = TrcInfo_Construct_2(path_.c_str());
  TrcReader* const reader = TrcReader_Construct(info);
  TrcInfo_Destruct(info);
  EXPECT_EQ(TEXT_OF(TrcInfo, getPath, getPathSize, TrcReader_getTrace(reader)), path_);

  MessageCan* message = nullptr;
  EXPECT_FALSE(TrcReader_ReadNextMessage(reader, &message));
  EXPECT_EQ(message, nullptr);
  EXPECT_TRUE(TrcReader_setActive(reader, true));
  ASSERT_TRUE(TrcReader_ReadNextMessage(reader, &message));
  EXPECT_TRUE(MessageCan_getValid(message));
  EXPECT_EQ(MessageCan_getBus(message), 3U);
  EXPECT_TRUE(MessageCan_ValidateForTargetVersion(message, 2.0));
  EXPECT_FALSE(MessageCan_ValidateForTargetVersion(message, 2.5));
  EXPECT_EQ(TEXT_OF(MessageCan, getParsingText, getParsingTextSize, message), "1) 10.5 3 Rx 0123 1 AA");
  MessageCan* second = nullptr;
  ASSERT_TRUE(TrcReader_ReadNextMessage(reader, &second));
  EXPECT_FALSE(MessageCan_getValid(second));
  EXPECT_EQ(TEXT_OF(MessageCan, getParsingText, getParsingTextSize, second), "bad");
  EXPECT_EQ(TrcReader_getPercentDone(reader), 100.0);
  MessageCan* const untouched = second;
  EXPECT_FALSE(TrcReader_ReadNextMessage(reader, &second));
  EXPECT_EQ(second, untouched);
  EXPECT_FALSE(TrcReader_setActive(reader, false));
  TrcReader_Destruct(reader);
  EXPECT_EQ(MessageCan_getBus(message), 3U);  // a message outlives its reader
  MessageCan_Destruct(message);
  MessageCan_Destruct(second);
}

TEST_F(ObjectsTest, trcWriterWritesAWholeFile) {
  TrcInfo* const info = TrcInfo_Construct_2(path_.c_str());
  TrcReader* const reader = TrcReader_Construct(info);
  const std::string target = folder_.file("y.trc");
  TrcWriter* const writer = TrcWriter_Construct(target.c_str(), false, 1.2);
  ASSERT_TRUE(TrcReader_setActive(reader, true));
  TrcWriter_setActive(writer, true);
  EXPECT_TRUE(TrcWriter_getActive(writer));
  TrcWriter_WriteHeader(writer, reinterpret_cast<const ITraceInfo*>(info));
  TrcWriter_WriteComment(writer, "a comment");
  MessageCan* message = nullptr;
  ASSERT_TRUE(TrcReader_ReadNextMessage(reader, &message));
  TrcWriter_WriteMessage(writer, reinterpret_cast<const IMessage*>(message));
  MessageCan_Destruct(message);
  TrcWriter_setActive(writer, false);
  TrcWriter_Destruct(writer);
  TrcReader_Destruct(reader);
  TrcInfo_Destruct(info);
  const std::string written = folder_.read("y.trc");
  EXPECT_EQ(written.find(";$FILEVERSION=1.2\r\n;$STARTTIME=44403.25\r\n"), 0U);
  EXPECT_TRUE(written.ends_with("\r\n;a comment\r\n     1)       10.500  3  Rx         0123  1  AA\r\n")) << written;
}

TEST(CsvInfoExports, tellOfTheFormatWithoutAnObject) {
  EXPECT_EQ(textOf(CsvInfo_getFormatDescriptionSize(), CsvInfo_getFormatDescription), "Character-separated values");
  EXPECT_EQ(textOf(CsvInfo_GetExtensionSize(), CsvInfo_GetExtension), ".csv");
  EXPECT_EQ(CsvInfo_GetCurrentVersion(), 1.0);
  EXPECT_EQ(CsvInfo_GetAllowedConvertionsSize(), 0U);
  static_cast<void>(CsvInfo_GetAllowedConvertions());
  ASSERT_EQ(CsvInfo_GetSupportedVersionsSize(), 1U);
  EXPECT_EQ(CsvInfo_GetSupportedVersions()[0], 1.0);
}

TEST_F(ObjectsTest, aNewCsvWriterHasTheSeparatorOfANewOne) {
  CsvWriter* const writer = CsvWriter_Construct(folder_.file("a.csv").c_str(), true, 1.0);
  CsvWriter_setSeparator(writer, ",");
  CsvWriter* const fresh = CsvWriter_CreateNew(writer);
  CsvWriter_setActive(fresh, true);
  TrcInfo* const info = TrcInfo_Construct_2(path_.c_str());
  CsvWriter_WriteHeader(fresh, reinterpret_cast<const ITraceInfo*>(info));
  TrcInfo_Destruct(info);
  CsvWriter_Destruct(fresh);
  CsvWriter_Destruct(writer);
  const std::string written = folder_.read("a.csv");
  EXPECT_NE(written.find("D0;"), std::string::npos) << written;
}

TEST_F(ObjectsTest, csvWriterWritesAWholeTable) {
  TrcInfo* const info = TrcInfo_Construct_2(path_.c_str());
  TrcReader* const reader = TrcReader_Construct(info);
  CsvWriter* const writer = CsvWriter_Construct(folder_.file("y.csv").c_str(), false, 1.0);
  ASSERT_TRUE(TrcReader_setActive(reader, true));
  CsvWriter_setSeparator(writer, ",");
  CsvWriter_setActive(writer, true);
  EXPECT_TRUE(CsvWriter_getActive(writer));
  EXPECT_EQ(processingFailureOf([writer] { CsvWriter_setSeparator(writer, "#"); }), kFrozen);
  CsvWriter_WriteHeader_2(writer, reinterpret_cast<const ITraceInfo*>(info), 44404.5);
  CsvWriter_WriteComment(writer, "a comment");
  MessageCan* message = nullptr;
  ASSERT_TRUE(TrcReader_ReadNextMessage(reader, &message));
  CsvWriter_WriteMessage(writer, reinterpret_cast<const IMessage*>(message));
  MessageCan_Destruct(message);
  CsvWriter_setActive(writer, false);
  CsvWriter_Destruct(writer);
  TrcReader_Destruct(reader);
  TrcInfo_Destruct(info);
  const std::string written = folder_.read("y.csv");
  EXPECT_TRUE(written.starts_with("$STARTTIME=44404.5\r\n")) << written;
  EXPECT_TRUE(written.ends_with(",,D...\r\na comment\r\n1,10.500,3,Rx,DT,0123,-,-,-,-,-,-,1,AA\r\n")) << written;
}

TEST(ConverterLastErrorExports, keepTheLaterTextOfEachThread) {
  EXPECT_EQ(processingFailureOf([] { TrcWriter_setActive(nullptr, true); }), "Object cannot be null");
  TrcWriter* const writer = TrcWriter_Construct("", false, 1.2);
  EXPECT_EQ(processingFailureOf([writer] { TrcWriter_setActive(writer, true); }),
            "Value cannot be null or empty - TargetPath");
  EXPECT_EQ(lastError(), "Value cannot be null or empty - TargetPath");
  std::thread([writer] {
    EXPECT_EQ(lastError(), "");
    EXPECT_EQ(processingFailureOf([writer] { TrcWriter_WriteComment(writer, "x"); }), "Writer is not initialized");
  }).join();
  EXPECT_EQ(lastError(), "Value cannot be null or empty - TargetPath");
  EXPECT_EQ(lastErrorOf(0), "");
  char one[1] = {'#'};
  ConverterLastError_GetText(static_cast<std::uint32_t>(::gettid()), one, 1);
  EXPECT_EQ(one[0], '\0');
  TrcWriter_Destruct(writer);
}

TEST_F(ObjectsTest, aFailurePassesThroughAFunctionInC) {
  TrcWriter* const writer = TrcWriter_Construct(folder_.file("y.trc").c_str(), false, 1.2);
  int returned = 0;
  set_target_path_in_c(writer, folder_.file("z.trc").c_str(), &returned);
  EXPECT_EQ(returned, 1);
  TrcWriter_setActive(writer, true);
  EXPECT_EQ(processingFailureOf([&] { set_target_path_in_c(writer, "x", &returned); }), kFrozen);
  EXPECT_EQ(returned, 1);
  TrcWriter_Destruct(writer);
}

TEST(Objects, failuresAreCaughtAsTheirBaseClasses) {
  EXPECT_THROW(TrcWriter_setActive(nullptr, true), ConverterProcessingException);
  EXPECT_THROW(TrcWriter_setActive(nullptr, true), ConverterGenericException);
  EXPECT_THROW(TrcWriter_setActive(nullptr, true), std::exception);
}

}  // namespace
}  // namespace xlatr::test
