// The file versions of TRC: all that differs between them, one row per version.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "formats/trc/trc_columns.hpp"
#include "formats/trc/trc_header.hpp"
#include "formats/trc/trc_parser.hpp"
#include "formats/trc/trc_printer.hpp"
#include "messages/enumerations.hpp"

namespace xlatr {

inline constexpr std::uint32_t kTrcNoLimit = std::numeric_limits<std::uint32_t>::max();

// What the messages of a version can be.
struct TrcLimits {
  std::uint32_t length = kTrcNoLimit;      // bytes of any message
  std::uint32_t dataLength = kTrcNoLimit;  // bytes of a data frame (DT)
  bool xl = false;                         // CAN XL frames
};

struct TrcVersion {
  double number;
  const TrcHeaderForm* header;
  // What its headers announce, and what its lines have unless a header says otherwise. 0 below 2.0, where the columns
  // are fixed.
  TrcColumnSet columns = 0;
  bool busColumn;
  bool microseconds = false;  // in the start time of the header; milliseconds otherwise
  TrcLimits limits;
  TrcLineParser parse;
  TrcLinePrinter print;

  [[nodiscard]] constexpr bool isColumnBased() const { return columns != 0; }
};

inline constexpr std::array kTrcVersions = {
    TrcVersion{.number = 1.0,
               .header = &kTrcHeader10,
               .busColumn = false,
               .limits = {.length = 8},
               .parse = parseTrc10,
               .print = printTrc10},
    TrcVersion{.number = 1.1,
               .header = &kTrcHeader11,
               .busColumn = false,
               .limits = {.length = 8},
               .parse = parseTrc11,
               .print = printTrc11},
    TrcVersion{.number = 1.2,
               .header = &kTrcHeader12,
               .busColumn = true,
               .limits = {.length = 8},
               .parse = parseTrc12,
               .print = printTrc12},
    TrcVersion{.number = 1.3,
               .header = &kTrcHeader13,
               .busColumn = true,
               .limits = {},
               .parse = parseTrc13,
               .print = printTrc13},
    TrcVersion{.number = 2.0,
               .header = &kTrcHeader20,
               .columns = kTrcColumns20,
               .busColumn = false,
               .microseconds = true,
               .limits = {.dataLength = 8},
               .parse = parseTrc20,
               .print = printTrc20},
    TrcVersion{.number = 2.1,
               .header = &kTrcHeader21,
               .columns = kTrcColumns21,
               .busColumn = true,
               .microseconds = true,
               .limits = {},
               .parse = parseTrc20,
               .print = printTrc21},
    TrcVersion{.number = 3.0,
               .header = &kTrcHeader30,
               .columns = kTrcColumns30,
               .busColumn = true,
               .microseconds = true,
               .limits = {.xl = true},
               .parse = parseTrc30,
               .print = printTrc30},
};

inline constexpr std::array kTrcVersionNumbers = [] {
  std::array<double, kTrcVersions.size()> numbers{};
  std::ranges::transform(kTrcVersions, numbers.begin(), &TrcVersion::number);
  return numbers;
}();

// The version of a number, or null for a number that is not exactly one of the known ones.
[[nodiscard]] constexpr const TrcVersion* findTrcVersion(double number) {
  const auto* const found = std::ranges::find(kTrcVersions, number, &TrcVersion::number);
  return found == kTrcVersions.end() ? nullptr : found;
}

// The version whose header a target version gets: what it prints as with one decimal, or null.
[[nodiscard]] const TrcVersion* findTrcHeaderVersion(double targetVersion);

// Whether the headers of files of this version, known or not, list columns.
[[nodiscard]] bool listsTrcColumns(double fileVersion);

// Whether a target of this version has no bus column, so that it becomes one file per bus.
[[nodiscard]] bool splitsTrcByBus(double targetVersion);

// Whether a valid message of these properties can stand in a file of the version. `columnBased` is the field of a
// TRC message, and true for messages of other formats.
[[nodiscard]] bool canStandInTrc(const TrcVersion& version, std::uint32_t length, MessageType type, MessageKind kind,
                                 bool columnBased);

}  // namespace xlatr
