#include "formats/csv/csv_frames.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

#include "formats/csv/csv_columns.hpp"
#include "formats/csv/csv_frame_rows.hpp"
#include "formats/csv/csv_header.hpp"
#include "formats/csv/csv_message.hpp"
#include "formats/csv/csv_plain_rows.hpp"
#include "formats/csv/csv_record_input.hpp"
#include "formats/csv/csv_table.hpp"
#include "formats/csv/csv_table_frames.hpp"
#include "frames/text_frame_sink.hpp"
#include "frames/text_frame_source.hpp"
#include "util/host.hpp"
#include "util/render.hpp"
#include "util/start_time.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

constexpr double kRows = 1.0;
constexpr double kTable = 2.0;
constexpr std::int64_t kMicrosecond = 1'000;

consteval FrameCapacity row(double version) {
  constexpr std::uint32_t kAllAttributes = (1U << kFrameAttributeCount) - 1;
  FrameCapacity capacity;
  capacity.version = version;
  capacity.whole = true;
  capacity.comments = true;
  for (std::size_t kind = 0; kind < kFrameKindCount; ++kind) {
    capacity.kinds[kind] = {
        .held = true, .direction = true, .text = TextCapacity::Any, .bytes = true, .attributes = kAllAttributes};
  }
  capacity.fd = true;
  capacity.bitsOfFd = true;
  capacity.xl = true;
  capacity.longestData = 64;
  capacity.longDlc = true;
  capacity.remoteDlc = true;
  capacity.longRemoteDlc = true;
  capacity.enhancedChecksum = true;
  capacity.hiddenLinData = true;
  capacity.highestBus = std::numeric_limits<std::uint16_t>::max();
  capacity.zone = true;
  return capacity;
}

// Some kinds have no type in it, and comments no time. What other frames have beyond its columns is in a cell of text.
consteval FrameCapacity withTypes(FrameCapacity capacity) {
  constexpr std::int64_t kStartNumber = 10 * kMicrosecond;  // of days with 15 digits
  capacity.of(FrameKind::Overload) = {};
  capacity.of(FrameKind::LinEvent) = {};
  capacity.resolutionNs = kMicrosecond;
  capacity.startResolutionNs = kStartNumber;
  capacity.zone = false;
  return capacity;
}

constexpr std::array kCapacities = {withTypes(row(kRows)), row(kTable)};

constexpr std::string_view kStartKey = "$STARTTIME=";
constexpr std::string_view kStartTextKey = "Start time: ";

// A head names its columns in a line that begins with "Number"; its other lines may hold that word.
bool isColumnLine(std::string_view line) {
  return line.starts_with(kCsvNumberName) && line.size() > kCsvNumberName.size();
}

// Whether a line is a row: its number stands in front.
bool isRow(std::string_view line, std::string_view separator) {
  const std::size_t digits = countLeading(line, isDecimalDigit);
  return digits > 0 && digits < line.size() && separator.find(line[digits]) != std::string_view::npos;
}

// The lines of a table of version 1.0, for TextFrameSource.
class CsvRowLines {
 public:
  // Without a column line there is no head either.
  explicit CsvRowLines(bool hasColumnLine = false) : inHead_(hasColumnLine) {}

  // Comments are what has no number.
  static constexpr std::string_view kCommentMark = {};

  [[nodiscard]] bool isHeader(std::string_view line) {
    if (!inHead_) {
      return false;
    }
    line = withoutByteOrderMark(line);
    if (line.starts_with(kStartKey)) {
      startNumber_ = line.substr(kStartKey.size());
    } else if (line.starts_with(kStartTextKey)) {
      startText_ = line.substr(kStartTextKey.size());
      std::ranges::replace(startText_, '/', '.');
    } else if (isColumnLine(line)) {
      CsvColumnLine parsed = parseCsvColumnLine(line);
      plainTable_ = plainTableOf(parsed);
      separator_ = parsed.separator.empty() ? '\0' : parsed.separator.front();
      row_.separator = std::move(parsed.separator);
      row_.columns = parsed.columns;
      inHead_ = false;
      hasColumns_ = true;
    }
    return true;
  }

  void takeHead(StreamHead& head) {
    head.format = XLATR_FORMAT_CSV;
    head.version = hasColumns_ ? kRows : 0.0;
    if (const auto start = startOf(startNumber_, startText_)) {
      head.start = TraceStart{.sinceEpochNs = *start};
    }
  }

  [[nodiscard]] bool isComment(std::string_view line) const { return hasColumns_ && !isRow(line, row_.separator); }

  [[nodiscard]] bool understand(std::string_view line, Frame& frame) {
    if (!hasColumns_) {
      return false;
    }
    if (takePlainCsvRow(line, plainTable_, separator_, bytes_, frame)) {
      return true;
    }
    row_.reset();
    row_.bus = 0;
    row_.wideRow = row_.columns.has(CsvColumn::Vcid);
    row_.parseRow(line, false, Way::complete());
    return row_.valid && taker_.takeRow(row_, frame);
  }

