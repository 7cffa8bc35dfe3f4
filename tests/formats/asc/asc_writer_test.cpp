#include "formats/asc/asc_writer.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>

#include "formats/asc/asc_info.hpp"
#include "formats/lin/lin_message.hpp"
#include "formats/trc/trc_message.hpp"
#include "formats/trc/trc_version.hpp"
#include "support/temp_folder.hpp"
#include "support/writer_stubs.hpp"

namespace xlatr {
namespace {

using test::failureOf;
using test::ForeignMessage;
using test::StubInfo;

BrixMessage frame(std::string_view line = "10.5 DT 3 0123 Rx - 1 AA") {
  BrixMessage message;
  message.parseLine(line, findTrcVersion(3.0), kTrcColumns21 & ~trc_column::kNumber);
  EXPECT_TRUE(message.valid) << line;
  return message;
}

const std::string kHead7 =
    "date Mon Jul 26 06:00:00.000 2021\r\nbase hex  timestamps absolute\r\nno internal events logged\r\n"
    "// version 7.0.0\r\n";
const std::string kHead8 =
    "date Mon Jul 26 06:00:00.000 2021\r\nbase hex  timestamps absolute\r\nno internal events logged\r\n"
    "// version 8.1.0\r\n";
const std::string kTail8 = "        0        0        0        0        0\r\n";

class AscWriterTest : public testing::Test {
 protected:
  // What a writer of this version writes for the message, head included.
  std::string written(double version, const std::function<void(AscWriter&)>& use) const {
    AscWriter writer(folder_.file("x.asc"), true, version);
    writer.setActive(true);
    use(writer);
    writer.setActive(false);
    return folder_.read("x.asc");
  }

