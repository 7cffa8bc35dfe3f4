// MF4 files as a format of conversions.
#pragma once

#include "io/format.hpp"

namespace xlatr {

extern const FormatDescriptor kMf4Format;

}  // namespace xlatr
