#include "formats/asc/asc_frames.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string_view>

#include "formats/asc/asc_bus_lines.hpp"
#include "formats/asc/asc_date.hpp"
#include "formats/asc/asc_flags.hpp"
#include "formats/asc/asc_frame_parser.hpp"
#include "formats/asc/asc_head_keys.hpp"
#include "formats/asc/asc_message.hpp"
#include "formats/asc/asc_plain_lines.hpp"
#include "formats/asc/asc_printer.hpp"
#include "frames/text_frame_sink.hpp"
#include "frames/text_frame_source.hpp"
#include "messages/can_dlc.hpp"
#include "util/decimal.hpp"
#include "util/plain_fields.hpp"
#include "util/render.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

constexpr std::int64_t kTimeResolution = 1'000;
constexpr std::int64_t kStartResolution = 1'000'000;
constexpr double kFirstVersionOfForm8 = 8.0;

constexpr std::uint32_t kErrorBits = attributeBits(FrameAttribute::ErrorType, FrameAttribute::ErrorPosition);
constexpr std::uint32_t kCounterBits = attributeBits(FrameAttribute::TxErrors, FrameAttribute::RxErrors);
constexpr std::uint32_t kStateBits = attributeBits(FrameAttribute::BusState);
constexpr std::uint32_t kLinBits = attributeBits(FrameAttribute::Checksum, FrameAttribute::ChecksumModel,
                                                 FrameAttribute::LinErrors, FrameAttribute::LinDirection);

constexpr bool isForm8(double version) {
  return version == 0.0 || version >= kFirstVersionOfForm8;
}

consteval FrameCapacity row(double version) {
  constexpr std::uint16_t kHighestBus = 255;
  constexpr std::uint16_t kLongestFd = 64;
  const bool form8 = isForm8(version);
  FrameCapacity capacity;
  capacity.version = version;
  capacity.of(FrameKind::Data) = {.held = true, .direction = true, .needsDirection = true};
  capacity.of(FrameKind::Remote) = capacity.of(FrameKind::Data);
  // A name of the message.
  capacity.of(FrameKind::Data).text = form8 ? TextCapacity::Word : TextCapacity::None;
  // Only CANFD lines have a direction without an error code.
  capacity.of(FrameKind::Error) = {.held = true,
                                   .direction = true,
                                   .needsDirection = true,
                                   .text = TextCapacity::Line,
                                   .attributes = kErrorBits,
                                   .filled = kErrorBits,
                                   .fill = form8 ? FillRule::WithAttribute : FillRule::WithDirection};
  capacity.of(FrameKind::Overload) = {.held = true, .text = TextCapacity::Line};
  capacity.of(FrameKind::Status) = {.held = true, .text = TextCapacity::Line, .attributes = kStateBits | kCounterBits};
  capacity.of(FrameKind::Counters) = {.held = true, .attributes = kCounterBits, .needed = kCounterBits};
  capacity.of(FrameKind::Lin) = {.held = true, .direction = true, .needsDirection = true, .attributes = kLinBits};
  capacity.of(FrameKind::LinEvent) = {.held = true, .text = TextCapacity::Line};
  capacity.of(FrameKind::Event) = {.held = true, .bus = false, .text = TextCapacity::Line};
  capacity.of(FrameKind::Comment) = {.held = true, .bus = false, .text = TextCapacity::Any};
  capacity.comments = true;
  capacity.fd = form8;
  capacity.bitsOfFd = form8;
  capacity.longestData = form8 ? kLongestFd : std::uint16_t{8};
  capacity.longDlc = true;
  capacity.remoteDlc = true;
  capacity.longRemoteDlc = true;
  capacity.enhancedChecksum = true;
  capacity.lowestBus = 1;
  capacity.highestBus = kHighestBus;
  capacity.guessedBus = 1;
  capacity.resolutionNs = kTimeResolution;
  capacity.startResolutionNs = kStartResolution;
  capacity.hasRoomFor = hasAscLine;
  return capacity;
}

// Version 0 is that of a log without one. A sink takes it for the newest.
constexpr std::array kCapacities = {row(0.0),  row(7.0),  row(8.0),  row(9.0),  row(10.0),
                                    row(11.0), row(12.0), row(13.0), row(14.0), row(15.0)};

