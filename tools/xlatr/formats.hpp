// What the program knows of the formats: it asks the library for all of it, by flag.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "xlatr/xlatr.h"

namespace xlatr::cli {

// One of the recordings that a btr file holds.
struct TraceSession {
  std::uint32_t index;    // counted from 1, as --session and file names do
  double startDays;       // as in TraceHeader
  std::uint32_t sectors;  // of 512 bytes; 0 when its end could not be found
  bool circular;          // the recorder overwrote the oldest sectors
};

// What the header of a trace states.
struct TraceHeader {
  bool valid;        // whether the file is a trace of its format that the library reads
  double version;    // 0.0 when the header states none
  double startDays;  // days since 1899-12-30; 0.0 when the header states none
  std::optional<std::vector<TraceSession>> sessions = {};  // of a file that is made of sessions
};

// All flags that the library has an extension for, ascending.
[[nodiscard]] const std::vector<TraceFormat>& allFormats();

// The flags of a set, ascending.
[[nodiscard]] std::vector<TraceFormat> formatsOf(TraceFormat set);

// The set of formats that a conversion can have as its target.
[[nodiscard]] TraceFormat targetFormats();

// ".trc" and "trc"; the second is the name of a format in options, output and JSON.
[[nodiscard]] std::string formatExtension(TraceFormat format);
[[nodiscard]] std::string formatName(TraceFormat format);
[[nodiscard]] std::string formatDescription(TraceFormat format);

// "trc, asc" and ".trc, .asc": the names and the extensions of a set, for messages.
[[nodiscard]] std::string nameList(TraceFormat set);
[[nodiscard]] std::string extensionList(TraceFormat set);

// The format of a name or an extension in any case ("trc", ".TRC", "lin"); XLATR_FORMAT_NONE for any other text.
[[nodiscard]] TraceFormat formatFromName(std::string_view name);

// The format of a file that exists, from its extension; XLATR_FORMAT_NONE for any other path.
[[nodiscard]] TraceFormat formatOfFile(const std::string& path);

// The formats that the complete way writes.
[[nodiscard]] TraceFormat writtenFormats();

// The extension of a path's last piece, with its point.
[[nodiscard]] std::string extensionOf(const std::string& path);

// Whether a conversion can have the format as its source, or as its target.
[[nodiscard]] bool isConversionSource(TraceFormat format);
[[nodiscard]] bool isConversionTarget(TraceFormat format);

// The file versions that a target of the format can have, ascending; none if the format is not a target.
[[nodiscard]] std::vector<double> formatVersions(TraceFormat format);

// Reads the header of a file. Nothing when the library offers no information object for the format.
[[nodiscard]] std::optional<TraceHeader> readTraceHeader(TraceFormat format, const std::string& path);

// Why the file can't be converted although its format can: empty when it can. Nothing for a format whose files have no
// such reason.
[[nodiscard]] std::optional<std::string> reasonAgainstConversion(TraceFormat format, const std::string& path);

}  // namespace xlatr::cli
