// Reading one TRC line.
#pragma once

#include <string_view>

#include "formats/trc/trc_message.hpp"
#include "formats/trc/trc_version.hpp"

namespace xlatr {

// Fills `message`, which is fresh but for its column set and parsing text, from the line of a file of this version, and
// sets its valid flag when the line was understood. Raises nothing and keeps nothing of `line`.
void parseTrcLine(std::string_view line, TrcVersion version, BrixMessage& message);

}  // namespace xlatr
