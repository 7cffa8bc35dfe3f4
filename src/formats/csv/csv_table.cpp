#include "formats/csv/csv_table.hpp"

#include <charconv>
#include <cstring>
#include <limits>
#include <span>
#include <utility>

#include "formats/csv/csv_plain_rows.hpp"
#include "formats/csv/csv_quotes.hpp"
#include "formats/csv/csv_record_input.hpp"
#include "messages/can_dlc.hpp"
#include "util/hex.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

constexpr auto kFirstAttribute = static_cast<std::size_t>(CsvTableColumn::FirstAttribute);
constexpr std::size_t kErrorColumn = kFirstAttribute + static_cast<std::size_t>(FrameAttribute::ErrorType);

struct ColumnName {
  std::uint8_t column;
  std::string_view name;
};

consteval ColumnName named(CsvTableColumn column, std::string_view name) {
  return {static_cast<std::uint8_t>(column), name};
}

// As they are written. The other attributes follow.
constexpr std::array kColumnNames = {
    named(CsvTableColumn::Time, "time_ns"),
    named(CsvTableColumn::Kind, "kind"),
    named(CsvTableColumn::Bus, "bus"),
    named(CsvTableColumn::Id, "id"),
    named(CsvTableColumn::Ide, "ide"),
    named(CsvTableColumn::Dir, "dir"),
    named(CsvTableColumn::Edl, "edl"),
    named(CsvTableColumn::Brs, "brs"),
    named(CsvTableColumn::Esi, "esi"),
    named(CsvTableColumn::Dlc, "dlc"),
    named(CsvTableColumn::Length, "length"),
    named(CsvTableColumn::Data, "data"),
    ColumnName{kErrorColumn, "err"},
    named(CsvTableColumn::Text, "text"),
    named(CsvTableColumn::Xl, "xl"),
    named(CsvTableColumn::DlcKnown, "dlc_known"),
    named(CsvTableColumn::EnhancedChecksum, "enhanced_checksum"),
};
static_assert(static_cast<std::size_t>(FrameAttribute::ErrorType) == 0);

struct FlagColumn {
  CsvTableColumn column;
  std::uint16_t flag;
};
constexpr std::array kFlagColumns = {
    FlagColumn{CsvTableColumn::Ide, frame_flag::kExtended},
    FlagColumn{CsvTableColumn::Edl, frame_flag::kFd},
    FlagColumn{CsvTableColumn::Brs, frame_flag::kBrs},
    FlagColumn{CsvTableColumn::Esi, frame_flag::kEsi},
    FlagColumn{CsvTableColumn::Xl, frame_flag::kXl},
    FlagColumn{CsvTableColumn::DlcKnown, frame_flag::kDlcKnown},
    FlagColumn{CsvTableColumn::EnhancedChecksum, frame_flag::kEnhancedChecksum},
};

// By column; 0 for those that are no flags.
constexpr auto kFlagOfColumn = [] {
  std::array<std::uint16_t, kFirstAttribute> flags{};
  for (const FlagColumn& column : kFlagColumns) {
    flags[static_cast<std::size_t>(column.column)] = column.flag;
  }
  return flags;
}();

std::uint8_t columnOfName(std::string_view name) {
  for (const ColumnName& column : kColumnNames) {
    if (column.name == name) {
      return column.column;
    }
  }
  const auto attribute = frameAttributeOfName(name);
  return attribute ? static_cast<std::uint8_t>(kFirstAttribute + static_cast<std::size_t>(*attribute))
                   : CsvTableColumns::kUnknown;
}

// ---- cells

// A whole number. Programs that know real numbers alone save 8 as 8.0.
bool parseWhole(std::string_view cell, std::uint32_t& value) {
  const char* const end = cell.data() + cell.size();
  const auto [rest, error] = std::from_chars(cell.data(), end, value);
  if (error != std::errc() || rest == end) {
    return error == std::errc();
  }
  const std::string_view fraction(rest, static_cast<std::size_t>(end - rest));
  return fraction.front() == '.' && fraction.find_first_not_of('0', 1) == std::string_view::npos;
}

template <typename Field>
bool takeWhole(std::string_view cell, Field& field) {
  if (cell.size() == 1 && isDecimalDigit(cell.front())) {
    field = static_cast<Field>(cell.front() - '0');
    return true;
  }
  std::uint32_t value = 0;
  if (!parseWhole(cell, value) || value > std::numeric_limits<Field>::max()) {
    return false;
  }
  field = static_cast<Field>(value);
  return true;
}

