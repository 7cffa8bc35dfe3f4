#include "frames/shown_bytes.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "support/frame_text.hpp"

namespace xlatr {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(ShownBytes, areAStateWithItsHighestByteFirst) {
  EXPECT_EQ(stateOfBytes(Bytes{0x01, 0x02, 0x03, 0xFF}), 0x010203FFU);
  EXPECT_EQ(stateOfBytes(Bytes{0x01, 0x02, 0x03}), std::nullopt);
  EXPECT_EQ(stateOfBytes(Bytes{}), std::nullopt);
  Bytes bytes;
  appendStateBytes(0x010203FF, bytes);
  EXPECT_EQ(bytes, (Bytes{0x01, 0x02, 0x03, 0xFF}));
}

TEST(ShownBytes, areTheReceiveCounterBeforeTheOther) {
  Frame frame;
  frame.kind = FrameKind::Counters;
  EXPECT_FALSE(takeCounterBytes(Bytes{1}, frame));
  EXPECT_TRUE(frame.attributes.empty());
  EXPECT_TRUE(takeCounterBytes(Bytes{0x60, 0x80}, frame));
  EXPECT_EQ(test::textOf(frame), "0 counters 0 0 tx_errors=128 rx_errors=96");
  Bytes bytes;
  appendCounterBytes(frame, bytes);
  EXPECT_EQ(bytes, (Bytes{0x60, 0x80}));
}

TEST(ShownBytes, areAnErrorWithItsDirection) {
  Frame frame;
  frame.kind = FrameKind::Error;
  EXPECT_FALSE(takeErrorBytes(3, Bytes{1, 2, 3, 4}, frame));
  EXPECT_FALSE(takeErrorBytes(2, Bytes{2, 2, 3, 4}, frame));
  EXPECT_FALSE(takeErrorBytes(2, Bytes{1, 2, 3}, frame));
  EXPECT_EQ(test::textOf(frame), "0 error 0 0");
  EXPECT_TRUE(takeErrorBytes(4, Bytes{1, 2, 3, 5}, frame));
  EXPECT_EQ(test::textOf(frame), "0 error 0 0 Rx error_type=2 error_position=2 tx_errors=5 rx_errors=3");
  Bytes bytes;
  appendErrorBytes(frame, bytes);
  EXPECT_EQ(bytes, (Bytes{1, 2, 3, 5}));
}

}  // namespace
}  // namespace xlatr
