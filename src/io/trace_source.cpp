#include "io/trace_source.hpp"

namespace xlatr {

TraceSource::~TraceSource() = default;

void TraceSource::setTarget(const TargetKind& /*target*/) {}

void TraceSource::begin(ITraceWriter& /*writer*/, std::string& /*message*/) {}

}  // namespace xlatr
