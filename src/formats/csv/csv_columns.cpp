#include "formats/csv/csv_columns.hpp"

#include <vector>

#include "messages/enum_text.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

constexpr auto kNames = std::to_array<EnumText<CsvColumn>>({
    {CsvColumn::Number, kCsvNumberName},
    {CsvColumn::Time, "Time (ms)"},
    {CsvColumn::Bus, "Bus"},
    {CsvColumn::Direction, "Direction"},
    {CsvColumn::Type, "Type"},
    {CsvColumn::Identifier, "ID (hex)"},
    {CsvColumn::Reserved, "Reserved"},
    {CsvColumn::Vcid, "VCID"},
    {CsvColumn::Sdt, "SDT"},
    {CsvColumn::Af, "AF"},
    {CsvColumn::Rrs, "RRS"},
    {CsvColumn::Sec, "SEC"},
    {CsvColumn::Length, "Length"},
    {CsvColumn::Data0, "D0"},
    {CsvColumn::ObjectType, "ObjectType"},
    {CsvColumn::ObjectTimestamp, "ObjectTimestamp"},
    {CsvColumn::ObjectFlags, "ObjectFlags"},
    {CsvColumn::Valid, "Valid"},
    {CsvColumn::Comment, "Comment"},
    {CsvColumn::Id, "Id"},
    {CsvColumn::Channel, "Channel"},
    {CsvColumn::Flags, "Flags"},
    {CsvColumn::FlagsExt, "FlagsExt"},
    {CsvColumn::Ecc, "Ecc"},
    {CsvColumn::CanFdFlags, "CanFdFLags"},  // misspelt in the converter's tables
    {CsvColumn::Dir, "Dir"},
    {CsvColumn::Crc, "Crc"},
    {CsvColumn::ObjectVersion, "ObjectVersion"},
    {CsvColumn::ChecksumModel, "ChecksumModel"},
});
static_assert(kNames.size() == kCsvColumnCount);

std::optional<CsvColumn> columnOf(std::string_view name) {
  return name == kCsvIdentifierOrPidName ? CsvColumn::Identifier : valueOf(kNames, name);
}

}  // namespace

std::string_view csvColumnName(CsvColumn column) {
  return textOf(kNames, column, "");
}

void CsvColumns::setPlace(CsvColumn column, std::uint32_t place) {
  places_[static_cast<std::size_t>(column)] = place;
  named_ |= 1U << static_cast<std::uint32_t>(column);
}

CsvColumnLine parseCsvColumnLine(std::string_view line) {
  CsvColumnLine result;
  const std::size_t number = line.find(kCsvNumberName);
  if (number == std::string_view::npos) {
    return result;
  }
  // Taken from the file and not from any setting, so that a table of any separator is read.
  result.separator = line.substr(number + kCsvNumberName.size(), 1);
  std::vector<std::string_view> names;
  splitText(line, result.separator, names, true, false);
  for (std::size_t place = 0; place < names.size(); ++place) {
    if (const auto column = columnOf(names[place])) {
      result.columns.setPlace(*column, static_cast<std::uint32_t>(place));
    }
  }
  return result;
}

}  // namespace xlatr
