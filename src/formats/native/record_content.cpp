#include "formats/native/record_content.hpp"

#include <algorithm>
#include <array>
#include <concepts>
#include <string>
#include <type_traits>

#include "formats/native/native_frame_record.hpp"
#include "messages/error_type.hpp"
#include "messages/fd_kind.hpp"
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

std::string shownTime(RealMilliseconds time) {
  return formatFixed(time.count(), 3);
}

template <class FrameHeader>
bool readFrame(ZelkBinaryMessage& message, const TimeScale& timeScale) {
  FrameHeader frame;
  if (!tryReadFields(message.rawBytes, frame)) {
    return false;
  }
  const FrameRecordKind& kind = frameRecordKindOf(message.recordType);
  if (!kind.isRemote) {
    const auto bytes = dataOfFrame(message.rawBytes, frame);
    if (!bytes) {
      return false;
    }
    message.data.assign(bytes->begin(), bytes->end());
  }
  const std::uint8_t dlc = frame.info.dlcCode();
  message.remote = kind.isRemote;
  message.timestamp = timeScale.toMicroseconds(frame.timestampTicks);
  message.bus = frame.info.bus;
  message.id = frame.info.id;
  message.extended = (frame.info.flags & record_flag::kExtended) != 0;
  message.direction = kind.isSent ? MessageDirection::Tx : MessageDirection::Rx;
  if (kind.isFd) {
    message.kind = fdKind((frame.info.flags & record_flag::kBrs) != 0, (frame.info.flags & record_flag::kEsi) != 0);
    message.length = kDlcLengths[dlc];
  } else {
    message.type = kind.isSent ? MessageType::Tx : MessageType::Rx;
    message.kind = kind.isRemote ? MessageKind::RR : MessageKind::DT;
    message.length = dlc;  // also a code above 8, though it is no FD frame
  }
  message.valid = true;
  return true;
}

// What error and status records have in common. The data are set before.
void takeBusEvent(ZelkBinaryMessage& message, UnsignedMicroseconds timestamp, std::uint8_t bus) {
  message.timestamp = timestamp;
  message.bus = bus;
  message.direction = MessageDirection::Rx;
  message.length = static_cast<std::uint32_t>(message.data.size());
  message.valid = true;
}

bool isChangeOfCounters(std::uint8_t errorFlags) {
  return (errorFlags & error_flag::kClass) == error_flag::kCounters;
}

bool readError(ZelkBinaryMessage& message, const TimeScale& timeScale) {
  Native_RecordCanError record;
  if (!tryReadFields(message.rawBytes, record)) {
    return false;
  }
  message.type = MessageType::Error;
  if (isChangeOfCounters(record.flags)) {
    message.kind = MessageKind::EC;
    message.data = {record.rxErrorCounter, record.txErrorCounter};
  } else {
    message.kind = MessageKind::ER;
    message.id = idOfErrorFlags(record.flags);
    const bool directionBit = (record.flags & error_flag::kDirection) != 0;
    message.data = {static_cast<std::uint8_t>(directionBit), record.errorPosition, record.rxErrorCounter,
                    record.txErrorCounter};
  }
  takeBusEvent(message, timeScale.toMicroseconds(record.timestampTicks), record.bus);
  return true;
}

bool readStatus(ZelkBinaryMessage& message, const TimeScale& timeScale) {
  Native_RecordCanStatus record;
  if (!tryReadFields(message.rawBytes, record)) {
    return false;
  }
  std::uint32_t status = 0;
  for (const StatusFlag& known : kStatusFlags) {
    status += (record.flags & known.flag) != 0 ? static_cast<std::uint32_t>(known.status) : 0;
  }
  message.type = MessageType::Warng;
  message.kind = MessageKind::ST;
  message.extended = true;
  message.data = {0, static_cast<std::uint8_t>(status >> 16), 0, static_cast<std::uint8_t>(status)};
  takeBusEvent(message, timeScale.toMicroseconds(record.timestampTicks), record.bus);
  return true;
}