// 0 or 1, or a word for it.
std::optional<bool> boolOf(std::string_view cell) {
  std::uint8_t value = 0;
  if (takeWhole(cell, value)) {
    return value <= 1 ? std::optional(value == 1) : std::nullopt;
  }
  if (equalsIgnoreCase(cell, "true")) {
    return true;
  }
  return equalsIgnoreCase(cell, "false") ? std::optional(false) : std::nullopt;
}

std::optional<bool> isTransmitted(std::string_view cell) {
  if (equalsIgnoreCase(cell, "Tx")) {
    return true;
  }
  return equalsIgnoreCase(cell, "Rx") ? std::optional(false) : boolOf(cell);
}

bool takeTime(std::string_view cell, std::int64_t& timeNs) {
  const char* const end = cell.data() + cell.size();
  const auto [rest, error] = std::from_chars(cell.data(), end, timeNs);
  return error == std::errc() && rest == end && timeNs >= -kFarthestNs && timeNs <= kFarthestNs;
}

bool takeIdentifier(std::string_view cell, std::uint32_t& id) {
  constexpr std::size_t kMostDigits = 8;
  std::uint32_t value = 0;
  for (const char character : cell) {
    const int digit = hexDigitValue(character);
    if (digit < 0) {
      return false;
    }
    value = value << 4U | static_cast<std::uint32_t>(digit);
  }
  id = value;
  return cell.size() <= kMostDigits;
}

// ---- printing into memory that is large enough

constexpr auto kLowerHexPairs = [] {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::array<std::array<char, 2>, 256> pairs{};
  for (std::size_t value = 0; value < pairs.size(); ++value) {
    pairs[value] = {kDigits[value / 16], kDigits[value % 16]};
  }
  return pairs;
}();

char* putNumber(char* to, auto value) {
  constexpr std::size_t kMostCharacters = 20;
  if (value >= 0 && value <= 9) {
    *to = static_cast<char>('0' + value);
    return to + 1;
  }
  return std::to_chars(to, to + kMostCharacters, value).ptr;
}

char* putIdentifier(char* to, std::uint32_t id) {
  unsigned shift = 0;
  while (shift < 28 && id >> (shift + 4) != 0) {
    shift += 4;
  }
  for (;; shift -= 4) {
    *to++ = kHexDigits[id >> shift & 0xFU];
    if (shift == 0) {
      return to;
    }
  }
}

char* putText(char* to, std::string_view text) {
  std::memcpy(to, text.data(), text.size());
  return to + text.size();
}

char* putFlag(char* to, const Frame& frame, std::uint16_t flag) {
  to[0] = frame.has(flag) ? '1' : '0';
  to[1] = ',';
  return to + 2;
}

char* putData(char* to, std::span<const std::uint8_t> data) {
  for (const std::uint8_t byte : data) {
    std::memcpy(to, kLowerHexPairs[byte].data(), 2);
    to += 2;
  }
  return to;
}

char* putAttribute(char* to, const FrameAttributes& attributes, FrameAttribute attribute) {
  const auto value = attributes.get(attribute);
  return value ? putNumber(to, *value) : to;
}

// From the time to the comma before the text.
char* putFields(char* to, const Frame& frame) {
  to = putNumber(to, frame.timeNs);
  *to++ = ',';
  to = putText(to, frameKindName(frame.kind));
  *to++ = ',';
  to = putNumber(to, frame.bus);
  *to++ = ',';
  to = putIdentifier(to, frame.id);
  *to++ = ',';
  to = putFlag(to, frame, frame_flag::kExtended);
  if (frame.has(frame_flag::kReceived | frame_flag::kTransmitted)) {
    *to++ = frame.has(frame_flag::kTransmitted) ? '1' : '0';
  }
  *to++ = ',';
  to = putFlag(to, frame, frame_flag::kFd);
  to = putFlag(to, frame, frame_flag::kBrs);
  to = putFlag(to, frame, frame_flag::kEsi);
  to = putNumber(to, frame.dlc);
  *to++ = ',';
  to = putNumber(to, frame.data.size());
  *to++ = ',';
  to = putData(to, frame.data);
  *to++ = ',';
  to = putAttribute(to, frame.attributes, FrameAttribute::ErrorType);
  *to++ = ',';
  return to;
}

