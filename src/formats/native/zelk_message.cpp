#include "formats/native/zelk_message.hpp"

#include <concepts>
#include <string_view>
#include <type_traits>

#include "formats/native/record_flags.hpp"
#include "formats/trc/trc_message.hpp"
#include "messages/can_dlc.hpp"
#include "messages/error_type.hpp"
#include "messages/fd_kind.hpp"
#include "util/failures.hpp"
#include "util/render.hpp"

namespace xlatr {
namespace {

std::uint32_t idOfErrorFlags(std::uint8_t flags) {
  const std::uint32_t type = (flags & error_flag::kClass) >> error_flag::kClassShift;
  return type <= kOtherError ? trcIdOfErrorType(type) : 0;
}

// Text pieced together from texts and numbers.
void appendPiece(std::string& text, std::string_view piece) {
  text += piece;
}
void appendPiece(std::string& text, std::unsigned_integral auto number) {
  text += std::to_string(std::uint64_t{number});
}

template <class... Pieces>
std::string joined(const Pieces&... pieces) {
  std::string text;
  (appendPiece(text, pieces), ...);
  return text;
}

std::uint32_t shownBus(std::uint8_t bus) {
  return bus + 1U;
}

std::string shownTime(std::uint64_t microseconds) {
  constexpr double kMicrosecondsPerMillisecond = 1000.0;
  return formatFixed(static_cast<double>(microseconds) / kMicrosecondsPerMillisecond, 3);
}

// What stands before the bytes of a record that could not be read; records without a label are passed over silently.
std::string_view rawDataLabel(RecordType type, std::span<const std::uint8_t> bytes) {
  constexpr std::size_t kOffsetOfErrorFlags = 13;
  switch (type) {
    case RecordType::CanRxMsg:
      return "Native_RecordCanRxMsg raw data: ";
    case RecordType::CanRxFdMsg:
      return "Native_RecordCanRxFdMsg raw data: ";
    case RecordType::CanTxMsg:
      return "Native_RecordCanTxMsg raw data: ";
    case RecordType::CanTxFdMsg:
      return "Native_RecordCanTxFdMsg raw data: ";
    case RecordType::CanError:
      return bytes.size() > kOffsetOfErrorFlags &&
                     (bytes[kOffsetOfErrorFlags] & error_flag::kClass) == error_flag::kCounters
                 ? "Native_RecordCanError raw data(EC) : "
                 : "Native_RecordCanError raw data(EF) : ";
    case RecordType::CanStatus:
      return "Native_RecordCanStatus raw data : ";
    case RecordType::CanBusLoad:
      return "Native_RecordCanBusLoad raw data : ";
    case RecordType::CanBitrate:
    case RecordType::CanBitrateFd:
      return "Native_RecordCanBitrate raw data : ";
    case RecordType::CanOverrun:
    case RecordType::CanCritical:
      return "Native_RecordCanCritical raw data : ";
    case RecordType::Counter:
      return "Native_RecordCounter raw data: ";
    default:
      return {};
  }
}

}  // namespace

TimeScale::TimeScale(std::int8_t exponent) {
  constexpr int kMicroseconds = -6;
  constexpr int kDigits = 19;  // the largest power of ten that 64 bits hold
  const int power = exponent - kMicroseconds;
  multiply = power >= 0;
  const int steps = multiply ? power : -power;
  for (int step = 0; step < steps; ++step) {
    factor *= 10;
  }
  if (!multiply && steps > kDigits) {
    factor = 0;
  }
}

ZelkBinaryMessage::ZelkBinaryMessage(RecordType typeOfRecord, std::span<const std::uint8_t> bytes,
                                     std::int8_t timeScalingExponent) {
  readRecord(typeOfRecord, bytes, TimeScale(timeScalingExponent));
}

bool ZelkBinaryMessage::getValid() const {
  return valid && recordType >= RecordType::CanRxMsg && recordType <= RecordType::CanBusLoad;
}

void ZelkBinaryMessage::reset() {
  resetCommonFields(1);
  timestamp = 0;
  kind = MessageKind::Unknown;
  remote = false;
  commentary.clear();
  recordType = RecordType::Invalid;
  rawBytes.clear();
  record_.emplace<std::monostate>();
}

void ZelkBinaryMessage::readRecord(RecordType typeOfRecord, std::span<const std::uint8_t> bytes,
                                   const TimeScale& timeScale) {
  reset();
  recordType = typeOfRecord;
  rawBytes.assign(bytes.begin(), bytes.end());
  Native_RecordHeader header;
  if (!tryReadWire(rawBytes, header) || header.type != recordType) {
    return;
  }
  if (!readContent(timeScale)) {
    reportShortRecord();
  }
}

// False for a record that ends before its fields do.
bool ZelkBinaryMessage::readContent(const TimeScale& timeScale) {
  switch (recordType) {
    case RecordType::CanRxMsg:
    case RecordType::CanRxRtrMsg:
    case RecordType::CanRxFdMsg:
      return readFrame<Internal_ReceivedDataFrameHeader>(timeScale);
    case RecordType::CanTxMsg:
    case RecordType::CanTxRtrMsg:
    case RecordType::CanTxFdMsg:
      return readFrame<Internal_SentDataFrameHeader>(timeScale);
    case RecordType::CanError:
      return readError(timeScale);
    case RecordType::CanStatus:
      return readStatus(timeScale);
    case RecordType::CanBusLoad:
      return readNote<Native_RecordCanBusLoad>([&](const auto& record) {
        return joined("Bus-Load information (", shownTime(timeScale.toMicroseconds(record.timestamp)),
                      ") --> Bus: ", shownBus(record.bus), " - Load: ", record.load, " %");
      });
    case RecordType::CanBitrate:
      return readNote<Native_RecordCanBitrate>([](const auto& record) {
        return joined("Arbitration bit-rate information --> Bus: ", shownBus(record.bus),
                      " - Warning-Limit: ", record.warningLimit, " - Frequency: ", record.frequency,
                      " - Prescaler: ", record.prescaler, " - TSEG1: ", record.tseg1, " - TSEG2: ", record.tseg2,
                      " - SWJ: ", record.sjw);
      });
    case RecordType::CanBitrateFd:
      return readNote<Native_RecordCanBitrateFd>([](const auto& record) {
        return joined("FD bit-rate information --> Bus: ", shownBus(record.bus),
                      " - Warning-Limit: ", record.warningLimit, " - Frequency: ", record.frequency,
                      " - Nominal-Prescaler: ", record.nominalPrescaler, " - Nominal-TSEG1: ", record.nominalTseg1,
                      " - Nominal-TSEG2: ", record.nominalTseg2, " - Nominal-SWJ: ", record.nominalSjw,
                      " - Data-Prescaler: ", record.dataPrescaler, " - Data-TSEG1: ", record.dataTseg1,
                      " - Data-TSEG2: ", record.dataTseg2, " - Data-SWJ: ", record.dataSjw);
      });
    case RecordType::CanOverrun:
      return readNote<Native_RecordCanOverrun>([&](const auto& record) {
        return joined("Overrun notification (", shownTime(timeScale.toMicroseconds(record.timestamp)),
                      ") --> Bus: ", shownBus(record.bus), " - Overruns: ", record.overruns);
      });
    case RecordType::CanCritical:
      return readNote<Native_RecordCanCritical>([&](const auto& record) {
        return joined("Critical overrun notification from FPGA (",
                      shownTime(timeScale.toMicroseconds(record.timestamp)), ") --> Bus: ", shownBus(record.bus));
      });
    case RecordType::Counter:
      return readNote<Native_RecordCounter>([](const auto& record) {
        return joined("Records counter --> Total records: ", record.totalRecords,
                      " - Total messages: ", record.totalMessages);
      });
    case RecordType::TextMsg:
      commentary = Native_RecordTextMsg::textOf(rawBytes);
      valid = true;
      return true;
    default:
      return true;
  }
}

template <class FrameHeader>
bool ZelkBinaryMessage::readFrame(const TimeScale& timeScale) {
  constexpr bool kReceived = std::is_same_v<FrameHeader, Internal_ReceivedDataFrameHeader>;
  FrameHeader frame;
  if (!tryReadWire(rawBytes, frame)) {
    return false;
  }
  const std::uint8_t dlc = frame.info.dlcCode();
  remote = recordType == RecordType::CanRxRtrMsg || recordType == RecordType::CanTxRtrMsg;
  const bool fd = recordType == RecordType::CanRxFdMsg || recordType == RecordType::CanTxFdMsg;
  if (!remote) {
    const auto bytes = dataOfFrame(rawBytes, frame);
    if (!bytes) {
      return false;
    }
    data.assign(bytes->begin(), bytes->end());
  }
  timestamp = timeScale.toMicroseconds(frame.timestamp);
  bus = frame.info.bus;
  id = frame.info.id;
  extended = (frame.info.flags & frame_flag::kExtended) != 0;
  direction = kReceived ? MessageDirection::Rx : MessageDirection::Tx;
  if (fd) {
    kind = fdKind((frame.info.flags & frame_flag::kBrs) != 0, (frame.info.flags & frame_flag::kEsi) != 0);
    length = kDlcLengths[dlc];
  } else {
    type = kReceived ? MessageType::Rx : MessageType::Tx;
    kind = remote ? MessageKind::RR : MessageKind::DT;
    length = dlc;  // also a code above 8, though it is no FD frame
  }
  valid = true;
  return true;
}

bool ZelkBinaryMessage::readError(const TimeScale& timeScale) {
  Native_RecordCanError record;
  if (!tryReadWire(rawBytes, record)) {
    return false;
  }
  timestamp = timeScale.toMicroseconds(record.timestamp);
  bus = record.bus;
  type = MessageType::Error;
  direction = MessageDirection::Rx;
  if ((record.flags & error_flag::kClass) == error_flag::kCounters) {
    kind = MessageKind::EC;
    data = {record.rxErrorCounter, record.txErrorCounter};
  } else {
    kind = MessageKind::ER;
    id = idOfErrorFlags(record.flags);
    const bool directionBit = (record.flags & error_flag::kDirection) != 0;
    data = {static_cast<std::uint8_t>(directionBit), record.errorPosition, record.rxErrorCounter,
            record.txErrorCounter};
  }
  length = static_cast<std::uint32_t>(data.size());
  valid = true;
  return true;
}

bool ZelkBinaryMessage::readStatus(const TimeScale& timeScale) {
  Native_RecordCanStatus record;
  if (!tryReadWire(rawBytes, record)) {
    return false;
  }
  std::uint32_t status = 0;
  for (const StatusFlag& known : kStatusFlags) {
    status += (record.flags & known.flag) != 0 ? static_cast<std::uint32_t>(known.status) : 0;
  }
  timestamp = timeScale.toMicroseconds(record.timestamp);
  bus = record.bus;
  type = MessageType::Warng;
  direction = MessageDirection::Rx;
  kind = MessageKind::ST;
  extended = true;
  data = {0, static_cast<std::uint8_t>(status >> 16), 0, static_cast<std::uint8_t>(status)};
  length = static_cast<std::uint32_t>(data.size());
  valid = true;
  return true;
}

// A record that is no frame: its text is all that is kept, and its bus.
template <class Record, class Describe>
bool ZelkBinaryMessage::readNote(Describe describe) {
  Record record;
  if (!tryReadWire(rawBytes, record)) {
    return false;
  }
  if constexpr (requires { record.bus; }) {
    bus = record.bus;
  }
  commentary = describe(record);
  return true;
}

void ZelkBinaryMessage::reportShortRecord() {
  const std::string_view label = rawDataLabel(recordType, rawBytes);
  if (!label.empty()) {
    commentary = joined("Parsing exception: ", "Record of ", rawBytes.size(), " bytes is too short for its fields",
                        ".\n", label);
    commentary.append(rawBytes.begin(), rawBytes.end());
  }
}

void ZelkBinaryMessage::takeRecord() {
  updateRawBytes();
  Native_RecordHeader header;
  recordType = tryReadWire(rawBytes, header) ? header.type : RecordType::Invalid;
}

void ZelkBinaryMessage::updateRawBytes() {
  rawBytes.clear();
  std::visit(
      [this](const auto& record) {
        if constexpr (requires { record.appendTo(rawBytes); }) {
          record.appendTo(rawBytes);
        }
      },
      record_);
}

void ZelkBinaryMessage::AdjustTimestamp(std::uint64_t delta) {
  if (recordType < RecordType::CanRxMsg || recordType > RecordType::CanStatus) {
    return;
  }
  std::visit(
      [&](auto& record) {
        if constexpr (std::is_base_of_v<ITimestampAdjustable, std::remove_cvref_t<decltype(record)>>) {
          record.AdjustTimestamp(delta);
        } else {
          throwProcessingFailure(joined("Failed to adjust timestamp of parsing record ",
                                        static_cast<std::uint16_t>(recordType), ": it was not made from a message"));
        }
      },
      record_);
  updateRawBytes();
}

const ISerializable* ZelkBinaryMessage::record() const {
  return std::visit(
      [](const auto& record) -> const ISerializable* {
        if constexpr (std::is_base_of_v<ISerializable, std::remove_cvref_t<decltype(record)>>) {
          return &record;
        } else {
          return nullptr;
        }
      },
      record_);
}

std::string ZelkBinaryMessage::getParsingBytesString() const {
  TextBuffer text;
  appendHexBytes(text, rawBytes);
  return std::string(text.view());
}

bool ZelkBinaryMessage::ValidateForTargetVersion(double version) const {
  return getValid() && canStandInTrc(version, length, type, kind, true);
}

}  // namespace xlatr
