#include "core/events.hpp"

#include <algorithm>

namespace xlatr {

EventGroup::Event EventGroup::create() {
  const MutexLock guard(lock_);
  signalled_.push_back(false);
  return signalled_.size() - 1;
}

// Notified under the lock: the waiting thread may end and take the group with it as soon as it has the lock.
void EventGroup::signal(Event event) {
  const MutexLock guard(lock_);
  signalled_[event] = true;
  changed_.notify_all();
}

EventGroup::Event EventGroup::waitAny() {
  const MutexLock guard(lock_);
  for (;;) {
    const auto found = std::find(signalled_.begin(), signalled_.end(), true);
    if (found != signalled_.end()) {
      *found = false;
      return static_cast<Event>(found - signalled_.begin());
    }
    changed_.wait(lock_);
  }
}

}  // namespace xlatr
