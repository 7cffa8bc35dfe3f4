// Frames for other programs: the Arrow C stream interface.
#pragma once

#include <cstdint>
#include <memory>

#include "frames/frame_stream.hpp"

struct ArrowArrayStream;

namespace xlatr {

// Makes a stream of struct arrays of a source. Its children are time_ns (int64), kind (utf8 in a dictionary), bus
// (uint16), id (uint32), flags (uint16), dlc (uint16), data (binary), text (utf8, nullable), and each attribute of the
// mask (uint32, nullable). The arrays lend the memory of batches, which are used again when a consumer has released
// them; they may outlive the stream. Failures are the codes of <cerrno> that the interface asks for, with a text.
void exportArrow(std::unique_ptr<FrameSource> source, std::uint32_t attributes, ArrowArrayStream& out);

}  // namespace xlatr
