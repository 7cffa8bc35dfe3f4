// The records of which BTRC traces are made, each with its layout.
//
// A record begins with its length in bytes and its type code. Records are little-endian and packed; those that are
// written here are multiples of 4 bytes long. Every class reads and writes itself by the one description of its fields:
// FromBytes makes an object (null when the bytes in hand are too few: such a record has no content), Serialize answers
// the bytes, appendTo appends them without a vector of its own.
//
// Where no object is wanted, the fields are read and written in place: tryReadWire on a record or frame header that
// lives on the stack, dataOfFrame for what follows it.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "formats/native/serializable.hpp"
#include "formats/native/wire_layout.hpp"
#include "messages/can_dlc.hpp"
#include "util/byte_growth.hpp"

namespace xlatr {

// The codes of records; any other value is a record that is passed over.
enum class RecordType : std::uint16_t {
  Invalid = 0x0000,      // filler
  CanRxMsg = 0x0001,     // received data frame
  CanRxRtrMsg = 0x0002,  // received remote frame
  CanRxFdMsg = 0x0003,   // received CAN FD frame
  CanTxMsg = 0x0004,     // sent data frame
  CanTxRtrMsg = 0x0005,  // sent remote frame
  CanTxFdMsg = 0x0006,   // sent CAN FD frame
  CanError = 0x0007,     // error frame or error counters
  CanStatus = 0x0008,    // bus status
  CanBusLoad = 0x0009,
  CanBitrate = 0x000A,    // arbitration bit timing
  CanBitrateFd = 0x000B,  // CAN FD bit timing
  CanOverrun = 0x0010,
  CanCritical = 0x0011,      // overrun in the hardware
  Info = 0x8000,             // file identification
  Counter = 0x8001,          // running totals, at the start of a block
  TextMsg = 0x8002,          // comment
  TimeCalibration = 0x8003,  // start of the trace by the calendar
};

namespace frame_flag {
inline constexpr std::uint16_t kRemote = 0x0001;
inline constexpr std::uint16_t kExtended = 0x0002;
inline constexpr std::uint16_t kFd = 0x0010;
inline constexpr std::uint16_t kBrs = 0x0020;
inline constexpr std::uint16_t kEsi = 0x0040;
inline constexpr std::uint16_t kAll = kRemote | kExtended | kFd | kBrs | kEsi;
}  // namespace frame_flag

// The implementation of a record that is its fields and nothing else.
template <class Record, class... Interfaces>
class FixedRecord : public ISerializable, public Interfaces... {
 public:
  [[nodiscard]] std::vector<std::uint8_t> Serialize() const override {
    std::vector<std::uint8_t> image;
    appendTo(image);
    return image;
  }
  void appendTo(std::vector<std::uint8_t>& out) const { appendWire(out, static_cast<const Record&>(*this)); }
  [[nodiscard]] static std::unique_ptr<Record> FromBytes(std::span<const std::uint8_t> bytes) {
    auto record = std::make_unique<Record>();
    return tryReadWire(bytes, *record) ? std::move(record) : nullptr;
  }
};

class Native_RecordHeader final : public FixedRecord<Native_RecordHeader> {
 public:
  Native_RecordHeader() = default;
  Native_RecordHeader(std::size_t recordSize, RecordType recordType)
      : size(static_cast<std::uint16_t>(recordSize)), type(recordType) {}

  std::uint16_t size = 0;  // bytes of the whole record, header included
  RecordType type = RecordType::Invalid;

  static constexpr auto wireFields() {
    return std::tuple(WireField{&Native_RecordHeader::size, 0}, WireField{&Native_RecordHeader::type, 2});
  }
};

inline constexpr std::size_t kRecordHeaderSize = kWireSize<Native_RecordHeader>;

[[nodiscard]] constexpr std::size_t roundedUpToFour(std::size_t size) {
  return (size + 3) / 4 * 4;
}

// What a frame is, in the tail of its header.
class Internal_DataFrameInfo final : public FixedRecord<Internal_DataFrameInfo> {
 public:
  Internal_DataFrameInfo() = default;
  // Of the DLC the low four bits are kept, of the flags those that there are.
  Internal_DataFrameInfo(std::uint8_t frameBus, std::uint8_t frameDlc, std::uint16_t frameFlags, std::uint32_t frameId)
      : bus(frameBus), dlc(frameDlc & 0x0FU), flags(frameFlags & frame_flag::kAll), id(frameId) {}

