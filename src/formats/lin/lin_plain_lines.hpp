// The lines of frames in their plain form, which nearly all lines of a trace have.
#pragma once

#include <string_view>

#include "frames/frame.hpp"
#include "frames/plain_frame.hpp"

namespace xlatr {

// Fills a frame, which is like a new one, from a line. Returns false for any other line, and then leaves the frame
// alone. What it takes becomes the frame that the parser of all forms would make of it, in less time. The frame refers
// to `bytes`.
[[nodiscard]] bool takePlainLinFrame(std::string_view line, PlainFrameBytes& bytes, Frame& frame);

}  // namespace xlatr
