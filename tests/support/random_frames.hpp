// Frames of every kind, likely ones and odd ones, for tests of what formats can hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "frames/frame.hpp"
#include "messages/can_dlc.hpp"

namespace xlatr::test {

// A frame with what it refers to.
struct OwnedFrame {
  Frame frame;
  std::vector<std::uint8_t> data;
  std::string text;

  // The frame, which refers to this object.
  [[nodiscard]] Frame view() const {
    Frame viewed = frame;
    viewed.data = data;
    if (frame.text) {
      viewed.text = text;
    }
    return viewed;
  }
};

// The same seed gives the same frames, on every platform: only the engine's own numbers are used.
class RandomFrames {
 public:
  explicit RandomFrames(std::uint32_t seed) : engine_(seed) {}

  OwnedFrame next() {
    OwnedFrame made;
    Frame& frame = made.frame;
    frame.kind = isRare() ? static_cast<FrameKind>(below(kFrameKindCount)) : FrameKind::Data;
    takeTime(frame);
    frame.bus = isRare() ? pick<std::uint16_t>({0, 4, 5, 16, 17, 254, 255, 256, 65535}) : below<std::uint16_t>(3);
    makeContent(made);
    if (isRare()) {
      makeOdd(made);
    }
    if (makesText(frame.kind)) {
      made.text = text();
      frame.text = made.text;
    }
    frame.place = ++place_;
    return made;
  }

 private:
  std::uint32_t number() { return static_cast<std::uint32_t>(engine_()); }
  template <typename Value = std::uint32_t>
  Value below(std::size_t limit) {
    return static_cast<Value>(number() % limit);
  }
  template <typename Value>
  Value pick(std::initializer_list<Value> values) {
    return *(values.begin() + below(values.size()));
  }
  bool isRare() { return below(8) == 0; }

  void takeTime(Frame& frame) {
    timeNs_ += isRare() ? 0 : below(3'000'000);
    if (below(64) == 0) {
      timeNs_ += std::int64_t{below(1'000'000)} * 100'000;
    }
    frame.timeNs = isRare() ? timeNs_ : timeNs_ / 1'000 * 1'000;
  }

  void fill(OwnedFrame& made, std::size_t length) {
    for (std::size_t at = 0; at < length; ++at) {
      made.data.push_back(below<std::uint8_t>(256));
    }
  }

  void setMaybe(Frame& frame, FrameAttribute attribute, std::size_t limit) {
    if (!isRare()) {
      frame.attributes.set(attribute, below(limit));
    }
  }