  std::uint8_t bus = 0;     // counted from 0
  std::uint8_t dlc = 0;     // a code; see dlcCode
  std::uint16_t flags = 0;  // frame_flag
  std::uint32_t id = 0;

  // A record that was read may have more bits in the field than a code has.
  [[nodiscard]] std::uint8_t dlcCode() const { return dlc & 0x0FU; }

  static constexpr auto wireFields() {
    return std::tuple(WireField{&Internal_DataFrameInfo::bus, 0}, WireField{&Internal_DataFrameInfo::dlc, 1},
                      WireField{&Internal_DataFrameInfo::flags, 2}, WireField{&Internal_DataFrameInfo::id, 4});
  }
};

// The header of received frames.
class Internal_ReceivedDataFrameHeader final : public FixedRecord<Internal_ReceivedDataFrameHeader> {
 public:
  Internal_ReceivedDataFrameHeader() = default;
  // The size leaves room for the data bytes of the DLC. It does so for a remote frame as well, which has none.
  Internal_ReceivedDataFrameHeader(RecordType type, const Internal_DataFrameInfo& frame, std::uint64_t receivedAt)
      : header(roundedUpToFour(kFixedSize + kDlcLengths[frame.dlcCode()]), type), timestamp(receivedAt), info(frame) {}

  void adjust(std::uint64_t delta) { timestamp += delta; }

  static constexpr std::size_t kFixedSize = 20;

  Native_RecordHeader header;
  std::uint64_t timestamp = 0;
  Internal_DataFrameInfo info;

  static constexpr auto wireFields() {
    return std::tuple(WireField{&Internal_ReceivedDataFrameHeader::header, 0},
                      WireField{&Internal_ReceivedDataFrameHeader::timestamp, 4},
                      WireField{&Internal_ReceivedDataFrameHeader::info, 12});
  }
};

// The header of sent frames.
class Internal_SentDataFrameHeader final : public FixedRecord<Internal_SentDataFrameHeader> {
 public:
  Internal_SentDataFrameHeader() = default;
  // The size leaves room for as many bytes as the DLC is as a number: the 64 bytes of code 15 lose all but 16. Readers
  // of these files count on it. A remote frame has none.
  Internal_SentDataFrameHeader(RecordType type, const Internal_DataFrameInfo& frame, std::uint64_t requestedAt,
                               std::uint64_t sentAt)
      : header(roundedUpToFour(kFixedSize + (type == RecordType::CanTxRtrMsg ? 0U : frame.dlcCode())), type),
        timestamp(requestedAt),
        timestampSent(sentAt),
        info(frame) {}

  void adjust(std::uint64_t delta) {
    timestamp += delta;
    timestampSent += delta;
  }

  static constexpr std::size_t kFixedSize = 28;

  Native_RecordHeader header;
  std::uint64_t timestamp = 0;
  std::uint64_t timestampSent = 0;  // the same as `timestamp` in what is written; not looked at when read
  Internal_DataFrameInfo info;

  static constexpr auto wireFields() {
    return std::tuple(WireField{&Internal_SentDataFrameHeader::header, 0},
                      WireField{&Internal_SentDataFrameHeader::timestamp, 4},
                      WireField{&Internal_SentDataFrameHeader::timestampSent, 12},
                      WireField{&Internal_SentDataFrameHeader::info, 20});
  }
};

static_assert(kWireSize<Internal_ReceivedDataFrameHeader> == Internal_ReceivedDataFrameHeader::kFixedSize);
static_assert(kWireSize<Internal_SentDataFrameHeader> == Internal_SentDataFrameHeader::kFixedSize);

// The data area of the frame record whose header was read from the start of `bytes`, padding included: as many bytes as
// the record's size says, which is none of the DLC's business. Nothing when the size is below that of the header or the
// bytes end before.
template <class FrameHeader>
[[nodiscard]] std::optional<std::span<const std::uint8_t>> dataOfFrame(std::span<const std::uint8_t> bytes,
                                                                       const FrameHeader& frame) {
  const std::size_t size = frame.header.size;
  if (size < FrameHeader::kFixedSize || bytes.size() < size) {
    return std::nullopt;
  }
  return bytes.first(size).subspan(FrameHeader::kFixedSize);
}

// The data area of a frame record. That of a frame has its place here; only a damaged record asks for more.
class FrameData {
 public:
  FrameData() = default;
  // Zeros, of which the first are replaced by the bytes of `source`, as many as fit.
  FrameData(std::size_t size, std::span<const std::uint8_t> source);

