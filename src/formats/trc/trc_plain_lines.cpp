#include "formats/trc/trc_plain_lines.hpp"

#include <algorithm>
#include <limits>
#include <span>

#include "messages/can_dlc.hpp"
#include "util/plain_fields.hpp"

namespace xlatr {
namespace {

constexpr unsigned kPlainTimeDigits = 6;  // of a millisecond, in nanoseconds
constexpr std::uint32_t kNoId = std::numeric_limits<std::uint32_t>::max();
// The column of a length, or of a DLC.
bool takePlainLength(PlainFields& fields, bool isDlc, PlainFrame& plain) {
  std::uint32_t number = 0;
  if (!fields.takeDecimal(number)) {
    return false;
  }
  if (isDlc && number < kDlcLengths.size()) {
    plain.length = kDlcLengths[number];
    plain.dlc = static_cast<std::uint16_t>(number);
    return true;
  }
  plain.length = number;
  plain.dlc = static_cast<std::uint16_t>(number <= kLongestPlainClassic ? number : lengthToDlc(number));
  return !isDlc && number <= kLongestPlainFrame;
}

bool takeColumns(PlainFields& fields, TrcColumnSet columns, bool xl, PlainFrameBytes& bytes, PlainFrame& plain) {
  const auto has = [columns](TrcColumnSet column) { return (columns & column) != 0; };
  if ((has(trc_column::kNumber) && !fields.skipAny()) || !fields.takeScaled<kPlainTimeDigits>(plain.timeNs) ||
      !takePlainKindWord(fields, plain) || (has(trc_column::kBus) && !takePlainBus(fields, plain)) ||
      !takePlainWideId(fields, plain) || !takePlainDirection(fields, plain) ||
      (has(trc_column::kReserved) && !fields.take("-"))) {
    return false;
  }
  if (xl) {
    // Whatever stands there belongs to CAN XL frames.
    constexpr std::array kOfXl = {trc_column::kVcid, trc_column::kSdt, trc_column::kAcceptance, trc_column::kRrs,
                                  trc_column::kSec};
    for (const TrcColumnSet column : kOfXl) {
      if (has(column) && !fields.skipAny()) {
        return false;
      }
    }
  }
  return takePlainLength(fields, has(trc_column::kDlc), plain) &&
         fields.takeBytes(std::span(bytes).first(plain.length));
}

// The versions without a list of columns. What follows the bytes would be a text.
bool takeFixedColumns(PlainFields& fields, const TrcVersion& version, PlainFrameBytes& bytes, PlainFrame& plain) {
  constexpr double kVersionWithReserved = 1.3;
  if (!fields.skipAny() || !fields.takeScaled<kPlainTimeDigits>(plain.timeNs) ||
      (version.busColumn && !takePlainBus(fields, plain)) || !takePlainDirection(fields, plain) ||
      !takePlainWideId(fields, plain) || plain.id == kNoId ||
      (version.number == kVersionWithReserved && !fields.take("-"))) {
    return false;
  }
  return takePlainLength(fields, false, plain) && plain.length <= kLongestPlainClassic &&
         fields.takeBytes(std::span(bytes).first(plain.length)) && fields.atEnd();
}

}  // namespace

bool takePlainTrcFrame(std::string_view line, const TrcVersion& version, TrcColumnSet columns, PlainFrameBytes& bytes,
                       Frame& frame) {
  constexpr double kFirstVersionWithDirections = 1.1;
  constexpr double kFirstVersionWithXl = 3.0;
  if (version.number < kFirstVersionWithDirections) {
    return false;
  }
  PlainFields fields(line);
  PlainFrame plain;
  const bool taken = version.isColumnBased()
                         ? takeColumns(fields, columns, version.number >= kFirstVersionWithXl, bytes, plain)
                         : takeFixedColumns(fields, version, bytes, plain);
  if (!taken) {
    return false;
  }
  frame.timeNs = plain.timeNs;
  plain.bus = version.busColumn ? plain.bus : 0;
  plain.give(bytes, frame);
  return true;
}

}  // namespace xlatr
