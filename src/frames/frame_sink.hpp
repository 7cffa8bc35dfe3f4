// Where frames go.
#pragma once

#include <optional>
#include <string>

#include "frames/account.hpp"
#include "frames/frame_batch.hpp"
#include "frames/frame_capacity.hpp"

namespace xlatr {

// How a target is written. What a format has no use for is ignored.
struct SinkSettings {
  double version = 0.0;         // 0: what the format writes when no version is asked for
  std::string separator = ";";  // of a CSV target of version 1.0
  bool zipped = false;          // of an MF4 target
  bool compact = false;         // of an MF4 target: records as short as their frames
};

// One trace that is written. Made for a target, the head of what comes, and settings; it replaces a file that exists.
// Raises std::ios_base::failure when the system refuses, from its construction on. One thread at a time.
//
// A sink puts every frame to account once: as written, commented or dropped. It asks the row of its version in the
// format's table (frame_capacity.hpp), so that the table is what happens.
class FrameSink {
 public:
  // What was not closed is left as it is, which is no whole file.
  virtual ~FrameSink() = default;

  virtual void write(const FrameBatch& batch, Account& account) = 0;
  // Finishes the file; nothing can be written after it.
  virtual void close() = 0;
  // How large the file is by now, without what waits to be zipped or put in order.
  [[nodiscard]] virtual std::uint64_t bytesWritten() const = 0;

 protected:
  FrameSink() = default;
  FrameSink(const FrameSink&) = delete;
  FrameSink& operator=(const FrameSink&) = delete;
};

}  // namespace xlatr
