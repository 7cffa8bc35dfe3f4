// The one table of columns: what each is called, where it is, and how its cells are read and printed.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "formats/csv/csv_cell_printers.hpp"
#include "formats/csv/csv_cell_readers.hpp"
#include "formats/csv/csv_columns.hpp"

namespace xlatr {

using CsvCellReader = bool (*)(CsvCells&, std::size_t, CsvMessage&);
using CsvCellPrinter = void (*)(TextBuffer&, const CsvMessage&, std::uint64_t);

// For a table that does not have the column.
inline constexpr int kNoCsvPlace = -1;

// Each place is counted from 0. A null reader leaves the cells of the column alone.
//
// On the complete way a row of our own table is read by `readWhole`, and not at all if it has none. A column that the
// table lacks is left alone then, but for those without which there is no frame.
struct CsvColumnRow {
  CsvColumn column;
  std::string_view name;
  int ownPlace;        // in the table that is written here, all columns of CAN XL included
  int converterPlace;  // in the wider table of the external BLF converter
  CsvCellReader readOwn = nullptr;
  CsvCellReader readConverter = nullptr;
  CsvCellPrinter print = nullptr;    // for each column with a place of its own here
  std::string_view nameForTrc = {};  // in a table of a TRC trace, where it differs
  bool onlyWide = false;             // only a table of a TRC trace has it: a field of CAN XL
  CsvCellReader readWhole = nullptr;
  bool needed = false;
};

// In the order in which the cells of a row are read.
inline constexpr std::array kCsvColumnTable = [] {
  using enum CsvColumn;
  using Row = CsvMessage;
  namespace read = csv_read;
  namespace print = csv_print;
  constexpr int kNone = kNoCsvPlace;
  constexpr auto kUInt32 = tryParseUInt32Auto;
  constexpr auto kByte = tryParseByteAuto;
  constexpr auto kDirection = read::word<&Row::direction, tryMessageDirectionFromText>;
  return std::to_array<CsvColumnRow>({
      {Number, kCsvNumberName, 0, 0, nullptr, nullptr, print::number},

      {Time, "Time (ms)", 1, kNone, read::time, nullptr, print::time, {}, false, read::exactTime, true},
      {Bus,
       "Bus",
       2,
       kNone,
       read::number<&Row::bus, kByte>,
       nullptr,
       print::decimal<&Row::bus>,
       {},
       false,
       read::number<&Row::bus, kUInt32>},
      {Direction,
       "Direction",
       3,
       kNone,
       kDirection,
       nullptr,
       print::word<&Row::direction, messageDirectionToText>,
       {},
       false,
       kDirection},
      {Identifier, "ID (hex)", 5, kNone, read::identifier, nullptr, print::identifier, "ID/PID (hex)", false,
       read::identifier, true},
      {Type,
       "Type",
       4,
       kNone,
       read::kind,
       nullptr,
       print::word<&Row::kind, messageKindToText>,
       {},
       false,
       read::kind,
       true},
      {Reserved, "Reserved", 6, kNone, nullptr, nullptr, print::reserved, {}, false, read::reserved},
      {Vcid,
       "VCID",
       7,
       kNone,
       nullptr,
       nullptr,
       print::xlField<&Row::vcid, 2, csv_xl_bit::kVcid>,
       {},
       true,
       read::xlField<&Row::vcid, csv_xl_bit::kVcid>},
      {Sdt,
       "SDT",
       8,
       kNone,
       nullptr,
       nullptr,
       print::xlField<&Row::sdt, 2, csv_xl_bit::kSdt>,
       {},
       true,
       read::xlField<&Row::sdt, csv_xl_bit::kSdt>},
      {Af,
       "AF",
       9,
       kNone,
       nullptr,
       nullptr,
       print::xlField<&Row::af, 8, csv_xl_bit::kAf>,
       {},
       true,
       read::xlField<&Row::af, csv_xl_bit::kAf>},
      {Rrs,
       "RRS",
       10,
       kNone,
       nullptr,
       nullptr,
       print::xlField<&Row::rrs, 1, csv_xl_bit::kRrs>,
       {},
       true,
       read::xlField<&Row::rrs, csv_xl_bit::kRrs>},
      {Sec,
       "SEC",
       11,
       kNone,
       nullptr,
       nullptr,
       print::xlField<&Row::sec, 1, csv_xl_bit::kSec>,
       {},
       true,
       read::xlField<&Row::sec, csv_xl_bit::kSec>},

      {ObjectType, "ObjectType", kNone, 1, nullptr, read::number<&Row::objectType, kUInt32>},
      {ObjectTimestamp, "ObjectTimestamp", kNone, 2, nullptr, read::number<&Row::objectTicks, tryParseUInt64>},
      {Valid, "Valid", kNone, 4, nullptr, read::number<&Row::valid, tryParseBool>},
      {Comment, "Comment", kNone, 5, nullptr, read::text<&Row::comment>},
      {Id, "Id", kNone, 6, nullptr, read::number<&Row::blfId, kUInt32>},
      {Channel, "Channel", kNone, 7, nullptr, read::channel},
      {ObjectFlags, "ObjectFlags", kNone, 3, nullptr, read::number<&Row::objectFlags, kUInt32>},
      {Flags, "Flags", kNone, 8, nullptr, read::number<&Row::flags, kUInt32>},
      {FlagsExt, "FlagsExt", kNone, 9, nullptr, read::number<&Row::flagsExt, tryParseUInt16>},
      {Ecc, "Ecc", kNone, 10, nullptr, read::number<&Row::ecc, kByte>},
      // Misspelt in the converter's tables.
      {CanFdFlags, "CanFdFLags", kNone, 11, nullptr, read::number<&Row::canFdFlags, kByte>},
      {Dir, "Dir", kNone, 12, nullptr, read::number<&Row::dir, kByte>},
      {Crc, "Crc", kNone, 13, nullptr, read::number<&Row::crc, tryParseUInt16>},
      {ObjectVersion, "ObjectVersion", kNone, 14, nullptr, read::number<&Row::objectVersion, tryParseUInt16>},
      {ChecksumModel, "ChecksumModel", kNone, 15, nullptr, read::number<&Row::checksumModel, kByte>},

      {Length,
       "Length",
       12,
       16,
       read::number<&Row::length, kByte>,
       read::number<&Row::length, kUInt32>,
       print::length,
       {},
       false,
       read::wholeLength,
       true},
      {Data0, "D0", 13, 17, read::dataAndText, read::data, print::data, {}, false, read::dataAndWholeText, true},
  });
}();

// The row of the column at a place of one of the tables; null after the last.
[[nodiscard]] constexpr const CsvColumnRow* findCsvColumn(int CsvColumnRow::*table, int place) {
  for (const CsvColumnRow& row : kCsvColumnTable) {
    if (row.*table == place) {
      return &row;
    }
  }
  return nullptr;
}

}  // namespace xlatr
