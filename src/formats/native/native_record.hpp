// The records of which BTRC traces are made, as described structures.
//
// A record begins with its length in bytes and its type code. Records are little-endian and packed; those that are
// written here are multiples of 4 bytes long. Records of frames: native_frame_record.hpp.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "io/quirk.hpp"
#include "messages/enumerations.hpp"
#include "util/layout.hpp"

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

struct Native_RecordHeader {
  Native_RecordHeader() = default;
  Native_RecordHeader(std::size_t recordSize, RecordType recordType)
      : size(static_cast<std::uint16_t>(recordSize)), type(recordType) {}

  std::uint16_t size = 0;  // bytes of the whole record, header included
  RecordType type = RecordType::Invalid;

  static consteval auto fields() {
    return FieldList{
        Field{0, "size", &Native_RecordHeader::size},
        Field{2, "type", &Native_RecordHeader::type},
    };
  }
};

inline constexpr std::size_t kRecordHeaderSize = kLayoutSize<Native_RecordHeader>;

[[nodiscard]] constexpr std::size_t roundedUpToFour(std::size_t size) {
  return (size + 3) / 4 * 4;
}

// The flags of an error record.
namespace error_flag {
inline constexpr std::uint8_t kDirection = 0x80;
inline constexpr std::uint8_t kClass = 0x70;     // the type of the error (messages/error_type.hpp), or the next one
inline constexpr std::uint8_t kCounters = 0x40;  // the class of a change of counters
inline constexpr unsigned kClassShift = 4;
}  // namespace error_flag

// An error frame, or the error counters of a bus.
struct Native_RecordCanError {
  Native_RecordHeader header{20, RecordType::CanError};
  std::uint64_t timestampTicks = 0;
  std::uint8_t bus = 0;    // counted from 0
  std::uint8_t flags = 0;  // bit 7 the direction, bits 4 to 6 the class of the error; class 4 is a change of counters
  std::uint8_t errorPosition = 0;
  std::uint8_t txErrorCounter = 0;
  std::uint8_t rxErrorCounter = 0;
  std::array<std::uint8_t, 3> reserved{};

  static consteval auto fields() {
    return FieldList{
        Field{0, "header", &Native_RecordCanError::header},
        Field{4, "timestamp", &Native_RecordCanError::timestampTicks},
        Field{12, "bus", &Native_RecordCanError::bus},
        Field{13, "flags", &Native_RecordCanError::flags},
        Field{14, "errorPosition", &Native_RecordCanError::errorPosition},
        Field{15, "txErrorCounter", &Native_RecordCanError::txErrorCounter},
        Field{16, "rxErrorCounter", &Native_RecordCanError::rxErrorCounter},
        Field{17, "reserved", &Native_RecordCanError::reserved},
    };
  }
};

// The flags of a status record and what they stand for.
struct StatusFlag {
  std::uint8_t flag;
  WarningErrors status;
};

inline constexpr std::array kStatusFlags = {StatusFlag{0x80, WarningErrors::BusOff},
                                            StatusFlag{0x40, WarningErrors::BusWarning},
                                            StatusFlag{0x20, WarningErrors::BusPassive}};

struct Native_RecordCanStatus {
  Native_RecordHeader header{16, RecordType::CanStatus};
  std::uint64_t timestampTicks = 0;
  std::uint8_t bus = 0;    // counted from 0
  std::uint8_t flags = 0;  // bit 7 bus off, bit 6 warning, bit 5 passive
  std::uint16_t reserved = 0;

  static consteval auto fields() {
    return FieldList{
        Field{0, "header", &Native_RecordCanStatus::header},
        Field{4, "timestamp", &Native_RecordCanStatus::timestampTicks},
        Field{12, "bus", &Native_RecordCanStatus::bus},
        Field{13, "flags", &Native_RecordCanStatus::flags},
        Field{14, "reserved", &Native_RecordCanStatus::reserved},
    };
  }
};

struct Native_RecordCanBusLoad {
  Native_RecordHeader header{16, RecordType::CanBusLoad};
  std::uint64_t timestampTicks = 0;
  std::uint8_t bus = 0;   // counted from 0
  std::uint8_t load = 0;  // per cent
  std::uint16_t reserved = 0;

  static consteval auto fields() {
    return FieldList{
        Field{0, "header", &Native_RecordCanBusLoad::header},
        Field{4, "timestamp", &Native_RecordCanBusLoad::timestampTicks},
        Field{12, "bus", &Native_RecordCanBusLoad::bus},
        Field{13, "load", &Native_RecordCanBusLoad::load},
        Field{14, "reserved", &Native_RecordCanBusLoad::reserved},
    };
  }
};

struct Native_RecordCanBitrate {
  Native_RecordHeader header{16, RecordType::CanBitrate};
  std::uint8_t bus = 0;  // counted from 0
  std::uint8_t warningLimit = 0;
  std::uint16_t prescaler = 0;
  std::uint16_t tseg1 = 0;
  std::uint8_t tseg2 = 0;
  std::uint8_t sjw = 0;
  std::uint32_t frequency = 0;

  static consteval auto fields() {
    return FieldList{
        Field{0, "header", &Native_RecordCanBitrate::header},
        Field{4, "bus", &Native_RecordCanBitrate::bus},
        Field{5, "warningLimit", &Native_RecordCanBitrate::warningLimit},
        Field{6, "prescaler", &Native_RecordCanBitrate::prescaler},
        Field{8, "tseg1", &Native_RecordCanBitrate::tseg1},
        Field{10, "tseg2", &Native_RecordCanBitrate::tseg2},
        Field{11, "sjw", &Native_RecordCanBitrate::sjw},
        Field{12, "frequency", &Native_RecordCanBitrate::frequency},
    };
  }
};

