#include "formats/trc/trc_frames.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "formats/trc/trc_header.hpp"
#include "formats/trc/trc_header_keys.hpp"
#include "formats/trc/trc_message.hpp"
#include "formats/trc/trc_parser.hpp"
#include "formats/trc/trc_plain_lines.hpp"
#include "formats/trc/trc_printer.hpp"
#include "formats/trc/trc_version.hpp"
#include "frames/shown_bytes.hpp"
#include "frames/text_frame_sink.hpp"
#include "frames/text_frame_source.hpp"
#include "messages/can_dlc.hpp"
#include "messages/error_type.hpp"
#include "messages/fd_kind.hpp"
#include "util/decimal.hpp"
#include "util/host.hpp"
#include "util/render.hpp"
#include "util/start_time.hpp"
#include "util/text.hpp"
#include "util/token_cursor.hpp"

namespace xlatr {
namespace {

constexpr std::int64_t kMicrosecond = 1'000;
constexpr std::int64_t kMillisecond = 1'000'000;
constexpr std::uint16_t kHighestBus = std::numeric_limits<std::uint16_t>::max();
constexpr std::uint16_t kLongestFd = 64;
constexpr std::uint32_t kLongestXl = 2048;
constexpr int kNoReserved = -1;

constexpr std::uint32_t kCounters = attributeBits(FrameAttribute::TxErrors, FrameAttribute::RxErrors);
constexpr std::uint32_t kErrorBytes =
    kCounters | attributeBits(FrameAttribute::ErrorType, FrameAttribute::ErrorPosition);
constexpr std::uint32_t kReserved = attributeBits(FrameAttribute::Reserved);
constexpr std::uint32_t kXlAttributes =
    attributeBits(FrameAttribute::Vcid, FrameAttribute::Sdt, FrameAttribute::AcceptanceField, FrameAttribute::Rrs,
                  FrameAttribute::Sec);

// The words with which a line shows a state, and the last of them, which is what its reader takes for its text.
struct StateWords {
  explicit StateWords(std::uint32_t state) : all(warningErrorsToText(state)) {}

  [[nodiscard]] bool have(std::string_view text) const {
    return text == all || text == std::string_view(all).substr(all.rfind(' ') + 1);
  }

