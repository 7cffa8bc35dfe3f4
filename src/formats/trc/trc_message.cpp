#include "formats/trc/trc_message.hpp"

#include "formats/trc/trc_parser.hpp"
#include "formats/trc/trc_printer.hpp"
#include "formats/trc/trc_version.hpp"

namespace xlatr {

void BrixMessage::reset() {
  resetCommonFields(1);
  timeOffset = RealMilliseconds::zero();
  kind = MessageKind::Unknown;
  comment.clear();
  parsingText.clear();
  reserved = -1;
  columnBased = false;
  columnSet = kTrcColumns20;
  remote = false;
  xl = {};
}

void BrixMessage::parseLine(std::string_view line, const TrcVersion* version, TrcColumnSet columns) {
  columnSet = columns;
  parsingText.assign(line);
  if (version != nullptr) {
    parseTrcLine(parsingText, *version, *this);
  }
}

void BrixMessage::appendText(TextBuffer& out, const TrcVersion* version, std::uint64_t number,
                             TrcColumnSet columns) const {
  if (valid && version != nullptr) {
    appendTrcLine(out, *this, *version, number, columns != 0 ? columns : columnSet);
  }
}

bool BrixMessage::ValidateForTargetVersion(double version) const {
  return canStandIn(findTrcVersion(version));
}

bool BrixMessage::canStandIn(const TrcVersion* version) const {
  return valid && version != nullptr && canStandInTrc(*version, length, type, kind, columnBased);
}

}  // namespace xlatr
