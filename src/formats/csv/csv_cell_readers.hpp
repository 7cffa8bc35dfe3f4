// Reading one cell of a row: the functions that the table of columns names.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <type_traits>

#include "formats/csv/csv_cells.hpp"
#include "formats/csv/csv_message.hpp"
#include "formats/csv/csv_quotes.hpp"
#include "util/decimal.hpp"
#include "util/numbers.hpp"
#include "util/text.hpp"

namespace xlatr {

// Each reads the cell at a place of the row into its field of the message and returns whether the row goes on. False
// means that the cell is missing or can't be understood, or that the cells after it are not to be read.
namespace csv_read {

template <class Number, class Field>
bool store(std::string_view cell, bool (*parse)(std::string_view, Number&) noexcept, Field& field) {
  // Most cells are a single digit, which every parser of integers reads in the same way.
  if constexpr (!std::is_same_v<Number, bool>) {
    if (cell.size() == 1 && isDecimalDigit(cell.front())) {
      field = static_cast<Field>(cell.front() - '0');
      return true;
    }
  }
  Number value{};
  if (!parse(cell, value)) {
    return false;
  }
  field = value;
  return true;
}

// `kParse` is one of the try forms of numbers.hpp.
template <auto kField, auto kParse>
bool number(CsvCells& cells, std::size_t place, CsvMessage& message) {
  const auto cell = cells.at(place);
  return cell && store(*cell, kParse, message.*kField);
}

// `kParse` is one of the try forms of enumerations.hpp.
template <auto kField, auto kParse>
bool word(CsvCells& cells, std::size_t place, CsvMessage& message) {
  const auto cell = cells.at(place);
  const auto value = cell ? kParse(*cell) : std::nullopt;
  message.*kField = value.value_or(message.*kField);
  return value.has_value();
}

template <auto kField>
bool text(CsvCells& cells, std::size_t place, CsvMessage& message) {
  const auto cell = cells.at(place);
  (message.*kField).assign(cell.value_or(std::string_view()));
  return cell.has_value();
}

inline bool time(CsvCells& cells, std::size_t place, CsvMessage& message) {
  const auto cell = cells.at(place);
  message.time = cell ? RealMilliseconds(parseRealPrefix(*cell).value) : message.time;
  return cell.has_value();
}

// Every digit of the time. One with an exponent, as programs may save it, is as exact as a real number is.
inline bool exactTime(CsvCells& cells, std::size_t place, CsvMessage& message) {
  constexpr unsigned kNanosecondsOfMillisecond = 6;  // as a power of ten
  constexpr double kFarthest = 9e18;
  const auto cell = cells.at(place);
  if (!cell || cell->empty()) {
    return false;
  }
  const auto isOfPlainNumber = [](char character) {
    return isDecimalDigit(character) || character == '.' || character == '-' || character == '+';
  };
  if (countLeading(*cell, isOfPlainNumber) == cell->size()) {
    message.timeNs = scaledDecimal(*cell, kNanosecondsOfMillisecond);
    return message.timeNs.has_value();
  }
  const RealPrefix real = parseRealPrefix(*cell);
  const double nanoseconds = std::round(RealNanoseconds(RealMilliseconds(real.value)).count());
  if (real.consumed != cell->size() || !(std::abs(nanoseconds) <= kFarthest)) {
    return false;
  }
  message.timeNs = static_cast<std::int64_t>(nanoseconds);
  return true;
}

// Hexadecimal, or a dash for none.
template <class Number>
std::optional<Number> hexOrNone(std::string_view cell, bool& understood) {
  std::uint32_t value = 0;
  const bool none = cell.empty() || cell == std::string_view(&kCsvNone, 1);
  understood = none || (tryParseUInt32(cell, value, 16) && value <= std::numeric_limits<Number>::max());
  return none ? std::nullopt : std::optional(static_cast<Number>(value));
}

inline bool reserved(CsvCells& cells, std::size_t place, CsvMessage& message) {
  const auto cell = cells.at(place);
  bool understood = false;
  if (cell) {
    message.reserved = hexOrNone<std::uint16_t>(*cell, understood).value_or(CsvMessage::kNoReserved);
  }
  return understood;
}

template <auto kField, std::uint8_t kBit>
bool xlField(CsvCells& cells, std::size_t place, CsvMessage& message) {
  const auto cell = cells.at(place);
  bool understood = false;
  if (cell) {
    using Field = std::remove_reference_t<decltype(message.*kField)>;
    const auto value = hexOrNone<Field>(*cell, understood);
    message.*kField = value.value_or(0);
    message.missingXlFields = static_cast<std::uint8_t>(message.missingXlFields | (value ? 0 : kBit));
  }
  return understood;
}

// A dash for a remote frame whose length nobody knows.
inline bool wholeLength(CsvCells& cells, std::size_t place, CsvMessage& message) {
  constexpr std::uint32_t kLongest = 2048;  // a CAN XL frame
  const auto cell = cells.at(place);
  message.lengthUnknown = message.remote && cell == std::string_view(&kCsvNone, 1);
  return message.lengthUnknown ||
         (cell && store(*cell, tryParseUInt32Auto, message.length) && message.length <= kLongest);
}

// An extended identifier shows in the width of the cell, not in its value.
inline bool identifier(CsvCells& cells, std::size_t place, CsvMessage& message) {
  constexpr std::size_t kLongestBaseIdentifier = 4;
  const auto cell = cells.at(place);
  message.extended = cell && cell->size() > kLongestBaseIdentifier;
  return cell && tryParseUInt32(*cell, message.id, 16);
}

// Read after the identifier, which counts only together with a kind: keepsWhatItReadOfARowUpToTheFirstBadCell.
inline bool kind(CsvCells& cells, std::size_t place, CsvMessage& message) {
  if (!word<&CsvMessage::kind, tryMessageKindFromText>(cells, place, message)) {
    message.id = kNoIdentifier;
    return false;
  }
  message.remote = message.kind == MessageKind::RR;
  return true;
}

// The last cell that is read of an object that the converter did not understand. Its comment says why.
inline bool channel(CsvCells& cells, std::size_t place, CsvMessage& message) {
  return number<&CsvMessage::channel, tryParseUInt16>(cells, place, message) && message.valid;
}

// Reads as many bytes as the message is long; `next` is then after them.
inline bool bytes(CsvCellCursor& next, CsvMessage& message) {
  constexpr std::size_t kRoom = 70;  // enough for a CAN FD frame
  message.data.reserve(kRoom);
  for (std::uint32_t count = message.length; count > 0; --count) {
    std::uint8_t byte = 0;
    if (!next.takeHexPair(byte)) {
      return false;
    }
    message.data.push_back(byte);
  }
  return true;
}

inline bool data(CsvCells& cells, std::size_t place, CsvMessage& message) {
  CsvCellCursor next = cells.from(place);
  return bytes(next, message);
}

// A text may follow the data. A remote frame has a length and no data cells; the message gets zeros for them.
inline bool dataAndText(CsvCells& cells, std::size_t place, CsvMessage& message) {
  if (message.remote) {
    message.data.assign(message.length, 0);
    return true;
  }
  CsvCellCursor next = cells.from(place);
  if (!bytes(next, message)) {
    return false;
  }
  message.text.assign(next.take());
  return true;
}

// What follows the data is the text, to the end of the row, but for separators with which a program has filled the row
// up. It is quoted if it would not be one cell otherwise.
inline bool dataAndWholeText(CsvCells& cells, std::size_t place, CsvMessage& message) {
  CsvCellCursor next = cells.from(place);
  if (!message.remote && !bytes(next, message)) {
    return false;
  }
  std::string_view rest = trimmed(next.rest(), message.separator);
  message.hasText = !rest.empty();
  if (!rest.starts_with(kCsvQuote)) {
    message.text.assign(rest);
    return true;
  }
  return takeQuoted(rest, message.text) && rest.empty();
}

}  // namespace csv_read
}  // namespace xlatr
