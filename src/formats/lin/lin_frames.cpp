#include "formats/lin/lin_frames.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "formats/lin/lin_header.hpp"
#include "formats/lin/lin_header_keys.hpp"
#include "formats/lin/lin_message.hpp"
#include "formats/lin/lin_plain_lines.hpp"
#include "frames/text_frame_sink.hpp"
#include "frames/text_frame_source.hpp"
#include "util/start_time.hpp"
#include "util/token_cursor.hpp"

namespace xlatr {
namespace {

constexpr std::int64_t kMicrosecond = 1'000;
constexpr std::int64_t kStartNumber = 10 * kMicrosecond;  // of days with 15 digits

// Whether a line shows all of it: a direction word says more than the flags and must not contradict them, the errors
// are those that have codes, and an event's text must not look like the dashes after it.
bool fitsLinLine(const Frame& frame) {
  constexpr std::uint32_t kErrors = 0x1FF;
  constexpr std::uint32_t kHighestByte = 0xFF;
  constexpr auto kAutoLength = static_cast<std::uint32_t>(DirectionType::SubscriberAutoLength);
  if (frame.kind == FrameKind::LinEvent) {
    return frame.text && !frame.text->ends_with("--");
  }
  const FrameAttributes& attributes = frame.attributes;
  const auto direction = attributes.get(FrameAttribute::LinDirection);
  const auto model = attributes.get(FrameAttribute::ChecksumModel);
  const auto errors = attributes.get(FrameAttribute::LinErrors);
  return attributes.get(FrameAttribute::Checksum).value_or(0) <= kHighestByte &&
         (!errors || (*errors != 0 && (*errors & ~kErrors) == 0)) &&
         (!model || (*model != 0 && *model <= static_cast<std::uint32_t>(ChecksumType::Auto))) &&
         (!direction || (*direction == kAutoLength && frame.has(frame_flag::kReceived)));
}

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
  capacity.hiddenLinData = true;
  capacity.hasRoomFor = fitsLinLine;
  capacity.resolutionNs = kMicrosecond;
  capacity.earliestNs = 0;
  capacity.startResolutionNs = version == 1.0 ? 1'000'000 * kMicrosecond : kStartNumber;
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
    if (takePlainLinFrame(line, bytes_, frame)) {
      return true;
    }
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
  PlainFrameBytes bytes_;  // those of a plain line
};

// ---- from a frame to a line's message

DirectionType directionOf(const Frame& frame) {
  if (frame.attributes.has(FrameAttribute::LinDirection)) {
    return DirectionType::SubscriberAutoLength;
  }
  if (frame.has(frame_flag::kTransmitted)) {
    return DirectionType::Publisher;
  }
  return frame.has(frame_flag::kReceived) ? DirectionType::Subscriber : DirectionType::Unknown;
}

// A message like a new one, from a frame that a line can hold.
void giveMessage(const Frame& frame, KorlMessage& message) {
  message.valid = true;
  message.timestamp = UnsignedMicroseconds(static_cast<std::uint64_t>(frame.timeNs / kMicrosecond));
  message.busEvent = frame.kind == FrameKind::LinEvent;
  if (message.busEvent) {
    message.data.assign(frame.text->begin(), frame.text->end());
    message.length = static_cast<std::uint32_t>(message.data.size());
    return;
  }
  message.direction = directionOf(frame);
  message.id = frame.id;
  message.length = frame.dlc;
  message.data.assign(frame.data.begin(), frame.data.end());
  message.checksum = frame.attributes.get(FrameAttribute::Checksum).value_or(0);
  message.checksumType = static_cast<ChecksumType>(frame.attributes.get(FrameAttribute::ChecksumModel).value_or(0));
  message.errorFlags = frame.attributes.get(FrameAttribute::LinErrors).value_or(0);
}

// The lines of a LIN trace, for TextFrameSink.
class LinFrameLines : public SemicolonComments {
 public:
  LinFrameLines(const OutputTarget& /*target*/, const StreamHead& head, const SinkSettings& settings)
      : capacity_(capacityOfVersion(kCapacities, settings.version)), head_(head) {}

  [[nodiscard]] const FrameCapacity& capacity() const { return capacity_; }

  void appendHeader(TextBuffer& out) const {
    const std::int64_t start = startOrNone(head_.start);
    for (const std::string& line :
         linHeaderLines(capacity_.version, daysOfStart(start), dateTimeOfStart(start), head_.path)) {
      out.append(line);
      out.append(kLineEnd);
    }
  }

  void appendFrame(TextBuffer& out, const Frame& frame) {
    message_.reset();
    giveMessage(frame, message_);
    message_.appendText(out, capacity_.version, ++number_, Way::complete());
    out.append(kLineEnd);
  }

  void appendEnd(TextBuffer& /*out*/) const {}

 private:
  const FrameCapacity& capacity_;
  StreamHead head_;
  KorlMessage message_;
  std::uint64_t number_ = 0;
};

// The numbers of versions are those of other traces too, and not every head names the columns. Then a frame tells, or
// nothing.
bool mayHaveLinFrames(TokenCursor<'\n', '\r'> lines) {
  LinLines parser;
  Frame frame;
  bool empty = true;
  while (!lines.atEnd()) {
    const std::string_view line = lines.take();
    if (line.starts_with(LinLines::kCommentMark)) {
      continue;
    }
    empty = false;
    frame.reset();
    if (parser.understand(line, frame) && frame.kind == FrameKind::Lin) {
      return true;
    }
  }
  return empty;
}

}  // namespace

std::span<const FrameCapacity> linCapacities() {
  return kCapacities;
}

bool looksLikeLin(std::string_view start) {
  LinHeaderKeys keys;
  TokenCursor<'\n', '\r'> lines(start);
  while (lines.peek().starts_with(';')) {
    keys.look(lines.take());
  }
  return std::ranges::find(kCapacities, keys.fileVersion(), &FrameCapacity::version) != kCapacities.end() &&
         (start.find("Checksum") != std::string_view::npos || mayHaveLinFrames(lines));
}

std::unique_ptr<FrameSource> openLinFrames(const InputSource& input) {
  return std::make_unique<TextFrameSource<LinLines>>(input);
}

std::unique_ptr<FrameSink> createLinFrames(const OutputTarget& target, const StreamHead& head,
                                           const SinkSettings& settings) {
  return std::make_unique<TextFrameSink<LinFrameLines>>(target, head, settings);
}

}  // namespace xlatr
