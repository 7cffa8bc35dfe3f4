// BLF logs on the complete way.
#pragma once

#include <memory>
#include <string>

#include "frames/frame_stream.hpp"

namespace xlatr {

// The frames of a log, read in this process. Whatever stands in the log: what is whole is read, what is not is in the
// account, and memory is bounded.
[[nodiscard]] std::unique_ptr<FrameSource> openBlfFrames(const std::string& path);

}  // namespace xlatr
