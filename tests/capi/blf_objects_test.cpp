// The families of BLF logs, driven as a C++ client drives them, with a copy of the library that has a stand-in for the
// converter beside it.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/blf_stand_in.hpp"
#include "support/object_failures.hpp"
#include "support/object_text.hpp"
#include "support/temp_folder.hpp"
#include "xlatr/objects.h"

namespace xlatr::test {
namespace {

// The converter beside the library does what the source file says, which is a script.
const std::string kConverter = XLATR_STAND_IN;

class BlfObjectsTest : public testing::Test {
 protected:
  BlfObjectsTest() { std::filesystem::create_directory(temporary_); }
  ~BlfObjectsTest() override {
    BlfReader_Destruct(reader_);
    BlfInfo_Destruct(info_);
    TraceFileInfo_Destruct(file_);
    EXPECT_TRUE(std::filesystem::is_empty(temporary_));
  }

  // A log whose conversion runs these commands, with "$2" as the table to write; $table is a finished one.
  void makeReader(const std::string& conversion) {
    const std::string path = folder_.write("x.blf", "table=" + folder_.write("table", kConverterTable) +
                                                        "\ncase $1 in\n-GetFileVersion) echo 4080203 ;;\n"
                                                        "-GetObjectsCount) echo 3 ;;\n*) " +
                                                        conversion + " ;;\nesac\n");
    file_ = TraceFileInfo_Construct(path.c_str());
    info_ = BlfInfo_Construct(file_);
    reader_ = BlfReader_Construct(info_, temporary_.c_str());
  }
  void readyToRead() {
    makeReader(R"(cp "$table" "$2")");
    ASSERT_TRUE(BlfReader_setActive(reader_, true));
    BlfReader_InitializePhaseThreePrepareCsvReader(reader_, waitForConverter());
  }
  std::int32_t waitForConverter() {
    std::int32_t exitCode = 0;
    while (!BlfReader_InitializePhaseTwoWaitBlfToCsv(reader_, &exitCode)) {
      EXPECT_EQ(exitCode, -1);
    }
    return exitCode;
  }

