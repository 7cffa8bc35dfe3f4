// The comment lines at the start of a TRC file.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace xlatr {

struct TrcVersion;

// A value in a header line.
enum class TrcHeaderField { Nothing, TargetPath, SourcePath, StartText, HostVersion };

struct TrcHeaderLine {
  std::string_view text;
  TrcHeaderField field = TrcHeaderField::Nothing;  // follows the text
};

// The parts of a version's header, in order.
struct TrcHeaderForm {
  bool hasKeys = true;               // $FILEVERSION and $STARTTIME
  std::string_view columnList = {};  // of $COLUMNS; empty for a version with fixed columns
  std::span<const TrcHeaderLine> head;
  std::span<const TrcHeaderLine> buses = {};  // empty for a version without a bus table
  std::span<const TrcHeaderLine> columns;     // explains the columns
};

extern const TrcHeaderForm kTrcHeader10;
extern const TrcHeaderForm kTrcHeader11;
extern const TrcHeaderForm kTrcHeader12;
extern const TrcHeaderForm kTrcHeader13;
extern const TrcHeaderForm kTrcHeader20;
extern const TrcHeaderForm kTrcHeader21;
extern const TrcHeaderForm kTrcHeader30;

// What a header says beyond the layout of its version.
struct TrcHeaderValues {
  std::string targetPath;
  std::string sourcePath;
  std::string startText;    // the start time as date text in the form of the version
  std::string startNumber;  // the start time in days since 1899-12-30
  std::string hostVersion;
  bool fromLogger = false;  // the source is a session file, whose buses are known
};

// The lines of the version's header, in order, without line ends.
[[nodiscard]] std::vector<std::string> trcHeaderLines(const TrcVersion& version, const TrcHeaderValues& values);

}  // namespace xlatr