  std::string all;
};

// Lines of 1.0 have dashes where the words of a state are missing.
bool isDashes(std::string_view text) {
  return text.find_first_not_of('-') == std::string_view::npos;
}

// Whether the columns and bytes of a line have room for the attributes, and its text can't be taken for another part of
// it.
bool fitsTrcLine(const Frame& frame) {
  struct Room {
    FrameAttribute attribute;
    std::uint32_t highest;
  };
  constexpr std::uint32_t kByte = 0xFF;
  static constexpr std::array kRooms = {
      Room{FrameAttribute::ErrorType, kOtherError},
      Room{FrameAttribute::ErrorPosition, kByte},
      Room{FrameAttribute::TxErrors, kByte},
      Room{FrameAttribute::RxErrors, kByte},
      Room{FrameAttribute::Vcid, kByte},
      Room{FrameAttribute::Sdt, kByte},
      Room{FrameAttribute::Rrs, kByte},
      Room{FrameAttribute::Sec, kByte},
      Room{FrameAttribute::Reserved, 0x7FFF},
  };
  const FrameAttributes& attributes = frame.attributes;
  if (frame.text) {
    if (frame.kind == FrameKind::Status) {
      const auto state = attributes.get(FrameAttribute::BusState);
      return !isDashes(*frame.text) && !StateWords(state.value_or(0)).have(*frame.text);
    }
    if (equalsIgnoreCase(*frame.text, "ERROR") || equalsIgnoreCase(*frame.text, "RTR")) {
      return false;
    }
  }
  if (attributes.empty()) {
    return true;
  }
  const bool ofXl = (attributes.present() & kXlAttributes) == 0 || frame.has(frame_flag::kXl);
  return ofXl && std::ranges::all_of(kRooms, [&attributes](const Room& room) {
           return attributes.get(room.attribute).value_or(0) <= room.highest;
         });
}

// What the rows have in common: frames and states of a bus, and comments as lines of their own.
consteval FrameCapacity row(double version, std::int64_t resolutionNs) {
  FrameCapacity capacity;
  capacity.version = version;
  const bool direction = version != 1.0;
  capacity.of(FrameKind::Data) = {.held = true, .direction = direction, .needsDirection = direction};
  capacity.of(FrameKind::Remote) = capacity.of(FrameKind::Data);
  const std::uint32_t state = attributeBits(FrameAttribute::BusState);
  capacity.of(FrameKind::Status) = {.held = true, .attributes = state, .needed = state};
  capacity.of(FrameKind::Comment) = {.held = true, .bus = false, .text = TextCapacity::Any};
  capacity.comments = true;
  capacity.remoteDlc = true;
  capacity.needsRemoteDlc = true;
  capacity.resolutionNs = resolutionNs;
  // 1.0 has no number of days.
  constexpr std::int64_t kStartNumber = 10 * kMicrosecond;
  capacity.startResolutionNs = version == 1.0 ? kMillisecond : version < 2.0 ? kStartNumber : kMicrosecond;
  capacity.hasRoomFor = fitsTrcLine;
  return capacity;
}

// A word after the bytes.
consteval FrameCapacity withWords(FrameCapacity capacity, std::initializer_list<FrameKind> kinds) {
  for (const FrameKind kind : kinds) {
    capacity.of(kind).text = TextCapacity::Word;
  }
  return capacity;
}

consteval FrameCapacity withErrors(FrameCapacity capacity) {
  // The direction is one of the bytes.
  capacity.of(FrameKind::Error) = {
      .held = true, .direction = true, .needsDirection = true, .attributes = kErrorBytes, .filled = kErrorBytes};
  capacity.of(FrameKind::Counters) = {.held = true, .attributes = kCounters, .needed = kCounters};
  return capacity;
}

consteval FrameCapacity withBuses(FrameCapacity capacity) {
  capacity.highestBus = kHighestBus;
  return capacity;
}

consteval FrameCapacity withReserved(FrameCapacity capacity) {
  for (const FrameKind kind : {FrameKind::Data, FrameKind::Remote}) {
    capacity.of(kind).attributes |= kReserved;
  }
  return capacity;
}

// The versions with a list of columns.
consteval FrameCapacity withFd(FrameCapacity capacity) {
  capacity.of(FrameKind::Event) = {.held = true, .text = TextCapacity::Words};
  capacity.fd = true;
  capacity.bitsOfFd = true;
  capacity.longestData = kLongestFd;
  capacity.longRemoteDlc = true;
  return capacity;
}

consteval FrameCapacity withXl(FrameCapacity capacity) {
  capacity.of(FrameKind::Data).attributes |= kXlAttributes;
  capacity.xl = true;
  return capacity;
}

constexpr std::array kCapacities = {
    withWords(row(1.0, kMillisecond), {FrameKind::Status}),
    withWords(withErrors(row(1.1, 100 * kMicrosecond)),
              {FrameKind::Data, FrameKind::Status, FrameKind::Error, FrameKind::Counters}),
    withBuses(withErrors(row(1.2, kMicrosecond))),
    withReserved(withBuses(withErrors(row(1.3, kMicrosecond)))),
    withFd(withErrors(row(2.0, kMicrosecond))),
    withReserved(withFd(withBuses(withErrors(row(2.1, kMicrosecond))))),
    withXl(withReserved(withFd(withBuses(withErrors(row(3.0, kMicrosecond)))))),
};
static_assert(kCapacities.size() == kTrcVersions.size());

constexpr const FrameCapacity& capacityOf(const TrcVersion& version) {
  return kCapacities[static_cast<std::size_t>(&version - kTrcVersions.data())];
}

// ---- from a line's message to a frame

void takeDirection(const BrixMessage& message, Frame& frame) {
  if (message.direction != MessageDirection::None) {
    frame.set(message.direction == MessageDirection::Tx ? frame_flag::kTransmitted : frame_flag::kReceived);
  }
}

void takeCounters(std::span<const std::uint8_t> bytes, Frame& frame) {
  frame.kind = FrameKind::Counters;
  if (!takeCounterBytes(bytes, frame)) {
    frame.data = bytes;
  }
}

void takeErrorLine(const BrixMessage& message, Frame& frame) {
  constexpr std::size_t kCounterBytes = 2;
  frame.kind = FrameKind::Error;
  const std::span<const std::uint8_t> bytes = message.data;
  if (message.columnBased) {
    frame.data = !bytes.empty() && takeErrorBytes(bytes.front(), bytes.subspan(1), frame) ? frame.data.first(0) : bytes;
    return;
  }
  // Versions with fixed columns have one word for both.
  if (message.id == 0 && bytes.size() == kCounterBytes) {
    takeCounters(bytes, frame);
  } else if (!takeErrorBytes(message.id, bytes, frame)) {
    frame.id = message.id;
    frame.data = bytes;
  }
}

void takeStatus(const BrixMessage& message, Frame& frame) {
  frame.kind = FrameKind::Status;
  const auto state = stateOfBytes(message.data);
  if (!state) {
    frame.data = message.data;
    frame.text = message.comment.empty() ? std::nullopt : std::optional<std::string_view>(message.comment);
    return;
  }
  frame.attributes.set(FrameAttribute::BusState, *state);
  // Words that say no more than the bits are no text of the source.
  if (!isDashes(message.comment) && !StateWords(*state).have(message.comment)) {
    frame.text = message.comment;
  }
}

void takeXlFields(const CanXlFields& fields, FrameAttributes& attributes) {
  const auto take = [&attributes](FrameAttribute attribute, const auto& field) {
    if (field) {
      attributes.set(attribute, *field);
    }
  };
  take(FrameAttribute::Vcid, fields.vcid);
  take(FrameAttribute::Sdt, fields.sdt);
  take(FrameAttribute::AcceptanceField, fields.acceptance);
  take(FrameAttribute::Rrs, fields.rrs);
  take(FrameAttribute::Sec, fields.sec);
}

// Data frames of all kinds, and remote ones.
void takeFrame(const BrixMessage& message, Frame& frame) {
  frame.id = message.id;
  frame.set(message.extended ? frame_flag::kExtended : std::uint16_t{0});
  frame.data = message.data;
  frame.dlc = static_cast<std::uint16_t>(lengthToDlc(message.length));
  if (message.remote) {
    frame.kind = FrameKind::Remote;
    frame.set(frame_flag::kDlcKnown);
    frame.data = {};
  } else if (message.kind == MessageKind::XL) {
    frame.set(frame_flag::kXl);
    frame.dlc = static_cast<std::uint16_t>(lengthToXlDlc(message.length));
    takeXlFields(message.xl, frame.attributes);
  } else if (isFd(message.kind)) {
    frame.set(frame_flag::kFd);
    frame.set(hasBrs(message.kind) ? frame_flag::kBrs : std::uint16_t{0});
    frame.set(hasEsi(message.kind) ? frame_flag::kEsi : std::uint16_t{0});
  }
  if (message.reserved >= 0) {
    frame.attributes.set(FrameAttribute::Reserved, static_cast<std::uint32_t>(message.reserved));
  }
}

// What the frame refers to belongs to the message.
void takeMessage(const BrixMessage& message, Frame& frame) {
  switch (message.kind) {
    case MessageKind::ST:
      takeStatus(message, frame);
      break;
    case MessageKind::EC:
      takeCounters(message.data, frame);
      break;
    case MessageKind::ER:
      takeErrorLine(message, frame);
      break;
    case MessageKind::EV:
      frame.kind = FrameKind::Event;
      frame.text = message.comment.empty() ? std::nullopt : std::optional<std::string_view>(message.comment);
      break;
    default:
      takeDirection(message, frame);
      takeFrame(message, frame);
  }
  // The versions with fixed columns may have a word after the bytes of any line.
  if (!message.columnBased && message.kind != MessageKind::ST && !message.comment.empty()) {
    frame.text = message.comment;
  }
}

// The time of a line in nanoseconds. A text that is no decimal number, such as one with an exponent, is as exact as the
// real number that it was read as.
std::optional<std::int64_t> timeOf(const TrcLineRemains& remains, RealMilliseconds time) {
  constexpr unsigned kNanosecondsOfMillisecond = 6;  // as a power of ten
  auto exact = remains.timeDigits ? scaledDecimal(*remains.timeDigits, kNanosecondsOfMillisecond)
                                  : scaledDecimal(remains.time, kNanosecondsOfMillisecond);
  if (!exact) {
    const double rounded = std::round(RealNanoseconds(time).count());
    if (!(std::abs(rounded) <= static_cast<double>(kFarthestNs))) {
      return std::nullopt;
    }
    exact = static_cast<std::int64_t>(rounded);
  }
  return *exact >= -kFarthestNs && *exact <= kFarthestNs ? exact : std::nullopt;
}

// The lines of a TRC file, for TextFrameSource.
class TrcLines : public SemicolonComments {
 public:
  [[nodiscard]] bool isHeader(std::string_view line) {
    if (!line.empty() && line.front() != ';') {
      return false;
    }
    keys_.look(line);
    return true;
  }

