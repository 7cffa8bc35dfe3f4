// The comment lines at the start of a TRC file.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "formats/trc/trc_version.hpp"

namespace xlatr {

// What a header says beyond the layout of its version.
struct TrcHeaderValues {
  std::string targetPath;
  std::string sourcePath;
  std::string startText;    // the start time as date text in the form of the version
  std::string startNumber;  // the start time in days since 1899-12-30
  std::string hostVersion;
  bool fromLogger = false;  // the source is a session file, whose buses are known
};

// The version whose header a target version gets: what it prints as with one decimal, or none.
[[nodiscard]] std::optional<TrcVersion> trcHeaderVersion(double targetVersion);

// Whether the version's header shows the start time with microseconds.
[[nodiscard]] constexpr bool showsMicroseconds(TrcVersion version) {
  return version >= TrcVersion::V2_0;
}

// The lines of the version's header, in order, without line ends.
[[nodiscard]] std::vector<std::string> trcHeaderLines(TrcVersion version, const TrcHeaderValues& values);

}  // namespace xlatr
