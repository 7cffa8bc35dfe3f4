// A message of a BTRC trace.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "formats/native/native_record.hpp"
#include "messages/message.hpp"
#include "util/time_units.hpp"

namespace xlatr {

struct TrcVersion;

// One record of a BTRC file, or what becomes one: a writer of BTRC files turns every other class into this one first
// (btrc_mapping.hpp). Unlike everywhere else bus numbers count from 0 here.
class ZelkBinaryMessage final : public MessageStyleCan {
 public:
  ZelkBinaryMessage() { bus = 1; }

  // Frames and bus events alone may be written; the valid flag is set for texts as well.
  [[nodiscard]] bool getValid() const override;

  // Back to what a new message is, keeping the storage of its texts and data.
  void reset();

  // Fills the message from a record, after a reset. A record that is no frame leaves it not valid, with its text as
  // commentary where it has one; a record that is too short for its fields says so there. A type that is not the one
  // that the bytes begin with has no content. Raises nothing.
  void readRecord(RecordType typeOfRecord, std::span<const std::uint8_t> bytes, const TimeScale& timeScale);

  // Takes the record that was appended to `rawBytes`, made of the fields of a message, for its own.
  void takeMadeRecord();

  // Moves the time of the record that was made from a message, and its bytes with it. No effect for texts. Raises a
  // ConverterProcessingException for a message that was read from a record.
  void AdjustTimestamp(UnsignedMicroseconds delta);

  [[nodiscard]] RecordType GetRecordType() const { return recordType; }
  // The bytes as two hexadecimal digits each, joined by blanks.
  [[nodiscard]] std::string getParsingBytesString() const;
  // Whether the message can stand in a TRC file of this version.
  [[nodiscard]] bool ValidateForTargetVersion(double version) const;
  // The same for a version that was found, or null.
  [[nodiscard]] bool canStandIn(const TrcVersion* version) const;

  UnsignedMicroseconds timestamp{};
  MessageKind kind = MessageKind::Unknown;
  bool remote = false;
  std::string commentary;                       // the text form of a record that is no frame
  RecordType recordType = RecordType::Invalid;  // also of a message that has no record type
  std::vector<std::uint8_t> rawBytes;           // the record as read or made

 private:
  bool isMade_ = false;  // the record was made from a message
};

}  // namespace xlatr
