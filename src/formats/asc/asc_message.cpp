#include "formats/asc/asc_message.hpp"

#include "formats/asc/asc_parser.hpp"
#include "formats/asc/asc_printer.hpp"

namespace xlatr {

void AscMessage::reset() {
  resetCommonFields(0);
  time = 0.0;
  parsingText.clear();
  commentText.clear();
  fileVersion = 0.0;
  frameClass = AscFrameClass::None;
  lineKind = AscLineKind::Unclassified;
  flags = 0;
  hexBase = true;
  timestampsMode = AscTimestamps::Absolute;
  symbolicId = false;
  errorCode = 0;
  txErrors = 0;
  rxErrors = 0;
  textVersion8 = false;
}

void AscMessage::parseLine(std::string_view line, double version) {
  if (line.empty()) {
    return;
  }
  parsingText.assign(line);
  fileVersion = version;
  parseAscLine(parsingText, version, *this);
}

void AscMessage::toText7(TextBuffer& out) const {
  appendAscLine7(out, *this);
}

void AscMessage::toText8(TextBuffer& out) const {
  appendAscLine8(out, *this);
}

std::string AscMessage::getStatusText() const {
  return commentText.empty() ? std::string() : commentText + " (Zelkworks)";
}

std::string AscMessage::getErrorCounterBits() const {
  TextBuffer bits;
  appendAscErrorBits(bits, *this);
  return std::string(bits.view());
}

bool AscMessage::AdjustTime(double& reference) {
  if (timestampsMode != AscTimestamps::Relative) {
    return false;
  }
  reference += time;
  time = reference;
  return true;
}

}  // namespace xlatr
