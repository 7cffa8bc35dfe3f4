#include "frames/frame_capacity.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <optional>

namespace xlatr {
namespace {

constexpr std::array<std::uint8_t, 64> kZeros{};

FrameCapacity classic() {
  FrameCapacity capacity;
  capacity.kinds = kindBit(FrameKind::Data) | kindBit(FrameKind::Remote) | kindBit(FrameKind::Error);
  capacity.lowestBus = 1;
  capacity.highestBus = 4;
  capacity.resolutionNs = 1'000;
  return capacity;
}

Frame frameOf(std::size_t length, std::uint16_t flags = 0) {
  Frame frame;
  frame.bus = 1;
  frame.flags = flags;
  frame.data = std::span(kZeros).first(length);
  return frame;
}

TEST(WhyNotHeld, namesTheFirstReason) {
  Frame event;
  event.kind = FrameKind::Event;
  Frame otherBus = frameOf(8);
  otherBus.bus = 5;
  Frame noBus = frameOf(8);
  noBus.bus = 0;
  Frame late = frameOf(8);
  late.timeNs = kFarthestNs + 1;
  EXPECT_EQ(whyNotHeld(classic(), frameOf(8)), std::nullopt);
  EXPECT_EQ(whyNotHeld(classic(), event), Remark::KindNotHeld);
  EXPECT_EQ(whyNotHeld(classic(), frameOf(8, frame_flag::kFd)), Remark::FdNotHeld);
  EXPECT_EQ(whyNotHeld(classic(), frameOf(8, frame_flag::kXl)), Remark::XlNotHeld);
  EXPECT_EQ(whyNotHeld(classic(), frameOf(12)), Remark::LengthNotHeld);
  EXPECT_EQ(whyNotHeld(classic(), otherBus), Remark::BusNotHeld);
  EXPECT_EQ(whyNotHeld(classic(), noBus), Remark::BusNotHeld);
  EXPECT_EQ(whyNotHeld(classic(), late), Remark::TimeNotHeld);
}

TEST(ReducedTo, keepsWhatIsHeld) {
  FrameCapacity capacity = classic();
  capacity.direction = true;
  capacity.remoteDlc = true;
  capacity.attributes = attributeBits(FrameAttribute::ErrorType);
  Frame frame = frameOf(0, frame_flag::kTransmitted | frame_flag::kDlcKnown);
  frame.kind = FrameKind::Remote;
  frame.dlc = 5;
  frame.timeNs = 7'000;
  frame.attributes.set(FrameAttribute::ErrorType, 2);
  Account account;
  EXPECT_TRUE(sameFrame(reducedTo(capacity, frame, account), frame));
  EXPECT_TRUE(account.complete());
}

TEST(ReducedTo, tellsWhatIsLost) {
  Frame frame = frameOf(0, frame_flag::kTransmitted | frame_flag::kDlcKnown | frame_flag::kEsi);
  frame.kind = FrameKind::Remote;
  frame.dlc = 5;
  frame.timeNs = 7'499;
  frame.place = 12;
  frame.attributes.set(FrameAttribute::Reserved, 2);
  Account account;
  const Frame reduced = reducedTo(classic(), frame, account);
  Frame expected = frameOf(0);
  expected.kind = FrameKind::Remote;
  expected.timeNs = 7'000;
  EXPECT_TRUE(sameFrame(reduced, expected));
  for (const Remark remark :
       {Remark::DirectionLost, Remark::BitsLost, Remark::DlcLost, Remark::DetailLost, Remark::TimeRounded}) {
    EXPECT_EQ(account.noted(remark), (Account::Count{1, 12})) << infoOf(remark).name;
  }
}

TEST(ReducedTo, roundsHalvesAwayFromZero) {
  struct Case {
    std::int64_t from;
    std::int64_t to;
  };
  static constexpr std::array kCases = {Case{0, 0},
                                        Case{499, 0},
                                        Case{500, 1'000},
                                        Case{1'499, 1'000},
                                        Case{-499, 0},
                                        Case{-500, -1'000},
                                        Case{-1'500, -2'000},
                                        Case{kFarthestNs, kFarthestNs},
                                        Case{-kFarthestNs + 1, -kFarthestNs}};
  for (const Case& test : kCases) {
    Frame frame = frameOf(1);
    frame.timeNs = test.from;
    Account account;
    EXPECT_EQ(reducedTo(classic(), frame, account).timeNs, test.to) << test.from;
    EXPECT_EQ(account.complete(), test.from == test.to) << test.from;
  }
}

TEST(ReducedTo, forgetsTheBusWhereNoneIsNamed) {
  FrameCapacity capacity = classic();
  capacity.lowestBus = 0;
  capacity.highestBus = 0;
  Account account;
  EXPECT_EQ(reducedTo(capacity, frameOf(1), account).bus, 0);
}

}  // namespace
}  // namespace xlatr
