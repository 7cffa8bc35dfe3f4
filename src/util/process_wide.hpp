// The one object of its kind in a process, also in a process that was forked from it.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "platform/thread.hpp"

namespace xlatr {

// A forked process has a copy of the object but none of the threads that work on it, and a thread that held one of its
// locks is not there to let go of it. So it gets an object of its own and never touches the copy, which stays where it
// is: with its threads and locks it can't be destroyed either.
//
// To be a static variable of a function that runs once while the library is loaded. Then nobody waits for the making of
// the variable when a process is forked, and those that were made earlier end later. `get` and `find` are safe from any
// thread.
template <class Object>
class ProcessWide {
 public:
  ProcessWide() = default;
  // Ends the object of this process. Those of the processes before stay, and stay known, so that they are not leaks.
  ~ProcessWide() {
    if (const std::unique_ptr<Made> own(ofThisProcess()); own != nullptr) {
      last_.store(own->before, std::memory_order_relaxed);
    }
  }
  ProcessWide(const ProcessWide&) = delete;
  ProcessWide& operator=(const ProcessWide&) = delete;

  // Makes the object at the first call. Raises what its constructor raises.
  [[nodiscard]] Object& get() {
    Made* last = last_.load(std::memory_order_acquire);
    while (!isOfThisProcess(last)) {
      auto made = std::make_unique<Made>(last);
      if (last_.compare_exchange_strong(last, made.get(), std::memory_order_acq_rel)) {
        return made.release()->object;
      }
    }
    return last->object;
  }

  // Null before the first call of `get` in this process.
  [[nodiscard]] Object* find() {
    Made* const own = ofThisProcess();
    return own == nullptr ? nullptr : &own->object;
  }

 private:
  struct Made {
    explicit Made(Made* madeBefore) : before(madeBefore) {}

    Made* const before;  // in a process that this one was forked from
    const std::int64_t process = platform::currentProcessId();
    Object object;
  };

  static bool isOfThisProcess(const Made* made) {
    return made != nullptr && made->process == platform::currentProcessId();
  }
  [[nodiscard]] Made* ofThisProcess() const {
    Made* const last = last_.load(std::memory_order_acquire);
    return isOfThisProcess(last) ? last : nullptr;
  }

  std::atomic<Made*> last_ = nullptr;
};

}  // namespace xlatr
