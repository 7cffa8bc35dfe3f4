// Printing one cell of a row: the functions that the table of columns names.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "formats/csv/csv_message.hpp"
#include "util/render.hpp"
#include "util/text_buffer.hpp"

namespace xlatr {

// Each appends the cell of the message's row, which has this number, without a separator after it.
namespace csv_print {

inline void number(TextBuffer& out, const CsvMessage& /*message*/, std::uint64_t rowNumber) {
  appendDecimal(out, rowNumber);
}

inline void time(TextBuffer& out, const CsvMessage& message, std::uint64_t /*rowNumber*/) {
  constexpr int kDecimals = 3;
  constexpr std::int64_t kMicrosecond = 1'000;
  if (message.timeNs) {
    appendUnitsFixed(out, *message.timeNs / kMicrosecond, kDecimals, 0);
    return;
  }
  appendFixed(out, message.time.count(), kDecimals);
}

template <auto kField>
void decimal(TextBuffer& out, const CsvMessage& message, std::uint64_t /*rowNumber*/) {
  appendDecimal(out, message.*kField);
}

// `kToText` is one of those of enumerations.hpp.
template <auto kField, auto kToText>
void word(TextBuffer& out, const CsvMessage& message, std::uint64_t /*rowNumber*/) {
  out.append(kToText(message.*kField));
}

inline void length(TextBuffer& out, const CsvMessage& message, std::uint64_t /*rowNumber*/) {
  if (message.lengthUnknown) {
    out.append(kCsvNone);
  } else {
    appendDecimal(out, message.length);
  }
}

inline void identifier(TextBuffer& out, const CsvMessage& message, std::uint64_t /*rowNumber*/) {
  constexpr std::size_t kBaseDigits = 4;
  constexpr std::size_t kExtendedDigits = 8;
  appendHex(out, message.id, message.extended ? kExtendedDigits : kBaseDigits);
}

inline void reserved(TextBuffer& out, const CsvMessage& message, std::uint64_t /*rowNumber*/) {
  if (message.reserved == CsvMessage::kNoReserved) {
    out.append(kCsvNone);
  } else {
    appendHex(out, message.reserved, 1);
  }
}

// A field that only CAN XL frames have.
template <auto kField, std::size_t kDigits, std::uint8_t kBit>
void xlField(TextBuffer& out, const CsvMessage& message, std::uint64_t /*rowNumber*/) {
  if (message.kind == MessageKind::XL && (message.missingXlFields & kBit) == 0) {
    appendHex(out, message.*kField, kDigits);
  } else {
    out.append(kCsvNone);
  }
}

inline void data(TextBuffer& out, const CsvMessage& message, std::uint64_t /*rowNumber*/) {
  if (message.remote) {
    return;
  }
  const std::size_t count = std::min<std::size_t>(message.data.size(), message.length);
  appendHexBytes(out, std::span(message.data).first(count), message.separator);
}

}  // namespace csv_print
}  // namespace xlatr
