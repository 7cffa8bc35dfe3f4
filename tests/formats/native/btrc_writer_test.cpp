#include "formats/native/btrc_writer.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "formats/native/btrc_reader.hpp"
#include "formats/trc/trc_message.hpp"
#include "support/btrc_image.hpp"
#include "support/temp_folder.hpp"
#include "support/writer_stubs.hpp"
#include "util/failures.hpp"

namespace xlatr {
namespace {

using namespace test::btrc;

// 2026-11-21 13:14:15.500, in days since 1899-12-30, and its head.
constexpr double kStartDays = 46347.0 + (13 * 3600 + 14 * 60 + 15.5) / 86400.0;
constexpr std::uint64_t kStartTime = kStart - 487654;

std::string headOfStart() {
  return info() + record(0x8003, number(kStartTime, 8) + number(2026, 2) + number(11, 1) + number(21, 1) +
                                     number(13, 1) + number(14, 1) + number(15, 1) + number(0, 1) + number(500000, 4));
}

// A received frame of this many bytes at this millisecond, and its record, which is 20 bytes longer.
BrixMessage frame(double milliseconds, std::uint32_t length = 4) {
  BrixMessage message;
  message.valid = true;
  message.timeOffset = RealMilliseconds(milliseconds);
  message.kind = MessageKind::DT;
  message.type = MessageType::Rx;
  message.direction = MessageDirection::Rx;
  message.bus = 1;
  message.id = 0x123;
  message.length = length;
  message.data.assign(length, 0x55);
  return message;
}

std::string recordOf(std::uint64_t microseconds, std::uint32_t length = 4) {
  return received(1, kStartTime + microseconds, frameInfo(0, length, 0, 0x123), std::string(length, '\x55'));
}

class BtrcWriterTest : public testing::Test {
 protected:
  BtrcWriterTest() : writer_(folder_.file("out.btrc")) {}

  void begin() {
    writer_.setActive(true);
    writer_.WriteHeader_2(test::StubInfo("in.trc"), kStartDays);
  }
  // The file as it is closed.
  std::string written() {
    writer_.setActive(false);
    return folder_.read("out.btrc");
  }
  // Writes frames until this many bytes, a multiple of 4, are left in the first block, and returns what stands there
  // then. Records are 24 bytes long, and the first few 28, so that the rest comes out even.
  std::string fillFirstBlock(std::size_t left) {
    std::string bytes = headOfStart();
    begin();
    std::size_t longer = (kBlock - bytes.size() - left) % 24 / 4;
    while (kBlock - bytes.size() > left) {
      const std::uint32_t length = longer > 0 ? 8 : 4;
      longer -= longer > 0 ? 1 : 0;
      writer_.WriteMessage(frame(0, length));
      bytes += recordOf(0, length);
      ++records_;
    }
    return bytes;
  }

