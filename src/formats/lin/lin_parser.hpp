// Reading one line.
#pragma once

#include <string_view>

#include "formats/lin/lin_message.hpp"

namespace xlatr {

// Fills `message`, which is fresh but for its parsing text, from a line and sets its valid flag when the line was
// understood. Raises nothing and keeps nothing of `line`.
void parseLinLine(std::string_view line, KorlMessage& message);

}  // namespace xlatr
