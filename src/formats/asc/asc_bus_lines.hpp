// The lines of ASC logs that are neither data nor remote frames, on the complete way: errors, overload, statuses, error
// counters, LIN buses, and what a logger writes beside the traffic.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "formats/asc/asc_tokens.hpp"
#include "frames/frame.hpp"
#include "util/text_buffer.hpp"

namespace xlatr {

// Fills a frame, which must be like a new one, from the tokens after a line's time. Its text is a part of the line, its
// data stand in `bytes`. False, with the frame in any state, for what can't be understood.
[[nodiscard]] bool parseAscBusLine(AscTokens tokens, bool hexBase, std::vector<std::uint8_t>& bytes, Frame& frame);

// Whether the text of a line without a time begins or ends a block of a log.
[[nodiscard]] bool isAscBlockLine(std::string_view line);

// Appends the part of a line after the time, from which parseAscBusLine() makes the frame again.
void appendAscBusLine(TextBuffer& out, const Frame& frame);

// Whether there is a line that says what the attributes and the text of a frame of any kind say.
[[nodiscard]] bool hasAscLine(const Frame& frame);

}  // namespace xlatr
