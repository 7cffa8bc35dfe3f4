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
constexpr std::uint32_t kLongestClassicFrame = 8;

using PlainBytes = std::array<std::uint8_t, kLongestPlainTrcFrame>;

// What both kinds of versions tell of a frame.
struct PlainTrcFrame {
  std::int64_t timeNs = 0;
  std::uint32_t bus = 0;
  std::uint32_t id = 0;
  std::uint32_t length = 0;
  std::uint16_t flags = 0;
  std::uint16_t dlc = 0;
};

struct KindWord {
  std::string_view word;
  std::uint16_t flags;
};

constexpr std::array kKindWords = {
    KindWord{"DT", 0},
    KindWord{"FB", frame_flag::kFd | frame_flag::kBrs},
    KindWord{"FD", frame_flag::kFd},
    KindWord{"BI", frame_flag::kFd | frame_flag::kBrs | frame_flag::kEsi},
    KindWord{"FE", frame_flag::kFd | frame_flag::kEsi},
};

bool takeKindWord(PlainFields& fields, PlainTrcFrame& plain) {
  const auto* const kind =
      std::ranges::find_if(kKindWords, [&fields](const KindWord& each) { return fields.take(each.word); });
  if (kind == kKindWords.end()) {
    return false;
  }
  plain.flags = kind->flags;
  return true;
}

bool takePlainDirection(PlainFields& fields, PlainTrcFrame& plain) {
  if (fields.take("Rx")) {
    plain.flags |= frame_flag::kReceived;
    return true;
  }
  plain.flags |= frame_flag::kTransmitted;
  return fields.take("Tx");
}

bool takePlainBus(PlainFields& fields, PlainTrcFrame& plain) {
  return fields.takeDecimal(plain.bus) && plain.bus <= std::numeric_limits<std::uint16_t>::max();
}

// What has more than four digits is extended.
bool takePlainId(PlainFields& fields, PlainTrcFrame& plain) {
  constexpr std::size_t kLongestBaseId = 4;
  std::size_t digits = 0;
  bool marked = false;
  const bool taken = fields.takeHex(plain.id, digits, marked) && !marked;
  plain.flags |= digits > kLongestBaseId ? frame_flag::kExtended : std::uint16_t{0};
  return taken;
}

// The column of a length, or of a DLC.
bool takePlainLength(PlainFields& fields, bool isDlc, PlainTrcFrame& plain) {
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
  plain.dlc = static_cast<std::uint16_t>(number <= kLongestClassicFrame ? number : lengthToDlc(number));
  return !isDlc && number <= kLongestPlainTrcFrame;
}

bool takeColumns(PlainFields& fields, TrcColumnSet columns, bool xl, PlainBytes& bytes, PlainTrcFrame& plain) {
  const auto has = [columns](TrcColumnSet column) { return (columns & column) != 0; };
  if ((has(trc_column::kNumber) && !fields.skipAny()) || !fields.takeScaled<kPlainTimeDigits>(plain.timeNs) ||
      !takeKindWord(fields, plain) || (has(trc_column::kBus) && !takePlainBus(fields, plain)) ||
      !takePlainId(fields, plain) || !takePlainDirection(fields, plain) ||
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
bool takeFixedColumns(PlainFields& fields, const TrcVersion& version, PlainBytes& bytes, PlainTrcFrame& plain) {
  constexpr double kVersionWithReserved = 1.3;
  if (!fields.skipAny() || !fields.takeScaled<kPlainTimeDigits>(plain.timeNs) ||
      (version.busColumn && !takePlainBus(fields, plain)) || !takePlainDirection(fields, plain) ||
      !takePlainId(fields, plain) || plain.id == kNoId ||
      (version.number == kVersionWithReserved && !fields.take("-"))) {
    return false;
  }
  return takePlainLength(fields, false, plain) && plain.length <= kLongestClassicFrame &&
         fields.takeBytes(std::span(bytes).first(plain.length)) && fields.atEnd();
}

}  // namespace

bool takePlainTrcFrame(std::string_view line, const TrcVersion& version, TrcColumnSet columns,
                       std::array<std::uint8_t, kLongestPlainTrcFrame>& bytes, Frame& frame) {
  constexpr double kFirstVersionWithDirections = 1.1;
  constexpr double kFirstVersionWithXl = 3.0;
  if (version.number < kFirstVersionWithDirections) {
    return false;
  }
  PlainFields fields(line);
  PlainTrcFrame plain;
  const bool taken = version.isColumnBased()
                         ? takeColumns(fields, columns, version.number >= kFirstVersionWithXl, bytes, plain)
                         : takeFixedColumns(fields, version, bytes, plain);
  if (!taken) {
    return false;
  }
  frame.timeNs = plain.timeNs;
  frame.bus = version.busColumn ? static_cast<std::uint16_t>(plain.bus) : std::uint16_t{0};
  frame.id = plain.id;
  frame.flags = plain.flags;
  frame.dlc = plain.dlc;
  frame.data = std::span(bytes).first(plain.length);
  return true;
}

}  // namespace xlatr
