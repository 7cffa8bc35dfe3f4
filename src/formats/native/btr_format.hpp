// BTR session files as a format of conversions.
#pragma once

#include "io/format.hpp"

namespace xlatr {

extern const FormatDescriptor kBtrFormat;

}  // namespace xlatr
