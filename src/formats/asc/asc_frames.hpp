// ASC logs on the complete way.
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
[[nodiscard]] std::span<const FrameCapacity> ascCapacities();

// Whether a file that begins like this may be an ASC log.
[[nodiscard]] bool looksLikeAsc(std::string_view start);

// The frames of a file, comments and lines that can't be understood among them.
[[nodiscard]] std::unique_ptr<FrameSource> openAscFrames(const InputSource& input);

// A file of frames. Below 8.0 the form is that of 7.0.0, from there on that of 8.1.0.
[[nodiscard]] std::unique_ptr<FrameSink> createAscFrames(const OutputTarget& target, const StreamHead& head,
                                                         const SinkSettings& settings);

}  // namespace xlatr
