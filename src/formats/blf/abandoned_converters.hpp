// Converters that run on though nobody waits for them any more.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/process.hpp"
#include "util/mutex.hpp"

namespace xlatr {

// Sees to it that they leave nothing behind: neither an entry in the system's process table, nor their table, which one
// may make only after its reader is gone, nor the names of a shared block that they made when the reader's was gone.
// Safe from any thread.
class AbandonedConverters {
 public:
  // The one list of the process. When the process ends, or the library is unloaded, those that still run are ended.
  static AbandonedConverters& instance();

  AbandonedConverters(const AbandonedConverters&) = delete;
  AbandonedConverters& operator=(const AbandonedConverters&) = delete;

  // Takes over a converter that runs, and what it may leave.
  void add(platform::Process process, std::string table, std::string blockName);
  // Cleans up behind those that have ended.
  void sweep();

 private:
  struct Entry {
    platform::Process process;
    std::string table;
    std::string blockName;
  };

  AbandonedConverters();
  ~AbandonedConverters();

  static void cleanUpBehind(const Entry& entry);

  Mutex lock_;
  std::vector<Entry> entries_ XLATR_GUARDED_BY(lock_);
  const std::int64_t owner_;  // a forked child has a copy of the list, but not the converters
};

}  // namespace xlatr
