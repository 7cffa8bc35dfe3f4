#include "formats/trc/trc_printer.hpp"

#include <algorithm>
#include <cmath>
#include <span>

#include "formats/trc/trc_message.hpp"
#include "formats/trc/trc_version.hpp"
#include "io/quirk.hpp"
#include "messages/can_dlc.hpp"
#include "util/render.hpp"

namespace xlatr {
namespace {

constexpr std::size_t kBaseIdDigits = 4;
constexpr std::int64_t kNanosecondsPerMillisecond = 1'000'000;
// The bus that a line shows as no number: one that a line without a number gave on the compatible way, where bus 255
// itself is lost by it, and none on the complete way.
constexpr std::uint32_t unnumberedBus(Way way) {
  return way.has(Quirk::TrcBus255IsNone) ? 255 : 0;
}

TrcLine lineOf(const BrixMessage& message, const TrcVersion& version, std::uint64_t number, TrcColumnSet columns,
               Way way) {
  constexpr std::uint32_t kErrorBytes = 4;
  TrcLine line{number, columns, message.id, message.length, message.data, unnumberedBus(way), std::nullopt};
  // The column-based versions keep the kind of an error before its four bytes, the others as the identifier.
  if (message.kind == MessageKind::ER && !version.isColumnBased() && line.length > kErrorBytes && !line.data.empty()) {
    line.id = line.data.front();
    line.data = line.data.subspan(1);
    line.length = kErrorBytes;
  }
  line.data = line.data.first(std::min<std::size_t>(line.data.size(), line.length));
  return line;
}

// A remote frame has no data; the versions with fixed columns say so in a word.
void appendDataOrWord(TextBuffer& out, const BrixMessage& message, const TrcLine& line) {
  if (message.remote) {
    out.append("RTR");
  } else {
    appendHexBytes(out, line.data);
  }
}

void appendDataColumn(TextBuffer& out, const BrixMessage& message, const TrcLine& line) {
  if (!message.remote) {
    appendHexBytes(out, line.data);
  }
}

void appendWholeMilliseconds(TextBuffer& out, const BrixMessage& message, const TrcLine& line) {
  constexpr std::size_t kWidth = 7;
  if (line.timeNs) {
    appendUnitsFixed(out, *line.timeNs / kNanosecondsPerMillisecond, 0, kWidth);
    return;
  }
  const RealMilliseconds time = message.timeOffset;
  out.appendRight(formatFixed(std::trunc(time.count()) + 0.0, 0), kWidth);  // + 0.0 turns -0 into 0
}

// Milliseconds with one or three decimals.
void appendTime(TextBuffer& out, const BrixMessage& message, const TrcLine& line, int decimals, std::size_t width) {
  if (!line.timeNs) {
    appendRoundedFixed(out, message.timeOffset.count(), decimals, width);
    return;
  }
  const std::int64_t unit = decimals == 1 ? kNanosecondsPerMillisecond / 10 : kNanosecondsPerMillisecond / 1'000;
  appendUnitsFixed(out, *line.timeNs / unit, decimals, width);
}

void appendReserved(TextBuffer& out, const BrixMessage& message) {
  const std::size_t begin = out.size();
  if (message.reserved < 0) {
    out.append('-');
  } else {
    appendHex(out, static_cast<std::uint32_t>(message.reserved), 1);
  }
  out.appendBlanks(out.size() - begin < 2 ? 1 : 0);
}

bool hasIdentifier(const BrixMessage& message) {
  return message.kind != MessageKind::ST && message.kind != MessageKind::EC && message.kind != MessageKind::ER;
}

// Number, time and kind, with which all column-based versions begin.
void appendColumnsHead(TextBuffer& out, const BrixMessage& message, const TrcLine& line) {
  if ((line.columns & trc_column::kNumber) != 0) {
    appendDecimalRight(out, line.number, 7);
    out.appendBlanks(1);
  }
  appendTime(out, message, line, 3, 13);
  out.appendBlanks(1);
  out.append(messageKindToText(message.kind));
  out.appendBlanks(1);
}

// A column of CAN XL, with a blank after it; "-" if it is empty.
template <class Value>
void appendXlColumn(TextBuffer& out, const BrixMessage& message, const std::optional<Value>& field,
                    std::size_t digits) {
  if (message.kind == MessageKind::XL && field) {
    appendHex(out, *field, digits);
  } else {
    out.appendLeft("-", digits);
  }
  out.appendBlanks(1);
}

void appendXlColumns(TextBuffer& out, const BrixMessage& message, const TrcLine& line) {
  const auto appendColumn = [&](TrcColumnSet column, const auto& field, std::size_t digits) {
    if ((line.columns & column) != 0) {
      appendXlColumn(out, message, field, digits);
    }
  };
  appendColumn(trc_column::kVcid, message.xl.vcid, 2);
  appendColumn(trc_column::kSdt, message.xl.sdt, 2);
  appendColumn(trc_column::kAcceptance, message.xl.acceptance, 8);
  appendColumn(trc_column::kRrs, message.xl.rrs, 1);
  appendColumn(trc_column::kSec, message.xl.sec, 1);
}

void appendLengthOrDlc(TextBuffer& out, const BrixMessage& message, const TrcLine& line) {
  std::uint32_t length = line.length;
  if ((line.columns & trc_column::kDlc) != 0) {
    length = message.kind == MessageKind::XL ? lengthToXlDlc(length) : lengthToDlc(length);
  }
  appendDecimalLeft(out, length, 4);
}

// How lines of 2.1 and of 3.0 differ.
struct ColumnForm {
  std::size_t baseIdDigits;
  bool xlColumns;
};

void appendColumns(TextBuffer& out, const BrixMessage& message, const TrcLine& line, const ColumnForm& form) {
  appendColumnsHead(out, message, line);
  if ((line.columns & trc_column::kBus) != 0) {
    if (message.bus == line.unnumberedBus) {
      out.append("- ");
    } else {
      appendDecimalLeft(out, message.bus, 2);
    }
    out.appendBlanks(1);
  }
  if (message.kind == MessageKind::EV) {
    out.append(message.comment);
    return;
  }
  if ((line.columns & trc_column::kIdentifier) != 0) {
    if (hasIdentifier(message)) {
      appendTraceId(out, line.id, message.extended, form.baseIdDigits);
    } else {
      out.appendRight("-", 8);
    }
    out.appendBlanks(1);
  }
  if ((line.columns & trc_column::kDirection) != 0) {
    out.appendRight(messageDirectionToText(message.direction), 2);
    out.appendBlanks(1);
  }
  if ((line.columns & trc_column::kReserved) != 0) {
    appendReserved(out, message);
    out.appendBlanks(1);
  }
  if (form.xlColumns) {
    appendXlColumns(out, message, line);
  }
  appendLengthOrDlc(out, message, line);
  out.appendBlanks(1);
  appendDataColumn(out, message, line);
}

}  // namespace

void printTrc10(TextBuffer& out, const BrixMessage& message, const TrcLine& line) {
  appendDecimalRight(out, line.number, 6);
  out.append(")   ");
  appendWholeMilliseconds(out, message, line);
  out.appendBlanks(2);
  appendTraceId(out, line.id, message.extended, kBaseIdDigits);
  out.appendBlanks(2);
  appendDecimal(out, line.length);
  out.appendBlanks(2);
  appendDataOrWord(out, message, line);
  if (message.kind == MessageKind::ST) {
    out.append(" -- -- -- -- ");
    out.append(message.comment);
  }
}

void printTrc11(TextBuffer& out, const BrixMessage& message, const TrcLine& line) {
  appendDecimalRight(out, line.number, 6);
  out.append(")   ");
  appendTime(out, message, line, 1, 9);
  out.appendBlanks(2);
  out.appendLeft(messageTypeToText(message.type), 5);
  out.appendBlanks(2);
  appendTraceId(out, line.id, message.extended, kBaseIdDigits);
  out.appendBlanks(2);
  appendDecimal(out, line.length);
  out.appendBlanks(2);
  appendDataOrWord(out, message, line);
  if (!message.comment.empty()) {
    out.append(' ');
    out.append(message.comment);
  }
}

void printTrc12(TextBuffer& out, const BrixMessage& message, const TrcLine& line) {
  appendDecimalRight(out, line.number, 6);
  out.append(")   ");
  appendTime(out, message, line, 3, 10);
  out.appendBlanks(2);
  appendDecimalLeft(out, message.bus, 2);
  out.appendBlanks(1);
  out.appendLeft(messageTypeToText(message.type), 5);
  out.appendBlanks(2);
  appendTraceId(out, line.id, message.extended, kBaseIdDigits);
  out.appendBlanks(2);
  appendDecimalLeft(out, line.length, 2);
  out.appendBlanks(1);
  appendDataOrWord(out, message, line);
}

void printTrc13(TextBuffer& out, const BrixMessage& message, const TrcLine& line) {
  appendDecimalRight(out, line.number, 7);
  out.append(") ");
  appendTime(out, message, line, 3, 12);
  out.appendBlanks(1);
  appendDecimalLeft(out, message.bus, 2);
  out.appendBlanks(1);
  out.appendLeft(messageTypeToText(message.type), 5);
  out.appendBlanks(1);
  appendTraceId(out, line.id, message.extended, kBaseIdDigits);
  out.appendBlanks(1);
  appendReserved(out, message);
  out.appendBlanks(1);
  appendDecimalLeft(out, line.length, 3);
  out.appendBlanks(2);
  appendDataOrWord(out, message, line);
}

void printTrc20(TextBuffer& out, const BrixMessage& message, const TrcLine& line) {
  appendColumnsHead(out, message, line);
  if (message.kind == MessageKind::EV) {
    out.append(message.comment);
    return;
  }
  const std::string_view direction = messageDirectionToText(message.direction);
  if (message.kind < MessageKind::ST) {
    appendTraceId(out, line.id, message.extended, kBaseIdDigits);
    out.appendBlanks(1);
    out.appendRight(direction, 2);
    out.appendBlanks(1);
    appendDecimalLeft(out, line.length, 2);
  } else {
    out.appendBlanks(9);
    out.append(direction);
    out.appendBlanks(3);
  }
  out.appendBlanks(1);
  appendDataColumn(out, message, line);
}

void printTrc21(TextBuffer& out, const BrixMessage& message, const TrcLine& line) {
  appendColumns(out, message, line, {kBaseIdDigits, false});
}

void printTrc30(TextBuffer& out, const BrixMessage& message, const TrcLine& line) {
  constexpr std::size_t kFewerBaseIdDigits = 3;
  appendColumns(out, message, line, {kFewerBaseIdDigits, true});
}

void appendTrcLine(TextBuffer& out, const BrixMessage& message, const TrcVersion& version, std::uint64_t number,
                   TrcColumnSet columns) {
  version.print(out, message, lineOf(message, version, number, columns, Way::compatible()));
}

void appendTrcFrameLine(TextBuffer& out, const BrixMessage& message, std::int64_t timeNs, const TrcVersion& version,
                        std::uint64_t number) {
  TrcLine line = lineOf(message, version, number, version.columns, Way::complete());
  line.timeNs = timeNs;
  version.print(out, message, line);
}

}  // namespace xlatr
