// What a table of version 2.0 says of its trace, in the text of its first row, which is a comment: so the table stays
// rectangular, has the same columns whatever it holds, and a program that asks for frames of a kind never meets it.
#pragma once

#include <string_view>

#include "frames/frame_stream.hpp"
#include "util/text_buffer.hpp"

namespace xlatr {

// Appends " xlatr: table version=2.0 start=2021-07-26T08:00:00.000000001+02:00 producer=...". What the head does not
// say is left out.
void appendCsvTableHead(TextBuffer& out, const StreamHead& head);

// Reads it into a head. False, with the head as it was, for any other text.
[[nodiscard]] bool readCsvTableHead(std::string_view text, StreamHead& head);

}  // namespace xlatr