  void takeHead(StreamHead& head) {
    head.format = XLATR_FORMAT_TRC;
    head.version = keys_.fileVersion();
    if (const auto start = startOf(keys_.startNumber(), keys_.startText())) {
      head.start = TraceStart{.sinceEpochNs = *start};
    }
    version_ = findTrcVersion(head.version);
    columns_ = listsTrcColumns(head.version) ? keys_.columnSet() : 0;
  }

  [[nodiscard]] bool understand(std::string_view line, Frame& frame) {
    if (version_ == nullptr) {
      return false;
    }
    if (takePlainTrcFrame(line, *version_, columns_, bytes_, frame)) {
      return true;
    }
    message_.reset();
    message_.columnSet = columns_;
    const TrcLineRemains remains = parseTrcLine(line, *version_, message_);
    const auto time = timeOf(remains, message_.timeOffset);
    const bool named = version_->busColumn && !remains.unnumberedBus;
    if (!message_.valid || !time || (named && message_.bus > kHighestBus) || message_.length > kLongestXl) {
      return false;
    }
    frame.timeNs = *time;
    frame.bus = named ? static_cast<std::uint16_t>(message_.bus) : std::uint16_t{0};
    takeMessage(message_, frame);
    if (!capacityOf(*version_).of(frame.kind).direction) {
      frame.unset(frame_flag::kReceived | frame_flag::kTransmitted);
    }
    return true;
  }

