// Whether two traces hold the same frames, for a user to read and for programs.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "xlatr/frames.hpp"

namespace xlatr::cli {

// What the user calls a trace, and what its places are.
struct ComparedTrace {
  std::string name;
  bool placesAreRecords = false;
};

// A summary and the first `limit` differences, a line for each frame: "-" for one of the first trace, "+" for one of
// the second.
[[nodiscard]] std::string comparisonText(const ComparedTrace& first, const ComparedTrace& second,
                                         const Comparison& comparison, std::uint32_t limit);

// As docs/compare.schema.json says.
[[nodiscard]] nlohmann::ordered_json comparisonJson(const ComparedTrace& first, const ComparedTrace& second,
                                                    const Comparison& comparison, std::uint32_t limit);

}  // namespace xlatr::cli
