// Who reads and who writes each format in a conversion: the one table to which a new format adds its row.
#pragma once

#include <memory>
#include <span>
#include <string>

#include "core/trace_source.hpp"
#include "io/trace_writer.hpp"

namespace xlatr {

// The options of a conversion that only some writers know.
struct WriterSettings {
  std::string separator = ";";  // of a CSV target
  bool zipped = false;          // of an MF4 target
  bool sorted = false;          // of an MF4 target
};

struct FormatFactory {
  TraceFormat format;
  // Both null where the format is not read or not written in a conversion.
  std::unique_ptr<TraceSource> (*makeSource)(const TraceFileInfo& file);
  std::unique_ptr<ITraceWriter> (*makeWriter)(const WriterSettings& settings);
};

using FormatFactories = std::span<const FormatFactory>;

// The formats that the library itself reads and writes.
[[nodiscard]] FormatFactories builtInFactories();

// Null when no row makes one.
[[nodiscard]] std::unique_ptr<TraceSource> makeSource(FormatFactories factories, const TraceFileInfo& file);
[[nodiscard]] std::unique_ptr<ITraceWriter> makeWriter(FormatFactories factories, TraceFormat format,
                                                       const WriterSettings& settings);

}  // namespace xlatr