  test::TempFolder folder_;
  BtrcWriter writer_;
  std::uint64_t records_ = 0;
};

TEST_F(BtrcWriterTest, fileOfOneMessageIsOneBlock) {
  begin();
  writer_.WriteMessage(frame(1.5));
  const std::string file = written();
  EXPECT_EQ(file.size(), 8192U);
  EXPECT_EQ(file, filled(headOfStart() + recordOf(1500)));
}

TEST_F(BtrcWriterTest, fileOfNoMessageIsOneBlock) {
  begin();
  EXPECT_EQ(written(), filled(headOfStart()));
}

TEST_F(BtrcWriterTest, fileWithoutHeadIsFilledAsWell) {
  writer_.setActive(true);
  EXPECT_EQ(written(), filler(kBlock));
}

TEST_F(BtrcWriterTest, recordThatEndsWithItsBlockIsFollowedByTheTotals) {
  std::string file = fillFirstBlock(24);
  writer_.WriteMessage(frame(7));
  EXPECT_EQ(written(), filled(file + recordOf(7000) + counter(7000, records_, records_)));
}

TEST_F(BtrcWriterTest, recordThatDoesNotFitOpensTheNextBlockAfterTheTotals) {
  std::string file = fillFirstBlock(20);
  writer_.WriteMessage(frame(7));
  writer_.WriteMessage(frame(8));
  EXPECT_EQ(written(), filled(filled(file) + counter(7000, records_, records_) + recordOf(7000) + recordOf(8000)));
}

TEST_F(BtrcWriterTest, gapOfABareHeaderIsOne) {
  std::string file = fillFirstBlock(4);
  writer_.WriteMessage(frame(7));
  EXPECT_EQ(written(), filled(file + number(4, 2) + number(0, 2) + counter(7000, records_, records_) + recordOf(7000)));
}

TEST_F(BtrcWriterTest, everyBlockAfterTheFirstBeginsWithTheTotals) {
  begin();
  for (int index = 0; index < 5000; ++index) {
    writer_.WriteMessage(frame(index, static_cast<std::uint32_t>(index) % 9));
  }
  const std::string file = written();
  ASSERT_GT(file.size(), 10 * kBlock);
  ASSERT_EQ(file.size() % kBlock, 0U);
  std::uint64_t before = 0;
  for (std::size_t offset = kBlock; offset < file.size(); offset += kBlock) {
    EXPECT_EQ(file.substr(offset, 4), number(28, 2) + number(0x8001, 2));
    Native_RecordCounter read;
    const std::string bytes = file.substr(offset, 28);
    loadFields(reinterpret_cast<const std::uint8_t*>(bytes.data()), read);
    EXPECT_EQ(read.totalRecords, read.totalMessages);
    EXPECT_GT(read.totalRecords, before);
    before = read.totalRecords;
  }
}

TEST_F(BtrcWriterTest, whatItWritesIsReadBack) {
  begin();
  for (int index = 0; index < 3000; ++index) {
    writer_.WriteMessage(frame(index / 8.0, static_cast<std::uint32_t>(index) % 9));
  }
  writer_.setActive(false);
  BtrcReader reader{BtrcInfo(folder_.file("out.btrc"))};
  ASSERT_TRUE(reader.setActive(true));
  ZelkBinaryMessage message;
  std::uint64_t index = 0;
  while (reader.readInto(message)) {
    if (message.getValid()) {
      ASSERT_EQ(message.timestamp, UnsignedMicroseconds(index * 125));
      ASSERT_EQ(message.length, index % 9);
      ++index;
    }
  }
  EXPECT_EQ(index, 3000U);
  EXPECT_EQ(reader.getPercentDone(), 100.0);
}

TEST_F(BtrcWriterTest, version0HasNoStart) {
  writer_.setTargetVersion(0.0);
  begin();
  writer_.WriteMessage(frame(1.5));
  EXPECT_EQ(written(), filled(info(0) + received(1, 1500, frameInfo(0, 4, 0, 0x123), "\x55\x55\x55\x55")));
}

TEST_F(BtrcWriterTest, versionIsLookedAtWithoutDecimals) {
  const struct {
    double version;
    std::string head;
  } cases[] = {{1.4, headOfStart()}, {0.6, headOfStart()}, {0.4, info(0)}, {1.6, ""}, {2.0, ""}, {-1.0, ""}};
  for (const auto& test : cases) {
    BtrcWriter writer(folder_.file("out.btrc"), true, test.version);
    writer.setActive(true);
    writer.WriteHeader_2(test::StubInfo("in.trc"), kStartDays);
    writer.setActive(false);
    EXPECT_EQ(folder_.read("out.btrc"), filled(test.head + filler(kBlock - test.head.size()))) << test.version;
  }
}

TEST_F(BtrcWriterTest, startIsThatOfTheFirstHeaderUnlessItIsGiven) {
  writer_.setActive(true);
  writer_.WriteHeader(test::StubInfo("in.trc", true, kStartDays));
  EXPECT_EQ(written(), filled(headOfStart()));
}

TEST_F(BtrcWriterTest, headStandsAtTheStartWhereverItIsWritten) {
  writer_.setActive(true);
  writer_.WriteComment("0123456789012345678901234567");
  writer_.WriteHeader_2(test::StubInfo("in.trc"), kStartDays);
  EXPECT_EQ(written(), filled(headOfStart()));
}

TEST_F(BtrcWriterTest, sentFramesHaveBothTimesMoved) {
  begin();
  BrixMessage message = frame(1.5);
  message.direction = MessageDirection::Tx;
  writer_.WriteMessage(message);
  EXPECT_EQ(written(),
            filled(headOfStart() + sent(4, kStartTime + 1500, frameInfo(0, 4, 0, 0x123), "\x55\x55\x55\x55")));
}

TEST_F(BtrcWriterTest, textsAreRecordsAndCounted) {
  std::string file = fillFirstBlock(8);
  writer_.WriteComment("hello");
  writer_.WriteComment("");
  EXPECT_EQ(written(),
            filled(filled(file) + counter(0, records_, records_) + record(0x8002, "hello   ") + record(0x8002, "")))
      << "the totals that a text comes after have no time";
}

TEST_F(BtrcWriterTest, totalsCountTextsAsMessages) {
  begin();
  writer_.WriteComment("text");
  std::string file = headOfStart() + record(0x8002, "text");
  while (file.size() + 24 <= kBlock) {
    writer_.WriteMessage(frame(0));
    file += recordOf(0);
    ++records_;
  }
  writer_.WriteMessage(frame(0));
  EXPECT_EQ(written(), filled(filled(file) + counter(0, records_ + 1, records_ + 1) + recordOf(0)));
}

TEST_F(BtrcWriterTest, canXlMessageChangesNothing) {
  std::string file = fillFirstBlock(20);
  BrixMessage xl = frame(3);
  xl.kind = MessageKind::XL;
  writer_.WriteMessage(xl);
  writer_.WriteMessage(frame(7));
  EXPECT_EQ(written(), filled(filled(file) + counter(7000, records_, records_) + recordOf(7000)));
}

TEST_F(BtrcWriterTest, messageOfNoRecordBecomesAText) {
  begin();
  BrixMessage event = frame(1);
  event.kind = MessageKind::EV;
  event.comment = "go";
  writer_.WriteMessage(event);
  BrixMessage broken = frame(2);
  broken.valid = false;
  broken.comment = "odd";
  writer_.WriteMessage(broken);
  EXPECT_EQ(written(), filled(headOfStart() + record(0x8002, "TODO 'Event Framer (EV)': go") + record(0x8002, "odd ")));
}

std::string parsingFailureOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const ConverterParsingException& failure) {
    return failure.what();
  }
  return "no failure";
}

