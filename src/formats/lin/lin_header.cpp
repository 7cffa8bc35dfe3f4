#include "formats/lin/lin_header.hpp"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include "util/render.hpp"

namespace xlatr {
namespace {

// Some lines are misspelt as in all existing traces.
constexpr std::array<std::string_view, 26> kDescription = {
    ";   Direction description :",
    ";   ~~~~~~~~~~~~~~~~~~",
    ";     Pub = Publisher Frame",
    ";     Sub = Subscriber Frame",
    ";     SubAL = Subscriber Auto Length Frame",
    ";",
    ";   Checksum Type description :",
    ";   ~~~~~~~~~~~~~~~~~~",
    ";     CL = Classic",
    ";     EH = Enhanced",
    ";     AU = Auto",
    ";",
    ";   Error Code description :",
    ";   ~~~~~~~~~~~~~~~~~~",
    ";     CK = Checksum Error",
    ";     GS = GroundShort Error",
    ";     P0 = IdParityBit0 Error",
    ";     P1 = IdParityBit1 Error",
    ";     IS = InconsistentSynch Error",
    ";     SR = SlaveNOtResponding Error",
    ";     SD = SlotDelay Error",
    ";     TO = Timeout Error",
    ";     VS = VBatShort Error",
    ";",
    "; Columns decription :",
    "; ~~~~~~~~~~~~~~~~~~~~",
};

// What follows the text in a line of columns.
enum class Suffix { Nothing, BusEvent, Hexadecimal };

struct ColumnLine {
  std::string_view text;
  Suffix suffix = Suffix::Nothing;
};

constexpr std::array kColumns = {
    ColumnLine{";   +Frame Number"},
    ColumnLine{";   |           +Timestamp (microseconds)"},
    ColumnLine{";   |           |           +Direction"},
    ColumnLine{";   |           |           |    +Frame - ID(hex)"},
    ColumnLine{";   |           |           |    |   +Frame Length"},
    ColumnLine{";   |           |           |    |   |   +Data bytes(hex)", Suffix::BusEvent},
    ColumnLine{";   |           |           |    |   |   |                       +Checksum", Suffix::Hexadecimal},
    ColumnLine{";   |           |           |    |   |   |                       |   +Checksum Type"},
    ColumnLine{";   |           |           |    |   |   |                       |   |    +Error Code"},
    ColumnLine{";   |           |           |    |   |   |                       |   |    |"},
    ColumnLine{";---+--   ------+-------  --+--  +-  +  -+ -- -- -- -- -- -- --  +-  +-  -+-----------"},
};

// What differs between the versions.
struct Layout {
  std::string_view version;
  bool statesStart;  // the start time is a number, and the date after it is for people; otherwise the date is read
  bool hasBusEvents;
  bool tellsBaseOfChecksum;
};

constexpr std::array kLayouts = {
    Layout{"1.0", false, false, false},
    Layout{"1.1", true, false, true},
    Layout{"1.2", true, true, true},
};

std::string columnLine(const ColumnLine& line, const Layout& layout) {
  std::string text(line.text);
  if (line.suffix == Suffix::BusEvent && layout.hasBusEvents) {
    text += " or Bus event";
  } else if (line.suffix == Suffix::Hexadecimal && layout.tellsBaseOfChecksum) {
    text += "(hex)";
  }
  return text;
}

}  // namespace

std::vector<std::string> linHeaderLines(double targetVersion, double startDays, const DateTime& startDate,
                                        const std::string& sourcePath) {
  constexpr int kStartNumberDigits = 15;
  const auto* const layout = std::ranges::find(kLayouts, formatFixed(targetVersion, 1), &Layout::version);
  if (layout == kLayouts.end()) {
    return {};
  }
  std::vector<std::string> lines = {
      std::string(";$FILEVERSION=").append(layout->version),
      ";$STARTTIME=" + (layout->statesStart ? formatGeneral(startDays, kStartNumberDigits) : std::string("0")),
      ";",
      ";" + sourcePath,
      ";",
      ";   Start time: " + (layout->statesStart ? startDate.toIsoLikeText() : startDate.toDottedTextSeconds()),
  };
  lines.insert(lines.end(), kDescription.begin(), kDescription.end());
  std::ranges::transform(kColumns, std::back_inserter(lines),
                         [layout](const ColumnLine& line) { return columnLine(line, *layout); });
  return lines;
}

}  // namespace xlatr
