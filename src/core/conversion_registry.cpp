#include "core/conversion_registry.hpp"

#include <algorithm>
#include <exception>
#include <new>

#include "core/format_matrix.hpp"
#include "core/out_of_memory.hpp"
#include "platform/thread.hpp"
#include "util/failures.hpp"
#include "util/process_wide.hpp"

namespace xlatr {
namespace {

constexpr bool kIdleReaperPolls = XLATR_IDLE_REAPER_POLLS;

ProcessWide<ConversionRegistry>& registries() {
  // Made first, so that it ends last: workers may still fail while the end of the registry waits for them.
  static_cast<void>(lastErrorText(0));
  static ProcessWide<ConversionRegistry> made;
  return made;
}

[[maybe_unused]] const ProcessWide<ConversionRegistry>& kRegistriesAtLoad = registries();

}  // namespace

ConversionRegistry& ConversionRegistry::instance() {
  return registries().get();
}

ConversionRegistry::ConversionRegistry() : changedEvent_(events_.create()), reaper_(&ConversionRegistry::reap, this) {}

ConversionRegistry::~ConversionRegistry() {
  {
    const MutexLock guard(lock_);
    exit_ = true;
    setIdle(false);
  }
  events_.signal(changedEvent_);
  reaper_.join();
  conversions_.clear();
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
  const std::size_t before = conversions_.size();
  try {
    conversions_.push_back(std::make_unique<Conversion>(source, target, options, result, onFinished, this));
    setIdle(false);
    conversions_.back()->start();
  } catch (const std::bad_alloc&) {
    const bool wasMade = conversions_.size() > before;
    conversions_.resize(before);
    if (wasMade && result != nullptr) {
      fillResultWithoutMemory(*result);
    } else {
      fillFailedResult(result, kOutOfMemory);
    }
    return XLATR_FAILED;
  } catch (...) {
    conversions_.resize(before);
    throw;
  }
  Conversion& conversion = *conversions_.back();
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
  const auto conversion =
      std::ranges::find_if(conversions_, [progress](const auto& candidate) { return candidate->id() == progress->id; });
  if (conversion == conversions_.end()) {
    return XLATR_UNKNOWN_CONVERSION;
  }
  (*conversion)->fillProgress(*progress);
  return XLATR_SUCCESS;
}

void ConversionRegistry::setIdle(bool idle) {
  idle_ = idle;
  idle_.notify_all();
}

// The reaper thread.
void ConversionRegistry::reap() {
  std::thread poller = startPoller();
  while (!exit_) {
    {
      const MutexLock guard(lock_);
      if (conversions_.empty() && !exit_) {
        setIdle(true);
      }
    }
    if (idle_) {
      idle_.wait(true);
      continue;
    }
    static_cast<void>(events_.waitAny());
    const MutexLock guard(lock_);
    std::erase_if(conversions_, [](const auto& conversion) { return conversion->isFinished(); });
  }
  if (poller.joinable()) {
    setIdle(true);  // wakes a sleeping poller, which then sees that all is over
    poller.join();
  }
}

// If no thread can be started, the registry does without one.
std::thread ConversionRegistry::startPoller() {
  if constexpr (kIdleReaperPolls) {
    try {
      return std::thread(&ConversionRegistry::poll, this);
    } catch (const std::exception&) {
      return {};
    }
  }
  return {};
}

// Polls for the reaper while the registry is idle. It takes no time from any other thread: it yields between polls and
// runs only when no other thread wants the processor. Since not every user may leave that scheduling class again, this
// thread touches no lock, so that it can't block another one.
void ConversionRegistry::poll() {
  platform::enterIdlePriority();
  while (!exit_) {
    if (idle_) {
      std::this_thread::yield();
    } else {
      idle_.wait(false);
    }
  }
}

}  // namespace xlatr
