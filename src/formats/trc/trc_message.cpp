#include "formats/trc/trc_message.hpp"

#include "formats/trc/trc_parser.hpp"
#include "formats/trc/trc_printer.hpp"
#include "formats/trc/trc_version.hpp"

namespace xlatr {

void BrixMessage::reset() {
  resetCommonFields(1);
  timeOffset = 0.0;
  kind = MessageKind::Unknown;
  comment.clear();
  parsingText.clear();
  reserved = -1;
  columnBased = false;
  columnSet = kTrcColumns20;
  remote = false;
  xl = {};
}

void BrixMessage::parseLine(std::string_view line, double version, TrcColumnSet columns) {
  columnSet = columns;
  parsingText.assign(line);
  if (const auto known = trcVersion(version)) {
    parseTrcLine(parsingText, *known, *this);
  }
}

void BrixMessage::appendText(TextBuffer& out, double version, std::uint64_t number, TrcColumnSet columns) const {
  const auto known = trcVersion(version);
  if (valid && known) {
    appendTrcLine(out, *this, *known, number, columns != 0 ? columns : columnSet);
  }
}

bool BrixMessage::ValidateForTargetVersion(double version) const {
  return valid && canStandInTrc(version, length, type, kind, columnBased);
}

bool canStandInTrc(double version, std::uint32_t length, MessageType type, MessageKind kind, bool columnBased) {
  const auto known = trcVersion(version);
  if (!known) {
    return false;
  }
  const bool hasType = type != MessageType::Unknown;
  const bool hasTypeOrColumns = hasType || columnBased;
  switch (*known) {
    case TrcVersion::V1_0:
    case TrcVersion::V1_1:
    case TrcVersion::V1_2:
      return length <= 8 && hasType && kind != MessageKind::XL;
    case TrcVersion::V1_3:
      return hasType && kind != MessageKind::XL;
    case TrcVersion::V2_0:
      return hasTypeOrColumns && kind != MessageKind::XL && kind != MessageKind::Unknown &&
             (length <= 8 || kind != MessageKind::DT);
    case TrcVersion::V2_1:
      return hasTypeOrColumns && kind != MessageKind::XL && kind != MessageKind::Unknown;
    case TrcVersion::V3_0:
      return hasTypeOrColumns && kind != MessageKind::Unknown;
  }
  return false;
}

}  // namespace xlatr
