// Locks that clang's thread-safety analysis understands, so that the compiler checks that guarded members are only
// touched under their lock.
#pragma once

#include <mutex>

#if defined(__clang__)
#define XLATR_THREAD_ANNOTATION(annotation) __attribute__((annotation))
#else
#define XLATR_THREAD_ANNOTATION(annotation)
#endif

#define XLATR_CAPABILITY(name) XLATR_THREAD_ANNOTATION(capability(name))
#define XLATR_SCOPED_CAPABILITY XLATR_THREAD_ANNOTATION(scoped_lockable)
#define XLATR_GUARDED_BY(lock) XLATR_THREAD_ANNOTATION(guarded_by(lock))
#define XLATR_REQUIRES(lock) XLATR_THREAD_ANNOTATION(requires_capability(lock))
#define XLATR_ACQUIRE(...) XLATR_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define XLATR_RELEASE(...) XLATR_THREAD_ANNOTATION(release_capability(__VA_ARGS__))

namespace xlatr {

class XLATR_CAPABILITY("mutex") Mutex {
 public:
  void lock() XLATR_ACQUIRE() { mutex_.lock(); }
  void unlock() XLATR_RELEASE() { mutex_.unlock(); }

 private:
  std::mutex mutex_;
};

// Holds a Mutex for a scope.
class XLATR_SCOPED_CAPABILITY MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) XLATR_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
  ~MutexLock() XLATR_RELEASE() { mutex_.unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  Mutex& mutex_;
};

}  // namespace xlatr
