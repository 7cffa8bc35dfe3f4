// How an AscMessage reads a line.
#include <algorithm>
#include <array>

#include "formats/asc/asc_event_marks.hpp"
#include "formats/asc/asc_frame_parser.hpp"
#include "formats/asc/asc_message.hpp"
#include "formats/asc/asc_status_parser.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

using LineParser = bool (*)(std::string_view, AscMessage&);

// A kind of line that is not a frame. It has all of the marks and none of those in `without`; both are in upper case.
// An empty mark does not count.
struct MarkedLine {
  std::array<std::string_view, 3> marks;
  std::array<std::string_view, 2> without = {};
  AscLineKind kind = AscLineKind::Unclassified;
  LineParser parse = nullptr;  // null if there is nothing more to read
};

constexpr MarkedLine named(std::string_view mark, AscLineKind kind) {
  return {.marks = {mark}, .kind = kind};
}

constexpr std::string_view kCan = " CAN ";
constexpr std::string_view kCanFd = "CANFD";
constexpr std::string_view kStatus = "STATUS:";
constexpr std::string_view kMakersMark = "(ZELKWORKS)";
constexpr std::string_view kCounters = "ERROR COUNTER CHANGE (ZELKWORKS)";
constexpr std::string_view kErrorFrame = "ERRORFRAME";
constexpr std::string_view kEcc = "ECC";

// The first one that fits a line and whose parser accepts it decides what the line is.
constexpr std::array kMarkedLines = {
    named("LOG TRIGGER EVENT", AscLineKind::LogTriggerEvent),
    named("TRIGGEREVENT", AscLineKind::TriggerEvent),
    named("LOG DIRECT START", AscLineKind::LogDirectStart),
    named("LOG DIRECT STOP", AscLineKind::LogDirectStop),
    named("BEGIN TRIGGERBLOCK", AscLineKind::BlockBegin),
    named("END TRIGGERBLOCK", AscLineKind::BlockEnd),
    named(":=", AscLineKind::EnvironmentVariable),
    named("SV:", AscLineKind::SystemVariable),
    named("::", AscLineKind::Macro),
    named("GPS DEVICE", AscLineKind::GpsDevice),
    named("GPS-DEVICE", AscLineKind::GpsDevice),
    named("COMMENT:", AscLineKind::Comment),
    named("GMGROUP", AscLineKind::Marker),
    named("GMMARKER", AscLineKind::Marker),
    named("GMDESCRIPTION", AscLineKind::Marker),
    named("TFS:", AscLineKind::TestFeatureSet),
    named("STATISTIC:", AscLineKind::Statistic),
    named("OVERLOADFRAME", AscLineKind::OverloadFrame),
    MarkedLine{.marks = {" CANFD ", kErrorFrame}, .kind = AscLineKind::FdErrorFrame},

    MarkedLine{.marks = {kCan, kStatus, kCounters}, .parse = parseAscErrorCounters},
    MarkedLine{.marks = {kCan, kStatus, kMakersMark}, .without = {kCounters}, .parse = parseAscStatusText},
    // A status of another maker is not a frame, whatever else it looks like.
    MarkedLine{.marks = {kCan, kStatus}, .without = {kMakersMark}},

    MarkedLine{.marks = {kErrorFrame, kEcc}, .without = {kCanFd}, .parse = parseAscErrorEcc},
    MarkedLine{.marks = {kErrorFrame, kEcc, "FLAGS"}, .without = {kCanFd}, .parse = parseAscErrorFlags},
    // An error frame without a bit pattern holds nothing that could be converted.
    MarkedLine{.marks = {kErrorFrame}, .without = {kCanFd, kEcc}},
};

bool fits(const MarkedLine& kind, std::string_view line) {
  return std::ranges::all_of(kind.marks, [&](std::string_view mark) { return containsIgnoreCase(line, mark); }) &&
         std::ranges::none_of(kind.without,
                              [&](std::string_view mark) { return !mark.empty() && containsIgnoreCase(line, mark); });
}

// Returns whether the line needs no further look.
bool parseMarkedLine(std::string_view line, AscMessage& message) {
  for (const MarkedLine& kind : kMarkedLines) {
    if (!fits(kind, line)) {
      continue;
    }
    if (kind.parse == nullptr) {
      message.lineKind = kind.kind;
      return true;
    }
    if (kind.parse(line, message)) {
      return true;
    }
  }
  return false;
}

// All marks contain one of these characters. The loop has no early exit, so that the compiler can look at many
// characters at a time.
bool hasMarkCharacter(std::string_view line) {
  unsigned found = 0;
  for (const char character : line) {
    const char lower = static_cast<char>(character | 0x20);
    found |= static_cast<unsigned>(character == ':') | static_cast<unsigned>(lower == 'g') |
             static_cast<unsigned>(lower == 'm');
  }
  return found != 0;
}

// Whether the line can hold any of the marks: all of these contain a colon, "GG", "GP", "GM", "G " or the "AM" of
// "FRAME". Nearly all lines are frames and contain none of these, not even those with a "Length" after their data. A
// wrong yes does no harm.
bool mayBeMarked(std::string_view line) {
  if (!hasMarkCharacter(line)) {
    return false;
  }
  char last = '\0';
  for (const char original : line) {
    const char character = toUpperAscii(original);
    const bool inPair = (character == 'M' && (last == 'A' || last == 'G')) ||
                        (last == 'G' && (character == 'G' || character == 'P' || character == ' '));
    if (character == ':' || inPair) {
      return true;
    }
    last = character;
  }
  return false;
}

}  // namespace

bool hasAscEventMark(std::string_view line) {
  return mayBeMarked(line) && std::ranges::any_of(kMarkedLines, [line](const MarkedLine& kind) {
           return kind.kind >= AscLineKind::Statistic && kind.kind != AscLineKind::OverloadFrame &&
                  kind.kind != AscLineKind::FdErrorFrame && fits(kind, line);
         });
}

void AscMessage::parseLine(std::string_view line, double version) {
  if (line.empty()) {
    return;
  }
  parsingText.assign(line);
  fileVersion = version;
  if (mayBeMarked(parsingText) && parseMarkedLine(parsingText, *this)) {
    return;
  }
  if (!parseAscFrame(parsingText, version, *this)) {
    valid = false;
    symbolicId = false;
  }
}

}  // namespace xlatr
