// The makers that most formats put into their descriptor.
#pragma once

#include <memory>
#include <vector>

#include "io/format.hpp"
#include "io/trace_info.hpp"
#include "io/trace_source.hpp"
#include "io/trace_writer.hpp"

namespace xlatr {

// Of a format whose file is one source.
template <class Source>
std::vector<FormatSource> makeOneSource(const TraceFileInfo& file, const SessionSelection& /*sessions*/) {
  std::vector<FormatSource> sources;
  sources.push_back({std::make_unique<Source>(file)});
  return sources;
}

// Of a format whose writer has no settings.
template <class Writer>
std::unique_ptr<ITraceWriter> makePlainWriter(const WriterSettings& /*settings*/) {
  return std::make_unique<Writer>();
}

}  // namespace xlatr
