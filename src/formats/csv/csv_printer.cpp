#include "formats/csv/csv_printer.hpp"

#include <algorithm>
#include <span>
#include <string_view>

#include "util/render.hpp"

namespace xlatr {
namespace {

constexpr int kTimeDecimals = 3;
constexpr std::size_t kBaseIdDigits = 4;
constexpr std::size_t kExtendedIdDigits = 8;
constexpr std::string_view kNone = "-";

void appendReserved(TextBuffer& out, const CsvMessage& message) {
  if (message.reserved == CsvMessage::kNoReserved) {
    out.append(kNone);
  } else {
    appendHex(out, message.reserved, 1);
  }
  out.append(message.separator);
}

void appendXlColumns(TextBuffer& out, const CsvMessage& message) {
  const auto append = [&](std::uint32_t value, std::size_t digits) {
    if (message.kind == MessageKind::XL) {
      appendHex(out, value, digits);
    } else {
      out.append(kNone);
    }
    out.append(message.separator);
  };
  append(message.vcid, 2);
  append(message.sdt, 2);
  append(message.af, 8);
  append(message.rrs, 1);
  append(message.sec, 1);
}

void appendData(TextBuffer& out, const CsvMessage& message) {
  if (message.remote) {
    return;
  }
  const std::span<const std::uint8_t> bytes(message.data.data(),
                                            std::min<std::size_t>(message.data.size(), message.length));
  appendHexBytes(out, bytes, message.separator);
}

}  // namespace

void appendCsvRow(TextBuffer& out, const CsvMessage& message, std::uint64_t number) {
  const std::string_view separator = message.separator;
  appendDecimal(out, number);
  out.append(separator);
  appendFixed(out, message.time, kTimeDecimals);
  out.append(separator);
  appendDecimal(out, message.bus);
  out.append(separator);
  out.append(messageDirectionToText(message.direction));
  out.append(separator);
  out.append(messageKindToText(message.kind));
  out.append(separator);
  appendHex(out, message.id, message.extended ? kExtendedIdDigits : kBaseIdDigits);
  out.append(separator);
  appendReserved(out, message);
  if (message.wideRow) {
    appendXlColumns(out, message);
  }
  appendDecimal(out, message.length);
  out.append(separator);
  appendData(out, message);
}

}  // namespace xlatr
