// Printing one ASC line.
#pragma once

#include "formats/asc/asc_message.hpp"
#include "util/text_buffer.hpp"

namespace xlatr {

// Append the message as a line, without line end, in the form of version 7.0.0 or 8.1.0. Nothing is appended for a
// message that has no such form: one of unknown type, and in 7.0.0 a CAN FD frame or one of more than eight bytes.
void appendAscLine7(TextBuffer& out, const AscMessage& message);
void appendAscLine8(TextBuffer& out, const AscMessage& message);

// The eight binary digits that an error frame has instead of data: two of its type, one of its direction, five of its
// position. A message of five bytes has the type in its first byte, a shorter one as its identifier.
void appendAscErrorBits(TextBuffer& out, const AscMessage& message);

}  // namespace xlatr
