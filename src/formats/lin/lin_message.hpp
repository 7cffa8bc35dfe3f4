// A message of a LIN trace.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "messages/message.hpp"
#include "util/text_buffer.hpp"

namespace xlatr {

// One line of a LIN trace of any version, and what becomes one. It has no bus: a trace is of one.
class KorlMessage final : public Message {
 public:
  // Back to what a new message is, keeping the storage of its text and data.
  void reset();

  // Reads a line, after a reset. A line that can't be understood, as that of a bus event, leaves the message not valid,
  // with what was read up to there, and the line as its parsing text; nothing is raised for it.
  void parseLine(std::string_view line);

  // Appends the line of a file of this version, without line end; nothing when the message is not valid.
  void appendText(TextBuffer& out, double version, std::uint64_t number) const;

  DirectionType direction = DirectionType::Unknown;
  std::uint32_t checksum = 0;
  ChecksumType checksumType = ChecksumType::Unknown;
  std::uint64_t timestamp = 0;   // microseconds since the start of the trace
  std::uint32_t errorFlags = 0;  // of ErrorCode
  std::string parsingText;       // the line as read
  bool busEvent = false;         // the data are the text of a bus event
};

// The direction of a LIN frame as that of a CAN message: who publishes sends.
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

// The longest frame of a LIN bus. Readers hand out longer ones, which other formats do not take.
inline constexpr std::uint32_t kMaxLinLength = 8;

}  // namespace xlatr
