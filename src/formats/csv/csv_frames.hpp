// CSV tables on the complete way.
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

// What each version can hold. 2.0 is on the complete way alone.
[[nodiscard]] std::span<const FrameCapacity> csvCapacities();

// Whether a file that starts like this is a table of any version: its column line is there.
[[nodiscard]] bool looksLikeCsv(std::string_view start);

// The frames of a table of any version, comments and rows that can't be understood among them. The column line tells
// which it is; without one each line is a row that can't be understood.
[[nodiscard]] std::unique_ptr<FrameSource> openCsvFrames(const InputSource& input);

// A table of frames. Version 1.0 unless 2.0 is asked for.
[[nodiscard]] std::unique_ptr<FrameSink> createCsvFrames(const OutputTarget& target, const StreamHead& head,
                                                         const SinkSettings& settings);

}  // namespace xlatr
