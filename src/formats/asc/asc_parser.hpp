// Reading one ASC line.
#pragma once

#include <string_view>

#include "formats/asc/asc_message.hpp"

namespace xlatr {

// Fills `message`, which is fresh but for its base, parsing text and file version, from the line of a file of this
// version. Raises std::out_of_range for a line that is too short for its shape and nothing else, and keeps nothing of
// `line`.
void parseAscLine(std::string_view line, double version, AscMessage& message);

}  // namespace xlatr