// ---- reading

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// In lower case, with single blanks: what other programs separate by tabs or several blanks is read all the same. No
// line of a head is longer than what is looked at.
std::string normalized(std::string_view line) {
  constexpr std::size_t kLongest = 512;
  std::string words;
  for (AscTokens tokens(line.substr(0, kLongest), Way::complete()); !tokens.atEnd();) {
    words.append(words.empty() ? "" : " ");
    for (const char character : tokens.take()) {
      words += character >= 'A' && character <= 'Z' ? static_cast<char>(character | 0x20) : character;
    }
  }
  return words;
}

constexpr std::array<std::string_view, 6> kHeadWords = {
    "date ", "base ", "timestamps ", "internal events", "no internal events", "// version "};

bool isHeadLine(std::string_view words) {
  const auto begins = [words](std::string_view start) { return words.starts_with(start); };
  return words.empty() || std::ranges::any_of(kHeadWords, begins);
}

// Whether a line begins with what may be a time. A word in its place makes it a line of the head or of a block.
bool hasTime(std::string_view line) {
  const std::size_t at = line.find_first_not_of(" \t");
  return at != std::string_view::npos && (isDecimalDigit(line[at]) || line[at] == '-' || line[at] == '.');
}

// A time in seconds, which is nothing but digits, a point and perhaps a sign.
std::optional<std::int64_t> nanosecondsOf(std::string_view token) {
  constexpr unsigned kNanosecondDigits = 9;
  constexpr std::size_t kMostDigits = 18;  // of any number of 64 bits
  static constexpr std::array<std::int64_t, kNanosecondDigits + 1> kPowers = {
      1'000'000'000, 100'000'000, 10'000'000, 1'000'000, 100'000, 10'000, 1'000, 100, 10, 1};
  std::int64_t digits = 0;
  std::size_t at = 0;
  std::size_t point = token.size();
  for (; at < token.size(); ++at) {
    if (isDecimalDigit(token[at]) && at < kMostDigits) {
      digits = digits * 10 + (token[at] - '0');
    } else if (token[at] == '.' && point == token.size()) {
      point = at;
    } else {
      break;
    }
  }
  const std::size_t decimals = point < token.size() ? token.size() - point - 1 : 0;
  // The product is as exact as the digits are few; the others, and those with a sign, are read with more care.
  constexpr std::size_t kMostBeforePoint = 9;
  if (at == token.size() && decimals <= kNanosecondDigits && token.size() - decimals <= kMostBeforePoint &&
      token.size() > (point < token.size() ? 1U : 0U)) {
    return digits * kPowers[decimals];
  }
  const std::size_t sign = token.starts_with('-') ? 1 : 0;
  const bool plain =
      token.find_first_not_of("0123456789.", sign) == std::string_view::npos && std::ranges::count(token, '.') <= 1;
  return plain ? scaledDecimal(token, kNanosecondDigits) : std::nullopt;
}

void takeFrame(const AscMessage& message, std::optional<std::uint32_t> lineDlc, Frame& frame) {
  frame.bus = static_cast<std::uint16_t>(message.bus);
  frame.id = message.id;
  frame.set(message.extended ? frame_flag::kExtended : std::uint16_t{0});
  frame.set(message.type == MessageType::Tx ? frame_flag::kTransmitted : frame_flag::kReceived);
  if (!message.commentText.empty()) {
    frame.text = message.commentText;
  }
  const std::uint32_t dlc = lineDlc.value_or(0);
  if (message.isRemote()) {
    frame.kind = FrameKind::Remote;
    frame.set(lineDlc ? frame_flag::kDlcKnown : std::uint16_t{0});
    frame.dlc = static_cast<std::uint16_t>(dlc);
    return;
  }
  constexpr std::uint32_t kLongestClassic = 8;
  frame.data = message.data;
  if ((message.flags & asc_flag::kEdl) != 0) {
    frame.set(frame_flag::kFd);
    frame.set((message.flags & asc_flag::kBrs) != 0 ? frame_flag::kBrs : std::uint16_t{0});
    frame.set((message.flags & asc_flag::kEsi) != 0 ? frame_flag::kEsi : std::uint16_t{0});
  } else if (message.length == kLongestClassic && dlc > kLongestClassic) {
    frame.dlc = static_cast<std::uint16_t>(dlc);
    return;
  }
  frame.dlc =
      static_cast<std::uint16_t>(message.length <= kLongestClassic ? message.length : lengthToDlc(message.length));
}

