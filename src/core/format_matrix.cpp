#include "core/format_matrix.hpp"

#include <functional>
#include <numeric>

#include "io/format_table.hpp"

namespace xlatr {

TraceFormat formatsConvertibleFrom(TraceFormat source) {
  const auto& targets = formatRow(source).allowedTargets;
  return std::accumulate(targets.begin(), targets.end(), TraceFormat{0}, std::bit_or<>());
}

TraceFormat formatsConvertibleTo(TraceFormat targets) {
  TraceFormat sources = 0;
  for (const FormatRow& row : formatTable()) {
    if ((formatsConvertibleFrom(row.format) & targets) == targets) {
      sources |= row.format;
    }
  }
  return sources;
}

}  // namespace xlatr
