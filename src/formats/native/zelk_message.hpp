// A message of a BTRC trace.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "formats/native/native_record.hpp"
#include "messages/message.hpp"

namespace xlatr {

// How the timestamps of a file become microseconds. Everything is unsigned and modulo 2^64; a divisor beyond that
// leaves nothing.
class TimeScale {
 public:
  TimeScale() = default;
  // A unit of time is ten to the power of the exponent seconds.
  explicit TimeScale(std::int8_t exponent);

  [[nodiscard]] std::uint64_t toMicroseconds(std::uint64_t timestamp) const {
    if (multiply) {
      return timestamp * factor;
    }
    return factor == 0 ? 0 : timestamp / factor;
  }

  bool multiply = true;  // or divide
  std::uint64_t factor = 1;
};

// One record of a BTRC file, or what becomes one: a writer of BTRC files turns every other class into this one first
// (btrc_mapping.hpp). Unlike everywhere else bus numbers count from 0 here.
class ZelkBinaryMessage final : public MessageStyleCan {
 public:
  ZelkBinaryMessage() { bus = 1; }
  // From the record of this type in these bytes: readRecord.
  ZelkBinaryMessage(RecordType typeOfRecord, std::span<const std::uint8_t> bytes, std::int8_t timeScalingExponent);

  // Frames and bus events alone may be written; the valid flag is set for texts as well.
  [[nodiscard]] bool getValid() const override;

  // Back to what a new message is, keeping the storage of its texts and data.
  void reset();

  // Fills the message from a record, after a reset. A record that is no frame leaves it not valid, with its text as
  // commentary where it has one; a record that is too short for its fields says so there. A type that is not the one
  // that the bytes begin with has no content. Raises nothing.
  void readRecord(RecordType typeOfRecord, std::span<const std::uint8_t> bytes, const TimeScale& timeScale);

  using MadeRecord =
      std::variant<std::monostate, Native_RecordCanRxMsg, Native_RecordCanRxRtrMsg, Native_RecordCanRxFdMsg,
                   Native_RecordCanTxMsg, Native_RecordCanTxRtrMsg, Native_RecordCanTxFdMsg, Native_RecordCanError,
                   Native_RecordCanStatus, Native_RecordTextMsg>;
  // Where a record is made of the message's fields; takeRecord then takes its type and its bytes.
  [[nodiscard]] MadeRecord& madeRecord() { return record_; }
  void takeRecord();

  // Moves the time of the record that was made from a message, and its bytes with it. No effect for texts. Raises a
  // ConverterProcessingException for a message that was read from a record.
  void AdjustTimestamp(std::uint64_t delta);

  [[nodiscard]] RecordType GetRecordType() const { return recordType; }
  // The record that was made from a message; null for one that was read.
  [[nodiscard]] const ISerializable* record() const;
  // The bytes as two hexadecimal digits each, joined by blanks.
  [[nodiscard]] std::string getParsingBytesString() const;
  // Whether the message can stand in a TRC file of this version.
  [[nodiscard]] bool ValidateForTargetVersion(double version) const;

  std::uint64_t timestamp = 0;  // microseconds
  MessageKind kind = MessageKind::Unknown;
  bool remote = false;
  std::string commentary;                       // the text form of a record that is no frame
  RecordType recordType = RecordType::Invalid;  // also of a message that has no record type
  std::vector<std::uint8_t> rawBytes;           // the record as read or made

 private:
  [[nodiscard]] bool readContent(const TimeScale& timeScale);
  template <class FrameHeader>
  [[nodiscard]] bool readFrame(const TimeScale& timeScale);
  [[nodiscard]] bool readError(const TimeScale& timeScale);
  [[nodiscard]] bool readStatus(const TimeScale& timeScale);
  template <class Record, class Describe>
  [[nodiscard]] bool readNote(Describe describe);
  void reportShortRecord();
  void updateRawBytes();

  MadeRecord record_;
};

}  // namespace xlatr
