// From a record to a message, by the channels of its group.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "formats/mf4/block_channels.hpp"
#include "formats/mf4/mdf_can_message.hpp"
#include "formats/mf4/record_bytes.hpp"

namespace xlatr {

// Where a number stands in a record, worked out once for all records of a group.
struct MdfNumberField {
  std::uint32_t offset = 0;
  std::uint8_t shift = 0;  // of the 8 bytes at the offset, big-endian ones swapped
  bool isBigEndian = false;
  std::uint64_t mask = 0;

  // `record` must have 8 bytes to be read at the offset, whatever stands in those behind the field.
  [[nodiscard]] std::uint64_t read(const std::uint8_t* record) const;
};

// Finds the channels of a group by their names once; a record is then a handful of moves. The group must outlive it.
//
// A group holds frames if it has exactly two channels that are the master or are named after a frame (those of overload
// frames are passed over), mostly one of each.
class MdfRecordParser {
 public:
  // What no CAN frame exceeds: the payload of CAN XL. A longer one in signal data is not read.
  static constexpr std::uint32_t kLongestPayload = 2048;
  // A frame with more channels of known names than this is not read; there are 22 names.
  static constexpr std::size_t kMostFields = 64;

  // Raises the failures of the blocks, and one for payloads that stand in a stream.
  explicit MdfRecordParser(ChannelGroupBlock& group);

  // Bytes of a record, without record id.
  [[nodiscard]] std::uint32_t recordSize() const { return recordSize_; }

  // `record` has the bytes of a record and RecordBytes::kPadding readable ones behind it. The message is one that was
  // reset; it is valid afterwards if the record is that of a frame. A message of another bus than CAN raises a failure.
  void parse(const std::uint8_t* record, MdfCanMessage& message) const;

 private:
  enum class TimeKind : std::uint8_t { Unsigned, Signed, Real32, Real64 };
  struct TimeStep {
    MdfNumberField number;
    TimeKind kind = TimeKind::Unsigned;
    std::uint8_t bitCount = 64;
    double factor = 1.0;
    double divisor = 1.0;
  };

  enum class Target : std::uint8_t {
    Bus,
    Id,
    Extended,
    Dlc,
    Length,
    FixedPayload,
    StoredPayload,
    Direction,
    Remote,
    FdFormat,
    BitRateSwitch,
    ErrorState,
    BitPosition,
    ErrorType,
  };
  enum class Source : std::uint8_t { Number, ConvertedNumber, Constant, TableByte, Payload };
  struct Field {
    Target target = Target::Bus;
    Source source = Source::Number;
    BusEventField found = BusEventField::None;
    MdfNumberField number;
    std::uint32_t byteCount = 0;                         // of Source::Payload
    std::uint64_t constant = 0;                          // of Source::Constant
    const ChannelConversionBlock* conversion = nullptr;  // of ConvertedNumber and TableByte
  };
  struct FrameStep {
    BusEventFrameType type = BusEventFrameType::DataFrame;
    std::uint32_t alwaysFound = 0;  // fields of no matter for a message
    std::vector<Field> fields;
    RecordBytes storedPayloads;
  };
  struct Step {
    std::unique_ptr<TimeStep> time;  // one of the two
    std::unique_ptr<FrameStep> frame;
  };

  [[nodiscard]] std::unique_ptr<TimeStep> makeTimeStep(ChannelBlock& channel) const;
  [[nodiscard]] std::unique_ptr<FrameStep> makeFrameStep(ChannelBlock& channel, const std::string& separator) const;
  [[nodiscard]] bool makeField(ChannelBlock& channel, BusEventField name, FrameStep& step) const;
  [[nodiscard]] bool makeNumber(ChannelBlock& channel, Field& field) const;
  [[nodiscard]] bool makePayload(ChannelBlock& channel, Field& field, FrameStep& step) const;
  [[nodiscard]] bool makeErrorField(ChannelBlock& channel, Field& field) const;
  [[nodiscard]] bool fits(std::uint64_t offset, std::uint64_t count) const;

  static bool readTime(const TimeStep& step, const std::uint8_t* record, MdfCanMessage& message);
  static bool readFrame(const FrameStep& step, const std::uint8_t* record, MdfCanMessage& message);
  static bool readField(const Field& field, const FrameStep& step, const std::uint8_t* record, MdfCanMessage& message);
  static bool readValue(const Field& field, const std::uint8_t* record, std::uint64_t& value);
  static void setIdentifier(std::uint32_t rawId, MdfCanMessage& message);
  static void setField(Target target, std::uint64_t value, MdfCanMessage& message);
  static bool readPayload(const Field& field, const FrameStep& step, const std::uint8_t* record,
                          std::vector<std::uint8_t>& payload);
  static bool readStoredPayload(const RecordBytes& stored, std::uint64_t offset, std::vector<std::uint8_t>& payload);

  std::uint32_t recordSize_;
  std::vector<Step> steps_;  // up to the first that is never read
  bool complete_ = false;    // two steps
};

}  // namespace xlatr
