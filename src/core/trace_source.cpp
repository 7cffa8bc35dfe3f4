#include "core/trace_source.hpp"

namespace xlatr {

TraceSource::~TraceSource() = default;

void TraceSource::begin(ITraceWriter& /*writer*/, std::string& /*message*/) {}

}  // namespace xlatr
