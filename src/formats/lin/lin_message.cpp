#include "formats/lin/lin_message.hpp"

#include "formats/lin/lin_parser.hpp"
#include "formats/lin/lin_printer.hpp"

namespace xlatr {

void KorlMessage::reset() {
  resetCommonFields();
  direction = DirectionType::Unknown;
  checksum = 0;
  checksumType = ChecksumType::Unknown;
  timestamp = 0;
  errorFlags = 0;
  parsingText.clear();
  busEvent = false;
}

void KorlMessage::parseLine(std::string_view line) {
  parsingText.assign(line);
  parseLinLine(parsingText, *this);
}

void KorlMessage::appendText(TextBuffer& out, double version, std::uint64_t number) const {
  if (valid) {
    appendLinLine(out, *this, version, number);
  }
}

}  // namespace xlatr
