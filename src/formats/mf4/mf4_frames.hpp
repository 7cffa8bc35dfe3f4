// MF4 on the complete way.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "frames/frame_capacity.hpp"
#include "frames/frame_sink.hpp"
#include "frames/frame_stream.hpp"
#include "io/input_file.hpp"
#include "io/output_target.hpp"

namespace xlatr {

// What each version can hold, in the order of the versions.
[[nodiscard]] std::span<const FrameCapacity> mf4Capacities();

// Whether a file may be one, by its first bytes.
[[nodiscard]] bool looksLikeMf4(std::string_view start);

// The frames of all groups of a file in the order of their times.
[[nodiscard]] std::unique_ptr<FrameSource> openMf4Frames(const InputSource& input);

// A file of frames.
[[nodiscard]] std::unique_ptr<FrameSink> createMf4Frames(const OutputTarget& target, const StreamHead& head,
                                                         const SinkSettings& settings);

}  // namespace xlatr
