// The messages of a BLF log, as the rows of the external converter hold them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "formats/csv/csv_message.hpp"
#include "messages/message.hpp"
#include "util/time_units.hpp"

namespace xlatr {

// One object of a log. The meaning of the numbers in its row depends on the object's type; the two classes below
// interpret them.
class BlfMessage : public MessageStyleCan, public BlfObjectFields {
 public:
  // Whether objects of this type belong to a CAN bus; all others count as those of a LIN bus.
  [[nodiscard]] static bool isCanType(std::uint32_t objectType);

  [[nodiscard]] bool isBlfCANType() const { return isCanType(objectType); }
  // What a trace that has no form for the message says about it: its type and, if it is not valid, the row's comment.
  [[nodiscard]] std::string getAsCommentary() const;
  // Since the start of the log.
  [[nodiscard]] RealMicroseconds microseconds() const;
  [[nodiscard]] RealMilliseconds milliseconds() const;

  std::string comment;  // why the row is not valid

 protected:
  // Takes over what the row says, whatever the type. The comment is swapped, so that a row that is reused gives away
  // its storage and gets that of the message.
  void takeRow(CsvMessage& row);
};

class BlfCanMessage final : public BlfMessage {
 public:
  BlfCanMessage() = default;
  explicit BlfCanMessage(CsvMessage& row) { assign(row); }

  // Becomes the message of a row, whose comment and data it takes.
  void assign(CsvMessage& row);

  [[nodiscard]] MessageKind kind() const;

  bool remote = false;
  std::uint8_t errorByte = 0;  // the ECC of an error frame
  bool fdFormat = false;       // EDL: the frame itself is one of CAN FD
  bool bitRateSwitch = false;
  bool errorStateIndicator = false;
  bool isFd = false;  // the object's type is one for CAN FD, which can also hold classic frames

 private:
  void takeFrame(unsigned remoteBit, std::uint32_t fdBits);
};

class BlfLinMessage final : public BlfMessage {
 public:
  BlfLinMessage() = default;
  explicit BlfLinMessage(CsvMessage& row) { assign(row); }

  // Becomes the message of a row, whose comment it takes, and whose data if the type has any.
  void assign(CsvMessage& row);

  MessageKind kind = MessageKind::Unknown;  // DT, ER or EV
  std::string_view eventText;               // of an EV; lives forever
  std::uint32_t errorFlags = 0;             // of ErrorCode
  DirectionType linDirection = DirectionType::Unknown;
  std::uint32_t checksum = 0;
  ChecksumType checksumType = ChecksumType::Unknown;
};

// The message of a row, of the class that its object type asks for.
[[nodiscard]] std::unique_ptr<BlfMessage> makeBlfMessage(CsvMessage& row);

}  // namespace xlatr
