#include "formats/native/btrc_record_frame.hpp"

#include <algorithm>
#include <array>
#include <limits>

#include "formats/native/btrc_blocks.hpp"
#include "formats/native/error_bytes.hpp"
#include "formats/native/native_frame_record.hpp"
#include "io/quirk.hpp"
#include "messages/error_type.hpp"

namespace xlatr {
namespace {

constexpr std::uint32_t kHighestRecordId = 0x1FFFFFFF;
constexpr std::uint32_t kLoadsPerPercent = 100;
constexpr std::uint8_t kNoBus = 0xFF;  // counted from 0; what has no bus has always been written so

// What the records of a bus have in common.
constexpr std::size_t kTimeOffset = layoutOffset<&Native_RecordCanError::timestampTicks>();
constexpr std::size_t kBusOffset = layoutOffset<&Native_RecordCanError::bus>();
constexpr std::size_t kAfterBus = kBusOffset + 1;
static_assert(kTimeOffset == layoutOffset<&Native_RecordCanOverrun::timestampTicks>());
static_assert(kBusOffset == layoutOffset<&Native_RecordCanOverrun::bus>());
static_assert(kTimeOffset == layoutOffset<&Native_RecordCanStatus::timestampTicks>());
static_assert(kBusOffset == layoutOffset<&Native_RecordCanStatus::bus>());
static_assert(kTimeOffset == layoutOffset<&Native_RecordCanBusLoad::timestampTicks>());
static_assert(kBusOffset == layoutOffset<&Native_RecordCanBusLoad::bus>());

constexpr std::uint16_t busOfByte(std::uint8_t bus) {
  return bus == kNoBus ? std::uint16_t{0} : static_cast<std::uint16_t>(bus + 1);
}

constexpr std::uint8_t byteOfBus(std::uint16_t bus) {
  return static_cast<std::uint8_t>(bus - 1);  // kNoBus for 0
}

bool isFrame(RecordType type) {
  return type >= RecordType::CanRxMsg && type <= RecordType::CanTxFdMsg;
}

// Whether an event of such a record has its time and its bus.
bool isOfBus(RecordType type, std::size_t size) {
  constexpr std::array kTypes = {RecordType::CanError, RecordType::CanStatus, RecordType::CanBusLoad,
                                 RecordType::CanOverrun, RecordType::CanCritical};
  return size >= kAfterBus && std::ranges::find(kTypes, type) != kTypes.end();
}

// A record that has no other home.
void takeRawRecord(RecordType type, std::span<const std::uint8_t> record, const NanosecondScale& scale, Frame& frame) {
  frame.kind = FrameKind::Event;
  frame.attributes.set(FrameAttribute::RecordType, static_cast<std::uint32_t>(type));
  if (isOfBus(type, record.size())) {
    if (const auto time = scale.nanoseconds(loadLittle<std::uint64_t>(record.data() + kTimeOffset))) {
      frame.timeNs = *time;
      frame.bus = busOfByte(record[kBusOffset]);
      frame.data = record.subspan(kAfterBus);
      return;
    }
  }
  frame.data = record.subspan(std::min(kRecordHeaderSize, record.size()));
}

enum class Understood : std::uint8_t { No, InPart, Whole };

template <class FrameHeader>
Understood takeFrameRecord(const FrameRecordKind& kind, std::span<const std::uint8_t> record,
                           const NanosecondScale& scale, Frame& frame) {
  FrameHeader header;
  if (!tryReadFields(record, header) || header.info.id > kHighestRecordId) {
    return Understood::No;
  }
  const auto time = scale.nanoseconds(header.timestampTicks);
  if (!time) {
    return Understood::No;
  }
  const auto flagIf = [&header](std::uint16_t recordFlag, std::uint16_t flag) {
    return (header.info.flags & recordFlag) != 0 ? unsigned{flag} : 0U;
  };
  unsigned flags = flagIf(record_flag::kExtended, frame_flag::kExtended) |
                   (kind.isSent ? frame_flag::kTransmitted : frame_flag::kReceived);
  frame.timeNs = *time;
  frame.bus = busOfByte(header.info.bus);
  frame.id = header.info.id;
  frame.dlc = header.info.dlcCode();
  if (kind.isRemote) {
    frame.kind = FrameKind::Remote;
    frame.flags = static_cast<std::uint16_t>(flags | frame_flag::kDlcKnown);
    return Understood::Whole;
  }
  if (kind.isFd) {
    flags |=
        frame_flag::kFd | flagIf(record_flag::kBrs, frame_flag::kBrs) | flagIf(record_flag::kEsi, frame_flag::kEsi);
  }
  frame.flags = static_cast<std::uint16_t>(flags);
  const std::size_t length = std::min<std::size_t>(kDlcLengths[frame.dlc], kind.mostBytes);
  const auto bytes = record.subspan(FrameHeader::kFixedSize);
  frame.data = bytes.first(std::min(length, bytes.size()));
  return frame.data.size() == length ? Understood::Whole : Understood::InPart;
}

// The time and the bus of a record that is no frame.
template <class Record>
bool takeTimeAndBus(const Record& record, const NanosecondScale& scale, Frame& frame) {
  const auto time = scale.nanoseconds(record.timestampTicks);
  frame.timeNs = time.value_or(frame.timeNs);
  frame.bus = busOfByte(record.bus);
  return time.has_value();
}

Understood takeError(std::span<const std::uint8_t> bytes, const NanosecondScale& scale, Frame& frame) {
  Native_RecordCanError record;
  if (!tryReadFields(bytes, record)) {
    return Understood::No;
  }
  const std::uint32_t errorClass = record.flags & error_flag::kClass;
  const std::uint32_t type = errorClass >> error_flag::kClassShift;
  if ((errorClass != error_flag::kCounters && type > kOtherError) || !takeTimeAndBus(record, scale, frame)) {
    return Understood::No;
  }
  frame.kind = errorClass == error_flag::kCounters ? FrameKind::Counters : FrameKind::Error;
  frame.flags = (record.flags & error_flag::kDirection) != 0 ? frame_flag::kReceived : frame_flag::kTransmitted;
  if (frame.kind == FrameKind::Error) {
    frame.attributes.set(FrameAttribute::ErrorType, type);
    frame.attributes.set(FrameAttribute::ErrorPosition, record.errorPosition);
  }
  frame.attributes.set(FrameAttribute::TxErrors, record.txErrorCounter);
  frame.attributes.set(FrameAttribute::RxErrors, record.rxErrorCounter);
  return Understood::Whole;
}

Understood takeStatus(std::span<const std::uint8_t> bytes, const NanosecondScale& scale, Frame& frame) {
  Native_RecordCanStatus record;
  if (!tryReadFields(bytes, record) || !takeTimeAndBus(record, scale, frame)) {
    return Understood::No;
  }
  std::uint32_t state = 0;
  for (const StatusFlag& known : kStatusFlags) {
    state |= (record.flags & known.flag) != 0 ? static_cast<std::uint32_t>(known.status) : 0;
  }
  frame.kind = FrameKind::Status;
  frame.attributes.set(FrameAttribute::BusState, state);
  return Understood::Whole;
}

Understood takeBusLoad(std::span<const std::uint8_t> bytes, const NanosecondScale& scale, Frame& frame) {
  Native_RecordCanBusLoad record;
  if (!tryReadFields(bytes, record) || !takeTimeAndBus(record, scale, frame)) {
    return Understood::No;
  }
  frame.kind = FrameKind::Event;
  frame.attributes.set(FrameAttribute::BusLoad, record.load * kLoadsPerPercent);
  return Understood::Whole;
}

Understood understand(RecordType type, std::span<const std::uint8_t> record, const NanosecondScale& scale,
                      Frame& frame) {
  if (isFrame(type)) {
    const FrameRecordKind& kind = frameRecordKindOf(type);
    return kind.isSent ? takeFrameRecord<Internal_SentDataFrameHeader>(kind, record, scale, frame)
                       : takeFrameRecord<Internal_ReceivedDataFrameHeader>(kind, record, scale, frame);
  }
  switch (type) {
    case RecordType::CanError:
      return takeError(record, scale, frame);
    case RecordType::CanStatus:
      return takeStatus(record, scale, frame);
    case RecordType::CanBusLoad:
      return takeBusLoad(record, scale, frame);
    default:
      return Understood::No;
  }
}

// The size of the records that have a form; 0 for others.
std::size_t leastSizeOf(RecordType type) {
  struct Size {
    RecordType type;
    std::size_t bytes;
  };
  static constexpr std::array kSizes = {
      Size{RecordType::CanError, kLayoutSize<Native_RecordCanError>},
      Size{RecordType::CanStatus, kLayoutSize<Native_RecordCanStatus>},
      Size{RecordType::CanBusLoad, kLayoutSize<Native_RecordCanBusLoad>},
      Size{RecordType::CanBitrate, kLayoutSize<Native_RecordCanBitrate>},
      Size{RecordType::CanBitrateFd, kLayoutSize<Native_RecordCanBitrateFd>},
      Size{RecordType::CanOverrun, kLayoutSize<Native_RecordCanOverrun>},
      Size{RecordType::CanCritical, kLayoutSize<Native_RecordCanOverrun>},
      Size{RecordType::Info, kLayoutSize<Native_RecordInfo>},
      Size{RecordType::Counter, kLayoutSize<Native_RecordCounter>},
      Size{RecordType::TimeCalibration, kLayoutSize<Native_RecordTimeCalibration>},
  };
  const auto* const found = std::ranges::find(kSizes, type, &Size::type);
  return found == kSizes.end() ? 0 : found->bytes;
}

// Whether a record that became an event has all that its type has.
bool isWhole(RecordType type, const NanosecondScale& scale, std::span<const std::uint8_t> record) {
  if (isFrame(type) || record.size() < leastSizeOf(type)) {
    return false;
  }
  return !isOfBus(type, record.size()) || scale.nanoseconds(loadLittle<std::uint64_t>(record.data() + kTimeOffset));
}

// ---- from a frame to its record

std::uint8_t byteOf(const Frame& frame, FrameAttribute attribute) {
  return static_cast<std::uint8_t>(frame.attributes.get(attribute).value_or(0));
}

void appendFrameRecord(Bytes& out, const Frame& frame, std::uint64_t ticks) {
  const bool sent = frame.has(frame_flag::kTransmitted);
  const auto flagIf = [&frame](std::uint16_t flag, std::uint16_t recordFlag) {
    return frame.has(flag) ? unsigned{recordFlag} : 0U;
  };
  unsigned flags = flagIf(frame_flag::kExtended, record_flag::kExtended);
  RecordType received = RecordType::CanRxMsg;
  if (frame.kind == FrameKind::Remote) {
    received = RecordType::CanRxRtrMsg;
    flags |= record_flag::kRemote;
  } else if (frame.has(frame_flag::kFd)) {
    received = RecordType::CanRxFdMsg;
    flags |=
        record_flag::kFd | flagIf(frame_flag::kBrs, record_flag::kBrs) | flagIf(frame_flag::kEsi, record_flag::kEsi);
  }
  const Internal_DataFrameInfo info(byteOfBus(frame.bus), static_cast<std::uint8_t>(frame.dlc),
                                    static_cast<std::uint16_t>(flags), frame.id);
  if (!sent) {
    appendFrame(out, Internal_ReceivedDataFrameHeader(received, info, ticks, Way::complete()), frame.data);
    return;
  }
  constexpr auto kToSent =
      static_cast<std::uint16_t>(RecordType::CanTxMsg) - static_cast<std::uint16_t>(RecordType::CanRxMsg);
  const auto type = static_cast<RecordType>(static_cast<std::uint16_t>(received) + kToSent);
  appendFrame(out, Internal_SentDataFrameHeader(type, info, ticks, ticks, Way::complete()), frame.data);
}

// An error frame, or the error counters.
void appendError(Bytes& out, const Frame& frame, std::uint64_t ticks) {
  const std::uint32_t errorClass = frame.kind == FrameKind::Counters
                                       ? std::uint32_t{error_flag::kCounters}
                                       : frame.attributes.get(FrameAttribute::ErrorType).value_or(kOtherError)
                                             << error_flag::kClassShift;
  Native_RecordCanError record;
  record.timestampTicks = ticks;
  record.bus = byteOfBus(frame.bus);
  record.flags =
      static_cast<std::uint8_t>(errorClass | (frame.has(frame_flag::kReceived) ? error_flag::kDirection : 0U));
  record.errorPosition = byteOf(frame, FrameAttribute::ErrorPosition);
  record.txErrorCounter = byteOf(frame, FrameAttribute::TxErrors);
  record.rxErrorCounter = byteOf(frame, FrameAttribute::RxErrors);
  appendFields(out, record);
}

void appendStatus(Bytes& out, const Frame& frame, std::uint64_t ticks) {
  const std::uint32_t state = frame.attributes.get(FrameAttribute::BusState).value_or(0);
  Native_RecordCanStatus record;
  record.timestampTicks = ticks;
  record.bus = byteOfBus(frame.bus);
  for (const StatusFlag& known : kStatusFlags) {
    const bool set = (state & static_cast<std::uint32_t>(known.status)) != 0;
    record.flags = static_cast<std::uint8_t>(record.flags | (set ? known.flag : 0));
  }
  appendFields(out, record);
}

void appendBusLoad(Bytes& out, const Frame& frame, std::uint64_t ticks) {
  Native_RecordCanBusLoad record;
  record.timestampTicks = ticks;
  record.bus = byteOfBus(frame.bus);
  record.load = static_cast<std::uint8_t>(*frame.attributes.get(FrameAttribute::BusLoad) / kLoadsPerPercent);
  appendFields(out, record);
}

// The record that takeRawRecord() made an event of. Records are multiples of 4 bytes long, so that a block can always
// be filled.
bool appendRawRecord(Bytes& out, const Frame& frame, std::uint64_t ticks) {
  const std::uint32_t code = *frame.attributes.get(FrameAttribute::RecordType);
  if (code > std::numeric_limits<std::uint16_t>::max() || code == static_cast<std::uint32_t>(RecordType::Invalid)) {
    return false;
  }
  const auto type = static_cast<RecordType>(code);
  const bool ofBus = isOfBus(type, kAfterBus);
  const std::size_t size = (ofBus ? kAfterBus : kRecordHeaderSize) + frame.data.size();
  if (size % 4 != 0 || size > kLongestBtrcRecord) {
    return false;
  }
  appendFields(out, Native_RecordHeader(size, type));
  if (ofBus) {
    storeLittle(growBytes(out, sizeof ticks), ticks);
    out.push_back(byteOfBus(frame.bus));
  }
  out.insert(out.end(), frame.data.begin(), frame.data.end());
  return true;
}

// Adds the record of an event if it is read as that event again.
bool appendEvent(Bytes& out, const Frame& frame, std::uint64_t ticks, const RecordTimes& times) {
  const std::size_t begin = out.size();
  if (frame.attributes.has(FrameAttribute::BusLoad)) {
    appendBusLoad(out, frame, ticks);
  } else if (!frame.attributes.has(FrameAttribute::RecordType) || !appendRawRecord(out, frame, ticks)) {
    return false;
  }
  const std::span<const std::uint8_t> record = std::span(out).subspan(begin);
  const auto type = readField<&Native_RecordHeader::type>(record);
  // Texts and totals are no events.
  const bool isEvent = type != RecordType::TextMsg && type != RecordType::Counter;
  Frame again;
  again.timeNs = times.before;
  if (isEvent && takeRecord(type, record, NanosecondScale(TimeScale::kMicroseconds, times.start), again) &&
      sameFrame(again, frame)) {
    return true;
  }
  out.resize(begin);
  return false;
}

}  // namespace

NanosecondScale::NanosecondScale(std::int8_t exponent, std::uint64_t start) : start_(start) {
  constexpr int kNanosecond = -9;
  constexpr int kMostDigits = 18;
  const int power = std::clamp(exponent - kNanosecond, -kMostDigits, kMostDigits);
  std::int64_t& scale = power < 0 ? divisor_ : factor_;
  factor_ = 1;
  for (int digit = 0; digit < std::abs(power); ++digit) {
    scale *= 10;
  }
  most_ = kFarthestNs / factor_;
}

std::int64_t NanosecondScale::divided(std::int64_t ticks) const {
  const std::int64_t whole = ticks / divisor_;
  const std::int64_t rest = ticks % divisor_;
  const std::int64_t half = divisor_ / 2;
  return whole + (rest >= half ? 1 : 0) - (rest <= -half ? 1 : 0);
}

bool takeRecord(RecordType type, std::span<const std::uint8_t> record, const NanosecondScale& scale, Frame& frame) {
  const std::int64_t timeBefore = frame.timeNs;
  const Understood understood = understand(type, record, scale, frame);
  if (understood != Understood::No) {
    return understood == Understood::Whole;
  }
  frame.reset();
  frame.timeNs = timeBefore;
  takeRawRecord(type, record, scale, frame);
  return isWhole(type, scale, record);
}

bool hasRecordFor(const Frame& frame) {
  switch (frame.kind) {
    case FrameKind::Error:
    case FrameKind::Counters:
      return isErrorOfBytes(frame);
    case FrameKind::Status: {
      std::uint32_t states = 0;
      for (const StatusFlag& known : kStatusFlags) {
        states |= static_cast<std::uint32_t>(known.status);
      }
      return (frame.attributes.get(FrameAttribute::BusState).value_or(0) & ~states) == 0;
    }
    case FrameKind::Event:
      return frame.attributes.has(FrameAttribute::RecordType) || frame.attributes.has(FrameAttribute::BusLoad);
    default:
      return true;
  }
}

bool appendRecord(Bytes& out, const Frame& frame, const RecordTimes& times) {
  constexpr std::int64_t kTick = 1'000;
  const std::uint64_t ticks = times.start + static_cast<std::uint64_t>(frame.timeNs / kTick);
  switch (frame.kind) {
    case FrameKind::Error:
    case FrameKind::Counters:
      appendError(out, frame, ticks);
      return true;
    case FrameKind::Status:
      appendStatus(out, frame, ticks);
      return true;
    case FrameKind::Event:
      return appendEvent(out, frame, ticks, times);
    default:
      appendFrameRecord(out, frame, ticks);
      return true;
  }
}

}  // namespace xlatr
