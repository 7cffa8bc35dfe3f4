// BLF logs as a format.
#pragma once

#include "io/format.hpp"

namespace xlatr {

extern const FormatDescriptor kBlfFormat;

}  // namespace xlatr
