#include "formats/native/btrc_reader.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/btrc_image.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

using namespace test::btrc;

// A reader of a file with this content, which lives as long as it.
class FileReader {
 public:
  explicit FileReader(const std::string& content) : reader_(BtrcInfo(folder_.write("in.btrc", content))) {
    EXPECT_TRUE(reader_.setActive(true));
  }
  BtrcReader* operator->() { return &reader_; }

  // The types of all records that are left.
  std::vector<unsigned> types() {
    std::vector<unsigned> result;
    ZelkBinaryMessage message;
    while (reader_.readInto(message)) {
      result.push_back(static_cast<unsigned>(message.GetRecordType()));
    }
    return result;
  }

 private:
  test::TempFolder folder_;
  BtrcReader reader_;
};

using Types = std::vector<unsigned>;

TEST(BtrcReader, handsOutEveryRecordOfAWellFormedFile) {
  std::string file = filled(head() + plainFrame(kStart + 1));
  file += counter(0, 1, 1) + plainFrame(kStart + 2) + record(0x8002, "text");
  file = filled(file);
  ASSERT_EQ(file.size(), 2 * kBlock);
  FileReader reader(file);
  EXPECT_EQ(reader.types(), (Types{1, 0, 0x8001, 1, 0x8002, 0}));
  EXPECT_EQ(reader->getPercentDone(), 100.0);
  EXPECT_EQ(reader->lineCount(), 6U);
  EXPECT_EQ(reader->invalidCount(), 4U);
  EXPECT_EQ(reader->failure(), "");
  EXPECT_EQ(reader->ReadNextMessage(), nullptr);
}

TEST(BtrcReader, timesCountFromTheStartOnEveryBus) {
  FileReader reader(filled(head() + plainFrame(kStart + 10, 0) + plainFrame(kStart + 20, 7)));
  EXPECT_EQ(reader->ReadNextMessage()->timestamp, UnsignedMicroseconds(10U));
  EXPECT_EQ(reader->ReadNextMessage()->timestamp, UnsignedMicroseconds(20U));
}

TEST(BtrcReader, startIsSubtractedUnscaled) {
  FileReader reader(filled(info(1, -3) + calibration(1000) + plainFrame(5)));
  EXPECT_EQ(reader->ReadNextMessage()->timestamp, UnsignedMicroseconds(4000U));
}

TEST(BtrcReader, withoutCalibrationTimesStayAndItsPlaceIsRead) {
  FileReader reader(filled(info() + plainFrame(5) + plainFrame(6)));
  EXPECT_EQ(reader->ReadNextMessage()->timestamp, UnsignedMicroseconds(5U));
  EXPECT_EQ(reader->ReadNextMessage()->timestamp, UnsignedMicroseconds(6U));
}

TEST(BtrcReader, badCalibrationIsARecordWithoutContent) {
  FileReader reader(filled(info() + calibration(kStart, 13) + plainFrame(5)));
  const auto first = reader->ReadNextMessage();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->GetRecordType(), RecordType::TimeCalibration);
  EXPECT_FALSE(first->getValid());
  EXPECT_EQ(first->commentary, "");
  EXPECT_EQ(reader->ReadNextMessage()->timestamp, UnsignedMicroseconds(5U));
}

TEST(BtrcReader, timesOfOtherRecordsAreNotMoved) {
  FileReader reader(filled(head() + record(0x8002, "text") + record(0x11, number(kStart, 8) + number(0, 8))));
  EXPECT_EQ(reader->ReadNextMessage()->timestamp, UnsignedMicroseconds(0U));
  EXPECT_EQ(reader->ReadNextMessage()->timestamp, UnsignedMicroseconds(0U));
}

TEST(BtrcReader, sizeBelowTheHeaderEndsReading) {
  for (int size = 0; size < 4; ++size) {
    FileReader reader(filled(head() + plainFrame(5) + record(1, "abcd", size) + plainFrame(6)));
    EXPECT_EQ(reader.types(), Types{1}) << size;
    EXPECT_LT(reader->getPercentDone(), 100.0);
  }
}

