// A BTRC trace as the source of a conversion.
#pragma once

#include <memory>

#include "core/trace_source.hpp"

namespace xlatr {

[[nodiscard]] std::unique_ptr<TraceSource> makeBtrcSource(const TraceFileInfo& file);

}  // namespace xlatr
