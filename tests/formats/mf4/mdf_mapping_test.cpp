#include "formats/mf4/mdf_mapping.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace xlatr {
namespace {

BrixMessage messageOf(MessageKind kind) {
  BrixMessage source;
  source.valid = true;
  source.timeOffset = RealMilliseconds(1.5);
  source.bus = 3;
  source.id = 0x123;
  source.kind = kind;
  source.type = MessageType::Rx;
  source.direction = MessageDirection::Tx;
  return source;
}

TEST(MdfMapping, takesTheFieldsOfATrcMessage) {
  BrixMessage source = messageOf(MessageKind::FB);
  source.extended = true;
  source.length = 3;
  source.data = {1, 2, 3};
  MdfCanMessage target;
  mapToMdf(source, target);
  EXPECT_TRUE(target.valid);
  EXPECT_EQ(target.time, RealMicroseconds(1500.0));
  EXPECT_EQ(target.bus, 3U);
  EXPECT_EQ(target.id, 0x123U);
  EXPECT_EQ(target.kind, MessageKind::FB);
  EXPECT_EQ(target.type, MessageType::Rx);
  EXPECT_EQ(target.direction, MessageDirection::Tx);
  EXPECT_TRUE(target.extended);
  EXPECT_EQ(target.length, 3U);
  EXPECT_EQ(target.dlc, 3U);
  EXPECT_EQ(target.data, (std::vector<std::uint8_t>{1, 2, 3}));
}

TEST(MdfMapping, takesFramesOnly) {
  struct Case {
    MessageKind kind;
    bool valid;
    std::uint8_t frameKind;
  };
  const Case cases[] = {{MessageKind::DT, true, 0},  {MessageKind::FD, true, 0},  {MessageKind::FB, true, 0},
                        {MessageKind::FE, true, 0},  {MessageKind::BI, true, 0},  {MessageKind::RR, true, 1},
                        {MessageKind::ST, false, 0}, {MessageKind::EC, false, 0}, {MessageKind::ER, true, 2},
                        {MessageKind::EV, false, 0}, {MessageKind::XL, false, 0}, {MessageKind::Unknown, false, 0}};
  MdfCanMessage target;  // what it was before does not matter
  for (const Case& item : cases) {
    mapToMdf(messageOf(item.kind), target);
    EXPECT_EQ(target.valid, item.valid) << messageKindToText(item.kind);
    if (item.valid) {
      EXPECT_EQ(target.frameKind, item.frameKind) << messageKindToText(item.kind);
    }
  }
}

// Whoever hands over a message has asked before whether it is valid.
TEST(MdfMapping, takesAFrameWhateverItsSourceSaysOfItself) {
  BrixMessage source = messageOf(MessageKind::DT);
  source.valid = false;
  MdfCanMessage target;
  mapToMdf(source, target);
  EXPECT_TRUE(target.valid);
}

TEST(MdfMapping, makesTheDlcFromTheLength) {
  const std::uint32_t dlcs[][2] = {{0, 0},   {1, 1},   {8, 8},   {9, 9},   {12, 9},  {13, 10},
                                   {16, 10}, {17, 11}, {20, 11}, {21, 12}, {24, 12}, {25, 13},
                                   {32, 13}, {33, 14}, {48, 14}, {49, 15}, {64, 15}, {65, 15}};
  for (const auto& [length, dlc] : dlcs) {
    BrixMessage source = messageOf(MessageKind::FD);
    source.length = length;
    MdfCanMessage target;
    mapToMdf(source, target);
    EXPECT_EQ(target.dlc, dlc) << length;
  }
}

TEST(MdfMapping, findsTheErrorWhereTheVersionKeepsIt) {
  struct Case {
    const char* name;
    std::uint32_t id;
    std::uint32_t length;
    std::vector<std::uint8_t> data;
    std::uint8_t errorType;
    std::uint8_t bitPosition;
  };
  const Case cases[] = {
      {"five bytes", 9, 5, {1, 9, 4, 9, 9}, 1, 1},
      {"six bytes", 9, 6, {2, 9, 3, 9, 9, 9}, 2, 0},
      {"four bytes", 0x104, 4, {9, 200, 9, 9}, 3, 197},
      {"other error", 8, 4, {9, 2, 9, 9}, 0, 255},
      {"both errors", 3, 4, {9, 255, 9, 9}, 0, 252},
      {"three bytes", 1, 3, {1, 9, 9}, 0, 255},
      {"length without data", 1, 5, {1, 9, 9}, 0, 255},
      {"four of length, fewer data", 1, 4, {1, 9, 9}, 0, 255},
      {"nothing", 1, 0, {}, 0, 255},
  };
  MdfCanMessage target;
  for (const Case& item : cases) {
    BrixMessage source = messageOf(MessageKind::ER);
    source.id = item.id;
    source.length = item.length;
    source.data = item.data;
    mapToMdf(source, target);
    EXPECT_TRUE(target.valid) << item.name;
    EXPECT_EQ(target.errorType, item.errorType) << item.name;
    EXPECT_EQ(target.bitPosition, item.bitPosition) << item.name;
  }
}

}  // namespace
}  // namespace xlatr