  [[nodiscard]] std::span<const std::uint8_t> bytes() const {
    return {large_.empty() ? small_.data() : large_.data(), size_};
  }

 private:
  std::size_t size_ = 0;
  std::array<std::uint8_t, 64> small_{};
  std::vector<std::uint8_t> large_;
};

// The implementation of frame records.
template <class Record, class FrameHeader>
class FrameRecord : public ISerializable, public ITimestampAdjustable {
 public:
  void AdjustTimestamp(std::uint64_t delta) override { frame.adjust(delta); }

  FrameHeader frame;

 protected:
  FrameRecord() = default;
  explicit FrameRecord(const FrameHeader& header) : frame(header) {}
};

// A frame that carries data, of which the constructor takes at most `kMaxBytes`.
template <class Record, class FrameHeader, std::size_t kMaxBytes>
class DataFrameRecord : public FrameRecord<Record, FrameHeader> {
 public:
  // As many bytes as the record's size leaves room for.
  [[nodiscard]] std::span<const std::uint8_t> data() const { return data_.bytes(); }

  [[nodiscard]] std::vector<std::uint8_t> Serialize() const override {
    std::vector<std::uint8_t> image;
    appendTo(image);
    return image;
  }
  void appendTo(std::vector<std::uint8_t>& out) const {
    appendWire(out, this->frame);
    appendBytes(out, data());
  }
  [[nodiscard]] static std::unique_ptr<Record> FromBytes(std::span<const std::uint8_t> bytes) {
    auto record = std::make_unique<Record>();
    if (!tryReadWire(bytes, record->frame)) {
      return nullptr;
    }
    const auto area = dataOfFrame(bytes, record->frame);
    if (!area) {
      return nullptr;
    }
    record->data_ = FrameData(area->size(), *area);
    return record;
  }

 protected:
  DataFrameRecord() = default;
  DataFrameRecord(const FrameHeader& header, std::span<const std::uint8_t> source)
      : FrameRecord<Record, FrameHeader>(header),
        data_(header.header.size - FrameHeader::kFixedSize, source.first(std::min(source.size(), kMaxBytes))) {}

 private:
  FrameData data_;
};

// A frame of which nothing but the header is written and read, whatever its size says.
template <class Record, class FrameHeader>
class RemoteFrameRecord : public FrameRecord<Record, FrameHeader> {
 public:
  [[nodiscard]] std::vector<std::uint8_t> Serialize() const override { return this->frame.Serialize(); }
  void appendTo(std::vector<std::uint8_t>& out) const { this->frame.appendTo(out); }
  [[nodiscard]] static std::unique_ptr<Record> FromBytes(std::span<const std::uint8_t> bytes) {
    auto record = std::make_unique<Record>();
    return tryReadWire(bytes, record->frame) ? std::move(record) : nullptr;
  }