// From the comma after the text to the line end.
char* putRest(char* to, const Frame& frame) {
  constexpr std::size_t kAttributes = kFrameAttributeCount - 1;
  *to++ = ',';
  to = putFlag(to, frame, frame_flag::kXl);
  to = putFlag(to, frame, frame_flag::kDlcKnown);
  to = putFlag(to, frame, frame_flag::kEnhancedChecksum);
  // The comma before the first is there already.
  if (frame.attributes.empty()) {
    std::memset(to, ',', kAttributes - 1);
    to += kAttributes - 1;
  } else {
    for (std::size_t at = 1; at <= kAttributes; ++at) {
      to = putAttribute(to, frame.attributes, static_cast<FrameAttribute>(at));
      *to++ = ',';
    }
    --to;
  }
  *to++ = '\r';
  *to++ = '\n';
  return to;
}

}  // namespace

// ---- the header row

CsvTableColumns::CsvTableColumns(std::string_view line, char separator) : separator_(separator) {
  std::vector<std::string_view> names;
  splitText(line, std::string_view(&separator, 1), names, false, false);
  for (const std::string_view quoted : names) {
    const std::string_view name = trimmed(trimmed(quoted), std::string_view(&kCsvQuote, 1));
    std::uint8_t column = columnOfName(name);
    if (column != kUnknown && (named_ >> column & 1U) != 0) {
      column = kUnknown;
    }
    named_ |= column == kUnknown ? 0 : std::uint64_t{1} << column;
    places_.push_back(column);
  }
}

std::optional<CsvTableColumns> CsvTableColumns::parse(std::string_view line) {
  line = withoutByteOrderMark(line);
  for (const char separator : {',', ';', '\t'}) {
    CsvTableColumns columns(line, separator);
    if (columns.has(CsvTableColumn::Time)) {
      return columns;
    }
  }
  return std::nullopt;
}

void appendCsvTableHeader(TextBuffer& out) {
  for (const ColumnName& column : kColumnNames) {
    out.append(column.name);
    out.append(',');
  }
  for (std::size_t at = 1; at < kFrameAttributeCount; ++at) {
    out.append(frameAttributeName(static_cast<FrameAttribute>(at)));
    out.append(at + 1 < kFrameAttributeCount ? "," : "\r\n");
  }
}

// ---- rows

void appendCsvTableRow(TextBuffer& out, const Frame& frame) {
  constexpr std::size_t kWidestCell = 21;
  constexpr std::size_t kRoom = (kColumnNames.size() + kFrameAttributeCount) * kWidestCell;
  out.extendTo(putFields(out.reserve(kRoom + 2 * frame.data.size()), frame));
  if (frame.text) {
    appendQuoted(out, *frame.text);
  }
  out.extendTo(putRest(out.reserve(kRoom), frame));
}

CsvTableRows::CsvTableRows(CsvTableColumns columns) : columns_(std::move(columns)), plain_(hasPlainRows(columns_)) {}

bool CsvTableRows::read(std::string_view row, Frame& frame) {
  return (plain_ && takePlainCsvTableRow(row, columns_.separator(), plainBytes_, frame)) || readAnyForm(row, frame);
}

bool CsvTableRows::readAnyForm(std::string_view row, Frame& frame) {
  const char separator = columns_.separator();
  const char* next = row.data();
  const char* const end = next + row.size();
  const std::vector<std::uint8_t>& places = columns_.places();
  Cells cells;
  for (std::size_t place = 0; place < places.size(); ++place) {
    if (next != end && *next == kCsvQuote) {
      std::string_view rest(next, static_cast<std::size_t>(end - next));
      if (!takeQuotedCell(places[place], rest, frame, cells)) {
        return false;
      }
      next = rest.data();
    } else {
      const char* const begin = next;
      while (next != end && *next != separator) {
        ++next;
      }
      if (next != begin && !takeCell(places[place], {begin, static_cast<std::size_t>(next - begin)}, frame, cells)) {
        return false;
      }
    }
    // A row has as many cells as its table has columns; one with fewer may have been cut.
    const bool last = place + 1 == places.size();
    if (last != (next == end) || (!last && *next != separator)) {
      return false;
    }
    ++next;
  }
  return finish(cells, frame);
}

