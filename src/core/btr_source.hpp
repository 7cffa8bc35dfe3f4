// A session of a BTR file as the source of a conversion.
#pragma once

#include <cstddef>
#include <memory>

#include "core/trace_source.hpp"
#include "formats/native/btr_info.hpp"

namespace xlatr {

// The session's index is counted from 0 and must be below the count. All sessions of a file share what is known of it,
// and each reads the file by itself.
[[nodiscard]] std::unique_ptr<TraceSource> makeBtrSource(std::shared_ptr<const BtrInfo> file, std::size_t session);

}  // namespace xlatr
