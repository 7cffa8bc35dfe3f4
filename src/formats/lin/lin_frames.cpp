#include "formats/lin/lin_frames.hpp"

#include <array>
#include <cstdint>
#include <string_view>

#include "formats/lin/lin_header_keys.hpp"
#include "formats/lin/lin_message.hpp"
#include "frames/text_frame_source.hpp"
#include "util/start_time.hpp"

namespace xlatr {
namespace {

constexpr std::int64_t kMicrosecond = 1'000;

consteval FrameCapacity row(double version) {
  FrameCapacity capacity;
  capacity.version = version;
  capacity.of(FrameKind::Lin) = {.held = true,
                                 .direction = true,
                                 .attributes = attributeBits(FrameAttribute::Checksum, FrameAttribute::ChecksumModel,
                                                             FrameAttribute::LinErrors, FrameAttribute::LinDirection),
                                 .filled = attributeBits(FrameAttribute::Checksum)};
  capacity.of(FrameKind::Comment) = {.held = true, .bus = false, .text = TextCapacity::Any};
  capacity.comments = true;
  capacity.enhancedChecksum = true;
  capacity.resolutionNs = kMicrosecond;
  capacity.earliestNs = 0;
  capacity.startResolutionNs = version == 1.0 ? 1'000'000 * kMicrosecond : kMicrosecond;
  return capacity;
}

consteval FrameCapacity withEvents(FrameCapacity capacity) {
  capacity.of(FrameKind::LinEvent) = {.held = true, .text = TextCapacity::Words};
  return capacity;
}

constexpr std::array kCapacities = {row(1.0), row(1.1), withEvents(row(1.2))};

void takeFlags(const KorlMessage& message, Frame& frame) {
  frame.set(message.checksumType == ChecksumType::Enhanced ? frame_flag::kEnhancedChecksum : std::uint16_t{0});
  const MessageDirection direction = messageDirectionOf(message.direction);
  if (direction != MessageDirection::None) {
    frame.set(direction == MessageDirection::Tx ? frame_flag::kTransmitted : frame_flag::kReceived);
  }
}

// What the frame refers to belongs to the message.
void takeMessage(const KorlMessage& message, Frame& frame) {
  if (message.busEvent) {
    frame.kind = FrameKind::LinEvent;
    frame.text = std::string_view(reinterpret_cast<const char*>(message.data.data()), message.data.size());
    return;
  }
  frame.kind = FrameKind::Lin;
  takeFlags(message, frame);
  frame.id = message.id;
  frame.dlc = static_cast<std::uint16_t>(message.length);
  frame.data = message.data;
  frame.attributes.set(FrameAttribute::Checksum, message.checksum);
  if (message.checksumType != ChecksumType::Unknown) {
    frame.attributes.set(FrameAttribute::ChecksumModel, static_cast<std::uint32_t>(message.checksumType));
  }
  if (message.errorFlags != 0) {
    frame.attributes.set(FrameAttribute::LinErrors, message.errorFlags);
  }
  if (message.direction == DirectionType::SubscriberAutoLength) {
    frame.attributes.set(FrameAttribute::LinDirection, static_cast<std::uint32_t>(message.direction));
  }
}

// The lines of a LIN trace, for TextFrameSource.
class LinLines : public SemicolonComments {
 public:
  [[nodiscard]] bool isHeader(std::string_view line) {
    if (line.empty() || line.front() != ';') {
      return false;
    }
    keys_.look(line);
    return true;
  }

  void takeHead(StreamHead& head) {
    head.format = XLATR_FORMAT_LIN;
    head.version = keys_.fileVersion();
    if (const auto start = startOf(keys_.startNumber(), keys_.startText())) {
      head.start = TraceStart{.sinceEpochNs = *start};
    }
  }

  [[nodiscard]] bool understand(std::string_view line, Frame& frame) {
    constexpr std::uint64_t kFarthest = kFarthestNs / kMicrosecond;
    constexpr std::uint32_t kLongest = 255;  // more than any LIN frame, which versions of other producers may stretch
    message_.reset();
    message_.parseLine(line, Way::complete());
    const std::uint64_t time = message_.timestamp.count();
    if (!message_.valid || time > kFarthest || (!message_.busEvent && message_.length > kLongest)) {
      return false;
    }
    frame.timeNs = static_cast<std::int64_t>(time) * kMicrosecond;
    takeMessage(message_, frame);
    return true;
  }

 private:
  LinHeaderKeys keys_;
  KorlMessage message_;
};

}  // namespace

std::span<const FrameCapacity> linCapacities() {
  return kCapacities;
}

std::unique_ptr<FrameSource> openLinFrames(const std::string& path) {
  return std::make_unique<TextFrameSource<LinLines>>(path);
}

}  // namespace xlatr