TEST(BtrcReader, bareHeaderIsARecord) {
  FileReader reader(head() + record(0x8002, "") + plainFrame(5));
  EXPECT_EQ(reader.types(), (Types{0x8002, 1}));
}

TEST(BtrcReader, recordThatEndsAfterTheFileEndsReading) {
  const std::string whole = head() + plainFrame(5) + plainFrame(6);
  for (std::size_t size = head().size() + 24; size < whole.size(); ++size) {
    FileReader reader(whole.substr(0, size));
    EXPECT_EQ(reader.types(), Types{1}) << size;
    EXPECT_EQ(reader->failure(), "") << "the end of a file is no failure of the system";
  }
}

TEST(BtrcReader, longestRecordIsReadWhole) {
  FileReader reader(head() + record(0x8002, std::string(65531, 'x')) + plainFrame(5));
  EXPECT_EQ(reader->ReadNextMessage()->commentary, std::string(65531, 'x'));
  EXPECT_TRUE(reader->ReadNextMessage()->getValid());
}

TEST(BtrcReader, readsOverTheEndsOfItsOwnBuffer) {
  std::string file = head();
  for (unsigned index = 0; index < 40000; ++index) {
    file += plainFrame(kStart + index, index % 7, index);
  }
  FileReader reader(file);
  ZelkBinaryMessage message;
  for (unsigned index = 0; index < 40000; ++index) {
    ASSERT_TRUE(reader->readInto(message));
    ASSERT_EQ(message.id, index);
    ASSERT_EQ(message.timestamp, UnsignedMicroseconds(index));
  }
  EXPECT_FALSE(reader->readInto(message));
}

TEST(BtrcReader, skipsToTheNextBlock) {
  FileReader reader(filled(head() + plainFrame(5) + plainFrame(6)) + counter(0, 2, 2) + plainFrame(7));
  ASSERT_NE(reader->ReadNextMessage(), nullptr);
  EXPECT_EQ(reader->SkipCurrentBlock(),
            "Block Size: 8192 | Old position: 56 | New position 8192 | 8136 bytes advanced");
  EXPECT_LT(reader->getPercentDone(), 1.0) << "which follows at the next record";
  EXPECT_EQ(reader.types(), (Types{0x8001, 1}));
}

TEST(BtrcReader, atTheEndOfABlockAWholeOneIsSkipped) {
  FileReader reader(filled(head() + plainFrame(5)) + filled(counter(0, 2, 2)) + counter(0, 3, 3));
  ASSERT_NE(reader->ReadNextMessage(), nullptr);
  ASSERT_NE(reader->ReadNextMessage(), nullptr);
  EXPECT_EQ(reader->SkipCurrentBlock(),
            "Block Size: 8192 | Old position: 8192 | New position 16384 | 8192 bytes advanced");
  EXPECT_EQ(reader->ReadNextMessage()->commentary, "Records counter --> Total records: 3 - Total messages: 3");
}

TEST(BtrcReader, skippingBeyondTheEndOfTheFileEndsReading) {
  FileReader reader(head() + plainFrame(5) + plainFrame(6));
  ASSERT_NE(reader->ReadNextMessage(), nullptr);
  EXPECT_EQ(reader->SkipCurrentBlock(),
            "Block Size: 8192 | Old position: 56 | New position 8192 | 8136 bytes advanced");
  EXPECT_EQ(reader->ReadNextMessage(), nullptr);
}

TEST(BtrcReader, blocksOfNoLengthAreNotSkipped) {
  FileReader reader(info(1, -6, 0) + calibration() + plainFrame(5) + plainFrame(6));
  ASSERT_NE(reader->ReadNextMessage(), nullptr);
  EXPECT_EQ(reader->SkipCurrentBlock(), "Block Size: 0 | Old position: 56 | New position 56 | 0 bytes advanced");
  EXPECT_NE(reader->ReadNextMessage(), nullptr);
}