struct Native_RecordCanBitrateFd {
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

  static consteval auto fields() {
    return FieldList{
        Field{0, "header", &Native_RecordCanBitrateFd::header},
        Field{4, "bus", &Native_RecordCanBitrateFd::bus},
        Field{5, "reserved1", &Native_RecordCanBitrateFd::reserved1},
        Field{6, "warningLimit", &Native_RecordCanBitrateFd::warningLimit},
        Field{7, "nominalSjw", &Native_RecordCanBitrateFd::nominalSjw},
        Field{8, "nominalTseg1", &Native_RecordCanBitrateFd::nominalTseg1},
        Field{10, "nominalTseg2", &Native_RecordCanBitrateFd::nominalTseg2},
        Field{11, "dataSjw", &Native_RecordCanBitrateFd::dataSjw},
        Field{12, "dataTseg1", &Native_RecordCanBitrateFd::dataTseg1},
        Field{13, "dataTseg2", &Native_RecordCanBitrateFd::dataTseg2},
        Field{14, "nominalPrescaler", &Native_RecordCanBitrateFd::nominalPrescaler},
        Field{16, "dataPrescaler", &Native_RecordCanBitrateFd::dataPrescaler},
        Field{18, "reserved2", &Native_RecordCanBitrateFd::reserved2},
        Field{20, "frequency", &Native_RecordCanBitrateFd::frequency},
    };
  }
};

// Lost frames. Both overrun records have these fields.
struct Native_RecordCanOverrun {
  Native_RecordHeader header{20, RecordType::CanOverrun};
  std::uint64_t timestampTicks = 0;
  std::uint8_t bus = 0;  // counted from 0
  std::array<std::uint8_t, 3> reserved{};
  std::uint32_t overruns = 0;

  static consteval auto fields() {
    return FieldList{
        Field{0, "header", &Native_RecordCanOverrun::header},
        Field{4, "timestamp", &Native_RecordCanOverrun::timestampTicks},
        Field{12, "bus", &Native_RecordCanOverrun::bus},
        Field{13, "reserved", &Native_RecordCanOverrun::reserved},
        Field{16, "overruns", &Native_RecordCanOverrun::overruns},
    };
  }
};

// Opens a file.
struct Native_RecordInfo {
  static constexpr std::uint16_t kDefaultBlockSize = 8;

  Native_RecordHeader header{8, RecordType::Info};
  std::uint16_t blockSize = kDefaultBlockSize;  // of a block, in units of 1024 bytes
  std::uint8_t version = 0;
  std::int8_t timeScalingExponent = 0;  // a unit of time is ten to this power seconds

  static consteval auto fields() {
    return FieldList{
        Field{0, "header", &Native_RecordInfo::header},
        Field{4, "blockSize", &Native_RecordInfo::blockSize},
        Field{6, "version", &Native_RecordInfo::version},
        Field{7, "timeScalingExponent", &Native_RecordInfo::timeScalingExponent},
    };
  }
};

// The start of a trace by the calendar, in local time.
struct Native_RecordTimeCalibration {
  Native_RecordHeader header{24, RecordType::TimeCalibration};
  std::uint64_t systemTimeTicks = 0;  // the time stamp at that moment
  std::uint16_t year = 1970;          // in full
  std::uint8_t month = 1;
  std::uint8_t day = 1;
  std::uint8_t hour = 0;
  std::uint8_t minute = 0;
  std::uint8_t second = 0;
  std::uint8_t reserved = 0;
  std::uint32_t microseconds = 0;

  static consteval auto fields() {
    return FieldList{
        Field{0, "header", &Native_RecordTimeCalibration::header},
        Field{4, "systemTime", &Native_RecordTimeCalibration::systemTimeTicks},
        Field{12, "year", &Native_RecordTimeCalibration::year},
        Field{14, "month", &Native_RecordTimeCalibration::month},
        Field{15, "day", &Native_RecordTimeCalibration::day},
        Field{16, "hour", &Native_RecordTimeCalibration::hour},
        Field{17, "minute", &Native_RecordTimeCalibration::minute},
        Field{18, "second", &Native_RecordTimeCalibration::second},
        Field{19, "reserved", &Native_RecordTimeCalibration::reserved},
        Field{20, "microseconds", &Native_RecordTimeCalibration::microseconds},
    };
  }
};

// What was written before it.
struct Native_RecordCounter {
  Native_RecordHeader header{28, RecordType::Counter};
  std::uint64_t timestampTicks = 0;
  std::uint64_t totalRecords = 0;
  std::uint64_t totalMessages = 0;

  static consteval auto fields() {
    return FieldList{
        Field{0, "header", &Native_RecordCounter::header},
        Field{4, "timestamp", &Native_RecordCounter::timestampTicks},
        Field{12, "totalRecords", &Native_RecordCounter::totalRecords},
        Field{20, "totalMessages", &Native_RecordCounter::totalMessages},
    };
  }
};

// Adds filler of `size` bytes, header included. A size below that of the header is the header alone; so is one that the
// 16 bits of the header show as such.
void appendFiller(Bytes& out, std::size_t size);

// Adds a comment. Blanks make the text a multiple of 4 bytes long, or on the complete way zeros, of which one at least
// follows a text that ends in a blank. A text that is longer than a record can be is cut.
void appendComment(Bytes& out, std::string_view text, Way way = Way::compatible());

// The text of a comment, up to its first zero byte, as a view into the record; empty when there is none. The record
// ends with `record`, whatever its header says. On the complete way up to three blanks before the end of the record are
// taken for filling.
[[nodiscard]] std::string_view commentOf(std::span<const std::uint8_t> record, Way way = Way::compatible());

}  // namespace xlatr
