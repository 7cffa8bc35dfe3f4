// Parses a line of a LIN trace and prints the result in every version. The input is the line. A frame that was
// understood and that a line can show is read again as the same frame.
#include <cstddef>
#include <cstdint>
#include <string>

#include "formats/lin/lin_message.hpp"
#include "target.hpp"

namespace {

using fuzz::require;

constexpr std::uint32_t kShownErrors = 0xFF;

std::string printed(const xlatr::KorlMessage& message, double version) {
  xlatr::TextBuffer out;
  message.appendText(out, version, 7);
  return std::string(out.view());
}

bool canBeShown(const xlatr::KorlMessage& message) {
  return message.direction != xlatr::DirectionType::Unknown && message.checksumType != xlatr::ChecksumType::Unknown &&
         message.id <= 0xFF && message.checksum <= 0xFF && message.errorFlags <= kShownErrors;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // A copy of the exact size, so that a read past the end is seen.
  const std::string line(data, data + size);
  xlatr::KorlMessage message;
  message.parseLine(line);
  require(message.data.size() <= message.length);
  const std::string text = printed(message, 1.2);
  require(text == printed(message, 1.0));
  require(text.empty() == !message.valid);
  if (!message.valid || !canBeShown(message)) {
    return 0;
  }
  xlatr::KorlMessage again;
  again.parseLine(text);
  require(again.valid);
  require(again.timestamp == message.timestamp && again.id == message.id && again.direction == message.direction);
  require(again.checksum == message.checksum && again.checksumType == message.checksumType);
  require(again.length == message.length && again.errorFlags == message.errorFlags);
  require(message.errorFlags != 0 || again.data == message.data);
  return 0;
}
