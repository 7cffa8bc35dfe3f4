// Reading the lines of frames.
#pragma once

#include <string_view>

#include "formats/asc/asc_message.hpp"
#include "formats/asc/asc_tokens.hpp"

namespace xlatr {

// Fills the message from a frame line of a file of this version. False at the first token that can't be understood; the
// message then holds what was read up to there.
[[nodiscard]] bool parseAscFrame(std::string_view line, double version, AscMessage& message);

// The same on the complete way, from the tokens after the time. The remains of the tokens then have the DLC.
[[nodiscard]] bool parseAscFrameOfAnyVersion(AscTokens& tokens, double version, AscMessage& message);

}  // namespace xlatr
