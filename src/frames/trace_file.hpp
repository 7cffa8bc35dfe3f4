// Traces whose format nobody has told yet.
#pragma once

#include <memory>
#include <string>

#include "frames/frame_sink.hpp"
#include "frames/frame_stream.hpp"
#include "io/format.hpp"
#include "io/input_file.hpp"
#include "io/output_target.hpp"
#include "xlatr/xlatr.h"

namespace xlatr {

// The format of a file by its first bytes; the extension only breaks ties, and decides for an empty file. Raises a
// FrameFailure that says what the file looks like if it is none of ours.
[[nodiscard]] const FormatDescriptor& formatOfTrace(const InputSource& input);

// The frames of a trace, in this format or in the one that it has. Raises a FrameFailure for a missing file too, and
// for bytes without a size in a format that is not read in order.
[[nodiscard]] std::unique_ptr<FrameSource> openTrace(const InputSource& input, TraceFormat format = XLATR_FORMAT_NONE);

// The format of a trace that is to be written: this one, or the one that the path's extension names. Raises a
// FrameFailure for a format that is not written and for a version that it doesn't have; 0.0 is any.
[[nodiscard]] TraceFormat writableFormat(const std::string& path, TraceFormat format, double version);

// A new trace of this format, or of the one that the target's extension names. Raises what writableFormat raises, and a
// FrameFailure for bytes that are no file in a format that is not written in order.
[[nodiscard]] std::unique_ptr<FrameSink> createTrace(const OutputTarget& target, TraceFormat format,
                                                     const StreamHead& head, const SinkSettings& settings);

}  // namespace xlatr
