// An MF4 file as the source of a conversion.
#pragma once

#include <memory>

#include "core/trace_source.hpp"

namespace xlatr {

[[nodiscard]] std::unique_ptr<TraceSource> makeMdfSource(const TraceFileInfo& file);

}  // namespace xlatr
