#include "formats/asc/asc_reader.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

constexpr char kHead[] = "base hex  timestamps absolute\n// version 7.0.0\n";

std::vector<std::string> textsOf(AscReader& reader) {
  std::vector<std::string> texts;
  while (const auto message = reader.ReadNextMessage()) {
    texts.push_back((message->valid ? "+" : "-") + message->parsingText);
  }
  return texts;
}

class AscReaderTest : public testing::Test {
 protected:
  [[nodiscard]] AscReader readerOf(const std::string& content) const {
    return AscReader(AscInfo(TraceFileInfo(folder_.write("x.asc", content))));
  }

  test::TempFolder folder_;
};

TEST_F(AscReaderTest, returnsAMessageForEveryLine) {
  AscReader reader = readerOf(std::string(kHead) + "0.1 1 100 Rx d 0\n\n// comment here\n0.2 1 100 Rx d 1 FF");
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_EQ(textsOf(reader),
            (std::vector<std::string>{"+0.1 1 100 Rx d 0", "-", "-// comment here", "+0.2 1 100 Rx d 1 FF"}));
  EXPECT_EQ(reader.invalidCount(), 2U);
  EXPECT_EQ(reader.lineCount(), 4U);
  EXPECT_EQ(reader.getPercentDone(), 100.0);
}

TEST_F(AscReaderTest, readsTheBeginOfTheBlockThatEndedTheHead) {
  AscReader reader =
      readerOf("base dec  timestamps relative\nBegin TriggerBlock\n0.1 1 100 Rx d 0\nEnd TriggerBlock\n");
  ASSERT_TRUE(reader.setActive(true));
  const auto begin = reader.ReadNextMessage();
  ASSERT_TRUE(begin);
  EXPECT_FALSE(begin->valid);
  EXPECT_EQ(begin->lineKind, AscLineKind::BlockBegin);
  const auto frame = reader.ReadNextMessage();
  ASSERT_TRUE(frame);
  EXPECT_TRUE(frame->valid);
  EXPECT_EQ(frame->id, 100U);
  EXPECT_EQ(frame->timestampsMode, AscTimestamps::Relative);
  EXPECT_FALSE(frame->hexBase);
  const auto end = reader.ReadNextMessage();
  ASSERT_TRUE(end);
  EXPECT_EQ(end->lineKind, AscLineKind::BlockEnd);
}

TEST_F(AscReaderTest, readsLinesThatEndInCrLf) {
  AscReader reader = readerOf("base hex  timestamps absolute\r\n// version 7.0.0\r\n0.1 1 100 Rx d 1 FF\r\n\r\n");
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_EQ(textsOf(reader), (std::vector<std::string>{"+0.1 1 100 Rx d 1 FF", "-"}));
  EXPECT_EQ(reader.getPercentDone(), 100.0);
}

TEST_F(AscReaderTest, returnsNothingWhileInactive) {
  AscReader reader = readerOf(std::string(kHead) + "0.1 1 100 Rx d 0\n");
  EXPECT_FALSE(reader.ReadNextMessage());
  AscMessage message;
  message.bus = 7;
  EXPECT_FALSE(reader.readInto(message));
  EXPECT_EQ(message.bus, 7U);
}

TEST_F(AscReaderTest, passesTheFailureOfAShortLineOn) {
  AscReader reader = readerOf(std::string(kHead) + "0.1 1 100 Rx d 2 01\n");
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_THROW(static_cast<void>(reader.ReadNextMessage()), std::out_of_range);
}

TEST_F(AscReaderTest, findsNoMessageInAFileWithoutAHead) {
  AscReader reader = readerOf("base hex  timestamps absolute\n0.1 1 100 Rx d 0\n");
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_TRUE(textsOf(reader).empty());
}

TEST_F(AscReaderTest, keepsACopyOfTheInformationObject) {
  const AscReader reader = readerOf(kHead);
  EXPECT_EQ(reader.getTrace().getPath(), folder_.file("x.asc"));
}

}  // namespace
}  // namespace xlatr