 private:
  bool inHead_;
  bool hasColumns_ = false;
  std::string startNumber_;
  std::string startText_;
  CsvPlainTable plainTable_ = CsvPlainTable::None;
  char separator_ = '\0';  // of a plain table
  PlainFrameBytes bytes_;  // those of a plain row
  CsvMessage row_;
  CsvRowTaker taker_;
};

// The formats whose traces have always become tables without the columns of CAN XL.
bool isNarrowSource(TraceFormat format) {
  return format == XLATR_FORMAT_ASC || format == XLATR_FORMAT_BTR || format == XLATR_FORMAT_BTRC ||
         format == XLATR_FORMAT_LIN || format == XLATR_FORMAT_BLF;
}

// To the nearest one, as its text has always shown it; but 999.6 ms are the next second.
std::int64_t toMilliseconds(std::int64_t sinceEpochNs) {
  using std::chrono::milliseconds;
  using Nanoseconds = std::chrono::duration<std::int64_t, std::nano>;
  return Nanoseconds(std::chrono::round<milliseconds>(Nanoseconds(sinceEpochNs))).count();
}

// The lines of a table of version 1.0, for TextFrameSink.
class CsvRowFrameLines {
 public:
  static constexpr std::string_view kCommentMark = {};

  CsvRowFrameLines(const OutputTarget& /*target*/, const StreamHead& head, const SinkSettings& settings)
      : head_(head), row_(settings.separator) {}

  [[nodiscard]] static const FrameCapacity& capacity() { return kCapacities.front(); }

  void appendHeader(TextBuffer& out) const {
    constexpr int kStartNumberDigits = 15;
    const std::int64_t start = startOrNone(head_.start);
    CsvHeaderValues values;
    values.startNumber = formatGeneral(daysOfStart(start), kStartNumberDigits);
    values.startText = dateTimeOfStart(toMilliseconds(start)).toSlashedText();
    values.sourcePath = head_.path;
    values.hostVersion = getHostVersionText();
    values.wide = !isNarrowSource(head_.format);
    values.loggerBuses = head_.format == XLATR_FORMAT_BTR;
    for (const std::string& line : csvHeaderLines(values, row_.separator)) {
      out.append(line);
      out.append(kLineEnd);
    }
  }

  void appendFrame(TextBuffer& out, const Frame& frame) {
    row_.reset();
    row_.wideRow = !isNarrowSource(head_.format);
    maker_.giveRow(frame, row_);
    row_.toRow(out, ++number_, Way::complete());
    out.append(kLineEnd);
  }

  void appendEnd(TextBuffer& /*out*/) const {}

  [[nodiscard]] bool standsAsComment(std::string_view line) const {
    return !line.empty() && !isRow(line, row_.separator);
  }

 private:
  StreamHead head_;
  CsvMessage row_;
  CsvRowMaker maker_;
  std::uint64_t number_ = 0;
};

enum class TableKind : std::uint8_t { None, Rows, Table };

// What a line tells, by itself. Only the first line that is not empty can be a header row.
TableKind kindOfLine(std::string_view line, bool first) {
  line = first ? withoutByteOrderMark(line) : line;
  if (isColumnLine(line)) {
    return TableKind::Rows;
  }
  return first && CsvTableColumns::parse(line) ? TableKind::Table : TableKind::None;
}

// Looks for the column line: that of 2.0 is the first line, that of 1.0 ends a head of some thirty lines.
TableKind kindOf(const InputSource& source) {
  constexpr std::uint64_t kFarthest = std::uint64_t{1} << 20;
  CsvRecordInput input(source);
  CsvRecord record;
  bool first = true;
  while (input.position() < kFarthest && input.nextLine(record)) {
    const TableKind kind = kindOfLine(record.text, first);
    if (kind != TableKind::None) {
      return kind;
    }
    first = first && record.text.empty();
  }
  return TableKind::None;
}

}  // namespace

std::span<const FrameCapacity> csvCapacities() {
  return kCapacities;
}

bool looksLikeCsv(std::string_view start) {
  bool first = true;
  while (!start.empty()) {
    const std::size_t end = std::min(start.find('\n'), start.size());
    const std::string_view line = trimmed(start.substr(0, end), "\r");
    if (kindOfLine(line, first) != TableKind::None) {
      return true;
    }
    first = first && line.empty();
    start.remove_prefix(std::min(end + 1, start.size()));
  }
  return false;
}

std::unique_ptr<FrameSource> openCsvFrames(const InputSource& input) {
  const TableKind kind = kindOf(input);
  if (kind == TableKind::Table) {
    return openCsvTable(input);
  }
  return std::make_unique<TextFrameSource<CsvRowLines>>(input, CsvRowLines(kind == TableKind::Rows));
}

std::unique_ptr<FrameSink> createCsvFrames(const OutputTarget& target, const StreamHead& head,
                                           const SinkSettings& settings) {
  if (settings.version == kTable) {
    return createCsvTable(target, head, kCapacities.back());
  }
  return std::make_unique<TextFrameSink<CsvRowFrameLines>>(target, head, settings);
}

}  // namespace xlatr
