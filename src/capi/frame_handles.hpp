// Handles that are never dereferenced.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <utility>

#include "util/mutex.hpp"

namespace xlatr::capi {

// No two handles of a process are the same, whatever they stand for, so that one which was closed never stands for
// something else. All are odd, which the address of an object is not.
[[nodiscard]] inline std::uintptr_t newHandleNumber() {
  static std::atomic<std::uintptr_t> last{1};
  return last.fetch_add(2, std::memory_order_relaxed) + 2;
}

// The live objects of one kind, by the handles that callers hold. Any thread.
template <class Handle, class Object>
class HandleTable {
 public:
  Handle* add(std::shared_ptr<Object> object) {
    const std::uintptr_t number = newHandleNumber();
    const MutexLock lock(mutex_);
    objects_.emplace(number, std::move(object));
    return reinterpret_cast<Handle*>(number);  // NOLINT(performance-no-int-to-ptr): a number that looks like a pointer
  }

  // Null for what is no handle of this table. The object stays as long as the result does, even if another thread
  // closes the handle.
  [[nodiscard]] std::shared_ptr<Object> find(const Handle* handle) const {
    const MutexLock lock(mutex_);
    const auto found = objects_.find(reinterpret_cast<std::uintptr_t>(handle));
    return found == objects_.end() ? nullptr : found->second;
  }

  // The same, and the handle is none any more.
  [[nodiscard]] std::shared_ptr<Object> remove(const Handle* handle) {
    const MutexLock lock(mutex_);
    const auto found = objects_.find(reinterpret_cast<std::uintptr_t>(handle));
    if (found == objects_.end()) {
      return nullptr;
    }
    std::shared_ptr<Object> object = std::move(found->second);
    objects_.erase(found);
    return object;
  }

 private:
  mutable Mutex mutex_;
  std::unordered_map<std::uintptr_t, std::shared_ptr<Object>> objects_ XLATR_GUARDED_BY(mutex_);
};

}  // namespace xlatr::capi
