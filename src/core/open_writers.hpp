// The writers of a conversion with one file per bus that have their file open.
#pragma once

#include <cstddef>
#include <vector>

#include "io/trace_writer.hpp"

namespace xlatr {

// Keeps the files open that were written last, and lets the others rest: a trace may have more buses than a process may
// have files. One thread at a time.
class OpenWriters {
 public:
  // More buses than a trace has that was recorded.
  static constexpr std::size_t kMost = 64;

  // Before a writer is activated. Raises what the writer that has to rest raises.
  void makeRoom();
  // Says that this active writer is written next.
  void use(ITraceWriter& writer);
  void clear() { writers_.clear(); }

 private:
  std::vector<ITraceWriter*> writers_;  // the one that was used last comes first
};

}  // namespace xlatr