// The lines of an ASC log, for TextFrameSource.
class AscLines {
 public:
  static constexpr std::string_view kCommentMark = "//";

  [[nodiscard]] bool isHeader(std::string_view line) {
    line.remove_prefix(line.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
    if (hasTime(line)) {
      return false;
    }
    const std::string words = normalized(line);
    if (isHeadLine(words)) {
      take(words, line);
      return true;
    }
    // Its date is as good as that of the head, and nothing else of it says anything.
    if (isAscBlockLine(words) && !blockSeen_ && words.starts_with('b')) {
      blockSeen_ = true;
      blockStart_ = startOfAscDate(line);
      return true;
    }
    return false;
  }

  [[nodiscard]] static bool headerGoesOnAfter(std::string_view line) { return !hasTime(line); }

  void takeHead(StreamHead& head) {
    head.format = XLATR_FORMAT_ASC;
    head.version = keys_.fileVersion();
    if (const auto start = start_ ? start_ : blockStart_) {
      head.start = TraceStart{.sinceEpochNs = *start};
    }
  }

  [[nodiscard]] bool understand(std::string_view line, Frame& frame) {
    if (understandPlain(line, frame)) {
      return true;
    }
    if (!hasTime(line)) {
      return understandUntimed(line, frame);
    }
    message_.reset();
    message_.hexBase = keys_.hexBase();
    AscTokens tokens(line, Way::complete());
    const std::optional<std::int64_t> time = nanosecondsOf(tokens.take());
    if (!time || !takeTime(*time)) {
      return false;
    }
    frame.timeNs = now_;
    const std::string_view rest = tokens.rest();
    if (parseAscFrameOfAnyVersion(tokens, keys_.fileVersion(), message_)) {
      takeFrame(message_, tokens.dlc, frame);
      return true;
    }
    return parseAscBusLine(AscTokens(rest, Way::complete()), keys_.hexBase(), message_.data, frame);
  }

 private:
  // Data frames as nearly all lines have them.
  bool understandPlain(std::string_view line, Frame& frame) {
    constexpr unsigned kNanosecondDigits = 9;
    PlainFields fields(line);
    std::int64_t time = 0;
    if (!keys_.hexBase() || !fields.takeScaled<kNanosecondDigits>(time) || !takePlainAscFrame(fields, bytes_, frame)) {
      return false;
    }
    const bool known = takeTime(time);
    frame.timeNs = now_;
    return known;
  }

  void take(const std::string& words, std::string_view line) {
    keys_.look(words);
    if (!start_ && words.starts_with("date")) {
      start_ = startOfAscDate(line);
    }
  }

  // Heads and ends of blocks, and the heads of logs that were put together.
  bool understandUntimed(std::string_view line, Frame& frame) {
    const std::string words = normalized(line);
    frame.timeNs = now_;
    if (isHeadLine(words)) {
      take(words, line);
      frame.kind = FrameKind::Comment;
      frame.text = trimmed(line);
      return !words.empty();
    }
    frame.kind = FrameKind::Event;
    frame.text = trimmed(line);
    return isAscBlockLine(words);
  }

  // Moves on to the time of a line. Relative times are summed, even those of lines that can't be understood.
  bool takeTime(std::int64_t time) {
    if (time < -kFarthestNs || time > kFarthestNs) {
      return false;
    }
    if (!keys_.relativeTimestamps()) {
      now_ = time;
      return true;
    }
    const bool tooFar = time > 0 ? now_ > kFarthestNs - time : now_ < -kFarthestNs - time;
    now_ += tooFar ? 0 : time;
    return !tooFar;
  }

  AscHeadKeys keys_;
  std::optional<std::int64_t> start_;
  std::optional<std::int64_t> blockStart_;
  bool blockSeen_ = false;
  AscMessage message_;
  PlainFrameBytes bytes_;  // those of a plain line
  std::int64_t now_ = 0;
};

// ---- writing

AscFrameLine lineOfFrame(const Frame& frame) {
  const bool fd = frame.has(frame_flag::kFd);
  AscFrameLine line{.bus = frame.bus,
                    .id = frame.id,
                    .extended = frame.has(frame_flag::kExtended),
                    .transmitted = frame.has(frame_flag::kTransmitted),
                    .brs = frame.has(frame_flag::kBrs),
                    .esi = frame.has(frame_flag::kEsi),
                    .dlc = frame.dlc,
                    .length = static_cast<std::uint32_t>(frame.data.size()),
                    .data = frame.data,
                    .flags = fd ? asc_flag::kEdl : asc_flag::kClassicFrame,
                    .name = frame.text.value_or(std::string_view())};
  line.flags |= (line.brs ? asc_flag::kBrs : 0U) | (line.esi ? asc_flag::kEsi : 0U);
  return line;
}

// The lines of an ASC log, for TextFrameSink.
class AscFrameLines {
 public:
  static constexpr std::string_view kCommentMark = "//";