 private:
  TrcHeaderKeys keys_;
  const TrcVersion* version_ = nullptr;  // null for one that nobody knows
  TrcColumnSet columns_ = 0;
  BrixMessage message_;
  PlainFrameBytes bytes_;  // those of a plain line
};

// ---- from a frame to a line's message

// As takeErrorLine() reads it: the versions with columns have the type among the bytes.
void giveError(const Frame& frame, BrixMessage& message) {
  message.kind = MessageKind::ER;
  message.type = MessageType::Error;
  message.id = trcIdOfErrorType(frame.attributes.get(FrameAttribute::ErrorType).value_or(kOtherError) & kOtherError);
  if (message.columnBased) {
    message.data.push_back(static_cast<std::uint8_t>(message.id));
  }
  appendErrorBytes(frame, message.data);
}

void giveStatus(const Frame& frame, BrixMessage& message) {
  const std::uint32_t state = frame.attributes.get(FrameAttribute::BusState).value_or(0);
  message.kind = MessageKind::ST;
  message.type = MessageType::Warng;
  message.id = kNoIdentifier;
  message.extended = true;
  appendStateBytes(state, message.data);
  message.comment = frame.text ? std::string(*frame.text) : warningErrorsToText(state);
}

void giveXlFields(const FrameAttributes& attributes, CanXlFields& fields) {
  const auto give = [&attributes](FrameAttribute attribute, auto& field) {
    if (const auto value = attributes.get(attribute)) {
      field = static_cast<typename std::remove_reference_t<decltype(field)>::value_type>(*value);
    }
  };
  give(FrameAttribute::Vcid, fields.vcid);
  give(FrameAttribute::Sdt, fields.sdt);
  give(FrameAttribute::AcceptanceField, fields.acceptance);
  give(FrameAttribute::Rrs, fields.rrs);
  give(FrameAttribute::Sec, fields.sec);
}

// Data frames of all kinds, and remote ones.
void giveFrame(const Frame& frame, BrixMessage& message) {
  message.kind = MessageKind::DT;
  message.id = frame.id;
  message.extended = frame.has(frame_flag::kExtended);
  message.direction = frame.has(frame_flag::kTransmitted) ? MessageDirection::Tx : MessageDirection::Rx;
  message.type = frame.has(frame_flag::kTransmitted) ? MessageType::Tx : MessageType::Rx;
  message.length = static_cast<std::uint32_t>(frame.data.size());
  message.data.assign(frame.data.begin(), frame.data.end());
  if (frame.kind == FrameKind::Remote) {
    message.kind = MessageKind::RR;
    message.remote = true;
    message.length = dlcToLength(frame.dlc).value_or(0);
  } else if (frame.has(frame_flag::kXl)) {
    message.kind = MessageKind::XL;
    giveXlFields(frame.attributes, message.xl);
  } else if (frame.has(frame_flag::kFd)) {
    message.kind = fdKind(frame.has(frame_flag::kBrs), frame.has(frame_flag::kEsi));
  }
  message.reserved = static_cast<std::int16_t>(
      frame.attributes.get(FrameAttribute::Reserved).value_or(static_cast<std::uint32_t>(kNoReserved)));
}

// A message like a new one of the version's kind of lines, from a frame that the version can hold.
void giveMessage(const Frame& frame, BrixMessage& message) {
  message.bus = frame.bus;
  message.direction = MessageDirection::Rx;
  switch (frame.kind) {
    case FrameKind::Status:
      giveStatus(frame, message);
      break;
    case FrameKind::Counters:
      message.kind = MessageKind::EC;
      message.type = MessageType::Error;
      message.id = 0;
      appendCounterBytes(frame, message.data);
      break;
    case FrameKind::Error:
      giveError(frame, message);
      break;
    case FrameKind::Event:
      message.kind = MessageKind::EV;
      break;
    default:
      giveFrame(frame, message);
  }
  if (frame.kind != FrameKind::Data && frame.kind != FrameKind::Remote) {
    message.length = static_cast<std::uint32_t>(message.data.size());
  }
  if (frame.kind != FrameKind::Status && frame.text) {
    message.comment = *frame.text;
  }
}

const TrcVersion& versionOf(const SinkSettings& settings) {
  const TrcVersion* const version = findTrcVersion(settings.version);
  return version != nullptr ? *version : kTrcVersions.back();
}

// The lines of a TRC file, for TextFrameSink.
class TrcFrameLines : public SemicolonComments {
 public:
  TrcFrameLines(const OutputTarget& target, const StreamHead& head, const SinkSettings& settings)
      : version_(versionOf(settings)), path_(target.name()), head_(head) {}

