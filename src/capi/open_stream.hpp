// What the handle of a stream stands for.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "capi/frame_answers.hpp"
#include "capi/frame_handles.hpp"
#include "capi/frame_records.hpp"
#include "frames/account.hpp"
#include "frames/frame_batch.hpp"
#include "frames/frame_stream.hpp"
#include "xlatr/frames.h"

namespace xlatr::capi {

// `source` is null if opening failed.
struct Stream {
  std::string error;
  std::unique_ptr<FrameSource> source;
  FrameBatch batch;
  Account account;
  std::vector<PassedOver> passedOver;  // as told last
  std::uint64_t size = 0;              // of what is read; 0 if nobody knows
};

[[nodiscard]] inline HandleTable<xlatr_stream, Stream>& streams() {
  return table<xlatr_stream, Stream>();
}

// Refuses a stream that was not opened.
[[nodiscard]] inline FrameSource& sourceOf(const Stream& stream) {
  if (stream.source == nullptr) {
    refuse("the stream was not opened");
  }
  return *stream.source;
}

}  // namespace xlatr::capi