 protected:
  using FrameRecord<Record, FrameHeader>::FrameRecord;
};

// The most data bytes that the records of frames take from their source.
inline constexpr std::size_t kMaxClassicBytes = 8;
inline constexpr std::size_t kMaxFdBytes = 64;

class Native_RecordCanRxMsg final
    : public DataFrameRecord<Native_RecordCanRxMsg, Internal_ReceivedDataFrameHeader, kMaxClassicBytes> {
 public:
  Native_RecordCanRxMsg() = default;
  Native_RecordCanRxMsg(std::span<const std::uint8_t> data, std::uint64_t timestamp, const Internal_DataFrameInfo& info)
      : DataFrameRecord({RecordType::CanRxMsg, info, timestamp}, data) {}
};

class Native_RecordCanRxRtrMsg final
    : public RemoteFrameRecord<Native_RecordCanRxRtrMsg, Internal_ReceivedDataFrameHeader> {
 public:
  Native_RecordCanRxRtrMsg() = default;
  Native_RecordCanRxRtrMsg(std::uint64_t timestamp, const Internal_DataFrameInfo& info)
      : RemoteFrameRecord({RecordType::CanRxRtrMsg, info, timestamp}) {}
};

class Native_RecordCanRxFdMsg final
    : public DataFrameRecord<Native_RecordCanRxFdMsg, Internal_ReceivedDataFrameHeader, kMaxFdBytes> {
 public:
  Native_RecordCanRxFdMsg() = default;
  Native_RecordCanRxFdMsg(std::span<const std::uint8_t> data, std::uint64_t timestamp,
                          const Internal_DataFrameInfo& info)
      : DataFrameRecord({RecordType::CanRxFdMsg, info, timestamp}, data) {}
};

class Native_RecordCanTxMsg final
    : public DataFrameRecord<Native_RecordCanTxMsg, Internal_SentDataFrameHeader, kMaxClassicBytes> {
 public:
  Native_RecordCanTxMsg() = default;
  Native_RecordCanTxMsg(std::span<const std::uint8_t> data, std::uint64_t timestamp, std::uint64_t timestampSent,
                        const Internal_DataFrameInfo& info)
      : DataFrameRecord({RecordType::CanTxMsg, info, timestamp, timestampSent}, data) {}
};

class Native_RecordCanTxRtrMsg final
    : public RemoteFrameRecord<Native_RecordCanTxRtrMsg, Internal_SentDataFrameHeader> {
 public:
  Native_RecordCanTxRtrMsg() = default;
  Native_RecordCanTxRtrMsg(std::uint64_t timestamp, std::uint64_t timestampSent, const Internal_DataFrameInfo& info)
      : RemoteFrameRecord({RecordType::CanTxRtrMsg, info, timestamp, timestampSent}) {}
};

class Native_RecordCanTxFdMsg final
    : public DataFrameRecord<Native_RecordCanTxFdMsg, Internal_SentDataFrameHeader, kMaxFdBytes> {
 public:
  Native_RecordCanTxFdMsg() = default;
  Native_RecordCanTxFdMsg(std::span<const std::uint8_t> data, std::uint64_t timestamp, std::uint64_t timestampSent,
                          const Internal_DataFrameInfo& info)
      : DataFrameRecord({RecordType::CanTxFdMsg, info, timestamp, timestampSent}, data) {}
};

// An error frame, or the error counters of a bus.
class Native_RecordCanError final : public FixedRecord<Native_RecordCanError, ITimestampAdjustable> {
 public:
  void AdjustTimestamp(std::uint64_t delta) override { timestamp += delta; }

  Native_RecordHeader header{20, RecordType::CanError};
  std::uint64_t timestamp = 0;
  std::uint8_t bus = 0;    // counted from 0
  std::uint8_t flags = 0;  // bit 7 the direction, bits 4 to 6 the class of the error; class 4 is a change of counters
  std::uint8_t errorPosition = 0;
  std::uint8_t txErrorCounter = 0;
  std::uint8_t rxErrorCounter = 0;
  std::array<std::uint8_t, 3> reserved{};

  static constexpr auto wireFields() {
    return std::tuple(
        WireField{&Native_RecordCanError::header, 0}, WireField{&Native_RecordCanError::timestamp, 4},
        WireField{&Native_RecordCanError::bus, 12}, WireField{&Native_RecordCanError::flags, 13},
        WireField{&Native_RecordCanError::errorPosition, 14}, WireField{&Native_RecordCanError::txErrorCounter, 15},
        WireField{&Native_RecordCanError::rxErrorCounter, 16}, WireField{&Native_RecordCanError::reserved, 17});
  }
};

class Native_RecordCanStatus final : public FixedRecord<Native_RecordCanStatus, ITimestampAdjustable> {
 public:
  void AdjustTimestamp(std::uint64_t delta) override { timestamp += delta; }

  Native_RecordHeader header{16, RecordType::CanStatus};
  std::uint64_t timestamp = 0;
  std::uint8_t bus = 0;    // counted from 0
  std::uint8_t flags = 0;  // bit 7 bus off, bit 6 warning, bit 5 passive
  std::uint16_t reserved = 0;

  static constexpr auto wireFields() {
    return std::tuple(WireField{&Native_RecordCanStatus::header, 0}, WireField{&Native_RecordCanStatus::timestamp, 4},
                      WireField{&Native_RecordCanStatus::bus, 12}, WireField{&Native_RecordCanStatus::flags, 13},
                      WireField{&Native_RecordCanStatus::reserved, 14});
  }
};

class Native_RecordCanBusLoad final : public FixedRecord<Native_RecordCanBusLoad> {
 public:
  Native_RecordHeader header{16, RecordType::CanBusLoad};
  std::uint64_t timestamp = 0;
  std::uint8_t bus = 0;   // counted from 0
  std::uint8_t load = 0;  // per cent
  std::uint16_t reserved = 0;

