// BLF logs on the complete way.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "frames/frame_stream.hpp"
#include "io/input_file.hpp"

namespace xlatr {

// Whether a file begins like a log.
[[nodiscard]] bool looksLikeBlf(std::string_view start);

// The frames of a log, read in this process. Whatever stands in the log: what is whole is read, what is not is in the
// account, and memory is bounded.
[[nodiscard]] std::unique_ptr<FrameSource> openBlfFrames(const InputSource& input);

}  // namespace xlatr
