// Tables of version 2.0 on the complete way.
#pragma once

#include <memory>
#include <string>

#include "frames/frame_capacity.hpp"
#include "frames/frame_sink.hpp"
#include "frames/frame_stream.hpp"
#include "io/input_file.hpp"
#include "io/output_target.hpp"

namespace xlatr {

// The frames of a file whose first line is a header row.
[[nodiscard]] std::unique_ptr<FrameSource> openCsvTable(const InputSource& input);

[[nodiscard]] std::unique_ptr<FrameSink> createCsvTable(const OutputTarget& target, const StreamHead& head,
                                                        const FrameCapacity& capacity);

}  // namespace xlatr
