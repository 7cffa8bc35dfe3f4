// Reading the lines of frames.
#pragma once

#include <string_view>

#include "formats/asc/asc_message.hpp"

namespace xlatr {

// Fills the message from a frame line of a file of this version. False at the first token that can't be understood; the
// message then holds what was read up to there.
[[nodiscard]] bool parseAscFrame(std::string_view line, double version, AscMessage& message);

}  // namespace xlatr
