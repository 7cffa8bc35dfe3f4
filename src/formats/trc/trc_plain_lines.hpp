// The lines of data frames in their plain form, which nearly all lines of a trace have.
#pragma once

#include <string_view>

#include "formats/trc/trc_columns.hpp"
#include "formats/trc/trc_version.hpp"
#include "frames/frame.hpp"
#include "frames/plain_frame.hpp"

namespace xlatr {

// Fills a frame from the line of a file of this version with these columns. Returns false for any other line, and then
// leaves the frame alone. What it takes becomes the frame that the parser of all forms would make of it, in a third of
// the time. The frame refers to `bytes`.
[[nodiscard]] bool takePlainTrcFrame(std::string_view line, const TrcVersion& version, TrcColumnSet columns,
                                     PlainFrameBytes& bytes, Frame& frame);

}  // namespace xlatr
