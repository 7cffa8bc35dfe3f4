// How the fields of a bus-logging frame are taken from a record, worked out once for all records of a group.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "formats/mf4/block_channels.hpp"
#include "formats/mf4/mdf_can_message.hpp"
#include "formats/mf4/mdf_number_field.hpp"
#include "formats/mf4/record_bytes.hpp"

namespace xlatr {

// One field of a frame: where its value comes from, and what of the message it is.
struct MdfFrameField {
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

  Target target = Target::Bus;
  Source source = Source::Number;
  BusEventField found = BusEventField::None;
  MdfNumberField number;
  std::uint32_t byteCount = 0;                         // of Source::Payload
  std::uint64_t constant = 0;                          // of Source::Constant
  const ChannelConversionBlock* conversion = nullptr;  // of ConvertedNumber and TableByte
};

// The fields of one kind of frame. The names of the channels are looked at when it is made; a record is then a handful
// of moves.
class MdfFramePlan {
 public:
  // What no CAN frame exceeds: the payload of CAN XL. A longer one in signal data is not read.
  static constexpr std::uint32_t kLongestPayload = 2048;
  // A frame with more channels of known names than this is not read; there are 22 names.
  static constexpr std::size_t kMostFields = 64;

  // The plan for a channel that is named after a frame; null when its records are not read. The conversions of its
  // channels must outlive it. Raises the failures of the blocks, and one for payloads that stand in a stream.
  [[nodiscard]] static std::unique_ptr<MdfFramePlan> make(ChannelBlock& channel, const std::string& separator,
                                                          std::uint32_t recordSize);

  // False for a record that lacks what a frame needs. A message of another bus than CAN raises a failure.
  [[nodiscard]] bool read(const std::uint8_t* record, MdfCanMessage& message) const;

 private:
  explicit MdfFramePlan(std::uint32_t recordSize) : recordSize_(recordSize) {}

  void addField(ChannelBlock& channel, BusEventField name);
  [[nodiscard]] bool makeNumber(ChannelBlock& channel, MdfFrameField& field) const;
  [[nodiscard]] bool makePayload(ChannelBlock& channel, MdfFrameField& field);
  [[nodiscard]] bool makeErrorField(ChannelBlock& channel, MdfFrameField& field) const;
  [[nodiscard]] bool fits(std::uint64_t offset, std::uint64_t count) const { return offset + count <= recordSize_; }

  [[nodiscard]] bool readField(const MdfFrameField& field, const std::uint8_t* record, MdfCanMessage& message) const;
  [[nodiscard]] bool readPayload(const MdfFrameField& field, const std::uint8_t* record,
                                 std::vector<std::uint8_t>& payload) const;

  std::uint32_t recordSize_;
  BusEventFrameType type_ = BusEventFrameType::DataFrame;
  std::uint32_t alwaysFound_ = 0;  // fields of no matter for a message
  std::vector<MdfFrameField> fields_;
  RecordBytes storedPayloads_;
};

// The bit of a field in MdfCanMessage::foundFields.
[[nodiscard]] constexpr std::uint32_t bitOf(BusEventField field) {
  return static_cast<std::uint32_t>(field);
}

}  // namespace xlatr
