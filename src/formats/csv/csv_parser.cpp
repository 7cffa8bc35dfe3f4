#include "formats/csv/csv_parser.hpp"

#include <type_traits>

#include "formats/csv/csv_cells.hpp"
#include "util/numbers.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

// Enough for a CAN FD frame.
constexpr std::size_t kDataRoom = 70;

// A row and the message that it fills. Each member answers false at the first cell that is missing or can't be
// understood.
class RowParser {
 public:
  RowParser(std::string_view row, CsvMessage& message) : cells_(row, message.separator), message_(message) {}

  bool parseOwnRow();
  bool parseConverterRow();

 private:
  // Hands the cell of a column to `parse`, one of the try forms, and stores what that makes of it.
  template <class Number, class Field>
  bool number(CsvColumn column, bool (*parse)(std::string_view, Number&) noexcept, Field& field) {
    const auto cell = cellOf(column);
    // Most cells are a single digit, which every parser of integers reads in the same way.
    if constexpr (!std::is_same_v<Number, bool>) {
      if (cell && cell->size() == 1 && isDecimalDigit(cell->front())) {
        field = static_cast<Field>(cell->front() - '0');
        return true;
      }
    }
    Number value{};
    if (!cell || !parse(*cell, value)) {
      return false;
    }
    field = value;
    return true;
  }
  // The same for one of the enumerations.
  template <class Enum>
  bool word(CsvColumn column, std::optional<Enum> (*parse)(std::string_view) noexcept, Enum& field) {
    const auto cell = cellOf(column);
    const auto value = cell ? parse(*cell) : std::nullopt;
    field = value.value_or(field);
    return value.has_value();
  }
  bool text(CsvColumn column, std::string& field) {
    const auto cell = cellOf(column);
    field.assign(cell.value_or(std::string_view()));
    return cell.has_value();
  }

  bool time() {
    const auto cell = cellOf(CsvColumn::Time);
    message_.time = cell ? parseRealPrefix(*cell).value : message_.time;
    return cell.has_value();
  }
  // The width of the cell tells an extended identifier, and not its value.
  bool identifier(std::uint32_t& id) {
    constexpr std::size_t kLongestBaseIdentifier = 4;
    const auto cell = cellOf(CsvColumn::Identifier);
    message_.extended = cell && cell->size() > kLongestBaseIdentifier;
    return cell && tryParseUInt32(*cell, id, 16);
  }
  // Reads as many bytes as the message is long; `next` is then behind them.
  bool data(CsvCellCursor& next) {
    message_.data.reserve(kDataRoom);
    for (std::uint32_t count = message_.length; count > 0; --count) {
      std::uint8_t byte = 0;
      if (!next.takeHexPair(byte)) {
        return false;
      }
      message_.data.push_back(byte);
    }
    return true;
  }

  [[nodiscard]] std::optional<std::string_view> cellOf(CsvColumn column) {
    return cells_.at(message_.columns.place(column));
  }

  CsvCells cells_;
  CsvMessage& message_;
};

bool RowParser::parseOwnRow() {
  std::uint32_t id = 0;
  if (!time() || !number(CsvColumn::Bus, tryParseByteAuto, message_.bus) ||
      !word(CsvColumn::Direction, tryMessageDirectionFromText, message_.direction) || !identifier(id) ||
      !word(CsvColumn::Type, tryMessageKindFromText, message_.kind)) {
    return false;
  }
  message_.id = id;
  if (!number(CsvColumn::Length, tryParseByteAuto, message_.length)) {
    return false;
  }
  message_.remote = message_.kind == MessageKind::RR;
  if (message_.remote) {
    message_.data.assign(message_.length, 0);
    return true;
  }
  CsvCellCursor next = cells_.from(message_.columns.place(CsvColumn::Data0));
  if (!data(next)) {
    return false;
  }
  message_.text.assign(next.take());
  return true;
}

bool RowParser::parseConverterRow() {
  if (!number(CsvColumn::ObjectType, tryParseUInt32Auto, message_.objectType) ||
      !number(CsvColumn::ObjectTimestamp, tryParseUInt64, message_.objectTimestamp) ||
      !number(CsvColumn::Valid, tryParseBool, message_.valid) || !text(CsvColumn::Comment, message_.comment) ||
      !number(CsvColumn::Id, tryParseUInt32Auto, message_.blfId) ||
      !number(CsvColumn::Channel, tryParseUInt16, message_.channel)) {
    return false;
  }
  if (!message_.valid) {
    return true;  // the comment says why
  }
  if (!number(CsvColumn::ObjectFlags, tryParseUInt32Auto, message_.objectFlags) ||
      !number(CsvColumn::Flags, tryParseUInt32Auto, message_.flags) ||
      !number(CsvColumn::FlagsExt, tryParseUInt16, message_.flagsExt) ||
      !number(CsvColumn::Ecc, tryParseByteAuto, message_.ecc) ||
      !number(CsvColumn::CanFdFlags, tryParseByteAuto, message_.canFdFlags) ||
      !number(CsvColumn::Dir, tryParseByteAuto, message_.dir) ||
      !number(CsvColumn::Crc, tryParseUInt16, message_.crc) ||
      !number(CsvColumn::ObjectVersion, tryParseUInt16, message_.objectVersion) ||
      !number(CsvColumn::ChecksumModel, tryParseByteAuto, message_.checksumModel) ||
      !number(CsvColumn::Length, tryParseUInt32Auto, message_.length)) {
    return false;
  }
  CsvCellCursor next = cells_.from(message_.columns.place(CsvColumn::Data0));
  return data(next);
}

}  // namespace

void parseCsvRow(std::string_view row, CsvMessage& message) {
  message.valid = RowParser(row, message).parseOwnRow();
}

void parseBlfRow(std::string_view row, CsvMessage& message) {
  if (!RowParser(row, message).parseConverterRow()) {
    message.valid = false;
  }
}

}  // namespace xlatr