  AscFrameLines(const OutputTarget& /*target*/, const StreamHead& head, const SinkSettings& settings)
      : capacity_(capacityOfVersion(kCapacities, settings.version)), form8_(isForm8(capacity_.version)) {
    if (head.start) {
      start_ = head.start->sinceEpochNs;
    }
  }

  [[nodiscard]] const FrameCapacity& capacity() const { return capacity_; }

  void appendHeader(TextBuffer& out) const {
    out.append("date ");
    appendAscDate(out, start_);
    for (const std::string_view line :
         {std::string_view("base hex  timestamps absolute"), std::string_view("no internal events logged"),
          std::string_view(form8_ ? "// version 8.1.0" : "// version 7.0.0")}) {
      out.append(kLineEnd);
      out.append(line);
    }
    out.append(kLineEnd);
  }

  void appendFrame(TextBuffer& out, const Frame& frame) const {
    constexpr int kDecimals = 6;
    constexpr std::size_t kTimeColumns = 11;
    appendUnitsFixed(out, frame.timeNs / kTimeResolution, kDecimals, kTimeColumns);
    out.append(' ');
    if (frame.kind == FrameKind::Remote) {
      appendAscRemote7(out, lineOfFrame(frame), frame.has(frame_flag::kDlcKnown));
    } else if (frame.kind != FrameKind::Data) {
      appendAscBusLine(out, frame);
    } else if (form8_) {
      appendAscData8(out, lineOfFrame(frame));
    } else {
      appendAscData7(out, lineOfFrame(frame));
    }
    out.append(kLineEnd);
  }

  void appendEnd(TextBuffer& /*out*/) const {}

 private:
  const FrameCapacity& capacity_;
  bool form8_;
  std::optional<std::int64_t> start_;
};

}  // namespace

std::span<const FrameCapacity> ascCapacities() {
  return kCapacities;
}

// A date, a base or a block is enough, and so is a frame.
bool looksLikeAsc(std::string_view start) {
  AscLines lines;
  for (TokenCursor<'\n', '\r'> cursor(start); !cursor.atEnd();) {
    const std::string_view line = cursor.take();
    const std::string words = normalized(line);
    Frame frame;
    const bool head = (words.starts_with("date ") && startOfAscDate(line)) || words.starts_with("base hex") ||
                      words.starts_with("base dec") || isAscBlockLine(words);
    if (head || (hasTime(line) && lines.understand(line, frame))) {
      return true;
    }
  }
  return false;
}

std::unique_ptr<FrameSource> openAscFrames(const InputSource& input) {
  return std::make_unique<TextFrameSource<AscLines>>(input);
}

std::unique_ptr<FrameSink> createAscFrames(const OutputTarget& target, const StreamHead& head,
                                           const SinkSettings& settings) {
  return std::make_unique<TextFrameSink<AscFrameLines>>(target, head, settings);
}

}  // namespace xlatr