  static constexpr auto wireFields() {
    return std::tuple(WireField{&Native_RecordCanBusLoad::header, 0}, WireField{&Native_RecordCanBusLoad::timestamp, 4},
                      WireField{&Native_RecordCanBusLoad::bus, 12}, WireField{&Native_RecordCanBusLoad::load, 13},
                      WireField{&Native_RecordCanBusLoad::reserved, 14});
  }
};

class Native_RecordCanBitrate final : public FixedRecord<Native_RecordCanBitrate> {
 public:
  Native_RecordHeader header{16, RecordType::CanBitrate};
  std::uint8_t bus = 0;  // counted from 0
  std::uint8_t warningLimit = 0;
  std::uint16_t prescaler = 0;
  std::uint16_t tseg1 = 0;
  std::uint8_t tseg2 = 0;
  std::uint8_t sjw = 0;
  std::uint32_t frequency = 0;

  static constexpr auto wireFields() {
    return std::tuple(WireField{&Native_RecordCanBitrate::header, 0}, WireField{&Native_RecordCanBitrate::bus, 4},
                      WireField{&Native_RecordCanBitrate::warningLimit, 5},
                      WireField{&Native_RecordCanBitrate::prescaler, 6}, WireField{&Native_RecordCanBitrate::tseg1, 8},
                      WireField{&Native_RecordCanBitrate::tseg2, 10}, WireField{&Native_RecordCanBitrate::sjw, 11},
                      WireField{&Native_RecordCanBitrate::frequency, 12});
  }
};

class Native_RecordCanBitrateFd final : public FixedRecord<Native_RecordCanBitrateFd> {
 public:
  Native_RecordHeader header{24, RecordType::CanBitrateFd};
  std::uint8_t bus = 0;  // counted from 0
  std::uint8_t reserved1 = 0;
  std::uint8_t warningLimit = 0;
  std::uint8_t nominalSjw = 0;
  std::uint16_t nominalTseg1 = 0;
  std::uint8_t nominalTseg2 = 0;
  std::uint8_t dataSjw = 0;
  std::uint8_t dataTseg1 = 0;
  std::uint8_t dataTseg2 = 0;
  std::uint16_t nominalPrescaler = 0;
  std::uint16_t dataPrescaler = 0;
  std::uint16_t reserved2 = 0;
  std::uint32_t frequency = 0;

  static constexpr auto wireFields() {
    return std::tuple(
        WireField{&Native_RecordCanBitrateFd::header, 0}, WireField{&Native_RecordCanBitrateFd::bus, 4},
        WireField{&Native_RecordCanBitrateFd::reserved1, 5}, WireField{&Native_RecordCanBitrateFd::warningLimit, 6},
        WireField{&Native_RecordCanBitrateFd::nominalSjw, 7}, WireField{&Native_RecordCanBitrateFd::nominalTseg1, 8},
        WireField{&Native_RecordCanBitrateFd::nominalTseg2, 10}, WireField{&Native_RecordCanBitrateFd::dataSjw, 11},
        WireField{&Native_RecordCanBitrateFd::dataTseg1, 12}, WireField{&Native_RecordCanBitrateFd::dataTseg2, 13},
        WireField{&Native_RecordCanBitrateFd::nominalPrescaler, 14},
        WireField{&Native_RecordCanBitrateFd::dataPrescaler, 16}, WireField{&Native_RecordCanBitrateFd::reserved2, 18},
        WireField{&Native_RecordCanBitrateFd::frequency, 20});
  }
};

// The fields of both overrun records.
template <class Record, RecordType kType>
class OverrunRecord : public FixedRecord<Record> {
 public:
  Native_RecordHeader header{20, kType};
  std::uint64_t timestamp = 0;
  std::uint8_t bus = 0;  // counted from 0
  std::array<std::uint8_t, 3> reserved{};
  std::uint32_t overruns = 0;

  static constexpr auto wireFields() {
    return std::tuple(WireField{&OverrunRecord::header, 0}, WireField{&OverrunRecord::timestamp, 4},
                      WireField{&OverrunRecord::bus, 12}, WireField{&OverrunRecord::reserved, 13},
                      WireField{&OverrunRecord::overruns, 16});
  }
};

class Native_RecordCanOverrun final : public OverrunRecord<Native_RecordCanOverrun, RecordType::CanOverrun> {};
class Native_RecordCanCritical final : public OverrunRecord<Native_RecordCanCritical, RecordType::CanCritical> {};

// Opens a file.
class Native_RecordInfo final : public FixedRecord<Native_RecordInfo> {
 public:
  static constexpr std::uint16_t kDefaultBlockSize = 8;

  Native_RecordHeader header{8, RecordType::Info};
  std::uint16_t blockSize = kDefaultBlockSize;  // of a block, in units of 1024 bytes
  std::uint8_t version = 0;
  std::int8_t timeScalingExponent = 0;  // a unit of time is ten to this power seconds

