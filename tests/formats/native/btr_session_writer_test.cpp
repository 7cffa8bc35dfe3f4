#include "formats/native/btr_session_writer.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "formats/native/btr_mapping.hpp"
#include "support/btr_image.hpp"
#include "support/temp_folder.hpp"
#include "support/writer_stubs.hpp"

namespace xlatr {
namespace {

using test::BtrDate;
using test::BtrImage;
using test::BtrSlot;
using test::failureOf;
using test::StubInfo;

// 2024-03-01 08:15:30.250 and 2 microseconds.
constexpr double kStart = 45352.0 + 29730.250002 / 86400;

BrixMessage frame(std::uint32_t id = 0x123, double milliseconds = 10.5) {
  BrixMessage message;
  message.valid = true;
  message.id = id;
  message.timeOffset = RealMilliseconds(milliseconds);
  message.type = MessageType::Rx;
  message.kind = MessageKind::DT;
  message.direction = MessageDirection::Rx;
  message.bus = 3;
  message.length = 2;
  message.data = {0xAA, 0xBB};
  return message;
}

BtrSlot slotOfFrame() {
  return {.id = 0x123, .bus = 2, .length = 2, .timestamp = 10500, .data = {0xAA, 0xBB}};
}

class BtrSessionWriterTest : public testing::Test {
 protected:
  // The file that the messages become.
  std::string fileOf(const std::vector<BrixMessage>& messages) {
    writer_.setActive(true);
    writer_.WriteHeader(StubInfo("s.trc", true, kStart));
    for (const BrixMessage& message : messages) {
      writer_.WriteMessage(message);
    }
    writer_.setActive(false);
    return folder_.read("x.btr");
  }

