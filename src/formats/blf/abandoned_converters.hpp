// Converters that are still running when nobody waits for them anymore.
#pragma once

#include <list>
#include <string>
#include <thread>

#include "platform/process.hpp"
#include "util/mutex.hpp"

namespace xlatr {

// Makes sure that they leave nothing: no entry in the system's process table, no table, which a converter may write
// only after its reader is gone, and no names of a shared block that it made when the reader's was gone. A thread waits
// for each of them; what has none, because no thread could be started, is cleaned up after when the list is used again.
// Safe from any thread.
class AbandonedConverters {
 public:
  // A converter and what it may leave.
  struct Entry {
    platform::Process process;
    std::string table;
    std::string blockName;
    std::thread watcher = {};
  };
  using Entries = std::list<Entry>;

  // The one list of the process, forked or not. When the process ends, or the library is unloaded, those that are still
  // running are ended.
  static AbandonedConverters& instance();

  // For instance() alone.
  AbandonedConverters() = default;
  ~AbandonedConverters();
  AbandonedConverters(const AbandonedConverters&) = delete;
  AbandonedConverters& operator=(const AbandonedConverters&) = delete;

  // Takes over a running converter, the only entry of `entry`.
  void add(Entries& entry) noexcept;
  // Cleans up after those that have ended.
  void sweep();

  // Removes what a converter left.
  static void cleanUpAfter(const Entry& entry);

 private:
  void watch(Entries::iterator entry);

  Mutex lock_;
  Entries running_ XLATR_GUARDED_BY(lock_);
  Entries ended_ XLATR_GUARDED_BY(lock_);  // cleaned up after; their threads are at their end
  bool ending_ XLATR_GUARDED_BY(lock_) = false;
};

}  // namespace xlatr
