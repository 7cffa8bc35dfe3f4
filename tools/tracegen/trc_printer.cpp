#include "tracegen/trc_printer.hpp"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <span>

namespace tracegen {
namespace {

struct VersionRow {
  std::string_view text;
  bool busColumn;
  std::string_view columns;  // of the key $COLUMNS; empty below 2.0
  std::string_view legend;   // the text above the lines; each of its lines ends in a line feed
};

constexpr std::string_view kLegend11 =
    ";   +-Message Number\n"
    ";   |         +Time Offset (ms)\n"
    ";   |         |        +Type\n"
    ";   |         |        |        +ID (hex)\n"
    ";   |         |        |        |     +Data Length\n"
    ";   |         |        |        |     |   +Data Bytes (hex) ...\n"
    ";---+--   ----+----  --+--  ----+---  +  -+ -- -- -- -- -- -- --\n";

constexpr std::string_view kLegend12 =
    ";   +-Message Number\n"
    ";   |         +Time Offset (ms)\n"
    ";   |         |       +Bus\n"
    ";   |         |       |    +Type\n"
    ";   |         |       |    |        +ID (hex)\n"
    ";   |         |       |    |        |     +Data Length\n"
    ";   |         |       |    |        |     |   +Data Bytes (hex) ...\n"
    ";---+--   ----+-----  +  --+--  ----+---  +  -+ -- -- -- -- -- -- --\n";

constexpr std::string_view kLegend13 =
    ";   Message Number\n"
    ";   |         Time Offset (ms)\n"
    ";   |         |       Bus\n"
    ";   |         |       |    Type\n"
    ";   |         |       |    |       ID (hex)\n"
    ";   |         |       |    |       |    Reserved\n"
    ";   |         |       |    |       |    |   Data Length\n"
    ";   |         |       |    |       |    |   |    Data Bytes (hex) ...\n"
    ";---+-- ------+------ +- --+-- ----+--- +- -+-- -+ -- -- -- -- -- -- --\n";

constexpr std::string_view kLegend20 =
    ";   Message   Time    Type ID     Rx/Tx\n"
    ";   Number    Offset  |    [hex]  |  Data Length\n"
    ";   |         [ms]    |    |      |  |  Data [hex] ...\n"
    ";---+-- ------+------ +- --+----- +- +- +- -- -- -- -- -- -- --\n";

constexpr std::string_view kLegend21 =
    ";   Message   Time    Type    ID     Rx/Tx\n"
    ";   Number    Offset  |  Bus  [hex]  |  Reserved\n"
    ";   |         [ms]    |  |    |      |  |  Data Length Code\n"
    ";   |         |       |  |    |      |  |  |    Data [hex] ...\n"
    ";---+-- ------+------ +- +- --+----- +- +- +--- +- -- -- -- -- -- -- --\n";

constexpr std::string_view kLegend30 =
    ";   Message   Time    Type    ID     Rx/Tx  VCID  AF       RRS\n"
    ";   Number    Offset  |  Bus  [hex]  |  Reserved  |        | SEC\n"
    ";   |         [ms]    |  |    |      |  |  |  SDT |        | | Data Length Code\n"
    ";   |         |       |  |    |      |  |  |  |  |        | | |    Data [hex] ...\n"
    ";---+-- ------+------ +- +- --+----- +- +- +- +- --+----- + + +--- +- -- -- -- -- -- -- --\n";

constexpr std::array<VersionRow, 6> kVersions{{
    {"1.1", false, "", kLegend11},
    {"1.2", true, "", kLegend12},
    {"1.3", true, "", kLegend13},
    {"2.0", false, "N,O,T,I,d,l,D", kLegend20},
    {"2.1", true, "N,O,T,B,I,d,R,L,D", kLegend21},
    {"3.0", true, "N,O,T,B,I,d,R,V,S,A,r,s,L,D", kLegend30},
}};

const VersionRow& rowOf(TrcVersion version) {
  return kVersions[static_cast<std::size_t>(version)];
}

// The start of the recording as days since 1899-12-30, with ten decimals, and as text.
constexpr std::uint64_t kSecondsPerDay = 86400;
constexpr std::uint64_t kDaysToUnixEpoch = 25569;
constexpr std::uint64_t kDayFractions = 10000000000;
constexpr std::size_t kDayDecimals = 10;
constexpr std::string_view kStartText = "01.03.2024 08:00:00.000";
static_assert(std::chrono::seconds(kStartUnixSeconds) ==
              std::chrono::sys_days(std::chrono::year(2024) / 3 / 1).time_since_epoch() + std::chrono::hours(8));

// In the versions below 2.0 a warning looks like a received frame, with this in place of the identifier.
constexpr std::uint32_t kNoId = 0xFFFFFFFF;

std::uint32_t dlcOf(const Entry& entry) {
  if (entry.kind == EntryKind::XlData) {
    return entry.dataLength - 1;
  }
  const auto* const place = std::lower_bound(kFdLengths.begin(), kFdLengths.end(), entry.dataLength);
  return static_cast<std::uint32_t>(place - kFdLengths.begin());
}

std::string_view directionWord(const Entry& entry) {
  return entry.transmitted ? "Tx" : "Rx";
}

std::string_view typeWord(const Entry& entry) {
  switch (entry.kind) {
    case EntryKind::Status:
      return "Warng";
    case EntryKind::ErrorCounters:
    case EntryKind::ErrorFrame:
      return "Error";
    default:
      return entry.transmitted ? "Tx   " : "Rx   ";
  }
}

std::string_view kindWord(const Entry& entry) {
  switch (entry.kind) {
    case EntryKind::Data:
      return "DT";
    case EntryKind::FdData:
      if (entry.errorStateIndicator) {
        return entry.bitRateSwitch ? "BI" : "FE";
      }
      return entry.bitRateSwitch ? "FB" : "FD";
    case EntryKind::XlData:
      return "XL";
    case EntryKind::Remote:
      return "RR";
    case EntryKind::Status:
      return "ST";
    case EntryKind::ErrorCounters:
      return "EC";
    case EntryKind::ErrorFrame:
      return "ER";
    case EntryKind::Event:
    case EntryKind::Comment:
      break;
  }
  return "EV";
}

// The interface is in one state at a time, so one bit at most is set.
std::string_view statusName(const Entry& entry) {
  if (entry.data[1] == 4) {
    return "BUSPASSIVE";
  }
  if (entry.data[3] == 16) {
    return "BUSOFF";
  }
  return entry.data[3] == 8 ? "BUSWARNING" : "";
}

bool isFrame(const Entry& entry) {
  return entry.kind == EntryKind::Data || entry.kind == EntryKind::FdData || entry.kind == EntryKind::XlData ||
         entry.kind == EntryKind::Remote;
}

// Milliseconds with three decimals, right-aligned.
void printTime(std::uint64_t timeUs, std::size_t width, TextOutput& output) {
  output.decimalRight(timeUs / 1000, width - 4);
  output.character('.');
  output.decimalFilled(timeUs % 1000, 3);
}

// Right-aligned in eight columns.
void printId(std::uint32_t canId, bool extended, std::size_t baseDigits, TextOutput& output) {
  if (extended) {
    output.hexFilled(canId, 8);
  } else {
    output.blanks(8 - baseDigits);
    output.hexFilled(canId, baseDigits);
  }
}

}  // namespace

std::optional<TrcVersion> trcVersionFromText(std::string_view text) {
  for (std::size_t index = 0; index < kVersions.size(); ++index) {
    if (kVersions[index].text == text) {
      return static_cast<TrcVersion>(index);
    }
  }
  return std::nullopt;
}

std::string_view trcVersionText(TrcVersion version) {
  return rowOf(version).text;
}

bool hasBusColumn(TrcVersion version) {
  return rowOf(version).busColumn;
}

void limitToVersion(TrafficOptions& options, TrcVersion version) {
  if (version < TrcVersion::V3_0) {
    options.xlShare = 0;
  }
  if (version < TrcVersion::V2_0) {
    options.fdShare = 0;
    options.eventRate = 0;
  }
}

void TrcPrinter::printLineEnd(TextOutput& output) const {
  output.text(form_.carriageReturn ? "\r\n" : "\n");
}

void TrcPrinter::printHeader(TextOutput& output) {
  const auto line = [&](std::string_view text) {
    output.text(text);
    printLineEnd(output);
  };
  const VersionRow& row = rowOf(form_.version);
  output.text(";$FILEVERSION=");
  line(row.text);
  output.text(";$STARTTIME=");
  output.decimal(kDaysToUnixEpoch + kStartUnixSeconds / kSecondsPerDay);
  output.character('.');
  output.decimalFilled((kStartUnixSeconds % kSecondsPerDay * kDayFractions + kSecondsPerDay / 2) / kSecondsPerDay,
                       kDayDecimals);
  printLineEnd(output);
  if (!row.columns.empty()) {
    output.text(";$COLUMNS=");
    line(row.columns);
  }
  line(";");
  output.text(";   Start time: ");
  output.text(kStartText);
  // From 2.0 on the text goes down to the microsecond.
  line(row.columns.empty() ? "" : ".000");
  output.text(";   Generated by tracegen from seed ");
  output.decimal(form_.seed);
  printLineEnd(output);
  line(";");
  if (row.busColumn) {
    line(";   Bus  Name");
    for (std::uint32_t bus = 1; bus <= form_.buses; ++bus) {
      output.text(";   ");
      output.decimalLeft(bus, 4);
      output.text(" CAN ");
      output.decimal(bus);
      printLineEnd(output);
    }
    line(";");
  }
  for (std::string_view legend = row.legend; !legend.empty();) {
    const std::size_t length = legend.find('\n');
    line(legend.substr(0, length));
    legend.remove_prefix(length + 1);
  }
}

void TrcPrinter::printEntry(const Entry& entry, TextOutput& output) {
  if (entry.kind == EntryKind::Comment) {
    output.text(";   ");
    output.text(entry.text);
  } else if (form_.version < TrcVersion::V2_0) {
    ++number_;
    printOld(entry, output);
  } else {
    ++number_;
    printColumns(entry, output);
  }
  printLineEnd(output);
}

// 1.1 and 1.2: "     1)      10.0  Rx        0123  2  AB CD", 1.2 with the bus after a longer time.
// 1.3:         "      1)       10.000 1  Rx        0123 -  2    AB CD"
void TrcPrinter::printOld(const Entry& entry, TextOutput& output) {
  const bool narrow = form_.version != TrcVersion::V1_3;
  output.decimalRight(number_, narrow ? 6 : 7);
  output.text(narrow ? ")   " : ") ");
  if (form_.version == TrcVersion::V1_1) {
    const std::uint64_t tenths = (entry.timeUs + 50) / 100;
    output.decimalRight(tenths / 10, 7);
    output.character('.');
    output.decimalFilled(tenths % 10, 1);
    output.blanks(2);
  } else {
    printTime(entry.timeUs, narrow ? 10 : 12, output);
    output.blanks(narrow ? 2 : 1);
    output.decimalLeft(entry.bus, 2);
    output.blanks(1);
  }
  output.text(typeWord(entry));
  output.blanks(narrow ? 2 : 1);

  std::span<const std::uint8_t> data = entry.payload();
  std::uint32_t length = entry.dataLength;
  if (entry.kind == EntryKind::Status) {
    output.hexFilled(kNoId, 8);
  } else if (entry.kind == EntryKind::ErrorFrame) {
    // The kind of error takes the identifier's place, the rest stays data.
    printId(data[0], false, 4, output);
    data = data.subspan(1);
    --length;
  } else {
    printId(entry.canId, entry.extended, 4, output);
  }

  switch (form_.version) {
    case TrcVersion::V1_1:
      output.blanks(2);
      output.decimal(length);
      output.blanks(2);
      break;
    case TrcVersion::V1_2:
      output.blanks(2);
      output.decimalLeft(length, 2);
      output.blanks(1);
      break;
    default:
      output.text(" -  ");
      output.decimalLeft(length, 3);
      output.blanks(2);
      break;
  }
  if (entry.kind == EntryKind::Remote) {
    output.text("RTR");
  } else {
    output.hexBytes(data, ' ');
  }
  // Only 1.1 names a status after its bytes; that of a healthy bus has no name.
  if (form_.version == TrcVersion::V1_1 && entry.kind == EntryKind::Status) {
    const std::string_view name = statusName(entry);
    output.text(name.empty() ? "" : " ");
    output.text(name);
  }
}

// 2.0: "      1        10.000 DT     0123 Rx 2  AB CD"
// 2.1: "      1        10.000 DT 1      0123 Rx -  2    AB CD"
// 3.0: "      1        10.000 DT 1       123 Rx -  -  -  -        - - 2    AB CD"
void TrcPrinter::printColumns(const Entry& entry, TextOutput& output) {
  output.decimalRight(number_, 7);
  output.blanks(1);
  printTime(entry.timeUs, 13, output);
  output.blanks(1);
  output.text(kindWord(entry));
  output.blanks(1);
  if (form_.version != TrcVersion::V2_0) {
    output.decimalLeft(entry.bus, 2);
    output.blanks(1);
  }
  if (entry.kind == EntryKind::Event) {
    output.text(entry.text);
    return;
  }
  printColumnsBeforeLength(entry, output);
  if (form_.version != TrcVersion::V2_0) {
    output.decimalLeft(isFrame(entry) ? dlcOf(entry) : entry.dataLength, 4);
  } else if (isFrame(entry)) {
    output.decimalLeft(entry.dataLength, 2);
  } else {
    output.blanks(2);  // 2.0 leaves out the length of what is not a frame
  }
  output.blanks(1);
  if (entry.kind != EntryKind::Remote) {
    output.hexBytes(entry.payload(), ' ');
  }
}

void TrcPrinter::printColumnsBeforeLength(const Entry& entry, TextOutput& output) {
  if (isFrame(entry)) {
    printId(entry.canId, entry.extended, form_.version == TrcVersion::V3_0 ? 3 : 4, output);
  } else {
    output.text(form_.version == TrcVersion::V2_0 ? "        " : "       -");
  }
  output.blanks(1);
  output.text(directionWord(entry));
  output.blanks(1);
  if (form_.version == TrcVersion::V2_0) {
    return;
  }
  output.text("-  ");  // reserved
  if (form_.version == TrcVersion::V2_1) {
    return;
  }
  if (entry.kind != EntryKind::XlData) {
    output.text("-  -  -        - - ");
    return;
  }
  // Virtual CAN network, service data type, acceptance field, and the two flags, all fixed by the identifier.
  output.hexFilled(entry.canId % 0x40, 2);
  output.blanks(1);
  output.hexFilled(1 + entry.canId % 5, 2);
  output.blanks(1);
  output.hexFilled(entry.canId * 0x1003FU, 8);
  output.text(entry.canId % 2 == 0 ? " 0 " : " 1 ");
  output.text(entry.canId % 4 < 2 ? "0 " : "1 ");
}

}  // namespace tracegen
