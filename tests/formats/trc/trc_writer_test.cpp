#include "formats/trc/trc_writer.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <ios>
#include <iterator>

#include <string>

#include "formats/asc/asc_message.hpp"
#include "formats/trc/trc_header.hpp"
#include "formats/trc/trc_info.hpp"
#include "formats/trc/trc_version.hpp"
#include "support/temp_folder.hpp"
#include "support/writer_stubs.hpp"

namespace xlatr {
namespace {

using test::failureOf;
using test::ForeignMessage;
using test::StubInfo;

BrixMessage frame() {
  BrixMessage message;
  message.parseLine("1) 10.5 3 Rx 0123 1 AA", findTrcVersion(1.2), 0);
  return message;
}

class TrcWriterTest : public testing::Test {
 protected:
  test::TempFolder folder_;
};

TEST_F(TrcWriterTest, hasItsDefaults) {
  const TrcWriter writer;
  EXPECT_EQ(writer.getTargetVersion(), 2.1);
  EXPECT_EQ(writer.getOwnerBus(), -1);
  EXPECT_FALSE(writer.getOverrideExistingFile());
  EXPECT_EQ(writer.getTargetFormat(), XLATR_FORMAT_TRC);
  EXPECT_EQ(writer.getExtension(), ".trc");
  EXPECT_FALSE(writer.getActive());
}

TEST_F(TrcWriterTest, numbersLinesFrom1) {
  TrcWriter writer(folder_.file("x.trc"), false, 1.2);
  writer.setActive(true);
  writer.WriteMessage(frame());
  writer.WriteMessage(frame());
  writer.setActive(false);
  EXPECT_EQ(folder_.read("x.trc"),
            "     1)       10.500  3  Rx         0123  1  AA\r\n"
            "     2)       10.500  3  Rx         0123  1  AA\r\n");
}

TEST_F(TrcWriterTest, startsAgainAt1WhenItIsOpenedAgain) {
  TrcWriter writer(folder_.file("x.trc"), true, 1.2);
  for (int round = 0; round < 2; ++round) {
    writer.setActive(true);
    writer.WriteMessage(frame());
    writer.setActive(false);
    EXPECT_EQ(folder_.read("x.trc"), "     1)       10.500  3  Rx         0123  1  AA\r\n");
  }
}

TEST_F(TrcWriterTest, givesNoNumberToAMessageWithoutText) {
  TrcWriter writer(folder_.file("x.trc"), false, 1.2);
  writer.setActive(true);
  writer.WriteMessage(BrixMessage());
  writer.WriteMessage(frame());
  writer.setActive(false);
  EXPECT_EQ(folder_.read("x.trc"), "     1)       10.500  3  Rx         0123  1  AA\r\n");
}

TEST_F(TrcWriterTest, givesANumberToAMappedMessageWithoutText) {
  TrcWriter writer(folder_.file("x.trc"), false, 1.2);
  writer.setActive(true);
  AscMessage mapped;
  writer.WriteMessage(mapped);
  mapped.parseLine("0.5 2 123 Rx d 1 AA", 7.0);
  writer.WriteMessage(mapped);
  writer.WriteMessage(frame());
  writer.setActive(false);
  EXPECT_EQ(folder_.read("x.trc"),
            "     2)      500.000  2  Rx         0123  1  AA\r\n"
            "     3)       10.500  3  Rx         0123  1  AA\r\n");
}

TEST_F(TrcWriterTest, putsASemicolonBeforeACommentThatHasNone) {
  TrcWriter writer(folder_.file("x.trc"), false, 1.2);
  writer.setActive(true);
  writer.WriteComment("text");
  writer.WriteComment(";text");
  writer.WriteComment(" ;text");
  writer.WriteComment("");
  writer.setActive(false);
  EXPECT_EQ(folder_.read("x.trc"), ";text\r\n;text\r\n; ;text\r\n;\r\n");
}

TEST_F(TrcWriterTest, writesNothingOfAVersionThatItDoesNotKnow) {
  TrcWriter writer(folder_.file("x.trc"), false, 2.2);
  writer.setActive(true);
  writer.WriteHeader(StubInfo("x.trc"));
  writer.WriteMessage(frame());
  AscMessage mapped;
  mapped.parseLine("0.5 2 123 Rx d 1 AA", 7.0);
  ASSERT_TRUE(mapped.getValid());
  writer.WriteMessage(mapped);
  writer.setActive(false);
  EXPECT_EQ(folder_.read("x.trc"), "");
}

TEST_F(TrcWriterTest, writesTheHeaderThatTheVersionPrintsAs) {
  EXPECT_EQ(findTrcHeaderVersion(1.0), findTrcVersion(1.0));
  EXPECT_EQ(findTrcHeaderVersion(2.1), findTrcVersion(2.1));
  EXPECT_EQ(findTrcHeaderVersion(2.08), findTrcVersion(2.1));
  EXPECT_EQ(findTrcHeaderVersion(2.96), findTrcVersion(3.0));
  for (const double unknown : {0.0, 1.4, 2.2, 3.1, -1.0, 1e300}) {
    EXPECT_EQ(findTrcHeaderVersion(unknown), nullptr) << unknown;
  }
}

TEST_F(TrcWriterTest, writesNoHeaderForASourceThatIsNotValid) {
  TrcWriter writer(folder_.file("x.trc"), false, 2.1);
  writer.setActive(true);
  writer.WriteHeader(StubInfo("x.trc", false));
  writer.setActive(false);
  EXPECT_EQ(folder_.read("x.trc"), "");
}

TEST_F(TrcWriterTest, printsWithTheMessagesColumnsWhenItWroteNoHeader) {
  TrcWriter writer(folder_.file("x.trc"), false, 2.1);
  writer.setActive(true);
  BrixMessage message;
  message.parseLine("10.5 DT 3 0123 Rx 1 AA", findTrcVersion(2.1), trc_column::kBus | trc_column::kDirection);
  writer.WriteMessage(message);
  writer.setActive(false);
  EXPECT_EQ(folder_.read("x.trc"), "       10.500 DT 3  Rx 1    AA\r\n");
}

TEST_F(TrcWriterTest, writesTheStartTimeItIsGiven) {
  TrcWriter writer(folder_.file("x.trc"), false, 1.1);
  writer.setActive(true);
  writer.WriteHeader_2(StubInfo("s.trc"), 44404.5);
  writer.setActive(false);
  const std::string header = folder_.read("x.trc");
  EXPECT_NE(header.find(";$STARTTIME=44404.5\r\n"), std::string::npos) << header;
  EXPECT_NE(header.find(";   Start time: 27.07.2021 12:00:00.000\r\n"), std::string::npos) << header;
  EXPECT_NE(header.find(";   Data imported from s.trc\r\n"), std::string::npos) << header;
}

TEST_F(TrcWriterTest, listsTheBusesOfALoggersFileByItsExactExtension) {
  const struct {
    const char* source;
    bool listed;
  } cases[] = {{"a.btr", true}, {"a.BTR", false}, {"a.trc", false}, {"a.btr.trc", false}};
  for (const auto& test : cases) {
    for (const double version : {1.3, 2.0, 2.1, 3.0}) {
      TrcWriter writer(folder_.file("x.trc"), true, version);
      writer.setActive(true);
      writer.WriteHeader(StubInfo(test.source));
      writer.setActive(false);
      const std::string header = folder_.read("x.trc");
      EXPECT_EQ(header.find(";   Bus  Name         Connection  Protocol\r\n"
                            ";   1    BRIX-BRIDGE  Channel-0   CAN\r\n"
                            ";   2    BRIX-BRIDGE  Channel-1   CAN\r\n"
                            ";   3    BRIX-BRIDGE  Channel-2   CAN\r\n"
                            ";   4    BRIX-BRIDGE  Channel-3   CAN\r\n"
                            ";   5    BRIX-BRIDGE  Virtual     CAN\r\n") != std::string::npos,
                test.listed)
          << test.source << " in " << version;
      EXPECT_EQ(header.find(";   N/A") == std::string::npos, test.listed) << test.source << " in " << version;
    }
  }
}

TEST_F(TrcWriterTest, writesTheHeaderOfALoggersFileByteForByte) {
  const std::filesystem::path golden = XLATR_GOLDEN_DIR "/trc-trc/header";
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder_.path());  // so that the header names the target as the golden file does
  for (const std::string version : {"1.3", "2.0", "2.1", "3.0"}) {
    TrcWriter writer("out.trc", true, std::stod(version));
    writer.setActive(true);
    writer.WriteHeader(StubInfo("logger.btr", true, 43525.6041724653));
    writer.setActive(false);
    std::ifstream expected(golden / ("to-" + version) / "of-a-logger.trc", std::ios::binary);
    ASSERT_TRUE(expected) << version;
    EXPECT_EQ(folder_.read("out.trc"), std::string(std::istreambuf_iterator<char>(expected), {})) << version;
  }
  std::filesystem::current_path(before);
}

TEST_F(TrcWriterTest, refusesAMessageOfAClassThatItDoesNotKnow) {
  TrcWriter writer(folder_.file("x.trc"), false, 2.1);
  writer.setActive(true);
  EXPECT_EQ(failureOf([&] { writer.WriteMessage(ForeignMessage()); }),
            "Object cannot be casted to any supported message trace");
}

TEST_F(TrcWriterTest, writesNothingBeforeItIsActive) {
  TrcWriter writer(folder_.file("x.trc"), false, 2.1);
  EXPECT_EQ(failureOf([&] { writer.WriteHeader(StubInfo("s.trc")); }), "Writer is not initialized");
  EXPECT_EQ(failureOf([&] { writer.WriteHeader_2(StubInfo("s.trc"), 1.0); }), "Writer is not initialized");
  EXPECT_EQ(failureOf([&] { writer.WriteComment("text"); }), "Writer is not initialized");
  EXPECT_EQ(failureOf([&] { writer.WriteMessage(frame()); }), "Writer is not initialized");
  EXPECT_FALSE(folder_.has("x.trc"));
}

TEST_F(TrcWriterTest, makesANewWriterOfItsProperties) {
  TrcWriter writer(folder_.file("x.trc"), true, 1.3);
  writer.setOwnerBus(7);
  writer.setSourcePath("s.trc");
  writer.setActive(true);
  const auto fresh = writer.CreateNew();
  EXPECT_FALSE(fresh->getActive());
  EXPECT_EQ(fresh->getTargetPath(), folder_.file("x.trc"));
  EXPECT_TRUE(fresh->getOverrideExistingFile());
  EXPECT_EQ(fresh->getTargetVersion(), 1.3);
  EXPECT_EQ(fresh->getOwnerBus(), 7);
  EXPECT_EQ(fresh->getSourcePath(), "");
  EXPECT_EQ(fresh->getTargetFormat(), XLATR_FORMAT_TRC);
}

// What every writer does with its target path, shown on this one -----------------------------------------------------

TEST_F(TrcWriterTest, checksTheTargetPathInOrder) {
  const std::string existing = folder_.write("there.trc", "kept");
  TrcWriter writer;
  EXPECT_EQ(failureOf([&] { writer.setActive(true); }), "Value cannot be null or empty - TargetPath");
  writer.setTargetPath(existing);
  writer.setSourcePath(existing);
  EXPECT_EQ(failureOf([&] { writer.setActive(true); }), "File already exists - TargetPath");
  writer.setOverrideExistingFile(true);
  EXPECT_EQ(failureOf([&] { writer.setActive(true); }),
            "Source and target paths match. Target file cannot be overridden - SourcePath/TargetPath");
  EXPECT_FALSE(writer.getActive());
  EXPECT_EQ(folder_.read("there.trc"), "kept");
  const std::string longPath(260, 'x');
  writer.setTargetPath(longPath);
  writer.setSourcePath(longPath);
  EXPECT_EQ(failureOf([&] { writer.setActive(true); }),
            "Source and target paths match. Target file cannot be overridden - SourcePath/TargetPath");
  writer.setSourcePath("");
  EXPECT_EQ(failureOf([&] { writer.setActive(true); }), "Target path too long (260). Maximum allowed is 260.");
}

TEST_F(TrcWriterTest, comparesSourceAndTargetWithoutRegardToCase) {
  TrcWriter writer("c:\\a\\x.trc", true);
  writer.setSourcePath("C:\\A\\X.TRC");
  EXPECT_EQ(failureOf([&] { writer.setActive(true); }),
            "Source and target paths match. Target file cannot be overridden - SourcePath/TargetPath");
}

TEST_F(TrcWriterTest, takesATargetPathOf259Characters) {
  const std::string folder = folder_.path().string() + "/" + std::string(200 - folder_.path().string().size(), 'd');
  std::filesystem::create_directory(folder);
  const std::string path = folder + "/" + std::string(259 - folder.size() - 1, 'x');
  ASSERT_EQ(path.size(), 259U);
  TrcWriter writer(path);
  writer.setActive(true);
  EXPECT_TRUE(writer.getActive());
  TrcWriter longer(path + "x");
  EXPECT_EQ(failureOf([&] { longer.setActive(true); }), "Target path too long (260). Maximum allowed is 260.");
  EXPECT_FALSE(std::filesystem::exists(path + "x"));
}

TEST_F(TrcWriterTest, raisesTheSystemsReasonWhenTheFileCannotBeMade) {
  TrcWriter writer(folder_.file("none/x.trc"));
  try {
    writer.setActive(true);
    FAIL() << "made a file in a folder that is not there";
  } catch (const std::ios_base::failure& failure) {
    EXPECT_EQ(failure.what(), folder_.file("none/x.trc") + ": cannot create: No such file or directory");
  }
  EXPECT_FALSE(writer.getActive());
}

TEST_F(TrcWriterTest, freezesItsPropertiesWhileActive) {
  const std::string frozen = "Cannot change property value when object is active";
  TrcWriter writer(folder_.file("x.trc"), false, 2.1);
  writer.setActive(true);
  EXPECT_EQ(failureOf([&] { writer.setTargetPath("y"); }), frozen);
  EXPECT_EQ(failureOf([&] { writer.setTargetVersion(3.0); }), frozen);
  EXPECT_EQ(failureOf([&] { writer.setOverrideExistingFile(true); }), frozen);
  EXPECT_EQ(failureOf([&] { writer.setOwnerBus(1); }), frozen);
  EXPECT_EQ(writer.getTargetPath(), folder_.file("x.trc"));
  EXPECT_EQ(writer.getTargetVersion(), 2.1);
  EXPECT_FALSE(writer.getOverrideExistingFile());
  EXPECT_EQ(writer.getOwnerBus(), -1);
  writer.setSourcePath("s.trc");
  EXPECT_EQ(writer.getSourcePath(), "s.trc");
  writer.setActive(false);
  writer.setTargetVersion(3.0);
  EXPECT_EQ(writer.getTargetVersion(), 3.0);
}

TEST_F(TrcWriterTest, handsItsLinesToTheSystemAfterThe201st) {
  TrcWriter writer(folder_.file("x.trc"), false, 1.2);
  writer.setActive(true);
  for (int line = 1; line <= 200; ++line) {
    writer.WriteComment("c");
  }
  EXPECT_EQ(folder_.read("x.trc"), "");
  writer.WriteComment("c");
  EXPECT_EQ(folder_.read("x.trc").size(), 201U * 4);
  writer.WriteComment("c");
  EXPECT_EQ(folder_.read("x.trc").size(), 201U * 4);
  writer.flush();
  EXPECT_EQ(folder_.read("x.trc").size(), 202U * 4);
}

TEST_F(TrcWriterTest, closesInItsDestructor) {
  {
    TrcWriter writer(folder_.file("x.trc"), false, 1.2);
    writer.setActive(true);
    writer.WriteComment("c");
  }
  EXPECT_EQ(folder_.read("x.trc"), ";c\r\n");
}

TEST_F(TrcWriterTest, mayBeClosedWithoutEverBeingOpen) {
  TrcWriter writer(folder_.file("x.trc"));
  writer.setActive(false);
  EXPECT_FALSE(folder_.has("x.trc"));
}

}  // namespace
}  // namespace xlatr