TEST_F(BtrcWriterTest, textOfABlockLeavesNothingToBeWrittenAfterIt) {
  begin();
  writer_.WriteComment(std::string(9000, 'x'));
  EXPECT_EQ(parsingFailureOf([&] { writer_.WriteMessage(frame(0)); }),
            "BlockLimitWasReached: Binary-Stream position is greater than the BTRC file size");
  EXPECT_EQ(written(), filled(headOfStart()) + counter(0, 0, 0) + record(0x8002, std::string(9000, 'x')));
}

TEST_F(BtrcWriterTest, refusesWhatItDoesNotKnow) {
  begin();
  const std::string text = "Object cannot be casted to any supported message trace";
  EXPECT_EQ(parsingFailureOf([&] { writer_.WriteMessage(test::ForeignMessage()); }), text);
  EXPECT_EQ(parsingFailureOf([&] { writer_.WriteMessage(ZelkBinaryMessage()); }), text);
}

TEST_F(BtrcWriterTest, refusesEverythingWhileInactive) {
  const std::string text = "Writer is not initialized";
  EXPECT_EQ(parsingFailureOf([&] { writer_.WriteMessage(frame(0)); }), text);
  EXPECT_EQ(parsingFailureOf([&] { writer_.WriteComment("text"); }), text);
  EXPECT_EQ(parsingFailureOf([&] { writer_.WriteHeader(test::StubInfo("in.trc")); }), text);
}

TEST_F(BtrcWriterTest, opensAgainFromTheStart) {
  fillFirstBlock(20);
  writer_.WriteMessage(frame(7));
  writer_.setActive(false);
  writer_.setOverrideExistingFile(true);
  begin();
  writer_.WriteMessage(frame(1.5));
  EXPECT_EQ(written(), filled(headOfStart() + recordOf(1500)));
}

TEST_F(BtrcWriterTest, closesInItsDestructor) {
  {
    BtrcWriter writer(folder_.file("other.btrc"));
    writer.setActive(true);
    writer.WriteHeader_2(test::StubInfo("in.trc"), kStartDays);
  }
  EXPECT_EQ(folder_.read("other.btrc"), filled(headOfStart()));
}

// A second head goes back to the front but not to the first block, so that the end may be eight blocks away, which the
// header of one filler can't say.
TEST_F(BtrcWriterTest, gapOfEightBlocksIsABareHeader) {
  begin();
  constexpr int kRecordsOfABlock = 340;  // of 24 bytes, after a head of 32 or totals of 28
  for (int count = 0; count < 8 * kRecordsOfABlock + 1; ++count) {
    writer_.WriteMessage(frame(0));
  }
  writer_.WriteHeader(test::StubInfo("in.trc"));
  for (int count = 0; count < kRecordsOfABlock; ++count) {
    writer_.WriteMessage(frame(0));
  }
  const std::string file = written();
  EXPECT_FALSE(writer_.getActive());
  EXPECT_EQ(file.substr(kBlock, 4), number(4, 2) + number(0, 2));
}

TEST_F(BtrcWriterTest, newOneIsLikeItAndStartsItsOwnTotals) {
  writer_.setOwnerBus(3);
  writer_.setSourcePath("in.trc");
  fillFirstBlock(20);
  const auto fresh = writer_.CreateNew();
  EXPECT_FALSE(fresh->getActive());
  EXPECT_EQ(fresh->getOwnerBus(), 3);
  EXPECT_EQ(fresh->getTargetPath(), writer_.getTargetPath());
  EXPECT_EQ(fresh->getTargetVersion(), 1.0);
  EXPECT_EQ(fresh->getSourcePath(), "in.trc");
  EXPECT_EQ(fresh->getExtension(), ".btrc");
  EXPECT_EQ(fresh->getTargetFormat(), XLATR_FORMAT_BTRC);
}

}  // namespace
}  // namespace xlatr
