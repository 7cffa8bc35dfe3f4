// What can be converted into what.
#pragma once

#include "xlatr/xlatr.h"

namespace xlatr {

// The set of formats that a source can be converted into; 0 for a value that is not exactly one flag.
[[nodiscard]] TraceFormat formatsConvertibleFrom(TraceFormat source);

// The set of formats from which every format of the set `targets` can be reached; all for an empty set.
[[nodiscard]] TraceFormat formatsConvertibleTo(TraceFormat targets);

}  // namespace xlatr
