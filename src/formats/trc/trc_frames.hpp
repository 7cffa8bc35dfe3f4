// TRC on the complete way.
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
[[nodiscard]] std::span<const FrameCapacity> trcCapacities();

// Whether a file begins like a TRC trace: with a header of a version that there is. LIN traces have the same keys, but
// tell of checksums.
[[nodiscard]] bool looksLikeTrc(std::string_view start);

// The frames of a file, comments and lines that can't be understood among them.
[[nodiscard]] std::unique_ptr<FrameSource> openTrcFrames(const InputSource& input);

// A file of frames.
[[nodiscard]] std::unique_ptr<FrameSink> createTrcFrames(const OutputTarget& target, const StreamHead& head,
                                                         const SinkSettings& settings);

}  // namespace xlatr
