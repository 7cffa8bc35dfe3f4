#include "core/format_matrix.hpp"

#include <functional>
#include <numeric>

#include "io/format.hpp"

namespace xlatr {

TraceFormat formatsConvertibleFrom(TraceFormat source) {
  const auto& targets = formatOf(source).allowedTargets;
  return std::accumulate(targets.begin(), targets.end(), TraceFormat{0}, std::bit_or<>());
}

TraceFormat formatsConvertibleTo(TraceFormat targets) {
  TraceFormat sources = 0;
  for (const FormatDescriptor* candidate : formatRegistry()) {
    if ((formatsConvertibleFrom(candidate->format) & targets) == targets) {
      sources |= candidate->format;
    }
  }
  return sources;
}

}  // namespace xlatr
