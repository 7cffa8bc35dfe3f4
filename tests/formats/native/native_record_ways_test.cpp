// What the records that are written differ in between the two ways.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "formats/native/native_frame_record.hpp"
#include "formats/native/native_record.hpp"

namespace xlatr {
namespace {

std::size_t sentSize(RecordType type, std::uint8_t dlc, Way way) {
  return Internal_SentDataFrameHeader(type, {0, dlc, 0, 0x123}, 1, 1, way).header.size;
}

std::size_t receivedSize(RecordType type, std::uint8_t dlc, Way way) {
  return Internal_ReceivedDataFrameHeader(type, {0, dlc, 0, 0x123}, 1, way).header.size;
}

TEST(NativeRecordWays, giveSentFramesRoom) {
  constexpr RecordType kFd = RecordType::CanTxFdMsg;
  EXPECT_EQ(sentSize(kFd, 15, Way::compatible()), 28U + 16U);
  EXPECT_EQ(sentSize(kFd, 15, Way::complete()), 28U + 64U);
  EXPECT_EQ(sentSize(kFd, 10, Way::complete()), 28U + 16U);
  for (std::uint8_t dlc = 0; dlc <= 9; ++dlc) {
    EXPECT_EQ(sentSize(kFd, dlc, Way::compatible()), sentSize(kFd, dlc, Way::complete())) << int{dlc};
  }
}

TEST(NativeRecordWays, stateTheLengthOfRemoteFrames) {
  EXPECT_EQ(receivedSize(RecordType::CanRxRtrMsg, 8, Way::compatible()), 28U);
  EXPECT_EQ(receivedSize(RecordType::CanRxRtrMsg, 8, Way::complete()), 20U);
  EXPECT_EQ(receivedSize(RecordType::CanRxMsg, 8, Way::compatible()), 28U);
  EXPECT_EQ(receivedSize(RecordType::CanRxMsg, 8, Way::complete()), 28U);
  EXPECT_EQ(sentSize(RecordType::CanTxRtrMsg, 8, Way::compatible()), 28U);
  EXPECT_EQ(sentSize(RecordType::CanTxRtrMsg, 8, Way::complete()), 28U);
}

std::string commentRecord(std::string_view text, Way way) {
  Bytes bytes;
  appendComment(bytes, text, way);
  return {bytes.begin(), bytes.end()};
}

TEST(NativeRecordWays, fillTextsWithZeros) {
  using namespace std::string_literals;
  EXPECT_EQ(commentRecord("lunch", Way::compatible()), "\x0C\x00\x02\x80lunch   "s);
  EXPECT_EQ(commentRecord("lunch", Way::complete()), "\x0C\x00\x02\x80lunch\0\0\0"s);
  EXPECT_EQ(commentRecord("four", Way::complete()), "\x08\x00\x02\x80"s + "four");
  EXPECT_EQ(commentRecord("its ", Way::complete()), "\x0C\x00\x02\x80its \0\0\0\0"s);
}

TEST(NativeRecordWays, readBlanksAtTheEndAsFilling) {
  struct Case {
    std::string_view text;
    Way writer;
    std::string_view compatible;
    std::string_view complete;
  };
  const Case cases[] = {
      {"lunch", Way::compatible(), "lunch   ", "lunch"},
      {"lunch", Way::complete(), "lunch", "lunch"},
      {"its ", Way::complete(), "its ", "its "},
      {"its ", Way::compatible(), "its ", "its"},
      {"", Way::complete(), "", ""},
      {"        ", Way::compatible(), "        ", "     "},
  };
  for (const Case& test : cases) {
    Bytes record;
    appendComment(record, test.text, test.writer);
    EXPECT_EQ(commentOf(record, Way::compatible()), test.compatible) << test.text;
    EXPECT_EQ(commentOf(record, Way::complete()), test.complete) << test.text;
  }
}

}  // namespace
}  // namespace xlatr