bool readComment(ZelkBinaryMessage& message, const TimeScale& /*timeScale*/) {
  message.commentary = commentOf(message.rawBytes);
  message.valid = true;
  return true;
}

std::string textOfBusLoad(const Native_RecordCanBusLoad& record, const TimeScale& timeScale) {
  return joined("Bus-Load information (", shownTime(timeScale.toMicroseconds(record.timestampTicks)),
                ") --> Bus: ", shownBus(record.bus), " - Load: ", record.load, " %");
}

std::string textOfBitrate(const Native_RecordCanBitrate& record, const TimeScale& /*timeScale*/) {
  return joined("Arbitration bit-rate information --> Bus: ", shownBus(record.bus),
                " - Warning-Limit: ", record.warningLimit, " - Frequency: ", record.frequency,
                " - Prescaler: ", record.prescaler, " - TSEG1: ", record.tseg1, " - TSEG2: ", record.tseg2,
                " - SWJ: ", record.sjw);
}

std::string textOfBitrateFd(const Native_RecordCanBitrateFd& record, const TimeScale& /*timeScale*/) {
  return joined("FD bit-rate information --> Bus: ", shownBus(record.bus), " - Warning-Limit: ", record.warningLimit,
                " - Frequency: ", record.frequency, " - Nominal-Prescaler: ", record.nominalPrescaler,
                " - Nominal-TSEG1: ", record.nominalTseg1, " - Nominal-TSEG2: ", record.nominalTseg2,
                " - Nominal-SWJ: ", record.nominalSjw, " - Data-Prescaler: ", record.dataPrescaler,
                " - Data-TSEG1: ", record.dataTseg1, " - Data-TSEG2: ", record.dataTseg2,
                " - Data-SWJ: ", record.dataSjw);
}

std::string textOfOverrun(const Native_RecordCanOverrun& record, const TimeScale& timeScale) {
  return joined("Overrun notification (", shownTime(timeScale.toMicroseconds(record.timestampTicks)),
                ") --> Bus: ", shownBus(record.bus), " - Overruns: ", record.overruns);
}

std::string textOfCriticalOverrun(const Native_RecordCanOverrun& record, const TimeScale& timeScale) {
  return joined("Critical overrun notification from FPGA (", shownTime(timeScale.toMicroseconds(record.timestampTicks)),
                ") --> Bus: ", shownBus(record.bus));
}

std::string textOfCounter(const Native_RecordCounter& record, const TimeScale& /*timeScale*/) {
  return joined("Records counter --> Total records: ", record.totalRecords,
                " - Total messages: ", record.totalMessages);
}

// A record that is no frame: its text is all that is kept, and its bus.
template <class Record, std::string (*kTextOf)(const Record&, const TimeScale&)>
bool readNote(ZelkBinaryMessage& message, const TimeScale& timeScale) {
  Record record;
  if (!tryReadFields(message.rawBytes, record)) {
    return false;
  }
  if constexpr (requires { record.bus; }) {
    message.bus = record.bus;
  }
  message.commentary = kTextOf(record, timeScale);
  return true;
}

// The kinds of records that have a content, those of a busy bus first.
struct RecordKind {
  RecordType type;
  // Fills the message from `rawBytes`; false for a record that ends before its fields do.
  bool (*read)(ZelkBinaryMessage& message, const TimeScale& timeScale);
  // What stands before the bytes of a record that is too short; such a record without a label is passed over silently.
  std::string_view rawDataLabel;
};

constexpr std::string_view kCountersLabel = "Native_RecordCanError raw data(EC) : ";