bool CsvTableRows::takeQuotedCell(std::uint8_t column, std::string_view& rest, Frame& frame, Cells& cells) {
  if (column == static_cast<std::uint8_t>(CsvTableColumn::Text)) {
    if (!takeQuoted(rest, text_)) {
      return false;
    }
    frame.text = text_;
    return true;
  }
  return takeQuoted(rest, cell_) && (cell_.empty() || takeCell(column, cell_, frame, cells));
}

bool CsvTableRows::takeCell(std::uint8_t column, std::string_view cell, Frame& frame, Cells& cells) {
  if (column < kFirstAttribute) {
    return takeField(static_cast<CsvTableColumn>(column), cell, frame, cells);
  }
  if (column == CsvTableColumns::kUnknown) {
    return true;
  }
  std::uint32_t value = 0;
  if (!takeWhole(cell, value)) {
    return false;
  }
  frame.attributes.set(static_cast<FrameAttribute>(column - kFirstAttribute), value);
  return true;
}

bool CsvTableRows::takeField(CsvTableColumn column, std::string_view cell, Frame& frame, Cells& cells) {
  switch (column) {
    case CsvTableColumn::Time:
      cells.time = true;
      return takeTime(cell, frame.timeNs);
    case CsvTableColumn::Kind: {
      const auto kind = frameKindOfName(cell);
      frame.kind = kind.value_or(FrameKind::Comment);
      return kind.has_value();
    }
    case CsvTableColumn::Bus:
      return takeWhole(cell, frame.bus);
    case CsvTableColumn::Id:
      return takeIdentifier(cell, frame.id);
    case CsvTableColumn::Dir: {
      const auto transmitted = isTransmitted(cell);
      frame.set(transmitted.value_or(false) ? frame_flag::kTransmitted : frame_flag::kReceived);
      return transmitted.has_value();
    }
    case CsvTableColumn::Dlc:
      cells.dlc = true;
      return takeWhole(cell, frame.dlc);
    case CsvTableColumn::Length:
      return takeWhole(cell, cells.length.emplace());
    case CsvTableColumn::Data:
      return takeData(cell, frame);
    case CsvTableColumn::Text:
      frame.text = cell;
      return true;
    default: {
      const auto set = boolOf(cell);
      frame.set(set.value_or(false) ? kFlagOfColumn[static_cast<std::size_t>(column)] : std::uint16_t{0});
      return set.has_value();
    }
  }
}

bool CsvTableRows::takeData(std::string_view digits, Frame& frame) {
  const std::size_t count = digits.size() / 2;
  if (digits.size() % 2 != 0 || count > data_.size()) {
    return false;
  }
  int all = 0;  // negative as soon as one of them is no digit
  for (std::size_t at = 0; at < count; ++at) {
    const int byte = hexDigitValue(digits[2 * at]) * 16 | hexDigitValue(digits[2 * at + 1]);
    all |= byte;
    data_[at] = static_cast<std::uint8_t>(byte);
  }
  frame.data = std::span(data_).first(count);
  return all >= 0;
}

// What a table without some of the columns leaves to be said.
bool CsvTableRows::finish(const Cells& cells, Frame& frame) const {
  constexpr std::uint32_t kHighestBase = 0x7FF;
  const bool isCan = frame.kind == FrameKind::Data || frame.kind == FrameKind::Remote;
  const bool needsBytes = frame.kind == FrameKind::Data && columns_.has(CsvTableColumn::Data);
  if (!cells.time || (cells.length && (needsBytes || !frame.data.empty()) && *cells.length != frame.data.size())) {
    return false;
  }
  if (!cells.dlc && frame.kind != FrameKind::Remote) {
    const auto length = cells.length.value_or(static_cast<std::uint32_t>(frame.data.size()));
    frame.dlc = static_cast<std::uint16_t>(frame.has(frame_flag::kXl) ? lengthToXlDlc(length) : lengthToDlc(length));
  }
  if (!columns_.has(CsvTableColumn::DlcKnown) && cells.dlc && frame.kind == FrameKind::Remote) {
    frame.set(frame_flag::kDlcKnown);
  }
  if (!columns_.has(CsvTableColumn::Ide) && isCan && frame.id > kHighestBase) {
    frame.set(frame_flag::kExtended);
  }
  if (frame.kind == FrameKind::Comment && !frame.text) {
    frame.text = std::string_view();
  }
  return true;
}

}  // namespace xlatr