  void makeContent(OwnedFrame& made) {
    Frame& frame = made.frame;
    frame.set(pick<std::uint16_t>({frame_flag::kReceived, frame_flag::kReceived, frame_flag::kTransmitted, 0}));
    switch (frame.kind) {
      case FrameKind::Data:
      case FrameKind::Remote:
        makeCan(made);
        break;
      case FrameKind::Lin:
        makeLin(made);
        break;
      case FrameKind::Error:
        setMaybe(frame, FrameAttribute::ErrorType, 4);
        setMaybe(frame, FrameAttribute::ErrorPosition, 32);
        [[fallthrough]];
      case FrameKind::Counters:
        setMaybe(frame, FrameAttribute::TxErrors, 256);
        setMaybe(frame, FrameAttribute::RxErrors, 256);
        break;
      case FrameKind::Status:
        setMaybe(frame, FrameAttribute::BusState, 0x80000);
        if (isRare()) {
          frame.attributes.set(FrameAttribute::BusLoad, below(10'001));
        }
        break;
      default:
        frame.flags = 0;
        frame.bus = frame.kind == FrameKind::Comment ? std::uint16_t{0} : frame.bus;
    }
  }

  void makeCan(OwnedFrame& made) {
    Frame& frame = made.frame;
    const bool extended = below(2) == 0;
    frame.set(extended ? frame_flag::kExtended : std::uint16_t{0});
    frame.id = number() & (extended ? 0x1FFFFFFFU : 0x7FFU);
    if (frame.kind == FrameKind::Remote) {
      frame.set(isRare() ? std::uint16_t{0} : frame_flag::kDlcKnown);
      frame.dlc = frame.has(frame_flag::kDlcKnown) ? below<std::uint16_t>(9) : std::uint16_t{0};
      return;
    }
    const std::uint32_t form = below(16);
    if (form == 0) {
      makeXl(made);
      return;
    }
    if (form < 6) {
      frame.set(frame_flag::kFd);
      frame.set(below<std::uint16_t>(2) * frame_flag::kBrs);
      frame.set(below<std::uint16_t>(2) * frame_flag::kEsi);
    }
    frame.dlc = below<std::uint16_t>(form < 6 ? 16 : 9);
    fill(made, kDlcLengths[frame.dlc]);
  }

  void makeXl(OwnedFrame& made) {
    Frame& frame = made.frame;
    frame.set(frame_flag::kXl);
    frame.unset(frame_flag::kExtended);
    frame.id &= 0x7FFU;
    frame.dlc = isRare() ? below<std::uint16_t>(2048) : below<std::uint16_t>(64);
    fill(made, frame.dlc + std::size_t{1});
    setMaybe(frame, FrameAttribute::Vcid, 256);
    setMaybe(frame, FrameAttribute::Sdt, 256);
    setMaybe(frame, FrameAttribute::AcceptanceField, 0xFFFFFFFF);
    setMaybe(frame, FrameAttribute::Rrs, 2);
    setMaybe(frame, FrameAttribute::Sec, 2);
  }

  void makeLin(OwnedFrame& made) {
    Frame& frame = made.frame;
    frame.id = below(64);
    frame.dlc = below<std::uint16_t>(9);
    if (!isRare()) {
      fill(made, frame.dlc);
    }
    setMaybe(frame, FrameAttribute::Checksum, 256);
    frame.set(below<std::uint16_t>(2) * frame_flag::kEnhancedChecksum);
    if (isRare()) {
      setMaybe(frame, FrameAttribute::ChecksumModel, 4);
      setMaybe(frame, FrameAttribute::LinErrors, 512);
      setMaybe(frame, FrameAttribute::LinDirection, 4);
    }
  }

  // What no source of ours makes, but a caller may.
  void makeOdd(OwnedFrame& made) {
    Frame& frame = made.frame;
    switch (below(9)) {
      case 0:
        frame.id = number();
        break;
      case 1:
        frame.dlc = below<std::uint16_t>(20);
        break;
      case 2:
        fill(made, below(70));
        break;
      case 3:
        frame.flags = below<std::uint16_t>(0x200);
        break;
      case 4:
        frame.attributes.set(static_cast<FrameAttribute>(below(kFrameAttributeCount)), below(300));
        break;
      case 5:
        frame.attributes.set(static_cast<FrameAttribute>(below(kFrameAttributeCount)), number());
        break;
      case 6:
        frame.timeNs = pick<std::int64_t>({-1, -499, -500, -1'000, -1'000'000'000, kFarthestNs, -kFarthestNs});
        break;
      case 7:
        made.text = text();
        frame.text = made.text;
        break;
      default:
        frame.attributes.set(FrameAttribute::Reserved, below(0x8000));
    }
  }

  bool makesText(FrameKind kind) {
    switch (kind) {
      case FrameKind::Event:
      case FrameKind::LinEvent:
      case FrameKind::Comment:
        return true;
      case FrameKind::Status:
      case FrameKind::Error:
        return below(4) == 0;
      default:
        return false;
    }
  }

  std::string text() {
    // Words, separators, and what readers take for parts of a line or for a whole one.
    static constexpr std::string_view kPieces[] = {"Bus",
                                                   "Sleep",
                                                   " ",
                                                   "  ",
                                                   "\t",
                                                   "\n",
                                                   "\r",
                                                   "\\",
                                                   "=",
                                                   ";",
                                                   "//",
                                                   "--",
                                                   "\xC3\xA9",
                                                   "0",
                                                   "xlatr:",
                                                   "data time=1",
                                                   "\"",
                                                   ",",
                                                   "BUSHEAVY",
                                                   "ERROR",
                                                   "1.5",
                                                   "CAN",
                                                   "RTR",
                                                   "x",
                                                   "12",
                                                   "BusOff",
                                                   "BusOff, BusPassive",
                                                   "chip status bus off",
                                                   "123 Rx d 0",
                                                   "1 123 Rx d 0",
                                                   "2d Rx 1 FF",
                                                   "ECC: 01010101",
                                                   "Flags = 1 Code = 3",
                                                   "Comment: 0",
                                                   "Comment: 0 x",
                                                   "Env := 1",
                                                   "1 Statistic: D 1",
                                                   "1 Statistic: Rx d 0 ID = 5",
                                                   "Begin TriggerBlock"};
    std::string made;
    for (std::uint32_t left = below(6); left > 0; --left) {
      made += kPieces[below(std::size(kPieces))];
    }
    return made;
  }

  std::mt19937 engine_;
  std::int64_t timeNs_ = 0;
  std::uint64_t place_ = 0;
};

}  // namespace xlatr::test
