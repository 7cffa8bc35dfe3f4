// Frames of other programs: the Arrow C stream interface.
#pragma once

#include <cstdint>
#include <memory>

#include "frames/frame_stream.hpp"

struct ArrowArrayStream;

namespace xlatr {

// The frames of a stream of struct arrays, whose children are found by the names that arrow_export.hpp gives them, in
// any order. time_ns must be there; what lacks is 0 or null; others are ignored. Numbers may be of any integer type,
// times durations too, `kind` a number or a name, texts and data of any form that the interface has, each of them in a
// dictionary too. Takes the stream over. Raises a FrameFailure of a bad argument for what is none of this, also later
// while reading.
[[nodiscard]] std::unique_ptr<FrameSource> importArrow(ArrowArrayStream& stream);

}  // namespace xlatr
