// Events between threads.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <vector>

#include "util/mutex.hpp"

namespace xlatr {

// A group of auto-reset events that one thread waits for together: an event stays signalled until the waiting thread
// has seen it, which resets it. Their number has no limit, so that a conversion may have any number of workers.
// Signalling and waiting are safe from any thread.
class EventGroup {
 public:
  using Event = std::size_t;

  // Events are numbered in the order of their creation.
  [[nodiscard]] Event create();
  void signal(Event event);
  // Waits without a time limit until an event is signalled, resets it and returns it: the lowest one of several.
  [[nodiscard]] Event waitAny();

 private:
  Mutex lock_;
  std::condition_variable_any changed_;
  std::vector<bool> signalled_ XLATR_GUARDED_BY(lock_);
};

}  // namespace xlatr
