// What a conversion ends with when there is no memory left.
#pragma once

namespace xlatr {

// Short enough that a string keeps it in itself.
inline constexpr char kOutOfMemory[] = "Out of memory";

}  // namespace xlatr
