#include "io/format_table.hpp"

#include <algorithm>
#include <array>

#include "util/paths.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

constexpr std::array kTrcVersions = {1.0, 1.1, 1.2, 1.3, 2.0, 2.1, 3.0};
constexpr std::array kBtrVersions = {1.0, 2.0, 3.0};
constexpr std::array kAscVersions = {0.0, 7.0, 8.0, 9.0, 10.0, 11.0, 12.0, 13.0, 14.0, 15.0};
constexpr std::array kLinVersions = {1.0, 1.1, 1.2};
constexpr std::array kCsvVersions = {1.0};
constexpr std::array kBtrcVersions = {1.0};
constexpr std::array kMf4Versions = {4.1, 4.11, 4.2};
constexpr std::array kBlfVersions = {0.0};

constexpr std::array<TraceFormat, 6> kTrcTargets = {XLATR_FORMAT_TRC, XLATR_FORMAT_ASC,  XLATR_FORMAT_CSV,
                                                    XLATR_FORMAT_BTR, XLATR_FORMAT_BTRC, XLATR_FORMAT_MF4};
constexpr std::array<TraceFormat, 3> kBtrTargets = {XLATR_FORMAT_TRC, XLATR_FORMAT_ASC, XLATR_FORMAT_CSV};
constexpr std::array<TraceFormat, 2> kAscTargets = {XLATR_FORMAT_TRC, XLATR_FORMAT_CSV};
constexpr std::array<TraceFormat, 2> kLinTargets = {XLATR_FORMAT_ASC, XLATR_FORMAT_CSV};
constexpr std::array<TraceFormat, 3> kBtrcTargets = {XLATR_FORMAT_TRC, XLATR_FORMAT_ASC, XLATR_FORMAT_CSV};
constexpr std::array<TraceFormat, 1> kMf4Targets = {XLATR_FORMAT_TRC};
constexpr std::array<TraceFormat, 3> kBlfTargets = {XLATR_FORMAT_CSV, XLATR_FORMAT_TRC, XLATR_FORMAT_LIN};

constexpr FormatRow kNoFormat = {XLATR_FORMAT_NONE, "", "", "", -1.0, -1.0, {}, {}, false};

// "CANalyser-ASC" and "CANalyzer ASCII logging file" differ in a letter; users know both names as they stand.
constexpr std::array kFormats = {
    FormatRow{XLATR_FORMAT_TRC, ".trc", "BRIX-Trace", "BRIX trace file", 3.0, 1.0, kTrcVersions, kTrcTargets, true},
    FormatRow{XLATR_FORMAT_BTR, ".btr", "BRIX-Bridge", "BRIX-Bridge Pro - Binary trace file", 3.0, 1.0, kBtrVersions,
              kBtrTargets, true},
    FormatRow{XLATR_FORMAT_ASC, ".asc", "CANalyser-ASC", "CANalyzer ASCII logging file", 15.0, 7.0, kAscVersions,
              kAscTargets, true},
    FormatRow{XLATR_FORMAT_LIN, ".ltrc", "KORL-Trace", "KORL trace file", 1.2, 1.0, kLinVersions, kLinTargets, false},
    FormatRow{XLATR_FORMAT_CSV, ".csv", "CSV-File", "Character-separated values", 1.0, 1.0, kCsvVersions, {}, true},
    FormatRow{XLATR_FORMAT_BTRC, ".btrc", "ZELK binary trace", "ZELK binary trace file", 1.0, 1.0, kBtrcVersions,
              kBtrcTargets, true},
    FormatRow{XLATR_FORMAT_MF4, ".mf4", "ASAM MDF", "ASAM Measurement Data Format", 4.2, 4.1, kMf4Versions, kMf4Targets,
              true},
    // The versions of BLF are the external converter's to tell; without one they are 0.
    FormatRow{XLATR_FORMAT_BLF, ".blf", "BLF", "Vector BLF trace file", 0.0, 0.0, kBlfVersions, kBlfTargets, false},
};

}  // namespace

std::span<const FormatRow> formatTable() {
  return kFormats;
}

const FormatRow& formatRow(TraceFormat format) {
  const auto row = std::ranges::find(kFormats, format, &FormatRow::format);
  return row == kFormats.end() ? kNoFormat : *row;
}

TraceFormat normalizeFormat(TraceFormat format) {
  return formatRow(format).format;
}

TraceFormat formatOfExtension(std::string_view extension) {
  const auto row = std::ranges::find_if(
      kFormats, [extension](const FormatRow& candidate) { return equalsIgnoreCase(candidate.extension, extension); });
  return row == kFormats.end() ? XLATR_FORMAT_NONE : row->format;
}

TraceFormat formatOfPath(std::string_view path) {
  return formatOfExtension(getFileExtension(path));
}

}  // namespace xlatr
