// Printing one line.
#pragma once

#include <cstdint>

#include "formats/lin/lin_message.hpp"
#include "util/text_buffer.hpp"

namespace xlatr {

// Appends a valid message as the line of this number, without line end. Below version 1.2, which has no bus events, one
// is a comment.
void appendLinLine(TextBuffer& out, const KorlMessage& message, double version, std::uint64_t number);

}  // namespace xlatr
