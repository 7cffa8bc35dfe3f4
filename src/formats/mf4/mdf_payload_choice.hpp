// Where the payloads of the CAN FD frames of a compact file go.
#pragma once

#include "formats/mf4/mdf_frame_schema.hpp"
#include "frames/frame_batch.hpp"

namespace xlatr {

// Long or Stored, whichever makes a file shorter that goes on like these frames. Zipped, what fills up a long record is
// next to nothing, so that both forms are squeezed to see. Raises kDeflateFailure.
[[nodiscard]] MdfPayload shorterPayload(const FrameBatch& frames, bool zipped);

}  // namespace xlatr