  test::TempFolder folder_;
};

TEST_F(AscWriterTest, hasItsDefaults) {
  const AscWriter writer;
  EXPECT_EQ(writer.getTargetVersion(), 7.0);
  EXPECT_EQ(writer.getOwnerBus(), -1);
  EXPECT_FALSE(writer.getOverrideExistingFile());
  EXPECT_EQ(writer.getTargetFormat(), XLATR_FORMAT_ASC);
  EXPECT_EQ(writer.getExtension(), ".asc");
  EXPECT_FALSE(writer.getActive());
}

TEST_F(AscWriterTest, writesOneOfTwoHeads) {
  const auto writeHead = [](AscWriter& writer) { writer.WriteHeader(StubInfo("source.trc")); };
  for (const double version : {0.0, 7.0, 7.99}) {
    EXPECT_EQ(written(version, writeHead), kHead7) << version;
  }
  for (const double version : {8.0, 9.0, 15.0}) {
    EXPECT_EQ(written(version, writeHead), kHead8) << version;
  }
}

TEST_F(AscWriterTest, writesAHeadThatItsReaderFinds) {
  written(15.0, [](AscWriter& writer) {
    writer.WriteHeader(StubInfo("source.trc"));
    writer.WriteMessage(frame());
  });
  const AscInfo info{TraceFileInfo(folder_.file("x.asc"))};
  EXPECT_EQ(info.getVersion(), 8.1);
  EXPECT_EQ(info.getStartTime(), 44403.25);
  EXPECT_TRUE(info.hexBase());
  EXPECT_EQ(info.timestampsMode(), AscTimestamps::Absolute);
  EXPECT_EQ(info.getHeaderLength(), kHead8.size());
}

TEST_F(AscWriterTest, writesNoHeadForASourceThatIsNotValid) {
  EXPECT_EQ(written(8.0, [](AscWriter& writer) { writer.WriteHeader(StubInfo("source.trc", false)); }), "");
  // And the form stays that of 7.0.0.
  EXPECT_EQ(written(8.0,
                    [](AscWriter& writer) {
                      writer.WriteHeader(StubInfo("source.trc", false));
                      writer.WriteMessage(frame());
                    }),
            "   0.010500 3  123             Rx   d 1 AA\r\n");
}

TEST_F(AscWriterTest, writesTheStartTimeItIsGiven) {
  EXPECT_TRUE(written(7.0, [](AscWriter& writer) {
                writer.WriteHeader_2(StubInfo("source.trc"), 45721.5);
              }).starts_with("date Wed Mar 05 12:00:00.000 2025\r\n"));
}

TEST_F(AscWriterTest, writesFdFramesFrom8OnOnly) {
  const auto writeFd = [](AscWriter& writer) {
    writer.WriteHeader(StubInfo("source.trc"));
    writer.WriteMessage(frame("10.5 FD 3 0123 Rx - 1 AA"));
  };
  EXPECT_EQ(written(7.0, writeFd), kHead7);
  EXPECT_EQ(written(8.0, writeFd), kHead8 + "   0.010500 CANFD   3 Rx        123  " + std::string(32, ' ') +
                                       " 0 0 1  1 AA        0    0     1000" + kTail8);
}

TEST_F(AscWriterTest, writesClassicFramesFrom8OnAsCanFdLines) {
  EXPECT_EQ(written(8.0,
                    [](AscWriter& writer) {
                      writer.WriteHeader(StubInfo("source.trc"));
                      writer.WriteMessage(frame());
                    }),
            kHead8 + "   0.010500 CANFD   3 Rx        123  " + std::string(32, ' ') +
                " 0 0 1  1 AA        0    0   200000" + kTail8);
}

// Whatever was written before and after it.
TEST_F(AscWriterTest, writesFramesOfALinBusInTheOldFormInLogsOfEveryVersion) {
  KorlMessage lin;
  lin.parseLine("1) 1000 Pub 2A 6 01 02 03 04 05 06 7C CL");
  ASSERT_TRUE(lin.valid);
  const auto writeAll = [&lin](AscWriter& writer) {
    writer.WriteHeader(StubInfo("source.ltrc"));
    writer.WriteMessage(frame());
    writer.WriteMessage(lin);
    writer.WriteMessage(frame());
  };
  const std::string line = "   0.001000 1  2A              Rx   d 6 01 02 03 04 05 06\r\n";
  const std::string frame7 = written(7.0, [](AscWriter& writer) { writer.WriteMessage(frame()); });
  const std::string frame8 = written(8.0, [](AscWriter& writer) {
    writer.WriteHeader(StubInfo("source.ltrc"));
    writer.WriteMessage(frame());
  });
  EXPECT_EQ(written(7.0, writeAll), kHead7 + frame7 + line + frame7);
  EXPECT_EQ(written(8.0, writeAll), frame8 + line + frame8.substr(kHead8.size()));
}

TEST_F(AscWriterTest, writesACanXlFrameAsAComment) {
  BrixMessage message;
  message.parseLine("1 10.5 XL 3 123 Rx - 01 03 00000005 0 1 1 AA BB", findTrcVersion(3.0), kTrcColumns30);
  ASSERT_TRUE(message.valid);
  for (const double version : {7.0, 8.0}) {
    EXPECT_EQ(written(version, [&](AscWriter& writer) { writer.WriteMessage(message); }),
              "//        10.500 XL 3       123 Rx -  01 03 00000005 0 1 1    AA BB\r\n");
  }
}

TEST_F(AscWriterTest, putsSlashesBeforeACommentWithoutThem) {
  EXPECT_EQ(written(7.0,
                    [](AscWriter& writer) {
                      writer.WriteComment("text");
                      writer.WriteComment("// text");
                      writer.WriteComment("//text");
                      writer.WriteComment("");
                    }),
            "// text\r\n// text\r\n// //text\r\n// \r\n");
}

TEST_F(AscWriterTest, writesNoLineForAMessageWithoutText) {
  EXPECT_EQ(written(7.0, [](AscWriter& writer) { writer.WriteMessage(BrixMessage()); }), "");
}

TEST_F(AscWriterTest, refusesAMessageOfAClassThatItDoesNotKnow) {
  AscWriter writer(folder_.file("x.asc"));
  writer.setActive(true);
  EXPECT_EQ(failureOf([&] { writer.WriteMessage(ForeignMessage()); }),
            "Object cannot be casted to any supported message trace");
  EXPECT_EQ(failureOf([&] { writer.WriteMessage(AscMessage()); }),
            "Object cannot be casted to any supported message trace");
}

TEST_F(AscWriterTest, writesNothingBeforeItIsActive) {
  AscWriter writer(folder_.file("x.asc"));
  EXPECT_EQ(failureOf([&] { writer.WriteHeader(StubInfo("source.trc")); }), "Writer is not initialized");
  EXPECT_EQ(failureOf([&] { writer.WriteHeader(StubInfo("source.trc", false)); }), "no failure");
  EXPECT_EQ(failureOf([&] { writer.WriteComment("text"); }), "Writer is not initialized");
  EXPECT_EQ(failureOf([&] { writer.WriteMessage(frame()); }), "Writer is not initialized");
  EXPECT_FALSE(folder_.has("x.asc"));
}

TEST_F(AscWriterTest, makesANewWriterOfItsProperties) {
  AscWriter writer(folder_.file("x.asc"), true, 9.0);
  writer.setOwnerBus(7);
  writer.setSourcePath("s.trc");
  writer.setActive(true);
  const auto fresh = writer.CreateNew();
  EXPECT_FALSE(fresh->getActive());
  EXPECT_EQ(fresh->getTargetPath(), folder_.file("x.asc"));
  EXPECT_TRUE(fresh->getOverrideExistingFile());
  EXPECT_EQ(fresh->getTargetVersion(), 9.0);
  EXPECT_EQ(fresh->getOwnerBus(), 7);
  EXPECT_EQ(fresh->getSourcePath(), "");
  EXPECT_EQ(fresh->getTargetFormat(), XLATR_FORMAT_ASC);
}

}  // namespace
}  // namespace xlatr