  [[nodiscard]] const FrameCapacity& capacity() const { return capacityOf(version_); }

  void appendHeader(TextBuffer& out) const {
    constexpr int kStartNumberDigits = 15;
    const std::int64_t start = startOrNone(head_.start);
    const DateTime date = dateTimeOfStart(start);
    TrcHeaderValues values;
    values.targetPath = path_;
    values.sourcePath = head_.path;
    values.startText = version_.microseconds ? date.toDottedTextMicro() : date.toDottedText();
    values.startNumber = formatGeneral(daysOfStart(start), kStartNumberDigits);
    values.hostVersion = getHostVersionText();
    values.fromLogger = head_.format == XLATR_FORMAT_BTR;
    for (const std::string& line : trcHeaderLines(version_, values)) {
      out.append(line);
      out.append(kLineEnd);
    }
  }

  void appendFrame(TextBuffer& out, const Frame& frame) {
    message_.reset();
    message_.columnBased = version_.isColumnBased();
    giveMessage(frame, message_);
    appendTrcFrameLine(out, message_, frame.timeNs, version_, ++number_);
    out.append(kLineEnd);
  }

  void appendEnd(TextBuffer& /*out*/) const {}

 private:
  const TrcVersion& version_;
  std::string path_;
  StreamHead head_;
  BrixMessage message_;
  std::uint64_t number_ = 0;
};

}  // namespace

std::span<const FrameCapacity> trcCapacities() {
  return kCapacities;
}

bool looksLikeTrc(std::string_view start) {
  TrcHeaderKeys keys;
  TokenCursor<'\n', '\r'> lines(start);
  while (lines.peek().starts_with(';')) {
    keys.look(lines.take());
  }
  return findTrcVersion(keys.fileVersion()) != nullptr && start.find("Checksum") == std::string_view::npos;
}

std::unique_ptr<FrameSource> openTrcFrames(const InputSource& input) {
  return std::make_unique<TextFrameSource<TrcLines>>(input);
}

std::unique_ptr<FrameSink> createTrcFrames(const OutputTarget& target, const StreamHead& head,
                                           const SinkSettings& settings) {
  return std::make_unique<TextFrameSink<TrcFrameLines>>(target, head, settings);
}

}  // namespace xlatr
