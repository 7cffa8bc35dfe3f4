// Converters that are still running when nobody waits for them anymore.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/process.hpp"
#include "util/mutex.hpp"

namespace xlatr {

// Makes sure that they leave nothing: no entry in the system's process table, no table, which a converter may write
// only after its reader is gone, and no names of a shared block that it made when the reader's was gone. Safe from any
// thread.
class AbandonedConverters {
 public:
  // The one list of the process. When the process ends, or the library is unloaded, those that are still running are
  // ended.
  static AbandonedConverters& instance();

  AbandonedConverters(const AbandonedConverters&) = delete;
  AbandonedConverters& operator=(const AbandonedConverters&) = delete;

  // Takes over a running converter and what it may leave.
  void add(platform::Process process, std::string table, std::string blockName);
  // Cleans up after those that have ended.
  void sweep();

 private:
  struct Entry {
    platform::Process process;
    std::string table;
    std::string blockName;
  };

  AbandonedConverters();
  ~AbandonedConverters();

  static void cleanUpAfter(const Entry& entry);

  Mutex lock_;
  std::vector<Entry> entries_ XLATR_GUARDED_BY(lock_);
  const std::int64_t owner_;  // a forked child has a copy of the list, but not the converters
};

}  // namespace xlatr
