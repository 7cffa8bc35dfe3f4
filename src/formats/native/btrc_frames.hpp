// BTRC traces on the complete way.
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
[[nodiscard]] std::span<const FrameCapacity> btrcCapacities();

// Whether a file begins with the record that a BTRC trace begins with.
[[nodiscard]] bool looksLikeBtrc(std::string_view start);

// The frames of a file. Places count its records, those that order the file included: info, calibration, totals and
// filling are no frames.
[[nodiscard]] std::unique_ptr<FrameSource> openBtrcFrames(const InputSource& input);

// A file of frames.
[[nodiscard]] std::unique_ptr<FrameSink> createBtrcFrames(const OutputTarget& target, const StreamHead& head,
                                                          const SinkSettings& settings);

}  // namespace xlatr
