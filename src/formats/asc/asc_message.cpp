#include "formats/asc/asc_message.hpp"

namespace xlatr {

void AscMessage::reset() {
  resetCommonFields(0);
  time = RealSeconds::zero();
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

std::string AscMessage::getStatusText() const {
  return commentText.empty() ? std::string() : commentText + " (Zelkworks)";
}

bool AscMessage::AdjustTime(RealSeconds& reference) {
  if (timestampsMode != AscTimestamps::Relative) {
    return false;
  }
  reference += time;
  time = reference;
  return true;
}

}  // namespace xlatr
