// Reading one cell of a row: the functions that the table of columns names.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <type_traits>

#include "formats/csv/csv_cells.hpp"
#include "formats/csv/csv_message.hpp"
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

}  // namespace csv_read
}  // namespace xlatr
