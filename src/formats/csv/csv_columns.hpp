// The columns of a table and its column line, which names them. What belongs to each is in csv_column_table.hpp.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace xlatr {

// The second half belongs to the table that the external BLF converter makes.
enum class CsvColumn : std::uint8_t {
  Number = 0,
  Time = 1,
  Bus = 2,
  Direction = 3,
  Type = 4,
  Identifier = 5,
  Reserved = 6,
  Vcid = 7,
  Sdt = 8,
  Af = 9,
  Rrs = 10,
  Sec = 11,
  Length = 12,
  Data0 = 13,  // the first data byte; the others follow it
  ObjectType = 14,
  ObjectTimestamp = 15,
  ObjectFlags = 16,
  Valid = 17,
  Comment = 18,
  Id = 19,
  Channel = 20,
  Flags = 21,
  FlagsExt = 22,
  Ecc = 23,
  CanFdFlags = 24,
  Dir = 25,
  Crc = 26,
  ObjectVersion = 27,
  ChecksumModel = 28,
};

inline constexpr std::size_t kCsvColumnCount = 29;

// The word that makes a line the column line.
inline constexpr std::string_view kCsvNumberName = "Number";

// Where a table has its columns.
class CsvColumns {
 public:
  // The place of a column, counted from 0. A column that the table does not have counts as its first one, so that a
  // table that lacks a column can still be read: aMissingColumnReadsTheFirstCell.
  [[nodiscard]] std::uint32_t place(CsvColumn column) const { return places_[static_cast<std::size_t>(column)]; }
  // The later of two places of one name counts.
  void setPlace(CsvColumn column, std::uint32_t place);
  [[nodiscard]] bool has(CsvColumn column) const { return (named_ >> static_cast<std::uint32_t>(column) & 1U) != 0; }
  [[nodiscard]] bool empty() const { return named_ == 0; }
  bool operator==(const CsvColumns&) const = default;

 private:
  std::array<std::uint32_t, kCsvColumnCount> places_{};
  std::uint32_t named_ = 0;  // bit 0 = Number and so on
};

// What a column line says.
struct CsvColumnLine {
  std::string separator;  // the character after "Number"; empty if there is none
  CsvColumns columns;
};

// Reads a column line. Without the word "Number" both parts stay empty. An unknown name takes its place like any other.
[[nodiscard]] CsvColumnLine parseCsvColumnLine(std::string_view line);

// The column line of a table that is written here. One of a TRC trace has the columns of CAN XL and another name for
// the identifier, which may be that of a LIN frame.
[[nodiscard]] std::string csvColumnLine(bool fromTrc, std::string_view separator);

// The column line of the external BLF converter's table.
[[nodiscard]] std::string csvConverterColumnLine(std::string_view separator);

}  // namespace xlatr
