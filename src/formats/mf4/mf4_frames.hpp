// MF4 on the complete way.
#pragma once

#include <memory>
#include <span>
#include <string>

#include "frames/frame_capacity.hpp"
#include "frames/frame_sink.hpp"
#include "frames/frame_stream.hpp"

namespace xlatr {

// The frames of all groups of a file in the order of their times.
[[nodiscard]] std::unique_ptr<FrameSource> openMf4Frames(const std::string& path);

}  // namespace xlatr