  TempFolder folder_;
  const std::string temporary_ = folder_.file("temporary");
  TraceFileInfo* file_ = nullptr;
  BlfInfo* info_ = nullptr;
  BlfReader* reader_ = nullptr;
};

TEST(BlfObjects, ignoreNullInDestruct) {
  BlfInfo_Destruct(nullptr);
  BlfReader_Destruct(nullptr);
  BlfMessage_Destruct(nullptr);
}

TEST(BlfObjects, refuseNullEverywhereElse) {
  const std::string expected = "Object cannot be null";
  std::int32_t exitCode = 0;
  BlfMessage* message = nullptr;
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(BlfInfo_Construct(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(BlfReader_Construct(nullptr, "")); }), expected);
  EXPECT_EQ(processingFailureOf([&] { static_cast<void>(BlfReader_ReadNextMessage(nullptr, &message)); }), expected);
  EXPECT_EQ(processingFailureOf([&] { BlfReader_InitializePhaseTwoWaitBlfToCsv(nullptr, &exitCode); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(BlfMessage_isBlfCANType(nullptr)); }), expected);
}

TEST(BlfObjects, tellOfTheirFormatWithoutAnObject) {
  EXPECT_EQ(textOf(BlfInfo_getFormatDescriptionSize(), BlfInfo_getFormatDescription), "Vector BLF trace file");
  EXPECT_EQ(textOf(BlfInfo_GetExtensionSize(), BlfInfo_GetExtension), ".blf");
  ASSERT_EQ(BlfInfo_GetAllowedConvertionsSize(), 3U);
  EXPECT_EQ(BlfInfo_GetAllowedConvertions()[0], XLATR_FORMAT_CSV);
  EXPECT_EQ(BlfInfo_GetAllowedConvertions()[1], XLATR_FORMAT_TRC);
  EXPECT_EQ(BlfInfo_GetAllowedConvertions()[2], XLATR_FORMAT_LIN);
  ASSERT_EQ(BlfInfo_GetSupportedVersionsSize(), 1U);
  EXPECT_EQ(BlfInfo_GetSupportedVersions()[0], 0.0);
}

// One asks each time, the other asked once.
TEST(BlfObjects, askTheConverterForTheCurrentVersion) {
  EXPECT_EQ(BlfInfo_GetCurrentVersion(), 4.0701);
  EXPECT_EQ(BaseTraceInfo_GetTraceCurrentVersion(XLATR_FORMAT_BLF), 4.0701);
  std::filesystem::rename(kConverter, kConverter + ".away");
  EXPECT_EQ(BlfInfo_GetCurrentVersion(), 0.0);
  EXPECT_EQ(BaseTraceInfo_GetTraceCurrentVersion(XLATR_FORMAT_BLF), 4.0701);
  std::filesystem::rename(kConverter + ".away", kConverter);
}

TEST_F(BlfObjectsTest, tellOfTheLog) {
  makeReader("exit 0");
  EXPECT_TRUE(BlfInfo_getValid(info_));
  EXPECT_DOUBLE_EQ(BlfInfo_GetVersion(info_), 4.080203);
  EXPECT_EQ(BlfInfo_getStartTime(info_), 0.0);
  EXPECT_EQ(TEXT_OF(BlfInfo, getPath, getPathSize, info_), folder_.file("x.blf"));
  EXPECT_EQ(TEXT_OF(BlfInfo, getPath, getPathSize, BlfReader_getTrace(reader_)), folder_.file("x.blf"));
}

TEST_F(BlfObjectsTest, handOutMessagesThatTheCallerOwns) {
  readyToRead();
  EXPECT_EQ(BlfReader_getCSVInfoStartTime(reader_), 44403.25);
  BlfMessage* messages[3] = {};
  for (BlfMessage*& message : messages) {
    ASSERT_TRUE(BlfReader_ReadNextMessage(reader_, &message));
  }
  BlfMessage* untouched = messages[0];
  EXPECT_FALSE(BlfReader_ReadNextMessage(reader_, &untouched));
  EXPECT_EQ(untouched, messages[0]);
  EXPECT_EQ(processingFailureOf([this] { static_cast<void>(BlfReader_ReadNextMessage(reader_, nullptr)); }),
            "Object cannot be null");
  EXPECT_EQ(BlfReader_getPercentDone(reader_), 50.0);
  EXPECT_FALSE(BlfReader_setActive(reader_, false));
  EXPECT_TRUE(BlfMessage_getValid(messages[0]));
  EXPECT_EQ(BlfMessage_getBus(messages[0]), 2U);
  EXPECT_TRUE(BlfMessage_isBlfCANType(messages[0]));
  EXPECT_EQ(TEXT_OF(BlfMessage, getAsCommentary, getAsCommentarySize, messages[0]), "BLF Object Type 1");
  EXPECT_FALSE(BlfMessage_isBlfCANType(messages[1]));
  EXPECT_FALSE(BlfMessage_getValid(messages[2]));
  EXPECT_EQ(TEXT_OF(BlfMessage, getAsCommentary, getAsCommentarySize, messages[2]), "BLF Object Type 2 not-understood");
  for (BlfMessage* const message : messages) {
    BlfMessage_Destruct(message);
  }
}

TEST_F(BlfObjectsTest, writeEveryTargetOfALog) {
  readyToRead();
  TrcWriter* const trace = TrcWriter_Construct(folder_.file("y.trc").c_str(), false, 2.1);
  CsvWriter* const table = CsvWriter_Construct(folder_.file("y.csv").c_str(), false, 1.0);
  KorlWriter* const lin = KorlWriter_Construct(folder_.file("y.ltrc").c_str(), false, 1.2);
  TrcWriter_setActive(trace, true);
  CsvWriter_setActive(table, true);
  KorlWriter_setActive(lin, true);
  for (BlfMessage* message = nullptr; BlfReader_ReadNextMessage(reader_, &message);) {
    const auto* const any = reinterpret_cast<const IMessage*>(message);
    TrcWriter_WriteMessage(trace, any);
    CsvWriter_WriteMessage(table, any);
    KorlWriter_WriteMessage(lin, any);
    BlfMessage_Destruct(message);
  }
  TrcWriter_Destruct(trace);
  CsvWriter_Destruct(table);
  KorlWriter_Destruct(lin);
  EXPECT_EQ(folder_.read("y.trc"), "      1         1.000 DT     0123 Rx 2    AA BB\r\n;BLF Object Type 57 (LIN)\r\n");
  EXPECT_EQ(folder_.read("y.csv"),
            "1;1.000;2;Rx;DT;0123;-;2;AA;BB\r\n2;2.500;1;Tx;DT;002A;-;1;CC\r\n3;0.000;1;None;Unknown;0000;-;0;\r\n");
  EXPECT_EQ(folder_.read("y.ltrc"),
            ";BLF Object Type 1 (CAN)\r\n     1)             2500   Pub   2A  1  CC                      7C  EH  \r\n"
            ";BLF Object Type 2 not-understood (CAN)\r\n");
}

TEST_F(BlfObjectsTest, letTheFailureOfAConverterOut) {
  makeReader("exit 5");
  ASSERT_TRUE(BlfReader_setActive(reader_, true));
  const std::int32_t exitCode = waitForConverter();
  EXPECT_EQ(exitCode, 5);
  EXPECT_EQ(processingFailureOf([&] { BlfReader_InitializePhaseThreePrepareCsvReader(reader_, exitCode); }),
            "Error while converting BLF to temporary CSV 5");
}

TEST_F(BlfObjectsTest, askAConverterToStop) {
  makeReader(R"sh(
    until test "$(od -An -tu2 -j2 -N2 /dev/shm/"$3" 2> /dev/null || echo 0)" -eq 1; do sleep 0.01; done
    exit 2)sh");
  EXPECT_FALSE(BlfReader_KillBlfToCsv(reader_));
  ASSERT_TRUE(BlfReader_setActive(reader_, true));
  EXPECT_TRUE(BlfReader_KillBlfToCsv(reader_));
  EXPECT_EQ(waitForConverter(), 2);
}

TEST_F(BlfObjectsTest, refuseAFolderThatIsTooLong) {
  makeReader("exit 0");
  BlfReader* const reader = BlfReader_Construct(info_, std::string(250, 'd').c_str());
  EXPECT_EQ(processingFailureOf([&] { static_cast<void>(BlfReader_setActive(reader, true)); }),
            "Cannot get temporary file. Check path length.");
  BlfReader_Destruct(reader);
}

}  // namespace
}  // namespace xlatr::test