  static constexpr auto wireFields() {
    return std::tuple(WireField{&Native_RecordInfo::header, 0}, WireField{&Native_RecordInfo::blockSize, 4},
                      WireField{&Native_RecordInfo::version, 6}, WireField{&Native_RecordInfo::timeScalingExponent, 7});
  }
};

// The start of a trace by the calendar, in local time.
class Native_RecordTimeCalibration final : public FixedRecord<Native_RecordTimeCalibration> {
 public:
  Native_RecordHeader header{24, RecordType::TimeCalibration};
  std::uint64_t systemTime = 0;  // the timestamp at that moment
  std::uint16_t year = 1970;     // in full
  std::uint8_t month = 1;
  std::uint8_t day = 1;
  std::uint8_t hour = 0;
  std::uint8_t minute = 0;
  std::uint8_t second = 0;
  std::uint8_t reserved = 0;
  std::uint32_t microseconds = 0;

  static constexpr auto wireFields() {
    return std::tuple(
        WireField{&Native_RecordTimeCalibration::header, 0}, WireField{&Native_RecordTimeCalibration::systemTime, 4},
        WireField{&Native_RecordTimeCalibration::year, 12}, WireField{&Native_RecordTimeCalibration::month, 14},
        WireField{&Native_RecordTimeCalibration::day, 15}, WireField{&Native_RecordTimeCalibration::hour, 16},
        WireField{&Native_RecordTimeCalibration::minute, 17}, WireField{&Native_RecordTimeCalibration::second, 18},
        WireField{&Native_RecordTimeCalibration::reserved, 19},
        WireField{&Native_RecordTimeCalibration::microseconds, 20});
  }
};

// What was written before it.
class Native_RecordCounter final : public FixedRecord<Native_RecordCounter> {
 public:
  Native_RecordCounter() = default;
  Native_RecordCounter(std::uint64_t writtenAt, std::uint64_t records, std::uint64_t messages)
      : timestamp(writtenAt), totalRecords(records), totalMessages(messages) {}

  Native_RecordHeader header{28, RecordType::Counter};
  std::uint64_t timestamp = 0;
  std::uint64_t totalRecords = 0;
  std::uint64_t totalMessages = 0;

  static constexpr auto wireFields() {
    return std::tuple(WireField{&Native_RecordCounter::header, 0}, WireField{&Native_RecordCounter::timestamp, 4},
                      WireField{&Native_RecordCounter::totalRecords, 12},
                      WireField{&Native_RecordCounter::totalMessages, 20});
  }
};

// Filler of a given size, header included. A size below that of the header is the header alone; so is one that the 16
// bits of the header show as such.
class Native_RecordInvalid final : public ISerializable {
 public:
  Native_RecordInvalid() : Native_RecordInvalid(kRecordHeaderSize) {}
  explicit Native_RecordInvalid(std::size_t size)
      : header(std::max(size % kSizesOfARecord, kRecordHeaderSize), RecordType::Invalid),
        filler(header.size - kRecordHeaderSize) {}

  [[nodiscard]] std::vector<std::uint8_t> Serialize() const override;
  void appendTo(std::vector<std::uint8_t>& out) const;
  [[nodiscard]] static std::unique_ptr<Native_RecordInvalid> FromBytes(std::span<const std::uint8_t> bytes);

  Native_RecordHeader header;
  std::vector<std::uint8_t> filler;

 private:
  static constexpr std::size_t kSizesOfARecord = std::size_t{1} << 16;
};

// A comment.
class Native_RecordTextMsg final : public ISerializable {
 public:
  Native_RecordTextMsg() : Native_RecordTextMsg(std::string_view()) {}
  // Blanks make the text a multiple of 4 bytes long. A text that is longer than a record can be is cut.
  explicit Native_RecordTextMsg(std::string_view content);

  [[nodiscard]] std::vector<std::uint8_t> Serialize() const override;
  void appendTo(std::vector<std::uint8_t>& out) const;
  // The record ends with `bytes`, whatever its header says.
  [[nodiscard]] static std::unique_ptr<Native_RecordTextMsg> FromBytes(std::span<const std::uint8_t> bytes);
  // The text of such a record, up to its first zero byte, as a view into it; empty when there is none.
  [[nodiscard]] static std::string_view textOf(std::span<const std::uint8_t> bytes);

  Native_RecordHeader header;
  std::string text;
};

}  // namespace xlatr
