#include "formats/lin/lin_reader.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

class LinReaderTest : public testing::Test {
 protected:
  [[nodiscard]] KorlReader readerOf(const std::string& content) const {
    return KorlReader(KorlInfo(TraceFileInfo(folder_.write("x.ltrc", content))));
  }

  test::TempFolder folder_;
};

std::vector<std::string> textsOf(KorlReader& reader) {
  std::vector<std::string> texts;
  while (const auto message = reader.ReadNextMessage()) {
    texts.push_back((message->valid ? "+" : "-") + message->parsingText);
  }
  return texts;
}

TEST_F(LinReaderTest, returnsEveryLineExceptComments) {
  KorlReader reader =
      readerOf(";$FILEVERSION=1.2\n1) 1 Pub 01 0 FF CL\n; a comment\n\nno frame\n2) 2 Sub 02 1 00 FF EH CK");
  EXPECT_FALSE(reader.ReadNextMessage());
  ASSERT_TRUE(reader.setActive(true));
  const std::vector<std::string> expected{"+1) 1 Pub 01 0 FF CL", "-", "-no frame", "+2) 2 Sub 02 1 00 FF EH CK"};
  EXPECT_EQ(textsOf(reader), expected);
  EXPECT_EQ(reader.getPercentDone(), 100.0);
  EXPECT_EQ(reader.invalidCount(), 2U);
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_EQ(textsOf(reader), expected);
}

TEST_F(LinReaderTest, usesAMessageAgain) {
  KorlReader reader = readerOf(";$FILEVERSION=1.2\n1) 7 Sub 01 1 22 FF EH CK\nbroken\n");
  ASSERT_TRUE(reader.setActive(true));
  KorlMessage message;
  ASSERT_TRUE(reader.readInto(message));
  ASSERT_TRUE(reader.readInto(message));
  EXPECT_EQ(message.timestamp, UnsignedMicroseconds(0U));
  EXPECT_EQ(message.errorFlags, 0U);
  EXPECT_EQ(message.checksum, 0U);
  EXPECT_TRUE(message.data.empty());
  EXPECT_EQ(message.id, kNoIdentifier);
  EXPECT_FALSE(reader.readInto(message));
}

TEST_F(LinReaderTest, endsAtOnceAfterAHeaderAlone) {
  KorlReader reader = readerOf(";$FILEVERSION=1.2\r\n;\r\n");
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_EQ(reader.getPercentDone(), 100.0);
  EXPECT_FALSE(reader.ReadNextMessage());
}

}  // namespace
}  // namespace xlatr
