// What holds for the frames of any source.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frames/frame_capacity.hpp"
#include "frames/frame_stream.hpp"
#include "target.hpp"
#include "util/utf8.hpp"

namespace fuzz {

inline void checkFrame(const xlatr::Frame& frame) {
  constexpr std::size_t kLongestPayload = 2048;
  constexpr std::size_t kLongestRecord = 65535;
  require(frame.data.size() <=
          (frame.attributes.has(xlatr::FrameAttribute::RecordType) ? kLongestRecord : kLongestPayload));
  require(frame.timeNs >= -xlatr::kFarthestNs && frame.timeNs <= xlatr::kFarthestNs);
  require(frame.place > 0);
  require(!frame.text || (xlatr::isUtf8(*frame.text) && frame.text->size() <= xlatr::FrameBatch::kLongestText));
  require(frame.kind != xlatr::FrameKind::Comment || frame.text.has_value());
}

// Reads the source of a file of this size to its end.
inline void readWhole(xlatr::FrameSource& source, std::size_t size) {
  xlatr::FrameBatch batch;
  xlatr::Account account;
  std::uint64_t frames = 0;
  while (source.read(batch, account)) {
    for (std::size_t row = 0; row < batch.size(); ++row) {
      checkFrame(batch.at(row));
    }
    frames += batch.size();
    batch.clear();
  }
  require(account.read() == frames);
  require(source.bytesRead() == size);
}

}  // namespace fuzz
