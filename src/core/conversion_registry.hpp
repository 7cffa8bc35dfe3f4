// All conversions that live in the process.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

#include "core/conversion.hpp"
#include "core/events.hpp"
#include "util/mutex.hpp"
#include "xlatr/xlatr.h"

namespace xlatr {

// Owns the conversions and the reaper thread that destroys those that have ended. Its lock is held across each of the
// functions, all of a synchronous conversion included, and is the first in the order of locks.
class ConversionRegistry {
 public:
  // Made at the first call in a process, forked or not; ends with the process or when the library is unloaded.
  // Conversions that are still running then end at their next message.
  static ConversionRegistry& instance();

  // For instance() alone.
  ConversionRegistry();
  ~ConversionRegistry();
  ConversionRegistry(const ConversionRegistry&) = delete;
  ConversionRegistry& operator=(const ConversionRegistry&) = delete;

  [[nodiscard]] TraceFormat convertibleFrom(TraceFormat source);
  [[nodiscard]] TraceFormat convertibleTo(TraceFormat targets);
  std::int32_t convert(const char* source, const char* target, ConversionOptions options, ConversionResult* result);
  std::int32_t fillProgress(ConversionProgress* progress);

 private:
  void reap();
  [[nodiscard]] std::thread startPoller();
  void poll();
  void setIdle(bool idle);

  Mutex lock_;
  std::vector<std::unique_ptr<Conversion>> conversions_ XLATR_GUARDED_BY(lock_);
  EventGroup events_;
  const EventGroup::Event changedEvent_;
  std::atomic<bool> exit_ = false;
  std::atomic<bool> idle_ = false;
  std::thread reaper_;
};

}  // namespace xlatr
