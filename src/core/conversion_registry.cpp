#include "core/conversion_registry.hpp"

#include <algorithm>
#include <cmath>

#include "core/format_matrix.hpp"
#include "platform/thread.hpp"

namespace xlatr {
namespace {

#if defined(XLATR_IDLE_REAPER_WAITS)
constexpr bool kIdleReaperPolls = false;
#else
constexpr bool kIdleReaperPolls = true;
#endif

}  // namespace

ConversionRegistry::Conversions* ConversionRegistry::ofTheParent_ = nullptr;

ConversionRegistry& ConversionRegistry::instance() {
  static ConversionRegistry registry;
  return registry;
}

ConversionRegistry::ConversionRegistry()
    : changedEvent_(events_.create()),
      process_(platform::currentProcessId()),
      reaper_(&ConversionRegistry::reap, this) {}

ConversionRegistry::~ConversionRegistry() {
  if (process_ != platform::currentProcessId()) {
    // A process that was forked off has the registry but none of its threads: there is nobody to wait for, and the
    // conversions go on in the other process.
    reaper_.detach();
    ofTheParent_ = conversions_.release();
    return;
  }
  {
    const MutexLock guard(lock_);
    exit_ = true;
    setIdle(false);
  }
  events_.signal(changedEvent_);
  reaper_.join();
  conversions_->clear();
}

TraceFormat ConversionRegistry::convertibleFrom(TraceFormat source) {
  const MutexLock guard(lock_);
  return formatsConvertibleFrom(source);
}

TraceFormat ConversionRegistry::convertibleTo(TraceFormat targets) {
  const MutexLock guard(lock_);
  return formatsConvertibleTo(targets);
}

std::int32_t ConversionRegistry::convert(const char* source, const char* target, ConversionOptions options,
                                         ConversionResult* result) {
  const MutexLock guard(lock_);
  const auto onFinished = [](void* registry) {
    auto& self = *static_cast<ConversionRegistry*>(registry);
    self.events_.signal(self.changedEvent_);
  };
  conversions_->push_back(std::make_unique<Conversion>(source, target, options, result, onFinished, this));
  Conversion& conversion = *conversions_->back();
  setIdle(false);
  try {
    conversion.start();
  } catch (...) {
    conversions_->pop_back();
    throw;
  }
  if (options.asynchronous == 0) {
    conversion.waitUntilFinished();
  }
  return conversion.statusCode();
}

std::int32_t ConversionRegistry::fillProgress(ConversionProgress* progress) {
  const MutexLock guard(lock_);
  if (progress == nullptr) {
    return XLATR_BAD_ARGUMENT;
  }
  const auto conversion = std::ranges::find_if(
      *conversions_, [progress](const auto& candidate) { return candidate->id() == progress->id; });
  if (conversion == conversions_->end()) {
    return XLATR_UNKNOWN_CONVERSION;
  }
  (*conversion)->fillProgress(*progress);
  return XLATR_SUCCESS;
}

void ConversionRegistry::setIdle(bool idle) {
  idle_ = idle;
  if constexpr (!kIdleReaperPolls) {
    idle_.notify_all();
  }
}

// The reaper thread.
void ConversionRegistry::reap() {
  while (!exit_) {
    {
      const MutexLock guard(lock_);
      if (conversions_->empty() && !exit_) {
        idle_ = true;
      }
    }
    if (idle_) {
      waitWhileIdle();
      continue;
    }
    static_cast<void>(events_.waitAny());
    const MutexLock guard(lock_);
    std::erase_if(*conversions_, [](const auto& conversion) { return conversion->isFinished(); });
  }
}

// Polling makes the start of a conversion free of a wake-up. It takes nothing from anyone: the thread yields between
// polls, runs only where no other thread wants the processor, and touches no lock before it has left that class again.
void ConversionRegistry::waitWhileIdle() {
  if constexpr (kIdleReaperPolls) {
    platform::enterIdlePriority();
    while (idle_ && !exit_) {
      std::this_thread::yield();
    }
    platform::leaveIdlePriority();
  } else {
    idle_.wait(true);
  }
}

}  // namespace xlatr
