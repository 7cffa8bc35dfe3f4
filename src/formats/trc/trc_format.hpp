// TRC traces as a format of conversions.
#pragma once

#include "io/format.hpp"

namespace xlatr {

extern const FormatDescriptor kTrcFormat;

}  // namespace xlatr
