// The lines of data frames in their plain form, which nearly all lines of a log have.
#pragma once

#include "frames/frame.hpp"
#include "frames/plain_frame.hpp"
#include "util/plain_fields.hpp"

namespace xlatr {

// Fills a frame from the fields after the time of a line in a log with hexadecimal numbers: all but its time. Returns
// false for any other line, and then leaves the frame alone. What it takes becomes the frame that the parser of all
// forms would make of it, in a third of the time. The frame refers to `bytes`.
[[nodiscard]] bool takePlainAscFrame(PlainFields fields, PlainFrameBytes& bytes, Frame& frame);

}  // namespace xlatr