  test::TempFolder folder_;
  BtrSessionWriter writer_{folder_.file("x.btr")};
};

// A file of one session that begins at kStart.
BtrImage imageOf(std::size_t sectors) {
  BtrImage image(sectors);
  image.session(0, {.startTimestamp = 2});
  return image;
}

TEST_F(BtrSessionWriterTest, hasItsDefaults) {
  const BtrSessionWriter writer;
  EXPECT_EQ(writer.getTargetVersion(), 3.0);
  EXPECT_EQ(writer.getOwnerBus(), -1);
  EXPECT_FALSE(writer.getOverrideExistingFile());
  EXPECT_EQ(writer.getTargetFormat(), XLATR_FORMAT_BTR);
  EXPECT_EQ(writer.getExtension(), ".btr");
}

TEST_F(BtrSessionWriterTest, writesADirectoryAndAnEmptySectorWithoutAMessage) {
  const std::string file = fileOf({});
  EXPECT_EQ(file.size(), 1024U);
  EXPECT_EQ(file, imageOf(2).sector(1, {}).bytes());
}

TEST_F(BtrSessionWriterTest, writesTheFullSectorAndAnEmptyOneFor25Messages) {
  const std::string file = fileOf(std::vector<BrixMessage>(25, frame()));
  EXPECT_EQ(file.size(), 1024U + 512);
  EXPECT_EQ(file, imageOf(3).sector(1, {}, std::vector<BtrSlot>(25, slotOfFrame())).sector(2, {}).bytes());
}

TEST_F(BtrSessionWriterTest, goesOnInTheNextSector) {
  const std::string file = fileOf(std::vector<BrixMessage>(51, frame()));
  const std::vector<BtrSlot> full(25, slotOfFrame());
  EXPECT_EQ(file, imageOf(4).sector(1, {}, full).sector(2, {}, full).sector(3, {}, {slotOfFrame()}).bytes());
}

TEST_F(BtrSessionWriterTest, writesEachKindOfFrame) {
  BrixMessage extended = frame(0x1ABCDEF0);
  extended.extended = true;
  BrixMessage remote = frame(0x7FF);
  remote.remote = true;
  remote.kind = MessageKind::RR;
  remote.length = 8;
  BrixMessage error = frame(0xFFFFFFFF);
  error.type = MessageType::Error;
  error.kind = MessageKind::ER;
  error.length = 5;
  error.data = {1, 2, 3, 4, 5};
  BrixMessage status = frame(0xFFFFFFFF);
  status.type = MessageType::Warng;
  status.kind = MessageKind::ST;
  status.length = 4;
  status.data = {0, 0, 0, 4};
  BrixMessage sent = frame(0);
  sent.type = MessageType::Tx;
  sent.bus = 5;
  sent.length = 8;
  sent.data = {1, 2, 3, 4, 5, 6, 7, 8};
  const std::vector<BtrSlot> slots = {
      {.id = 0x1ABCDEF0, .flags = 0x02, .bus = 2, .length = 2, .timestamp = 10500, .data = {0xAA, 0xBB}},
      {.id = 0x7FF, .flags = 0x01, .bus = 2, .length = 8, .timestamp = 10500},
      {.id = 0xFFFFFFFF, .flags = 0x10, .bus = 2, .length = 5, .timestamp = 10500, .data = {1, 2, 3, 4, 5}},
      {.id = 0xFFFFFFFF, .bus = 2, .length = 4, .timestamp = 10500, .data = {0, 0, 0, 4}},
      {.id = 0, .bus = 4, .length = 8, .timestamp = 10500, .data = {1, 2, 3, 4, 5, 6, 7, 8}},
  };
  EXPECT_EQ(fileOf({extended, remote, error, status, sent}), imageOf(2).sector(1, {}, slots).bytes());
}

TEST_F(BtrSessionWriterTest, dropsWhatASlotCannotHold) {
  BrixMessage longer = frame();
  longer.length = 9;
  BrixMessage fd = frame();
  fd.length = 12;
  fd.data.resize(12);
  BrixMessage unknown = frame();
  unknown.type = MessageType::Unknown;
  BrixMessage xl = frame();
  xl.kind = MessageKind::XL;
  EXPECT_EQ(fileOf({longer, fd, unknown, xl}), imageOf(2).sector(1, {}).bytes());
}

TEST_F(BtrSessionWriterTest, writesNoComments) {
  writer_.WriteComment("not even here");
  writer_.setActive(true);
  writer_.WriteHeader(StubInfo("s.trc", true, kStart));
  writer_.WriteComment("a comment");
  writer_.setActive(false);
  EXPECT_EQ(folder_.read("x.btr"), imageOf(2).sector(1, {}).bytes());
}

TEST_F(BtrSessionWriterTest, writesItsVersionRoundedAndTheStartTimeItIsGiven) {
  const struct {
    double version;
    std::uint8_t written;
  } cases[] = {{1.0, 1}, {2.0, 2}, {2.5, 3}, {3.0, 3}};
  for (const auto& test : cases) {
    BtrSessionWriter writer(folder_.file("y.btr"), -1, test.version);
    writer.setOverrideExistingFile(true);
    writer.setActive(true);
    writer.WriteHeader_2(StubInfo("s.trc", false), kStart);
    writer.setActive(false);
    EXPECT_EQ(folder_.read("y.btr"),
              BtrImage(2).session(0, {.version = test.written, .startTimestamp = 2}).sector(1, {}).bytes());
  }
}

TEST_F(BtrSessionWriterTest, writesAYearBefore2000As0) {
  writer_.setActive(true);
  writer_.WriteHeader(StubInfo("s.trc", true, 36500.5));  // 1999-12-06, a Monday
  writer_.setActive(false);
  const BtrDate date{
      .year = 0, .month = 12, .day = 6, .hour = 12, .minute = 0, .second = 0, .hundredths = 0, .dayOfWeek = 1};
  EXPECT_EQ(folder_.read("x.btr"), BtrImage(2).session(0, {.date = date}).sector(1, date).bytes());
}

// Days of a full second are often a hair short of it as a number. No reader takes 100 hundredths for a date.
// A thousand milliseconds stay with the second before, as a hundred hundredths, which no reader takes for a date.
TEST_F(BtrSessionWriterTest, writesAStartJustBelowAFullSecondWithAHundredHundredths) {
  writer_.setActive(true);
  writer_.WriteHeader(StubInfo("s.trc", true, 45352.3333333333));  // 2024-03-01 07:59:59.999997, a Friday
  writer_.setActive(false);
  const BtrDate date{
      .year = 24, .month = 3, .day = 1, .hour = 7, .minute = 59, .second = 59, .hundredths = 100, .dayOfWeek = 5};
  EXPECT_EQ(folder_.read("x.btr"), BtrImage(2).session(0, {.date = date}).sector(1, date).bytes());
}

TEST_F(BtrSessionWriterTest, writesTheNullDateOfATraceWithoutAStart) {
  writer_.setActive(true);
  writer_.WriteHeader(StubInfo("s.trc", true, 0.0));
  writer_.setActive(false);
  const BtrDate date{
      .year = 0, .month = 12, .day = 30, .hour = 0, .minute = 0, .second = 0, .hundredths = 0, .dayOfWeek = 6};
  EXPECT_EQ(folder_.read("x.btr"), BtrImage(2).session(0, {.date = date}).sector(1, date).bytes());
}

TEST_F(BtrSessionWriterTest, beginsAtTheFrontAgainWithASecondHeader) {
  writer_.setActive(true);
  writer_.WriteHeader(StubInfo("s.trc", true, 36500.5));
  writer_.WriteHeader_2(StubInfo("s.trc"), kStart);
  writer_.WriteMessage(frame());
  writer_.setActive(false);
  EXPECT_EQ(folder_.read("x.btr"), imageOf(2).sector(1, {}, {slotOfFrame()}).bytes());
}

TEST_F(BtrSessionWriterTest, closesInItsDestructor) {
  {
    BtrSessionWriter writer(folder_.file("y.btr"));
    writer.setActive(true);
    writer.WriteHeader(StubInfo("s.trc", true, kStart));
    writer.WriteMessage(frame());
  }
  EXPECT_EQ(folder_.read("y.btr"), imageOf(2).sector(1, {}, {slotOfFrame()}).bytes());
}

TEST_F(BtrSessionWriterTest, refusesWhatItDoesNotKnow) {
  EXPECT_EQ(failureOf([&] { writer_.WriteMessage(frame()); }), "Writer is not initialized");
  EXPECT_EQ(failureOf([&] { writer_.WriteHeader(StubInfo("s.trc")); }), "Writer is not initialized");
  writer_.setActive(true);
  EXPECT_EQ(failureOf([&] { writer_.WriteMessage(test::ForeignMessage()); }),
            "Object cannot be casted to any supported message trace");
  EXPECT_EQ(failureOf([&] { writer_.setOwnerBus(1); }), "Cannot change property value when object is active");
}

TEST_F(BtrSessionWriterTest, makesANewWriterOfItsProperties) {
  BtrSessionWriter writer("a.btr", 7, 2.0);
  writer.setOverrideExistingFile(true);
  writer.setSourcePath("s.trc");
  const auto fresh = writer.CreateNew();
  EXPECT_EQ(fresh->getTargetPath(), "a.btr");
  EXPECT_EQ(fresh->getOwnerBus(), 7);
  EXPECT_EQ(fresh->getTargetVersion(), 2.0);
  EXPECT_TRUE(fresh->getOverrideExistingFile());
  EXPECT_EQ(fresh->getSourcePath(), "");
  EXPECT_FALSE(fresh->getActive());
}

TEST(BtrMapping, roundsTheTimeAndCutsItTo32Bits) {
  const struct {
    double milliseconds;
    std::uint32_t timestamp;
  } cases[] = {{0.0, 0},
               {0.0004, 0},
               {0.0005, 1},
               {4294967.295, 0xFFFFFFFF},
               {4294967.296, 0},
               {4294967.297, 1},
               {-0.001, 0xFFFFFFFF},
               {1e300, 0},
               {-1e300, 0},
               {std::numeric_limits<double>::quiet_NaN(), 0}};
  for (const auto& test : cases) {
    EXPECT_EQ(mapToBtrEntry(frame(1, test.milliseconds)).timestampUs, test.timestamp) << test.milliseconds;
  }
}

TEST(BtrMapping, countsBusesFrom0InFourBits) {
  const struct {
    std::uint32_t bus;
    std::uint8_t source;
  } cases[] = {{1, 0x02}, {5, 0x42}, {6, 0x52}, {16, 0xF2}, {17, 0x02}, {0, 0xF2}, {255, 0xE2}};
  for (const auto& test : cases) {
    BrixMessage message = frame();
    message.bus = test.bus;
    EXPECT_EQ(mapToBtrEntry(message).source, test.source) << test.bus;
  }
}

TEST(BtrMapping, copiesAtMostTheBytesThatThereAre) {
  BrixMessage message = frame();
  message.length = 8;
  EXPECT_EQ(mapToBtrEntry(message).data, (std::array<std::uint8_t, 8>{0xAA, 0xBB}));
  message.data.assign(64, 1);
  EXPECT_EQ(mapToBtrEntry(message).data, (std::array<std::uint8_t, 8>{1, 1, 1, 1, 1, 1, 1, 1}));
}

}  // namespace
}  // namespace xlatr
