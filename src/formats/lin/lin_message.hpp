// A message of a LIN trace.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "io/quirk.hpp"
#include "messages/message.hpp"
#include "util/text_buffer.hpp"
#include "util/time_units.hpp"

namespace xlatr {

// One line of a LIN trace of any version, and what becomes one. It has no bus: a trace has only one.
class KorlMessage final : public Message {
 public:
  // Makes the message as new, but keeps the storage of its text and data.
  void reset();

  // Reads a line, after a reset. A line that can't be understood, such as that of a bus event on the compatible way,
  // leaves the message not valid, with what was read so far and the line as its parsing text; nothing is raised for it.
  void parseLine(std::string_view line, Way way = Way::compatible());

  // Appends the line of a file of this version, without line end; nothing if the message is not valid. A bus event is a
  // comment below version 1.2, which has none.
  void appendText(TextBuffer& out, double version, std::uint64_t number, Way way = Way::compatible()) const;

  DirectionType direction = DirectionType::Unknown;
  std::uint32_t checksum = 0;
  ChecksumType checksumType = ChecksumType::Unknown;
  UnsignedMicroseconds timestamp{};  // since the start of the trace
  std::uint32_t errorFlags = 0;      // of ErrorCode
  std::string parsingText;           // the line as read
  bool busEvent = false;             // the data are the text of a bus event
};

// The direction of a LIN frame as that of a CAN message: a publisher sends.
[[nodiscard]] constexpr MessageDirection messageDirectionOf(DirectionType direction) {
  switch (direction) {
    case DirectionType::Publisher:
      return MessageDirection::Tx;
    case DirectionType::Subscriber:
    case DirectionType::SubscriberAutoLength:
      return MessageDirection::Rx;
    default:
      return MessageDirection::None;
  }
}

// The longest frame of a LIN bus. Readers return longer ones too, which other formats do not take.
inline constexpr std::uint32_t kMaxLinLength = 8;

}  // namespace xlatr
