#include "formats/csv/csv_plain_rows.hpp"

#include <cstddef>
#include <limits>
#include <span>

#include "messages/can_dlc.hpp"
#include "util/plain_fields.hpp"
#include "util/text_buffer.hpp"

namespace xlatr {
namespace {

constexpr std::string_view kPlainSeparators = ",;\t";
constexpr std::string_view kNoValue = "-";

// Nothing but data frames of CAN XL has values there.
bool skipXlCells(PlainCells& cells) {
  return cells.take(kNoValue) && cells.take(kNoValue) && cells.take(kNoValue) && cells.take(kNoValue) &&
         cells.take(kNoValue);
}

bool takeFlag(PlainCells& cells, std::uint16_t flag, PlainFrame& plain) {
  bool set = false;
  const bool taken = takePlainBit(cells, set);
  plain.setIf(set, flag);
  return taken;
}

// Empty if nobody knows.
bool takeDirectionCell(PlainCells& cells, PlainFrame& plain) {
  bool transmitted = false;
  if (cells.takeNothing()) {
    return true;
  }
  const bool taken = takePlainBit(cells, transmitted);
  plain.flags |= transmitted ? frame_flag::kTransmitted : frame_flag::kReceived;
  return taken;
}

bool takeTableDlc(PlainCells& cells, PlainFrame& plain) {
  std::uint32_t dlc = 0;
  const bool taken = cells.takeDecimal(dlc);
  plain.dlc = static_cast<std::uint16_t>(dlc);
  return taken && dlc <= std::numeric_limits<std::uint16_t>::max();
}

// From the time to the data.
bool takeTableCells(PlainCells& cells, PlainFrameBytes& bytes, PlainFrame& plain) {
  std::size_t digits = 0;
  bool marked = false;
  return cells.takeLong(plain.timeNs) && cells.take("data") && takePlainBus(cells, plain) &&
         cells.takeHex(plain.id, digits, marked) && !marked && takeFlag(cells, frame_flag::kExtended, plain) &&
         takeDirectionCell(cells, plain) && takeFlag(cells, frame_flag::kFd, plain) &&
         takeFlag(cells, frame_flag::kBrs, plain) && takeFlag(cells, frame_flag::kEsi, plain) &&
         takeTableDlc(cells, plain) && cells.takeDecimal(plain.length) && plain.length <= kLongestPlainFrame &&
         cells.takePairs(std::span(bytes).first(plain.length));
}

// From the error to the end: no error, no text, no CAN XL, no attribute.
bool takeTableRest(PlainCells& cells, char separator, PlainFrame& plain) {
  constexpr std::size_t kSeparators = kFrameAttributeCount - 2;  // between all attributes but the type of an error
  return cells.takeNothing() && cells.takeNothing() && cells.take("0") &&
         takeFlag(cells, frame_flag::kDlcKnown, plain) && takeFlag(cells, frame_flag::kEnhancedChecksum, plain) &&
         cells.rest().size() == kSeparators && cells.rest().find_first_not_of(separator) == std::string_view::npos;
}

}  // namespace

CsvPlainTable plainTableOf(const CsvColumnLine& line) {
  if (line.separator.size() != 1 || kPlainSeparators.find(line.separator) == std::string_view::npos) {
    return CsvPlainTable::None;
  }
  const auto isOwn = [&line](bool wide) {
    return line.columns == parseCsvColumnLine(csvColumnLine(wide, line.separator)).columns;
  };
  if (isOwn(true)) {
    return CsvPlainTable::Wide;
  }
  return isOwn(false) ? CsvPlainTable::Narrow : CsvPlainTable::None;
}

bool takePlainCsvRow(std::string_view row, CsvPlainTable table, char separator, PlainFrameBytes& bytes, Frame& frame) {
  constexpr unsigned kDecimals = 6;  // of a millisecond, in nanoseconds
  PlainCells cells(row, {separator});
  PlainFrame plain;
  std::uint32_t number = 0;
  if (table == CsvPlainTable::None || !cells.takeDecimal(number) || !cells.takeScaled<kDecimals>(plain.timeNs) ||
      !takePlainBus(cells, plain) || !takePlainDirection(cells, plain) || !takePlainKindWord(cells, plain) ||
      !takePlainWideId(cells, plain) || !cells.take(kNoValue) ||
      (table == CsvPlainTable::Wide && !skipXlCells(cells)) || !cells.takeDecimal(plain.length) ||
      plain.length > kLongestPlainFrame || !cells.takeBytes(std::span(bytes).first(plain.length)) || !cells.atEnd()) {
    return false;
  }
  plain.dlc = static_cast<std::uint16_t>(lengthToDlc(plain.length));
  frame.timeNs = plain.timeNs;
  plain.give(bytes, frame);
  return true;
}

bool hasPlainRows(const CsvTableColumns& columns) {
  TextBuffer header;
  appendCsvTableHeader(header);
  const auto own = CsvTableColumns::parse(header.view().substr(0, header.view().find('\r')));
  return own && columns.places() == own->places();
}

bool takePlainCsvTableRow(std::string_view row, char separator, PlainFrameBytes& bytes, Frame& frame) {
  PlainCells cells(row, {separator});
  PlainFrame plain;
  if (!takeTableCells(cells, bytes, plain) || !takeTableRest(cells, separator, plain)) {
    return false;
  }
  frame.timeNs = plain.timeNs;
  plain.give(bytes, frame);
  return true;
}

}  // namespace xlatr
