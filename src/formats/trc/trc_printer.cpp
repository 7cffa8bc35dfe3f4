#include "formats/trc/trc_printer.hpp"

#include <algorithm>
#include <cmath>
#include <span>

#include "messages/can_dlc.hpp"
#include "util/render.hpp"

namespace xlatr {
namespace {

constexpr std::size_t kBaseIdDigits = 4;
constexpr std::size_t kBaseIdDigits30 = 3;
constexpr std::uint32_t kUnnumberedBus = 255;

// What of a message all columns of a line agree on.
struct LineContent {
  std::uint32_t id;
  std::uint32_t length;
  std::span<const std::uint8_t> data;  // at most `length` bytes
};

LineContent contentOf(const BrixMessage& message, TrcVersion version) {
  constexpr std::uint32_t kErrorBytes = 4;
  LineContent content{message.id, message.length, message.data};
  // The column-based versions keep the kind of an error in front of its four bytes, the others as the identifier.
  if (message.kind == MessageKind::ER && !isColumnBased(version) && content.length > kErrorBytes &&
      !content.data.empty()) {
    content.id = content.data.front();
    content.data = content.data.subspan(1);
    content.length = kErrorBytes;
  }
  content.data = content.data.first(std::min<std::size_t>(content.data.size(), content.length));
  return content;
}

void appendData(TextBuffer& out, const BrixMessage& message, TrcVersion version, const LineContent& content) {
  if (!message.remote) {
    appendHexBytes(out, content.data);
  } else if (!isColumnBased(version)) {
    out.append("RTR");
  }
}

void appendWholeMilliseconds(TextBuffer& out, double milliseconds) {
  constexpr std::size_t kWidth = 7;
  out.appendRight(formatFixed(std::trunc(milliseconds) + 0.0, 0), kWidth);  // + 0.0 makes of -0 a 0
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

void appendLine10(TextBuffer& out, const BrixMessage& message, std::uint64_t number, const LineContent& content) {
  appendDecimalRight(out, number, 6);
  out.append(")   ");
  appendWholeMilliseconds(out, message.timeOffset);
  out.appendBlanks(2);
  appendTraceId(out, content.id, message.extended, kBaseIdDigits);
  out.appendBlanks(2);
  appendDecimal(out, content.length);
  out.appendBlanks(2);
  appendData(out, message, TrcVersion::V1_0, content);
  if (message.kind == MessageKind::ST) {
    out.append(" -- -- -- -- ");
    out.append(message.comment);
  }
}

void appendLine11(TextBuffer& out, const BrixMessage& message, std::uint64_t number, const LineContent& content) {
  appendDecimalRight(out, number, 6);
  out.append(")   ");
  appendRoundedFixed(out, message.timeOffset, 1, 9);
  out.appendBlanks(2);
  out.appendLeft(messageTypeToText(message.type), 5);
  out.appendBlanks(2);
  appendTraceId(out, content.id, message.extended, kBaseIdDigits);
  out.appendBlanks(2);
  appendDecimal(out, content.length);
  out.appendBlanks(2);
  appendData(out, message, TrcVersion::V1_1, content);
  if (!message.comment.empty()) {
    out.append(' ');
    out.append(message.comment);
  }
}

void appendLine12(TextBuffer& out, const BrixMessage& message, std::uint64_t number, const LineContent& content) {
  appendDecimalRight(out, number, 6);
  out.append(")   ");
  appendRoundedFixed(out, message.timeOffset, 3, 10);
  out.appendBlanks(2);
  appendDecimalLeft(out, message.bus, 2);
  out.appendBlanks(1);
  out.appendLeft(messageTypeToText(message.type), 5);
  out.appendBlanks(2);
  appendTraceId(out, content.id, message.extended, kBaseIdDigits);
  out.appendBlanks(2);
  appendDecimalLeft(out, content.length, 2);
  out.appendBlanks(1);
  appendData(out, message, TrcVersion::V1_2, content);
}

void appendLine13(TextBuffer& out, const BrixMessage& message, std::uint64_t number, const LineContent& content) {
  appendDecimalRight(out, number, 7);
  out.append(") ");
  appendRoundedFixed(out, message.timeOffset, 3, 12);
  out.appendBlanks(1);
  appendDecimalLeft(out, message.bus, 2);
  out.appendBlanks(1);
  out.appendLeft(messageTypeToText(message.type), 5);
  out.appendBlanks(1);
  appendTraceId(out, content.id, message.extended, kBaseIdDigits);
  out.appendBlanks(1);
  appendReserved(out, message);
  out.appendBlanks(1);
  appendDecimalLeft(out, content.length, 3);
  out.appendBlanks(2);
  appendData(out, message, TrcVersion::V1_3, content);
}

bool hasIdentifier(const BrixMessage& message) {
  return message.kind != MessageKind::ST && message.kind != MessageKind::EC && message.kind != MessageKind::ER;
}

// Number, time and kind, which all column-based versions begin with.
void appendColumnsHead(TextBuffer& out, const BrixMessage& message, std::uint64_t number, TrcColumnSet columns) {
  if ((columns & trc_column::kNumber) != 0) {
    appendDecimalRight(out, number, 7);
    out.appendBlanks(1);
  }
  appendRoundedFixed(out, message.timeOffset, 3, 13);
  out.appendBlanks(1);
  out.append(messageKindToText(message.kind));
  out.appendBlanks(1);
}

void appendLine20(TextBuffer& out, const BrixMessage& message, std::uint64_t number, TrcColumnSet columns,
                  const LineContent& content) {
  appendColumnsHead(out, message, number, columns);
  if (message.kind == MessageKind::EV) {
    out.append(message.comment);
    return;
  }
  const std::string_view direction = messageDirectionToText(message.direction);
  if (message.kind < MessageKind::ST) {
    appendTraceId(out, content.id, message.extended, kBaseIdDigits);
    out.appendBlanks(1);
    out.appendRight(direction, 2);
    out.appendBlanks(1);
    appendDecimalLeft(out, content.length, 2);
  } else {
    out.appendBlanks(9);
    out.append(direction);
    out.appendBlanks(3);
  }
  out.appendBlanks(1);
  appendData(out, message, TrcVersion::V2_0, content);
}

// A column of CAN XL, with the blank behind it; "-" where there is nothing to say.
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

void appendXlColumns(TextBuffer& out, const BrixMessage& message, TrcColumnSet columns) {
  const auto appendColumn = [&](TrcColumnSet column, const auto& field, std::size_t digits) {
    if ((columns & column) != 0) {
      appendXlColumn(out, message, field, digits);
    }
  };
  appendColumn(trc_column::kVcid, message.xl.vcid, 2);
  appendColumn(trc_column::kSdt, message.xl.sdt, 2);
  appendColumn(trc_column::kAcceptance, message.xl.acceptance, 8);
  appendColumn(trc_column::kRrs, message.xl.rrs, 1);
  appendColumn(trc_column::kSec, message.xl.sec, 1);
}

void appendLengthOrDlc(TextBuffer& out, const BrixMessage& message, TrcColumnSet columns, std::uint32_t length) {
  if ((columns & trc_column::kDlc) != 0) {
    length = message.kind == MessageKind::XL ? lengthToXlDlc(length) : lengthToDlc(length);
  }
  appendDecimalLeft(out, length, 4);
}

// 2.1 and 3.0.
void appendLine21(TextBuffer& out, const BrixMessage& message, TrcVersion version, std::uint64_t number,
                  TrcColumnSet columns, const LineContent& content) {
  appendColumnsHead(out, message, number, columns);
  if ((columns & trc_column::kBus) != 0) {
    if (message.bus == kUnnumberedBus) {
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
  if ((columns & trc_column::kIdentifier) != 0) {
    if (hasIdentifier(message)) {
      appendTraceId(out, content.id, message.extended, version == TrcVersion::V3_0 ? kBaseIdDigits30 : kBaseIdDigits);
    } else {
      out.appendRight("-", 8);
    }
    out.appendBlanks(1);
  }
  if ((columns & trc_column::kDirection) != 0) {
    out.appendRight(messageDirectionToText(message.direction), 2);
    out.appendBlanks(1);
  }
  if ((columns & trc_column::kReserved) != 0) {
    appendReserved(out, message);
    out.appendBlanks(1);
  }
  if (version == TrcVersion::V3_0) {
    appendXlColumns(out, message, columns);
  }
  appendLengthOrDlc(out, message, columns, content.length);
  out.appendBlanks(1);
  appendData(out, message, version, content);
}

}  // namespace

void appendTrcLine(TextBuffer& out, const BrixMessage& message, TrcVersion version, std::uint64_t number,
                   TrcColumnSet columns) {
  const LineContent content = contentOf(message, version);
  switch (version) {
    case TrcVersion::V1_0:
      return appendLine10(out, message, number, content);
    case TrcVersion::V1_1:
      return appendLine11(out, message, number, content);
    case TrcVersion::V1_2:
      return appendLine12(out, message, number, content);
    case TrcVersion::V1_3:
      return appendLine13(out, message, number, content);
    case TrcVersion::V2_0:
      return appendLine20(out, message, number, columns, content);
    case TrcVersion::V2_1:
    case TrcVersion::V3_0:
      return appendLine21(out, message, version, number, columns, content);
  }
}

}  // namespace xlatr
