// A message of a TRC trace.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "formats/trc/trc_columns.hpp"
#include "messages/message.hpp"
#include "util/text_buffer.hpp"
#include "util/time_units.hpp"

namespace xlatr {

struct TrcVersion;

// What a CAN XL frame has beyond the others (CiA 610-1).
struct CanXlFields {
  std::optional<std::uint8_t> vcid;         // virtual CAN network id
  std::optional<std::uint8_t> sdt;          // SDU type
  std::optional<std::uint32_t> acceptance;  // acceptance field
  std::optional<std::uint8_t> rrs;          // remote request substitution
  std::optional<std::uint8_t> sec;          // simple extended content

  bool operator==(const CanXlFields&) const = default;
};

// One line of a TRC file of any version. A writer of TRC files turns every other class of message into this one first.
// Bus numbers count from 1; 255 is a line whose bus column holds no number, 0 a line without that column.
class BrixMessage final : public MessageStyleCan {
 public:
  BrixMessage() { bus = 1; }

  // Makes it like a new message, but keeps the storage of its texts and data.
  void reset();

  // Reads a line of a file of this version, after a reset. A line that can't be understood leaves the message not
  // valid, with what was read up to there, and the line as its parsing text; nothing is raised for it. The column set
  // is that of the file's header and counts from version 2.0 on. A null version, which stands for an unknown
  // one, reads nothing.
  void parseLine(std::string_view line, const TrcVersion* version, TrcColumnSet columns);

  // Appends the line of a file of this version, without line end; nothing if the message is not valid or the version
  // is null, which stands for an unknown one. A column set that is not 0 is used instead of the message's own.
  void appendText(TextBuffer& out, const TrcVersion* version, std::uint64_t number, TrcColumnSet columns) const;

  // Whether a file of this version can hold the message; false for an unknown version.
  [[nodiscard]] bool ValidateForTargetVersion(double version) const;
  [[nodiscard]] bool canStandIn(const TrcVersion* version) const;

  RealMilliseconds timeOffset{};  // since the start of the trace
  MessageKind kind = MessageKind::Unknown;
  std::string comment;         // what follows the data on the line, the text of a status, or the text of an event
  std::string parsingText;     // the line as read
  std::int16_t reserved = -1;  // -1 when the line has none
  bool columnBased = false;    // from a file of version 2.0 or above, or from another format
  TrcColumnSet columnSet = kTrcColumns20;
  bool remote = false;
  CanXlFields xl;
};

}  // namespace xlatr
