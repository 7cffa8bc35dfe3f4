// What the traffic of a trace is like, for a user to read and for programs.
#pragma once

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "xlatr/frames.hpp"

namespace xlatr::cli {

// Tables of the buses and of the identifiers, with a head. `name` is what the user calls the trace. The identifiers
// have the columns that fit into `width` characters; 0 for all.
[[nodiscard]] std::string statsText(const std::string& name, const Analysis& analysis, bool utf8, std::size_t width);

// An item of docs/stats.schema.json, but for its remarks.
[[nodiscard]] nlohmann::ordered_json statsJson(const std::string& name, bool placesAreRecords,
                                               const Analysis& analysis);

}  // namespace xlatr::cli
