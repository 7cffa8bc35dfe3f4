#include "frames/frame_capacity.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <vector>

namespace xlatr {
namespace {

constexpr std::array<std::uint8_t, 64> kZeros{};

FrameCapacity classic() {
  FrameCapacity capacity;
  for (const FrameKind kind : {FrameKind::Data, FrameKind::Remote, FrameKind::Error, FrameKind::Status}) {
    capacity.of(kind).held = true;
  }
  capacity.lowestBus = 1;
  capacity.highestBus = 4;
  capacity.resolutionNs = 1'000;
  return capacity;
}

Frame frameOf(std::size_t length, std::uint16_t flags = 0) {
  Frame frame;
  frame.bus = 1;
  frame.flags = flags;
  frame.dlc = static_cast<std::uint16_t>(length);
  frame.data = std::span(kZeros).first(length);
  return frame;
}

TEST(WhyNotHeld, namesTheFirstReason) {
  Frame event;
  event.kind = FrameKind::Event;
  Frame status = frameOf(0);
  status.kind = FrameKind::Status;
  status.text = "Bus off";
  Frame bytes = frameOf(1);
  bytes.kind = FrameKind::Error;
  Frame far = frameOf(8);
  far.id = 0x800;
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
  EXPECT_EQ(whyNotHeld(classic(), far), Remark::IdentifierNotHeld);
  EXPECT_EQ(whyNotHeld(classic(), status), Remark::TextNotHeld);
  EXPECT_EQ(whyNotHeld(classic(), bytes), Remark::DetailNotHeld);
  EXPECT_EQ(whyNotHeld(classic(), otherBus), Remark::BusNotHeld);
  EXPECT_EQ(whyNotHeld(classic(), noBus), Remark::BusNotHeld);
  EXPECT_EQ(whyNotHeld(classic(), late), Remark::TimeNotHeld);
}

// A version that keeps frames whole keeps odd ones too.
TEST(WhyNotHeld, asksOnlyForRoomWhereFramesStayWhole) {
  FrameCapacity capacity;
  capacity.whole = true;
  capacity.of(FrameKind::Data).held = true;
  capacity.of(FrameKind::Comment).held = true;
  const std::vector<std::uint8_t> bytes(2'049);
  Frame odd = frameOf(12);
  odd.id = 0xFFFFFFFF;
  odd.bus = 65'535;
  EXPECT_EQ(whyNotHeld(capacity, odd), std::nullopt);
  odd.data = std::span(bytes).first(2'048);
  EXPECT_EQ(whyNotHeld(capacity, odd), std::nullopt);
  odd.data = bytes;
  EXPECT_EQ(whyNotHeld(capacity, odd), Remark::LengthNotHeld);
  odd.kind = FrameKind::Comment;
  EXPECT_EQ(whyNotHeld(capacity, odd), std::nullopt);
  odd.kind = FrameKind::Lin;
  EXPECT_EQ(whyNotHeld(capacity, odd), Remark::KindNotHeld);
  Frame late;
  late.timeNs = kFarthestNs + 1;
  EXPECT_EQ(whyNotHeld(capacity, late), Remark::TimeNotHeld);
}

TEST(ReducedTo, keepsFramesWhole) {
  FrameCapacity capacity;
  capacity.whole = true;
  capacity.of(FrameKind::Data).held = true;
  Frame odd = frameOf(12, frame_flag::kTransmitted | frame_flag::kEnhancedChecksum | frame_flag::kBrs);
  odd.dlc = 77;
  odd.text = "words";
  odd.timeNs = 1'234;
  odd.attributes.set(FrameAttribute::LinErrors, 5);
  Account account;
  EXPECT_TRUE(sameFrame(reducedTo(capacity, odd, account), odd));
  EXPECT_TRUE(account.complete());
  capacity.resolutionNs = 1'000;
  EXPECT_EQ(reducedTo(capacity, odd, account).timeNs, 1'000);
  EXPECT_EQ(account.noted(Remark::TimeRounded).frames, 1U);
  odd.set(frame_flag::kReceived);
  EXPECT_FALSE(reducedTo(capacity, odd, account).has(frame_flag::kReceived));
}

TEST(ReducedTo, keepsWhatIsHeld) {
  FrameCapacity capacity = classic();
  capacity.of(FrameKind::Remote) = {
      .held = true, .direction = true, .attributes = attributeBits(FrameAttribute::ErrorType)};
  capacity.remoteDlc = true;
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
  Frame frame = frameOf(0, frame_flag::kTransmitted | frame_flag::kDlcKnown);
  frame.kind = FrameKind::Remote;
  frame.dlc = 5;
  frame.timeNs = 7'499;
  frame.place = 12;
  frame.text = "words";
  frame.attributes.set(FrameAttribute::Reserved, 2);
  Account account;
  const Frame reduced = reducedTo(classic(), frame, account);
  Frame expected = frameOf(0);
  expected.kind = FrameKind::Remote;
  expected.timeNs = 7'000;
  EXPECT_TRUE(sameFrame(reduced, expected));
  for (const Remark remark :
       {Remark::DirectionLost, Remark::DlcLost, Remark::DetailLost, Remark::TextLost, Remark::TimeRounded}) {
    EXPECT_EQ(account.noted(remark), (Account::Count{1, 12})) << infoOf(remark).name;
  }
}

TEST(ReducedTo, tellsThatBitsAreLost) {
  FrameCapacity capacity = classic();
  capacity.fd = true;
  Account account;
  EXPECT_EQ(reducedTo(capacity, frameOf(1, frame_flag::kFd | frame_flag::kBrs), account).flags, frame_flag::kFd);
  EXPECT_EQ(account.noted(Remark::BitsLost).frames, 1U);
}

// What means nothing for a kind of frame is no part of it, and nothing is lost without it.
TEST(ReducedTo, forgetsFlagsThatMeanNothing) {
  Frame frame = frameOf(1, frame_flag::kBrs | frame_flag::kDlcKnown | frame_flag::kEnhancedChecksum);
  frame.dlc = 1;
  Account account;
  EXPECT_EQ(reducedTo(classic(), frame, account).flags, 0);
  EXPECT_TRUE(account.complete());
}

TEST(ReducedTo, fillsWhatALineMustHave) {
  FrameCapacity capacity = classic();
  const std::uint32_t bits = attributeBits(FrameAttribute::ErrorType, FrameAttribute::ErrorPosition);
  capacity.of(FrameKind::Error) = {
      .held = true, .direction = true, .needsDirection = true, .attributes = bits, .filled = bits};
  Frame frame = frameOf(0);
  frame.kind = FrameKind::Error;
  frame.attributes.set(FrameAttribute::ErrorPosition, 7);
  Account account;
  const Frame reduced = reducedTo(capacity, frame, account);
  EXPECT_EQ(reduced.flags, frame_flag::kReceived);
  EXPECT_EQ(reduced.attributes.get(FrameAttribute::ErrorType), 3U);
  EXPECT_EQ(reduced.attributes.get(FrameAttribute::ErrorPosition), 7U);
  EXPECT_EQ(account.noted(Remark::DirectionGuessed).frames, 1U);
  EXPECT_EQ(account.noted(Remark::DetailGuessed).frames, 1U);
}

TEST(ReducedTo, knowsTheDlcOfAFrame) {
  struct Case {
    std::size_t length;
    std::uint16_t flags;
    std::uint16_t dlc;
    std::uint16_t kept;
    std::uint16_t keptWithLongDlcs;
  };
  static constexpr std::array kCases = {Case{8, 0, 8, 8, 8},
                                        Case{8, 0, 12, 8, 12},
                                        Case{8, 0, 16, 8, 8},
                                        Case{5, 0, 12, 5, 5},
                                        Case{12, frame_flag::kFd, 9, 9, 9},
                                        Case{12, frame_flag::kFd, 3, 9, 9}};
  for (const Case& test : kCases) {
    FrameCapacity capacity = classic();
    capacity.fd = true;
    capacity.longestData = 64;
    Frame frame = frameOf(test.length, test.flags);
    frame.dlc = test.dlc;
    Account account;
    EXPECT_EQ(reducedTo(capacity, frame, account).dlc, test.kept) << test.dlc;
    EXPECT_EQ(account.complete(), test.dlc == test.kept) << test.dlc;
    capacity.longDlc = true;
    EXPECT_EQ(reducedTo(capacity, frame, account).dlc, test.keptWithLongDlcs) << test.dlc;
  }
}

struct TextCase {
  const char* text;
  bool word;
  bool words;
  bool line;
};

TEST(TextCapacity, saysWhichTextsStay) {
  static constexpr std::array kCases = {TextCase{"", false, false, true},         TextCase{"one", true, true, true},
                                        TextCase{"two words", false, true, true}, TextCase{"a  b", false, false, true},
                                        TextCase{" a", false, false, true},       TextCase{"a\tb", false, false, true},
                                        TextCase{"a\nb", false, false, false}};
  for (const TextCase& test : kCases) {
    const auto holds = [&test](TextCapacity kind) {
      FrameCapacity capacity = classic();
      capacity.of(FrameKind::Status).text = kind;
      Frame frame = frameOf(0);
      frame.kind = FrameKind::Status;
      frame.text = test.text;
      return !whyNotHeld(capacity, frame).has_value();
    };
    EXPECT_FALSE(holds(TextCapacity::None)) << test.text;
    EXPECT_EQ(holds(TextCapacity::Word), test.word) << test.text;
    EXPECT_EQ(holds(TextCapacity::Words), test.words) << test.text;
    EXPECT_EQ(holds(TextCapacity::Line), test.line) << test.text;
    EXPECT_TRUE(holds(TextCapacity::Any)) << test.text;
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