constexpr std::array kKinds = {
    RecordKind{RecordType::CanRxMsg, readFrame<Internal_ReceivedDataFrameHeader>, "Native_RecordCanRxMsg raw data: "},
    RecordKind{RecordType::CanRxFdMsg, readFrame<Internal_ReceivedDataFrameHeader>,
               "Native_RecordCanRxFdMsg raw data: "},
    RecordKind{RecordType::CanTxMsg, readFrame<Internal_SentDataFrameHeader>, "Native_RecordCanTxMsg raw data: "},
    RecordKind{RecordType::CanTxFdMsg, readFrame<Internal_SentDataFrameHeader>, "Native_RecordCanTxFdMsg raw data: "},
    RecordKind{RecordType::CanRxRtrMsg, readFrame<Internal_ReceivedDataFrameHeader>, ""},
    RecordKind{RecordType::CanTxRtrMsg, readFrame<Internal_SentDataFrameHeader>, ""},
    RecordKind{RecordType::CanError, readError, "Native_RecordCanError raw data(EF) : "},
    RecordKind{RecordType::CanStatus, readStatus, "Native_RecordCanStatus raw data : "},
    RecordKind{RecordType::CanBusLoad, readNote<Native_RecordCanBusLoad, textOfBusLoad>,
               "Native_RecordCanBusLoad raw data : "},
    RecordKind{RecordType::CanBitrate, readNote<Native_RecordCanBitrate, textOfBitrate>,
               "Native_RecordCanBitrate raw data : "},
    RecordKind{RecordType::CanBitrateFd, readNote<Native_RecordCanBitrateFd, textOfBitrateFd>,
               "Native_RecordCanBitrate raw data : "},
    RecordKind{RecordType::CanOverrun, readNote<Native_RecordCanOverrun, textOfOverrun>,
               "Native_RecordCanCritical raw data : "},
    RecordKind{RecordType::CanCritical, readNote<Native_RecordCanOverrun, textOfCriticalOverrun>,
               "Native_RecordCanCritical raw data : "},
    RecordKind{RecordType::Counter, readNote<Native_RecordCounter, textOfCounter>, "Native_RecordCounter raw data: "},
    RecordKind{RecordType::TextMsg, readComment, ""},
};

std::string_view rawDataLabel(const RecordKind& kind, std::span<const std::uint8_t> bytes) {
  const bool isOfCounters =
      kind.type == RecordType::CanError && isChangeOfCounters(readField<&Native_RecordCanError::flags>(bytes));
  return isOfCounters ? kCountersLabel : kind.rawDataLabel;
}

void addTo(std::uint8_t* time, std::uint64_t delta) {
  storeLittle(time, loadLittle<std::uint64_t>(time) + delta);
}

}  // namespace

void readContent(ZelkBinaryMessage& message, const TimeScale& timeScale) {
  const auto* const kind = std::ranges::find(kKinds, message.recordType, &RecordKind::type);
  if (kind == kKinds.end() || kind->read(message, timeScale)) {
    return;
  }
  const std::string_view label = rawDataLabel(*kind, message.rawBytes);
  if (!label.empty()) {
    message.commentary = joined("Parsing exception: ", "Record of ", message.rawBytes.size(),
                                " bytes is too short for its fields", ".\n", label);
    message.commentary.append(message.rawBytes.begin(), message.rawBytes.end());
  }
}

void moveTimes(RecordType type, std::span<std::uint8_t> record, std::uint64_t delta) {
  constexpr std::size_t kTime = layoutOffset<&Internal_ReceivedDataFrameHeader::timestampTicks>();
  static_assert(kTime == layoutOffset<&Internal_SentDataFrameHeader::timestampTicks>());
  static_assert(kTime == layoutOffset<&Native_RecordCanError::timestampTicks>());
  static_assert(kTime == layoutOffset<&Native_RecordCanStatus::timestampTicks>());
  addTo(record.data() + kTime, delta);
  if (type >= RecordType::CanTxMsg && type <= RecordType::CanTxFdMsg) {
    addTo(record.data() + layoutOffset<&Internal_SentDataFrameHeader::timestampSentTicks>(), delta);
  }
}

}  // namespace xlatr
