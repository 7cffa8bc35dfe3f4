// BTRC traces as a format of conversions.
#pragma once

#include "io/format.hpp"

namespace xlatr {

extern const FormatDescriptor kBtrcFormat;

}  // namespace xlatr
