#include "formats/trc/trc_frames.hpp"

#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "formats/trc/trc_header_keys.hpp"
#include "formats/trc/trc_message.hpp"
#include "formats/trc/trc_parser.hpp"
#include "formats/trc/trc_version.hpp"
#include "frames/text_frame_source.hpp"
#include "messages/can_dlc.hpp"
#include "messages/error_type.hpp"
#include "messages/fd_kind.hpp"
#include "util/decimal.hpp"
#include "util/start_time.hpp"

namespace xlatr {
namespace {

constexpr FrameKindSet kFixedColumnKinds =
    kindBit(FrameKind::Data) | kindBit(FrameKind::Remote) | kindBit(FrameKind::Status) | kindBit(FrameKind::Comment);
constexpr FrameKindSet kTypedKinds = kFixedColumnKinds | kindBit(FrameKind::Error) | kindBit(FrameKind::Counters);
constexpr FrameKindSet kColumnBasedKinds = kTypedKinds | kindBit(FrameKind::Event);

constexpr std::uint32_t kErrorAttributes =
    attributeBits(FrameAttribute::ErrorType, FrameAttribute::ErrorPosition, FrameAttribute::TxErrors,
                  FrameAttribute::RxErrors, FrameAttribute::BusState);
constexpr std::uint32_t kReserved = attributeBits(FrameAttribute::Reserved);
constexpr std::uint32_t kXlAttributes =
    attributeBits(FrameAttribute::Vcid, FrameAttribute::Sdt, FrameAttribute::AcceptanceField, FrameAttribute::Rrs,
                  FrameAttribute::Sec);

constexpr std::int64_t kMicrosecond = 1'000;
constexpr std::int64_t kMillisecond = 1'000'000;
constexpr std::uint16_t kHighestBus = std::numeric_limits<std::uint16_t>::max();
constexpr std::uint16_t kLongestFd = 64;
constexpr std::uint32_t kLongestXl = 2048;

// What the rows have in common: everything but times comes back, and comments are lines of their own.
consteval FrameCapacity row(double version, FrameKindSet kinds, std::uint32_t attributes, std::int64_t resolutionNs) {
  FrameCapacity capacity;
  capacity.version = version;
  capacity.kinds = kinds;
  capacity.comments = true;
  capacity.attributes = attributes;
  capacity.remoteDlc = true;
  capacity.direction = version != 1.0;
  capacity.resolutionNs = resolutionNs;
  capacity.startResolutionNs = version < 2.0 ? kMillisecond : kMicrosecond;
  return capacity;
}

consteval FrameCapacity withBuses(FrameCapacity capacity) {
  capacity.highestBus = kHighestBus;
  return capacity;
}

consteval FrameCapacity withFd(FrameCapacity capacity) {
  capacity.fd = true;
  capacity.bitsOfFd = true;
  capacity.longestData = kLongestFd;
  return capacity;
}

consteval FrameCapacity withXl(FrameCapacity capacity) {
  capacity.xl = true;
  return capacity;
}

constexpr std::array kCapacities = {
    row(1.0, kFixedColumnKinds, attributeBits(FrameAttribute::BusState), kMillisecond),
    row(1.1, kTypedKinds, kErrorAttributes, 100 * kMicrosecond),
    withBuses(row(1.2, kTypedKinds, kErrorAttributes, kMicrosecond)),
    withBuses(row(1.3, kTypedKinds, kErrorAttributes | kReserved, kMicrosecond)),
    withFd(row(2.0, kColumnBasedKinds, kErrorAttributes, kMicrosecond)),
    withFd(withBuses(row(2.1, kColumnBasedKinds, kErrorAttributes | kReserved, kMicrosecond))),
    withXl(withFd(withBuses(row(3.0, kColumnBasedKinds, kErrorAttributes | kReserved | kXlAttributes, kMicrosecond)))),
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

// Type, direction and position of an error, then the error counters. Nothing for bytes that say something else, which
// then stay bytes.
bool takeError(std::uint32_t typeBit, std::span<const std::uint8_t> bytes, Frame& frame) {
  constexpr std::size_t kBytes = 4;
  constexpr std::uint8_t kWhileReceiving = 1;
  const auto type = errorTypeOfTrcId(typeBit);
  if (!type || bytes.size() != kBytes || bytes[0] > kWhileReceiving) {
    return false;
  }
  frame.flags = bytes[0] == kWhileReceiving ? frame_flag::kReceived : frame_flag::kTransmitted;
  frame.attributes.set(FrameAttribute::ErrorType, *type);
  frame.attributes.set(FrameAttribute::ErrorPosition, bytes[1]);
  frame.attributes.set(FrameAttribute::RxErrors, bytes[2]);
  frame.attributes.set(FrameAttribute::TxErrors, bytes[3]);
  return true;
}

// The receive and the transmit error counter.
void takeCounters(std::span<const std::uint8_t> bytes, Frame& frame) {
  constexpr std::size_t kBytes = 2;
  frame.kind = FrameKind::Counters;
  if (bytes.size() != kBytes) {
    frame.data = bytes;
    return;
  }
  frame.attributes.set(FrameAttribute::RxErrors, bytes[0]);
  frame.attributes.set(FrameAttribute::TxErrors, bytes[1]);
}

void takeErrorLine(const BrixMessage& message, Frame& frame) {
  constexpr std::size_t kCounters = 2;
  frame.kind = FrameKind::Error;
  const std::span<const std::uint8_t> bytes = message.data;
  if (message.columnBased) {
    frame.data = !bytes.empty() && takeError(bytes.front(), bytes.subspan(1), frame) ? frame.data.first(0) : bytes;
    return;
  }
  // Versions with fixed columns have one word for both.
  if (message.id == 0 && bytes.size() == kCounters) {
    takeCounters(bytes, frame);
  } else if (!takeError(message.id, bytes, frame)) {
    frame.id = message.id;
    frame.data = bytes;
  }
}

void takeStatus(const BrixMessage& message, Frame& frame) {
  constexpr std::size_t kBytes = 4;
  frame.kind = FrameKind::Status;
  const std::vector<std::uint8_t>& data = message.data;
  if (data.size() != kBytes) {
    frame.data = data;
    frame.text = message.comment.empty() ? std::nullopt : std::optional<std::string_view>(message.comment);
    return;
  }
  const std::uint32_t state = std::uint32_t{data[0]} << 24 | std::uint32_t{data[1]} << 16 |
                              std::uint32_t{data[2]} << 8 | std::uint32_t{data[3]};
  frame.attributes.set(FrameAttribute::BusState, state);
  // Words that say no more than the bits are no text of the source.
  if (!message.comment.empty() && message.comment != warningErrorsToText(state)) {
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
  takeDirection(message, frame);
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
      frame.flags = 0;
      frame.text = message.comment;
      break;
    default:
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
class TrcLines {
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
    if (!capacityOf(*version_).direction) {
      frame.unset(frame_flag::kReceived | frame_flag::kTransmitted);
    }
    return true;
  }

 private:
  TrcHeaderKeys keys_;
  const TrcVersion* version_ = nullptr;  // null for one that nobody knows
  TrcColumnSet columns_ = 0;
  BrixMessage message_;
};

}  // namespace

std::span<const FrameCapacity> trcCapacities() {
  return kCapacities;
}

std::unique_ptr<FrameSource> openTrcFrames(const std::string& path) {
  return std::make_unique<TextFrameSource<TrcLines>>(path);
}

}  // namespace xlatr
