// What the library knows of each trace format.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "io/input_file.hpp"
#include "io/output_target.hpp"
#include "xlatr/xlatr.h"

namespace xlatr {

class FrameSink;
class FrameSource;
class ITraceWriter;
class TraceFileInfo;
class TraceSource;
struct FrameCapacity;
struct SinkSettings;
struct StreamHead;

// The options of a conversion that only some writers know.
struct WriterSettings {
  std::string separator = ";";  // of a CSV target
  bool zipped = false;          // of an MF4 target
  bool sorted = false;          // of an MF4 target
};

// The sessions of a file that a conversion is asked for.
struct SessionSelection {
  bool all = true;
  std::vector<std::uint32_t> places = {};  // in the file, counted from 0; ignored if `all` is set

  [[nodiscard]] bool contains(std::size_t place) const;
};

// A source of a conversion, and the target that it gets.
struct FormatSource {
  std::unique_ptr<TraceSource> source;
  std::optional<std::uint32_t> session = {};  // its number in the name of a target of its own
};

// Which bus numbers the programs that show a format's traces know, counted from 1.
struct BusLimit {
  std::uint32_t highest;
  std::string_view warning;  // for the user of a target with higher ones
};

// A format: its names, its versions, and how a conversion reads and writes it. Each is a constant in the folder of its
// format (`formats/trc/trc_format.cpp`), initialised before any code runs, and says only what applies to it.
struct FormatDescriptor {
  TraceFormat format = XLATR_FORMAT_NONE;
  std::string_view extension = {};  // with its point
  std::string_view shortName = {};
  std::string_view description = {};

  double currentVersion = -1.0;  // what a writer writes when no version is asked for
  double lowestVersion = -1.0;
  std::span<const double> supportedVersions = {};
  // Asks the program beside the library that knows the newest version; null for formats without such a program.
  double (*askCurrentVersion)() = nullptr;

  std::span<const TraceFormat> allowedTargets = {};  // in the order in which they are offered

  // Whether a target of this version has no bus column, so that it becomes one file per bus. Null if none does.
  bool (*splitsByBus)(double version) = nullptr;
  std::optional<BusLimit> busLimit = {};
  // Precedes the session's number in the name of a session's target. Empty for a format whose file becomes one target.
  std::string_view sessionMarker = {};

  // The sources of a file: one, or one per selected session, in the order of the file. Called on the thread that starts
  // the conversion. Null for a format that no conversion reads.
  std::vector<FormatSource> (*makeSources)(const TraceFileInfo& file, const SessionSelection& sessions) = nullptr;
  // Null for a format that no conversion writes.
  std::unique_ptr<ITraceWriter> (*makeWriter)(const WriterSettings& settings) = nullptr;

  // The complete way: what the files of each version that it writes can hold, the frames of a file, and a file of
  // frames. Null for what a format does not have.
  std::span<const FrameCapacity> (*frameCapacities)() = nullptr;
  // Whether its files are read from their first byte to their last one, so that they may come from a pipe.
  bool readsInOrder = false;
  // The same of files that are written, so that they may go into a pipe.
  bool writesInOrder = false;
  // Whether a file may be of the format, by its first 4 KiB.
  bool (*recognises)(std::string_view start) = nullptr;
  std::unique_ptr<FrameSource> (*openFrames)(const InputSource& input) = nullptr;
  std::unique_ptr<FrameSink> (*createFrames)(const OutputTarget& target, const StreamHead& head,
                                             const SinkSettings& settings) = nullptr;

  [[nodiscard]] bool isSplitTarget(double version) const { return splitsByBus != nullptr && splitsByBus(version); }
};

// All formats in the order of their flags. Their list is in formats/format_registry.cpp.
[[nodiscard]] std::span<const FormatDescriptor* const> formatRegistry();

// The format of a flag. A value that is not exactly one flag gets "no format": empty texts and lists, the versions
// -1.0.
[[nodiscard]] const FormatDescriptor& formatOf(TraceFormat flag);

// The flag itself, or XLATR_FORMAT_NONE for a value that is not exactly one flag.
[[nodiscard]] TraceFormat normalizeFormat(TraceFormat flag);

// The format whose extension (with its point, in any case) this is, or XLATR_FORMAT_NONE.
[[nodiscard]] TraceFormat formatOfExtension(std::string_view extension);

// The format that a path's extension names, or XLATR_FORMAT_NONE.
[[nodiscard]] TraceFormat formatOfPath(std::string_view path);

}  // namespace xlatr
