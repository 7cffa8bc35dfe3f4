// BTR session files on the complete way.
#pragma once

#include <cstddef>
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
[[nodiscard]] std::span<const FrameCapacity> btrCapacities();

// Whether a file begins with a directory of sessions, the first of which has a date that there is.
[[nodiscard]] bool looksLikeBtr(std::string_view start);

// The frames of all sessions of a file, one after the other in the order of the directory, on the clock of the first:
// its start is that of the stream. Where there are several, an event says where each begins: "session 2 started
// 2024-03-01 08:15:30.25". A session whose start is no date follows directly on what was before. Places count the slots
// that hold something, ticks of the clock included.
[[nodiscard]] std::unique_ptr<FrameSource> openBtrFrames(const InputSource& input);

// The frames of the session at that place of the directory, counted from 0, on its own clock. Null when there is none.
[[nodiscard]] std::unique_ptr<FrameSource> openBtrSessionFrames(const InputSource& input, std::size_t place);

// A file of frames, in one session. Frames must come in the order of their buses' times: see FrameCapacity::stepBackNs.
[[nodiscard]] std::unique_ptr<FrameSink> createBtrFrames(const OutputTarget& target, const StreamHead& head,
                                                         const SinkSettings& settings);

}  // namespace xlatr
