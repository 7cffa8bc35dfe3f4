// Parses a line of an ASC log and prints the result, directly and after a detour through TRC. The first byte chooses
// the file's version and base, the rest of the input is the line.
#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "formats/asc/asc_mapping.hpp"
#include "formats/asc/asc_message.hpp"
#include "formats/trc/trc_mapping.hpp"
#include "formats/trc/trc_version.hpp"
#include "target.hpp"
#include "util/text_buffer.hpp"

namespace {

using fuzz::require;

constexpr std::array<double, 8> kVersions{0.0, 7.0, 7.5, 8.1, 8.5, 15.0, 5.0, -1.0};

std::string textOf(const xlatr::AscMessage& message, bool version8) {
  xlatr::TextBuffer out;
  if (version8) {
    message.toText8(out);
  } else {
    message.toText7(out);
  }
  return std::string(out.view());
}

// A frame that was printed is read as the same frame.
void checkFrame(const xlatr::AscMessage& message, bool version8) {
  const std::string text = textOf(message, version8);
  const bool isFrame = message.type == xlatr::MessageType::Rx || message.type == xlatr::MessageType::Tx;
  constexpr double kLargestPlainTime = 1e9;
  if (text.empty() || !isFrame || !(message.time.count() >= 0.0 && message.time.count() < kLargestPlainTime) ||
      message.bus > 255) {
    return;
  }
  xlatr::AscMessage again;
  again.parseLine(text, version8 ? 8.1 : 7.0);
  require(again.valid);
  require(again.id == message.id && again.extended == message.extended && again.bus == message.bus);
  require(again.isRemote() == message.isRemote() && again.data == message.data);
}

void checkMessage(const xlatr::AscMessage& message) {
  xlatr::TextBuffer out;
  message.toText7(out);
  message.toText8(out);
  static_cast<void>(message.getStatusText());
  require(message.getErrorCounterBits().size() == 8);

  xlatr::BrixMessage mapped;
  xlatr::mapToTrc(message, mapped);
  require(mapped.valid == message.valid);
  for (const double version : {1.0, 1.1, 1.2, 1.3, 2.0, 2.1, 3.0}) {
    out.clear();
    mapped.appendText(out, xlatr::findTrcVersion(version), 1, 0);
    require(out.empty() != message.valid);
  }
  xlatr::AscMessage back;
  xlatr::mapToAsc(mapped, back);
  checkFrame(back, false);
  checkFrame(back, true);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  // A copy of the exact size, so that a read past the end is seen.
  const std::string line(data + 1, data + size);
  xlatr::AscMessage message;
  message.hexBase = (data[0] & 8) == 0;
  try {
    message.parseLine(line, kVersions[data[0] & 7]);
  } catch (const std::out_of_range& failure) {
    require(std::string_view(failure.what()) == "invalid vector subscript");
    return 0;
  }
  require(message.parsingText == line);
  require(message.data.size() <= 255);
  if (message.valid) {
    checkMessage(message);
  }
  return 0;
}