TEST(BtrcReader, recoversAfterAReceivedRemoteFrameAtTheNextBlock) {
  const std::string remote = number(28, 2) + number(2, 2) + number(kStart, 8) + frameInfo(0, 8, 1, 0x100);
  std::string file = head() + remote + plainFrame(kStart + 5);
  // The frame after it begins 8 bytes too late for the reader, who then sees its identifier as a size.
  file = file + filler(kBlock - file.size()) + counter(0, 2, 2) + plainFrame(kStart + 6);
  FileReader reader(file);
  const auto message = reader->ReadNextMessage();
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(message->kind, MessageKind::RR);
  EXPECT_EQ(message->length, 8U);
  EXPECT_EQ(message->rawBytes.size(), 28U) << "with the first bytes of the next record";
  reader->SkipCurrentBlock();
  EXPECT_EQ(reader.types(), (Types{0x8001, 1}));
}

TEST(BtrcReader, startsAgainWhenItIsOpenedAgain) {
  FileReader reader(filled(head() + plainFrame(kStart + 5)));
  EXPECT_EQ(reader.types(), (Types{1, 0}));
  EXPECT_TRUE(reader->setActive(true));
  EXPECT_EQ(reader->lineCount(), 0U);
  EXPECT_EQ(reader->invalidCount(), 0U);
  EXPECT_EQ(reader.types(), (Types{1, 0}));
}

TEST(BtrcReader, givesNothingWhileInactive) {
  FileReader reader(filled(head() + plainFrame(kStart + 5)));
  EXPECT_FALSE(reader->setActive(false));
  EXPECT_FALSE(reader->getActive());
  EXPECT_EQ(reader->ReadNextMessage(), nullptr);
  EXPECT_EQ(reader->SkipCurrentBlock(), "");
}

TEST(BtrcReader, missingFileLeavesItInactive) {
  const test::TempFolder folder;
  BtrcReader reader(BtrcInfo(folder.file("none.btrc")));
  EXPECT_FALSE(reader.setActive(true));
  EXPECT_NE(reader.failure(), "");
}

// Damage must cost records, but no crash, no hang and no byte that is not there.
TEST(BtrcReader, anyFlippedBitAndAnyLengthIsRead) {
  std::string file = head();
  file += plainFrame(kStart + 5) + received(3, kStart + 6, frameInfo(0, 15, 0x70, 0x100), std::string(64, 'x')) +
          sent(4, kStart + 7, frameInfo(0, 8, 0, 0x7FF), "12345678") + sent(5, 8, frameInfo(0, 8, 1, 1), "") +
          record(7, number(kStart, 8) + number(0, 8)) + record(8, number(kStart, 8) + number(0, 4)) +
          record(9, number(kStart, 8) + number(0, 4)) + record(10, number(0, 12)) + record(11, number(0, 20)) +
          record(0x10, number(0, 16)) + record(0x8002, "text") + counter(0, 1, 1) + filler(64);
  const auto readAll = [](const std::string& content) {
    const test::TempFolder folder;
    BtrcReader reader(BtrcInfo(folder.write("in.btrc", content)));
    reader.setActive(true);
    std::size_t count = 0;
    while (const auto message = reader.ReadNextMessage()) {
      ++count;
      EXPECT_LE(reader.getPercentDone(), 100.0);
      if (count % 5 == 0) {
        reader.SkipCurrentBlock();
      }
    }
    EXPECT_LE(count, content.size() / 4);
  };
  for (std::size_t index = 0; index < file.size(); ++index) {
    for (const int flip : {0x01, 0x80, 0xFF}) {
      std::string damaged = file;
      damaged[index] = static_cast<char>(damaged[index] ^ flip);
      readAll(damaged);
    }
    readAll(file.substr(0, index));
  }
}

}  // namespace
}  // namespace xlatr
